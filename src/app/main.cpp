#include "ui/mainwindow/MainWindow.h"
#include "app/Startup.h"
#include "platform/Pictures.h"
#include "ui/widgets/RealServices.h"
#include "output/ExportCommand.h"
#include "output/PrintCommand.h"
#include "render/SheetRenderer.h"
#include "sources/disc/DiscCommand.h"
#include "platform/SingleInstance.h"
#include "file/Paths.h"
#include <QApplication>
#include <QCommandLineParser>
#include <QFont>
#include <QTextStream>
#include <QTimer>
#include <cstdio>

int main(int argc, char* argv[])
{
    // The disc commands need neither a display nor the single-instance lock.
    QStringList rawArgs;
    for (int i = 1; i < argc; ++i) rawArgs << QString::fromLocal8Bit(argv[i]);
    if (jk::sources::isDiscCommand(rawArgs) && !rawArgs.contains("--help") && !rawArgs.contains("-h")) {
        QCoreApplication core(argc, argv);
        QTextStream out(stdout), err(stderr);
        return jk::sources::runDiscCommand(rawArgs, jk::paths::discDatabaseFile(), out, err);
    }

    // A headless export needs no display at all.
    bool headless = false;
    for (int i = 1; i < argc; ++i)
        if (qstrcmp(argv[i], "--export") == 0 || qstrncmp(argv[i], "--export=", 9) == 0 ||
            qstrcmp(argv[i], "--export-sheet") == 0 || qstrncmp(argv[i], "--export-sheet=", 15) == 0 ||
            qstrcmp(argv[i], "--print") == 0 || qstrncmp(argv[i], "--print=", 8) == 0 ||
            qstrcmp(argv[i], "--print-test-outline") == 0 ||
            qstrcmp(argv[i], "--help") == 0 || qstrcmp(argv[i], "-h") == 0 || qstrcmp(argv[i], "--version") == 0 ||
            qstrcmp(argv[i], "-v") == 0)
            headless = true;
    if (headless && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("jewlkit"));
    QApplication::setApplicationVersion(QStringLiteral("4.0"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/jewlkit.svg")));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Jewelcase Studio: covers, booklets, inlays and disc labels for CDs."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("project"), QStringLiteral("A .prj project to open."), QStringLiteral("[FILE.prj]"));
    const QCommandLineOption exportOption(
        QStringLiteral("export"),
        QStringLiteral("Render every sheet of FILE.prj into DIR as <format code>.png (1 front cover, 2 booklet, "
                       "4 inside card, 8 disc label, 16 paper jacket; 2-text.png and 16-text.png for the text "
                       "pages), or in the --format given, and exit, without any window. Problems go to standard "
                       "error; the exit status is then 1."),
        QStringLiteral("DIR"));
    parser.addOption(exportOption);
    const QCommandLineOption exportSheetOption(
        QStringLiteral("export-sheet"),
        QStringLiteral("Export the sheet of format CODE of FILE.prj like Export current sheet into OUT.ext, given "
                       "before FILE.prj (a booklet or paper jacket writes OUT1.ext, its text page, and OUT2.ext); "
                       "the extension chooses the format: bmp, jpg, tif, eps, png, pdf or svg. Then exit."),
        QStringLiteral("CODE"));
    parser.addOption(exportSheetOption);
    parser.addOption({QStringLiteral("format"),
                      QStringLiteral("With --export: png (the default), bmp, jpg, tif, eps, pdf or svg."),
                      QStringLiteral("FORMAT")});
    parser.addOption({QStringLiteral("dpi"),
                      QStringLiteral("With --export or --export-sheet: the resolution of bmp, jpg, tif and png "
                                     "images, 72 to 1200 (default 300)."),
                      QStringLiteral("N")});
    parser.addOption({QStringLiteral("list"),
                      QStringLiteral("Print the scan panel's listing of SOURCE (a folder, a drive or a disc image: "
                                     ".cue/.bin/.toc/.nrg) and exit: its files, or its sub-folders with --folders; "
                                     "an audio disc lists its tracks."),
                      QStringLiteral("SOURCE")});
    parser.addOption({QStringLiteral("folders"), QStringLiteral("With --list: sub-folders instead of files.")});
    parser.addOption({QStringLiteral("sizes"), QStringLiteral("With --list: file sizes.")});
    parser.addOption({QStringLiteral("dates"), QStringLiteral("With --list: dates and times (track times on an audio disc).")});
    parser.addOption({QStringLiteral("disc-id"),
                      QStringLiteral("Print the identifier of the audio disc in SOURCE (a drive or a disc image) "
                                     "and exit; exit status 1 when it holds no audio disc."),
                      QStringLiteral("SOURCE")});
    const QCommandLineOption printOption(
        QStringLiteral("print"),
        QStringLiteral("Print FILE.prj like Print Project (like Print Selected with --sheets), fields advancing "
                       "per copy, and exit, without any window. Problems go to standard error; the exit status is "
                       "then 1."),
        QStringLiteral("FILE.prj"));
    parser.addOption(printOption);
    parser.addOption({QStringLiteral("printer"), QStringLiteral("With --print: the printer (default: the default printer)."),
                      QStringLiteral("NAME")});
    parser.addOption({QStringLiteral("copies"), QStringLiteral("With --print: the number of copies (default 1)."),
                      QStringLiteral("N")});
    parser.addOption({QStringLiteral("sheets"),
                      QStringLiteral("With --print: print only these sheets, by format code (1 front cover, 2 booklet, "
                                     "4 inside card, 8 disc label, 16 paper jacket), e.g. 2,8."),
                      QStringLiteral("CODES")});
    const QCommandLineOption outlineOption(
        QStringLiteral("print-test-outline"),
        QStringLiteral("Print only the outline of the disc label (circles of 59 and 16.4 mm and a centre cross) "
                       "where the --stock puts it, calibrated, to hold over a label sheet; then exit. Takes "
                       "--printer or --pdf and --calibrated-for like --print."));
    parser.addOption(outlineOption);
    parser.addOption({QStringLiteral("stock"),
                      QStringLiteral("With --print: the disc-label stock, a name from CDRTYPE.TXT "
                                     "(needed when a disc label prints, and by --print-test-outline)."),
                      QStringLiteral("NAME")});
    parser.addOption({QStringLiteral("keep-background"), QStringLiteral("With --print: print the disc label's background too.")});
    parser.addOption({QStringLiteral("pdf"),
                      QStringLiteral("With --print: write the same pages into OUT.pdf instead of printing (full pages, "
                                     "the default printer's paper or A4)."),
                      QStringLiteral("OUT.pdf")});
    parser.addOption({QStringLiteral("calibrated-for"),
                      QStringLiteral("With --print or --print-test-outline: apply the calibration stored for printer "
                                     "NAME (Tools > Calibrate printer) instead of the target's own; a PDF is "
                                     "otherwise never calibrated."),
                      QStringLiteral("NAME")});
    parser.process(app);

    // Old projects name Windows faces; map them to installed look-alikes.
    QFont::insertSubstitutions(QStringLiteral("Ms Sans Serif"), {QStringLiteral("Liberation Sans"), QStringLiteral("Arial")});
    QFont::insertSubstitutions(QStringLiteral("Fixedsys"), {QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Monospace")});

    if (parser.isSet(exportOption) || parser.isSet(exportSheetOption)) {
        QTextStream err(stderr);
        const bool oneSheet = parser.isSet(exportSheetOption);
        const QStringList files = parser.positionalArguments();
        if (parser.isSet(exportOption) && oneSheet) {
            err << "jewlkit: --export and --export-sheet go one at a time" << Qt::endl;
            return 1;
        }
        if (files.size() != (oneSheet ? 2 : 1)) {
            err << (oneSheet ? "jewlkit: --export-sheet CODE needs OUT.ext and then the project file"
                             : "jewlkit: --export DIR needs exactly one project file")
                << Qt::endl;
            return 1;
        }
        jk::exporting::ExportCommand c;
        c.project = files.last();
        c.dir = parser.value(exportOption);
        c.sheet = parser.value(exportSheetOption);
        c.out = oneSheet ? files.first() : QString();
        c.format = parser.value(QStringLiteral("format"));
        c.dpi = parser.value(QStringLiteral("dpi"));
        jk::sheet::setImageLoader([](const QString& path) { return jk::platform::loadPicture(path); });
        return jk::exporting::runExportCommand(c, err);
    }

    if (parser.isSet(printOption) || parser.isSet(outlineOption)) {
        QTextStream err(stderr);
        if (parser.isSet(printOption) && parser.isSet(outlineOption)) {
            err << "jewlkit: --print and --print-test-outline go one at a time" << Qt::endl;
            return 1;
        }
        if (!parser.positionalArguments().isEmpty()) {
            err << (parser.isSet(printOption) ? "jewlkit: --print FILE.prj takes no other project file"
                                              : "jewlkit: --print-test-outline prints no project")
                << Qt::endl;
            return 1;
        }
        jk::print::PrintCommand c;
        c.project = parser.value(printOption);
        c.testOutline = parser.isSet(outlineOption);
        c.calibratedFor = parser.value(QStringLiteral("calibrated-for"));
        c.printer = parser.value(QStringLiteral("printer"));
        c.copies = parser.value(QStringLiteral("copies"));
        c.sheets = parser.value(QStringLiteral("sheets"));
        c.stock = parser.value(QStringLiteral("stock"));
        c.keepBackground = parser.isSet(QStringLiteral("keep-background"));
        c.pdf = parser.value(QStringLiteral("pdf"));
        jk::sheet::setImageLoader([](const QString& path) { return jk::platform::loadPicture(path); });
        return jk::print::runPrintCommand(c, err);
    }

    // Only one instance at a time: a second start leaves the first alone.
    SingleInstance instance(jk::paths::ensureDir(jk::paths::runtimeDir()));
    if (!instance.tryAcquire()) return 0;

    RealServices services;
    jk::platform::install(services.services());

    MainWindow w;
    installPictureLoader();
    const QStringList args = parser.positionalArguments();
    const QString project = args.isEmpty() ? QString() : args.first();
    const qint64 splashMs = startUp(w, project);
    if (qEnvironmentVariableIsSet("JEWLKIT_STARTUP_BENCH")) {
        // bench/startup.sh: stop once the main window is on screen.
        QCoreApplication::processEvents();
        fprintf(stderr, "splash-ms: %lld\n", static_cast<long long>(splashMs));
        return 0;
    }
    // The command-line project, then the new-project command, once the
    // main window is on screen.
    QTimer::singleShot(0, &w, [&w, project] { w.startProject(project); });
    return app.exec();
}
