// snaptool: the screen-capture companion of Jewelcase Studio.
#include "companions/Companion.h"
#include "companions/SnapTool.h"
#include "ui/widgets/RealServices.h"
#include <QApplication>
#include <QCommandLineParser>

int main(int argc, char* argv[])
{
    if (jk::companion::headlessRequested(argc, argv) && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("snaptool"));
    QApplication::setApplicationVersion(QStringLiteral("4.0"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Takes a picture of the screen, a window or an area."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption report(QStringLiteral("report"),
                                    QStringLiteral("Append the path of every picture saved to FILE, one a line."),
                                    QStringLiteral("FILE"));
    parser.addOption(report);
    parser.process(app);

    jk::companion::loadProgramState();
    installRealServices();
    jk::snap::SnapWindow w(parser.value(report));
    w.show();
    return app.exec();
}
