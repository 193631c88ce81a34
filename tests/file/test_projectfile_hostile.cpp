// Damaged and hostile project files: every one must end in a clear message or
// a clean partial read, quickly and without eating memory.
#include "Fixture.h"
#include "file/ProjectFile.h"
#include <QBuffer>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>
#include <functional>
#include <sys/resource.h>

using namespace jk;

namespace {

QByteArray crlf(const QByteArrayList& lines)
{
    QByteArray out;
    for (const QByteArray& l : lines) out += l + "\r\n";
    return out;
}

struct Outcome {
    ProjectData data;
    ProjectReadResult result;
    QStringList messages;
    QString all() const { return messages.join(u'\n'); }
};

ProjectErrorReporter collect(Outcome& o)
{
    return [&o](const QString& text, const QString&) { o.messages << text; };
}

Outcome readBytes(const QByteArray& bytes)
{
    QByteArray copy = bytes;
    QBuffer buf(&copy);
    buf.open(QIODevice::ReadOnly);
    Outcome o;
    o.result = readProjectData(buf, o.data, QStringLiteral("bad.prj"), {}, collect(o));
    return o;
}

Outcome readPath(const QString& path)
{
    Outcome o;
    o.result = readProject(path, o.data, collect(o));
    return o;
}

QByteArrayList header()
{
    return {" 3 ", " 1 ", "Arial", "Spine", " 16777215 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 8 "};
}

QByteArrayList styleLines()
{
    return {"Arial", " 10 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 16777215 ", " 0 ",
            " 10 ", " 20 ", " 1000 ", " 200 "};
}

QByteArrayList pictureLines(const QByteArray& file)
{
    return {" 8 ", file, " 1 ", " 2 ", " 3 ", " 4 ", " 1 "};
}

// One free text block after the header, then empty tables.
QByteArray oneBlock(const QByteArrayList& textLines, const QByteArrayList& style = styleLines(),
                    QByteArrayList lines = header())
{
    lines << " 0 " << " 0 " << " 1 " << " 1 " << "~@&" << textLines << "~@&" << style;
    lines << " 0 " << " 0 " << " 0 " << " 0 ";
    return crlf(lines);
}

long maxRssKb()
{
    struct rusage u;
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}

}  // namespace

class TestProjectFileHostile : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { fixture::resetApp(); }

    void damagedFiles()
    {
        struct Case {
            const char* name;
            QByteArray bytes;
            const char* message;  // what the first message says
            int messages;         // how many; -1: any number
            std::function<bool(const ProjectData&)> check;
        };
        QByteArrayList shortPictures = header(), manyPictures = header();
        shortPictures << " 32767 " << " 0 " << pictureLines("a.png") << pictureLines("a.png") << pictureLines("a.png");
        manyPictures << " 60 " << " 0 ";
        for (int i = 1; i <= 60; ++i) manyPictures += pictureLines("pic" + QByteArray::number(i) + ".png");
        manyPictures << " 1 " << " 1 " << "~@&" << "after the pictures" << "~@&" << styleLines();
        manyPictures << " 0 " << " 0 " << " 0 " << " 0 ";
        QByteArrayList overflow = header();
        overflow[10] = " 99999999999999999999999 ";  // spine font size
        overflow[6] = " 300 ";                       // underline is a byte
        QByteArrayList overflowStyle = styleLines();
        overflowStyle[1] = " 40000 ";  // font size is 16-bit
        overflowStyle[6] = "red";
        using D = const ProjectData&;
        const Case cases[] = {
            // The count is bounded by the table; what could be read stays.
            {"count beyond the file", crlf(shortPictures), "ends too early", -1, [](D d) {
                 return d.pictures.count() == d.pictures.capacity() && d.pictures.at(3).file == u"a.png" &&
                        d.pictures.at(4).isFree();
             }},
            {"negative count", crlf(header() << "-5 " << " 0 " << " 0 " << " 0 " << " 0 " << " 0 " << " 0 "),
             "-5 is not valid", 1, [](D d) { return d.pictures.count() == 0; }},
            // Records past the table are read and dropped, so the ones after
            // them are still read in step.
            {"more pictures than a table holds", crlf(manyPictures), "more than the 50", 1, [](D d) {
                 return d.pictures.count() == 50 && d.pictures.at(50).file == u"pic50.png" &&
                        d.freeText.at(1).text == u"after the pictures\r\n";
             }},
            // Numbers too large for their field are skipped without a message.
            {"overflowing numbers and a word", oneBlock({"x"}, overflowStyle, overflow), "\"red\" is not a number", 1,
             [](D d) {
                 const TextStyle& s = d.freeText.at(1).style;
                 return d.spineFont.size == 8 && !d.spineFont.underline && s.fontSize == 0 && s.width == 1000;
             }},
            {"background codes outside the sheets",
             crlf(header() << " 0 " << " 3 " << " 0 " << "~1" << " 99 " << "~2" << " 16 " << "~3" << " 0 " << " 0 "
                           << " 0 " << " 0 " << " 0 "),
             "background code 0", 2, [](D d) { return d.backgrounds[16].text == u"~3" && !d.spinesHidden; }},
            {"block without its closing marker",
             crlf(header() << " 0 " << " 0 " << " 1 " << " 1 " << "~@&" << "first" << "second"), "ends too early", 1,
             [](D d) { return d.freeText.count() == 1 && d.freeText.at(1).text == u"first\r\nsecond\r\n"; }},
            // A huge block is cut, and the marker after it is still found.
            {"huge block", oneBlock(QByteArrayList(200, QByteArray(1000, 'x'))), "longer than", 1, [](D d) {
                 return d.freeText.at(1).text.size() <= kMaxTextChars && d.freeText.at(1).style.width == 1000;
             }},
        };
        for (const Case& c : cases) {
            QElapsedTimer t;
            t.start();
            const Outcome o = readBytes(c.bytes);
            const QByteArray what = QByteArray(c.name) + ": " + o.all().toUtf8();
            QVERIFY2(t.elapsed() < 3000, what.constData());
            QVERIFY2(c.messages < 0 ? !o.messages.isEmpty() : o.messages.size() == c.messages, what.constData());
            QVERIFY2(o.messages.first().contains(QLatin1String(c.message)), what.constData());
            QVERIFY2(c.check(o.data), what.constData());
        }
    }

    void truncatedFilesAndJunk()
    {
        // A clean file with every record kind.
        QFile seed(qEnvironmentVariable("JK_TEST_DATA", QStringLiteral(JK_SOURCE_DIR "/tests/data")) +
                   QStringLiteral("/prj-corpus/seed-full.prj"));
        QVERIFY(seed.open(QIODevice::ReadOnly));
        const QByteArray full = seed.readAll();
        QCOMPARE(readBytes(full).result.errors, 0);
        // Cut after every line and inside every CR LF: the last value is
        // complete only at the very end.
        for (qsizetype cut = 0; cut < full.size() - 1; ++cut) {
            if (cut > 5 && full[cut - 1] != '\n' && full[cut] != '\n') continue;
            const Outcome o = readBytes(full.left(cut));
            QVERIFY2(o.result.errors >= 1 && o.messages.size() <= kMaxReportedErrors + 1, qPrintable(QString::number(cut)));
            QVERIFY2(o.all().contains(QStringLiteral("ends too early")), qPrintable(o.all()));
            QVERIFY(o.data.freeText.count() <= 2 && o.data.pictures.count() <= 2);
        }
        // Random bytes: the messages stop at the cap and one summary.
        QRandomGenerator rng(20240611);
        for (int round = 0; round < 50; ++round) {
            QByteArray junk(int(rng.bounded(1, 20000)), Qt::Uninitialized);
            for (char& c : junk) c = char(rng.bounded(256));
            if (round % 2) junk.prepend(" 3 \r\n");
            const Outcome o = readBytes(junk);
            QVERIFY(o.result.errors >= 1 && o.messages.size() <= kMaxReportedErrors + 1);
            if (o.result.errors > kMaxReportedErrors)
                QVERIFY(o.messages.last().contains(QStringLiteral("further errors")));
        }
    }

    void pathsThatAreNoProjectsAndAHugeLine()
    {
        QTemporaryDir dir;
        const QString huge = dir.filePath("huge.prj"), missing = dir.filePath("missing.prj");
        {
            QFile f(huge);
            QVERIFY(f.open(QIODevice::WriteOnly) && f.resize(kMaxProjectFileBytes + 1));  // sparse: no disk used
        }
        const std::pair<QString, const char*> refused[] = {{dir.path(), "folder"},
                                                           {QStringLiteral("/dev/zero"), "not a regular file"},
                                                           {missing, "does not exist"},
                                                           {huge, "too large"}};
        for (const auto& [path, why] : refused) {
            const Outcome o = readPath(path);
            QVERIFY2(!o.result.opened && o.messages.size() == 1 && o.all().contains(QLatin1String(why)),
                     qPrintable(o.all()));
            QCOMPARE(o.data.fileName, path);
        }

        // A 50 MB line is cut while it is read.
        const QString path = dir.filePath("long.prj");
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(crlf({" 3 ", " 1 ", "Arial"}));
            const QByteArray chunk(1 << 20, 'A');
            for (int i = 0; i < 50; ++i) f.write(chunk);  // the spine line
            f.write(crlf({"", " 16777215 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 12 ", " 0 ", " 0 ", " 0 ", " 0 ",
                          " 0 ", " 0 ", "-1 "}));
        }
        const long before = maxRssKb();
        QElapsedTimer t;
        t.start();
        const Outcome o = readPath(path);
        QVERIFY2(t.elapsed() < 3000, qPrintable(QString::number(t.elapsed())));
        QVERIFY2(maxRssKb() - before < 40 * 1024, qPrintable(QString::number(maxRssKb() - before)));
        QVERIFY(o.result.opened);
        QCOMPARE(o.messages.size(), 2);  // the line was cut, then the text
        QVERIFY(o.messages[0].contains(QStringLiteral("longer than")));
        QCOMPARE(o.data.spineText.size(), kMaxTextChars);
        // The lines after the long one are read in step.
        QCOMPARE(o.data.spineFont.size, 12);
        QVERIFY(o.data.spinesHidden);
    }
};

QTEST_GUILESS_MAIN(TestProjectFileHostile)
#include "test_projectfile_hostile.moc"
