// The picture dialog: the folder it starts in, the preview of a clicked file,
// a plain colour, and what choose() hands back for Select, Cancel and Escape.
#include "UiFixture.h"
#include "ui/dialogs/PictureDialog.h"
#include <QThreadPool>

class TestPictureDialog : public QObject {
    Q_OBJECT
    std::unique_ptr<fixture::Dialog<PictureDialog>> t;
    QTemporaryDir backgrounds;
    QDir pictures{backgrounds.filePath("pictures")};

    PictureDialog* d() const { return t->dialog.get(); }
    // Clicks a file of the list as the user would, and waits for its preview.
    void clickFile(const QString& name)
    {
        QSignalSpy shown(d(), &PictureDialog::previewShown);
        QVERIFY(fixture::clickFile(d()->browser()->fileList(), name));
        QVERIFY(shown.wait(15000));
        QCOMPARE(shown.last().at(0).toString(), pictures.filePath(name));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(pictures.mkpath("."));
        const QString samples = qEnvironmentVariable("JK_TEST_DATA", JK_SOURCE_DIR "/tests/data") + "/pictures/";
        // The pattern lists the first four and the empty GIF, whatever the
        // case of their extensions, and leaves the others out.
        const char* const copies[][2] = {{"pcx", "UPPER.PCX"},  {"bmp", "lower.bmp"},   {"jpg", "Mixed.Jpg"},
                                         {"eps", "drawing.eps"}, {"gif", "picture.png"}, {"tif", "../paper.tif"}};
        for (const auto& [from, to] : copies) QVERIFY(QFile::copy(samples + "sample." + from, pictures.filePath(to)));
        QVERIFY(fixture::writeFile(pictures.filePath("empty.gif"), {}));
        QVERIFY(fixture::writeFile(pictures.filePath("notes.txt"), "x"));
    }
    void init()
    {
        t = std::make_unique<fixture::Dialog<PictureDialog>>();
        jk::appSetup().settings.picturesFolder = pictures.path();
        jk::appSetup().settings.backgroundFolder = backgrounds.path();
    }
    void cleanup()
    {
        t->dialog.reset();
        QThreadPool::globalInstance()->waitForDone(15000);  // a preview may still decode
        t.reset();
    }

    void opensInTheFolderOfItsPurpose()
    {
        t->open(PicturePurpose::Picture);
        QVERIFY(!t->control("Command1")->isEnabled() && !d()->choice());
        QCOMPARE(d()->browser()->path(), pictures.path());
        QCOMPARE(d()->browser()->fileList()->fileNames(),
                 QStringList({"drawing.eps", "empty.gif", "lower.bmp", "Mixed.Jpg", "UPPER.PCX"}));
        t->open(PicturePurpose::Background);
        QCOMPARE(d()->browser()->path(), backgrounds.path());
        QCOMPARE(d()->browser()->fileList()->fileNames(), QStringList({"paper.tif"}));
    }

    void clickingAFilePreviewsAndChoosesIt()
    {
        t->open(PicturePurpose::Picture);
        for (const char* name : {"UPPER.PCX", "drawing.eps", "Mixed.Jpg"}) {
            clickFile(name);
            QCOMPARE(d()->choice()->recordText(), pictures.filePath(name));
            QVERIFY(t->control("Command1")->isEnabled());
            // Each sample is red on the left, blue on the right.
            const QImage& shown = d()->preview()->picture();
            QVERIFY2(!shown.isNull(), qPrintable(d()->preview()->note()));
            const QColor left = shown.pixelColor(4, shown.height() / 2);
            const QColor right = shown.pixelColor(shown.width() - 4, shown.height() / 2);
            QVERIFY2(left.red() > 190 && left.blue() < 70, qPrintable(name + left.name()));
            QVERIFY2(right.blue() > 190 && right.red() < 70, qPrintable(name + right.name()));
        }
        // A file that cannot be shown still is the choice; the preview says why.
        clickFile("empty.gif");
        QVERIFY(d()->preview()->picture().isNull());
        QVERIFY(!d()->preview()->note().isEmpty());
        QCOMPARE(d()->choice()->file, pictures.filePath("empty.gif"));
        QVERIFY(!d()->choice()->colour);
        t->click("Command2");  // cancelled: nothing is handed back
        QVERIFY(!d()->choice());
    }

    void chooseHandsBackTheChoiceOrNothing_data()
    {
        QTest::addColumn<QString>("closeBy");
        QTest::newRow("select") << "Command1";
        QTest::newRow("cancel") << "Command2";
        QTest::newRow("escape") << "Escape";
        QTest::newRow("window close") << "";
    }
    void chooseHandsBackTheChoiceOrNothing()
    {
        QFETCH(QString, closeBy);
        bool driven = false;
        fixture::whenModal<PictureDialog>([&](PictureDialog* d) {
            QVERIFY(fixture::clickFile(d->browser()->fileList(), "lower.bmp"));
            if (closeBy.isEmpty()) d->close();
            fixture::clickAll(d, closeBy);
            driven = true;
        });
        const std::optional<PictureChoice> c = PictureDialog::choose(nullptr, PicturePurpose::Picture);
        QVERIFY(driven);
        QCOMPARE(bool(c), closeBy == "Command1");
        if (c) QCOMPARE(c->recordText(), pictures.filePath("lower.bmp"));
    }

    void colourGivesTildeAndWindowsRgb()
    {
        t->open(PicturePurpose::Picture);
        t->fake->colors.answers = {QColor(255, 0, 0), std::nullopt, QColor(0, 0, 255), QColor(1, 2, 3)};
        t->click("Command3");
        QCOMPARE(d()->choice()->recordText(), QStringLiteral("~255"));
        QVERIFY(t->control("Command1")->isEnabled());
        QCOMPARE(d()->preview()->color(), QColor(255, 0, 0));
        t->click("Command3");  // cancelled: the choice stays
        QCOMPARE(d()->choice()->recordText(), QStringLiteral("~255"));
        t->click("Command3");
        QCOMPARE(d()->choice()->recordText(), QStringLiteral("~16711680"));
        QCOMPARE(t->fake->colors.calls.last().initial, QColor(255, 0, 0));  // starts from the shown colour

        // A colour chosen while a picture decodes is not covered by it.
        QVERIFY(d()->browser()->fileList()->setFileName("drawing.eps"));
        QSignalSpy shown(d(), &PictureDialog::previewShown);
        d()->fileClicked();
        QCOMPARE(d()->choice()->file, pictures.filePath("drawing.eps"));
        d()->chooseColour();  // straight away: no event may run in between
        QCOMPARE(d()->choice()->recordText(), QStringLiteral("~197121"));
        QVERIFY(QThreadPool::globalInstance()->waitForDone(15000));
        QCoreApplication::processEvents();  // the decoded picture arrives...
        QCOMPARE(shown.count(), 0);          // ...and is dropped
        QVERIFY(d()->preview()->picture().isNull());
        QCOMPARE(d()->preview()->color(), QColor(1, 2, 3));
    }
};

QTEST_MAIN(TestPictureDialog)
#include "test_picturedialog.moc"
