#pragma once
// The project file (.prj): reader and writer of a project's data.
// No widgets here: the commands around it show the dialogs and the sheets,
// and the headless export uses the same reader.
#include "model/Project.h"
#include <QByteArray>
#include <QString>
#include <functional>
#include <optional>

class QIODevice;

namespace jk {

constexpr int kProjectFileVersion = 3;
// Line marking the start and the end of a text block's text.
inline constexpr char kTextBlockMarker[] = "~@&";

// Limits that keep a damaged or hostile file from freezing the program or
// eating its memory. Real projects stay far below them.
constexpr qint64 kMaxProjectFileBytes = 64 * 1024 * 1024;
constexpr int kMaxLineBytes = 1024 * 1024;      // longer lines are cut
// A text value or a whole text block longer than this is cut; the writer's
// lines then stay below kMaxLineBytes whatever the encoding.
constexpr int kMaxTextChars = 64 * 1024;
constexpr int kMaxReportedErrors = 3;           // then one summary message

// Receives every error the reader reports: its description and the title of
// the message box (message entry 27). The GUI shows a message box with the
// exclamation icon; the headless export prints to standard error.
using ProjectErrorReporter = std::function<void(const QString& description, const QString& title)>;

struct ProjectReadResult {
    bool opened = false;        // the file could be opened; also the read-success flag
    bool olderFile = false;     // no version line: written before version 3
    int composition = 0;        // the sheet-composition value as read
    bool exportEnabled = false; // Exportshhet: on after an open, off for a paper jacket alone
    int errors = 0;             // errors met, reported or not (overflows are not errors)
    // The sheets the file's composition names, when it names a valid set;
    // otherwise the choice of sheets stays as it was.
    std::optional<int> chosenSheets;
};

// Reads a project into data: re-creates the record tables with the
// open-project capacities, reads the spine line and font, the backgrounds, pictures, text blocks and fields, and
// the spines-hidden switch. The path becomes the project file name and the
// project file path is cleared. What the file does not hold (the spine
// font's defaults, print weights) stays as data had it. Errors are reported
// and reading goes on;
// overflowing numbers are skipped silently. Picture, background and value
// file names that do not exist are looked up by base name, ignoring case,
// beside the project file. The caller hands data to Project::load() and
// creates the sheet windows afterwards.
ProjectReadResult readProject(const QString& path, ProjectData& data, const ProjectErrorReporter& reporter = {});

// The same from an open, seekable device. name is used in the messages;
// projectDir is where missing files are looked for (empty: nowhere). Leaves
// the project file name alone.
ProjectReadResult readProjectData(QIODevice& in, ProjectData& data, const QString& name, const QString& projectDir,
                                  const ProjectErrorReporter& reporter = {});

// The bytes of a project as the writer stores them: CR LF lines,
// Windows-1252 when every character fits, else UTF-8. The spine text is
// written as the spine title, negative Top and Left of text blocks as 0
// (Project::prepareForSave() makes the records say the same).
QByteArray projectFileBytes(const ProjectData& data);

// Writes the current project to path through a temporary file beside it that
// is renamed over the target, so a failed save (read-only folder, full disk)
// leaves the old file as it was. On failure returns false and, when error is
// given, the reason.
bool writeProject(const ProjectData& data, const QString& path, QString* error = nullptr);

// A file named in a project: the path itself when it exists (relative paths
// count from projectDir), else a file of the same base name, ignoring case,
// in projectDir; else the path unchanged. Windows paths ("C:\PICS\LOGO.BMP")
// give their last component as base name.
QString resolveBesideProject(const QString& path, const QString& projectDir);

}  // namespace jk
