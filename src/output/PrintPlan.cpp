#include "output/PrintPlan.h"
#include <QRegularExpression>
#include <cmath>
#include "model/Formats.h"
#include "model/Records.h"

namespace jk::print {

namespace {

constexpr double kPicturePageXMm = 121.0;
constexpr double kInlayYMm = 130.0;

bool among(int code, std::initializer_list<int> codes)
{
    for (int c : codes)
        if (c == code) return true;
    return false;
}

// Pages fill as the labels come; a page closes when a label ends it, when
// the next one needs the other orientation, or when a front cover is not
// followed by its inlay.
class PageBuilder {
public:
    void add(const Placement& p, QPageLayout::Orientation o, bool endsPage)
    {
        if (!cur_.placements.empty() &&
            (cur_.orientation != o || (frontOpen_ && p.sheet != FmtInside)))
            close();
        cur_.orientation = o;
        cur_.placements.push_back(p);
        frontOpen_ = p.sheet == FmtSimple;
        if (endsPage) close();
    }
    void close()
    {
        if (!cur_.placements.empty()) pages_.push_back(std::move(cur_));
        cur_ = {};
        frontOpen_ = false;
    }
    std::vector<PlannedPage> take()
    {
        close();
        return std::move(pages_);
    }

private:
    std::vector<PlannedPage> pages_;
    PlannedPage cur_;
    bool frontOpen_ = false;
};

// One sheet printed once (what printing the active sheet did).
void placeSheet(PageBuilder& b, const PlanRequest& r, int code, int copy, bool advanceAfter)
{
    Placement p;
    p.sheet = code;
    p.copy = copy;
    switch (code) {
    case FmtDouble:
    case FmtJacket:
        p.textPage = true;
        b.add(p, QPageLayout::Landscape, false);
        p.textPage = false;
        p.posMm = {kPicturePageXMm, 0};
        p.advanceAfter = advanceAfter;
        b.add(p, QPageLayout::Landscape, true);
        break;
    case FmtCdRom:
        p.posMm = r.discOffsetMm;
        p.origin = Origin::Paper;
        p.disc = true;
        p.advanceAfter = advanceAfter;
        b.add(p, QPageLayout::Portrait, true);
        break;
    case FmtSimple:
        p.advanceAfter = advanceAfter;
        b.add(p, QPageLayout::Portrait, false);
        break;
    case FmtInside:
        p.posMm = {0, kInlayYMm};
        p.advanceAfter = advanceAfter;
        b.add(p, QPageLayout::Portrait, true);
        break;
    default: break;
    }
}

}  // namespace

std::vector<SheetPrinter> sheetPrinters(int code)
{
    using S = SheetPrinter;
    switch (code) {
    case 1:
    case 16: return {S::BookletOrJacket};
    case 2: return {S::DiscLabel};
    case 3: return {S::BookletOrJacket, S::DiscLabel};
    case 4: return {S::FrontCover};
    case 6: return {S::DiscLabel, S::FrontCover};
    case 8: return {S::Inlay};
    case 9: return {S::BookletOrJacket, S::Inlay};
    case 10: return {S::DiscLabel, S::Inlay};
    case 11: return {S::BookletOrJacket, S::DiscLabel, S::Inlay};
    case 12: return {S::FrontCover, S::Inlay};
    case 14: return {S::DiscLabel, S::FrontCover, S::Inlay};
    default: return {};
    }
}

std::vector<int> formatsOf(SheetPrinter printer)
{
    switch (printer) {
    case SheetPrinter::BookletOrJacket: return {FmtDouble, FmtJacket};
    case SheetPrinter::DiscLabel: return {FmtCdRom};
    case SheetPrinter::FrontCover: return {FmtSimple};
    case SheetPrinter::Inlay: return {FmtInside};
    }
    return {};
}

bool printsSheet(int formatCode, int code)
{
    switch (formatCode) {
    case FmtDouble:
    case FmtJacket: return among(code, {1, 3, 9, 11, 16});
    case FmtCdRom: return among(code, {2, 3, 6, 10, 11, 14});
    case FmtSimple: return among(code, {4, 6, 12, 14});
    case FmtInside: return among(code, {8, 9, 10, 11, 12, 14});
    default: return false;
    }
}

const std::vector<int>& projectOrder()
{
    static const std::vector<int> order = {FmtSimple, FmtDouble, FmtJacket, FmtInside, FmtCdRom};
    return order;
}

bool PrintPlan::printsDisc() const
{
    for (const PlannedPage& page : pages)
        for (const Placement& p : page.placements)
            if (p.disc) return true;
    return false;
}

int PrintPlan::placementCount() const
{
    int n = 0;
    for (const PlannedPage& page : pages) n += int(page.placements.size());
    return n;
}

int effectiveCopies(RunKind kind, int compositionCode, int asked)
{
    if (kind == RunKind::Project && compositionCode == 2) return 1;
    return std::max(asked, 0);
}

bool asksForCopies(RunKind kind, int compositionCode) { return !(kind == RunKind::Project && compositionCode == 2); }

PrintPlan planRun(const PlanRequest& r)
{
    PrintPlan plan;
    plan.kind = r.kind;
    plan.copies = effectiveCopies(r.kind, r.compositionCode, r.copies);
    PageBuilder b;
    for (int c = 1; c <= plan.copies; ++c) {
        switch (r.kind) {
        case RunKind::CurrentSheet:
            if ((r.sheets & r.currentSheet) && printsSheet(r.currentSheet, r.compositionCode))
                placeSheet(b, r, r.currentSheet, c, false);
            break;
        case RunKind::Project:
            for (int code : projectOrder())
                if ((r.sheets & code) && printsSheet(code, r.compositionCode)) placeSheet(b, r, code, c, false);
            b.close();
            break;
        case RunKind::Selected:
            for (SheetPrinter printer : sheetPrinters(r.compositionCode))
                for (int code : formatsOf(printer))
                    if ((r.sheets & code) && printsSheet(code, r.compositionCode)) placeSheet(b, r, code, c, true);
            b.close();
            break;
        }
    }
    plan.pages = b.take();
    return plan;
}

void dropDiscLabels(PrintPlan& plan)
{
    for (PlannedPage& page : plan.pages)
        std::erase_if(page.placements, [](const Placement& p) { return p.disc; });
    std::erase_if(plan.pages, [](const PlannedPage& page) { return page.placements.empty(); });
}

std::optional<int> copiesFromText(const QString& text)
{
    // A leading number as a typed-in amount reads it: blanks, a sign,
    // digits, a decimal point and more digits; whatever follows is ignored.
    static const QRegularExpression leading(QStringLiteral("^\\s*([+-]?(\\d+\\.?\\d*|\\.\\d+))"));
    const QRegularExpressionMatch m = leading.match(text);
    if (!m.hasMatch()) return 0;
    const double value = m.captured(1).toDouble();
    if (value > kMaxCopies + 0.5) return std::nullopt;
    const int copies = int(std::nearbyint(value));  // the default rounding mode: halves to even
    return std::max(copies, 0);
}

SelectionBoxes selectionBoxes(int projectWeights)
{
    constexpr int all = 1 | 2 | 4 | 8;
    switch (projectWeights) {
    case 1: case 4: case 9: case 11: case 12: case 14: return {projectWeights, all & ~projectWeights};
    default: return {0, all};
    }
}

}  // namespace jk::print
