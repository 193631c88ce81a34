// The sheet windows inside the main window: adding and removing sheets with
// their print weights, the window each sheet is, the text page, the spines
// and the disc preview.
#include "UiFixture.h"
#include <QLabel>
#include <QToolBar>
#include <QtTest>

using namespace fixture;
namespace sh = jk::sheet;

class TestSheetWindow : public QObject {
    Q_OBJECT
    std::unique_ptr<SheetGui> gui;
    MainWindow* w = nullptr;
    QTemporaryDir tmp;

    jk::Project& doc() { return gui->project(); }
    int sheetCount() const { return int(w->mdiArea()->subWindowList().size()); }
    // The paper jacket has no add command; the project commands create it so.
    SheetWindow* addJacket()
    {
        doc().setSheetComposition(doc().sheetComposition() + jk::FmtJacket);
        return w->createSheet(jk::FmtJacket);
    }
    static QColor pixel(QWidget* widget, QPoint at) { return widget->grab().toImage().pixelColor(at); }

private Q_SLOTS:
    void init()
    {
        gui = std::make_unique<SheetGui>();
        w = gui->w.get();
    }
    void cleanup()
    {
        gui.reset();
        SheetWindow::mayClose = false;
    }

    void printWeightsFollowTheSheets()
    {
        // Weights: booklet 1, disc 2, simple 4, inlay 8; the jacket alone 16.
        w->addSimpleSheet();
        QCOMPARE(doc().sheetComposition(), 1);
        QCOMPARE(doc().printWeights(), 4);
        QVERIFY(doc().isModified() && !gui->enabled("AdFrmSimpl"));
        w->action("AdFrmIns")->trigger();
        w->action("TAddCDR")->trigger();
        QCOMPARE(doc().sheetComposition(), 13);
        QCOMPARE(doc().printWeights(), 14);
        w->addSimpleSheet();  // one sheet per format
        QCOMPARE(sheetCount(), 3);
        QCOMPARE(doc().printWeights(), 14);

        // The disc label is the active sheet: remove it from the menu.
        QCOMPARE(w->activeSheet()->formatCode(), 8);
        w->action("Mremove")->trigger();
        QCOMPARE(sheetCount(), 2);
        QCOMPARE(doc().sheetComposition(), 5);
        QCOMPARE(doc().printWeights(), 12);
        QVERIFY(gui->enabled("AdFrmCDR") && !w->action("FMCDROM")->isVisible());

        // Closing the inlay clears the spine text and font; adding it again
        // does not count it twice.
        doc().setSpineText("GREATEST HITS");
        jk::SpineFont font;
        font.name = "Courier New";
        doc().setSpineFont(font);
        w->bringSheetToFront(4);
        w->button("removesheet")->click();
        QCOMPARE(doc().printWeights(), 4);
        QVERIFY(doc().spineText().isEmpty() && doc().spineFont().name.isEmpty());
        w->addInlaySheet();
        QCOMPARE(doc().sheetComposition(), 5);
        QCOMPARE(doc().printWeights(), 12);
        w->removeSheet(true);
        w->removeSheet(true);
        QCOMPARE(sheetCount(), 0);
        QCOMPARE(doc().printWeights(), 0);
        QVERIFY(gui->enabled("AdFrmSimpl"));

        // The jacket and the disc label fill the project.
        addJacket();
        QCOMPARE(doc().printWeights(), 16);
        w->addDiscSheet();
        QCOMPARE(doc().sheetComposition(), 24);
        QCOMPARE(doc().printWeights(), 18);
        QVERIFY(!gui->enabled("AddSheet") && !gui->enabled("AddForm"));
    }

    void eachSheetIsAWindowOfItsFormat()
    {
        addJacket();
        w->addInlaySheet();
        w->addDiscSheet();
        for (int code : {16, 4, 8}) {
            SheetWindow* s = w->sheetOf(code);
            QVERIFY(s);
            QCOMPARE(s->objectName(), QStringLiteral("PictFold"));
            QCOMPARE(s->property("Tag").toString(), QString::number(code));
            QCOMPARE(s->windowTitle(), jk::texts().formatName(code));
            QCOMPARE(s->canvas()->geometry(), sh::canvasRectPixels(code));
                // Restore, Minimize and Maximize only: closing is refused.
            QMdiSubWindow* sub = s->frameWindow();
            QStringList items;
            for (QAction* a : sub->systemMenu()->actions()) items << a->text().remove(u'&');
            QCOMPARE(items, QStringList({"Restore", "Minimize", "Maximize"}));
            QVERIFY(!(sub->windowFlags() & Qt::WindowCloseButtonHint));
            QVERIFY(!sub->close());
        }
        QVERIFY(!QApplication::overrideCursor());  // the hourglass is gone
        SheetWindow* inlay = w->sheetOf(4);
        QCOMPARE(inlay->findChild<QWidget*>("Folder1")->geometry(), QRect(0, 0, 21, 453));
        QCOMPARE(inlay->findChild<QWidget*>("Folder2")->geometry(), QRect(545, 0, 21, 453));
        QVERIFY(inlay->spinesShown());

        // The main window closes its sheets by allowing it first.
        doc().setModified(false);
        SheetWindow::mayClose = true;
        QVERIFY(w->sheetOf(8)->frameWindow()->close());
        QVERIFY(doc().isModified());
    }

    void textPageHidesOnlyThisSheetsPictures()
    {
        const QString red = pictureFile(tmp.filePath("red.png"), {10, 10}, Qt::red);
        const int a = doc().addPicture(pictureAt(2, red, {1500, 1500, 1500, 1500}));
        const int b = doc().addPicture(pictureAt(4, red, {3000, 1500, 1500, 1500}));
        // The commands follow the active sheet: the spine text is the
        // inlay's, the text page the booklet's.
        w->addInlaySheet();
        QVERIFY(gui->enabled("Txtfold") && !gui->enabled("SSCommand2"));
        w->addBookletSheet();
        QVERIFY(gui->enabled("SSCommand2") && !gui->enabled("Txtfold"));
        SheetWindow* dbl = w->sheetOf(2);
        SheetWindow* inlay = w->sheetOf(4);
        const QPoint inA(150, 150);  // 2250 twips: inside picture a
        QCOMPARE(pixel(dbl->canvas(), inA), QColor(Qt::red));
        QCOMPARE(pixel(dbl->canvas(), {250, 150}), QColor(Qt::white));  // the inlay's never shows here

        w->button("SSCommand2")->click();
        QCOMPARE(w->editor().pageRequest, 2);
        QVERIFY(w->button("SSCommand2")->isChecked() && dbl->textPageShown() && w->editor().blockOnPage);
        QVERIFY(!gui->enabled("InsertPic") && !dbl->pictureVisible(a) && inlay->pictureVisible(b));
        QCOMPARE(pixel(dbl->canvas(), inA), QColor(Qt::white));
        w->button("SSCommand2")->click();
        QCOMPARE(w->editor().pageRequest, 1);
        QVERIFY(!dbl->textPageShown() && !w->editor().blockOnPage && gui->enabled("InsertPic"));
        QCOMPARE(pixel(dbl->canvas(), inA), QColor(Qt::red));

        // Actual size: 10 pixels become 150 twips, stored in the record.
        w->editor().selection.object = {jk::ObjKind::Picture, a};
        w->action("PicView")->setText(jk::texts().fitCaptions[0]);
        w->action("PicView")->trigger();
        QCOMPARE(w->action("PicView")->text(), jk::texts().fitCaptions[1]);
        QCOMPARE(doc().pictures().at(a).displayMode, 2);
        QCOMPARE(doc().pictures().at(a).width, 150);
        QCOMPARE(pixel(dbl->canvas(), inA), QColor(Qt::white));
        w->action("PicView")->trigger();
        QCOMPARE(doc().pictures().at(a).displayMode, 1);
    }

    void hiddenSpinesStayHiddenForANewInlay()
    {
        jk::SpineFont font;
        font.backColor = 0xff0000;  // blue panels, easy to see
        doc().setSpineFont(font);
        w->addInlaySheet();
        SheetWindow* inlay = w->sheetOf(4);
        const QPoint onLeftSpine(10, 200);
        QCOMPARE(pixel(inlay->canvas(), onLeftSpine), QColor(Qt::blue));
        w->action("FMSP")->trigger();
        QVERIFY(doc().spinesHidden() && !inlay->spinesShown());
        QCOMPARE(w->action("FMSP")->text(), QStringLiteral("Show Spines"));
        QCOMPARE(pixel(inlay->canvas(), onLeftSpine), QColor(Qt::white));

        w->removeSheet(true);
        w->addInlaySheet();
        inlay = w->sheetOf(4);
        QVERIFY(!inlay->spinesShown());
        QCOMPARE(pixel(inlay->canvas(), onLeftSpine), QColor(Qt::white));
        w->action("FMSP")->trigger();
        QVERIFY(inlay->spinesShown());
        QCOMPARE(pixel(inlay->canvas(), onLeftSpine), QColor(Qt::blue));
    }

    void discPreviewPaintsTheRings()
    {
        w->addDiscSheet();
        SheetWindow* cd = w->sheetOf(8);
        gui->dialogs.pictures = {PictureChoice{{}, 255}};
        doc().setModified(false);
        cd->changeBackground();
        QVERIFY(doc().isModified());
        const QImage before = cd->canvas()->grab().toImage();
        QCOMPARE(before.pixelColor(226, 226), QColor(Qt::red));

        w->action("PREVIEW")->trigger();  // checks it
        QVERIFY(cd->previewShown() && cd->canvas()->isHidden());
        QVERIFY(!gui->enabled("Mfile") && !w->toolBar()->isVisible());
        const QImage img = cd->findChild<QLabel*>("CDPIC")->pixmap().toImage();
        QCOMPARE(img.size(), before.size());
        // Along the diagonal from the centre: hole, disc, outside.
        auto at = [&](double r) {
            const double d = r / std::sqrt(2.0);
            return img.pixelColor(QPointF(img.width() / 2.0 + d, img.height() / 2.0 + d).toPoint());
        };
        for (double r : {0.0, 30.0, 61.0, 230.0, 300.0}) QCOMPARE(at(r), QColor(Qt::white));
        for (double r : {64.0, 150.0, 226.0}) QCOMPARE(at(r), QColor(Qt::red));

        w->action("PREVIEW")->trigger();  // unchecks it
        QVERIFY(!cd->previewShown() && gui->enabled("Mfile") && w->toolBar()->isVisible());
        QCOMPARE(cd->canvas()->grab().toImage(), before);
    }
};

QTEST_MAIN(TestSheetWindow)
#include "test_sheetwindow.moc"
