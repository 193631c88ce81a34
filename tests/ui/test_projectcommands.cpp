#include "ui/mainwindow/MainWindow.h"
#include "app/Startup.h"
#include "platform/FakeServices.h"
#include "ui/dialogs/NewProjectDialog.h"
#include "file/ProjectFile.h"
#include "ui/sheet/SheetWindow.h"
#include "render/SheetLayout.h"
#include "model/Global.h"
#include "file/Paths.h"
#include <QAction>
#include <QImageReader>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QProcess>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>
#include <QtTest>

using jk::G;
namespace pf = jk::platform;

namespace {

// What the new-project dialog answers: the sheets to create.
struct Choice {
    bool simple = false, dbl = false, jacket = false, inside = false, cd = false;
};

void answerNewProject(const Choice& c)
{
    MainWindow::newProjectDialog = [c](QWidget*) {
        jk::Global& g = G();
        g.openExisting = false;
        g.simpleChoice = (c.simple);
        g.doubleChoice = (c.dbl);
        g.jacketChoice = (c.jacket);
        g.insideChoice = (c.inside);
        g.cdChoice = (c.cd);
        return int(NewProjectDialog::Create);
    };
}

QList<int> sheetCodes(MainWindow* w)
{
    QList<int> codes;
    for (QMdiSubWindow* sub : w->mdiArea()->subWindowList(QMdiArea::CreationOrder))
        if (auto* s = qobject_cast<SheetWindow*>(sub->widget())) codes << s->formatCode();
    return codes;
}

int addFreeText(int sheet, const QString& text)
{
    jk::TextRecord r;
    r.sheet = jk::i16(sheet);
    r.text = text;
    r.style.fontName = "Arial";
    r.style.fontSize = 12;
    r.style.width = 1200;
    r.style.height = 300;
    return G().freeText.append(r);
}

}  // namespace

class TestProjectCommands : public QObject {
    Q_OBJECT
    FakeServices* fake = nullptr;
    MainWindow* w = nullptr;
    QTemporaryDir dir;
    int dialogCalls = 0;

    QString path(const QString& name) const { return dir.filePath(name); }

    void newProject(const Choice& c)
    {
        answerNewProject(c);
        auto inner = MainWindow::newProjectDialog;
        MainWindow::newProjectDialog = [this, inner](QWidget* p) {
            ++dialogCalls;
            return inner(p);
        };
        w->newProjectCommand();
    }

private Q_SLOTS:
    void init()
    {
        jk::resetGlobal();
        fake = new FakeServices;
        fake->install();
        w = new MainWindow;
        startUp(*w, QString());
        dialogCalls = 0;
    }
    void cleanup()
    {
        delete w;
        w = nullptr;
        delete fake;
        fake = nullptr;
    }

    void newProjectCreatesTheChosenSheets()
    {
        newProject({.simple = true, .inside = true});
        QCOMPARE(sheetCodes(w), (QList<int>{jk::FmtSimple, jk::FmtInside}));
        QCOMPARE(G().sheetComposition, 5);
        QCOMPARE(G().projectFileName, QString("Untitled.prj"));
        QCOMPARE(w->windowTitle(), QString("Jewelcase Studio    Untitled.prj"));
        QVERIFY(w->toolBar()->isVisible());
        QVERIFY(w->action("savefilefirst")->isEnabled());
        QVERIFY(w->action("AddForm")->isEnabled());
        QCOMPARE(G().projectModified, false);
        // No paper jacket: the project starts with the spines hidden.
        QCOMPARE(G().spinesHidden, true);
        QVERIFY(!w->sheetOf(jk::FmtInside)->spinesShown());

        // Jacket and disc label fill the project: 16 + 8 = 24.
        newProject({.jacket = true, .cd = true});
        QCOMPARE(sheetCodes(w), (QList<int>{jk::FmtJacket, jk::FmtCdRom}));
        QCOMPARE(G().sheetComposition, 24);
        QVERIFY(!w->action("AddForm")->isEnabled());
        QVERIFY(!w->button("AddSheet")->isEnabled());
    }

    void saveQuestionGuardsNewOpenAndQuit()
    {
        newProject({.dbl = true, .cd = true});
        addFreeText(jk::FmtCdRom, "keep me");
        G().projectModified = true;

        // Cancel: nothing changes, no dialog comes up.
        fake->messages.answers = {pf::AnswerCancel};
        w->newProjectCommand();
        QCOMPARE(dialogCalls, 1);
        QCOMPARE(sheetCodes(w), (QList<int>{jk::FmtDouble, jk::FmtCdRom}));
        QCOMPARE(G().freeText.at(1).text, QString("keep me"));
        QCOMPARE(fake->messages.calls.last().buttons, pf::Buttons::YesNoCancel);
        QCOMPARE(fake->messages.calls.last().text, G().texts.msg(jk::Msg::SaveChanges));

        fake->messages.answers = {pf::AnswerCancel};
        fake->files.openAnswers = {path("never.prj")};
        w->openCommand(false);
        QCOMPARE(fake->files.openCalls.size(), 0);
        QCOMPARE(sheetCodes(w), (QList<int>{jk::FmtDouble, jk::FmtCdRom}));

        fake->messages.answers = {pf::AnswerCancel};
        QVERIFY(!w->shutDown());
        QCOMPARE(sheetCodes(w).size(), 2);

        // Yes on an untitled project asks for a name, then saves there.
        fake->messages.answers = {pf::AnswerYes};
        fake->files.saveAnswers = {path("first.prj")};
        newProject({.simple = true});
        QVERIFY(QFile::exists(path("first.prj")));
        QCOMPARE(sheetCodes(w), (QList<int>{jk::FmtSimple}));
        QCOMPARE(G().freeText.count(), 0);

        // No: the changes are dropped without a file.
        G().projectModified = true;
        fake->messages.answers = {pf::AnswerNo};
        newProject({.cd = true});
        QCOMPARE(fake->files.saveCalls.size(), 1);
        QCOMPARE(sheetCodes(w), (QList<int>{jk::FmtCdRom}));
    }

    void saveAndOpenRoundTrip()
    {
        newProject({.dbl = true, .inside = true, .cd = true});
        G().spineText = "Road trip";
        const int a = addFreeText(jk::FmtInside, "Side A");
        addFreeText(jk::FmtInside, "gone");
        G().freeText.at(2).text.clear();  // deleted: the slot stays used
        const int c = addFreeText(jk::FmtCdRom, "Disc");
        G().projectModified = true;

        // Untitled in any letter case asks for a name.
        G().projectFileName = dir.filePath("UNTITLED.PRJ");
        fake->files.saveAnswers = {path("trip.prj")};
        QVERIFY(w->saveProject());
        QCOMPARE(fake->files.saveCalls.size(), 1);
        QCOMPARE(G().projectFileName, path("trip.prj"));
        QCOMPARE(w->windowTitle(), "Jewelcase Studio    " + path("trip.prj"));
        QCOMPARE(G().projectModified, false);
        QVERIFY(w->action("saveas")->isEnabled());
        // A titled project saves without asking.
        QVERIFY(w->saveProject());
        QCOMPARE(fake->files.saveCalls.size(), 1);

        newProject({.cd = true});
        QCOMPARE(G().freeText.count(), 0);

        // A cancelled file dialog keeps the open project and its print weights.
        const jk::i16 weights = G().compositionCode;
        fake->files.openAnswers = {QString()};
        w->openCommand(true);
        QCOMPARE(sheetCodes(w), (QList<int>{jk::FmtCdRom}));
        QCOMPARE(G().compositionCode, weights);

        fake->files.openAnswers = {path("trip.prj")};
        w->openCommand(true);
        QCOMPARE(sheetCodes(w), (QList<int>{jk::FmtDouble, jk::FmtCdRom, jk::FmtInside}));
        QCOMPARE(G().readSuccess, true);
        QCOMPARE(G().sheetComposition, 14);
        QCOMPARE(G().spineText, QString("Road trip"));
        // Block lines come back each ended by CR LF, and saving again gives
        // the same bytes: nothing grows from one save to the next.
        QCOMPARE(G().freeText.at(a).text, QString("Side A\r\n"));
        QFile saved(path("trip.prj"));
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(jk::projectFileBytes(), saved.readAll());
        // The deleted block is not stored: the slots close up.
        QCOMPARE(G().freeText.count(), 2);
        QCOMPARE(G().freeText.at(c - 1).sheet, jk::i16(jk::FmtCdRom));
        QCOMPARE(w->windowTitle(), "Jewelcase Studio    " + path("trip.prj"));
        QVERIFY(w->action("Exportshhet")->isEnabled());
        // One sheet per format: the cover entries are off once a cover exists.
        QVERIFY(!w->action("AdFrmSimpl")->isEnabled());
        QVERIFY(!w->action("AdFrmIns")->isEnabled());
        QCOMPARE(G().projectModified, false);

        // The new-project dialog's second tab opens the chosen file at once.
        newProject({.cd = true});
        MainWindow::newProjectDialog = [this](QWidget*) {
            G().openExisting = true;
            G().projectFilePath = G().projectFileName = path("trip.prj");
            return int(NewProjectDialog::OpenExisting);
        };
        w->newProjectCommand();
        QCOMPARE(sheetCodes(w), (QList<int>{jk::FmtDouble, jk::FmtCdRom, jk::FmtInside}));
        QCOMPARE(G().spineText, QString("Road trip"));
    }

    void failedSaveKeepsTheChangesAndTheOldFile()
    {
        newProject({.simple = true});
        fake->files.saveAnswers = {path("keep.prj")};
        QVERIFY(w->saveProject());
        const QByteArray before = [&] {
            QFile f(path("keep.prj"));
            f.open(QIODevice::ReadOnly);
            return f.readAll();
        }();

        // A folder that cannot exist (its parent is a file) fails even as root.
        QFile blocker(path("blocker"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        addFreeText(jk::FmtSimple, "unsaved work");
        G().projectModified = true;
        G().projectFileName = path("blocker/sub.prj");
        const int shown = fake->messages.calls.size();
        QVERIFY(!w->writeProjectFile());
        QCOMPARE(fake->messages.calls.size(), shown + 1);
        QCOMPARE(fake->messages.calls.last().title, G().texts.msg(jk::Msg::ProgramTitle));
        QCOMPARE(G().projectModified, true);

        // Save as to the old name works and replaces it.
        fake->files.saveAnswers = {path("keep.prj")};
        QVERIFY(w->saveAs());
        QFile f(path("keep.prj"));
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray after = f.readAll();
        QVERIFY(after != before);
        QVERIFY(after.contains("unsaved work"));
        QCOMPARE(G().projectModified, false);
    }

    void headlessExportWritesEverySheet()
    {
        // Booklet, disc label and inlay with a block each, plus a jacket project.
        jk::resetGlobal();
        G().createTables(jk::TableSizing::NewProject);
        G().sheetComposition = jk::i16(jk::FmtDouble + jk::FmtCdRom + jk::FmtInside);
        addFreeText(jk::FmtDouble, "Booklet text");
        addFreeText(jk::FmtCdRom, "Disc text");
        G().spineText = "Spine";
        QVERIFY(jk::writeProject(path("export.prj")));

        const QString exe = QCoreApplication::applicationDirPath() + "/jewlkit";
        const QString out = path("png");
        QProcess p;
        p.start(exe, {"--export", out, path("export.prj")});
        QVERIFY(p.waitForFinished(60000));
        QCOMPARE(p.exitCode(), 0);
        for (int code : {2, 4, 8}) {
            QImageReader r(out + QString("/%1.png").arg(code));
            const QSize s = r.size();
            const QSizeF twips = jk::sheet::canvasSizeTwips(code);
            // 300 dpi of the canvas, to the pixel.
            QVERIFY2(qAbs(s.width() - twips.width() * 300 / 1440) <= 1, qPrintable(QString::number(code)));
            QVERIFY(qAbs(s.height() - twips.height() * 300 / 1440) <= 1);
        }
        QVERIFY(QFile::exists(out + "/2-text.png"));
        QVERIFY(!QFile::exists(out + "/1.png"));

        // A damaged file: the message on standard error, exit status 1, and
        // the sheets that could be read are still written.
        QFile good(path("export.prj"));
        QVERIFY(good.open(QIODevice::ReadOnly));
        QByteArray bytes = good.readAll();
        bytes.truncate(bytes.indexOf("Booklet text") + 5);
        QFile bad(path("bad.prj"));
        QVERIFY(bad.open(QIODevice::WriteOnly));
        bad.write(bytes);
        bad.close();
        p.start(exe, {"--export", path("png-bad"), path("bad.prj")});
        QVERIFY(p.waitForFinished(60000));
        QCOMPARE(p.exitCode(), 1);
        QVERIFY(!p.readAllStandardError().isEmpty());
        QVERIFY(QFile::exists(path("png-bad/8.png")));

        p.start(exe, {"--export", path("none"), path("missing.prj")});
        QVERIFY(p.waitForFinished(60000));
        QCOMPARE(p.exitCode(), 1);
        QVERIFY(!QFile::exists(path("none")));
    }
};

QTEST_MAIN(TestProjectCommands)
#include "test_projectcommands.moc"
