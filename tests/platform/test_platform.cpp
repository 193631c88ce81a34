#include "platform/FakeServices.h"
#include "ui/widgets/HelpWindow.h"
#include "ui/widgets/RealServices.h"
#include "platform/SingleInstance.h"
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QMessageBox>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QToolButton>
#include <QtTest>

namespace pf = jk::platform;

namespace {

void writeFile(const QString& path, const QByteArray& data)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(data);
}

QByteArray page(const char* title, const char* body)
{
    return QByteArray("<html><head><title>") + title + "</title></head><body>" + body + "</body></html>";
}

}  // namespace

class TestPlatform : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void singleInstanceHoldsTheFolder()
    {
        QTemporaryDir dir;
        SingleInstance first(dir.path());
        QVERIFY(first.tryAcquire());
        QVERIFY(QFile::exists(dir.filePath("jewlkit.lock")));

        QElapsedTimer t;
        t.start();
        SingleInstance second(dir.path());
        QVERIFY(!second.tryAcquire());
        QVERIFY(t.elapsed() < 1000);

        first.release();
        QVERIFY(second.tryAcquire());
        QVERIFY(!first.tryAcquire());
    }

    void singleInstanceTakesOverALockOfADeadProcess()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("jewlkit.lock");
        QByteArray contents;
        {
            QLockFile lock(path);
            QVERIFY(lock.tryLock(0));
            QFile f(path);
            QVERIFY(f.open(QIODevice::ReadOnly));
            contents = f.readAll();
        }
        QProcess gone;
        gone.start("true", {});
        QVERIFY(gone.waitForFinished());
        const qint64 deadPid = gone.processId() ? gone.processId() : 999999;
        // The same lock as before, but recorded by a process that has ended.
        QList<QByteArray> lines = contents.split('\n');
        lines[0] = QByteArray::number(deadPid);
        writeFile(path, lines.join('\n'));

        SingleInstance instance(dir.path());
        QVERIFY(instance.tryAcquire());
    }

    void fakeAnswersFromItsQueuesAndRecords()
    {
        FakeServices fake;
        fake.install();
        QCOMPARE(pf::services().messages, &fake.messages);

        auto* m = pf::services().messages;
        fake.messages.answers.push_back(pf::AnswerYes);
        QCOMPARE(m->show("Save?", "Quit", pf::Icon::Question, pf::Buttons::YesNoCancel), int(pf::AnswerYes));
        // Empty queue: what dismissing the box gives, or the stated default.
        QCOMPARE(m->show("a", "t", pf::Icon::Question, pf::Buttons::YesNoCancel), int(pf::AnswerCancel));
        QCOMPARE(m->show("b", "t", pf::Icon::Question, pf::Buttons::YesNo), int(pf::AnswerNo));
        QCOMPARE(m->show("c", "t", pf::Icon::Warning, pf::Buttons::Ok), int(pf::AnswerOk));
        QCOMPARE(m->show("d", "t", pf::Icon::Question, pf::Buttons::YesNo, pf::AnswerYes), int(pf::AnswerYes));
        QCOMPARE(fake.messages.calls.size(), 5);
        QCOMPARE(fake.messages.calls[0].title, QString("Quit"));
        QCOMPARE(fake.messages.calls[0].icon, pf::Icon::Question);
        QCOMPARE(fake.messages.calls[2].buttons, pf::Buttons::YesNo);

        fake.files.saveAnswers = {"/tmp/cover", "/tmp/cover.txt"};
        QCOMPARE(fake.files.saveFile("Save", "/tmp", "Projects (*.prj)", "prj"), QString("/tmp/cover.prj"));
        QCOMPARE(fake.files.saveFile("Save", "/tmp", "Projects (*.prj)", "prj"), QString("/tmp/cover.txt"));
        QVERIFY(fake.files.saveFile("Save", "/tmp", "", "prj").isEmpty());
        QCOMPARE(fake.files.saveCalls.size(), 3);
        QVERIFY(!fake.fonts.chooseFont(QFont(), "Font"));
        fake.colors.answers.push_back(QColor(Qt::red));
        QCOMPARE(fake.colors.chooseColor(Qt::white, "Colour"), std::optional<QColor>(QColor(Qt::red)));

        // Printers: a known name becomes the default; an unknown or a
        // scripted failure leaves it.
        fake.printers.list = {"Office", "Photo"};
        fake.printers.defaultName = "Photo";
        QString error;
        QVERIFY(fake.printers.setDefaultPrinter("Office", &error));
        QVERIFY(!fake.printers.setDefaultPrinter("Nowhere", &error));
        fake.printers.failSet = true;
        QVERIFY(!fake.printers.setDefaultPrinter("Photo", &error));
        QCOMPARE(fake.printers.defaultName, QString("Office"));
        QCOMPARE(fake.printers.setCalls, QStringList({"Office", "Nowhere", "Photo"}));

        fake.programs.existing.insert("/opt/tool");
        QVERIFY(!fake.programs.start("/opt/other", {}, &error));
        QVERIFY(fake.programs.runAndWait("/opt/tool", {"-x"}, &error));
        QCOMPARE(fake.programs.started, QStringList({"/opt/tool"}));
        QCOMPARE(fake.programs.calls.size(), 2);
        QVERIFY(fake.programs.calls[1].waited);
    }

    void fakeClockPausesAtOnceAndRunsQueuedEvents()
    {
        FakeServices fake;
        fake.install();
        const QDateTime start = fake.clock.now();
        bool ran = false;
        QMetaObject::invokeMethod(this, [&ran] { ran = true; }, Qt::QueuedConnection);
        QElapsedTimer t;
        t.start();
        pf::services().clock->pause(2000);
        QVERIFY(t.elapsed() < 1000);
        QVERIFY(ran);
        QCOMPARE(start.msecsTo(fake.clock.now()), 2000);
        QCOMPARE(fake.clock.pausedMs, 2000);
    }

    void destroyedServicesAreUninstalled()
    {
        {
            FakeServices fake;
            fake.install();
        }
        QVERIFY(!pf::services().clock);
        {
            RealServices real;
            pf::install(real.services());
        }
        QVERIFY(!pf::services().messages);
    }

    void realMessageBoxAnswersWithTheOldNumbers()
    {
        RealServices real;
        pf::IMessageBox* m = real.services().messages;
        // The box is gone when show() returns: note what it showed.
        QStringList seen;
        auto press = [&seen](Qt::Key key) {
            QTimer::singleShot(0, [&seen, key] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                if (!box) return;
                seen = QStringList{box->text(), box->windowTitle(), QString::number(box->icon())};
                QTest::keyClick(box, key);
            });
        };
        press(Qt::Key_Return);
        QCOMPARE(m->show("Save?", "Quit", pf::Icon::Question, pf::Buttons::YesNoCancel, pf::AnswerNo),
                 int(pf::AnswerNo));
        QCOMPARE(seen, QStringList({"Save?", "Quit", QString::number(QMessageBox::Question)}));
        press(Qt::Key_Return);
        QCOMPARE(m->show("Go?", "t", pf::Icon::Warning, pf::Buttons::YesNo, pf::AnswerYes), int(pf::AnswerYes));
        press(Qt::Key_Escape);
        QCOMPARE(m->show("Save?", "t", pf::Icon::Question, pf::Buttons::YesNoCancel), int(pf::AnswerCancel));
        press(Qt::Key_Escape);
        QCOMPARE(m->show("Done", "t", pf::Icon::Information, pf::Buttons::Ok), int(pf::AnswerOk));
    }

    void realPauseKeepsTheEventLoopRunning()
    {
        RealServices real;
        bool fired = false;
        QTimer::singleShot(0, this, [&fired] { fired = true; });
        QElapsedTimer t;
        t.start();
        real.services().clock->pause(50);
        QVERIFY(fired);
        QVERIFY(t.elapsed() >= 45);
        QVERIFY(qAbs(real.services().clock->now().msecsTo(QDateTime::currentDateTime())) < 1000);
    }

    void realPrograms()
    {
        RealServices real;
        pf::IPrograms* p = real.services().programs;
        QTemporaryDir dir;
        QVERIFY(p->exists("sh"));
        QVERIFY(p->exists("/bin/sh"));
        QVERIFY(!p->exists("jk-no-such-program"));
        writeFile(dir.filePath("data.txt"), "not a program");
        QVERIFY(!p->exists(dir.filePath("data.txt")));

        // Waiting means the program has ended when the call returns.
        const QString out = dir.filePath("out.txt");
        QString error;
        QVERIFY(p->runAndWait("sh", {"-c", "sleep 0.05; echo done > \"$0\"", out}, &error));
        QVERIFY(QFile::exists(out));

        QVERIFY(!p->runAndWait("sh", {"-c", "kill -SEGV $$"}, &error));
        QVERIFY(!error.isEmpty());
        error.clear();
        QVERIFY(!p->start("jk-no-such-program", {}, &error));
        QVERIFY(error.contains("jk-no-such-program"));
    }

    void helpWindowFollowsRelativeLinks()
    {
        QTemporaryDir dir;
        QDir(dir.path()).mkdir("help");
        const QString help = dir.filePath("help");
        writeFile(help + "/index.html", page("Contents", "<p>All pages</p>"));
        writeFile(help + "/a.html", page("Page A", "<p><a href=\"b.html\">Go to B</a></p>"));
        writeFile(help + "/b.html", page("Page B", "<p><a href=\"a.html\">Back to A</a></p>"));

        RealServices real;
        real.services().help->show(help + "/a.html");
        QVERIFY(HelpWindow::hasShared());
        HelpWindow* w = HelpWindow::shared();
        auto* browser = w->findChild<QTextBrowser*>("helpBrowser");
        QVERIFY(browser);
        QVERIFY(w->isVisible());
        QCOMPARE(w->windowTitle(), QString("Page A"));

        // Click the link where it is drawn.
        QVERIFY(QTest::qWaitForWindowExposed(w));
        QTextCursor link = browser->document()->find("Go to B");
        QVERIFY(!link.isNull());
        link.setPosition(link.selectionStart() + 2);
        const QPoint at = browser->cursorRect(link).center();
        QTest::mouseClick(browser->viewport(), Qt::LeftButton, {}, at);
        QCOMPARE(browser->source(), QUrl::fromLocalFile(help + "/b.html"));
        QCOMPARE(w->windowTitle(), QString("Page B"));

        auto* back = w->findChild<QToolButton*>("helpBack");
        QVERIFY(back->isEnabled());
        back->click();
        QCOMPARE(browser->source(), QUrl::fromLocalFile(help + "/a.html"));
        w->findChild<QToolButton*>("helpContents")->click();
        QCOMPARE(w->windowTitle(), QString("Contents"));
        w->findChild<QToolButton*>("helpHome")->click();
        QCOMPARE(browser->source(), QUrl::fromLocalFile(help + "/a.html"));

        // Another page reuses the one window.
        real.services().help->show(help + "/b.html");
        QCOMPARE(HelpWindow::shared(), w);
        QCOMPARE(w->windowTitle(), QString("Page B"));

        real.services().help->quit();
        QVERIFY(!HelpWindow::hasShared());
    }
};

QTEST_MAIN(TestPlatform)
#include "test_platform.moc"
