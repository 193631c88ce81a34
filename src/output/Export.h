#pragma once
// Headless export for scripts and previews: reads a project without any
// window and renders every sheet through the sheets' one drawing path.
#include <QString>

class QTextStream;

namespace jk {

// Writes DIR/<format code>.png for every sheet of the project at 300 dpi
// (the canvas rectangle; the disc label unmasked), and DIR/2-text.png /
// DIR/16-text.png for the text pages of the booklet and the paper jacket.
// Every message the reader would show goes to err. Returns the exit status:
// 0 when everything was read and written, 1 otherwise (the images of what
// could be read are still written).
int exportProject(const QString& dir, const QString& projectPath, QTextStream& err);

}  // namespace jk
