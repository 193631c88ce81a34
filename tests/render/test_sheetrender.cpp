// The one drawing path: rotated spine text, and real-size geometry in a PDF.
#include "render/SheetRenderer.h"
#include "model/Global.h"
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

using jk::G;
namespace sh = jk::sheet;

namespace {

bool isInk(QRgb c) { return qBlue(c) > 150 && qRed(c) < 110 && qGreen(c) < 110; }  // blue text
bool isDark(QRgb c) { return qGray(c) < 128; }
bool isWhite(QRgb c) { return qRed(c) > 200 && qGreen(c) > 200 && qBlue(c) > 200; }

// Bounding box of the ink inside a region, and of its first and last fifths
// along the reading direction.
struct Ink {
    QRect all;
    QRect nearStart, nearEnd;
};

Ink findInk(const QImage& img, const QRect& region, bool readsUpward)
{
    Ink ink;
    for (int y = region.top(); y <= region.bottom(); ++y)
        for (int x = region.left(); x <= region.right(); ++x)
            if (isInk(img.pixel(x, y))) ink.all |= QRect(x, y, 1, 1);
    const int fifth = ink.all.height() / 5;
    const QRect top(ink.all.left(), ink.all.top(), ink.all.width(), fifth);
    const QRect bottom(ink.all.left(), ink.all.bottom() - fifth + 1, ink.all.width(), fifth);
    for (int pass = 0; pass < 2; ++pass) {
        const QRect part = pass == 0 ? top : bottom;
        QRect box;
        for (int y = part.top(); y <= part.bottom(); ++y)
            for (int x = part.left(); x <= part.right(); ++x)
                if (isInk(img.pixel(x, y))) box |= QRect(x, y, 1, 1);
        ((pass == 0) == readsUpward ? ink.nearEnd : ink.nearStart) = box;
    }
    return ink;
}

}  // namespace

class TestSheetRender : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;

private Q_SLOTS:
    void init()
    {
        jk::resetGlobal();
        G().createTables(jk::TableSizing::NewProject);
        G().spineFont.foreColor = 0xff0000;  // blue
        G().spineFont.size = 12;
    }

    void spineTextDirectionAndStart()
    {
        // Capitals first, then dots that sit on the baseline: the end of the
        // text with capitals shows where it starts and which way it faces.
        G().spineText = "HHHHHH..........";
        const double dpi = 288;  // 5 twips a pixel
        const QImage img = sh::renderImage(4, dpi);
        auto px = [](double twips) { return int(twips / 5); };

        // Left spine: reads upward from 200 twips above the panel's bottom,
        // with the baseline on the right (tops of the letters to the left).
        const Ink left = findInk(img, QRect(0, 0, px(320), img.height()), true);
        QVERIFY(!left.all.isEmpty());
        QVERIFY2(left.all.bottom() <= px(6790 - 200) && left.all.bottom() > px(6790 - 200 - 60),
                 qPrintable(QString::number(left.all.bottom())));
        QVERIFY(left.all.height() > px(1500));
        QVERIFY(left.all.left() >= px(5));
        QVERIFY(left.nearStart.left() + 8 < left.nearEnd.left());

        // Right spine: reads downward from 50 twips below its top (5), the
        // baseline on the left.
        const Ink right = findInk(img, QRect(px(8180), 0, px(320), img.height()), false);
        QVERIFY(!right.all.isEmpty());
        QVERIFY2(right.all.top() >= px(55) && right.all.top() < px(55 + 60),
                 qPrintable(QString::number(right.all.top())));
        QVERIFY(right.all.height() > px(1500));
        QVERIFY(right.all.right() <= px(8180 + 300));
        QVERIFY(right.nearStart.right() > right.nearEnd.right() + 8);

        // No font name paints in Arial.
        G().spineFont.name = "Arial";
        const QImage arial = sh::renderImage(4, dpi);
        QCOMPARE(img, arial);
    }

    void pdfAtRealSize()
    {
        const QString pdftoppm = QStandardPaths::findExecutable("pdftoppm");
        if (pdftoppm.isEmpty()) QSKIP("pdftoppm (poppler-utils) is not installed");
        G().spineFont.backColor = 0xff0000;
        G().spineFont.foreColor = 0;
        G().spineText = "SPINE";
        const double dpi = 600;
        const double tol = 0.1 / 25.4 * dpi;  // 0.1 mm in pixels
        auto px = [&](double twips) { return twips / 1440.0 * dpi; };

        auto rasterise = [&](int code) {
            const QString pdf = tmp.filePath(QStringLiteral("sheet%1.pdf").arg(code));
            const QString png = tmp.filePath(QStringLiteral("sheet%1").arg(code));
            if (!sh::renderPdf(code, pdf)) return QImage();
            QProcess::execute(pdftoppm, {"-r", "600", "-png", "-singlefile", pdf, png});
            return QImage(png + ".png");
        };
        auto firstFrom = [](const QImage& img, QPoint start, QPoint step, auto pred) {
            for (QPoint p = start; img.rect().contains(p); p += step)
                if (pred(img.pixel(p))) return step.x() ? p.x() : p.y();
            return -1;
        };

        // The inlay: page 150 x 117.5 mm, spines and left/top border in place.
        QImage img = rasterise(4);
        QVERIFY(!img.isNull());
        QVERIFY(qAbs(img.width() - 150 / 25.4 * dpi) < 4 && qAbs(img.height() - 117.5 / 25.4 * dpi) < 4);
        const int row = int(px(3000)), col = int(px(4000));
        auto notWhite = [](QRgb c) { return !isWhite(c); };
        QVERIFY(qAbs(firstFrom(img, {0, row}, {1, 0}, isDark) - 0) <= tol);
        QVERIFY(qAbs(firstFrom(img, {col, 0}, {0, 1}, isDark) - 0) <= tol);
        QVERIFY(qAbs(firstFrom(img, {col, 0}, {0, 1}, isWhite) - px(15)) <= tol);  // the line's inner edge
        // The left spine ends at 320 twips, the right one starts at 8180.
        QVERIFY(qAbs(firstFrom(img, {col, row}, {-1, 0}, notWhite) + 1 - px(320)) <= tol);
        QVERIFY(qAbs(firstFrom(img, {col, row}, {1, 0}, notWhite) - px(8180)) <= tol);
        // Blue panel, black text, both inside the spine.
        QVERIFY(isInk(img.pixel(int(px(8340)), row)));

        // The disc label: the right and bottom border lines end at 12 cm.
        img = rasterise(8);
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
};

QTEST_MAIN(TestSheetRender)
#include "test_sheetrender.moc"
