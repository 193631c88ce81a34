#include "output/PrintRun.h"
#include "model/Numbering.h"
#include "model/AppContext.h"
#include "model/Project.h"
#include "render/SheetRenderer.h"
#include <QFileInfo>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>
#include <QPrinter>
#include <QPrinterInfo>
#include <QSaveFile>
#include <QSet>
#include <memory>

namespace jk::print {

namespace {

constexpr double kMmPerInch = 25.4;
// The disc label: what is not disc is painted white, as exact shapes.
constexpr double kHoleRadiusMm = 16.40;
constexpr double kDiscRadiusMm = 59.00;
// Printing resolution of a PDF: fine enough for 0.1 mm placement and
// full-resolution pictures; text and shapes are vectors anyway.
constexpr int kPdfDpi = 1200;

double mmToTwips(double mm) { return mm / kMmPerInch * sheet::kTwipsPerInch; }

// "( 3/ 2)": a positive number is written with a leading blank.
QString signedNumber(int n) { return n >= 0 ? u' ' + QString::number(n) : QString::number(n); }

// The paper of a page, as the device has it now.
struct PageGeometry {
    QPointF printableMm;  // the printable area's top-left corner on the paper
};

PageGeometry geometryOf(const QPagedPaintDevice& dev)
{
    const QMarginsF m = dev.pageLayout().margins(QPageLayout::Millimeter);
    return {QPointF(m.left(), m.top())};
}

void paintPlacement(QPainter& p, const Project& project, const Placement& pl, const PageGeometry& g, double dpi,
                    bool keepBackground, const FieldValues& values)
{
    sheet::RenderOptions o = sheet::defaultOptions(project, pl.sheet);
    o.textPage = pl.textPage;
    if (pl.textPage) {
        // The text page is printed alone: the sheet's pictures stay off it.
        for (int i = 1; i <= project.pictures().count(); ++i)
            if (project.pictures().at(i).sheet == pl.sheet) o.hiddenPictures.insert(i);
    }
    if (pl.disc) {
        o.border = false;
        o.background = keepBackground;
    }
    const QPointF origin = pl.origin == Origin::Paper ? QPointF(0, 0) : g.printableMm;
    const double dotsPerMm = dpi / kMmPerInch;
    p.save();
    p.translate((origin + pl.posMm) * dotsPerMm);
    sheet::paintOnDevice(p, project, pl.sheet, o, values);
    if (pl.disc) {
        p.save();
        p.scale(p.device()->logicalDpiX() / sheet::kTwipsPerInch, p.device()->logicalDpiY() / sheet::kTwipsPerInch);
        const QSizeF canvas = sheet::canvasSizeTwips(pl.sheet);
        const QPointF c(canvas.width() / 2, canvas.height() / 2);
        QPainterPath mask;
        mask.setFillRule(Qt::OddEvenFill);
        mask.addRect(QRectF(QPointF(0, 0), canvas));
        mask.addEllipse(c, mmToTwips(kDiscRadiusMm), mmToTwips(kDiscRadiusMm));
        mask.addEllipse(c, mmToTwips(kHoleRadiusMm), mmToTwips(kHoleRadiusMm));
        p.setRenderHint(QPainter::Antialiasing);
        p.fillPath(mask, Qt::white);
        p.restore();
    }
    p.restore();
}

// Pictures and backgrounds the plan's sheets show that cannot be read.
QStringList missingPictures(const Project& project, const PrintPlan& plan, bool keepBackground)
{
    QSet<int> sheets, discSheets;
    for (const PlannedPage& page : plan.pages)
        for (const Placement& pl : page.placements) (pl.disc ? discSheets : sheets).insert(pl.sheet);
    QStringList missing;
    auto check = [&](const QString& file) {
        if (!file.isEmpty() && !file.startsWith(u'~') && sheet::pictureSize(file).isEmpty() && !missing.contains(file))
            missing << file;
    };
    for (int i = 1; i <= project.pictures().count(); ++i) {
        const PictureRecord& r = project.pictures().at(i);
        if (!r.isFree() && (sheets.contains(r.sheet) || discSheets.contains(r.sheet))) check(r.file);
    }
    for (int code : sheets) check(project.background(code).text);
    if (keepBackground)
        for (int code : discSheets) check(project.background(code).text);
    return missing;
}

// The field values of every placement, in plan order, and what the fields
// show once the run is over.
struct FieldSchedule {
    std::vector<FieldValues> perPlacement;
    FieldValues after;
};

FieldSchedule scheduleFields(const Project& project, const PrintPlan& plan, const CopyNumbering& numbering)
{
    FieldSchedule s;
    FieldValues state;
    for (const PlannedPage& page : plan.pages)
        for (const Placement& pl : page.placements) {
            switch (plan.kind) {
            case RunKind::CurrentSheet: s.perPlacement.push_back({}); break;
            case RunKind::Project: s.perPlacement.push_back(numbering.valuesForCopy(pl.copy)); break;
            case RunKind::Selected:
                s.perPlacement.push_back(state);
                if (pl.advanceAfter) state = advancedSheetValues(project, pl.sheet, state);
                break;
            }
        }
    s.after = state;
    return s;
}

QPageSize defaultPaper()
{
    const QPrinterInfo info = QPrinterInfo::defaultPrinter();
    const QPageSize size = info.isNull() ? QPageSize() : info.defaultPageSize();
    return size.isValid() ? size : QPageSize(QPageSize::A4);
}

}  // namespace

QPageSize targetPageSize(const PrintTarget& target)
{
    if (!target.pdfPath.isEmpty()) return defaultPaper();
    const QPrinterInfo info =
        target.printer.isEmpty() ? QPrinterInfo::defaultPrinter() : QPrinterInfo::printerInfo(target.printer);
    if (info.isNull()) return {};
    const QPageSize size = info.defaultPageSize();
    return size.isValid() ? size : QPageSize(QPageSize::A4);
}

QString copiesWarning(const Project& project, int copies)
{
    int values = 0;
    for (int i = 1; i <= project.charFields().count(); ++i) {
        const CharFieldRecord& r = project.charFields().at(i);
        if (!r.isFree() && !r.valueFile.isEmpty()) values = int(fieldValues(r.valueFile).size());
    }
    if (copies == 0 || values == 0 || values == copies) return {};
    return texts().msg(Msg::CopiesDifferFromValues) + QStringLiteral(" (") + signedNumber(copies) + u'/' +
           signedNumber(values) + u')';
}

PrintPlan planForProject(const Project& project, RunKind kind, int copies, int selectionWeights, int currentSheet,
                         const std::optional<DiscStock>& stock)
{
    PlanRequest r;
    r.kind = kind;
    r.sheets = project.sheetComposition();
    r.compositionCode = kind == RunKind::Selected ? selectionWeights : project.printWeights();
    r.currentSheet = currentSheet;
    r.copies = copies;
    if (stock) r.discOffsetMm = {stock->xMm, stock->yMm};
    return planRun(r);
}

RunResult printRun(Project& project, const PrintPlan& plan, const PrintTarget& target, const RunOptions& options)
{
    RunResult result;
    const Texts& t = options.texts;
    if (plan.pages.empty()) {
        result.error = t.msg(Msg::PrintNothing);
        return result;
    }
    if (plan.printsDisc() && !options.stock) {
        result.error = t.msg(Msg::NoDiscStock);
        return result;
    }

    // The device: a PDF written beside its target and renamed over it once
    // complete, or the printer, checked now (it may have gone since it was
    // chosen).
    std::unique_ptr<QSaveFile> file;
    std::unique_ptr<QPdfWriter> writer;
    std::unique_ptr<QPrinter> printer;
    QPagedPaintDevice* dev = nullptr;
    QPageSize paper;
    const QString jobName = !options.jobName.isEmpty() ? options.jobName
                            : !project.fileName().isEmpty() ? project.fileName()
                                                            : QStringLiteral("Jewelcase Studio");
    if (!target.pdfPath.isEmpty()) {
        file = std::make_unique<QSaveFile>(target.pdfPath);
        if (!file->open(QIODevice::WriteOnly)) {
            result.error = t.msg(Msg::PrintPdfNotWritten) + u' ' + target.pdfPath + QStringLiteral(": ") + file->errorString();
            return result;
        }
        writer = std::make_unique<QPdfWriter>(file.get());
        writer->setCreator(QStringLiteral("Jewelcase Studio"));
        writer->setTitle(jobName);
        writer->setResolution(kPdfDpi);
        paper = defaultPaper();
        writer->setPageLayout(QPageLayout(paper, plan.pages.front().orientation, QMarginsF(0, 0, 0, 0)));
        dev = writer.get();
    } else {
        const QPrinterInfo info =
            target.printer.isEmpty() ? QPrinterInfo::defaultPrinter() : QPrinterInfo::printerInfo(target.printer);
        if (info.isNull()) {
            result.error = target.printer.isEmpty() ? t.msg(Msg::NoPrinter)
                                                    : t.msg(Msg::PrinterUnavailable) + u' ' + target.printer;
            return result;
        }
        printer = std::make_unique<QPrinter>(info, QPrinter::HighResolution);
        printer->setDocName(jobName);
        printer->setCopyCount(1);
        printer->setFullPage(true);
        printer->setPageOrientation(plan.pages.front().orientation);
        paper = printer->pageLayout().pageSize();
        dev = printer.get();
    }

    if (plan.printsDisc() && !discFitsPaper(*options.stock, paper.size(QPageSize::Millimeter)))
        result.warnings << t.msg(Msg::PrintDiscOffPaper) + u' ' + options.stock->name;
    for (const QString& f : missingPictures(project, plan, options.keepBackground))
        result.warnings << t.msg(Msg::PrintPictureMissing) + u' ' + f;

    const CopyNumbering numbering(project);
    const FieldSchedule fields = scheduleFields(project, plan, numbering);
    const int pageCount = int(plan.pages.size());

    auto cancel = [&] {
        if (printer) printer->abort();
        if (file) file->cancelWriting();
    };
    if (options.onPage && !options.onPage(0, pageCount)) {
        if (file) file->cancelWriting();
        result.status = RunResult::Cancelled;
        return result;
    }
    QPainter p;
    if (!p.begin(dev)) {
        if (file) file->cancelWriting();
        result.error = printer ? t.msg(Msg::PrintJobFailed) + u' ' + printer->printerName()
                               : t.msg(Msg::PrintPdfNotWritten) + u' ' + target.pdfPath;
        return result;
    }
    std::size_t k = 0;
    for (int i = 0; i < pageCount; ++i) {
        const PlannedPage& page = plan.pages[std::size_t(i)];
        if (i > 0) {
            if (options.onPage && !options.onPage(i, pageCount)) {
                cancel();
                p.end();
                result.status = RunResult::Cancelled;
                return result;
            }
            dev->setPageOrientation(page.orientation);
            if (!dev->newPage()) {
                cancel();
                p.end();
                result.error = t.msg(Msg::PrintJobFailed) + u' ' + jobName;
                return result;
            }
        }
        const PageGeometry g = geometryOf(*dev);
        for (const Placement& pl : page.placements)
            paintPlacement(p, project, pl, g, dev->logicalDpiX(), options.keepBackground, fields.perPlacement[k++]);
        ++result.pages;
    }
    if (!p.end()) {
        if (file) file->cancelWriting();
        result.error = t.msg(Msg::PrintJobFailed) + u' ' + jobName;
        return result;
    }
    if (file && !file->commit()) {
        result.error = t.msg(Msg::PrintPdfNotWritten) + u' ' + target.pdfPath + QStringLiteral(": ") + file->errorString();
        return result;
    }
    // The document changes once, now that every copy went out.
    if (plan.kind == RunKind::Project) numbering.finish(project, plan.copies);
    else if (plan.kind == RunKind::Selected) applyFieldValues(project, fields.after);
    result.status = RunResult::Printed;
    return result;
}

}  // namespace jk::print
