#include "app/MDIForm1.h"
#include "app/Startup.h"
#include "platform/RealServices.h"
#include "platform/SingleInstance.h"
#include "state/Paths.h"
#include <QApplication>
#include <QCommandLineParser>
#include <QFont>
#include <QTimer>
#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("jewlkit"));
    QApplication::setApplicationDisplayName(QStringLiteral("Jewelcase Studio"));
    QApplication::setApplicationVersion(QStringLiteral("4.0"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/jewlkit.svg")));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Jewelcase Studio: covers, booklets, inlays and disc labels for CDs."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("project"), QStringLiteral("A .prj project to open."), QStringLiteral("[FILE.prj]"));
    parser.process(app);

    // Only one instance at a time: a second start leaves the first alone.
    SingleInstance instance(jk::paths::ensureDir(jk::paths::runtimeDir()));
    if (!instance.tryAcquire()) return 0;

    // Old projects name Windows faces; map them to installed look-alikes.
    QFont::insertSubstitutions(QStringLiteral("Ms Sans Serif"), {QStringLiteral("Liberation Sans"), QStringLiteral("Arial")});
    QFont::insertSubstitutions(QStringLiteral("Fixedsys"), {QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Monospace")});

    RealServices services;
    jk::platform::install(services.services());

    MDIForm1 w;
    installDialogs(&w);
    const QStringList args = parser.positionalArguments();
    const QString project = args.isEmpty() ? QString() : args.first();
    const qint64 waited = Form_Load(w, project);
    if (qEnvironmentVariableIsSet("JEWLKIT_STARTUP_BENCH")) {
        // bench/startup.sh: stop once the main window is on screen.
        QCoreApplication::processEvents();
        fprintf(stderr, "splash-wait-ms: %lld\n", static_cast<long long>(waited));
        return 0;
    }
    // The command-line project, then the new-project command, once the
    // main window is on screen.
    QTimer::singleShot(0, &w, [&w, project] { w.startProject(project); });
    return app.exec();
}
