#pragma once
// The headless disc commands, for scripts:
//   --list SOURCE [--folders] [--sizes] [--dates]
//       prints the text the scan panel would show for a folder, a drive or a
//       disc image (files unless --folders; an audio disc lists its tracks,
//       with --dates their times)
//   --disc-id SOURCE
//       prints the identifier of the audio disc in a drive or image
#include <QString>
#include <QStringList>

class QTextStream;

namespace jk::sources {

// True when args (without the program name) ask for one of these commands.
bool isDiscCommand(const QStringList& args);

// Runs the command; the exit status is 0, or 1 after a message on err.
// databasePath is the CD player database whose titles the listing uses.
int runDiscCommand(const QStringList& args, const QString& databasePath, QTextStream& out, QTextStream& err);

}  // namespace jk::sources
