#include "output/ExportCommand.h"
#include "output/CommandProject.h"
#include "output/Export.h"
#include "file/MessageFile.h"
#include "file/Paths.h"
#include "file/Settings.h"
#include "model/AppContext.h"
#include "model/Formats.h"
#include "model/Project.h"
#include <QDir>
#include <QTextStream>

namespace jk::exporting {

namespace {

int fail(QTextStream& err, const QString& why)
{
    err << "jewlkit: " << why << Qt::endl;
    return 1;
}

QString sheetCodes(int sheets)
{
    QStringList codes;
    for (const FormatInfo& f : formats())
        if (sheets & f.code) codes << QString::number(f.code);
    return codes.isEmpty() ? QStringLiteral("none") : codes.join(QStringLiteral(", "));
}

// Every sheet of the project, as --export names its files.
std::vector<Page> everySheet(const Project& project, int sheets, const QDir& out, ImageFormat format)
{
    std::vector<Page> pages;
    const QString ext = u'.' + suffixOf(format);
    for (const FormatInfo& f : formats()) {
        if (!(sheets & f.code)) continue;
        const QString base = out.filePath(QString::number(f.code));
        sheet::RenderOptions o = sheet::defaultOptions(project, f.code);
        pages.push_back({f.code, o, base + ext});
        if (!f.textPage) continue;
        o.textPage = true;
        pages.push_back({f.code, o, base + QStringLiteral("-text") + ext});
    }
    return pages;
}

}  // namespace

int runExportCommand(const ExportCommand& c, QTextStream& err)
{
    int dpi = kDefaultDpi;
    if (!c.dpi.isEmpty()) {
        bool ok = false;
        dpi = c.dpi.toInt(&ok);
        if (!ok || dpi < kMinExportDpi || dpi > kMaxExportDpi)
            return fail(err, QStringLiteral("--dpi takes a resolution from %1 to %2 dots per inch, not %3")
                                 .arg(kMinExportDpi).arg(kMaxExportDpi).arg(c.dpi));
    }
    const bool oneSheet = !c.out.isEmpty();
    std::optional<ImageFormat> format = ImageFormat::Png;
    if (oneSheet) {
        if (!c.format.isEmpty()) return fail(err, QStringLiteral("--export-sheet takes the format from OUT's extension, not --format"));
        format = formatOfName(c.out);
        if (!format) return fail(err, QStringLiteral("%1 has no image extension (bmp, jpg, tif, eps, png, pdf or svg)").arg(c.out));
    } else if (!c.format.isEmpty()) {
        format = formatOfSuffix(c.format);
        if (!format) return fail(err, QStringLiteral("unknown --format %1 (png, bmp, jpg, tif, eps, pdf or svg)").arg(c.format));
    }
    int code = 0;
    if (oneSheet) {
        code = c.sheet.toInt();
        if (!isFormatCode(code))
            return fail(err, QStringLiteral("--export-sheet takes a format code (1 front cover, 2 booklet, 4 inside "
                                            "card, 8 disc label, 16 paper jacket), not %1").arg(c.sheet));
    }

    // The reader's message titles come from the message file, as in the GUI.
    appSetup().texts = loadMessageFile(paths::messageFile());
    Project project;
    const CommandProjectRead r = readCommandProject(c.project, project, err);
    if (!r.opened) return r.problems ? 1 : fail(err, QStringLiteral("cannot open ") + c.project);
    const int sheets = r.sheets;
    if (oneSheet && !(sheets & code))
        return fail(err, QStringLiteral("%1 has no sheet %2 (its sheets: %3)").arg(c.project).arg(code).arg(sheetCodes(sheets)));
    if (!oneSheet && !QDir().mkpath(c.dir)) return fail(err, QStringLiteral("cannot create the folder ") + c.dir);

    const std::vector<Page> pages = oneSheet ? sheetPages(project, code, c.out)
                                             : everySheet(project, sheets, QDir(c.dir), *format);
    const Result written = writePages(project, pages, *format, dpi, texts());
    if (!written.ok) return fail(err, written.error);
    return r.problems == 0 ? 0 : 1;
}

}  // namespace jk::exporting
