#pragma once
#include <QString>

class MainWindow;

// The start-up sequence of the main window, from help set-up to showing it.
// commandLineProject is the project named on the command line, if any.
// Returns how long it waited on the splash, in milliseconds.
qint64 startUp(MainWindow& w, const QString& commandLineProject);

// Connects the sheets to the real text and picture dialogs and to the
// picture loader that knows every supported format. Tests leave them out and
// answer through their own hooks.
void installDialogs(QWidget* parent);
