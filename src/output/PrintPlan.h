#pragma once
// What a print run puts on which page, worked out before anything is drawn.
// Pure and widget-free: the three print commands (current sheet, project,
// selected sheets), the headless --print and the print preview all make a
// plan here and hand it to PrintRun, which only paints it.
//
// A run is one print job. Pages take the labels as the old page-by-page
// printing placed them: a front cover at the top of a portrait page and a
// tray inlay 13 cm lower on the same page when it follows the cover; the
// text page and the picture page of a booklet or paper jacket side by side
// on a landscape page; a disc label alone on a portrait page at the offsets
// of its label stock. Where the old program ended a print document after a
// copy, the run starts a new page.
#include <QPageLayout>
#include <QPointF>
#include <QString>
#include <optional>
#include <vector>

namespace jk::print {

enum class RunKind {
    CurrentSheet,  // one sheet, copy count times, fields as they are
    Project,       // every sheet in project order, fields advancing per copy
    Selected,      // the chosen sheets, each sheet's fields stepping after it prints
};

// The four sheet printers that print the chosen sheets, in the order a
// composition code calls them.
enum class SheetPrinter {
    BookletOrJacket,  // booklet (2) or paper jacket (16)
    DiscLabel,        // disc label (8)
    FrontCover,       // one-page front cover (1)
    Inlay,            // tray inlay (4)
};
// The sheet printers a composition code (sum of print weights: booklet 1,
// disc 2, front cover 4, inlay 8, jacket 16) calls, in order; none for the
// codes whose sheets cannot share a run (5, 7, 13, 15) and for anything
// outside 1-16.
std::vector<SheetPrinter> sheetPrinters(int compositionCode);
// The format codes a sheet printer prints.
std::vector<int> formatsOf(SheetPrinter printer);
// Whether the sheet of this format code prints at all under the
// composition code (a front cover and a booklet never print together).
bool printsSheet(int formatCode, int compositionCode);
// Format codes in project print order: front cover, booklet, jacket,
// inlay, disc label.
const std::vector<int>& projectOrder();

enum class Origin {
    PrintableArea,  // covers, booklet, jacket, inlay: never lose a border to the margin
    Paper,          // the disc label: stock offsets are measured on the paper
};

// One label on a page.
struct Placement {
    int sheet = 0;          // format code
    bool textPage = false;  // the text page of a booklet or jacket (else its picture page)
    QPointF posMm;          // the canvas's top-left corner from the origin
    Origin origin = Origin::PrintableArea;
    bool disc = false;      // disc label: no border, masked to the disc
    int copy = 1;           // from 1
    // Selected sheets: the sheet's fields step once this placement is drawn.
    bool advanceAfter = false;
};

struct PlannedPage {
    QPageLayout::Orientation orientation = QPageLayout::Portrait;
    std::vector<Placement> placements;
};

struct PlanRequest {
    RunKind kind = RunKind::Project;
    int sheets = 0;           // the project's sheets: sum of their format codes
    int compositionCode = 0;  // print weights: the project's, or the selection's for Selected
    int currentSheet = 0;     // format code, for CurrentSheet
    int copies = 1;
    QPointF discOffsetMm;     // the chosen stock's offsets
};

struct PrintPlan {
    RunKind kind = RunKind::Project;
    int copies = 0;  // after the project rule below
    std::vector<PlannedPage> pages;
    bool printsDisc() const;
    int placementCount() const;
};

// The copy count a run really prints: a project holding only a disc label
// prints one copy, without asking; otherwise what was asked (none below 1).
int effectiveCopies(RunKind kind, int compositionCode, int asked);
// Whether the run asks for the copy count (and warns about value files).
bool asksForCopies(RunKind kind, int compositionCode);

PrintPlan planRun(const PlanRequest& request);
// Leaves the disc labels out (no stock was chosen for them); pages left
// empty go too.
void dropDiscLabels(PrintPlan& plan);

// The copies dialog's answer: the text's leading decimal number rounded to
// the nearest whole number, halves to even ("2.5" 2, "3.5" 4); 0 (nothing
// printed) for a text without a leading number or a number below 1; none
// for more copies than a run takes (the dialog asks again).
constexpr int kMaxCopies = 9999;
std::optional<int> copiesFromText(const QString& text);

// The print-selection dialog's boxes for the sheets a project has (the sum
// of their print weights): the weights ticked and the weights disabled when
// it opens. Projects whose sheets cannot be printed together offer nothing.
struct SelectionBoxes {
    int checked = 0;
    int disabled = 0;
};
SelectionBoxes selectionBoxes(int projectWeights);

}  // namespace jk::print
