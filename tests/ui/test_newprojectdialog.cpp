// The new-project dialog: the sheets it hands back, the paper jacket's rule
// against an inside card, the pointer's help, and opening a project instead.
#include "UiFixture.h"
#include "ui/dialogs/NewProjectDialog.h"
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>

class TestNewProjectDialog : public QObject {
    Q_OBJECT
    std::unique_ptr<fixture::Dialog<NewProjectDialog>> t;
    QTemporaryDir tmp;

    NewProjectDialog* d() const { return t->dialog.get(); }
    // Near the left edge: a check box stretched by its layout takes clicks
    // only on its box and caption.
    void click(const char* name)
    {
        QTest::mouseClick(t->control(name), Qt::LeftButton, {}, QPoint(6, t->control(name)->height() / 2));
    }
    void hover(const char* name) { QTest::mouseMove(t->control(name)); }
    QString help() const { return fixture::child<QLabel>(d(), "Label1")->text(); }
    QCheckBox* inside() const { return fixture::child<QCheckBox>(d(), "Inside"); }
    bool canOpen() const { return t->control("Command2")->isEnabled(); }
    FileList* files() const { return d()->findChild<FileList*>(); }
    void showTab(int tab)
    {
        fixture::child<QTabWidget>(d(), "SSTab1")->setCurrentIndex(tab);
        QCoreApplication::processEvents();  // the list lays its items out
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDir(tmp.path()).mkpath("old"));
        for (const char* name : {"alpha.prj", "Beta.PRJ", "notes.txt", "old/gamma.prj"})
            QVERIFY(fixture::writeFile(tmp.filePath(name), {}));
    }
    void init()
    {
        t = std::make_unique<fixture::Dialog<NewProjectDialog>>();
        jk::appSetup().settings.projectFolder = tmp.path();
    }
    void cleanup() { t.reset(); }

    // Each row presses the buttons named, in order.
    void runHandsBackTheChoice_data()
    {
        QTest::addColumn<QString>("clicks");
        QTest::addColumn<int>("result");
        QTest::addColumn<int>("sheets");
        const int create = NewProjectDialog::Create;
        QTest::newRow("default") << "Command1" << create << int(jk::FmtSimple);
        QTest::newRow("booklet, inlay, disc") << "DOUBLEC Inside CDROM Command1" << create
                                              << jk::FmtDouble + jk::FmtInside + jk::FmtCdRom;
        QTest::newRow("jacket drops the inlay") << "Inside CDROM Option1 Command1" << create << jk::FmtJacket + jk::FmtCdRom;
        // Chosen and then left, the jacket has still taken the inlay away.
        QTest::newRow("inlay stays off after the jacket") << "Inside Option1 DOUBLEC Command1" << create << int(jk::FmtDouble);
        QTest::newRow("escape") << "DOUBLEC CDROM Escape" << int(NewProjectDialog::Closed) << 0;
    }
    void runHandsBackTheChoice()
    {
        QFETCH(QString, clicks);
        bool driven = false;
        fixture::whenModal<NewProjectDialog>([&](NewProjectDialog* d) {
            fixture::clickAll(d, clicks);
            driven = true;
        });
        const NewProjectChoice c = NewProjectDialog::run(nullptr);
        QVERIFY(driven);
        QTEST(int(c.result), "result");
        QTEST(c.sheets, "sheets");
        QVERIFY(c.file.isEmpty());
    }

    void pointerDrivesHelpAndPreviewAndTheJacketExcludesTheInlay()
    {
        jk::appSetup().texts.messages[std::size_t(jk::Msg::HelpPaperJacket)] = "A sleeve of paper";
        t->open();
        QCOMPARE(d()->previewShown(), 2);
        hover("Option1");
        QCOMPARE(help(), QString("A sleeve of paper"));
        QCOMPARE(d()->previewShown(), 3);
        QVERIFY(inside()->isEnabled());  // the jacket is only pointed at, not chosen
        hover("CDROM");
        QCOMPARE(d()->previewShown(), 3);  // the disc label keeps the picture
        hover("Command1");
        QVERIFY(help().isEmpty());
        QCOMPARE(d()->previewShown(), 2);  // back to the chosen kind

        click("Inside");
        click("Option1");
        QVERIFY(!inside()->isEnabled() && !inside()->isChecked());
        // Pointing at the covers does not bring the inlay back while the
        // jacket is chosen; the background shows the jacket.
        hover("DOUBLEC");
        QCOMPARE(d()->previewShown(), 2);
        QVERIFY(!inside()->isEnabled());
        QTest::mouseMove(t->control("Frame1"), QPoint(2, 2));
        QCOMPARE(d()->previewShown(), 3);
        click("DOUBLEC");
        QVERIFY(inside()->isEnabled() && !inside()->isChecked());
    }

    void openNeedsAFileClickedSinceTheLastFolderChange()
    {
        t->open();
        showTab(1);
        // Only project files, whatever the case of their extension.
        QCOMPARE(files()->fileNames(), QStringList({"alpha.prj", "Beta.PRJ"}));
        QVERIFY(!canOpen());
        QVERIFY(fixture::clickFile(files(), "Beta.PRJ"));
        QCOMPARE(fixture::child<QLineEdit>(d(), "Text1")->text(), tmp.filePath("Beta.PRJ"));
        QVERIFY(canOpen());
        // Another folder, or leaving the tab: the clicked file no longer counts.
        fixture::child<DirList>(d(), "Dir1")->setPath(tmp.filePath("old"));
        QVERIFY(!canOpen());
        QVERIFY(fixture::clickFile(files(), "gamma.prj"));
        showTab(0);
        showTab(1);
        QVERIFY(!canOpen());
        QVERIFY(fixture::clickFile(files(), "gamma.prj"));
        click("Command2");
        QVERIFY(!d()->isVisible());
        QCOMPARE(d()->outcome().result, NewProjectDialog::OpenExisting);
        QCOMPARE(d()->outcome().file, tmp.filePath("old/gamma.prj"));
        QCOMPARE(d()->outcome().sheets, 0);

        // A double click opens at once.
        t->open();
        showTab(1);
        QVERIFY(fixture::clickFile(files(), "alpha.prj", true));
        QVERIFY(!d()->isVisible());
        QCOMPARE(d()->outcome().file, tmp.filePath("alpha.prj"));
        // A project folder that is gone falls back to the home folder.
        jk::appSetup().settings.projectFolder = tmp.filePath("gone");
        t->open();
        QCOMPARE(fixture::child<DirList>(d(), "Dir1")->path(), QDir::homePath());
    }
};

QTEST_MAIN(TestNewProjectDialog)
#include "test_newprojectdialog.moc"
