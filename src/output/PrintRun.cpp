#include "output/PrintRun.h"
#include "model/Numbering.h"
#include "model/AppContext.h"
#include "model/Project.h"
#include "render/SheetRenderer.h"
#include <QFileInfo>
#include <QPainter>
#include <QPainterPath>
#include <QSet>

namespace jk::print {

namespace {

constexpr double kMmPerInch = 25.4;
// The disc label: what is not disc is painted white, as exact shapes.

double mmToTwips(double mm) { return mm / kMmPerInch * sheet::kTwipsPerInch; }

// "( 3/ 2)": a positive number is written with a leading blank.
QString signedNumber(int n) { return n >= 0 ? u' ' + QString::number(n) : QString::number(n); }

void paintPlacement(QPainter& p, const Project& project, const Placement& pl, QPointF printableMm, double dotsPerMm,
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
    const QPointF origin = pl.origin == Origin::Paper ? QPointF(0, 0) : printableMm;
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
        mask.addEllipse(c, mmToTwips(kDiscHoleRadiusMm), mmToTwips(kDiscHoleRadiusMm));
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

}  // namespace

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
    const QString jobName = !options.jobName.isEmpty() ? options.jobName
                            : !project.fileName().isEmpty() ? project.fileName()
                                                            : QStringLiteral("Jewelcase Studio");
    const int pageCount = int(plan.pages.size());
    if (options.onPage && !options.onPage(0, pageCount)) {
        result.status = RunResult::Cancelled;
        return result;
    }
    PageDevice out;
    if (!out.open(target, plan.pages.front().orientation, jobName, t, &result.error)) return result;

    if (plan.printsDisc() && !discFitsPaper(*options.stock, out.paper().size(QPageSize::Millimeter)))
        result.warnings << t.msg(Msg::PrintDiscOffPaper) + u' ' + options.stock->name;
    for (const QString& f : missingPictures(project, plan, options.keepBackground))
        result.warnings << t.msg(Msg::PrintPictureMissing) + u' ' + f;

    const CopyNumbering numbering(project);
    const FieldSchedule fields = scheduleFields(project, plan, numbering);
    std::size_t k = 0;
    for (int i = 0; i < pageCount; ++i) {
        const PlannedPage& page = plan.pages[std::size_t(i)];
        if (i > 0) {
            if (options.onPage && !options.onPage(i, pageCount)) {
                out.cancel();
                result.status = RunResult::Cancelled;
                return result;
            }
            if (!out.newPage(page.orientation)) {
                out.cancel();
                result.error = t.msg(Msg::PrintJobFailed) + u' ' + jobName;
                return result;
            }
        }
        for (const Placement& pl : page.placements)
            paintPlacement(out.painter(), project, pl, out.printableMm(), out.dotsPerMm(), options.keepBackground,
                           fields.perPlacement[k++]);
        ++result.pages;
    }
    if (!out.finish(&result.error)) return result;
    // The document changes once, now that every copy went out (a preview
    // shows the run without making it).
    if (!out.isPreview()) {
        if (plan.kind == RunKind::Project) numbering.finish(project, plan.copies);
        else if (plan.kind == RunKind::Selected) applyFieldValues(project, fields.after);
    }
    result.status = RunResult::Printed;
    return result;
}

}  // namespace jk::print
