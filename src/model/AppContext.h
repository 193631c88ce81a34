#pragma once
// What the whole program shares and no project owns: the texts of the
// message file, where its files live, and the user's settings. Filled at
// start-up (and the settings by the Preferences dialog); everything else
// only reads it.
#include "model/Messages.h"
#include "model/Records.h"
#include <QMap>
#include <QString>
#include <array>

namespace jk {

// Texts of the message file, loaded once at start-up.
struct Texts {
    std::array<QString, 4> splash;        // file entries 1-4
    std::array<QString, 10> formatNames;  // 0-4 read, 5-9 derived
    std::array<QString, 55> menuCaptions; // the 55 menu captions, file order
    std::array<QString, 2> fitCaptions;   // captions 1, 2 -> [0], [1]
    std::array<QString, 26> toolTips;
    // The file's messages, then the appended ones (built-in English until
    // a message file names them).
    std::array<QString, kMessageCount> messages = builtInMessages();
    std::array<QString, 2> spineCaptions;
    std::array<QString, 3> extraCaptions; // PREVIEW, ScanSel, PictureDialog.Scanner

    const QString& msg(Msg m) const { return messages.at(std::size_t(m)); }
    // The text, or the built-in caption while the message file lacks it.
    QString msgOr(Msg m, const char* fallback) const;
    QString tipOr(int i, const char* fallback) const;
    // The name of a format from the format-name table; empty for no format.
    QString formatName(int code) const;

    static std::array<QString, kMessageCount> builtInMessages();
};

// What the user measured for one printer: added to every page printed on it.
struct PrinterCalibration {
    double offsetXMm = 0, offsetYMm = 0;              // the page moves by this much
    double scaleXPercent = 100, scaleYPercent = 100;  // and is stretched by this much
    bool isIdentity() const
    {
        return offsetXMm == 0 && offsetYMm == 0 && scaleXPercent == 100 && scaleYPercent == 100;
    }
};

// JEWLKIT.INI: the folders and picture editor, then the program's own
// settings.
struct UserSettings {
    QString picturesEditor, picturesFolder, backgroundFolder, projectFolder;
    int exportDpi = 300;     // raster exports
    QString discStock;       // the label stock chosen last
    QString scannerSource;   // the SANE device chosen last
    QMap<QString, PrinterCalibration> calibrations;  // by printer name
};

struct FileLocations {
    QString appDir;            // folder of read-only data
    QString settingsPath;      // JEWLKIT.INI
    QString fontListPath;      // Fonts.lst
    QString discDatabasePath;  // cdplayer.ini
    QString helpFile;          // main help page
};

struct AppContext {
    Texts texts;
    FileLocations files;
    UserSettings settings;
};

const AppContext& app();
inline const Texts& texts() { return app().texts; }
// Start-up fills it; the Preferences dialog changes the settings.
AppContext& appSetup();
// Tests start from an empty context.
void resetApp();

}  // namespace jk
