#pragma once
// The application-wide state shared by every window. There is exactly one
// instance (G()); windows hand results to each other only through it.
#include "model/Messages.h"
#include "model/Records.h"
#include <QString>
#include <QStringList>
#include <array>

namespace jk {

// Texts of the message file, loaded once at start-up.
struct Texts {
    std::array<QString, 4> splash;        // file entries 1-4
    std::array<QString, 10> formatNames;  // 0-4 read, 5-9 derived
    std::array<QString, 55> menuCaptions; // the 55 menu captions, file order
    std::array<QString, 2> fitCaptions;   // captions 1, 2 -> [0], [1]
    std::array<QString, 26> toolTips;
    std::array<QString, 86> messages;
    std::array<QString, 2> spineCaptions;
    std::array<QString, 3> extraCaptions; // PREVIEW, ScanSel, PictureDialog.Scanner

    const QString& msg(Msg m) const { return messages.at(std::size_t(m)); }
    // The text, or the built-in caption while the message file lacks it.
    QString msgOr(Msg m, const char* fallback) const;
    QString tipOr(int i, const char* fallback) const;
};

// Capacities of the record tables at the three moments they are created.
enum class TableSizing { StartUp, NewProject, OpenProject };

struct Global {
    Texts texts;

    // File locations
    QString appDir;            // folder of read-only data
    QString settingsPath;      // JEWLKIT.INI
    QString fontListPath;      // Fonts.lst
    QString discDatabasePath;  // cdplayer.ini
    QString helpFile;          // main help page
    QString shellCommandLine;  // scratch: last command line built
    qint64 helpOwner = 0;
    std::array<int, 5> helpPlacement{26, 256, 256, 512, 512};

    // Settings (JEWLKIT.INI)
    QString picturesEditor, picturesFolder, backgroundFolder, projectFolder;

    // Project state
    QString projectFileName;
    QString projectFilePath;
    bool openExisting = false;
    bool projectModified = false;
    bool readSuccess = false;
    i16 projectVersion = 0;
    bool simpleChoice = false, doubleChoice = false, insideChoice = false, cdChoice = false, jacketChoice = false;
    i16 sheetComposition = 0;  // sum of format codes
    i16 compositionCode = 0;   // print weights: Double 1, CD 2, Simple 4, Inside 8, jacket 16
    i16 pendingFormat = 15;    // 15 = none pending
    QString pendingCaption;
    bool sheetActive = false;
    QString spineTitle, spineText, spineNumberText;
    struct SpineFont {
        QString name;
        i32 backColor = 16777215, foreColor = 0;
        bool underline = false, italic = false, bold = false, strikethru = false;
        i32 size = 8;
    } spineFont;
    bool spinesHidden = false;
    i16 currentNumber = 1;

    // Record tables
    RecordTable<TextRecord> freeText;
    RecordTable<TextRecord> pageText;
    RecordTable<CharFieldRecord> charFields;
    RecordTable<NumFieldRecord> numFields;
    RecordTable<PictureRecord> pictures;
    std::array<BackgroundRecord, 17> backgrounds{};  // by format code 1..16

    // Editing hand-over between windows and dialogs
    i16 pageFlag = 1;      // 1 picture page shown, 0 text page
    i16 pageRequest = 1;   // 1 picture page, 2 text page
    bool textPageFlag = false;
    i16 blockSelector = 1; // 1 free text table, 0 text-page table
    i16 textDestination = 0;  // 0 new block, 1 resting, 2 spine text
    QString pendingText;
    bool spineTextMode = false;
    i16 alignmentChoice = 0;
    bool textAccepted = false;
    i16 currentBlock = 0;
    bool listingFlag = false;      // the text dialog's text came from a drive listing
    bool colorChoiceFlag = false;  // the text dialog's colour button has had the focus
    bool moveMode = false, resizeMode = false;
    bool marked = false;
    i16 selectedIndex = 0, selectedKind = 0;
    i16 fieldSubKind = 0;
    i16 nudgeStep = 40;
    i16 pictureNudge = 0;
    i16 pictureDialogPurpose = 0;
    QString chosenPictureFile;
    bool pictureChangeRequest = false, pictureEditRequest = false;
    i16 scannerSource = 0;
    i16 printerAvailable = 0;
    QString savedPrinterName;

    // Re-creates the record tables with the capacities of that moment.
    void createTables(TableSizing when);
    // What the new and open procedures reset besides the tables.
    void resetProject();
};

Global& G();
// Tests start from a clean state.
void resetGlobal();

// The format-name table index of a format code (1->0, 2->1, 16->2, 8->3, 4->4), -1 if none.
int formatNameIndex(int formatCode);
// The print-side weight of a format code (Double 1, CD ROM 2, Simple 4, Inside 8, jacket 16).
int compositionWeight(int formatCode);

}  // namespace jk
