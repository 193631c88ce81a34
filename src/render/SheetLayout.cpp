#include "render/SheetLayout.h"
#include <cmath>

namespace jk::sheet {

bool isFormatCode(int code) { return jk::isFormatCode(code); }

FormatLayout formatLayout(int code)
{
    const FormatInfo* f = formatInfo(code);
    if (!f) return {};
    return {f->code, f->canvasCm, f->spines, f->textPage, f->disc};
}

QSizeF canvasSizeTwips(int code)
{
    const QRectF cm = formatLayout(code).canvasCm;
    return QSizeF(cmToTwips(cm.width()), cmToTwips(cm.height()));
}

QRect canvasRectTwips(int code)
{
    const QRectF cm = formatLayout(code).canvasCm;
    return QRect(qRound(cmToTwips(cm.left())), qRound(cmToTwips(cm.top())), qRound(cmToTwips(cm.width())),
                 qRound(cmToTwips(cm.height())));
}

QRect canvasRectPixels(int code)
{
    const QRectF cm = formatLayout(code).canvasCm;
    return QRect(cmToPixels(cm.left()), cmToPixels(cm.top()), cmToPixels(cm.width()), cmToPixels(cm.height()));
}

QRect spineRect(int code, Spine side)
{
    if (!formatLayout(code).spines) return {};
    return side == Spine::Left ? QRect(0, 0, 320, 6790) : QRect(8180, 5, 320, 6790);
}

QRect textPageRect(int code)
{
    if (!formatLayout(code).textPage) return {};
    return QRect(0, -120, 8505, 7250);
}

QPoint spineTextStart(Spine side, int panelHeight)
{
    return side == Spine::Left ? QPoint(5, panelHeight - 200) : QPoint(300, 50);
}

int spineTextRotation(Spine side) { return side == Spine::Left ? -90 : 90; }

Background parseBackground(const QString& text)
{
    Background b;
    if (text.isEmpty()) return b;
    if (!text.startsWith(u'~')) {
        b.kind = Background::Picture;
        b.file = text;
        return b;
    }
    // Like the old Val(): leading blanks, a sign, then as many digits as there
    // are; anything else stops the number (no number at all gives 0).
    b.kind = Background::Colour;
    const QString rest = text.mid(1).trimmed();
    qint64 v = 0;
    int i = 0;
    bool negative = false;
    if (i < rest.size() && (rest[i] == u'-' || rest[i] == u'+')) negative = rest[i++] == u'-';
    for (; i < rest.size() && rest[i].isDigit() && v < (qint64(1) << 40); ++i) v = v * 10 + rest[i].digitValue();
    if (negative) v = -v;
    b.colour = i32(quint32(v) & 0xffffff);
    return b;
}

QString spineLine(const QString& spineText, const QString& spineNumberText)
{
    if (spineNumberText.trimmed().isEmpty()) return spineText;
    return spineText + u' ' + spineNumberText;
}

// ---- Command tables ----------------------------------------------------------

void CommandTable::append(const CommandTable& other)
{
    enable.insert(enable.end(), other.enable.begin(), other.enable.end());
    visible.insert(visible.end(), other.visible.begin(), other.visible.end());
    if (other.pageRequest) pageRequest = other.pageRequest;
}

namespace {
std::optional<bool> lastFor(const std::vector<std::pair<QString, bool>>& list, const QString& name)
{
    for (auto it = list.rbegin(); it != list.rend(); ++it)
        if (it->first == name) return it->second;
    return std::nullopt;
}

const char* const kCoverPairs[] = {"AdFrmSimpl", "Taddsimple", "AdFrmDbl", "TaddDbl"};
}  // namespace

std::optional<bool> CommandTable::enabled(const QString& name) const { return lastFor(enable, name); }
std::optional<bool> CommandTable::shown(const QString& name) const { return lastFor(visible, name); }

QString toolsMenuEntry(int code)
{
    switch (code) {
    case FmtSimple: return QStringLiteral("FMSimple");
    case FmtDouble: return QStringLiteral("FMDouble");
    case FmtInside: return QStringLiteral("FMInside");
    case FmtCdRom: return QStringLiteral("FMCDROM");
    default: return {};
    }
}

std::pair<QString, QString> addCommands(int code)
{
    switch (code) {
    case FmtSimple: return {QStringLiteral("AdFrmSimpl"), QStringLiteral("Taddsimple")};
    case FmtDouble: return {QStringLiteral("AdFrmDbl"), QStringLiteral("TaddDbl")};
    case FmtInside: return {QStringLiteral("AdFrmIns"), QStringLiteral("TAddINS")};
    case FmtCdRom: return {QStringLiteral("AdFrmCDR"), QStringLiteral("TAddCDR")};
    default: return {};
    }
}

CommandTable toolButtonsTable(int code, int pageRequest)
{
    CommandTable t;
    t.off("Txtfold");
    switch (code) {
    case FmtInside:
        for (const char* n : {"SSCommand14", "SSCommand15", "Txtfold", "SSCommand13"}) t.on(n);
        t.off("SSCommand2");
        break;
    case FmtSimple:
    case FmtCdRom:
        t.on("SSCommand14");
        t.off("SSCommand15");
        t.on("SSCommand13");
        break;
    case FmtDouble:
    case FmtJacket:
        t.off("SSCommand15");
        if (pageRequest == 1) {
            t.on("SSCommand14");
            t.pageRequest = 1;
        } else {
            t.off("SSCommand14");
            if (code == FmtDouble) t.pageRequest = 2;
            else t.on("SSCommand2");
        }
        break;
    default: break;
    }
    return t;
}

CommandTable formatCommandsTable(int code)
{
    CommandTable t;
    switch (code) {
    case FmtInside:
        t.on("Txtfold");
        t.off("SSCommand2");
        t.pageRequest = 1;
        break;
    case FmtDouble: t.on("SSCommand2"); break;
    case FmtSimple:
        t.off("Txtfold");
        t.pageRequest = 1;
        break;
    default: break;
    }
    return t;
}

CommandTable pageCommandsTable(bool textPageRequested)
{
    CommandTable t;
    if (textPageRequested) {
        for (const char* n : {"FDN", "FDA", "Backpic", "InsertPic", "MneuField", "SSCommand14", "Txtfold"}) t.off(n);
    } else {
        for (const char* n : {"FDN", "FDA", "SSCommand13", "SSCommand14", "Backpic", "InsertPic", "MneuField",
                              "SSCommand2"})
            t.on(n);
        t.off("SSCommand15");
        t.off("Txtfold");
    }
    return t;
}

CommandTable textPageToggleTable(bool textPage)
{
    CommandTable t;
    for (const char* n : {"Backpic", "InsertPic", "MneuField", "FDN", "FDA", "SSCommand14"}) t.on(n, !textPage);
    t.pageRequest = textPage ? 2 : 1;
    return t;
}

CommandTable addSheetCommandsTable(int value)
{
    CommandTable t;
    t.on("AddSheet", value < 24);
    t.on("AddForm", value < 24);
    // A pair is off when the project holds its format; the covers exclude
    // each other, and the paper jacket counts as a cover.
    const bool cover = value & (FmtSimple | FmtDouble | FmtJacket);
    for (const char* n : kCoverPairs) t.on(n, !cover);
    t.on("AdFrmIns", !(value & FmtInside));
    t.on("TAddINS", !(value & FmtInside));
    t.on("AdFrmCDR", !(value & FmtCdRom));
    t.on("TAddCDR", !(value & FmtCdRom));
    if (value == 1) t.off("removesheet");
    return t;
}

CommandTable toolsMenuTable(int code)
{
    CommandTable t;
    t.on("FMSimple", code != FmtSimple && code != FmtJacket);
    t.on("FMDouble", code != FmtDouble && code != FmtJacket);
    t.on("FMInside", code != FmtInside && code != FmtJacket);
    t.on("FMCDROM", code != FmtCdRom);
    t.show("FMSP", code == FmtInside);
    t.show("PREVIEW", code == FmtCdRom);
    return t;
}

CommandTable setupTable(int code, bool spinesHidden)
{
    CommandTable t;
    t.off("FMInside");
    t.on("Exportshhet");
    for (const char* n : {"copyobj", "Cutobj", "Medit"}) t.off(n);
    if (code == FmtInside) {
        t.on("Txtfold", !spinesHidden);
        t.on("SSCommand15", !spinesHidden);
    }
    switch (code) {
    case FmtSimple:
    case FmtDouble:
        for (const char* n : kCoverPairs) t.off(n);
        break;
    case FmtInside:
        t.off("AdFrmIns");
        t.off("TAddINS");
        break;
    case FmtCdRom:
        t.off("AdFrmCDR");
        t.off("TAddCDR");
        break;
    case FmtJacket:
        for (const char* n : kCoverPairs) t.off(n);
        for (const char* n : {"PRNSELECT", "MFPrnSelect", "Exportshhet"}) t.off(n);
        t.on("SSCommand2");
        break;
    default: break;
    }
    const QString entry = toolsMenuEntry(code);
    if (!entry.isEmpty()) t.show(entry);
    if (code == FmtInside) t.show("FMSP");
    return t;
}

CommandTable addSheetTable(int code, int newValue)
{
    CommandTable t;
    t.on("AddSheet", newValue < 24);
    t.on("AddForm", newValue < 24);
    if (code == FmtSimple || code == FmtDouble) {
        for (const char* n : kCoverPairs) t.off(n);
    } else {
        const auto [menu, pop] = addCommands(code);
        t.off(menu);
        t.off(pop);
    }
    if (code == FmtDouble) t.on("SSCommand2");
    t.on("Mremove");
    t.on("removesheet");
    return t;
}

CommandTable previewLockTable(bool locked)
{
    CommandTable t;
    t.show("SSPanel1", !locked);
    t.show("ToolHide", !locked);
    for (const char* n : {"Mfile", "Medit", "mtools", "Mwind", "Mhelp", "FMSimple", "FMDouble", "FMInside",
                          "FMCDROM", "FMSP"})
        t.on(n, !locked);
    return t;
}

CommandTable enableClipboardTable()
{
    CommandTable t;
    for (const char* n : {"Medit", "copyobj", "Cutobj", "CHGOrder", "BTF", "ClipCopy", "clipcut"}) t.on(n);
    t.off("Pasteobj");
    return t;
}

CommandTable emptyCanvasTable()
{
    CommandTable t;
    for (const char* n : {"copyobj", "ClipCopy", "Cutobj", "clipcut"}) t.off(n);
    return t;
}

}  // namespace jk::sheet
