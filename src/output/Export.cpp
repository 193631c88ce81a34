#include "output/Export.h"
#include "file/ProjectFile.h"
#include "render/SheetRenderer.h"
#include "model/AppContext.h"
#include "model/Formats.h"
#include "model/Project.h"
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
    // The reader's message titles come from the message file, as in the GUI.
    appSetup().texts = loadMessageFile(paths::messageFile());

    Project project;
    ProjectData data = project.data();
    int reported = 0;
    const ProjectReadResult r = readProject(projectPath, data, [&](const QString& description, const QString& title) {
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
    project.load(std::move(data));
    const QDir out(dir);
    bool ok = reported == 0 && r.errors == 0;
    const int sheets = r.chosenSheets.value_or(0);
    for (const FormatInfo& f : formats()) {
        if (!(sheets & f.code)) continue;
        sheet::RenderOptions o = sheet::defaultOptions(project, f.code);
        o.textPage = false;
        const QString base = out.filePath(QString::number(f.code));
        ok &= writePng(sheet::renderImage(project, f.code, kExportDpi, o), base + ".png", err);
        if (f.textPage) {
            o.textPage = true;
            ok &= writePng(sheet::renderImage(project, f.code, kExportDpi, o), base + "-text.png", err);
        }
    }
    return ok ? 0 : 1;
}

}  // namespace jk
