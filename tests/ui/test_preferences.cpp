#include "ui/dialogs/PreferencesDialog.h"
#include "ui/widgets/DriveFolderFile.h"
#include "model/Global.h"
#include "file/Paths.h"
#include "file/Settings.h"
#include <QFile>
#include <QFrame>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using jk::G;

namespace {

void touch(const QString& path, bool executable = false)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("x");
    f.close();
    if (executable) f.setPermissions(f.permissions() | QFileDevice::ExeOwner | QFileDevice::ExeUser);
}

}  // namespace

class TestPreferences : public QObject {
    Q_OBJECT
    PreferencesDialog* dlg = nullptr;
    QString ini;

    template <class T = QWidget>
    T* child(const char* name)
    {
        T* w = dlg->findChild<T*>(name);
        if (!w) qFatal("no control %s", name);
        return w;
    }
    void open()
    {
        dlg = new PreferencesDialog;
        dlg->show();
        QVERIFY(QTest::qWaitForWindowExposed(dlg));
    }
    void click(const char* name) { QTest::mouseClick(child(name), Qt::LeftButton); }
    // Picks a folder (and for the editor a file) in the browse panel for one box.
    void browse(const char* box, const QString& folder, const QString& file = {})
    {
        click(box);
        click("Bbrowse");
        child<DirList>("Dir1")->setPath(folder);
        if (!file.isEmpty()) QVERIFY(child<FileList>("File1")->setFileName(file));
        click("CsCmdbtn2");
    }
    QStringList fileLines()
    {
        QFile f(ini);
        if (!f.open(QIODevice::ReadOnly)) return {};
        return QString::fromUtf8(f.readAll()).split(u'\n');
    }

private Q_SLOTS:
    void init()
    {
        jk::resetGlobal();
        jk::paths::ensureDir(jk::paths::configDir());
        ini = jk::paths::settingsFile();
        QFile::remove(ini);
        G().settingsPath = ini;
        G().picturesEditor = "/usr/bin/gimp";
        G().picturesFolder = "/old/pics";
        G().projectFolder = "/old/projects";
    }
    void cleanup()
    {
        delete dlg;
        dlg = nullptr;
    }

    void opensWithValuesAndHiddenPanel()
    {
        G().texts.messages[49] = "Preferences";
        G().texts.messages[54] = "Browse";
        open();
        QCOMPARE(dlg->windowTitle(), QString("Preferences"));
        QCOMPARE(child<QPushButton>("Bbrowse")->text(), QString("Browse"));
        QCOMPARE(child<QLineEdit>("Text1")->text(), QString("/usr/bin/gimp"));
        QCOMPARE(child<QLineEdit>("Text2")->text(), QString("/old/pics"));
        QCOMPARE(child<QLineEdit>("Text3")->text(), QString());
        QVERIFY(!child("Frame1")->isVisible());
        QVERIFY(!child("Bbrowse")->isEnabled());

        // File1 is only for the editor.
        click("Text3");
        QVERIFY(child("Bbrowse")->isEnabled());
        QVERIFY(!child("File1")->isEnabled());
        click("Text1");
        QVERIFY(child("File1")->isEnabled());
        click("Text4");
        QCOMPARE(dlg->browseTarget(), 4);
        QVERIFY(!child("File1")->isEnabled());
        click("Bbrowse");
        QVERIFY(child("Frame1")->isVisible());
        QVERIFY(!child("File1")->isVisible());
        for (const char* n : {"Bbrowse", "BOK", "BCancel"}) QVERIFY(!child(n)->isVisible());
        click("Cscmdbtn1");
        QVERIFY(!child("Frame1")->isVisible());
        for (const char* n : {"Bbrowse", "BOK", "BCancel"}) QVERIFY(child(n)->isVisible());
        QCOMPARE(G().projectFolder, QString("/old/projects"));
    }

    void typingChangesNothing()
    {
        open();
        QSignalSpy written(dlg, &PreferencesDialog::settingsWritten);
        click("Text2");
        child<QLineEdit>("Text2")->selectAll();
        QTest::keyClicks(child("Text2"), "/typed/folder");
        click("BOK");
        QCOMPARE(written.count(), 1);
        QCOMPARE(G().picturesFolder, QString("/old/pics"));
        const QStringList lines = fileLines();
        QVERIFY(lines.size() >= 5);
        QCOMPARE(lines.mid(0, 5), QStringList({"[Preferences]", "/usr/bin/gimp", "/old/pics", "", "/old/projects"}));
    }

    void browsedValuesAreStoredOnOkOnly()
    {
        QTemporaryDir tmp;
        const QString folder = tmp.path();
        open();
        browse("Text2", folder);
        QCOMPARE(G().picturesFolder, folder);
        QCOMPARE(child<QLineEdit>("Text2")->text(), folder);
        click("BCancel");
        QVERIFY(!dlg->isVisible());
        QVERIFY(!QFile::exists(ini));  // nothing written
        QCOMPARE(G().picturesFolder, folder);  // but kept for this run

        // Next time: the file keeps the old value until OK.
        jk::writeSettings(ini, {"/usr/bin/gimp", "/old/pics", "", "/old/projects"});
        delete dlg;
        open();
        QCOMPARE(child<QLineEdit>("Text2")->text(), folder);
        browse("Text3", folder);
        click("BCancel");
        QCOMPARE(fileLines().at(2), QString("/old/pics"));
        delete dlg;
        open();
        click("BOK");
        QCOMPARE(fileLines().mid(2, 3), QStringList({folder, folder, "/old/projects"}));
    }

    void editorIsFolderSlashExecutable()
    {
        QTemporaryDir tmp;
        touch(tmp.filePath("paint"), true);
        touch(tmp.filePath("notes.txt"));
        open();
        click("Text1");
        click("Bbrowse");
        QVERIFY(child("File1")->isVisible());
        child<DirList>("Dir1")->setPath(tmp.path());
        QCOMPARE(child<FileList>("File1")->fileNames(), QStringList({"paint"}));  // programs only
        QVERIFY(child<FileList>("File1")->setFileName("paint"));
        click("CsCmdbtn2");
        QCOMPARE(G().picturesEditor, tmp.path() + "/paint");
        QCOMPARE(child<QLineEdit>("Text1")->text(), G().picturesEditor);

        // Opening the panel again starts in the editor's folder with it selected.
        click("Text1");
        click("Bbrowse");
        QCOMPARE(child<DirList>("Dir1")->path(), tmp.path());
        QCOMPARE(child<FileList>("File1")->fileName(), QString("paint"));
        // The root folder still gets its separator.
        child<DirList>("Dir1")->setPath("/");
        child<FileList>("File1")->clearSelection();
        click("CsCmdbtn2");
        QCOMPARE(G().picturesEditor, QString("//"));
    }

    void trioListsAndFollows()
    {
        QTemporaryDir tmp;
        QDir(tmp.path()).mkpath("Beta/inner");
        QDir(tmp.path()).mkpath("alpha");
        QDir(tmp.path()).mkpath(".hidden");
        touch(tmp.filePath("b.JPG"));
        touch(tmp.filePath("A.bmp"));
        touch(tmp.filePath("c.png"));
        touch(tmp.filePath("noext"));

        DriveFolderFileTrio trio;
        auto* files = trio.fileList();
        files->setPattern("*.bmp;*.jpg");
        QSignalSpy moved(&trio, &DriveFolderFileTrio::pathChanged);
        trio.setPath(tmp.path());
        QCOMPARE(moved.count(), 1);
        QCOMPARE(files->fileNames(), QStringList({"A.bmp", "b.JPG"}));
        files->setPattern("*.*");
        QCOMPARE(files->fileNames(), QStringList({"A.bmp", "b.JPG", "c.png", "noext"}));
        QCOMPARE(trio.dirList()->subfolders(), QStringList({tmp.filePath("alpha"), tmp.filePath("Beta")}));

        // Double-clicking a sub-folder enters it; the file list follows.
        DirList* dirs = trio.dirList();
        const auto found = dirs->findItems("Beta", Qt::MatchExactly);
        QCOMPARE(found.size(), 1);
        emit dirs->itemActivated(found.first());
        QCOMPARE(trio.path(), tmp.filePath("Beta"));
        QVERIFY(files->fileNames().isEmpty());
        QCOMPARE(dirs->subfolders(), QStringList({tmp.filePath("Beta/inner")}));
        QVERIFY(!trio.driveList()->drive().isEmpty());
        QVERIFY(trio.driveList()->drives().contains("/"));

        // A missing folder falls back to its nearest existing ancestor.
        dirs->setPath(tmp.filePath("alpha/gone/deeper"));
        QCOMPARE(dirs->path(), tmp.filePath("alpha"));

        // A drive change opens the drive's root.
        QSignalSpy drive(&trio, &DriveFolderFileTrio::driveChanged);
        trio.driveList()->setDrive(tmp.filePath("Beta"));
        QCOMPARE(drive.count(), 1);
        QCOMPARE(trio.path(), tmp.filePath("Beta"));
        trio.setPath("/");
        QCOMPARE(trio.driveList()->drive(), QString("/"));
        QCOMPARE(drive.count(), 1);  // following a folder is not a drive change

        trio.setPath(tmp.path());
        files->setPattern("*.bmp");
        QVERIFY(files->setFileName("a.bmp"));
        QCOMPARE(trio.filePath(), tmp.filePath("A.bmp"));
    }

    void unreadableFolderListsNothing()
    {
        QTemporaryDir tmp;
        const QString locked = tmp.filePath("locked");
        QDir(tmp.path()).mkpath("locked/sub");
        touch(locked + "/f.bmp");
        QFile::setPermissions(locked, QFileDevice::WriteOwner);
        DriveFolderFileTrio trio;
        trio.fileList()->setPattern("*.bmp");
        trio.setPath(locked);
        QCOMPARE(trio.path(), locked);
        if (!QFileInfo(locked).isReadable()) {  // root reads anything
            QVERIFY(trio.dirList()->subfolders().isEmpty());
            QVERIFY(trio.fileList()->fileNames().isEmpty());
        }
        QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }
};

QTEST_MAIN(TestPreferences)
#include "test_preferences.moc"
