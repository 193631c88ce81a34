#pragma once
// The five label formats: where a sheet's canvas, spines and text page lie,
// what each sheet weighs in the composition code, and which of the main
// window's commands a sheet turns on or off. Widget-free, so the rules can be
// checked directly.
#include "model/Colors.h"
#include "model/Formats.h"
#include "model/Records.h"
#include <QColor>
#include <QRect>
#include <QRectF>
#include <QString>
#include <optional>
#include <utility>
#include <vector>

namespace jk::sheet {

constexpr double kTwipsPerInch = 1440.0;
constexpr double kTwipsPerCm = kTwipsPerInch / 2.54;  // 566.93
constexpr double kScreenDpi = 96.0;
constexpr int kTwipsPerPixel = 15;  // on screen at 96 dpi

bool isFormatCode(int code);

struct FormatLayout {
    int code = 0;
    QRectF canvasCm;     // relative to the sheet window's client area
    bool spines = false;   // the inlay's two spines
    bool textPage = false; // booklet and paper jacket
    bool disc = false;     // the disc label's preview outline
};
// The layout of a format; an empty layout (code 0) for anything else.
FormatLayout formatLayout(int code);

inline double cmToTwips(double cm) { return cm * kTwipsPerCm; }
inline int cmToPixels(double cm) { return qRound(cm / 2.54 * kScreenDpi); }

// Canvas size in twips, exact (not rounded): what drawing and PDF pages use.
QSizeF canvasSizeTwips(int code);
// The canvas rectangle relative to the window, in twips, rounded the way the
// format table states it.
QRect canvasRectTwips(int code);
// The canvas in screen pixels at real size (96 dpi), relative to the window.
QRect canvasRectPixels(int code);

enum class Spine { Left, Right };
// Spine panels in canvas twips: both are taller than the canvas and are
// clipped at its bottom. Empty for formats without spines.
QRect spineRect(int code, Spine side);
// The text page panel in canvas twips; it reaches past the canvas, which
// clips it. Empty for formats without a text page.
QRect textPageRect(int code);

// Where the spine text starts, in the panel's own twips: the left spine
// reads upward from 200 twips above the bottom, the right spine downward
// from 50 twips below the top.
QPoint spineTextStart(Spine side, int panelHeight);
// Rotation of the spine text in degrees, clockwise as QPainter counts.
int spineTextRotation(Spine side);

// Disc preview: the centre hole and the outside of the disc, screen pixels.
constexpr int kHoleRadius = 62;
constexpr int kDiscRadius = 228;
constexpr int kOuterRadius = 350;

// ---- Colours and backgrounds ------------------------------------------------

// Windows colour values (red in the low byte) as QColors, and back.
using jk::toWinColor;
using jk::winColor;
struct Background {
    enum Kind { None, Colour, Picture } kind = None;
    i32 colour = 0;  // Windows colour, for Colour
    QString file;    // for Picture
};
// "~" followed by a decimal colour gives that colour ("~" alone, or no
// number, gives black); any other non-empty text is a picture file.
Background parseBackground(const QString& text);

// The line both spines show: the spine text, then the spine number text
// when there is one.
QString spineLine(const QString& spineText, const QString& spineNumberText);

// ---- Command tables ----------------------------------------------------------

// What a procedure does to the main window's commands, named by their
// historical object names. Entries are applied in order, so a later entry
// for the same name wins.
struct CommandTable {
    std::vector<std::pair<QString, bool>> enable;
    std::vector<std::pair<QString, bool>> visible;
    int pageRequest = 0;  // 0 leaves the page request as it is

    void on(const QString& name, bool enabled = true) { enable.emplace_back(name, enabled); }
    void off(const QString& name) { on(name, false); }
    void show(const QString& name, bool shown = true) { visible.emplace_back(name, shown); }
    void append(const CommandTable& other);
    // The final state a name is given, if any.
    std::optional<bool> enabled(const QString& name) const;
    std::optional<bool> shown(const QString& name) const;
};

// The tools-menu entry of a format (FMSimple ...); empty for the jacket.
QString toolsMenuEntry(int code);
// The menu entry and pop-up entry that add a sheet of the format.
std::pair<QString, QString> addCommands(int code);

// Tool buttons for the active sheet.
CommandTable toolButtonsTable(int code, int pageRequest);
// The format-dependent entries set when a sheet becomes active (without
// the updateToolButtons part, which runs after it).
CommandTable formatCommandsTable(int code);
// The page-dependent commands set when a sheet is resized.
CommandTable pageCommandsTable(bool textPageRequested);
// What the text-page toggle sets besides the page request.
CommandTable textPageToggleTable(bool textPage);
// The add-sheet commands after a sheet closed, for the sheet-composition
// value left.
CommandTable addSheetCommandsTable(int sheetComposition);
// The sheet-surface pop-up for the sheet clicked.
CommandTable toolsMenuTable(int code);
// What a new sheet of the format turns on or off while it sets itself up.
CommandTable setupTable(int code, bool spinesHidden);
// What an add-sheet command sets once the sheet is created.
CommandTable addSheetTable(int code, int newSheetComposition);
// The main window locked (preview shown) or unlocked.
CommandTable previewLockTable(bool locked);
// A press on an object offers the editing commands (enableClipboardCommands); pasting
// waits until something was copied.
CommandTable enableClipboardTable();
// A press on the bare canvas leaves nothing to copy or cut.
CommandTable emptyCanvasTable();

}  // namespace jk::sheet
