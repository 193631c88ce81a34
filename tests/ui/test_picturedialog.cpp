#include "ui/widgets/DriveFolderFile.h"
#include "platform/FakeServices.h"
#include "ui/dialogs/PictureDialog.h"
#include "model/Global.h"
#include <QFile>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>
#include <QtTest>

using jk::G;

namespace {

QString samples()
{
    return qEnvironmentVariable("JK_TEST_DATA", QStringLiteral(JK_SOURCE_DIR "/tests/data")) +
           QStringLiteral("/pictures");
}

}  // namespace

class TestPicSelect : public QObject {
    Q_OBJECT
    FakeServices* fake = nullptr;
    PictureDialog* dlg = nullptr;
    QTemporaryDir pictures, backgrounds;

    PictureDialog* open()
    {
        delete dlg;
        dlg = new PictureDialog;
        dlg->show();
        return dlg;
    }
    template <class T = QWidget>
    T* child(const char* name)
    {
        T* w = dlg->findChild<T*>(name);
        if (!w) qFatal("no control %s", name);
        return w;
    }
    bool enabled(const char* name) { return child(name)->isEnabled(); }
    void click(const char* name) { QTest::mouseClick(child(name), Qt::LeftButton); }
    // Clicks a file of the list as the user would, and waits for its preview.
    void clickFile(const QString& name)
    {
        auto* list = child<FileList>("File1");
        const QList<QListWidgetItem*> items = list->findItems(name, Qt::MatchExactly);
        QCOMPARE(items.size(), 1);
        QSignalSpy shown(dlg, &PictureDialog::previewShown);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(items.first()).center());
        QVERIFY(shown.wait(15000));
        QCOMPARE(shown.last().at(0).toString(), pictures.filePath(name));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(pictures.isValid() && backgrounds.isValid());
        // The pattern lists these, whatever the case of their extensions...
        QVERIFY(QFile::copy(samples() + "/sample.pcx", pictures.filePath("UPPER.PCX")));
        QVERIFY(QFile::copy(samples() + "/sample.bmp", pictures.filePath("lower.bmp")));
        QVERIFY(QFile::copy(samples() + "/sample.jpg", pictures.filePath("Mixed.Jpg")));
        QVERIFY(QFile::copy(samples() + "/sample.eps", pictures.filePath("drawing.eps")));
        QFile empty(pictures.filePath("empty.gif"));
        QVERIFY(empty.open(QIODevice::WriteOnly));
        empty.close();
        // ...and leaves these out.
        QVERIFY(QFile::copy(samples() + "/sample.gif", pictures.filePath("picture.png")));
        QVERIFY(QFile::copy(samples() + "/README.md", pictures.filePath("notes.txt")));
        QVERIFY(QFile::copy(samples() + "/sample.tif", backgrounds.filePath("paper.tif")));
    }
    void init()
    {
        jk::resetGlobal();
        G().picturesFolder = pictures.path();
        G().backgroundFolder = backgrounds.path();
        G().pictureDialogPurpose = 1;
        fake = new FakeServices;
        fake->install();
    }
    void cleanup()
    {
        delete dlg;
        dlg = nullptr;
        delete fake;
        fake = nullptr;
    }

    void opensInTheFolderOfItsPurposeWithThePattern()
    {
        open();
        QCOMPARE(dlg->windowTitle(), QStringLiteral("PICTURE SELECTOR"));
        QVERIFY(!enabled("Command1"));
        QVERIFY(!enabled("Scanner"));  // no image source
        QVERIFY(enabled("Command2") && enabled("Command3"));
        QCOMPARE(child<DirList>("Dir1")->path(), pictures.path());
        QCOMPARE(child<FileList>("File1")->fileNames(),
                 QStringList({"drawing.eps", "empty.gif", "lower.bmp", "Mixed.Jpg", "UPPER.PCX"}));

        G().pictureDialogPurpose = 0;
        open();
        QCOMPARE(child<DirList>("Dir1")->path(), backgrounds.path());
        QCOMPARE(child<FileList>("File1")->fileNames(), QStringList({"paper.tif"}));
    }

    void clickingAFileChoosesAndPreviewsIt()
    {
        open();
        G().scannerSource = 1;
        for (const char* name : {"UPPER.PCX", "drawing.eps", "Mixed.Jpg"}) {
            clickFile(name);
            QCOMPARE(G().chosenPictureFile, pictures.filePath(name));
            QCOMPARE(G().scannerSource, jk::i16(0));
            QVERIFY(enabled("Command1"));
            const QImage& shown = dlg->preview()->picture();
            QVERIFY2(!shown.isNull(), qPrintable(dlg->preview()->note()));
            const QColor left = shown.pixelColor(4, shown.height() / 2);
            const QColor right = shown.pixelColor(shown.width() - 4, shown.height() / 2);
            QVERIFY2(left.red() > 190 && left.blue() < 70, qPrintable(name + left.name()));
            QVERIFY2(right.blue() > 190 && right.red() < 70, qPrintable(name + right.name()));
        }
        // A file that cannot be shown still is the choice; the preview says why.
        clickFile("empty.gif");
        QCOMPARE(G().chosenPictureFile, pictures.filePath("empty.gif"));
        QVERIFY(dlg->preview()->picture().isNull());
        QVERIFY(!dlg->preview()->note().isEmpty());

        click("Command1");
        QCOMPARE(dlg->result(), int(QDialog::Accepted));
        QCOMPARE(G().chosenPictureFile, pictures.filePath("empty.gif"));
    }

    void cancelAndEscapeLeaveNothingChosen()
    {
        open();
        clickFile("lower.bmp");
        click("Command2");
        QCOMPARE(dlg->result(), int(QDialog::Rejected));
        QCOMPARE(G().chosenPictureFile, QString());

        open();
        clickFile("lower.bmp");
        QTest::keyClick(dlg, Qt::Key_Escape);
        QVERIFY(!dlg->isVisible());
        QCOMPARE(G().chosenPictureFile, QString());
    }

    void colorGivesTildeAndWindowsRgb()
    {
        open();
        fake->colors.answers = {QColor(255, 0, 0), std::nullopt, QColor(0, 0, 255), QColor(1, 2, 3)};
        click("Command3");
        QCOMPARE(G().chosenPictureFile, QStringLiteral("~255"));
        QVERIFY(enabled("Command1"));
        QCOMPARE(dlg->preview()->color(), QColor(255, 0, 0));
        click("Command3");  // cancelled: the choice stays
        QCOMPARE(G().chosenPictureFile, QStringLiteral("~255"));
        click("Command3");
        QCOMPARE(G().chosenPictureFile, QStringLiteral("~16711680"));
        QCOMPARE(fake->colors.calls.size(), 3);
        QCOMPARE(fake->colors.calls.last().initial, QColor(255, 0, 0));  // starts from the shown colour

        // A colour chosen while a picture decodes is not covered by it.
        auto* list = child<FileList>("File1");
        QVERIFY(list->setFileName("drawing.eps"));
        QSignalSpy shown(dlg, &PictureDialog::previewShown);
        dlg->File1_Click();
        QCOMPARE(G().chosenPictureFile, pictures.filePath("drawing.eps"));
        dlg->Command3_Click();  // straight away: no event may run in between
        QCOMPARE(G().chosenPictureFile, QStringLiteral("~197121"));
        QVERIFY(QThreadPool::globalInstance()->waitForDone(15000));
        QCoreApplication::processEvents();  // the decoded picture arrives...
        QCOMPARE(shown.count(), 0);          // ...and is dropped
        QVERIFY(dlg->preview()->picture().isNull());
        QCOMPARE(dlg->preview()->color(), QColor(1, 2, 3));
    }

    void runShowsTheDialogModally()
    {
        G().chosenPictureFile = QStringLiteral("/old/choice.bmp");
        bool seen = false;
        QTimer::singleShot(0, this, [&] {
            auto* d = qobject_cast<PictureDialog*>(QApplication::activeModalWidget());
            seen = d != nullptr;
            if (d) QTest::mouseClick(d->findChild<QPushButton*>("Command2"), Qt::LeftButton);
        });
        PictureDialog::run(nullptr);
        QVERIFY(seen);
        QCOMPARE(G().chosenPictureFile, QString());
    }
};

QTEST_MAIN(TestPicSelect)
#include "test_picturedialog.moc"
