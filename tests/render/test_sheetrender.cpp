// The one drawing path: rotated spine text, the disc preview, the field
// values of one copy, and real-size geometry in a PDF.
#include "Fixture.h"
#include "model/Numbering.h"
#include "render/SheetRenderer.h"
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

using namespace jk;
namespace sh = jk::sheet;

namespace {

bool isBlue(QRgb c) { return qBlue(c) > 150 && qRed(c) < 110 && qGreen(c) < 110; }
bool isDark(QRgb c) { return qGray(c) < 128; }
bool isWhite(QRgb c) { return fixture::isWhite(QColor(c)); }

// Bounding box of the blue ink inside a region.
QRect blueIn(const QImage& img, const QRect& region)
{
    QRect box;
    for (int y = region.top(); y <= region.bottom(); ++y)
        for (int x = region.left(); x <= region.right(); ++x)
            if (isBlue(img.pixel(x, y))) box |= QRect(x, y, 1, 1);
    return box;
}

}  // namespace

class TestSheetRender : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;

private Q_SLOTS:
    void spineTextDirectionAndStart()
    {
        // Capitals first, then dots that sit on the baseline: the end with
        // the capitals shows where the text starts and which way it faces.
        Project project;
        project.setSpineFont({QString(), 16777215, 0xff0000, false, false, false, false, 12});  // blue text
        project.setSpineText(QStringLiteral("HHHHHH.........."));
        const QImage img = sh::renderImage(project, FmtInside, 288);  // 5 twips a pixel
        auto px = [](int twips) { return twips / 5; };
        // The ends of the ink along the spine: the capitals' end is wider.
        auto topFifth = [&](const QRect& r) { return blueIn(img, r.adjusted(0, 0, 0, -r.height() * 4 / 5)); };
        auto bottomFifth = [&](const QRect& r) { return blueIn(img, r.adjusted(0, r.height() * 4 / 5, 0, 0)); };

        // Left spine: reads upward from 200 twips above the panel's bottom,
        // the tops of the letters to the left.
        const QRect left = blueIn(img, QRect(0, 0, px(320), img.height()));
        QVERIFY2(left.bottom() <= px(6790 - 200) && left.bottom() > px(6790 - 200 - 60), qPrintable(QString::number(left.bottom())));
        QVERIFY(left.height() > px(1500) && left.left() >= px(5));
        QVERIFY(bottomFifth(left).left() + 8 < topFifth(left).left());

        // Right spine: reads downward from 50 twips below its top (5), the
        // tops of the letters to the right.
        const QRect right = blueIn(img, QRect(px(8180), 0, px(320), img.height()));
        QVERIFY2(right.top() >= px(55) && right.top() < px(55 + 60), qPrintable(QString::number(right.top())));
        QVERIFY(right.height() > px(1500) && right.right() <= px(8180 + 300));
        QVERIFY(topFifth(right).right() > bottomFifth(right).right() + 8);

        // No font name paints in Arial.
        SpineFont arial = project.spineFont();
        arial.name = QStringLiteral("Arial");
        project.setSpineFont(arial);
        QCOMPARE(sh::renderImage(project, FmtInside, 288), img);
    }

    void discPreviewLeavesTheRingOfTheDisc()
    {
        Project project;
        project.setBackground(FmtCdRom, QStringLiteral("~255"));
        sh::RenderOptions o = sh::defaultOptions(project, FmtCdRom);
        const QImage plain = sh::renderImage(project, FmtCdRom, 96, o);
        o.discPreview = true;
        const QImage preview = sh::renderImage(project, FmtCdRom, 96, o);
        // Screen pixels from the centre: the hole, the disc, then outside it
        // (a diagonal reaches past the disc's edge inside the canvas).
        const QPointF centre = QRectF(QPointF(0, 0), sh::canvasSizeTwips(FmtCdRom)).center() / 15;
        auto at = [&](const QImage& img, double radius) {
            const QPointF p = centre + QPointF(radius, radius) / std::sqrt(2.0);
            return img.pixel(int(p.x()), int(p.y()));
        };
        for (double r : {40.0, 100.0, 220.0, 234.0}) QVERIFY(!isWhite(at(plain, r)));
        QVERIFY(isWhite(at(preview, 40)) && isWhite(at(preview, 234)) && isWhite(at(preview, 300)));
        QVERIFY(!isWhite(at(preview, 70)) && !isWhite(at(preview, 220)));
    }

    void aCopyShowsItsFieldValues()
    {
        Project project, applied;
        for (Project* p : {&project, &applied}) {
            p->setSpineText(QStringLiteral("Disc"));
            TextStyle s;
            sh::applyDefaultFont(s);
            s.left = 1000, s.top = 1000, s.width = 3000, s.height = 400;
            p->addCharField({FmtInside, QStringLiteral("/nowhere/names.txt"), QStringLiteral("Ann"), s});
            s.top = 2000;
            p->addNumField({FmtInside, 3, 1, true, s, {}});
        }
        FieldValues v;
        v.charText.insert(1, QStringLiteral("Zacharias"));
        v.numText.insert(1, QStringLiteral("042"));
        v.spineNumber = QStringLiteral("042");
        const QImage own = sh::renderImage(project, FmtInside, 96);
        const QImage copy = sh::renderImage(project, FmtInside, 96, sh::defaultOptions(project, FmtInside), v);
        // The project still shows its own texts; the copy is the project
        // as it would be with those values.
        QCOMPARE(sh::shownText(project, {ObjKind::CharField, 1}), QStringLiteral("Ann"));
        applyFieldValues(applied, v);
        QCOMPARE(sh::renderImage(applied, FmtInside, 96), copy);
        QVERIFY(copy != own);
    }

    void pdfAtRealSize()
    {
        const QString pdftoppm = QStandardPaths::findExecutable("pdftoppm");
        if (pdftoppm.isEmpty()) QSKIP("pdftoppm (poppler-utils) is not installed");
        Project project;
        project.setSpineFont({QString(), 0xff0000, 0, false, false, false, false, 12});  // blue panel, black text
        project.setSpineText(QStringLiteral("SPINE"));
        const double dpi = 600;
        const double tol = 0.1 / 25.4 * dpi;  // 0.1 mm in pixels
        auto px = [&](double twips) { return twips / 1440.0 * dpi; };
        auto rasterise = [&](int code) {
            const QString pdf = tmp.filePath(QStringLiteral("sheet%1.pdf").arg(code));
            const QString png = tmp.filePath(QStringLiteral("sheet%1").arg(code));
            if (!sh::renderPdf(project, code, pdf)) return QImage();
            QProcess::execute(pdftoppm, {"-r", "600", "-png", "-singlefile", pdf, png});
            return QImage(png + ".png");
        };
        auto firstFrom = [](const QImage& img, QPoint start, QPoint step, auto pred) {
            for (QPoint p = start; img.rect().contains(p); p += step)
                if (pred(img.pixel(p))) return step.x() ? p.x() : p.y();
            return -1;
        };

        // The inlay: page 150 x 117.5 mm, spines and left/top border in place.
        QImage img = rasterise(FmtInside);
        QVERIFY(!img.isNull());
        QVERIFY(qAbs(img.width() - 150 / 25.4 * dpi) < 4 && qAbs(img.height() - 117.5 / 25.4 * dpi) < 4);
        const int row = int(px(3000)), col = int(px(4000));
        auto notWhite = [](QRgb c) { return !isWhite(c); };
        QVERIFY(qAbs(firstFrom(img, {0, row}, {1, 0}, isDark)) <= tol);
        QVERIFY(qAbs(firstFrom(img, {col, 0}, {0, 1}, isDark)) <= tol);
        QVERIFY(qAbs(firstFrom(img, {col, 0}, {0, 1}, isWhite) - px(15)) <= tol);  // the line's inner edge
        // The left spine ends at 320 twips, the right one starts at 8180.
        QVERIFY(qAbs(firstFrom(img, {col, row}, {-1, 0}, notWhite) + 1 - px(320)) <= tol);
        QVERIFY(qAbs(firstFrom(img, {col, row}, {1, 0}, notWhite) - px(8180)) <= tol);
        QVERIFY(isBlue(img.pixel(int(px(8340)), row)));

        // The disc label: the right and bottom border lines end at 12 cm.
        img = rasterise(FmtCdRom);
        QVERIFY(!img.isNull());
        const double inner = px(sh::cmToTwips(12) - 15);
        const int mid = int(px(3400));
        QVERIFY(qAbs(firstFrom(img, {mid, mid}, {1, 0}, isDark) - inner) <= tol);
        QVERIFY(qAbs(firstFrom(img, {mid, mid}, {0, 1}, isDark) - inner) <= tol);

        // The spine text is text in the PDF, not pixels.
        const QString pdftotext = QStandardPaths::findExecutable("pdftotext");
        if (!pdftotext.isEmpty()) {
            QProcess p;
            p.start(pdftotext, {tmp.filePath("sheet4.pdf"), "-"});
            QVERIFY(p.waitForFinished());
            QVERIFY(QString::fromUtf8(p.readAllStandardOutput()).contains("SPINE"));
        }
    }

    // Files that cannot be read are remembered too, so that repaints do not
    // try them again; a day of opening projects names very many files.
    void sizesKeptForALimitedNumberOfFiles()
    {
        sh::setImageLoader([](const QString&) { return QImage(); });
        auto name = [](int i) { return QStringLiteral("/nowhere/%1.png").arg(i); };
        for (int i = 0; i <= sh::kMaxKnownPictureFiles; ++i) sh::pictureSize(name(i));
        const int decodes = sh::pictureDecodeCount();
        sh::pictureSize(name(sh::kMaxKnownPictureFiles));  // the newest is known
        QCOMPARE(sh::pictureDecodeCount(), decodes);
        sh::pictureSize(name(0));  // the oldest was let go
        QCOMPARE(sh::pictureDecodeCount(), decodes + 1);
    }

    void releasedPicturesKeepTheirSizes()
    {
        sh::setImageLoader([](const QString&) { return QImage(4, 3, QImage::Format_RGB32); });
        const QString file = QStringLiteral("/nowhere/picture.png");
        sh::loadPicture(file);
        const int decodes = sh::pictureDecodeCount();
        sh::releaseDecodedPictures();
        QCOMPARE(sh::pictureSize(file), QSize(4, 3));
        QCOMPARE(sh::pictureDecodeCount(), decodes);
        sh::loadPicture(file);
        QCOMPARE(sh::pictureDecodeCount(), decodes + 1);
    }
};

QTEST_MAIN(TestSheetRender)
#include "test_sheetrender.moc"
