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
QString numFieldText(int index);

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

// Puts the text into numeric fields 1-50 of every open sheet; when one of
// them is linked to the spines, the text becomes the spine number and the
// spines are redrawn.
void showNumberEverywhere(const QString& text);
// stepNumberForward and stepNumberBack: field `index`'s shown number, one up or one down,
// formatted with its digit code, shown everywhere. False (nothing changed)
// at 32767 going up, at 0 going down, or for a missing field.
bool stepNumber(int index, int delta);
// resetNumbers: 1 with the field's digit code, shown everywhere.
bool resetNumber(int index);

// Where character field `index`'s shown value lies in its file: position
// from 1 (0 when it is not there) and the number of values.
struct ValuePosition {
    int position = 0;
    int count = 0;
};
ValuePosition valuePosition(int index);
// nextValue (+1) and previousValue (-1): the value after or before the shown one.
// False, changing nothing, at either end, when the shown value is not in the
// file, or when the file cannot be read.
bool stepValue(int index, int direction);

// The spine number follows the spine-linked field of an open sheet (the
// last one in the table); with none it is emptied. Redraws the spines.
void updateSpineNumber();

// ---- Printing ----------------------------------------------------------------

// advanceFields: after a sheet was printed, the first character field of that
// sheet with a value file shows its next value, and each numeric field of
// the sheet that shows a number shows the one after it, in every open sheet.
void advanceSheet(int sheetCode);

// The value copy `copy` (from 1) shows: the copy-th one, the last one when
// the list is shorter; empty for an empty list.
QString valueForCopy(const QStringList& values, int copy);
// The number copy `copy` shows when the first copy shows `start`: one more
// per copy, stopping at 32767.
int numberForCopy(int start, int copy);

// One project print run. Made when the run starts: every character field's
// values (each file read once) and the number each numeric field shows.
// The records keep their start numbers; a run changes what fields show.
class CopyNumbering {
public:
    CopyNumbering();
    // Before copy `copy` (from 1) is printed: each character field with
    // values shows the copy's value, each numeric field that shows a number
    // shows its start + copy - 1 with its own digit code; linked fields
    // carry their number to the spines.
    void showCopy(int copy) const;
    // After the run: numeric fields show the number after the last copy, so
    // the next run goes on from there; character fields keep the last value.
    void finish(int copiesPrinted) const;

private:
    struct CharStart {
        int index;
        QStringList values;
    };
    struct NumStart {
        int index;
        int number;
    };
    void showNumbers(int offset) const;
    std::vector<CharStart> chars_;
    std::vector<NumStart> nums_;
};

// ---- Hand-over -----------------------------------------------------------------

// The field dialog's results besides the accepted flag and the alignment
// (which live in Global): the values text or the start value, the number
// text, and the file of the values.
struct FieldHandOver {
    QString fieldText;
    QString numberText;
    QString valueFile;
};
FieldHandOver& fieldHandOver();

// Called whenever a field's shown text changes (numeric: true for a numeric
// field), so the sheets can fit the field to its new text and repaint it.
using FieldShownHook = std::function<void(bool numeric, int index)>;
void setFieldShownHook(FieldShownHook hook);
// Sets what a field shows and tells the hook.
void setNumFieldShown(int index, const QString& text);
void setCharFieldShown(int index, const QString& text);

}  // namespace jk
