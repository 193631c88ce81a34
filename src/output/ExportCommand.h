#pragma once
// Headless export for scripts, without any window, dialog or lock:
//   jewlkit --export DIR FILE.prj [--format png|bmp|jpg|tif|eps|pdf|svg] [--dpi N]
// writes every sheet as DIR/<format code>.<ext> and the text pages of the
// booklet and the paper jacket as DIR/2-text.<ext>, DIR/16-text.<ext>;
//   jewlkit --export-sheet CODE OUT.ext FILE.prj [--dpi N]
// writes one sheet as the Export command does (a booklet or jacket as
// OUT1.ext and OUT2.ext), in the format OUT's extension names.
#include <QString>

class QTextStream;

namespace jk::exporting {

struct ExportCommand {
    QString project;
    QString dir;     // --export: every sheet into this folder
    QString sheet;   // --export-sheet: the format code, as given
    QString out;     // --export-sheet: the file
    QString format;  // --format as given; empty: png
    QString dpi;     // --dpi as given; empty: 300
};

// Runs it. Every message the project reader would show goes to err, and
// what could be read is still written; returns the exit status: 0 when
// everything was read and written, 1 otherwise (also for bad arguments).
int runExportCommand(const ExportCommand& command, QTextStream& err);

}  // namespace jk::exporting
