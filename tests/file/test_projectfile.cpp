// The project file: byte layout, reading back, older files, encodings and
// the atomic save. Hostile input lives in test_projectfile_hostile.cpp.
#include "file/ProjectFile.h"
#include "file/FieldValues.h"
#include "model/Global.h"
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

using namespace jk;

namespace {

QByteArray crlf(QByteArrayList lines)
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

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

struct Collected {
    QStringList texts, titles;
    ProjectErrorReporter reporter()
    {
        return [this](const QString& text, const QString& title) {
            texts << text;
            titles << title;
        };
    }
};

ProjectReadResult readBytes(const QByteArray& data, Collected* c = nullptr, const QString& dir = {})
{
    QByteArray copy = data;
    QBuffer buf(&copy);
    buf.open(QIODevice::ReadOnly);
    return readProjectData(buf, QStringLiteral("test.prj"), dir, c ? c->reporter() : ProjectErrorReporter{});
}

TextStyle style(i16 top, i16 left)
{
    TextStyle s;
    s.fontName = QStringLiteral("Arial");
    s.fontSize = 12;
    s.bold = true;
    s.italic = false;
    s.strikethru = true;
    s.underline = -1;
    s.foreColor = 255;
    s.backStyle = 1;
    s.borderStyle = 1;
    s.backColor = -2147483643;  // a system colour, negative as a long
    s.alignment = 2;
    s.top = top;
    s.left = left;
    s.width = 2000;
    s.height = 300;
    return s;
}

QByteArrayList styleLines(const char* top, const char* left)
{
    return {"Arial", " 12 ", "-1 ", " 0 ", "-1 ", "-1 ", " 255 ", " 1 ", " 1 ", "-2147483643 ", " 2 ",
            top, left, " 2000 ", " 300 "};
}

bool sameStyle(const TextStyle& a, const TextStyle& b)
{
    return a.fontName == b.fontName && a.fontSize == b.fontSize && a.bold == b.bold && a.italic == b.italic &&
           a.strikethru == b.strikethru && a.underline == b.underline && a.foreColor == b.foreColor &&
           a.backStyle == b.backStyle && a.borderStyle == b.borderStyle && a.backColor == b.backColor &&
           a.alignment == b.alignment && a.top == b.top && a.left == b.left && a.width == b.width &&
           a.height == b.height;
}

// A clean state at the same address, so references to G() stay valid.
void freshState()
{
    G() = Global();
    G().createTables(TableSizing::NewProject);
}

}  // namespace

class TestProjectFile : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { freshState(); }

    void writesTheEmptyProjectInEighteenLines()
    {
        Global& g = G();
        g.sheetComposition = 5;
        g.spinesHidden = true;
        const QByteArray expected = crlf({" 3 ", " 5 ", "", "", " 16777215 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ",
                                          " 8 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", "-1 "});
        QCOMPARE(projectFileBytes(), expected);
        QCOMPARE(projectFileBytes().count("\r\n"), 18);
    }

    void writesTextBlocksBetweenMarkersWithNegativePositionsAsZero()
    {
        Global& g = G();
        g.sheetComposition = 2;
        g.freeText.append({FmtDouble, QStringLiteral("First\r\nSecond\r\nThird\r\n"), style(-15, -300)});
        g.freeText.append({FmtDouble, QString(), style(0, 0)});  // a free slot is not written
        // A dialog's text with bare LF and no final break gives the same lines.
        g.pageText.append({FmtDouble, QStringLiteral("First\nSecond\nThird"), style(40, -1)});
        QByteArrayList lines = {" 3 ", " 2 ", "", "", " 16777215 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 8 ",
                                " 0 ", " 0 ", " 1 ", " 2 ", "~@&", "First", "Second", "Third", "~@&"};
        lines += styleLines(" 0 ", " 0 ");
        lines += QByteArrayList{" 1 ", " 2 ", "~@&", "First", "Second", "Third", "~@&"};
        lines += styleLines(" 40 ", " 0 ");
        lines += QByteArrayList{" 0 ", " 0 ", " 0 "};
        QCOMPARE(projectFileBytes(), crlf(lines));
        // The records themselves keep the corrected positions.
        QCOMPARE(g.freeText.at(1).style.top, i16(0));
        QCOMPARE(g.freeText.at(1).style.left, i16(0));
        QCOMPARE(g.pageText.at(1).style.top, i16(40));
        QCOMPARE(g.pageText.at(1).style.left, i16(0));
    }

    void writesEveryRecordKindInItsLayout()
    {
        Global& g = G();
        g.sheetComposition = 13;
        g.spineText = QStringLiteral("Spine text");
        g.spineTitle = QStringLiteral("stale");
        g.spineFont = {QStringLiteral("Times New Roman"), 65280, -1, true, false, true, true, 10};
        g.backgrounds[8] = {QStringLiteral("~16711680")};
        g.backgrounds[1] = {QStringLiteral("/pics/back.bmp")};
        g.pictures.append({FmtCdRom, QStringLiteral("/pics/a.jpg"), -20, 30, 1440, 720, 2});
        g.pictures.append({FmtCdRom, QString(), 0, 0, 0, 0, 1});
        g.charFields.append({FmtSimple, QStringLiteral("/data/names.txt"), QStringLiteral("Ann"), style(-5, 10)});
        g.numFields.append({FmtInside, 3, 42, true, style(100, 200)});
        g.numFields.append({FmtInside, 2, 0, false, style(0, 0)});  // number 0: a free slot
        g.spinesHidden = false;
        QByteArrayList lines = {" 3 ", " 13 ", "Times New Roman", "Spine text", " 65280 ", "-1 ", " 1 ", " 0 ",
                                "-1 ", " 1 ", " 10 ", " 1 ", " 2 ", " 1 ", "/pics/back.bmp", " 8 ",
                                "~16711680", " 8 ", "/pics/a.jpg", "-20 ", " 30 ", " 1440 ", " 720 ", " 2 ",
                                " 0 ", " 0 ", " 1 ", " 1 ", "/data/names.txt"};
        lines += styleLines("-5 ", " 10 ");  // fields keep negative positions
        lines += QByteArrayList{" 1 ", " 4 ", " 3 ", "1", " 1 "};
        lines += styleLines(" 100 ", " 200 ");
        lines += QByteArrayList{" 0 "};
        QCOMPARE(projectFileBytes(), crlf(lines));
        QCOMPARE(g.spineTitle, QStringLiteral("Spine text"));
    }

    void readsBackEveryRecordKindCompacted()
    {
        QTemporaryDir dir;
        const QString values = dir.filePath("names.txt");
        writeFile(values, "\r\n  , \"Smith, Ann\" ,Bob\r\nCarl\r\n");
        const QString picture = dir.filePath("a.png");
        writeFile(picture, "not really a picture");
        Global& g = G();
        g.sheetComposition = 14;
        g.spineText = QStringLiteral("Best of");
        g.spineFont = {QStringLiteral("Arial"), 255, 65535, true, true, true, false, 12};
        g.backgrounds[2] = {QStringLiteral("~255")};
        g.backgrounds[4] = {picture};
        g.pictures.append({FmtDouble, QString(), 0, 0, 0, 0, 1});
        g.pictures.append({FmtDouble, picture, 100, 200, 300, 400, 2});
        g.freeText.append({FmtInside, QString(), style(0, 0)});
        g.freeText.append({FmtInside, QStringLiteral("Hello\r\n\r\nWorld é €\r\n"), style(10, 20)});
        g.pageText.append({FmtDouble, QStringLiteral("Track 1\r\n"), style(30, 40)});
        g.charFields.append({FmtCdRom, QString(), QString(), style(0, 0)});
        g.charFields.append({FmtCdRom, values, QStringLiteral("Carl"), style(50, 60)});
        g.numFields.append({FmtInside, 4, 17, 0, style(70, 80)});
        g.spinesHidden = true;
        const QString path = dir.filePath("p.prj");
        QString error;
        QVERIFY2(writeProject(path, &error), qPrintable(error));

        freshState();
        g.projectFilePath = QStringLiteral("/somewhere/else.prj");
        Collected c;
        const ProjectReadResult r = readProject(path, c.reporter());
        QVERIFY2(c.texts.isEmpty(), qPrintable(c.texts.join('\n')));
        QVERIFY(r.opened && !r.olderFile && r.exportEnabled);
        QCOMPARE(r.composition, 14);
        QCOMPARE(g.readSuccess, true);
        QCOMPARE(g.projectFileName, path);
        QVERIFY(g.projectFilePath.isEmpty());
        QCOMPARE(g.sheetComposition, i16(0));  // the open procedure adds the sheets' codes
        QCOMPARE(g.doubleChoice, true);
        QCOMPARE(g.insideChoice, true);
        QCOMPARE(g.cdChoice, true);
        QCOMPARE(g.simpleChoice, false);
        QCOMPARE(g.spineText, QStringLiteral("Best of"));
        QCOMPARE(g.spineFont.name, QStringLiteral("Arial"));
        QCOMPARE(g.spineFont.backColor, 255);
        QCOMPARE(g.spineFont.foreColor, 65535);
        QCOMPARE(g.spineFont.size, 12);
        QCOMPARE(g.spinesHidden, true);
        QCOMPARE(g.backgrounds[2].text, QStringLiteral("~255"));
        QCOMPARE(g.backgrounds[4].text, picture);
        // Open-project capacities.
        QCOMPARE(g.charFields.capacity(), 50);
        QCOMPARE(g.numFields.capacity(), 50);
        // Free slots are gone: every record moved to slot 1.
        QCOMPARE(g.pictures.count(), 1);
        QCOMPARE(g.pictures.at(1).file, picture);
        QCOMPARE(g.pictures.at(1).top, i16(100));
        QCOMPARE(g.pictures.at(1).height, i16(400));
        QCOMPARE(g.pictures.at(1).displayMode, i16(2));
        QCOMPARE(g.freeText.count(), 1);
        QCOMPARE(g.freeText.at(1).text, QStringLiteral("Hello\r\n\r\nWorld é €\r\n"));
        QVERIFY(sameStyle(g.freeText.at(1).style, style(10, 20)));
        QCOMPARE(g.pageText.at(1).text, QStringLiteral("Track 1\r\n"));
        QCOMPARE(g.charFields.count(), 1);
        QCOMPARE(g.charFields.at(1).valueFile, values);
        QCOMPARE(g.charFields.at(1).text, QStringLiteral("Smith, Ann"));  // the first non-empty value
        QVERIFY(sameStyle(g.charFields.at(1).style, style(50, 60)));
        QCOMPARE(g.numFields.count(), 1);
        QCOMPARE(g.numFields.at(1).number, i16(1));  // every field starts at 1 again
        QCOMPARE(g.numFields.at(1).digits, i16(4));
        QVERIFY(sameStyle(g.numFields.at(1).style, style(70, 80)));

        // A second cycle gives the same bytes.
        g.sheetComposition = i16(r.composition);
        const QByteArray once = readAll(path);
        QVERIFY(writeProject(path, &error));
        QCOMPARE(readAll(path), once);
    }

    void readsOlderFilesAndKeepsTheCallersSpineFont()
    {
        Global& g = G();
        g.spineFont = {QString(), 16777215, 0, 0, 0, 0, 0, 8};
        g.spinesHidden = true;
        QByteArrayList lines = {" 9 ", "Arial", "Old spine", " 1 ", " 1 ", " 1 ", "C:\\PICS\\LOGO.BMP",
                                " 8 ", "pic.bmp", " 10 ", " 20 ", " 30 ", " 40 ", " 1 ", " 8 ", "~@&", "Old", "~@&"};
        lines += styleLines(" 5 ", " 6 ");
        lines += QByteArrayList{" 0 ", " 0 ", " 0 "};
        Collected c;
        const ProjectReadResult r = readBytes(crlf(lines), &c);
        QVERIFY2(c.texts.isEmpty(), qPrintable(c.texts.join('\n')));
        QVERIFY(r.olderFile);
        QCOMPARE(r.composition, 9);
        QCOMPARE(g.simpleChoice, true);
        QCOMPARE(g.cdChoice, true);
        QCOMPARE(g.spineFont.name, QStringLiteral("Arial"));
        QCOMPARE(g.spineFont.backColor, 16777215);
        QCOMPARE(g.spineFont.size, 8);
        QCOMPARE(g.spineText, QStringLiteral("Old spine"));
        QCOMPARE(g.backgrounds[1].text, QStringLiteral("C:\\PICS\\LOGO.BMP"));
        QCOMPARE(g.pictures.count(), 1);
        QCOMPARE(g.pictures.at(1).height, i16(40));
        QCOMPARE(g.pictures.at(1).displayMode, i16(1));
        QCOMPARE(g.freeText.at(1).text, QStringLiteral("Old\r\n"));
        QCOMPARE(g.freeText.at(1).style.left, i16(6));
        QCOMPARE(g.spinesHidden, false);  // older files have no switch: cleared

        // A file whose first value is 3 is taken for version 3 — and an
        // older file that starts with the composition 3 cannot be told apart.
        // Bare LF lines read the same as CR LF.
        freshState();
        QByteArray lf = crlf({" 3 ", " 16 ", "", "", " 1 ", " 2 ", " 0 ", " 0 ", " 0 ", " 0 ", " 9 ", " 0 ", " 0 ",
                              " 0 ", " 0 ", " 0 ", " 0 ", " 0 "});
        lf.replace("\r\n", "\n");
        const ProjectReadResult jacket = readBytes(lf, &c);
        QVERIFY(!jacket.olderFile);
        QVERIFY(!jacket.exportEnabled);  // a paper jacket alone exports nothing
        QCOMPARE(G().jacketChoice, true);
        QCOMPARE(G().spineFont.size, 9);
    }

    void compositionsWithBothCoversKeepTheChoices_data()
    {
        QTest::addColumn<int>("composition");
        QTest::addColumn<bool>("kept");
        for (int v : {0, 3, 7, 11, 15, 17, 20, 31, 32, -1}) QTest::addRow("%d", v) << v << true;
        for (int v : {1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 16, 24}) QTest::addRow("%d", v) << v << false;
    }
    void compositionsWithBothCoversKeepTheChoices()
    {
        QFETCH(int, composition);
        QFETCH(bool, kept);
        Global& g = G();
        g.simpleChoice = g.doubleChoice = g.insideChoice = g.cdChoice = g.jacketChoice = true;
        const QByteArray file = crlf({" 3 ", QByteArray::number(composition), "", "", " 0 ", " 0 ", " 0 ", " 0 ",
                                      " 0 ", " 0 ", " 8 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 "});
        Collected c;
        const ProjectReadResult r = readBytes(file, &c);
        QVERIFY(c.texts.isEmpty());
        QCOMPARE(r.composition, composition);
        const QList<bool> flags = {g.simpleChoice, g.doubleChoice, g.insideChoice, g.cdChoice, g.jacketChoice};
        const QList<bool> bits = {(composition & 1) != 0, (composition & 2) != 0, (composition & 4) != 0,
                                  (composition & 8) != 0, (composition & 16) != 0};
        QCOMPARE(flags, kept ? QList<bool>(5, true) : bits);
    }

    void earlyMarkerEndsTheTextAndShiftsTheValues()
    {
        // "~@&" typed as a text line is written as is; reading stops the text
        // there and takes the next lines for the following values.
        Global& g = G();
        g.freeText.append({FmtSimple, QStringLiteral("before\r\n~@&\r\nafter\r\n"), style(0, 0)});
        const QByteArray bytes = projectFileBytes();
        freshState();
        Collected c;
        readBytes(bytes, &c);
        QCOMPARE(g.freeText.at(1).text, QStringLiteral("before\r\n"));
        QCOMPARE(g.freeText.at(1).style.fontName, QStringLiteral("after"));
        QVERIFY(!c.texts.isEmpty());
        QVERIFY(c.texts.first().contains(QStringLiteral("\"~@&\" is not a number")));
        QCOMPARE(c.titles.first(), QStringLiteral("Jewelcase Studio"));
        G().texts.messages[27] = QStringLiteral("Project error");
        readBytes(bytes, &c);
        QCOMPARE(c.titles.last(), QStringLiteral("Project error"));
    }

    void spineLinkedFieldSetsTheSpineNumber()
    {
        Global& g = G();
        g.spineText = QStringLiteral("My Disc");
        g.numFields.append({FmtInside, 3, 5, 1, style(0, 0)});
        g.numFields.append({FmtInside, 2, 5, 0, style(0, 0)});  // no link: no effect
        const QByteArray bytes = projectFileBytes();
        freshState();
        readBytes(bytes);
        QCOMPARE(g.spineNumberText, QStringLiteral("001"));
        QCOMPARE(g.spineTitle, QStringLiteral("My Disc 001"));
        // The title less the number and its separating blank, so saving and
        // reopening again and again keeps the text as it was.
        QCOMPARE(g.spineText, QStringLiteral("My Disc"));
        const QByteArray again = projectFileBytes();
        freshState();
        readBytes(again);
        QCOMPARE(g.spineText, QStringLiteral("My Disc"));
        QCOMPARE(projectFileBytes(), again);

        // Digit counts outside 1-4 give no number text; the spine text still
        // loses that many characters.
        freshState();
        g.spineText = QStringLiteral("ABCDEFG");
        g.numFields.append({FmtInside, 5, 1, 1, style(0, 0)});
        readBytes(projectFileBytes());
        QCOMPARE(g.spineTitle, QStringLiteral("ABCDEFG  "));
        QCOMPARE(g.spineText, QStringLiteral("ABCD"));
    }

    void encodingsOnWritingAndReading()
    {
        Global& g = G();
        // Fits Windows-1252: é is one byte, € is 0x80.
        g.spineText = QStringLiteral("Café €5");
        QByteArray bytes = projectFileBytes();
        QVERIFY(bytes.contains("Caf\xE9 \x80" "5\r\n"));
        freshState();
        readBytes(bytes);
        QCOMPARE(g.spineText, QStringLiteral("Café €5"));

        // Does not fit: the whole file is UTF-8.
        g.spineText = QStringLiteral("Café 日本");
        bytes = projectFileBytes();
        QVERIFY(bytes.contains("Caf\xC3\xA9 \xE6\x97\xA5\xE6\x9C\xAC\r\n"));
        freshState();
        readBytes(bytes);
        QCOMPARE(g.spineText, QStringLiteral("Café 日本"));

        // Windows-1252 bytes that form valid UTF-8 ("Ã©") would read back as
        // "é": such text is written as UTF-8 instead.
        g.spineText = QStringLiteral("Ã©");
        bytes = projectFileBytes();
        QVERIFY(bytes.contains("\xC3\x83\xC2\xA9"));
        freshState();
        readBytes(bytes);
        QCOMPARE(g.spineText, QStringLiteral("Ã©"));

        // A value that starts with U+FEFF keeps it; only the file's own
        // byte-order mark is dropped (found by fuzzing).
        g.spineFont.name = QStringLiteral("\uFEFFA");
        g.spineText = QStringLiteral("\uFEFF\uFEFFB");
        bytes = projectFileBytes();
        freshState();
        readBytes(bytes);
        QCOMPARE(g.spineFont.name, QStringLiteral("\uFEFFA"));
        QCOMPARE(g.spineText, QStringLiteral("\uFEFF\uFEFFB"));

        // A UTF-8 file from another editor, with a byte-order mark.
        readBytes("\xEF\xBB\xBF 3 \r\n 1 \r\nFont\r\nT\xC3\xBCte\r\n");
        QCOMPARE(g.spineText, QStringLiteral("Tüte"));
        QCOMPARE(g.simpleChoice, true);
    }

    void missingPicturesAreFoundBesideTheProject()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("logo.bmp"), "BM");
        writeFile(dir.filePath("Back.JPG"), "x");
        writeFile(dir.filePath("values.txt"), "One\r\nTwo\r\n");
        QByteArrayList lines = {" 3 ", " 1 ", "", "", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 8 ",
                                " 2 ", " 1 ", " 1 ", "D:\\Backs\\back.jpg", " 1 ", "C:\\PICS\\LOGO.BMP", " 0 ",
                                " 0 ", " 10 ", " 10 ", " 1 ", " 1 ", "/nowhere/missing.png", " 0 ", " 0 ", " 10 ",
                                " 10 ", " 1 ", " 0 ", " 0 ", " 1 ", " 1 ", "A:\\VALUES.TXT"};
        lines += styleLines(" 0 ", " 0 ");
        lines += QByteArrayList{" 0 ", " 0 "};
        const QString path = dir.filePath("old.prj");
        writeFile(path, crlf(lines));
        Collected c;
        readProject(path, c.reporter());
        QVERIFY2(c.texts.isEmpty(), qPrintable(c.texts.join('\n')));
        Global& g = G();
        QCOMPARE(g.pictures.at(1).file, dir.filePath("logo.bmp"));
        QCOMPARE(g.pictures.at(2).file, QStringLiteral("/nowhere/missing.png"));  // nothing found: kept
        QCOMPARE(g.backgrounds[1].text, dir.filePath("Back.JPG"));
        QCOMPARE(g.charFields.at(1).valueFile, dir.filePath("values.txt"));
        QCOMPARE(g.charFields.at(1).text, QStringLiteral("One"));
        // Relative names count from the project's folder.
        QCOMPARE(resolveBesideProject(QStringLiteral("logo.bmp"), dir.path()), dir.filePath("logo.bmp"));
        QCOMPARE(resolveBesideProject(QStringLiteral("~255"), dir.path()), QStringLiteral("~255"));
        QCOMPARE(resolveBesideProject(QString(), dir.path()), QString());
    }

    void failedSaveKeepsTheOldFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("keep.prj");
        G().spineText = QStringLiteral("old");
        QString error;
        QVERIFY(writeProject(path, &error));
        const QByteArray old = readAll(path);

        // Targets that fail whoever runs the test (CI runs as root).
        G().spineText = QStringLiteral("new");
        QVERIFY(!writeProject(dir.filePath("no/such/folder/p.prj"), &error));
        QVERIFY(error.contains(QStringLiteral("no/such/folder/p.prj")));
        QVERIFY(!writeProject(path + QStringLiteral("/p.prj"), &error));  // the "folder" is a file
        QVERIFY(!writeProject(QString(), &error));
        QCOMPARE(readAll(path), old);

        // A full disk, made real by a file-size limit (root is bound by it too).
        for (int i = 0; i < 50; ++i)
            G().freeText.append({FmtSimple, QStringLiteral("block %1\r\n").arg(i), style(0, 0)});
        struct rlimit saved;
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
        auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        struct rlimit small = saved;
        small.rlim_cur = 512;
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const bool written = writeProject(path, &error);
        setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, oldHandler);
        QVERIFY(!written);
        QVERIFY2(error.contains(QStringLiteral("too large")), qPrintable(error));
        QCOMPARE(readAll(path), old);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("keep.prj")});

        // A read-only folder: only meaningful when permissions bind us.
        if (geteuid() != 0) {
            QVERIFY(QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::ExeOwner));
            const bool ok = writeProject(path, &error);
            QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
            QVERIFY(!ok);
            QCOMPARE(readAll(path), old);
        }
    }

    void fieldValueFiles()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("v.txt");
        writeFile(path, "  Ann  \r\nBob,Carl\n\"Smith, Dan\" , Eve\r\n\r\n\"Fay\"\n");
        QCOMPARE(readFieldValues(path),
                 (QStringList{"Ann", "Bob", "Carl", "Smith, Dan", "Eve", "", "Fay"}));
        QCOMPARE(readFieldValues(path, 2), (QStringList{"Ann", "Bob"}));
        writeFile(path, "\r\n \r\n,Zoe\r\n");
        QCOMPARE(firstFieldValue(path), QStringLiteral("Zoe"));
        writeFile(path, QByteArray(40, ',') + "\r\n\r\n\"Late\"\r\n");
        QCOMPARE(firstFieldValue(path), QStringLiteral("Late"));
        writeFile(path, "Z\xFCrich\r\n");  // Windows-1252
        QCOMPARE(firstFieldValue(path), QStringLiteral("Zürich"));
        writeFile(path, "");
        QVERIFY(readFieldValues(path).isEmpty());
        QVERIFY(firstFieldValue(path).isEmpty());
        QVERIFY(readFieldValues(dir.filePath("missing.txt")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestProjectFile)
#include "test_projectfile.moc"
