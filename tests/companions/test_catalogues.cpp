// The catalogue programs as a script runs them (fontsheet --pdf, picsheet
// --pdf FOLDER), their PDFs read back with poppler's tools.
#include "Fixture.h"
#include "companions/Catalogue.h"
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

namespace cat = jk::catalogue;

namespace {

struct Run {
    int code = -1;
    QString err;
};
Run run(const QString& program, const QStringList& args)
{
    QProcess p;
    p.start(QCoreApplication::applicationDirPath() + u'/' + program, args);
    const bool ended = p.waitForFinished(60000) && p.exitStatus() == QProcess::NormalExit;
    return {ended ? p.exitCode() : -1, QString::fromUtf8(p.readAllStandardError())};
}

QString tool(const QString& name, const QStringList& args)
{
    QProcess p;
    p.start(name, args);
    p.waitForFinished(30000);
    return QString::fromUtf8(p.readAllStandardOutput());
}

int pageCount(const QString& pdf)
{
    return QRegularExpression(QStringLiteral("Pages:\\s+(\\d+)")).match(tool("pdfinfo", {pdf})).captured(1).toInt();
}

// The lines of text that are one of the names, page after page.
struct Pages {
    int count = 0, withoutNames = 0;
    QStringList names;
};
Pages namesByPage(const QString& pdf, const QStringList& names)
{
    Pages pages;
    pages.count = pageCount(pdf);
    for (int page = 1; page <= pages.count; ++page) {
        const QString n = QString::number(page);
        const qsizetype before = pages.names.size();
        for (const QString& line : tool("pdftotext", {"-f", n, "-l", n, pdf, "-"}).split(u'\n'))
            if (names.contains(line.trimmed())) pages.names << line.trimmed();
        if (pages.names.size() == before) ++pages.withoutNames;
    }
    return pages;
}

QString builtIn(jk::Msg m) { return QString::fromUtf8(jk::builtInMessage(m)); }

}  // namespace

class TestCatalogues : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    QString at(const QString& name) const { return tmp.filePath(name); }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char* t : {"pdfinfo", "pdftotext", "pdfimages"})
            if (QStandardPaths::findExecutable(t).isEmpty()) QSKIP("poppler-utils is not installed");
    }

    void fontCatalogueNamesEveryFamilyOnceSeveralAPage()
    {
        QCOMPARE(run("fontsheet", {"--pdf", at("fonts.pdf")}).code, 0);
        // The program reads the same font database as this test.
        QStringList families;
        for (const cat::FontEntry& e : cat::installedFamilies(QStringLiteral("sample"))) families << e.family;
        QVERIFY(families.size() > 3);
        const Pages pages = namesByPage(at("fonts.pdf"), families);
        QVERIFY(pages.count >= 1 && pages.count < families.size() && pages.withoutNames == 0);
        QCOMPARE(pages.names, families);
    }

    void contactSheetShowsEveryReadablePictureNeverEnlarged()
    {
        QDir dir(at("pictures"));
        QVERIFY(dir.mkpath("."));
        QStringList readable;
        const QString samples = qEnvironmentVariable("JK_TEST_DATA", JK_SOURCE_DIR "/tests/data") + "/pictures/";
        for (const char* ext : {"bmp", "gif", "jpg", "pcx", "tif", "eps", "pcd"}) {
            QVERIFY(QFile::copy(samples + "sample." + ext, dir.filePath(QStringLiteral("sample.") + ext)));
            readable << QStringLiteral("sample.") + ext;
        }
        QImage big(1200, 900, QImage::Format_RGB32);
        big.fill(Qt::darkCyan);
        QVERIFY(big.save(dir.filePath("big.jpg")));
        readable << "big.jpg";
        QImage small(64, 48, QImage::Format_RGB32);
        small.fill(Qt::green);
        for (int i = 1; i <= 16; ++i) {
            const QString name = QStringLiteral("shot %1.bmp").arg(i, 2, 10, QLatin1Char('0'));
            QVERIFY(small.save(dir.filePath(name)));
            readable << name;
        }
        // Left out: a zero-byte JPEG and a PhotoCD file that is all header.
        QVERIFY(fixture::writeFile(dir.filePath("empty.jpg"), {}));
        QVERIFY(fixture::writeFile(dir.filePath("bomb.pcd"), QByteArray(2048, '\xFF') + "PCD_IPI"));
        QVERIFY(fixture::writeFile(dir.filePath("notes.txt"), "not a picture"));

        const Run r = run("picsheet", {"--pdf", at("pictures.pdf"), dir.path()});
        QCOMPARE(r.code, 0);
        for (const char* skipped : {"empty.jpg", "bomb.pcd"})
            QVERIFY2(r.err.contains(builtIn(jk::Msg::CataloguePictureSkipped) + u' ' + skipped), qPrintable(r.err));

        const Pages pages = namesByPage(at("pictures.pdf"), readable + QStringList{"empty.jpg", "bomb.pcd", "notes.txt"});
        QVERIFY(pages.count > 1 && pages.withoutNames == 0);
        std::sort(readable.begin(), readable.end(),
                  [](const QString& a, const QString& b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
        QCOMPARE(pages.names, readable);

        // pdfimages: page num type width height color comp bpc enc interp object ID x-ppi y-ppi ...
        QList<int> widths;
        for (const QString& line : tool("pdfimages", {"-list", at("pictures.pdf")}).split(u'\n')) {
            const QStringList f = line.simplified().split(u' ');
            if (f.size() < 14 || f.at(2) != u"image") continue;
            widths << f.at(3).toInt();
            // Drawn no larger than the picture at 96 dpi.
            QVERIFY2(f.at(12).toInt() >= 95 && f.at(13).toInt() >= 95, qPrintable(line));
        }
        QCOMPARE(widths.size(), readable.size());
        QCOMPARE(widths.count(64), 22);  // the small ones as they are
        QVERIFY(*std::max_element(widths.begin(), widths.end()) < 300);  // the big ones shrunk to their box
    }

    void failuresExitWithAMessageAndNoFile_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("says");
        QVERIFY(QDir(at("empty")).mkpath("."));
        QVERIFY(QDir(at("unreadable")).mkpath("."));
        QVERIFY(fixture::writeFile(at("unreadable/empty.jpg"), {}));
        QVERIFY(QDir(at("one")).mkpath("."));
        QVERIFY(QImage(8, 8, QImage::Format_RGB32).save(at("one/one.bmp")));
        const QString out = at("out.pdf"), noFolder = at("missing/out.pdf");
        QTest::newRow("fonts into a missing folder")
            << "fontsheet" << QStringList{"--pdf", noFolder} << builtIn(jk::Msg::PrintPdfNotWritten);
        QTest::newRow("pictures into a missing folder")
            << "picsheet" << QStringList{"--pdf", noFolder, at("one")} << builtIn(jk::Msg::PrintPdfNotWritten);
        QTest::newRow("no such folder") << "picsheet" << QStringList{"--pdf", out, at("nowhere")}
                                        << builtIn(jk::Msg::CatalogueNotFolder);
        QTest::newRow("no pictures") << "picsheet" << QStringList{"--pdf", out, at("empty")}
                                     << builtIn(jk::Msg::CatalogueNoPictures);
        QTest::newRow("nothing readable") << "picsheet" << QStringList{"--pdf", out, at("unreadable")}
                                          << builtIn(jk::Msg::CatalogueNoPictures);
        QTest::newRow("no folder named") << "picsheet" << QStringList{"--pdf", out} << "needs a FOLDER";
    }
    void failuresExitWithAMessageAndNoFile()
    {
        QFETCH(QString, program);
        QFETCH(QStringList, args);
        QFETCH(QString, says);
        const Run r = run(program, args);
        QCOMPARE(r.code, 1);
        QVERIFY2(r.err.contains(says), qPrintable(r.err));
        QVERIFY(!QFile::exists(args.at(1)));
    }
};

QTEST_MAIN(TestCatalogues)
#include "test_catalogues.moc"
