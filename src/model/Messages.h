#pragma once
// The messages of the message file by name. Each value is the message's index
// in the message table (the file order of the messages, not of the whole file).

namespace jk {

enum class Msg : int {
    Ok = 0,
    Cancel = 1,
    SelectSheetsToPrint = 2,
    OneDigit = 3,
    TwoDigits = 4,
    ThreeDigits = 5,
    FourDigits = 6,
    ShowNumberOnSpines = 7,
    FieldProperties = 8,
    FontButton = 9,
    HelpFrontCover = 10,
    HelpBooklet = 11,
    HelpDiscLabel = 12,
    HelpPaperJacket = 13,
    HelpInsideCard = 14,
    NewProjectTitle = 15,
    Alignment = 16,
    SolidColor = 17,
    Center = 18,
    Transparent = 19,
    Border = 20,
    Background = 21,
    FileMenu = 22,
    OpenMenu = 23,
    SaveMenu = 24,
    Options = 25,
    NoLabelStock = 26,
    ProgramTitle = 27,
    Printer = 28,
    Copies = 29,
    Reserved30 = 30,
    CopiesDifferFromValues = 31,
    Warning = 32,
    SnapTool = 33,
    SaveChanges = 34,
    SaveUnsavedProject = 35,
    ScreenTooNarrow = 36,
    EnterWholeNumber = 37,
    ShowToolBar = 38,
    HideToolBar = 39,
    EditorNotStarted = 40,
    SaveValuesFirst = 41,
    EnterText = 42,
    Text = 43,
    Folders = 44,
    Files = 45,
    DiscLabelStock = 46,
    Description = 47,
    KeepBackground = 48,
    PreferencesTitle = 49,
    PictureEditor = 50,
    PicturesFolder = 51,
    BackgroundsFolder = 52,
    ProjectsFolder = 53,
    BrowseButton = 54,
    SelectButton = 55,
    ColorButton = 56,
    OpenButton = 57,
    AudioCdNotOpened = 76,
    StoreTrackTitles = 77,
    AudioCd = 78,
    ScanDrive = 79,
    DatesAndTimes = 80,
    FileSizes = 81,
    EnterCdTitle = 82,
    EnterArtist = 83,
    NewProjectTab = 84,
    ExistingProjectTab = 85,
    // Entries appended after the file's 183: a message file without them
    // (an older or a user's own one) shows the built-in English.
    // Printing.
    PrintDiscOffPaper = 86,
    PrinterUnavailable = 87,
    PrintPictureMissing = 88,
    PrintJobFailed = 89,
    PrintPdfNotWritten = 90,
    NoDiscStock = 91,
    PrintingPage = 92,
    DiscStockSkipped = 93,
    NoPrinter = 94,
    PrintNothing = 95,
    // The text dialog's scan panel.
    DiscImageEntry = 96,
    AudioCdRetry = 97,
    TitlesNotStored = 98,
    // Print dialogs and preview (99-109).
    PrintPreviewMenu = 99,
    PrintPreviewTitle = 100,
    PrintPreviewPopup = 101,
    FilterStocks = 102,
    TestPrintOutline = 103,
    TooManyCopies = 104,
    PrintingTitle = 105,
    // Export (110-117).
    // Printer calibration (118-135).
    // Scanning (136-149).
    // Companion programs: capture, catalogues (150-159).
};

// Room in the message table: the file's messages and those appended after.
constexpr int kMessageCount = 192;
// The first message that is appended after the file's 183 entries.
constexpr int kFirstAppendedMessage = 86;

// The built-in English of the appended messages, empty for the others.
const char* builtInMessage(Msg m);

}  // namespace jk
