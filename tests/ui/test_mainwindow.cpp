#include "app/SplashWindow.h"
#include "ui/mainwindow/MainWindow.h"
#include "app/Startup.h"
#include "platform/FakeServices.h"
#include "platform/SingleInstance.h"
#include "model/Global.h"
#include "file/Paths.h"
#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QProcess>
#include <QSlider>
#include <QToolBar>
#include <QToolButton>
#include <QtTest>

using jk::G;
namespace pf = jk::platform;

namespace {

void writeFile(const QString& path, const QByteArray& data)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(data);
}

const char* const kPrintCommands[] = {"imprime", "IMPPRJ", "PRNSELECT", "MFPrnSelect"};

}  // namespace

class TestMainWindow : public QObject {
    Q_OBJECT
    FakeServices* fake = nullptr;
    MainWindow* w = nullptr;

    void start(const QStringList& printers = {"Office", "Photo"}, const QString& def = "Photo")
    {
        fake->printers.list = printers;
        fake->printers.defaultName = def;
        w = new MainWindow;
        startUp(*w, QString());
    }

private Q_SLOTS:
    void init()
    {
        jk::resetGlobal();
        QDir(jk::paths::configDir()).removeRecursively();
        jk::paths::ensureDir(jk::paths::configDir());
        fake = new FakeServices;
        fake->install();
    }
    void cleanup()
    {
        delete w;
        w = nullptr;
        delete fake;
        fake = nullptr;
    }

    void startUpSetsTheEnablingRules()
    {
        start();
        QVERIFY(w->isVisible());
        QVERIFY(!w->toolBar()->isVisible());
        QVERIFY(!w->action("Tools")->isChecked());
        for (const char* n : kPrintCommands) QVERIFY2(!w->action(n)->isEnabled(), n);
        QVERIFY(!w->button("SSCommand1")->isEnabled());
        QVERIFY(!w->button("Pasteobj")->isEnabled());
        QVERIFY(!w->button("SSCommand2")->isEnabled());
        // Printers exist, so the catalogue entries are enabled by the printer rule.
        QCOMPARE(G().printerAvailable, 1);
        QVERIFY(w->action("PRTFNTCAT")->isEnabled());
        QVERIFY(!w->action("Capture")->isEnabled());  // no capture companion installed
        QVERIFY(!w->action("Picedit")->isEnabled());  // no editor configured
        QCOMPARE(G().nudgeStep, 40);
        QCOMPARE(G().freeText.capacity(), 100);
        QCOMPARE(G().numFields.capacity(), 50);
        // The splash waited its two seconds on the (fake) clock.
        QVERIFY(fake->clock.pausedMs >= 2000);
        // The printer box lists the printers with the current one selected.
        QCOMPARE(w->printerBox()->count(), 2);
        QCOMPARE(w->printerBox()->currentText(), QString("Photo"));
        QCOMPARE(G().savedPrinterName, QString("Photo"));
    }

    void noPrinterKeepsEveryPrintCommandDisabled()
    {
        start({}, QString());
        QCOMPARE(G().printerAvailable, 0);
        QVERIFY(!w->action("PRTFNTCAT")->isEnabled());
        QVERIFY(!w->action("PRTPICCAT")->isEnabled());
        QVERIFY(!w->button("SSCommand1")->isEnabled());
        QCOMPARE(w->printerBox()->count(), 0);
    }

    void settingsAndCaptionsComeFromTheirFiles()
    {
        writeFile(jk::paths::settingsFile(), "[Preferences]\n/usr/bin/gimp\n/pics\n/backs\n\n");
        QStringList entries;
        for (int i = 1; i <= 183; ++i) entries << QStringLiteral("Entry %1").arg(i);
        entries[9] = "\"&Files, all\"";
        writeFile(jk::paths::configDir() + "/Default.msg", entries.join("\r\n").toUtf8());
        start();
        QCOMPARE(G().picturesEditor, QString("/usr/bin/gimp"));
        QCOMPARE(G().projectFolder, jk::paths::homeDir());
        QVERIFY(w->action("Picedit")->isEnabled());
        QCOMPARE(w->action("Mfile")->text(), QString("&Files, all"));
        QCOMPARE(w->action("newsheet")->text(), QString("Entry 11"));
        QCOMPARE(w->action("Nedit")->text(), QString("Entry 53"));
        QCOMPARE(w->action("AdFrmCDR")->text(), QString("Entry 8"));
        QCOMPARE(w->action("PicView")->text(), QString("Entry 65"));
        QCOMPARE(w->action("FMSP")->text(), QString("Entry 169"));
        QCOMPARE(w->action("ScanSel")->text(), QString("Entry 172"));
        QCOMPARE(w->button("newprj")->toolTip(), QString("Entry 67"));
        QCOMPARE(w->button("FDA")->toolTip(), QString("Entry 92"));
        QCOMPARE(G().texts.msg(jk::Msg::ExistingProjectTab), QString("Entry 183"));
    }

    void missingMessageFileStillStarts()
    {
        writeFile(jk::paths::configDir() + "/Default.msg", "Only one entry\n");
        start();
        QVERIFY(w->isVisible());
        QVERIFY(w->action("quit")->text().isEmpty());
        QVERIFY(G().texts.msg(jk::Msg::SaveChanges).isEmpty());
    }

    void fontCacheIsRebuiltOnlyWhenStale()
    {
        G().fontListPath = jk::paths::fontListFile();
        QFile::remove(G().fontListPath);
        SplashWindow splash;
        QVERIFY(splash.loadTexts());
        QVERIFY(!splash.loadTexts());
        const int count = int(SplashWindow::printerFonts().size());
        QVERIFY(splash.status().startsWith(QString::number(count) + ' '));
        writeFile(G().fontListPath, "not a number\r\n");
        QVERIFY(splash.loadTexts());
        QVERIFY(!splash.loadTexts());
    }

    void stepBoxKeepsOneTo999()
    {
        start();
        QLineEdit* box = w->stepBox();
        box->clear();
        QTest::keyClicks(box, "0");
        QCOMPARE(box->text(), QString("10"));
        QCOMPARE(G().nudgeStep, 10);
        QCOMPARE(w->stepSlider()->value(), 10);
        QCOMPARE(fake->messages.calls.size(), 1);
        QVERIFY(fake->messages.calls.first().text.endsWith(" (1-999)"));

        box->clear();
        QTest::keyClicks(box, "1000");  // 1, 10, 100 pass; 1000 is refused
        QCOMPARE(box->text(), QString("10"));
        QCOMPARE(fake->messages.calls.size(), 2);

        box->clear();
        QTest::keyClicks(box, "250");
        QCOMPARE(G().nudgeStep, 250);
        QCOMPARE(w->stepSlider()->value(), 250);
        w->stepSlider()->setValue(999);
        QCOMPARE(box->text(), QString("999"));
        QCOMPARE(G().nudgeStep, 999);
    }

    void toolBarCommandsToggleIt()
    {
        start();
        w->action("Tools")->trigger();
        QVERIFY(w->toolBar()->isVisible());
        QVERIFY(w->action("Tools")->isChecked());
        w->action("ToolHide")->trigger();
        QVERIFY(!w->toolBar()->isVisible());
        QCOMPARE(w->action("ToolHide")->text(), G().texts.msg(jk::Msg::ShowToolBar));
        w->action("ToolHide")->trigger();
        QCOMPARE(w->action("ToolHide")->text(), G().texts.msg(jk::Msg::HideToolBar));
    }

    void choosingAPrinterMakesItTheDefaultAndQuitRestoresIt()
    {
        start();
        w->printerBox()->setCurrentIndex(0);
        Q_EMIT w->printerBox()->activated(0);
        QCOMPARE(fake->printers.defaultName, QString("Office"));
        G().projectModified = true;
        fake->messages.answers.push_back(pf::AnswerCancel);
        w->quit();
        QCOMPARE(fake->printers.defaultName, QString("Photo"));
    }

    void quitAsksBeforeLosingChanges()
    {
        start();
        G().projectModified = true;
        G().projectFileName = "/tmp/x.prj";
        fake->messages.answers.push_back(pf::AnswerCancel);
        QVERIFY(!w->shutDown());
        QVERIFY(w->isVisible());
        const auto& ask = fake->messages.calls.last();
        QCOMPARE(ask.text, G().texts.msg(jk::Msg::SaveChanges));
        QCOMPARE(ask.title, G().texts.msg(jk::Msg::Warning));
        QCOMPARE(ask.buttons, pf::Buttons::YesNoCancel);

        // The frame's close button asks the same question.
        fake->messages.answers.push_back(pf::AnswerCancel);
        w->close();
        QVERIFY(w->isVisible());
        QCOMPARE(fake->messages.calls.size(), 2);

        // No discards the changes and ends.
        G().projectFileName.clear();
        fake->messages.answers.push_back(pf::AnswerNo);
        QVERIFY(w->shutDown());
        QCOMPARE(fake->messages.calls.last().text, G().texts.msg(jk::Msg::SaveUnsavedProject));
        QVERIFY(!w->isVisible());
        QCOMPARE(fake->help.quitCalls, 1);
    }

    void helpAboutAndCompanions()
    {
        start();
        w->action("Helpprog")->trigger();
        QVERIFY(fake->help.pages.last().endsWith("help/index.html"));
        w->button("SSCommand11")->click();
        QCOMPARE(fake->help.pages.size(), 2);
        w->action("Tutorial")->trigger();
        QVERIFY(fake->help.pages.last().endsWith("help/tutorial.html"));
        QVERIFY(QFile::exists(fake->help.pages.last()));
        w->action("about")->trigger();
        QVERIFY(fake->messages.aboutText.contains("Version V.04.00"));
        w->action("WEB")->trigger();
        QCOMPARE(fake->desktop.urls.size(), 1);

        // A catalogue entry enabled by the printer rule reports a missing program.
        w->action("PRTFNTCAT")->trigger();
        QCOMPARE(fake->messages.calls.size(), 1);
        fake->programs.existing.insert(MainWindow::companionPath("snaptool"));
        w->enableCompanions();
        QVERIFY(w->action("Capture")->isEnabled());
        w->action("Capture")->trigger();
        QCOMPARE(fake->programs.started.last(), MainWindow::companionPath("snaptool"));
    }

    void secondInstanceEndsAtOnce()
    {
        SingleInstance first(jk::paths::ensureDir(jk::paths::runtimeDir()));
        QVERIFY(first.tryAcquire());
        QProcess second;
        second.start(QCoreApplication::applicationDirPath() + "/jewlkit", {});
        QVERIFY(second.waitForFinished(15000));
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        QCOMPARE(second.exitCode(), 0);
        // The first keeps its lock.
        SingleInstance third(jk::paths::runtimeDir());
        QVERIFY(!third.tryAcquire());
    }
};

QTEST_MAIN(TestMainWindow)
#include "test_mainwindow.moc"
