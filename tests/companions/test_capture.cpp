// The main window's Capture command against a stand-in for the capture
// program: a script that saves a picture and reports it the way snaptool
// does, run as a real process.
#include "ui/UiFixture.h"
#include "platform/SystemServices.h"
#include "ui/dialogs/PictureDialog.h"
#include <QThreadPool>

namespace pf = jk::platform;

// Runs the script for whichever companion the window starts.
struct StandIn final : pf::IPrograms {
    pf::IPrograms* real = nullptr;
    QString script;
    QWidget* window = nullptr;
    QStringList args;
    bool minimised = false;

    bool exists(const QString&) override { return true; }
    bool start(const QString&, const QStringList&, QString*) override { return false; }
    bool runAndWait(const QString&, const QStringList& a, QString* error) override
    {
        args = a;
        minimised = window->isMinimized();
        return real->runAndWait(script, a, error);
    }
};

class TestCapture : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    std::unique_ptr<fixture::SheetGui> gui;
    pf::SystemServices system;
    StandIn standIn;

    void writeScript(const QString& body)
    {
        standIn.script = tmp.filePath("snaptool");
        QVERIFY(fixture::writeFile(standIn.script, "#!/bin/sh\n" + body.toUtf8() + "\n"));
        QFile::setPermissions(standIn.script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    // Presses Capture; the picture dialog, if one comes up once the program
    // ended, is handed to the script and then closed.
    int capture(const std::function<void(PictureDialog*)>& script)
    {
        int dialogs = 0;
        QTimer poll;
        connect(&poll, &QTimer::timeout, this, [&] {
            auto* d = qobject_cast<PictureDialog*>(QApplication::activeModalWidget());
            if (!d) return;
            ++dialogs;
            script(d);
            if (d->isVisible()) d->reject();
        });
        poll.start(10);
        gui->w->action("Capture")->trigger();
        return dialogs;
    }

private Q_SLOTS:
    // The picture dialog looks for scanners: none here, and no network ones.
    void initTestCase() { qputenv("SANE_CONFIG_DIR", tmp.path().toLocal8Bit()); }
    void init()
    {
        gui = std::make_unique<fixture::SheetGui>();
        pf::Services s = gui->fake->services();
        pf::Services real;
        system.fill(real);
        standIn.real = real.programs;
        standIn.window = gui->w.get();
        s.programs = &standIn;
        pf::install(s);
        gui->w->enableCompanions();
        gui->w->addSimpleSheet();
    }
    void cleanup()
    {
        gui.reset();
        QThreadPool::globalInstance()->waitForDone(15000);
    }

    void savedPictureOpensInThePictureDialog_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("listed");
        QTest::newRow("JPEG") << "capture-1.jpg" << true;
        QTest::newRow("PNG, a format the list leaves out") << "capture-2.png" << false;
    }
    void savedPictureOpensInThePictureDialog()
    {
        QFETCH(QString, name);
        QFETCH(bool, listed);
        const QString saved = tmp.filePath("shots/" + name);
        QVERIFY(QDir(tmp.filePath("shots")).mkpath("."));
        fixture::pictureFile(tmp.filePath("source.png"), {64, 48}, Qt::red);
        writeScript(QStringLiteral("[ \"$1\" = --report ] || exit 3\ncp '%1' '%2' && echo '%2' >> \"$2\"")
                        .arg(tmp.filePath("source.png"), saved));
        const int dialogs = capture([&](PictureDialog* d) {
            QCOMPARE(d->browser()->path(), tmp.filePath("shots"));
            QCOMPARE(d->browser()->fileList()->fileName(), listed ? name : QString());
            QVERIFY(d->choice() && d->choice()->file == saved);
            fixture::child<QAbstractButton>(d, "Command1")->click();
        });
        QCOMPARE(dialogs, 1);
        QVERIFY(standIn.minimised && !gui->w->isMinimized());
        QCOMPARE(standIn.args.value(0), QString("--report"));
        QCOMPARE(gui->project().pictures().at(1).file, saved);
        QVERIFY(gui->fake->messages.calls.isEmpty());
    }

    void nothingSavedOpensNoDialog_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<bool>("reported");
        QTest::newRow("closed without saving") << "exit 0" << false;
        QTest::newRow("reported file gone") << "echo /nowhere/capture.jpg >> \"$2\"" << false;
        QTest::newRow("program crashed") << "kill -SEGV $$" << true;
    }
    void nothingSavedOpensNoDialog()
    {
        QFETCH(QString, body);
        QFETCH(bool, reported);
        writeScript(body);
        QCOMPARE(capture([](PictureDialog*) {}), 0);
        QVERIFY(!gui->w->isMinimized() && gui->w->action("Capture")->isEnabled());
        QCOMPARE(gui->fake->messages.calls.size(), reported ? 1 : 0);
        QCOMPARE(gui->project().pictures().count(), 0);
    }
};

QTEST_MAIN(TestCapture)
#include "test_capture.moc"
