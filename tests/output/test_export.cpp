// Export into files that independent readers open (ImageMagick, poppler,
// Ghostscript, Qt's SVG renderer): sizes at the resolution or to 0.1 mm,
// the words of a text block, a booklet's two files, the disc label as
// edited, and failures that leave no partial file and no temporary one.
#include "Fixture.h"
#include "PrintProjects.h"
#include "output/Export.h"
#include "model/Project.h"
#include <QProcess>
#include <QtMath>
#include <QDirIterator>
#include <QImageReader>
#include <QStandardPaths>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QtTest>

using namespace jk;
using namespace jk::exporting;
using namespace printfixture;

namespace {

const QString kWords = QStringLiteral("Midnight Harbour Sessions");
const QRect kTextTwips(300, 300, 4000, 400);
const QRect kPictureTwips(300, 2000, 2400, 1800);

// Files left in the temporary folder (the test's own), and writes beside their targets.
int leftovers(const QString& dir)
{
    int n = QDir(QDir::tempPath()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size();
    for (const QString& f : QDir(dir).entryList(QDir::Files | QDir::Hidden))
        n += f.contains(u".eps.") || f.contains(u".png.") || f.contains(u".bmp.") ? 1 : 0;
    return n;
}

}  // namespace

class TestExport : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    Project project;

    Result write(int code, const QString& name, int dpi = kDefaultDpi, const Project* from = nullptr)
    {
        const Project& p = from ? *from : project;
        const QString path = exportName(tmp.filePath(name));
        return writePages(p, sheetPages(p, code, path), *formatOfName(path), dpi, texts());
    }
    // "w h" of what ImageMagick reads, with its format and compression.
    static QString identify(const QString& file) { return tool("identify", {"-format", "%m %C %w %h %Q", file}); }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char* t : {"identify", "pdfinfo", "pdftotext", "gs"})
            if (QStandardPaths::findExecutable(t).isEmpty()) QSKIP("imagemagick, poppler-utils and ghostscript are needed");
        fixture::resetApp();
        QVERIFY(QDir(tmp.path()).mkdir("temp"));
        qputenv("TMPDIR", tmp.filePath("temp").toLocal8Bit());
        ProjectData d = emptyProject(FmtSimple | FmtCdRom);
        d.freeText.append({FmtSimple, kWords, textStyle(kTextTwips.x(), kTextTwips.y(), kTextTwips.width(), kTextTwips.height())});
        d.pictures.append({FmtSimple, writePicture(QDir(tmp.path()), 1), 2000, 300, 2400, 1800, 1});
        // Disc label: a blue background and a block in the corner, off the disc.
        d.backgrounds[FmtCdRom].text = "~16711680";
        d.freeText.append({FmtCdRom, "Corner", textStyle(60, 60, 1200, 300)});
        project.load(std::move(d));
    }

    void everyFormatOpensInAnIndependentReader_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("read");  // what identify says, or the kind of vector file
        for (const char* row : {"cover.bmp|BMP3 None", "cover.JPG|JPEG JPEG", "cover.tif|TIFF LZW", "cover.png|PNG Zip",
                                "cover.pdf|pdf", "cover.eps|eps", "cover.svg|svg"}) {
            const QStringList parts = QString::fromLatin1(row).split(u'|');
            QTest::newRow(row) << parts[0] << parts[1];
        }
    }
    void everyFormatOpensInAnIndependentReader()
    {
        QFETCH(QString, name);
        QFETCH(QString, read);
        const int dpi = 150;
        const Result r = write(FmtSimple, name, dpi);
        QVERIFY2(r.ok, qPrintable(r.error));
        const QString file = tmp.filePath(name);
        QCOMPARE(r.written, QStringList{file});
        QCOMPARE(leftovers(tmp.path()), 0);
        const QSizeF mm(123, 119.5);
        QSizeF sizeMm;
        QString text;
        if (read.contains(u' ')) {
            // Raster: the sheet at 150 dpi to the pixel, in full colour.
            const QStringList got = identify(file).split(u' ');
            QCOMPARE(got.mid(0, 2).join(u' '), read);
            QVERIFY(qAbs(got[2].toInt() - mm.width() / 25.4 * dpi) < 1 && qAbs(got[3].toInt() - mm.height() / 25.4 * dpi) < 1);
            if (name.endsWith("JPG")) QCOMPARE(got[4], QString("95"));
            if (name.endsWith("bmp")) QCOMPARE(int(fixture::readFile(file).at(28)), 24);
            const QImage img(file);
            const QColor c = img.pixelColor(img.width() * 0.2, img.height() * 0.45);  // in the picture
            QVERIFY2(c.saturation() > 40, qPrintable(c.name()));
            return;
        }
        if (read == "pdf") {
            const QStringList pts = tool("pdfinfo", {file}).section("Page size:", 1).simplified().split(u' ');
            sizeMm = QSizeF(pts.value(0).toDouble(), pts.value(2).toDouble()) * 25.4 / 72;
            text = pageText(file, 1);
        } else if (read == "eps") {
            const QString box = QString::fromLatin1(fixture::readFile(file)).section("%%HiResBoundingBox:", 1).section('\n', 0, 0);
            const QStringList v = box.simplified().split(' ');
            sizeMm = QSizeF(v.value(2).toDouble() - v.value(0).toDouble(), v.value(3).toDouble() - v.value(1).toDouble()) * 25.4 / 72;
            // Ghostscript draws it at its box; the text is there as outlines.
            const QString png = tmp.filePath("eps.png");
            tool("gs", {"-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-dEPSCrop", "-r96", "-sDEVICE=png16m", "-o", png, file});
            const QImage shown(png);
            QVERIFY(fixture::inkIn(shown, kTextTwips) > 50 && fixture::inkIn(shown, QRect(5000, 300, 1500, 1500)) == 0);
            text = kWords;
        } else {
            QSvgRenderer svg(file);
            QVERIFY(svg.isValid());
            const QString bytes = QString::fromUtf8(fixture::readFile(file));
            sizeMm = QSizeF(bytes.section("width=\"", 1).section("mm", 0, 0).toDouble(),
                            bytes.section("height=\"", 1).section("mm", 0, 0).toDouble());
            text = bytes;
        }
        QVERIFY2(qAbs(sizeMm.width() - mm.width()) <= 0.1 && qAbs(sizeMm.height() - mm.height()) <= 0.1,
                 qPrintable(QStringLiteral("%1 x %2 mm").arg(sizeMm.width()).arg(sizeMm.height())));
        QVERIFY2(text.contains(kWords), qPrintable(text.left(200)));
    }

    void bookletPairAndDiscLabelAsEdited()
    {
        ProjectData d = project.data();
        d.sheetComposition = FmtDouble | FmtCdRom;
        d.pictures.append({FmtDouble, writePicture(QDir(tmp.path()), 2), 300, 300, 2400, 1800, 1});
        d.pageText.append({FmtDouble, "1. Harbour lights", textStyle(300, 300)});
        Project booklet;
        booklet.load(std::move(d));
        const Result r = write(FmtDouble, "Booklet.PNG", 96, &booklet);
        QVERIFY2(r.ok, qPrintable(r.error));
        QCOMPARE(exportName("notes.v2") + u' ' + exportName("notes.Tiff"), QString("notes.v2.bmp notes.Tiff"));
        // NAME1: the text page alone (its words, no picture); NAME2: the picture page.
        QCOMPARE(r.written, QStringList({tmp.filePath("Booklet1.PNG"), tmp.filePath("Booklet2.PNG")}));
        const QImage text(r.written[0]), pictures(r.written[1]);
        const QRect picture(300, 300, 2400, 1800), words(300, 300, 3000, 400);
        const auto coloured = [](const QColor& c) { return c.saturation() > 60; };
        QVERIFY(fixture::inkIn(text, words) > 50 && fixture::inkIn(text, picture, coloured) == 0);
        QVERIFY(fixture::inkIn(pictures, picture, coloured) > 10000);
        // Under the text page the pictures are left out of the file, not merely covered.
        QVERIFY(write(FmtDouble, "Booklet.pdf", 96, &booklet).ok);
        QVERIFY(!fixture::readFile(tmp.filePath("Booklet1.pdf")).contains("/Subtype /Image") &&
                fixture::readFile(tmp.filePath("Booklet2.pdf")).contains("/Subtype /Image"));

        // The disc label: no border, no background, and not masked to the disc.
        QVERIFY(write(FmtCdRom, "disc.png", 96).ok);
        const QImage disc(tmp.filePath("disc.png"));
        QVERIFY(fixture::isWhite(disc.pixelColor(0, 0)) && fixture::isWhite(disc.pixelColor(disc.width() / 2, 40)));
        QVERIFY(fixture::inkIn(disc, QRect(60, 60, 1200, 300)) > 20);
    }

    void failuresLeaveNoPartialFile()
    {
        // A name so long that nothing fits beside it: refused even as root, the old file kept.
        const QString old = tmp.filePath(QString(250, 'k') + ".png");
        QVERIFY(fixture::writeFile(old, "old picture"));
        Result r = write(FmtSimple, QFileInfo(old).fileName());
        QVERIFY(!r.ok && r.error.startsWith(texts().msg(Msg::ExportNotWritten)) && r.written.isEmpty());
        QCOMPARE(fixture::readFile(old), QByteArray("old picture"));

        // Ghostscript missing, then one that fails after writing half a file.
        const QByteArray path = qgetenv("PATH");
        QTemporaryDir bin(tmp.filePath("bin-XXXXXX"));
        qputenv("PATH", bin.path().toLocal8Bit());
        r = write(FmtSimple, "missing.eps");
        QCOMPARE(r.error, texts().msg(Msg::GhostscriptMissing));
        QVERIFY(fixture::writeFile(bin.filePath("gs"), "#!/bin/sh\nfor a; do case $a in -sOutputFile=*) out=${a#*=};; esac; done\n"
                                                       "echo '%!PS-Adobe half' > \"$out\"; echo 'gs: disk full' >&2; exit 1\n"));
        QFile::setPermissions(bin.filePath("gs"), QFile::ReadOwner | QFile::ExeOwner);
        qputenv("PATH", bin.path().toLocal8Bit() + ":" + path);
        r = write(FmtSimple, "failed.eps");
        qputenv("PATH", path);
        QVERIFY2(r.error.endsWith("gs: disk full"), qPrintable(r.error));
        QVERIFY(!QFile::exists(tmp.filePath("missing.eps")) && !QFile::exists(tmp.filePath("failed.eps")));
        QCOMPARE(leftovers(tmp.path()), 0);
    }

    void headlessCommands()
    {
        const QString prj = tmp.filePath("cli.prj");
        ProjectData d = emptyProject(FmtDouble);
        d.pageText.append({FmtDouble, kWords, textStyle(300, 300)});
        QVERIFY(writeProject(d, prj));
        const auto jewlkit = [](const QStringList& args) {
            QProcess p;
            p.start(QCoreApplication::applicationDirPath() + "/jewlkit", args);
            return p.waitForFinished(60000) && p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
        };
        QCOMPARE(jewlkit({"--export-sheet", "2", tmp.filePath("cli.pdf"), prj}), 0);
        QVERIFY(pageText(tmp.filePath("cli1.pdf"), 1).contains(kWords) && QFile::exists(tmp.filePath("cli2.pdf")));
        QCOMPARE(jewlkit({"--export", tmp.filePath("all"), prj, "--format", "JPG", "--dpi", "72"}), 0);
        QCOMPARE(QDir(tmp.filePath("all")).entryList(QDir::Files), QStringList({"2-text.jpg", "2.jpg"}));
        QCOMPARE(QImageReader(tmp.filePath("all/2.jpg")).size().width(), qCeil(123 / 25.4 * 72));
        // Refused before anything is written: a bad resolution, format or sheet.
        for (const QStringList& bad : {QStringList{"--export", tmp.filePath("no"), prj, "--dpi", "1300"},
                                       QStringList{"--export", tmp.filePath("no"), prj, "--format", "gif"},
                                       QStringList{"--export-sheet", "8", tmp.filePath("no.png"), prj},
                                       QStringList{"--export-sheet", "2", tmp.filePath("no.gif"), prj}})
            QCOMPARE(jewlkit(bad), 1);
        QVERIFY(!QFile::exists(tmp.filePath("no")) && !QFile::exists(tmp.filePath("no1.png")));
    }
};

QTEST_MAIN(TestExport)
#include "test_export.moc"
