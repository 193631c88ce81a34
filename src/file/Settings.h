#pragma once
// JEWLKIT.INI: "[Preferences]" then the picture editor, pictures folder,
// background folder and project folder, one per line.
#include <QString>

namespace jk {

struct SettingsValues {
    QString picturesEditor, picturesFolder, backgroundFolder, projectFolder;
};

// Whatever could be read stays; a comma ends an item, so a path holding a
// comma is cut there and the settings after it shift by one. An empty project
// folder becomes defaultProjectFolder.
SettingsValues readSettings(const QString& path, const QString& defaultProjectFolder);

// Writes the five lines; false when the file cannot be written (the caller
// reports nothing: the values in memory stay as they are).
bool writeSettings(const QString& path, const SettingsValues& v);

}  // namespace jk
