#include "output/PrintCommand.h"
#include "output/CommandProject.h"
#include "output/Calibration.h"
#include "output/PrintRun.h"
#include "file/Settings.h"
#include "file/MessageFile.h"
#include "file/Paths.h"
#include "model/AppContext.h"
#include "model/Formats.h"
#include "model/Project.h"
#include <QPrinterInfo>
#include <QTextStream>

namespace jk::print {

namespace {

// Print weights as the sheet windows add them when they open, in the
// order they open: a paper jacket sets 16.
int weightsOf(int sheets)
{
    int w = 0;
    for (const FormatInfo& f : formats()) {
        if (!(sheets & f.code)) continue;
        w = f.code == FmtJacket ? 16 : w + f.weight;
    }
    return w;
}

// The stock named on the command line; the problems of the list and the
// failure when there is none.
std::optional<DiscStock> namedStock(const PrintCommand& c, QTextStream& err, QString* failure)
{
    const QString file = c.stockFile.isEmpty() ? discStockFile() : c.stockFile;
    const DiscStockList list = readDiscStocks(file);
    std::optional<DiscStock> stock = findDiscStock(list.stocks, c.stock);
    if (stock) return stock;
    for (const QString& p : list.problems) err << "jewlkit: " << file << ": " << p << Qt::endl;
    if (c.stock.isEmpty()) {
        *failure = QStringLiteral("name the disc-label stock with --stock (see %1)").arg(file);
        return {};
    }
    QStringList names;
    for (const DiscStock& s : list.stocks) names << s.name;
    *failure = QStringLiteral("unknown disc-label stock \"%1\"%2")
                   .arg(c.stock, names.isEmpty() ? QString() : QStringLiteral("; the stocks are: ") + names.join(QStringLiteral("; ")));
    return {};
}

// Where the pages go: the PDF, or a printer that exists; calibrated as
// --calibrated-for says. False with the failure.
bool commandTarget(const PrintCommand& c, const Texts& t, PrintTarget* target, QString* failure)
{
    target->pdfPath = c.pdf;
    if (c.pdf.isEmpty()) {
        const QStringList printers = QPrinterInfo::availablePrinterNames();
        if (printers.isEmpty()) {
            *failure = t.msg(Msg::NoPrinter) + QStringLiteral(" (use --pdf OUT.pdf to print into a file)");
            return false;
        }
        if (!c.printer.isEmpty() && !printers.contains(c.printer)) {
            *failure = t.msg(Msg::PrinterUnavailable) + u' ' + c.printer + QStringLiteral(" (printers: ") +
                       printers.join(QStringLiteral(", ")) + u')';
            return false;
        }
        if (c.printer.isEmpty() && QPrinterInfo::defaultPrinterName().isEmpty()) {
            *failure = QStringLiteral("there is no default printer: name one with --printer (printers: %1)")
                           .arg(printers.join(QStringLiteral(", ")));
            return false;
        }
        target->printer = c.printer;
    }
    if (!c.calibratedFor.isEmpty()) {
        // A printer renamed or removed since: say so rather than print uncalibrated.
        const QMap<QString, PrinterCalibration>& known = app().settings.calibrations;
        if (!known.contains(c.calibratedFor)) {
            *failure = QStringLiteral("no calibration is stored for \"%1\" (calibrated printers: %2)")
                           .arg(c.calibratedFor, known.isEmpty() ? QStringLiteral("none") : known.keys().join(QStringLiteral(", ")));
            return false;
        }
        target->calibration = known.value(c.calibratedFor);
    }
    return true;
}

}  // namespace

int runPrintCommand(const PrintCommand& c, QTextStream& err)
{
    auto fail = [&err](const QString& message) {
        err << "jewlkit: " << message << Qt::endl;
        return 1;
    };
    appSetup().texts = loadMessageFile(paths::messageFile());
    // The printers' calibrations.
    appSetup().settings = readSettings(paths::settingsFile(), paths::homeDir());
    RunOptions options;
    options.texts = loadMessageFile(paths::messageFile());
    const Texts& t = options.texts;
    QString failure;

    if (c.testOutline) {
        const std::optional<DiscStock> stock = namedStock(c, err, &failure);
        if (!stock) return fail(failure);
        PrintTarget target;
        if (!commandTarget(c, t, &target, &failure)) return fail(failure);
        if (!printTestOutline(*stock, target, t, &failure)) return fail(failure);
        return 0;
    }

    int copies = 1;
    if (!c.copies.isEmpty()) {
        bool ok = false;
        copies = c.copies.toInt(&ok);
        if (!ok || copies < 1 || copies > kMaxCopies)
            return fail(QStringLiteral("--copies needs a whole number from 1 to %1, not \"%2\"").arg(kMaxCopies).arg(c.copies));
    }

    // The project, read whole before anything is printed.
    Project project;
    const CommandProjectRead r = readCommandProject(c.project, project, err);
    if (!r.opened || r.problems > 0) return fail(QStringLiteral("cannot read the project %1").arg(c.project));
    const int sheets = r.sheets;
    project.setSheetComposition(sheets);
    project.setPrintWeights(weightsOf(sheets));
    if (sheets == 0) return fail(QStringLiteral("%1 has no sheets to print").arg(c.project));

    RunKind kind = RunKind::Project;
    int selection = 0;
    if (!c.sheets.isEmpty()) {
        kind = RunKind::Selected;
        for (const QString& item : c.sheets.split(u',')) {
            bool ok = false;
            const int code = item.trimmed().toInt(&ok);
            if (!ok || !isFormatCode(code))
                return fail(QStringLiteral("--sheets takes format codes (1, 2, 4, 8, 16), not \"%1\"").arg(item));
            if (!(sheets & code))
                return fail(QStringLiteral("%1 has no %2 sheet (code %3)").arg(c.project, texts().formatName(code)).arg(code));
            if (code == FmtJacket) selection = 16;
            else if (!(selection & compositionWeight(code))) selection += compositionWeight(code);
        }
    }

    // The label stock: checked when named, required when a disc label prints.
    std::optional<DiscStock> stock;
    const PrintPlan probe = planForProject(project, kind, copies, selection);
    if (!c.stock.isEmpty() || probe.printsDisc()) {
        stock = namedStock(c, err, &failure);
        if (!stock) return fail(c.stock.isEmpty() ? QStringLiteral("the project has a disc label: ") + failure : failure);
    }
    const PrintPlan plan = planForProject(project, kind, copies, selection, 0, stock);
    if (plan.pages.empty()) return fail(t.msg(Msg::PrintNothing));
    if (kind == RunKind::Project && !asksForCopies(kind, project.printWeights()) && copies > 1)
        err << "jewlkit: a project with only a disc label prints one copy" << Qt::endl;

    PrintTarget target;
    if (!commandTarget(c, t, &target, &failure)) return fail(failure);

    if (asksForCopies(kind, project.printWeights())) {
        const QString warning = copiesWarning(project, plan.copies);
        if (!warning.isEmpty()) err << "jewlkit: " << texts().msg(Msg::Warning) << ": " << warning << Qt::endl;
    }

    options.stock = stock;
    options.keepBackground = c.keepBackground;
    const RunResult result = printRun(project, plan, target, options);
    for (const QString& w : result.warnings) err << "jewlkit: " << w << Qt::endl;
    if (result.status != RunResult::Printed) return fail(result.error);
    return 0;
}

}  // namespace jk::print
