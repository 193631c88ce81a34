#pragma once
// Paints a print plan as one job, on a printer or into a PDF file, through
// the sheets' one drawing path at the device's resolution: text stays text,
// pictures come from their full-resolution source, and an image used on
// many pages is stored once in the job.
//
// For the print commands of the main window, a run is:
//   1. plan = planRun({kind, project.sheetComposition(), weights, sheet, copies, stock offsets})
//      (asksForCopies() says whether to show the copies dialog; copiesWarning()
//      the text of the warning after it; plan.printsDisc() whether to ask for
//      the label stock, and discFitsPaper() whether to warn about it);
//   2. printRun(project, plan, target, options) with onPage driving the
//      progress dialog (return false to cancel: nothing is sent);
//   3. show result.error / result.warnings.
// Copy N is drawn from its own field values; the document changes once,
// after a complete run (fields show their advanced values), never on a
// cancelled or failed one.
#include "output/DiscStock.h"
#include "output/PageDevice.h"
#include "output/PrintPlan.h"
#include "model/AppContext.h"
#include <QPageSize>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace jk {
class Project;
}

namespace jk::print {

struct RunOptions {
    std::optional<DiscStock> stock;  // needed when the plan prints a disc label
    bool keepBackground = false;     // the disc label's background is printed too
    QString jobName;                 // the job's title; empty: the project's file name
    // Called before each page is painted, page from 0. False cancels the
    // run: the job is dropped (or the PDF not written) and the fields stay.
    std::function<bool(int page, int pageCount)> onPage;
    Texts texts;  // messages; loadMessageFile(paths::messageFile()) in the program
};

struct RunResult {
    enum Status { Printed, Cancelled, Failed } status = Failed;
    int pages = 0;        // pages painted
    QString error;        // why a run failed (one line)
    QStringList warnings; // what was printed anyway: missing pictures, a disc off the paper
};

RunResult printRun(Project& project, const PrintPlan& plan, const PrintTarget& target, const RunOptions& options);

// The warning after the copies were chosen, when the value file of the last
// character field that has one holds another number of values than the
// copy count: message 31 followed by " ( 3/ 2)" (title: message 32). Empty
// when there is nothing to warn about.
QString copiesWarning(const Project& project, int copies);

// What a run prints, from the project: the plan for the main window's
// commands and --print. selectionWeights is the print-sheet selection
// (Selected only); currentSheet the active sheet (CurrentSheet only).
PrintPlan planForProject(const Project& project, RunKind kind, int copies, int selectionWeights = 0,
                         int currentSheet = 0, const std::optional<DiscStock>& stock = std::nullopt);

}  // namespace jk::print
