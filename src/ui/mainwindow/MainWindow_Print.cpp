// Printing: the current sheet, the project and the selected sheets, each a
// single job through the shared page code, and the print preview.
#include "ui/mainwindow/MainWindow.h"
#include "file/Settings.h"
#include "model/AppContext.h"
#include "output/Calibration.h"
#include "output/PrintRun.h"
#include "platform/Services.h"
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProgressDialog>
#include <QToolButton>

namespace pf = jk::platform;
using jk::Msg;
using jk::print::RunKind;

namespace {

void tell(const QString& text, const QString& title, pf::Icon icon)
{
    if (auto* m = pf::services().messages) m->show(text, title, icon);
}

}  // namespace

void MainWindow::connectPrintCommands()
{
    auto on = [this](const char* name, auto fn) { connect(action(name), &QAction::triggered, this, fn); };
    on("imprime", [this] { printCurrentSheet(); });
    on("MPCS", [this] { printCurrentSheet(); });
    on("IMPPRJ", [this] { printProject(); });
    on("MPPRJ", [this] { printProject(); });
    on("PRNSELECT", [this] { printSelected(); });
    on("MFPrnSelect", [this] { printSelected(); });
    on("PRINTPREVIEW", [this] { printPreview(); });
    on("MPPREVIEW", [this] { printPreview(); });

    // The printer chosen in the copies dialog becomes the current printer
    // at once, as choosing it in the printer box does.
    copiesDialog = [](MainWindow* w) {
        return PrinterDialog::run(w, [w](const QString& name) {
            w->printerBox()->setCurrentIndex(w->printerBox()->findText(name));
            w->changePrinter();
        });
    };
    discStockDialog = [this](QWidget* parent, const std::vector<jk::print::DiscStock>& stocks, const QString& preselect) {
        // The test outline goes to the printer the run goes to, calibrated
        // like the label will be.
        auto testPrint = [this](const jk::print::DiscStock& stock) {
            QString error;
            if (!jk::print::printTestOutline(stock, jk::print::PrintTarget{combo1_->currentText()}, jk::texts(), &error))
                if (auto* m = pf::services().messages)
                    m->show(error, jk::texts().msg(Msg::ProgramTitle), pf::Icon::Critical);
        };
        return DiscStockDialog::run(parent, stocks, preselect, testPrint);
    };
}

void MainWindow::printCurrentSheet() { runPrint(RunKind::CurrentSheet); }
void MainWindow::printProject() { runPrint(RunKind::Project); }
void MainWindow::printSelected() { runPrint(RunKind::Selected); }

void MainWindow::setPrintCommandsEnabled(bool on)
{
    for (const char* n : {"imprime", "MPCS", "IMPPRJ", "MPPRJ", "PRNSELECT", "MFPrnSelect", "PRINTPREVIEW", "MPPREVIEW"})
        action(n)->setEnabled(on && printerAvailable_);
    button("SSCommand1")->setEnabled(on && printerAvailable_);
}

void MainWindow::runPrint(RunKind kind)
{
    // One run at a time: a second one waits for nothing, it does not start.
    if (printing_ || !printerAvailable_) return;
    const jk::Texts& t = jk::texts();
    SheetWindow* sheet = activeSheet();
    if (kind == RunKind::CurrentSheet && !sheet) return;

    int weights = project_.printWeights();
    if (kind == RunKind::Selected) {
        weights = sheetSelectionDialog(this, project_.printWeights());
        if (weights <= 0) return;
    }

    fillPrinterBox();
    int copies = 1;
    QString printer = combo1_->currentText();
    if (jk::print::asksForCopies(kind, weights)) {
        const PrinterChoice c = copiesDialog(this);
        savedPrinterName_ = c.savedPrinter;
        copies = c.copies;
        if (!c.printer.isEmpty()) printer = c.printer;
        if (copies <= 0) return;
        const QString warning = jk::print::copiesWarning(project_, copies);
        if (!warning.isEmpty()) tell(warning, t.msg(Msg::Warning), pf::Icon::Information);
    }
    const int current = sheet ? sheet->formatCode() : 0;
    jk::print::PrintPlan plan = jk::print::planForProject(project_, kind, copies, weights, current);
    if (plan.pages.empty()) return;

    jk::print::RunOptions options;
    options.texts = t;
    const jk::print::PrintTarget target{printer};
    if (plan.printsDisc()) {
        const jk::print::DiscStockList list = jk::print::readDiscStocks(jk::print::discStockFile());
        if (list.stocks.empty()) {
            tell(t.msg(Msg::NoDiscStock) + u'\n' + list.problems.join(u'\n'), t.msg(Msg::ProgramTitle),
                 pf::Icon::Critical);
            return;
        }
        const DiscStockChoice choice = discStockDialog(this, list.stocks, jk::app().settings.discStock);
        if (choice.answer == DiscStockChoice::Cancelled) return;
        if (choice.answer == DiscStockChoice::Closed) {
            // No stock: the other sheets still print, the disc label does not.
            tell(t.msg(Msg::NoLabelStock), t.msg(Msg::ProgramTitle), pf::Icon::Information);
            jk::print::dropDiscLabels(plan);
            if (plan.pages.empty()) return;
        } else {
            jk::appSetup().settings.discStock = choice.stock.name;
            jk::saveAppSettings();
            options.stock = choice.stock;
            options.keepBackground = choice.keepBackground;
            plan = jk::print::planForProject(project_, kind, copies, weights, current, choice.stock);
            // Never a label off the paper without the user knowing first.
            const QPageSize paper = jk::print::targetPageSize(target);
            if (paper.isValid() && !jk::print::discFitsPaper(choice.stock, paper.size(QPageSize::Millimeter))) {
                auto* m = pf::services().messages;
                if (!m || m->show(t.msg(Msg::PrintDiscOffPaper) + u' ' + choice.stock.name, t.msg(Msg::Warning),
                                  pf::Icon::Warning, pf::Buttons::OkCancel) != pf::AnswerOk)
                    return;
            }
        }
    }

    printing_ = true;
    setPrintCommandsEnabled(false);
    QProgressDialog progress(this);
    progress.setObjectName(QStringLiteral("PrintProgress"));
    progress.setWindowTitle(t.msg(Msg::PrintingTitle));
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(0);
    progress.setRange(0, int(plan.pages.size()));
    progress.setCancelButtonText(t.msgOr(Msg::Cancel, "Cancel"));
    options.onPage = [&](int page, int count) {
        progress.setLabelText(t.msg(Msg::PrintingPage).arg(page + 1).arg(count));
        progress.setValue(page);
        QApplication::processEvents();
        return !progress.wasCanceled();
    };
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const jk::print::RunResult result = jk::print::printRun(project_, plan, target, options);
    QApplication::restoreOverrideCursor();
    progress.reset();
    printing_ = false;
    setPrintCommandsEnabled(true);
    updatePrinterAvailability();

    if (result.status == jk::print::RunResult::Failed)
        tell(result.error, t.msg(Msg::ProgramTitle), pf::Icon::Critical);
    else if (!result.warnings.isEmpty())
        tell(result.warnings.join(u'\n'), t.msg(Msg::Warning), pf::Icon::Warning);
    refresh();
}

void MainWindow::printPreview()
{
    if (printing_) return;
    const jk::Texts& t = jk::texts();
    const QPrinterInfo info = QPrinterInfo::printerInfo(combo1_->currentText());
    QPrinter printer(info.isNull() ? QPrinterInfo::defaultPrinter() : info, QPrinter::HighResolution);
    // The project's pages, one copy, as Print Project would send them: the
    // disc label on the stock chosen last (else the first of the list).
    jk::print::RunOptions options;
    options.texts = t;
    const jk::print::DiscStockList list = jk::print::readDiscStocks(jk::print::discStockFile());
    options.stock = jk::print::findDiscStock(list.stocks, jk::app().settings.discStock);
    if (!options.stock && !list.stocks.empty()) options.stock = list.stocks.front();
    jk::print::PrintPlan plan = jk::print::planForProject(project_, RunKind::Project, 1, 0, 0, options.stock);
    if (!options.stock) jk::print::dropDiscLabels(plan);
    if (plan.pages.empty()) {
        tell(t.msg(Msg::PrintNothing), t.msg(Msg::PrintPreviewTitle), pf::Icon::Information);
        return;
    }

    QPrintPreviewDialog dialog(&printer, this);
    dialog.setObjectName(QStringLiteral("PrintPreview"));
    dialog.setWindowTitle(t.msg(Msg::PrintPreviewTitle));
    QString error;
    connect(&dialog, &QPrintPreviewDialog::paintRequested, this, [&](QPrinter* p) {
        jk::print::PrintTarget target;
        target.device = p;
        const jk::print::RunResult r = jk::print::printRun(project_, plan, target, options);
        if (r.status == jk::print::RunResult::Failed) error = r.error;
    });
    dialog.resize(width() * 3 / 4, height() * 9 / 10);
    printing_ = true;
    setPrintCommandsEnabled(false);
    dialog.exec();
    printing_ = false;
    setPrintCommandsEnabled(true);
    updatePrinterAvailability();
    if (!error.isEmpty()) tell(error, t.msg(Msg::PrintPreviewTitle), pf::Icon::Critical);
}
