// The main window around the sheets: start-up, its texts and settings, the
// nudge step, the printer box, quitting, help, companions, one instance.
#include "UiFixture.h"
#include "app/Startup.h"
#include "file/Paths.h"
#include "platform/SingleInstance.h"
#include <QComboBox>
#include <QLineEdit>
#include <QSlider>
#include <QToolBar>

namespace pf = jk::platform;

class TestMainWindow : public QObject {
    Q_OBJECT
    std::unique_ptr<fixture::Gui> gui;
    FakeServices* fake = nullptr;
    MainWindow* w = nullptr;

    void start(const QStringList& printers = {"Office", "Photo"}, const QString& def = "Photo")
    {
        fake->printers.list = printers;
        fake->printers.defaultName = def;
        gui->w = std::make_unique<MainWindow>();
        w = gui->w.get();
        startUp(*w, QString());
    }
    const QString& msg(jk::Msg m) { return jk::texts().msg(m); }

private Q_SLOTS:
    void init()
    {
        QDir(jk::paths::configDir()).removeRecursively();
        jk::paths::ensureDir(jk::paths::configDir());
        gui = std::make_unique<fixture::Gui>();
        fake = gui->fake.get();
    }
    void cleanup() { gui.reset(); }

    void startUpFollowsThePrinters_data()
    {
        QTest::addColumn<QStringList>("printers");
        QTest::addColumn<QString>("current");
        QTest::newRow("two printers") << QStringList{"Office", "Photo"} << "Photo";
        QTest::newRow("no printer") << QStringList{} << "";
    }
    void startUpFollowsThePrinters()
    {
        QFETCH(QStringList, printers);
        QFETCH(QString, current);
        start(printers, current);
        QVERIFY(w->isVisible() && !w->toolBar()->isVisible());
        // The start-up window closes as soon as its work is done.
        QVERIFY(fake->clock.pauses.isEmpty());
        QCOMPARE(gui->enabled("PRTFNTCAT"), !printers.isEmpty());
        QVERIFY(!gui->enabled("imprime"));  // nothing to print before a project
        QCOMPARE(w->printerBox()->count(), printers.size());
        QCOMPARE(w->printerBox()->currentText(), current);
    }

    void textsAndSettingsComeFromTheirFiles()
    {
        // A message file that lacks entries still starts, with empty captions.
        QVERIFY(fixture::writeFile(jk::paths::configDir() + "/Default.msg", "Only one entry\n"));
        start();
        QVERIFY(w->isVisible() && w->action("quit")->text().isEmpty());
        QVERIFY(!gui->enabled("Picedit"));  // no editor configured

        QVERIFY(fixture::writeFile(jk::paths::settingsFile(), "[Preferences]\n/usr/bin/gimp\n/pics\n/backs\n\n"));
        QStringList entries;
        for (int i = 1; i <= 183; ++i) entries << QStringLiteral("Entry %1").arg(i);
        entries[9] = "\"&Files, all\"";
        QVERIFY(fixture::writeFile(jk::paths::configDir() + "/Default.msg", entries.join("\r\n").toUtf8()));
        start();
        QCOMPARE(jk::app().settings.projectFolder, jk::paths::homeDir());
        QVERIFY(gui->enabled("Picedit"));
        QCOMPARE(w->action("Mfile")->text(), QString("&Files, all"));
        QCOMPARE(w->button("newprj")->toolTip(), QString("Entry 67"));
        QCOMPARE(msg(jk::Msg::ExistingProjectTab), QString("Entry 183"));
    }

    void stepBoxKeepsOneTo999()
    {
        start();
        const int& step = w->editor().selection.nudgeStep;
        QCOMPARE(step, 40);
        QLineEdit* box = w->stepBox();
        // "1000" passes as 1, 10 and 100 on the way, then is refused.
        for (const char* typed : {"0", "1000", "250"}) {
            box->clear();
            QTest::keyClicks(box, typed);
        }
        QCOMPARE(fake->messages.calls.size(), 2);
        QVERIFY(fake->messages.calls.first().text.endsWith(" (1-999)"));
        QCOMPARE(step, 250);
        QCOMPARE(w->stepSlider()->value(), 250);
        box->clear();
        QTest::keyClicks(box, "x");  // refused: the box and the step go back to 10
        QCOMPARE(box->text(), QString("10"));
        QCOMPARE(step, 10);
        w->stepSlider()->setValue(999);
        QCOMPARE(box->text(), QString("999"));
        QCOMPARE(step, 999);
    }

    void quittingRestoresThePrinterAndAsksFirst()
    {
        start();
        w->printerBox()->setCurrentIndex(0);
        Q_EMIT w->printerBox()->activated(0);
        QCOMPARE(fake->printers.defaultName, QString("Office"));
        w->project().setModified(true);
        fake->messages.answers = {pf::AnswerCancel};
        w->quit();
        QCOMPARE(fake->printers.defaultName, QString("Photo"));
        QVERIFY(w->isVisible());
        // The frame's close button asks the same question (a project never
        // named is asked about as unsaved); No ends the program.
        fake->messages.answers = {pf::AnswerNo};
        w->close();
        QCOMPARE(fake->messages.calls.size(), 2);
        QCOMPARE(fake->messages.calls.last().text, msg(jk::Msg::SaveUnsavedProject));
        QCOMPARE(fake->help.quitCalls, 1);
    }

    void helpAndCompanions()
    {
        start();
        w->action("Tutorial")->trigger();
        QVERIFY(QFile::exists(fake->help.pages.value(0)));  // the help pages come with the program
        // A catalogue entry enabled by the printer rule reports a missing program.
        w->action("PRTFNTCAT")->trigger();
        QCOMPARE(fake->messages.calls.size(), 1);
        fake->programs.existing.insert(MainWindow::companionPath("snaptool"));
        w->enableCompanions();
        w->action("Capture")->trigger();
        QCOMPARE(fake->programs.started, QStringList{MainWindow::companionPath("snaptool")});
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
