#include "platform/Pictures.h"
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

namespace pf = jk::platform;
Q_DECLARE_METATYPE(pf::PictureFormat)

namespace {

QString samples()
{
    return qEnvironmentVariable("JK_TEST_DATA", QStringLiteral(JK_SOURCE_DIR "/tests/data")) +
           QStringLiteral("/pictures");
}

void le16(QByteArray& b, int v)
{
    b.append(char(v & 0xFF)).append(char((v >> 8) & 0xFF));
}

void le32(QByteArray& b, quint32 v)
{
    le16(b, int(v & 0xFFFF));
    le16(b, int(v >> 16));
}

quint32 crc32(const QByteArray& data)
{
    quint32 c = 0xFFFFFFFFu;
    for (const char ch : data) {
        c ^= uchar(ch);
        for (int k = 0; k < 8; ++k) c = (c >> 1) ^ (0xEDB88320u & (0u - (c & 1u)));
    }
    return ~c;
}

// A placeable metafile, unitsPerInch logical units to the inch, w x h units:
// the left half red, the right half blue, no outlines.
QByteArray makeWmf(int w, int h, int unitsPerInch)
{
    QByteArray recs;
    auto rec = [&](int func, std::initializer_list<int> params) {
        le32(recs, quint32(3 + params.size()));
        le16(recs, func);
        for (int p : params) le16(recs, p);
    };
    rec(0x020B, {0, 0});                     // SetWindowOrg (y, x)
    rec(0x020C, {h, w});                     // SetWindowExt (height, width)
    rec(0x02FA, {5, 0, 0, 0, 0});            // CreatePenIndirect: PS_NULL -> object 0
    rec(0x012D, {0});                        // SelectObject
    rec(0x02FC, {0, 0x00FF, 0x0000, 0});     // CreateBrushIndirect red -> object 1
    rec(0x012D, {1});
    rec(0x041B, {h, w / 2, 0, 0});           // Rectangle (bottom, right, top, left)
    rec(0x02FC, {0, 0x0000, 0x00FF, 0});     // blue brush -> object 2
    rec(0x012D, {2});
    rec(0x041B, {h, w, 0, w / 2});
    rec(0x0000, {});                         // EOF

    QByteArray out;
    le32(out, 0x9AC6CDD7u);
    for (int v : {0, 0, 0, w, h, unitsPerInch}) le16(out, v);
    le32(out, 0);
    quint16 sum = 0;
    for (int i = 0; i < 20; i += 2) sum ^= quint16(uchar(out[i]) | uchar(out[i + 1]) << 8);
    le16(out, sum);
    le16(out, 1);                             // memory metafile
    le16(out, 9);                             // header words
    le16(out, 0x0300);
    le32(out, quint32((18 + recs.size()) / 2));
    le16(out, 3);                             // objects
    le32(out, 8);                             // largest record, in words
    le16(out, 0);
    return out + recs;
}

QByteArray wpgRecord(int type, const QByteArray& data)
{
    QByteArray r(1, char(type));
    if (data.size() < 0xFF) {
        r.append(char(data.size()));
    } else {
        r.append(char(0xFF));
        le16(r, int(data.size()));
    }
    return r + data;
}

// A WordPerfect graphic (level 1) holding one 8-bit raster, w x h: the left
// half red, the right half blue.
QByteArray makeWpg(int w, int h)
{
    QByteArray out("\xFFWPC", 4);
    le32(out, 16);
    out.append(char(1)).append(char(0x16)).append(char(1)).append(char(0));
    le16(out, 0);
    le16(out, 0);
    out += wpgRecord(0x0F, QByteArray("\x01\x00", 2));  // start
    QByteArray palette;
    le16(palette, 0);
    le16(palette, 2);
    palette.append("\xFF\x00\x00\x00\x00\xFF", 6);
    out += wpgRecord(0x0E, palette);
    QByteArray raster;
    for (int v : {w, h, 8, 75, 75}) le16(raster, v);
    for (int y = 0; y < h; ++y) {  // each row: two runs of w/2 equal bytes
        raster.append(char(0x80 | (w / 2))).append(char(0));
        raster.append(char(0x80 | (w / 2))).append(char(1));
    }
    out += wpgRecord(0x0B, raster);
    out += wpgRecord(0x10, {});
    return out;
}

QByteArray pngChunk(const char* type, const QByteArray& data)
{
    QByteArray c;
    c.append(char(data.size() >> 24)).append(char(data.size() >> 16)).append(char(data.size() >> 8)).append(char(data.size()));
    const QByteArray body = QByteArray(type) + data;
    const quint32 crc = crc32(body);
    c += body;
    c.append(char(crc >> 24)).append(char(crc >> 16)).append(char(crc >> 8)).append(char(crc));
    return c;
}

// A valid PNG header that claims w x h pixels of 8-bit RGBA.
QByteArray makeHugePng(quint32 w, quint32 h)
{
    QByteArray ihdr;
    for (quint32 v : {w, h}) ihdr.append(char(v >> 24)).append(char(v >> 16)).append(char(v >> 8)).append(char(v));
    ihdr.append("\x08\x06\x00\x00\x00", 5);
    return QByteArray("\x89PNG\r\n\x1A\n", 8) + pngChunk("IHDR", ihdr) + pngChunk("IDAT", qCompress("x").mid(4)) +
           pngChunk("IEND", {});
}

// A ZSoft header claiming w x h pixels of 8-bit colour, no pixel data.
QByteArray makeHugePcx(int w, int h)
{
    QByteArray b(128, '\0');
    b[0] = 0x0A;
    b[1] = 5;
    b[2] = 1;
    b[3] = 8;
    auto put = [&](int at, int v) {
        b[at] = char(v & 0xFF);
        b[at + 1] = char(v >> 8);
    };
    put(8, w - 1);
    put(10, h - 1);
    b[65] = 3;
    put(66, w);
    return b;
}

QByteArray eps(const QByteArray& bbox, const QByteArray& body)
{
    return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: " + bbox + "\n%%EndComments\n" + body + "\nshowpage\n%%EOF\n";
}

bool write(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

// Every sample is the same picture: red on the left, blue on the right.
bool redLeftBlueRight(const QImage& img, QString* why)
{
    const int y = img.height() / 2;
    const QColor l = img.pixelColor(img.width() / 8, y), r = img.pixelColor(img.width() * 7 / 8, y);
    *why = QStringLiteral("left %1 right %2").arg(l.name(), r.name());
    return l.red() > 190 && l.green() < 70 && l.blue() < 70 && r.blue() > 190 && r.red() < 70 && r.green() < 70;
}

}  // namespace

class TestPictures : public QObject {
    Q_OBJECT
    QTemporaryDir dir;      // hostile and copied files
    QTemporaryDir scratch;  // the system temporary folder while testing
    pf::PictureLimits defaults;

    QString at(const QString& name) const { return dir.filePath(name); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        QVERIFY(scratch.isValid());
        // Decoders put their scratch files in the temporary folder: use one of
        // our own so that leftovers can be seen.
        qputenv("TMPDIR", scratch.path().toLocal8Bit());
        QCOMPARE(QDir(QDir::tempPath()).canonicalPath(), QDir(scratch.path()).canonicalPath());
        QVERIFY(write(at("sample.wmf"), makeWmf(64, 48, 96)));
        QVERIFY(write(at("sample.wpg"), makeWpg(64, 48)));
        defaults = pf::pictureLimits();
    }
    void init()
    {
        pf::setPictureLimits(defaults);
        pf::forgetFailedPictures();
    }

    void everyFormatLoads_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<pf::PictureFormat>("format");
        QTest::addColumn<QSize>("size");
        const QSize small(64, 48);
        QTest::newRow("BMP") << samples() + "/sample.bmp" << pf::PictureFormat::Qt << small;
        QTest::newRow("PCX") << samples() + "/sample.pcx" << pf::PictureFormat::Pcx << small;
        QTest::newRow("JPEG") << samples() + "/sample.jpg" << pf::PictureFormat::Qt << small;
        QTest::newRow("EPS") << samples() + "/sample.eps" << pf::PictureFormat::Eps << small;
        QTest::newRow("TIFF") << samples() + "/sample.tif" << pf::PictureFormat::Qt << small;
        QTest::newRow("WMF") << at("sample.wmf") << pf::PictureFormat::Wmf << small;
        QTest::newRow("PhotoCD") << samples() + "/sample.pcd" << pf::PictureFormat::PhotoCd << QSize(768, 512);
        QTest::newRow("GIF") << samples() + "/sample.gif" << pf::PictureFormat::Qt << small;
        QTest::newRow("WPG") << at("sample.wpg") << pf::PictureFormat::Wpg << small;
    }
    void everyFormatLoads()
    {
        QFETCH(QString, path);
        QFETCH(pf::PictureFormat, format);
        QFETCH(QSize, size);
        QCOMPARE(pf::pictureFormat(path), format);
        QString error;
        const QImage img = pf::loadPicture(path, &error);
        QVERIFY2(!img.isNull(), qPrintable(error));
        QCOMPARE(img.size(), size);
        QString why;
        QVERIFY2(redLeftBlueRight(img, &why), qPrintable(why));
        // The cheap size agrees with the decoded one.
        QCOMPARE(pf::pictureSize(path), size);
    }

    void contentDecidesOverTheName()
    {
        // A PCX called .jpg, a JPEG called .PCX, capitals, no extension at all.
        QVERIFY(QFile::copy(samples() + "/sample.pcx", at("really-pcx.jpg")));
        QVERIFY(QFile::copy(samples() + "/sample.jpg", at("really-jpeg.PCX")));
        QVERIFY(QFile::copy(samples() + "/sample.eps", at("SHOUTING.EPS")));
        QVERIFY(QFile::copy(at("sample.wpg"), at("noextension")));
        const struct {
            const char* name;
            pf::PictureFormat format;
        } cases[] = {{"really-pcx.jpg", pf::PictureFormat::Pcx},
                     {"really-jpeg.PCX", pf::PictureFormat::Qt},
                     {"SHOUTING.EPS", pf::PictureFormat::Eps},
                     {"noextension", pf::PictureFormat::Wpg}};
        for (const auto& c : cases) {
            QCOMPARE(pf::pictureFormat(at(c.name)), c.format);
            QString error, why;
            const QImage img = pf::loadPicture(at(c.name), &error);
            QVERIFY2(!img.isNull(), qPrintable(QString::fromLatin1(c.name) + ": " + error));
            QVERIFY2(redLeftBlueRight(img, &why), qPrintable(why));
        }
    }

    void hostileFilesGiveNoPicture_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("zero bytes") << "empty.bmp" << QByteArray();
        QTest::newRow("text called GIF") << "words.gif" << QByteArray("this is not a picture\n");
        QTest::newRow("text called PCX") << "words.pcx" << QByteArray("this is not a picture either\n");
        QTest::newRow("PNG of 100000 x 100000") << "huge.png" << makeHugePng(100000, 100000);
        QTest::newRow("PNG of 100000 x 100000 called BMP") << "huge.bmp" << makeHugePng(100000, 100000);
        QTest::newRow("PCX of 30000 x 30000") << "huge.pcx" << makeHugePcx(30000, 30000);
        QTest::newRow("WMF of 300 feet") << "huge.wmf" << makeWmf(32000, 32000, 9);
        QTest::newRow("EPS of 5 km") << "huge.eps" << eps("0 0 14000000 14000000", "0 0 10 10 rectfill");
        QTest::newRow("EPS reading /etc/passwd")
            << "passwd.eps"
            << eps("0 0 40 30", "(/etc/passwd) (r) file 100 string readstring pop ==\n0 0 40 30 rectfill");
        QTest::newRow("EPS deleting a file") << "delete.eps"
                                             << eps("0 0 40 30", "(" + at("victim").toLocal8Bit() + ") deletefile");
        QTest::newRow("truncated WPG") << "cut.wpg" << makeWpg(64, 48).left(60);
        QTest::newRow("PCD header only") << "cut.pcd" << QByteArray(2048, '\xFF') + "PCD_IPI";
    }
    void hostileFilesGiveNoPicture()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QVERIFY(write(at("victim"), "keep me"));
        QVERIFY(write(at(name), bytes));
        QElapsedTimer t;
        t.start();
        QString error;
        const QImage img = pf::loadPicture(at(name), &error);
        QVERIFY(img.isNull());
        QVERIFY(!error.isEmpty());
        QVERIFY2(t.elapsed() < 10000, qPrintable(QString::number(t.elapsed())));
        QVERIFY(!pf::pictureSize(at(name)).isValid());
        QVERIFY(QFile::exists(at("victim")));
        if (name.startsWith("huge")) QVERIFY2(error.contains("too large"), qPrintable(error));
    }

    void runawayEpsIsStoppedOnceAndRemembered()
    {
        pf::PictureLimits l = defaults;
        l.timeLimitMs = 1500;
        pf::setPictureLimits(l);
        QVERIFY(write(at("loop.eps"), eps("0 0 40 30", "{} loop")));
        QElapsedTimer t;
        t.start();
        QString error;
        QVERIFY(pf::loadPicture(at("loop.eps"), &error).isNull());
        QVERIFY2(error.contains("stopped"), qPrintable(error));
        QVERIFY2(t.elapsed() >= 1400 && t.elapsed() < 8000, qPrintable(QString::number(t.elapsed())));
        // The next repaint does not pay the time again...
        t.restart();
        QString again;
        QVERIFY(pf::loadPicture(at("loop.eps"), &again).isNull());
        QCOMPARE(again, error);
        QVERIFY(t.elapsed() < 500);
        // ...and nothing is left behind in the temporary folder.
        QCOMPARE(QDir(scratch.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
        // A replaced file is tried afresh.
        QVERIFY(QFile::remove(at("loop.eps")));
        QVERIFY(QFile::copy(samples() + "/sample.eps", at("loop.eps")));
        QVERIFY(!pf::loadPicture(at("loop.eps")).isNull());
    }

    void allocationLimitHoldsForEveryDecoder()
    {
        pf::PictureLimits l = defaults;
        l.allocationMb = 1;  // 262144 pixels
        pf::setPictureLimits(l);
        QVERIFY(!pf::loadPicture(samples() + "/sample.pcx").isNull());
        QString error;
        QVERIFY(pf::loadPicture(samples() + "/sample.pcd", &error).isNull());  // 768 x 512
        QVERIFY2(error.contains("too large"), qPrintable(error));
        QVERIFY(write(at("big.eps"), eps("0 0 600 600", "0 0 10 10 rectfill")));  // 800 x 800 at 96 dpi
        const QImage shrunk = pf::loadPicture(at("big.eps"), &error);
        QVERIFY2(!shrunk.isNull(), qPrintable(error));  // drawn at a lower resolution instead
        QVERIFY(qint64(shrunk.width()) * shrunk.height() * 4 <= 1024 * 1024);
        QCOMPARE(pf::pictureSize(at("big.eps")), shrunk.size());
        l.maxSide = 40;
        pf::setPictureLimits(l);
        pf::forgetFailedPictures();
        QVERIFY(pf::loadPicture(samples() + "/sample.jpg", &error).isNull());
        QVERIFY(pf::loadPicture(at("sample.wmf"), &error).isNull());
    }
};

QTEST_GUILESS_MAIN(TestPictures)
#include "test_pictures.moc"
