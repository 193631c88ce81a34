#pragma once
// Numbering of the fields. Numeric fields show a running number that the
// user steps and a print run raises from copy to copy; character fields show
// one value of their value file at a time. Widget-free: the sheet windows
// call these and repaint, printing calls the per-copy update.
//
// Numbers are 16-bit. Stepping up stops at 32767: the number after 32767 is
// 32767 again. A label run never gets there, and wrapping round to a
// negative number or to 0 would print labels that look like the start of a
// new run. Stepping down stops at 0.
#include "model/FieldValues.h"
#include "model/Project.h"
#include "model/Records.h"
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

namespace jk {

constexpr int kMaxFieldNumber = 32767;
// Stepping reaches numeric fields 1-50 of the open sheets only.
constexpr int kSteppedFieldRange = 50;

// ---- Numbers -----------------------------------------------------------------

// n with at least `digits` digits ("7" with 3 digits is "007", 1000 keeps
// its four); a digit code outside 1-4 gives an empty text.
QString formatFieldNumber(int n, int digits);
// The number a text starts with (blanks first, then an optional sign and
// digits), held within the 16-bit range; a text without one counts as 0.
int leadingNumber(const QString& text);
// One up, stopping at 32767; one down, stopping at 0.
int nextFieldNumber(int n);
int previousFieldNumber(int n);

// What numeric field `index` shows now: its stepped text, else its number
// with its digit code. Empty for an index outside the table.
QString numFieldText(const Project& project, int index);

// ---- Value files -------------------------------------------------------------

struct ValueList {
    QStringList values;     // non-empty values in file order
    bool complete = false;  // the whole file was read (not cut at the size caps)
};
// The values of a character field's file. Empty values are no values. A
// file that holds control characters (a picture, a program) has none, like
// a missing file, a folder or a device.
ValueList readValueList(const QString& path);
QStringList fieldValues(const QString& path);
// Writes the values one per line (CR LF, UTF-8), so that reading gives them
// back: a value holding a comma, or starting or ending with a blank or a
// double quote, is written in double quotes (a double quote inside such a
// value, which the format cannot hold, becomes a single quote). The old file
// is replaced only once the new one is complete.
bool writeFieldValues(const QString& path, const QStringList& values, QString* error = nullptr);

// ---- Stepping ----------------------------------------------------------------
// Stepping changes what the fields of the open sheets show; it is the only
// thing besides editing that changes the document's fields.

// Puts the text into numeric fields 1-50 of every open sheet; when one of
// them is linked to the spines, the text becomes the spine number.
void showNumberEverywhere(Project& project, const QString& text);
// Field `index`'s shown number, one up or one down, formatted with its
// digit code, shown everywhere. False (nothing changed) at 32767 going up,
// at 0 going down, or for a missing field.
bool stepNumber(Project& project, int index, int delta);
// 1 with the field's digit code, shown everywhere.
bool resetNumber(Project& project, int index);

// Where character field `index`'s shown value lies in its file: position
// from 1 (0 when it is not there) and the number of values.
struct ValuePosition {
    int position = 0;
    int count = 0;
};
ValuePosition valuePosition(const Project& project, int index);
// The value after (+1) or before (-1) the shown one. False, changing
// nothing, at either end, when the shown value is not in the file, or when
// the file cannot be read.
bool stepValue(Project& project, int index, int direction);

// The spine number follows the spine-linked field of an open sheet (the
// last one in the table); with none it is emptied.
void updateSpineNumber(Project& project);

// ---- Printing ----------------------------------------------------------------

// After a sheet was printed, the first character field of that sheet with
// a value file shows its next value, and each numeric field of the sheet
// that shows a number shows the one after it, in every open sheet.
void advanceSheet(Project& project, int sheetCode);
// The same as a value: what the fields show after advanceSheet, when they
// show `shown` (over the project's own texts) before it. The project is not
// changed, so a run can step a sheet per copy and change the document once.
FieldValues advancedSheetValues(const Project& project, int sheetCode, const FieldValues& shown);

// The value copy `copy` (from 1) shows: the copy-th one, the last one when
// the list is shorter; empty for an empty list.
QString valueForCopy(const QStringList& values, int copy);
// The number copy `copy` shows when the first copy shows `start`: one more
// per copy, stopping at 32767.
int numberForCopy(int start, int copy);

// One project print run. Made when the run starts: every character field's
// values (each file read once) and the number each numeric field shows.
// Each copy's texts are handed to the drawing path as values; the document
// changes once, when the run is over.
class CopyNumbering {
public:
    explicit CopyNumbering(const Project& project);
    // What copy `copy` (from 1) shows: each character field with values the
    // copy's value, each numeric field that shows a number its start +
    // copy - 1 with its own digit code; linked fields carry their number to
    // the spines.
    FieldValues valuesForCopy(int copy) const;
    // After the run: numeric fields show the number after the last copy, so
    // the next run goes on from there; character fields keep the last value.
    void finish(Project& project, int copiesPrinted) const;

private:
    struct CharStart {
        int index;
        QStringList values;
    };
    struct NumStart {
        int index;
        int number;
        int digits;
        bool spineLink;
    };
    FieldValues numbersAt(int offset) const;
    std::vector<CharStart> chars_;
    std::vector<NumStart> nums_;
};

// Makes the fields show these values (the end of a run, or a step).
void applyFieldValues(Project& project, const FieldValues& values);

}  // namespace jk
