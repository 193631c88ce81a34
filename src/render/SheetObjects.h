#pragma once
// The objects of a sheet as the records describe them: which record an object
// is, where it lies, which font it shows and how large its text is. Widget-
// free; the drawing path and the sheet window both work from these.
#include "model/FieldValues.h"
#include "model/Project.h"
#include "model/Records.h"
#include <QFont>
#include <QRect>
#include <QSize>
#include <QString>
#include <optional>

namespace jk::sheet {

using jk::Project;
using jk::FieldValues;

using jk::ObjectRef;
using jk::ObjKind;

// What a new text block shows when the text dialog set no font.
inline constexpr i32 kDefaultTextColour = 80008;
inline constexpr i16 kDefaultTextSize = 10;  // shown as 9.75 points
QString defaultFontName();                   // "Ms Sans Serif"
// Gives the style the default font, size, weight and colour.
void applyDefaultFont(TextStyle& s);

// A point size as a label shows it: whole screen pixels at 96 dpi, so the
// record's 10 shows as 9.75 points. Returned in twips (the font's pixel size
// when drawing in canvas twips).
int fontTwips(double points);
// The font of a text object in canvas twips. Record font names are kept as
// written; the Windows faces are mapped to installed ones here.
QFont textFont(const QString& family, double points, bool bold, bool italic, bool underline, bool strike);
QFont textFont(const TextStyle& s);
// Line breaks as a label shows them (CR LF, CR and LF all break a line).
QString displayText(const QString& text);
// The size a label takes when it sizes itself to its text, in twips:
// widest line by the number of lines, in whole screen pixels.
QSize textExtentTwips(const TextStyle& s, const QString& text);

// The number a numeric field shows: the number with at least its digit
// count, empty for a digit code outside 1-4.
QString numberText(const NumFieldRecord& r);

// The text a text object or field shows: what the field values name for
// it, else what its record shows.
QString shownText(const Project& project, ObjectRef r, const FieldValues& fields = {});
// The border style stored for the object (pictures have none: 0).
int recordBorder(const Project& project, ObjectRef r);

// Where the object lies in canvas twips (text-page blocks are moved by the
// text page's corner; a picture at actual size takes its image's size).
QRect objectRectTwips(const Project& project, int code, ObjectRef r);

// Clamps to the 16-bit range the records hold.
i16 clampTwips(qint64 v);

}  // namespace jk::sheet
