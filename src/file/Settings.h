#pragma once
// JEWLKIT.INI: "[Preferences]" then the picture editor, pictures folder,
// background folder and project folder, one per line; then a "[Jewelcase
// Studio]" section of name=value lines for what came later (export
// resolution, label stock, scanner, one "calibration=" line per printer).
// Older readers stop after the four folder lines, so both agree.
#include "model/AppContext.h"
#include <QString>

namespace jk {

// Whatever could be read stays; a comma ends an item, so a path holding a
// comma is cut there and the settings after it shift by one. An empty project
// folder becomes defaultProjectFolder. A value that cannot be read, or one
// out of range (export resolution outside 72-1200, a calibration offset over
// 20 mm or a scale outside 90-110 %), is left at its default.
UserSettings readSettings(const QString& path, const QString& defaultProjectFolder);

// Writes every setting; false when the file cannot be written (the caller
// reports nothing: the values in memory stay as they are).
bool writeSettings(const QString& path, const UserSettings& v);

// Writes app().settings to the settings file (creating its folder).
bool saveAppSettings();

// The limits of what a calibration may say.
constexpr double kMaxCalibrationOffsetMm = 20;
constexpr double kMinCalibrationScale = 90, kMaxCalibrationScale = 110;
bool calibrationInRange(const PrinterCalibration& c);
constexpr int kMinExportDpi = 72, kMaxExportDpi = 1200;

}  // namespace jk
