#include "output/CommandProject.h"
#include "file/ProjectFile.h"
#include "model/Project.h"
#include <QTextStream>

namespace jk {

CommandProjectRead readCommandProject(const QString& path, Project& project, QTextStream& err)
{
    CommandProjectRead out;
    ProjectData data = project.data();
    const ProjectReadResult r = readProject(path, data, [&](const QString& description, const QString& title) {
        ++out.problems;
        err << "jewlkit: " << path << ": ";
        if (!title.isEmpty()) err << title << ": ";
        err << description << Qt::endl;
    });
    out.opened = r.opened;
    if (!r.opened) return out;
    out.problems += r.errors;
    out.sheets = r.chosenSheets.value_or(0);
    project.load(std::move(data));
    return out;
}

}  // namespace jk
