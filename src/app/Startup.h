#pragma once
#include <QString>

class MainWindow;

// The start-up sequence of the main window, from help set-up to showing it.
// commandLineProject is the project named on the command line, if any.
// Returns how long the start-up window was up, in milliseconds.
qint64 startUp(MainWindow& w, const QString& commandLineProject);

// Gives the drawing path the picture loader that knows every supported
// format (ImageMagick and Ghostscript behind the imaging seam).
void installPictureLoader();
