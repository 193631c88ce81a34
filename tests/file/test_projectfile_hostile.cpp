// Damaged and hostile project files and value files: every one must end in a
// clear message or a clean partial read, quickly and without eating memory.
#include "file/ProjectFile.h"
#include "file/FieldValues.h"
#include "model/Global.h"
#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>
#include <sys/resource.h>

using namespace jk;

namespace {

void freshState()
{
    G() = Global();
    G().createTables(TableSizing::NewProject);
}

QByteArray crlf(const QByteArrayList& lines)
{
    QByteArray out;
    for (const QByteArray& l : lines) out += l + "\r\n";
    return out;
}

void writeFile(const QString& path, const QByteArray& data)
{
    QFile f(path);
    QVERIFY2(f.open(QIODevice::WriteOnly), qPrintable(path));
    f.write(data);
}

struct Outcome {
    ProjectReadResult result;
    QStringList messages;
    QString all() const { return messages.join(u'\n'); }
};

Outcome readBytes(const QByteArray& data, const QString& dir = {})
{
    QByteArray copy = data;
    QBuffer buf(&copy);
    buf.open(QIODevice::ReadOnly);
    Outcome o;
    o.result = readProjectData(buf, QStringLiteral("bad.prj"), dir,
                               [&o](const QString& text, const QString&) { o.messages << text; });
    return o;
}

Outcome readPath(const QString& path)
{
    Outcome o;
    o.result = readProject(path, [&o](const QString& text, const QString&) { o.messages << text; });
    return o;
}

QByteArrayList header(const QByteArray& spineTitle = "Spine")
{
    return {" 3 ", " 1 ", "Arial", spineTitle, " 16777215 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 8 "};
}

QByteArrayList styleLines()
{
    return {"Arial", " 10 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 16777215 ", " 0 ",
            " 10 ", " 20 ", " 1000 ", " 200 "};
}

QByteArrayList pictureLines(int sheet, const QByteArray& file)
{
    return {" " + QByteArray::number(sheet) + " ", file, " 1 ", " 2 ", " 3 ", " 4 ", " 1 "};
}

// A project with every record kind, as the writer makes it.
QByteArray richProject()
{
    freshState();
    Global& g = G();
    g.sheetComposition = 13;
    g.spineText = QStringLiteral("Spine");
    g.backgrounds[1] = {QStringLiteral("~255")};
    g.pictures.append({FmtCdRom, QStringLiteral("/p/a.png"), 1, 2, 3, 4, 1});
    TextStyle s;
    s.fontName = QStringLiteral("Arial");
    g.freeText.append({FmtSimple, QStringLiteral("one\r\ntwo\r\n"), s});
    g.pageText.append({FmtDouble, QStringLiteral("page\r\n"), s});
    g.charFields.append({FmtSimple, QStringLiteral("/nowhere/values.txt"), QString(), s});
    g.numFields.append({FmtInside, 2, 7, 0, s});
    return projectFileBytes();
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
    void init() { freshState(); }

    void truncatedAtEveryLineAndInsideLines()
    {
        const QByteArray full = richProject();
        QCOMPARE(readBytes(full).result.errors, 0);
        QList<qsizetype> cuts;
        for (qsizetype i = 0; i < full.size(); ++i)
            if (full[i] == '\n') cuts << i + 1 << i;  // after a line, and inside its CR LF
        cuts << 0 << 1 << 5;
        QElapsedTimer t;
        t.start();
        for (qsizetype cut : cuts) {
            if (cut >= full.size() - 1) continue;  // the last value is complete
            const Outcome o = readBytes(full.left(cut));
            QVERIFY2(o.result.errors >= 1, qPrintable(QString::number(cut)));
            QVERIFY(o.messages.size() >= 1 && o.messages.size() <= kMaxReportedErrors + 1);
            QVERIFY2(o.all().contains(QStringLiteral("ends too early")), qPrintable(o.all()));
            QVERIFY(G().freeText.count() <= 1 && G().pictures.count() <= 1);
        }
        QVERIFY(t.elapsed() < 5000);
    }

    void badCounts()
    {
        // 32767 pictures in a short file: the table overflows, then the file ends.
        QByteArrayList lines = header();
        lines << " 32767 " << " 0 ";
        for (int i = 0; i < 3; ++i) lines += pictureLines(1, "a.png");
        Outcome o = readBytes(crlf(lines));
        QCOMPARE(G().pictures.count(), 50);  // the count is bounded by the table
        QCOMPARE(G().pictures.at(3).file, QStringLiteral("a.png"));  // what could be read stays
        QVERIFY(G().pictures.at(4).isFree());
        QVERIFY(o.all().contains(QStringLiteral("ends too early")));

        // A negative count reads no record and says so.
        lines = header();
        lines << "-5 " << " 0 " << " 0 " << " 0 " << " 0 " << " 0 " << " 0 ";
        o = readBytes(crlf(lines));
        QVERIFY2(o.all().contains(QStringLiteral("-5 is not valid")), qPrintable(o.all()));
        QCOMPARE(G().pictures.count(), 0);

        // More pictures than the table holds: 50 kept, the rest read past and
        // dropped, so the records after them are still read in step.
        lines = header();
        lines << " 60 " << " 0 ";
        for (int i = 1; i <= 60; ++i) lines += pictureLines(8, "pic" + QByteArray::number(i) + ".png");
        lines << " 1 " << " 1 " << "~@&" << "after the pictures" << "~@&";
        lines += styleLines();
        lines << " 0 " << " 0 " << " 0 " << " 0 ";
        o = readBytes(crlf(lines));
        QCOMPARE(o.messages.size(), 1);
        QVERIFY2(o.all().contains(QStringLiteral("more than the 50")), qPrintable(o.all()));
        QCOMPARE(G().pictures.count(), 50);
        QCOMPARE(G().pictures.at(50).file, QStringLiteral("pic50.png"));
        QCOMPARE(G().freeText.at(1).text, QStringLiteral("after the pictures\r\n"));

        // Numbers too large for their field are skipped without a message;
        // text where a number belongs is reported.
        lines = header();
        lines[10] = " 99999999999999999999999 ";  // spine size: overflow
        lines[6] = " 300 ";                        // underline is a byte
        lines << " 0 " << " 0 " << " 1 " << " 1 " << "~@&" << "x" << "~@&";
        QByteArrayList st = styleLines();
        st[1] = " 40000 ";  // font size is 16-bit
        st[6] = "red";
        lines += st;
        lines << " 0 " << " 0 " << " 0 " << " 0 ";
        o = readBytes(crlf(lines));
        QCOMPARE(o.messages.size(), 1);
        QVERIFY2(o.all().contains(QStringLiteral("\"red\" is not a number")), qPrintable(o.all()));
        QCOMPARE(G().spineFont.size, 8);
        QCOMPARE(G().spineFont.underline, quint8(0));
        QCOMPARE(G().freeText.at(1).style.fontSize, i16(0));
        QCOMPARE(G().freeText.at(1).style.width, i16(1000));
    }

    void backgroundCodesOutsideTheSheets()
    {
        QByteArrayList lines = header();
        lines << " 0 " << " 3 " << " 0 " << "~1" << " 99 " << "~2" << " 16 " << "~3";
        lines << " 0 " << " 0 " << " 0 " << " 0 " << " 0 ";
        const Outcome o = readBytes(crlf(lines));
        QCOMPARE(o.messages.size(), 2);
        QVERIFY(o.messages[0].contains(QStringLiteral("background code 0")));
        QVERIFY(o.messages[1].contains(QStringLiteral("background code 99")));
        QCOMPARE(G().backgrounds[16].text, QStringLiteral("~3"));
        QCOMPARE(G().spinesHidden, i16(0));
    }

    void textBlockWithoutClosingMarker()
    {
        QByteArrayList lines = header();
        lines << " 0 " << " 0 " << " 1 " << " 1 " << "~@&" << "first" << "second";
        const Outcome o = readBytes(crlf(lines));
        QCOMPARE(G().freeText.count(), 1);
        QCOMPARE(G().freeText.at(1).text, QStringLiteral("first\r\nsecond\r\n"));
        QCOMPARE(o.messages.size(), 1);
        QVERIFY(o.all().contains(QStringLiteral("ends too early")));

        // A huge block is cut, and the marker after it is still found.
        lines = header();
        lines << " 0 " << " 0 " << " 1 " << " 1 " << "~@&";
        const QByteArray line(1000, 'x');
        for (int i = 0; i < 200; ++i) lines << line;
        lines << "~@&";
        lines += styleLines();
        lines << " 0 " << " 0 " << " 0 " << " 0 ";
        const Outcome big = readBytes(crlf(lines));
        QCOMPARE(big.messages.size(), 1);
        QVERIFY(G().freeText.at(1).text.size() <= kMaxTextChars);
        QCOMPARE(G().freeText.at(1).style.width, i16(1000));
    }

    void fiftyMegabyteLine()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("long.prj");
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly));
            QByteArrayList head = header();
            head.removeLast();
            head.removeLast();
            head.removeLast();
            head.removeLast();
            head.removeLast();
            head.removeLast();
            head.removeLast();
            head.removeLast();  // up to the spine font name
            f.write(crlf(head));
            const QByteArray chunk(1 << 20, 'A');
            for (int i = 0; i < 50; ++i) f.write(chunk);
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
        QCOMPARE(G().spineText.size(), kMaxTextChars);
        // The lines after the long one are read in step.
        QCOMPARE(G().spineFont.size, 12);
        QCOMPARE(G().spinesHidden, true);
    }

    void binaryJunk()
    {
        QRandomGenerator rng(20240611);
        for (int round = 0; round < 50; ++round) {
            QByteArray junk(int(rng.bounded(1, 20000)), Qt::Uninitialized);
            for (char& c : junk) c = char(rng.bounded(256));
            if (round % 2) junk.prepend(" 3 \r\n");
            const Outcome o = readBytes(junk);
            QVERIFY(o.result.errors >= 1);
            QVERIFY(o.messages.size() <= kMaxReportedErrors + 1);
            if (o.result.errors > kMaxReportedErrors)
                QVERIFY(o.messages.last().contains(QStringLiteral("further errors")));
        }
    }

    void unreadableProjectPaths()
    {
        QTemporaryDir dir;
        Outcome o = readPath(dir.path());
        QVERIFY(!o.result.opened);
        QCOMPARE(G().readSuccess, false);
        QVERIFY(o.all().contains(QStringLiteral("folder")));
        o = readPath(QStringLiteral("/dev/zero"));
        QVERIFY(!o.result.opened);
        QVERIFY(o.all().contains(QStringLiteral("not a regular file")));
        o = readPath(dir.filePath("missing.prj"));
        QVERIFY(!o.result.opened);
        QVERIFY(o.all().contains(QStringLiteral("does not exist")));
        QCOMPARE(o.messages.size(), 1);
        QCOMPARE(G().projectFileName, dir.filePath("missing.prj"));
        const QString huge = dir.filePath("huge.prj");
        {
            QFile f(huge);
            QVERIFY(f.open(QIODevice::WriteOnly));
            QVERIFY(f.resize(kMaxProjectFileBytes + 1));  // sparse: no disk used
        }
        o = readPath(huge);
        QVERIFY(!o.result.opened);
        QVERIFY(o.all().contains(QStringLiteral("too large")));
    }

    void hostileValueFiles()
    {
        QTemporaryDir dir;
        const QString huge = dir.filePath("huge.txt");
        {
            QFile f(huge);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write("first\r\n");
            QVERIFY(f.resize(100LL * 1024 * 1024));  // 100 MB, mostly NUL bytes
        }
        const QString binary = dir.filePath("binary.txt");
        QByteArray junk(300000, Qt::Uninitialized);
        QRandomGenerator rng(7);
        for (char& c : junk) c = char(rng.bounded(256));
        writeFile(binary, junk);

        QElapsedTimer t;
        t.start();
        QVERIFY(readFieldValues(dir.path()).isEmpty());
        QVERIFY(readFieldValues(QStringLiteral("/dev/zero")).isEmpty());
        QVERIFY(firstFieldValue(QStringLiteral("/dev/zero")).isEmpty());
        QCOMPARE(firstFieldValue(huge), QStringLiteral("first"));
        const QStringList many = readFieldValues(huge);
        QVERIFY(!many.isEmpty() && many.first() == QStringLiteral("first"));
        readFieldValues(binary);
        // Binary lines are no values: stepping refuses them, so no first
        // value is shown either.
        QVERIFY(firstFieldValue(binary).isEmpty());
        QVERIFY2(t.elapsed() < 3000, qPrintable(QString::number(t.elapsed())));

        // The same paths named by character fields of a project.
        QByteArrayList lines = header();
        lines << " 0 " << " 0 " << " 0 " << " 0 " << " 3 ";
        for (const QString& p : {dir.path(), QStringLiteral("/dev/zero"), huge}) {
            lines << " 1 " << p.toUtf8();
            lines += styleLines();
        }
        lines << " 0 " << " 0 ";
        t.restart();
        const Outcome o = readBytes(crlf(lines));
        QVERIFY(t.elapsed() < 3000);
        QVERIFY2(o.messages.isEmpty(), qPrintable(o.all()));
        QCOMPARE(G().charFields.count(), 3);
        QVERIFY(G().charFields.at(1).text.isEmpty());
        QVERIFY(G().charFields.at(2).text.isEmpty());
        QCOMPARE(G().charFields.at(3).text, QStringLiteral("first"));
    }

    // Inputs the fuzzer found interesting: each must read without a crash,
    // show at most the capped number of messages, and leave a state whose
    // saved form reads back cleanly.
    void fuzzCorpus()
    {
        const QString corpus = qEnvironmentVariable("JK_TEST_DATA", QStringLiteral(JK_SOURCE_DIR "/tests/data")) +
                               QStringLiteral("/prj-corpus");
        QDirIterator it(corpus, QDir::Files);
        int files = 0;
        while (it.hasNext()) {
            const QString path = it.next();
            QFile f(path);
            QVERIFY(f.open(QIODevice::ReadOnly));
            freshState();
            const Outcome first = readBytes(f.readAll());
            QVERIFY2(first.messages.size() <= kMaxReportedErrors + 1, qPrintable(path));
            G().sheetComposition = i16(first.result.composition);
            const QByteArray saved = projectFileBytes();
            freshState();
            const Outcome again = readBytes(saved);
            QVERIFY2(again.messages.isEmpty(), qPrintable(path + u'\n' + again.all()));
            ++files;
        }
        QVERIFY2(files >= 4, qPrintable(corpus));
    }
};

QTEST_GUILESS_MAIN(TestProjectFileHostile)
#include "test_projectfile_hostile.moc"
