// Export read back by ImageMagick, poppler, Ghostscript and Qt's SVG renderer:
// sizes, words, a booklet's two files, the disc label as edited, failures
// that leave no partial file, and the headless commands.
#include "Fixture.h"
#include "PrintProjects.h"
#include "output/Export.h"
#include <QImageReader>
#include <QProcess>
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
// Nothing is left in the temporary folder (the test's own).
bool noTemporaryFiles() { return QDir(QDir::tempPath()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot); }
}  // namespace

class TestExport : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    Project project;

    Result write(int code, const QString& name, int dpi = kDefaultDpi)
    {
        const QString path = exportName(tmp.filePath(name));
        return writePages(project, sheetPages(project, code, path), *formatOfName(path), dpi, texts());
    }

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
        d.pictures.append({FmtDouble, writePicture(QDir(tmp.path()), 2), 300, 300, 2400, 1800, 1});
        d.pageText.append({FmtDouble, "1. Harbour lights", textStyle(300, 300)});
        // Disc label: a blue background and a block in the corner, off the disc.
        d.backgrounds[FmtCdRom].text = "~16711680";
        d.freeText.append({FmtCdRom, "Corner", textStyle(60, 60, 1200, 300)});
        project.load(std::move(d));
    }

    void everyFormatOpensInAnIndependentReader_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("read");  // what ImageMagick reads: format, compression, quality
        for (const char* row : {"cover.bmp|BMP3 None", "cover.JPG|JPEG JPEG 95", "cover.tif|TIFF LZW", "cover.png|PNG Zip",
                                "cover.pdf|", "cover.eps|", "cover.svg|"})
            QTest::newRow(row) << QString(row).section('|', 0, 0) << QString(row).section('|', 1);
    }
    void everyFormatOpensInAnIndependentReader()
    {
        QFETCH(QString, name);
        QFETCH(QString, read);
        const Result r = write(FmtSimple, name, 150);
        const QString file = tmp.filePath(name);
        QVERIFY2(r.written == QStringList{file} && noTemporaryFiles(), qPrintable(r.error));
        const QSizeF mm(123, 119.5);
        QSizeF sizeMm;
        if (!read.isEmpty()) {
            // Raster: the sheet at 150 dpi to the pixel, in full colour (a BMP of 24 bits).
            const QStringList got = tool("identify", {"-format", "%m %C %Q %w %h", file}).split(u' ');
            QVERIFY(read.startsWith(got.mid(0, 2).join(u' ')) && (!read.endsWith("95") || got[2] == "95"));
            QVERIFY(qAbs(got[3].toInt() - mm.width() / 25.4 * 150) < 1 && qAbs(got[4].toInt() - mm.height() / 25.4 * 150) < 1);
            QVERIFY(!name.endsWith("bmp") || fixture::readFile(file).at(28) == 24);
            QVERIFY(QImage(file).pixelColor(got[3].toInt() / 5, got[4].toInt() * 0.45).saturation() > 40);  // in the picture
            return;
        }
        const QString bytes = QString::fromLatin1(fixture::readFile(file));
        if (name.endsWith("pdf")) {
            const QStringList pts = tool("pdfinfo", {file}).section("Page size:", 1).simplified().split(u' ');
            sizeMm = QSizeF(pts.value(0).toDouble(), pts.value(2).toDouble()) * 25.4 / 72;
            QVERIFY(pageText(file, 1).contains(kWords));
        } else if (name.endsWith("eps")) {
            const QStringList v = bytes.section("%%HiResBoundingBox:", 1).section('\n', 0, 0).simplified().split(' ');
            sizeMm = QSizeF(v.value(2).toDouble() - v.value(0).toDouble(), v.value(3).toDouble() - v.value(1).toDouble()) * 25.4 / 72;
            // Ghostscript draws it at its box; the text is there as outlines.
            tool("gs", {"-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-dEPSCrop", "-r96", "-sDEVICE=png16m", "-o", file + ".png", file});
            const QImage shown(file + ".png");
            QVERIFY(fixture::inkIn(shown, kTextTwips) > 50 && fixture::inkIn(shown, QRect(5000, 300, 1500, 1500)) == 0);
        } else {
            QVERIFY(QSvgRenderer(file).isValid() && bytes.contains(kWords));
            sizeMm = QSizeF(bytes.section("width=\"", 1).section("mm", 0, 0).toDouble(),
                            bytes.section("height=\"", 1).section("mm", 0, 0).toDouble());
        }
        QVERIFY2(qAbs(sizeMm.width() - mm.width()) <= 0.1 && qAbs(sizeMm.height() - mm.height()) <= 0.1,
                 qPrintable(QStringLiteral("%1 x %2 mm").arg(sizeMm.width()).arg(sizeMm.height())));
    }

    void bookletPairAndDiscLabelAsEdited()
    {
        const Result r = write(FmtDouble, "Booklet.PNG", 96);
        QCOMPARE(exportName("notes.v2") + u' ' + exportName("notes.Tiff"), QString("notes.v2.bmp notes.Tiff"));
        // NAME1: the text page alone (its words, no picture); NAME2: the picture page.
        QCOMPARE(r.written, QStringList({tmp.filePath("Booklet1.PNG"), tmp.filePath("Booklet2.PNG")}));
        const QRect picture(300, 300, 2400, 1800);
        const auto coloured = [](const QColor& c) { return c.saturation() > 60; };
        QVERIFY(fixture::inkIn(QImage(r.written[0]), {300, 300, 3000, 400}) > 50 &&
                fixture::inkIn(QImage(r.written[0]), picture, coloured) == 0 && fixture::inkIn(QImage(r.written[1]), picture, coloured) > 10000);
        // The disc label: no border, no background, and not masked to the disc.
        QVERIFY(write(FmtCdRom, "disc.png", 96).ok);
        const QImage disc(tmp.filePath("disc.png"));
        QVERIFY(fixture::isWhite(disc.pixelColor(0, 0)) && fixture::isWhite(disc.pixelColor(disc.width() / 2, 40)) &&
                fixture::inkIn(disc, QRect(60, 60, 1200, 300)) > 20);
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
        QCOMPARE(write(FmtSimple, "missing.eps").error, texts().msg(Msg::GhostscriptMissing));
        QVERIFY(fixture::writeFile(bin.filePath("gs"), "#!/bin/sh\nfor a; do case $a in -sOutputFile=*) out=${a#*=};; esac; done\n"
                                                       "echo '%!PS-Adobe half' > \"$out\"; echo 'gs: disk full' >&2; exit 1\n"));
        QFile::setPermissions(bin.filePath("gs"), QFile::ReadOwner | QFile::ExeOwner);
        qputenv("PATH", bin.path().toLocal8Bit() + ":" + path);
        r = write(FmtSimple, "failed.eps");
        qputenv("PATH", path);
        QVERIFY2(r.error.endsWith("gs: disk full"), qPrintable(r.error));
        QVERIFY(!QFile::exists(tmp.filePath("missing.eps")) && !QFile::exists(tmp.filePath("failed.eps")) && noTemporaryFiles());
    }

    void headlessCommands()
    {
        ProjectData d = project.data();
        d.sheetComposition = FmtDouble;
        QVERIFY(writeProject(d, tmp.filePath("cli.prj")));
        const auto jewlkit = [&](const QString& args) {
            QProcess p;
            p.setWorkingDirectory(tmp.path());
            p.start(QCoreApplication::applicationDirPath() + "/jewlkit", args.split(u' ') << "cli.prj");
            return p.waitForFinished(60000) ? p.exitCode() : -1;
        };
        QCOMPARE(jewlkit("--dpi 72 --export-sheet 2 cli.jpg"), 0);  // the booklet's two pages, 123 mm at 72 dpi
        QVERIFY(QImageReader(tmp.filePath("cli2.jpg")).size().width() == 349 && QFile::exists(tmp.filePath("cli1.jpg")));
        // Every sheet, the picture page's EPS taking longer than the text page's.
        QCOMPARE(jewlkit("--format EPS --export all"), 0);
        QCOMPARE(QDir(tmp.filePath("all")).entryList(QDir::Files), QStringList({"2-text.eps", "2.eps"}));
        // Refused before anything is written: a bad resolution, format or sheet.
        for (const char* bad : {"--dpi 1300 --export no", "--format gif --export no", "--export-sheet 8 no.png", "--export-sheet 2 no.gif"})
            QCOMPARE(jewlkit(bad), 1);
        QVERIFY(!QFile::exists(tmp.filePath("no")) && !QFile::exists(tmp.filePath("no1.png")));
    }
};

QTEST_MAIN(TestExport)
#include "test_export.moc"
