// fontsheet: a catalogue of the installed font families, each name set in
// its own face with a sample line, printed, previewed or written to a PDF.
#include "companions/CatalogueWindow.h"
#include "companions/Companion.h"
#include "ui/widgets/RealServices.h"
#include <QApplication>
#include <QCommandLineParser>
#include <QTextStream>

int main(int argc, char* argv[])
{
    if (jk::companion::headlessRequested(argc, argv) && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("fontsheet"));
    QApplication::setApplicationVersion(QStringLiteral("4.0"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Prints a catalogue of the installed font families."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption pdf(QStringLiteral("pdf"),
                                 QStringLiteral("Write the catalogue into OUT.pdf without any window and exit; "
                                                "exit status 1 with a message when it cannot be written."),
                                 QStringLiteral("OUT.pdf"));
    parser.addOption(pdf);
    parser.process(app);

    jk::companion::loadProgramState();
    const jk::Texts& t = jk::texts();
    auto catalogue = std::make_shared<jk::catalogue::FontCatalogue>(
        jk::catalogue::installedFamilies(t.msg(jk::Msg::FontSample)), t);

    if (parser.isSet(pdf)) {
        jk::print::PrintTarget target;
        target.pdfPath = parser.value(pdf);
        QString error;
        if (jk::catalogue::print(*catalogue, target, t, &error)) return 0;
        QTextStream(stderr) << "fontsheet: " << error << Qt::endl;
        return 1;
    }

    installRealServices();
    jk::catalogue::CatalogueWindow w(QStringLiteral("Fonts catalogue"));
    w.setCatalogue(catalogue, {});
    w.show();
    return app.exec();
}
