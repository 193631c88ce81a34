#include "ui/mainwindow/MainWindow.h"
#include "app/Startup.h"
#include "platform/Pictures.h"
#include "ui/widgets/RealServices.h"
#include "output/Export.h"
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
            qstrcmp(argv[i], "--print") == 0 || qstrncmp(argv[i], "--print=", 8) == 0 ||
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
        QStringLiteral("Render every sheet of FILE.prj at 300 dpi into DIR as <format code>.png "
                       "(1 front cover, 2 booklet, 4 inside card, 8 disc label, 16 paper jacket; "
                       "2-text.png and 16-text.png for the text pages) and exit, without any window. "
                       "Problems go to standard error; the exit status is then 1."),
        QStringLiteral("DIR"));
    parser.addOption(exportOption);
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
    parser.addOption({QStringLiteral("stock"),
                      QStringLiteral("With --print: the disc-label stock, a name from CDRTYPE.TXT "
                                     "(needed when a disc label prints)."),
                      QStringLiteral("NAME")});
    parser.addOption({QStringLiteral("keep-background"), QStringLiteral("With --print: print the disc label's background too.")});
    parser.addOption({QStringLiteral("pdf"),
                      QStringLiteral("With --print: write the same pages into OUT.pdf instead of printing (full pages, "
                                     "the default printer's paper or A4)."),
                      QStringLiteral("OUT.pdf")});
    parser.process(app);

    // Old projects name Windows faces; map them to installed look-alikes.
    QFont::insertSubstitutions(QStringLiteral("Ms Sans Serif"), {QStringLiteral("Liberation Sans"), QStringLiteral("Arial")});
    QFont::insertSubstitutions(QStringLiteral("Fixedsys"), {QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Monospace")});

    if (parser.isSet(exportOption)) {
        QTextStream err(stderr);
        const QStringList files = parser.positionalArguments();
        if (files.size() != 1) {
            err << "jewlkit: --export DIR needs exactly one project file" << Qt::endl;
            return 1;
        }
        jk::sheet::setImageLoader([](const QString& path) { return jk::platform::loadPicture(path); });
        return jk::exportProject(parser.value(exportOption), files.first(), err);
    }

    if (parser.isSet(printOption)) {
        QTextStream err(stderr);
        if (!parser.positionalArguments().isEmpty()) {
            err << "jewlkit: --print FILE.prj takes no other project file" << Qt::endl;
            return 1;
        }
        jk::print::PrintCommand c;
        c.project = parser.value(printOption);
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
