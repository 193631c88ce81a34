#pragma once
// What the three companion programs share at start-up: the main program's
// texts and settings, and the headless --pdf command line.
#include <QString>

namespace jk::companion {

// True when the command line asks for no window (--pdf, --help): the
// program then runs on the offscreen platform, without a display.
bool headlessRequested(int argc, char** argv);

// Reads the message file and JEWLKIT.INI as the main program does, so the
// companions speak its texts, start in its pictures folder and print with
// its printer calibrations.
void loadProgramState();

// The pictures folder from the settings, else the user's own.
QString picturesFolder();

}  // namespace jk::companion
