#include "ui/widgets/DriveFolderFile.h"
#include "platform/FakeServices.h"
#include "ui/dialogs/NewProjectDialog.h"
#include "model/Global.h"
#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

using jk::G;

class TestCreeprojet : public QObject {
    Q_OBJECT
    FakeServices* fake = nullptr;
    NewProjectDialog* dlg = nullptr;
    QTemporaryDir tmp;

    void open()
    {
        delete dlg;
        dlg = new NewProjectDialog;
        dlg->show();
        QVERIFY(QTest::qWaitForWindowExposed(dlg));
    }
    template <class T = QWidget>
    T* child(const char* name)
    {
        T* w = dlg->findChild<T*>(name);
        if (!w) qFatal("no control %s", name);
        return w;
    }
    // Near the left edge: a check box stretched by its layout takes clicks
    // only on its box and caption.
    void click(const char* name)
    {
        QWidget* w = child(name);
        QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(6, w->height() / 2));
    }
    void hover(const char* name) { QTest::mouseMove(child(name)); }
    QString help() { return child<QLabel>("Label1")->text(); }
    bool insideUsable() { return child("Inside")->isEnabled(); }
    void clickFile(const QString& name, bool twice = false)
    {
        auto* files = child<FileList>("File1");
        const QList<QListWidgetItem*> items = files->findItems(name, Qt::MatchExactly);
        QCOMPARE(items.size(), 1);
        const QPoint at = files->visualItemRect(items.first()).center();
        // A double click arrives as a click and a second, double press.
        QTest::mouseClick(files->viewport(), Qt::LeftButton, {}, at);
        if (twice) QTest::mouseDClick(files->viewport(), Qt::LeftButton, {}, at);
    }
    void existingTab()
    {
        child<QTabWidget>("SSTab1")->setCurrentIndex(1);
        // Lets the list lay its items out (a zero timer), so clicks find them.
        QCoreApplication::processEvents();
    }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char* name : {"alpha.prj", "Beta.PRJ", "notes.txt", "old/gamma.prj"}) {
            QDir(tmp.path()).mkpath("old");
            QFile f(tmp.filePath(name));
            QVERIFY(f.open(QIODevice::WriteOnly));
        }
    }
    void init()
    {
        jk::resetGlobal();
        fake = new FakeServices;
        fake->install();
        G().projectFolder = tmp.path();
    }
    void cleanup()
    {
        delete dlg;
        dlg = nullptr;
        delete fake;
        fake = nullptr;
    }

    void opensOnTheProjectFolder()
    {
        G().texts.formatNames[2] = "Sleeve";
        G().texts.messages[15] = "Start";
        G().texts.messages[85] = "Open one";
        open();
        QCOMPARE(dlg->windowTitle(), QString("Start"));
        QCOMPARE(child<QRadioButton>("Option1")->text(), QString("Sleeve"));
        QCOMPARE(child<QRadioButton>("Simple")->text(), QString("Cover simple"));  // built-in caption
        QCOMPARE(child<QTabWidget>("SSTab1")->tabText(1), QString("Open one"));
        QVERIFY(child<QRadioButton>("Simple")->isChecked());
        QCOMPARE(dlg->previewShown(), 2);
        QVERIFY(!child<QLabel>("Picture1")->pixmap().isNull());
        QVERIFY(!child("Picture2")->isVisible() && !child("Picture3")->isVisible());
        QVERIFY(!child("Command2")->isEnabled());
        // Only project files, whatever the case of their extension.
        QCOMPARE(child<FileList>("File1")->fileNames(), QStringList({"alpha.prj", "Beta.PRJ"}));
        QCOMPARE(child<DirList>("Dir1")->path(), QDir(tmp.path()).absolutePath());
    }

    void pointerDrivesHelpAndPreviewAndTheJacketExcludesTheInlay()
    {
        G().texts.messages[13] = "A sleeve of paper";
        open();
        hover("Option1");
        QCOMPARE(help(), QString("A sleeve of paper"));
        QCOMPARE(dlg->previewShown(), 3);
        QVERIFY(insideUsable());  // the jacket is only pointed at, not chosen
        hover("CDROM");
        QVERIFY(!help().isEmpty());
        QCOMPARE(dlg->previewShown(), 3);  // the disc label keeps the picture
        hover("Command1");
        QVERIFY(help().isEmpty());
        QCOMPARE(dlg->previewShown(), 2);  // back to the chosen kind

        click("Inside");
        QVERIFY(child<QCheckBox>("Inside")->isChecked());
        click("Option1");
        hover("Option1");
        QVERIFY(!insideUsable());
        QVERIFY(!child<QCheckBox>("Inside")->isChecked());
        // Pointing at the covers does not bring the inlay back while the
        // jacket is chosen; the background shows the jacket.
        hover("DOUBLEC");
        QCOMPARE(dlg->previewShown(), 2);
        QVERIFY(!insideUsable());
        QTest::mouseMove(child("Frame1"), QPoint(2, 2));
        QVERIFY(help().isEmpty());
        QCOMPARE(dlg->previewShown(), 3);
        click("DOUBLEC");
        QVERIFY(insideUsable());

        // Chosen with the keys alone, the jacket still drops the inlay.
        click("Inside");
        child("Option1")->setFocus();
        child<QRadioButton>("Option1")->click();
        QVERIFY(!child<QCheckBox>("Inside")->isChecked());
        click("Command1");
        QCOMPARE(G().jacketChoice, true);
        QCOMPARE(G().insideChoice, false);
        QCOMPARE(G().doubleChoice, false);
    }

    void createStoresTheChoices()
    {
        G().openExisting = true;
        G().projectFilePath = G().projectFileName = "/somewhere/old.prj";
        bool driven = false;
        QTimer::singleShot(0, this, [&] {
            auto* d = qobject_cast<NewProjectDialog*>(QApplication::activeModalWidget());
            if (!d) return;
            d->findChild<QRadioButton*>("DOUBLEC")->click();
            d->findChild<QCheckBox*>("Inside")->click();
            d->findChild<QCheckBox*>("CDROM")->click();
            d->findChild<QPushButton*>("Command1")->click();
            driven = true;
        });
        QCOMPARE(NewProjectDialog::run(nullptr), NewProjectDialog::Create);
        QVERIFY(driven);
        QCOMPARE(G().openExisting, false);
        QVERIFY(G().projectFilePath.isEmpty() && G().projectFileName.isEmpty());
        QCOMPARE(G().simpleChoice, false);
        QCOMPARE(G().doubleChoice, true);
        QCOMPARE(G().jacketChoice, false);
        QCOMPARE(G().insideChoice, true);
        QCOMPARE(G().cdChoice, true);
    }

    void openNeedsAFileClickedSinceTheLastFolderChange()
    {
        open();
        existingTab();
        QVERIFY(!child("Command2")->isEnabled());
        clickFile("Beta.PRJ");
        QCOMPARE(child<QLineEdit>("Text1")->text(), tmp.filePath("Beta.PRJ"));
        QVERIFY(child("Command2")->isEnabled());
        // Another folder: the clicked file no longer counts.
        child<DirList>("Dir1")->setPath(tmp.filePath("old"));
        QVERIFY(!child("Command2")->isEnabled());
        QCOMPARE(child<FileList>("File1")->fileNames(), QStringList({"gamma.prj"}));
        clickFile("gamma.prj");
        QVERIFY(child("Command2")->isEnabled());
        // Leaving the tab forgets it as well.
        child<QTabWidget>("SSTab1")->setCurrentIndex(0);
        existingTab();
        QVERIFY(!child("Command2")->isEnabled());
        clickFile("gamma.prj");
        click("Command2");
        QCOMPARE(dlg->choice(), NewProjectDialog::OpenExisting);
        QCOMPARE(G().openExisting, true);
        QCOMPARE(G().projectFilePath, tmp.filePath("old/gamma.prj"));
        QCOMPARE(G().projectFileName, G().projectFilePath);

        // A double click opens at once.
        open();
        existingTab();
        clickFile("alpha.prj", true);
        QVERIFY(!dlg->isVisible());
        QCOMPARE(G().projectFilePath, tmp.filePath("alpha.prj"));
    }

    void closingLeavesTheChoicesAlone()
    {
        G().openExisting = true;
        G().simpleChoice = true;
        G().cdChoice = true;
        G().projectFilePath = "/kept.prj";
        open();
        child<QRadioButton>("Option1")->click();
        QTest::keyClick(dlg, Qt::Key_Escape);
        QVERIFY(!dlg->isVisible());
        QCOMPARE(dlg->choice(), NewProjectDialog::Closed);
        QCOMPARE(G().openExisting, true);
        QCOMPARE(G().simpleChoice, true);
        QCOMPARE(G().jacketChoice, false);
        QCOMPARE(G().cdChoice, true);
        QCOMPARE(G().projectFilePath, QString("/kept.prj"));
        // A project folder that is gone falls back to the home folder.
        G().projectFolder = tmp.filePath("gone");
        open();
        QCOMPARE(child<DirList>("Dir1")->path(), QDir::homePath());
    }

    void previewsAreDrawnAndDiffer()
    {
        const QImage cover = NewProjectDialog::coverPreview(QSize(300, 200)).toImage();
        const QImage jacket = NewProjectDialog::jacketPreview(QSize(300, 200)).toImage();
        QVERIFY(cover != jacket);
        for (const QImage& img : {cover, jacket}) {
            int painted = 0;
            for (int y = 0; y < img.height(); y += 4)
                for (int x = 0; x < img.width(); x += 4) painted += qAlpha(img.pixel(x, y)) > 0;
            // Shapes cover a good part of the picture, but not all of it.
            QVERIFY2(painted > 3750 / 4 && painted < 3750, qPrintable(QString::number(painted)));
        }
    }
};

QTEST_MAIN(TestCreeprojet)
#include "test_newprojectdialog.moc"
