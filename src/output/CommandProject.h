#pragma once
// Reading the project a headless command works on: whatever the reader
// would show in a message box goes to standard error, prefixed with the
// program and the file, and the document is loaded even when parts of it
// could not be read (each command decides whether that is fatal).
#include <QString>

class QTextStream;

namespace jk {
class Project;

struct CommandProjectRead {
    bool opened = false;  // the file could be opened at all
    int problems = 0;     // messages reported, plus the reader's errors
    int sheets = 0;       // the sheets it holds: sum of format codes
};

CommandProjectRead readCommandProject(const QString& path, Project& project, QTextStream& err);

}  // namespace jk
