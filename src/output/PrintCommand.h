#pragma once
// Headless printing for scripts: jewlkit --print FILE.prj [--printer NAME]
// [--copies N] [--sheets 1,2,4,8,16] [--stock NAME] [--keep-background]
// [--pdf OUT.pdf] [--calibrated-for NAME]. Prints like Print Project (like
// Print Selected with --sheets), fields advancing per copy, without any
// window, dialog or lock; and jewlkit --print-test-outline --stock NAME
// [--printer NAME | --pdf OUT.pdf] [--calibrated-for NAME], the outline of
// the disc label where that stock puts it. A printer's calibration from
// JEWLKIT.INI applies on a printer; a PDF is calibrated only when asked.
#include <QString>

class QTextStream;

namespace jk::print {

struct PrintCommand {
    QString project;
    QString printer;       // empty: the default printer
    QString copies;        // as given; empty: 1
    QString sheets;        // format codes, comma-separated; empty: the whole project
    QString stock;         // a name from CDRTYPE.TXT
    bool keepBackground = false;
    QString pdf;           // when set: into this PDF instead of a printer
    QString stockFile;     // empty: the shipped CDRTYPE.TXT
    QString calibratedFor; // a printer whose stored calibration applies instead
    bool testOutline = false;  // the disc-label test outline instead of a project
};

// Runs it. Problems and warnings go to err; returns the exit status: 0
// printed, 1 for an unknown printer or stock, an unreadable project, a
// missing stock for a disc label, bad arguments, nothing to print or a
// failed job, or a --calibrated-for printer without a calibration.
int runPrintCommand(const PrintCommand& command, QTextStream& err);

}  // namespace jk::print
