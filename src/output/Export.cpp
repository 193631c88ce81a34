#include "output/Export.h"
#include "file/ProjectFile.h"
#include "render/SheetRenderer.h"
#include "model/Global.h"
#include "file/MessageFile.h"
#include "file/Paths.h"
#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QTextStream>

namespace jk {

namespace {

constexpr double kExportDpi = 300.0;

bool writePng(const QImage& img, const QString& path, QTextStream& err)
{
    QImageWriter w(path, "png");
    if (img.isNull() || !w.write(img)) {
        err << "jewlkit: cannot write " << path << ": " << w.errorString() << Qt::endl;
        return false;
    }
    return true;
}

}  // namespace

int exportProject(const QString& dir, const QString& projectPath, QTextStream& err)
{
    Global& g = G();
    // The reader's message titles come from the message file, as in the GUI.
    g.texts = loadMessageFile(paths::messageFile());
    g.resetProject();

    int reported = 0;
    const ProjectReadResult r = readProject(projectPath, [&](const QString& description, const QString& title) {
        ++reported;
        err << "jewlkit: " << projectPath << ": ";
        if (!title.isEmpty()) err << title << ": ";
        err << description << Qt::endl;
    });
    if (!r.opened) {
        if (reported == 0) err << "jewlkit: cannot open " << projectPath << Qt::endl;
        return 1;
    }
    if (!QDir().mkpath(dir)) {
        err << "jewlkit: cannot create the folder " << dir << Qt::endl;
        return 1;
    }
    const QDir out(dir);
    bool ok = reported == 0 && r.errors == 0;
    const struct {
        bool Global::*choice;
        int code;
    } sheets[] = {{&Global::simpleChoice, FmtSimple}, {&Global::doubleChoice, FmtDouble},
                  {&Global::jacketChoice, FmtJacket}, {&Global::cdChoice, FmtCdRom},
                  {&Global::insideChoice, FmtInside}};
    for (const auto& s : sheets) {
        if (!(g.*(s.choice))) continue;
        sheet::RenderOptions o = sheet::defaultOptions(s.code);
        o.textPage = false;
        ok &= writePng(sheet::renderImage(s.code, kExportDpi, o), out.filePath(QString::number(s.code) + ".png"), err);
        if (s.code == FmtDouble || s.code == FmtJacket) {
            o.textPage = true;
            ok &= writePng(sheet::renderImage(s.code, kExportDpi, o),
                           out.filePath(QString::number(s.code) + "-text.png"), err);
        }
    }
    return ok ? 0 : 1;
}

}  // namespace jk
