// The sheet windows inside the main window: adding and removing sheets, the
// bookkeeping of the composition values, display modes and the preview.
#include "ui/mainwindow/MainWindow.h"
#include "ui/sheet/SheetWindow.h"
#include "render/SheetRenderer.h"
#include "model/Global.h"
#include <QAction>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>
#include <QtTest>

using jk::G;
namespace sh = jk::sheet;

class TestSheetWindow : public QObject {
    Q_OBJECT
    MainWindow* w = nullptr;
    QTemporaryDir tmp;

    bool on(const char* name) const
    {
        if (QAction* a = w->action(name)) return a->isEnabled();
        return w->button(name)->isEnabled();
    }
    int sheetCount() const { return int(w->mdiArea()->subWindowList().size()); }
    // The paper jacket has no add command; the project commands create it so.
    SheetWindow* addJacket()
    {
        G().sheetComposition = jk::i16(G().sheetComposition + 16);
        G().pendingCaption = G().texts.formatNames[2];
        return w->createSheet(16);
    }
    QString redSquare()
    {
        const QString path = tmp.filePath("red.png");
        QImage img(10, 10, QImage::Format_RGB32);
        img.fill(Qt::red);
        img.save(path);
        return path;
    }
    static QColor pixel(QWidget* widget, QPoint at) { return widget->grab().toImage().pixelColor(at); }

private Q_SLOTS:
    void init()
    {
        jk::resetGlobal();
        G().createTables(jk::TableSizing::NewProject);
        G().texts.formatNames = {"Simple", "Double", "Paper jacket", "CD ROM", "Inside"};
        G().texts.spineCaptions = {"Hide Spline", "Show Spline"};
        G().texts.fitCaptions = {"Strech to fit", "Actual size"};
        sh::compositionCopy() = 0;
        w = new MainWindow;
        w->resize(1200, 900);
        w->show();
    }
    void cleanup()
    {
        delete w;
        w = nullptr;
        SheetWindow::mayClose = false;
    }

    void addingAndRemovingKeepsTheCounts()
    {
        w->addSimpleSheet();
        QCOMPARE(G().sheetComposition, 1);
        QCOMPARE(G().compositionCode, 4);
        QCOMPARE(sh::compositionCopy(), 4);
        QVERIFY(!on("AdFrmSimpl") && !on("Taddsimple") && !on("AdFrmDbl") && !on("TaddDbl"));
        QVERIFY(on("AdFrmIns") && on("AdFrmCDR") && on("Mremove") && on("removesheet"));
        QVERIFY(w->action("FMSimple")->isVisible());
        QCOMPARE(G().projectModified, true);

        w->action("AdFrmIns")->trigger();
        w->action("TAddCDR")->trigger();
        QCOMPARE(G().sheetComposition, 13);
        QCOMPARE(G().compositionCode, 14);
        QCOMPARE(sh::compositionCopy(), 14);
        QVERIFY(!on("TAddINS") && !on("AdFrmCDR"));
        w->addSimpleSheet();  // one sheet per format
        QCOMPARE(sheetCount(), 3);
        QCOMPARE(G().sheetComposition, 13);

        // The disc label is the active sheet: remove it from the menu.
        QCOMPARE(w->activeSheet()->formatCode(), 8);
        w->action("Mremove")->trigger();
        QCOMPARE(sheetCount(), 2);
        QCOMPARE(G().sheetComposition, 5);
        QCOMPARE(G().compositionCode, 12);
        QCOMPARE(sh::compositionCopy(), 12);
        QVERIFY(on("AdFrmCDR") && on("TAddCDR") && !on("AdFrmSimpl"));
        QVERIFY(!w->action("FMCDROM")->isVisible());

        // Closing the inlay clears the spine text and font; at value 1 the
        // remove button goes off, and the button's own rule opens AddForm.
        G().spineText = "GREATEST HITS";
        G().spineFont.name = "Courier New";
        w->bringSheetToFront(4);
        QCOMPARE(w->activeSheet()->formatCode(), 4);
        w->action("AddForm")->setEnabled(false);
        w->button("removesheet")->click();
        QCOMPARE(G().sheetComposition, 1);
        QVERIFY(G().spineText.isEmpty() && G().spineFont.name.isEmpty());
        QVERIFY(!on("removesheet"));
        QVERIFY(on("AddForm") && on("AdFrmIns") && !on("AdFrmDbl"));

        // Adding the inlay again does not count it twice.
        w->addInlaySheet();
        QCOMPARE(G().sheetComposition, 5);
        QCOMPARE(G().compositionCode, 12);

        // Removing every sheet offers the remove button again.
        w->removeSheet(true);
        w->removeSheet(true);
        QCOMPARE(sheetCount(), 0);
        QCOMPARE(G().sheetComposition, 0);
        QVERIFY(on("removesheet") && on("AdFrmSimpl"));
    }

    void jacketAndDiscFillTheProject()
    {
        addJacket();
        QCOMPARE(G().compositionCode, 16);
        QVERIFY(!on("PRNSELECT") && !on("MFPrnSelect") && !on("Exportshhet"));
        QVERIFY(on("SSCommand2"));
        w->addDiscSheet();  // 16 + 8 = 24
        QCOMPARE(G().sheetComposition, 24);
        QVERIFY(!on("AddSheet") && !on("AddForm"));
        QCOMPARE(G().compositionCode, 18);
    }

    void sheetWindowSetUp()
    {
        addJacket();
        w->addInlaySheet();
        w->addDiscSheet();
        for (int code : {16, 4, 8}) {
            SheetWindow* s = w->sheetOf(code);
            QVERIFY(s);
            QCOMPARE(s->objectName(), QStringLiteral("PictFold"));
            QCOMPARE(s->property("Tag").toString(), QString::number(code));
            QCOMPARE(s->windowTitle(), G().texts.formatNames[std::size_t(jk::formatNameIndex(code))]);
            QCOMPARE(s->canvas()->objectName(), QStringLiteral("CSPicture1"));
            QCOMPARE(s->canvas()->geometry(), sh::canvasRectPixels(code));
            QVERIFY(s->findChild<QWidget*>("CDPIC")->isHidden());
            QCOMPARE(s->findChild<QWidget*>("Pictext")->isHidden(), true);
            // The frame keeps Restore, Minimize and Maximize only; closing
            // it is refused.
            QMdiSubWindow* sub = s->frameWindow();
            QStringList items;
            for (QAction* a : sub->systemMenu()->actions()) items << a->text().remove(u'&');
            QCOMPARE(items, QStringList({"Restore", "Minimize", "Maximize"}));
            QVERIFY(!(sub->windowFlags() & Qt::WindowCloseButtonHint));
            QVERIFY(!sub->close());
        }
        QCOMPARE(sheetCount(), 3);
        QCOMPARE(G().pendingFormat, 15);
        QVERIFY(!QApplication::overrideCursor());  // the hourglass is gone
        SheetWindow* inlay = w->sheetOf(4);
        QCOMPARE(inlay->findChild<QWidget*>("Folder1")->geometry(), QRect(0, 0, 21, 453));
        QCOMPARE(inlay->findChild<QWidget*>("Folder2")->geometry(), QRect(545, 0, 21, 453));
        QVERIFY(inlay->spinesShown());

        // The main window closes its sheets by allowing it first.
        G().projectModified = false;
        SheetWindow::mayClose = true;
        QVERIFY(w->sheetOf(8)->frameWindow()->close());
        QCOMPARE(G().projectModified, true);
    }

    void activationAndTextPage()
    {
        w->addBookletSheet();
        w->addInlaySheet();
        QVERIFY(on("SSCommand15") && on("Txtfold") && !on("SSCommand2"));
        w->bringSheetToFront(2);
        QVERIFY(on("SSCommand2") && !on("Txtfold") && !on("SSCommand15") && on("SSCommand14"));

        SheetWindow* dbl = w->sheetOf(2);
        w->button("SSCommand2")->click();
        QCOMPARE(G().pageRequest, 2);
        QVERIFY(w->button("SSCommand2")->isChecked());
        QVERIFY(dbl->textPageShown());
        QVERIFY(!on("Backpic") && !on("InsertPic") && !on("MneuField") && !on("FDN"));
        QCOMPARE(G().blockSelector, 0);
        dbl->updateToolButtons();
        QVERIFY(!on("SSCommand14"));
        w->button("SSCommand2")->click();
        QCOMPARE(G().pageRequest, 1);
        QVERIFY(!dbl->textPageShown());
        QVERIFY(on("Backpic") && on("SSCommand14"));
        QCOMPARE(G().blockSelector, 1);
    }

    void pageTogglingRestoresOnlyThisSheetsPictures()
    {
        const QString file = redSquare();
        auto place = [&](int sheet, int left) {
            jk::PictureRecord r;
            r.sheet = jk::i16(sheet);
            r.file = file;
            r.left = jk::i16(left);
            r.top = 1500;
            r.width = r.height = 1500;
            return G().pictures.append(r);
        };
        const int a = place(2, 1500), b = place(4, 3000), c = place(2, 4500);
        w->addInlaySheet();
        w->addBookletSheet();
        SheetWindow* dbl = w->sheetOf(2);
        SheetWindow* inlay = w->sheetOf(4);
        const QPoint inA(150, 150);  // 2250 twips: inside picture a
        QCOMPARE(pixel(dbl->canvas(), inA), QColor(Qt::red));

        w->button("SSCommand2")->click();
        QVERIFY(!dbl->pictureVisible(a) && !dbl->pictureVisible(c));
        QVERIFY(inlay->pictureVisible(b));
        QCOMPARE(pixel(dbl->canvas(), inA), QColor(Qt::white));
        w->button("SSCommand2")->click();
        QVERIFY(dbl->pictureVisible(a) && dbl->pictureVisible(c) && inlay->pictureVisible(b));
        QCOMPARE(pixel(dbl->canvas(), inA), QColor(Qt::red));
        // Records of the inlay never show on the booklet.
        QCOMPARE(pixel(dbl->canvas(), QPoint(250, 150)), QColor(Qt::white));

        // Actual size: 10 pixels become 150 twips, stored in the record.
        G().selectedIndex = jk::i16(a);
        G().selectedKind = 1;
        w->action("PicView")->setText(G().texts.fitCaptions[0]);
        w->action("PicView")->trigger();
        QCOMPARE(w->action("PicView")->text(), G().texts.fitCaptions[1]);
        QCOMPARE(G().pictures.at(a).displayMode, 2);
        QCOMPARE(G().pictures.at(a).width, 150);
        QCOMPARE(pixel(dbl->canvas(), inA), QColor(Qt::white));
        w->action("PicView")->trigger();
        QCOMPARE(G().pictures.at(a).displayMode, 1);
    }

    void spinesStayHiddenForANewInlay()
    {
        G().spineFont.backColor = 0xff0000;  // blue panels, easy to see
        w->addInlaySheet();
        SheetWindow* inlay = w->sheetOf(4);
        const QPoint onLeftSpine(10, 200);
        QCOMPARE(pixel(inlay->canvas(), onLeftSpine), QColor(Qt::blue));
        w->action("FMSP")->trigger();
        QCOMPARE(G().spinesHidden, true);
        QVERIFY(!inlay->spinesShown());
        QCOMPARE(w->action("FMSP")->text(), QStringLiteral("Show Spline"));
        QCOMPARE(pixel(inlay->canvas(), onLeftSpine), QColor(Qt::white));

        w->removeSheet(true);
        w->addInlaySheet();
        inlay = w->sheetOf(4);
        QVERIFY(!inlay->spinesShown());
        QVERIFY(inlay->findChild<QWidget*>("Folder1")->isHidden());
        QCOMPARE(pixel(inlay->canvas(), onLeftSpine), QColor(Qt::white));
        w->action("FMSP")->trigger();
        QVERIFY(inlay->spinesShown());
        QCOMPARE(pixel(inlay->canvas(), onLeftSpine), QColor(Qt::blue));
    }

    void discPreviewPaintsTheRings()
    {
        w->addDiscSheet();
        SheetWindow* cd = w->sheetOf(8);
        G().chosenPictureFile = "~255";
        cd->changeBackground();
        QCOMPARE(G().backgrounds[8].text, QStringLiteral("~255"));
        const QImage before = cd->canvas()->grab().toImage();
        QCOMPARE(before.pixelColor(226, 226), QColor(Qt::red));

        w->action("PREVIEW")->trigger();  // checks it
        QVERIFY(cd->previewShown() && cd->canvas()->isHidden());
        QVERIFY(!on("Mfile") && !on("mtools") && !on("FMSP") && !w->toolBar()->isVisible());
        const QImage img = cd->findChild<QLabel*>("CDPIC")->pixmap().toImage();
        QCOMPARE(img.size(), before.size());
        const QPointF c(img.width() / 2.0, img.height() / 2.0);
        auto at = [&](double r) {
            const double d = r / std::sqrt(2.0);
            return img.pixelColor(QPointF(c.x() + d, c.y() + d).toPoint());
        };
        for (double r : {0.0, 30.0, 61.0}) QCOMPARE(at(r), QColor(Qt::white));
        for (double r : {64.0, 150.0, 226.0}) QCOMPARE(at(r), QColor(Qt::red));
        for (double r : {230.0, 300.0}) QCOMPARE(at(r), QColor(Qt::white));
        QCOMPARE(img.pixelColor(1, 1), QColor(Qt::white));

        w->action("PREVIEW")->trigger();  // unchecks it
        QVERIFY(!cd->previewShown() && !cd->canvas()->isHidden());
        QVERIFY(on("Mfile") && on("FMSP") && w->toolBar()->isVisible());
        QCOMPARE(cd->canvas()->grab().toImage(), before);
    }
};

QTEST_MAIN(TestSheetWindow)
#include "test_sheetwindow.moc"
