// The preferences dialog (values change only through its browse panel, at
// once for this run, in the settings file on OK) and its browse lists.
#include "UiFixture.h"
#include "ui/dialogs/PreferencesDialog.h"
#include "file/Settings.h"
#include <QLineEdit>

using fixture::child;

namespace {

void touch(const QString& path) { QVERIFY(fixture::writeFile(path, "x")); }
jk::UserSettings& settings() { return jk::appSetup().settings; }

}  // namespace

class TestPreferences : public QObject {
    Q_OBJECT
    std::unique_ptr<fixture::Dialog<PreferencesDialog>> t;
    QTemporaryDir home;
    const QString ini = home.filePath("JEWLKIT.INI");

    QWidget* w(const char* name) { return t->control(name); }
    QString box(const char* name) { return child<QLineEdit>(t->dialog.get(), name)->text(); }
    void click(const char* name) { t->click(name); }
    // Picks a folder (and for the editor a file) in the browse panel for one box.
    void browse(const char* box, const QString& folder, const QString& file = {})
    {
        click(box);
        click("Bbrowse");
        child<DirList>(t->dialog.get(), "Dir1")->setPath(folder);
        if (!file.isEmpty()) QVERIFY(child<FileList>(t->dialog.get(), "File1")->setFileName(file));
        click("CsCmdbtn2");
    }
    QStringList fileLines() const { return QString::fromUtf8(fixture::readFile(ini)).split(u'\n'); }

private Q_SLOTS:
    void init()
    {
        t = std::make_unique<fixture::Dialog<PreferencesDialog>>();
        QFile::remove(ini);
        jk::appSetup().files.settingsPath = ini;
        settings() = {"/usr/bin/gimp", "/old/pics", "", "/old/projects"};
    }
    void cleanup() { t.reset(); }

    void panelFollowsTheBoxClicked()
    {
        t->open();
        QCOMPARE(box("Text1"), QString("/usr/bin/gimp"));
        QVERIFY(!w("Frame1")->isVisible() && !w("Bbrowse")->isEnabled());
        // The file list is only for the editor.
        click("Text3");
        QVERIFY(w("Bbrowse")->isEnabled() && !w("File1")->isEnabled());
        click("Text1");
        QVERIFY(w("File1")->isEnabled());
        click("Text4");
        click("Bbrowse");
        QVERIFY(w("Frame1")->isVisible() && !w("File1")->isVisible() && !w("BOK")->isVisible());
        click("Cscmdbtn1");
        QVERIFY(!w("Frame1")->isVisible() && w("BOK")->isVisible());
        QCOMPARE(settings().projectFolder, QString("/old/projects"));
    }

    void typingChangesNothing()
    {
        t->open();
        QSignalSpy written(t->dialog.get(), &PreferencesDialog::settingsWritten);
        click("Text2");
        child<QLineEdit>(t->dialog.get(), "Text2")->selectAll();
        QTest::keyClicks(w("Text2"), "/typed/folder");
        click("BOK");
        QCOMPARE(written.count(), 1);
        QCOMPARE(settings().picturesFolder, QString("/old/pics"));
        QCOMPARE(fileLines().mid(0, 5), QStringList({"[Preferences]", "/usr/bin/gimp", "/old/pics", "", "/old/projects"}));
    }

    void browsedValuesCountAtOnceAndAreStoredOnOk()
    {
        QTemporaryDir tmp;
        const QString folder = tmp.path();
        t->open();
        browse("Text2", folder);
        QCOMPARE(settings().picturesFolder, folder);
        QCOMPARE(box("Text2"), folder);
        click("BCancel");
        QVERIFY(!t->dialog->isVisible());
        QVERIFY(!QFile::exists(ini));  // nothing written, but kept for this run

        // Next time: the file keeps the old value until OK.
        jk::writeSettings(ini, {"/usr/bin/gimp", "/old/pics", "", "/old/projects"});
        t->open();
        QCOMPARE(box("Text2"), folder);
        browse("Text3", folder);
        click("BCancel");
        QCOMPARE(fileLines().at(2), QString("/old/pics"));
        t->open();
        click("BOK");
        QCOMPARE(fileLines().mid(2, 3), QStringList({folder, folder, "/old/projects"}));
    }

    void editorIsFolderSlashProgram()
    {
        QTemporaryDir tmp;
        touch(tmp.filePath("paint"));
        QFile::setPermissions(tmp.filePath("paint"), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        touch(tmp.filePath("notes.txt"));
        t->open();
        browse("Text1", tmp.path(), "paint");
        QCOMPARE(settings().picturesEditor, tmp.path() + "/paint");
        QCOMPARE(box("Text1"), settings().picturesEditor);

        // The panel opens again in the editor's folder, listing only programs,
        // with the editor selected.
        click("Text1");
        click("Bbrowse");
        auto* files = child<FileList>(t->dialog.get(), "File1");
        QVERIFY(files->isVisible());
        QCOMPARE(child<DirList>(t->dialog.get(), "Dir1")->path(), tmp.path());
        QCOMPARE(files->fileNames(), QStringList({"paint"}));
        QCOMPARE(files->fileName(), QString("paint"));
        // The root folder still gets its separator.
        child<DirList>(t->dialog.get(), "Dir1")->setPath("/");
        files->clearSelection();
        click("CsCmdbtn2");
        QCOMPARE(settings().picturesEditor, QString("//"));
    }

    void browseListsFollowAndFallBack()
    {
        QTemporaryDir tmp;
        for (const char* d : {"Beta/inner", "alpha", ".hidden"}) QVERIFY(QDir(tmp.path()).mkpath(d));
        for (const char* f : {"b.txt", "A.txt", ".secret.txt"}) touch(tmp.filePath(f));
        DriveFolderFileTrio trio;
        DirList* dirs = trio.dirList();
        // Sorted ignoring case; hidden files and folders stay out.
        trio.setPath(tmp.path());
        QCOMPARE(trio.fileList()->fileNames(), QStringList({"A.txt", "b.txt"}));
        QCOMPARE(dirs->subfolders(), QStringList({tmp.filePath("alpha"), tmp.filePath("Beta")}));
        // Double-clicking a sub-folder enters it; the file list follows.
        emit dirs->itemActivated(dirs->findItems("Beta", Qt::MatchExactly).value(0));
        QCOMPARE(trio.path(), tmp.filePath("Beta"));
        QVERIFY(trio.fileList()->fileNames().isEmpty());
        // A missing folder falls back to its nearest existing ancestor.
        dirs->setPath(tmp.filePath("alpha/gone/deeper"));
        QCOMPARE(trio.path(), tmp.filePath("alpha"));
    }
};

QTEST_MAIN(TestPreferences)
#include "test_preferences.moc"
