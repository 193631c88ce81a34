// The project commands: the save-changes question before anything is lost,
// save and reopen, a failed save, and the headless export.
#include "UiFixture.h"
#include "file/ProjectFile.h"
#include "render/SheetLayout.h"
#include <QImageReader>
#include <QToolBar>

namespace pf = jk::platform;
using jk::FmtCdRom, jk::FmtDouble, jk::FmtInside, jk::FmtJacket, jk::FmtSimple;

using fixture::readFile;

class TestProjectCommands : public QObject {
    Q_OBJECT
    std::unique_ptr<fixture::Gui> gui;
    FakeServices* fake = nullptr;
    MainWindow* w = nullptr;
    QTemporaryDir dir;
    NewProjectChoice answer;  // what the new-project dialog answers
    int dialogCalls = 0;

    QString path(const QString& name) const { return dir.filePath(name); }
    jk::Project& project() { return w->project(); }
    void newProject(int sheets)
    {
        answer = {NewProjectDialog::Create, sheets, {}};
        w->newProjectCommand();
    }
    QList<int> sheetCodes() const
    {
        QList<int> codes;
        for (SheetWindow* s : w->sheets()) codes << s->formatCode();
        return codes;
    }
    int addText(int sheet, const QString& text)
    {
        return project().addText(false, fixture::textAt(sheet, text, {0, 0, 1200, 300}));
    }
    // A project file of those sheets, each with a block, written without a window.
    bool writeProjectFile(const QString& file, int sheets)
    {
        jk::ProjectData d;
        d.createTables(jk::TableSizing::NewProject);
        d.sheetComposition = jk::i16(sheets);
        for (const jk::FormatInfo& f : jk::formats())
            if (sheets & f.code) d.freeText.append(fixture::textAt(f.code, QString("Text on %1").arg(f.code), {0, 0, 1200, 300}));
        return jk::writeProject(d, file);
    }

private Q_SLOTS:
    void init()
    {
        gui = std::make_unique<fixture::Gui>();
        fake = gui->fake.get();
        w = gui->w.get();
        w->show();
        w->newProjectDialog = [this](QWidget*) {
            ++dialogCalls;
            return answer;
        };
        dialogCalls = 0;
    }
    void cleanup() { gui.reset(); }

    void saveQuestionGuardsNewOpenAndQuit_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("reply");
        for (const char* c : {"new", "open", "quit"}) {
            QTest::addRow("%s cancel", c) << c << int(pf::AnswerCancel);
            QTest::addRow("%s yes", c) << c << int(pf::AnswerYes);
            QTest::addRow("%s no", c) << c << int(pf::AnswerNo);
        }
    }
    void saveQuestionGuardsNewOpenAndQuit()
    {
        QFETCH(QString, command);
        QFETCH(int, reply);
        const QString other = path("other.prj"), saved = path(QString(QTest::currentDataTag()) + ".prj");
        QVERIFY(writeProjectFile(other, FmtInside));
        newProject(FmtDouble + FmtCdRom);
        const int kept = addText(FmtCdRom, "keep me");
        project().setModified(true);

        fake->messages.answers = {reply};
        fake->files.saveAnswers = {saved};  // the project is untitled: Yes asks for a name
        fake->files.openAnswers = {other};
        answer = {NewProjectDialog::Create, FmtSimple, {}};
        if (command == "new") w->newProjectCommand();
        else if (command == "open") w->openCommand(false);
        else QCOMPARE(w->shutDown(), reply != pf::AnswerCancel);

        // The question comes first, with three ways out.
        QCOMPARE(fake->messages.calls.size(), 1);
        QCOMPARE(fake->messages.calls[0].text, jk::texts().msg(jk::Msg::SaveChanges));
        QCOMPARE(fake->messages.calls[0].buttons, pf::Buttons::YesNoCancel);
        QCOMPARE(QFile::exists(saved), reply == pf::AnswerYes);
        if (reply == pf::AnswerYes) QVERIFY(readFile(saved).contains("keep me"));
        if (reply == pf::AnswerCancel) {
            // Nothing changed and nothing else came up.
            QCOMPARE(sheetCodes(), (QList<int>{FmtDouble, FmtCdRom}));
            QCOMPARE(project().freeText().at(kept).text, QString("keep me"));
            QVERIFY(project().isModified());
            QCOMPARE(dialogCalls, 1);
            QVERIFY(fake->files.openCalls.isEmpty());
            QVERIFY(w->isVisible());
        } else if (command == "new") {
            QCOMPARE(sheetCodes(), QList<int>{FmtSimple});
            QCOMPARE(project().freeText().count(), 0);
        } else if (command == "open") {
            QCOMPARE(sheetCodes(), QList<int>{FmtInside});
            QCOMPARE(project().fileName(), other);
        } else {
            QCOMPARE(fake->help.quitCalls, 1);
        }
    }

    void saveAndReopenGivesTheSameProject_data()
    {
        QTest::addColumn<int>("sheets");
        QTest::addColumn<QList<int>>("codes");
        QTest::newRow("booklet, inlay, disc") << FmtDouble + FmtInside + FmtCdRom << QList<int>{FmtDouble, FmtCdRom, FmtInside};
        QTest::newRow("cover, inlay, disc") << FmtSimple + FmtInside + FmtCdRom << QList<int>{FmtSimple, FmtCdRom, FmtInside};
        QTest::newRow("jacket and disc") << FmtJacket + FmtCdRom << QList<int>{FmtJacket, FmtCdRom};
    }
    void saveAndReopenGivesTheSameProject()
    {
        QFETCH(int, sheets);
        QFETCH(QList<int>, codes);
        const QString file = path(QString("trip%1.prj").arg(sheets));
        newProject(sheets);
        QCOMPARE(sheetCodes(), codes);
        QCOMPARE(w->windowTitle(), QString("Jewelcase Studio    Untitled.prj"));
        QVERIFY(w->toolBar()->isVisible() && !project().isModified());
        // Once a jacket and a disc label are there, no other sheet fits.
        QCOMPARE(gui->enabled("AddForm"), sheets != FmtJacket + FmtCdRom);
        // Without a paper jacket the project starts with the spines hidden.
        if (SheetWindow* inlay = w->sheetOf(FmtInside)) QVERIFY(project().spinesHidden() && !inlay->spinesShown());

        const int first = codes.first();
        project().setSpineText("Road trip");
        const int a = addText(first, "Side A");
        project().remove({jk::ObjKind::Text, addText(first, "gone")});  // the slot stays used
        const int c = addText(FmtCdRom, "Disc");
        project().setModified(false);

        // A new background is a change like any other.
        gui->dialogs.pictures = {PictureChoice{{}, 0x00FF00}};
        w->sheetOf(first)->changeBackground();
        QCOMPARE(gui->dialogs.pictureRequests, QList<PicturePurpose>{PicturePurpose::Background});
        QCOMPARE(project().background(first).text, QString("~65280"));
        QVERIFY(project().isModified());

        // Untitled in any letter case asks for a name; a titled project saves without asking.
        project().setFileName(path("UNTITLED.PRJ"));
        fake->files.saveAnswers = {file};
        QVERIFY(w->saveProject());
        QCOMPARE(project().fileName(), file);
        QCOMPARE(w->windowTitle(), "Jewelcase Studio    " + file);
        QVERIFY(!project().isModified() && gui->enabled("saveas"));
        QVERIFY(w->saveProject());
        QCOMPARE(fake->files.saveCalls.size(), 1);
        const QByteArray saved = readFile(file);

        // A cancelled file dialog keeps the open project and its print weights.
        newProject(FmtCdRom);
        const int weights = project().printWeights();
        fake->files.openAnswers = {QString()};
        w->openCommand(true);
        QCOMPARE(sheetCodes(), QList<int>{FmtCdRom});
        QCOMPARE(project().printWeights(), weights);

        fake->files.openAnswers = {file};
        w->openCommand(true);
        QCOMPARE(sheetCodes(), codes);
        QCOMPARE(project().sheetComposition(), sheets);
        QCOMPARE(project().spineText(), QString("Road trip"));
        QCOMPARE(project().background(first).text, QString("~65280"));
        // Block lines come back each ended by CR LF; the deleted block is
        // not stored, so the slots close up.
        QCOMPARE(project().freeText().at(a).text, QString("Side A\r\n"));
        QCOMPARE(project().freeText().count(), 2);
        QCOMPARE(project().freeText().at(c - 1).sheet, jk::i16(FmtCdRom));
        QVERIFY(gui->enabled("Exportshhet") && !project().isModified());
        // Saving again gives the same bytes: nothing grows from one save to the next.
        QVERIFY(w->saveProject());
        QCOMPARE(readFile(file), saved);

        // The new-project dialog's second tab opens the chosen file at once.
        newProject(FmtCdRom);
        answer = {NewProjectDialog::OpenExisting, 0, file};
        w->newProjectCommand();
        QCOMPARE(sheetCodes(), codes);
        QCOMPARE(project().freeText().at(a).text, QString("Side A\r\n"));
    }

    void failedSaveKeepsTheChangesAndTheOldFile()
    {
        // A name so long that no temporary file fits beside it: the save
        // fails even as root, over a file that exists.
        const QString old = path(QString(250, 'k') + ".prj");
        QVERIFY(fixture::writeFile(old, "the old project"));
        newProject(FmtSimple);
        addText(FmtSimple, "unsaved work");
        project().setModified(true);
        project().setFileName(old);
        QVERIFY(!w->saveProject());
        QCOMPARE(fake->messages.calls.size(), 1);
        QCOMPARE(fake->messages.calls[0].title, jk::texts().msg(jk::Msg::ProgramTitle));
        QCOMPARE(readFile(old), QByteArray("the old project"));
        QVERIFY(project().isModified());

        // Save as another name works.
        fake->files.saveAnswers = {path("keep.prj")};
        QVERIFY(w->saveAs());
        QVERIFY(readFile(path("keep.prj")).contains("unsaved work"));
        QVERIFY(!project().isModified());
    }

    void headlessExportWritesEverySheet()
    {
        QProcess p;
        const auto exportTo = [&](const QString& out, const QString& project) {
            p.start(QCoreApplication::applicationDirPath() + "/jewlkit", {"--export", path(out), path(project)});
            return p.waitForFinished(60000) ? p.exitCode() : -1;
        };
        QVERIFY(writeProjectFile(path("export.prj"), FmtDouble + FmtCdRom + FmtInside));
        QCOMPARE(exportTo("png", "export.prj"), 0);
        for (int code : {FmtDouble, FmtInside, FmtCdRom}) {
            // 300 dpi of the canvas, to the pixel.
            const QSize s = QImageReader(path("png/%1.png").arg(code)).size();
            const QSizeF twips = jk::sheet::canvasSizeTwips(code);
            QVERIFY2(qAbs(s.width() - twips.width() * 300 / 1440) <= 1, qPrintable(QString::number(code)));
            QVERIFY(qAbs(s.height() - twips.height() * 300 / 1440) <= 1);
        }
        QVERIFY(QFile::exists(path("png/2-text.png")) && !QFile::exists(path("png/1.png")));

        // A damaged file: the message on standard error, exit status 1, and
        // the sheets that could be read are still written.
        QByteArray bytes = readFile(path("export.prj"));
        bytes.truncate(bytes.indexOf("Text on 2") + 5);
        QVERIFY(fixture::writeFile(path("bad.prj"), bytes));
        QCOMPARE(exportTo("png-bad", "bad.prj"), 1);
        QVERIFY(!p.readAllStandardError().isEmpty());
        QVERIFY(QFile::exists(path("png-bad/8.png")));
        // A missing file: exit status 1 and nothing written.
        QCOMPARE(exportTo("none", "missing.prj"), 1);
        QVERIFY(!QFile::exists(path("none")));
    }
};

QTEST_MAIN(TestProjectCommands)
#include "test_projectcommands.moc"
