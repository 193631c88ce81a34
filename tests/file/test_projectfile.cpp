// The project file: byte layout, reading back, older files, encodings, the
// atomic save and the corpus of odd files. Damaged input lives in
// test_projectfile_hostile.cpp.
#include "Fixture.h"
#include "file/ProjectFile.h"
#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <sys/resource.h>

using namespace jk;

namespace {

QByteArray crlf(const QByteArrayList& lines)
{
    QByteArray out;
    for (const QByteArray& l : lines) out += l + "\r\n";
    return out;
}

struct Read {
    ProjectData data;
    ProjectReadResult result;
    QStringList messages, titles;
};

// Reads bytes into `start` (what the caller held before the open).
Read readBytes(const QByteArray& bytes, ProjectData start = ProjectData())
{
    Read r;
    r.data = std::move(start);
    QByteArray copy = bytes;
    QBuffer buf(&copy);
    buf.open(QIODevice::ReadOnly);
    r.result = readProjectData(buf, r.data, QStringLiteral("test.prj"), {}, [&r](const QString& text, const QString& title) {
        r.messages << text;
        r.titles << title;
    });
    return r;
}

ProjectData blank()
{
    ProjectData d;
    d.createTables(TableSizing::NewProject);
    return d;
}

TextStyle style(i16 top, i16 left)
{
    // A system colour is negative as a long.
    return {QStringLiteral("Arial"), 12, true, false, true, true, 255, 1, 1, -2147483643, 2, top, left, 2000, 300};
}

QByteArrayList styleLines(const char* top, const char* left)
{
    return {"Arial", " 12 ", "-1 ", " 0 ", "-1 ", "-1 ", " 255 ", " 1 ", " 1 ", "-2147483643 ", " 2 ",
            top, left, " 2000 ", " 300 "};
}

}  // namespace

class TestProjectFile : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { fixture::resetApp(); }

    void everyRecordKindWrittenAndReadBack()
    {
        QTemporaryDir dir;
        const QString values = dir.filePath("names.txt"), path = dir.filePath("p.prj");
        QVERIFY(fixture::writeFile(values, "\r\n  , \"Smith, Ann\" ,Bob\r\nCarl\r\n"));
        ProjectData d = blank();
        d.sheetComposition = 13;
        d.spineText = QStringLiteral("Spine text");
        d.spineTitle = QStringLiteral("stale");
        d.spineFont = {QStringLiteral("Times New Roman"), 65280, -1, true, false, true, true, 10};
        d.backgrounds[16] = {QStringLiteral("~65280")};
        d.backgrounds[8] = {QStringLiteral("~16711680")};
        d.backgrounds[1] = {QStringLiteral("/pics/back.bmp")};
        // Free slots are not written.
        d.pictures.append({FmtCdRom, QString(), 0, 0, 0, 0, 1});
        d.pictures.append({FmtCdRom, QStringLiteral("/pics/a.jpg"), -20, 30, 1440, 720, 2});
        d.freeText.append({FmtDouble, QString(), style(0, 0)});
        d.freeText.append({FmtDouble, QStringLiteral("First\r\n\r\nCafé\r\n"), style(-15, -300)});
        // A dialog's text with bare LF and no final break gives the same lines.
        d.pageText.append({FmtDouble, QStringLiteral("First\nSecond\nThird"), style(40, -1)});
        d.charFields.append({FmtSimple, QString(), QString(), style(0, 0)});
        d.charFields.append({FmtSimple, values, QStringLiteral("Carl"), style(-5, 10)});
        d.numFields.append({FmtInside, 3, 42, true, style(100, 200)});
        d.numFields.append({FmtInside, 2, 0, false, style(0, 0)});
        d.spinesHidden = true;
        QByteArrayList lines = {" 3 ", " 13 ", "Times New Roman", "Spine text", " 65280 ", "-1 ", " 1 ", " 0 ",
                                "-1 ", " 1 ", " 10 ", " 1 ", " 3 ", " 1 ", "/pics/back.bmp", " 8 ", "~16711680",
                                " 16 ", "~65280", " 8 ", "/pics/a.jpg", "-20 ", " 30 ", " 1440 ", " 720 ", " 2 ",
                                " 1 ", " 2 ", "~@&", "First", "", "Caf\xE9", "~@&"};
        lines += styleLines(" 0 ", " 0 ");  // text blocks come back to the canvas's edge
        lines += QByteArrayList{" 1 ", " 2 ", "~@&", "First", "Second", "Third", "~@&"};
        lines += styleLines(" 40 ", " 0 ");
        lines += QByteArrayList{" 1 ", " 1 ", values.toUtf8()};
        lines += styleLines("-5 ", " 10 ");  // fields keep negative positions
        lines += QByteArrayList{" 1 ", " 4 ", " 3 ", "1", " 1 "};
        lines += styleLines(" 100 ", " 200 ");
        lines += QByteArrayList{"-1 "};
        QString error;
        QVERIFY2(writeProject(d, path, &error), qPrintable(error));
        QCOMPARE(fixture::readFile(path), crlf(lines));

        ProjectData back = blank();
        back.filePath = QStringLiteral("/somewhere/else.prj");
        QStringList messages;
        const ProjectReadResult r = readProject(path, back, [&](const QString& m, const QString&) { messages << m; });
        QVERIFY2(messages.isEmpty(), qPrintable(messages.join('\n')));
        QVERIFY(r.opened && !r.olderFile && r.exportEnabled && r.chosenSheets == 13 && back.fileName == path && back.filePath.isEmpty());
        QCOMPARE(back.sheetComposition, i16(0));  // opening the sheets adds their codes
        // Every record moved to slot 1.
        QVERIFY(back.pictures.count() == 1 && back.freeText.count() == 1 && back.charFields.count() == 1);
        QCOMPARE(back.charFields.at(1).text, QStringLiteral("Smith, Ann"));  // the first non-empty value
        // The linked field's number stood at the end of the spine line: the
        // title has it, the text loses it again with its blank.
        QVERIFY(back.spineNumberText == "001" && back.spineTitle == "Spine text 001");
        // Everything else comes back too: a second cycle gives the same bytes.
        back.sheetComposition = 13;
        QCOMPARE(projectFileBytes(back), crlf(lines));
    }

    void olderFilesLineEndsAndChosenSheets()
    {
        // No version line and no spine font values: the caller's font stays.
        QByteArrayList lines = {" 9 ", "Arial", "Old spine", " 1 ", " 1 ", " 1 ", "C:\\PICS\\LOGO.BMP",
                                " 8 ", "pic.bmp", " 10 ", " 20 ", " 30 ", " 40 ", " 1 ", " 8 ", "~@&", "Old", "~@&"};
        lines += styleLines(" 5 ", " 6 ");
        lines += QByteArrayList{" 0 ", " 0 ", " 0 "};
        ProjectData start = blank();
        start.spineFont.size = 11;
        start.spinesHidden = true;
        Read r = readBytes(crlf(lines), start);
        QVERIFY2(r.messages.isEmpty(), qPrintable(r.messages.join('\n')));
        QVERIFY(r.result.olderFile);
        QCOMPARE(r.result.chosenSheets, std::optional<int>(9));
        QVERIFY(r.data.spineFont.name == u"Arial" && r.data.spineFont.size == 11 && r.data.spineText == "Old spine");
        QCOMPARE(r.data.backgrounds[1].text, QStringLiteral("C:\\PICS\\LOGO.BMP"));
        QVERIFY(r.data.pictures.at(1).height == 40 && r.data.pictures.at(1).displayMode == 1 &&
                r.data.freeText.at(1).text == u"Old\r\n" && r.data.freeText.at(1).style.left == 6);
        QVERIFY(!r.data.spinesHidden);  // older files have no switch: cleared

        // Bare LF lines read as CR LF; a paper jacket alone exports nothing.
        auto version3 = [](int composition) {
            QByteArray b = crlf({" 3 ", QByteArray::number(composition), "", "", " 1 ", " 2 ", " 0 ", " 0 ", " 0 ",
                                 " 0 ", " 9 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 ", " 0 "});
            return b.replace("\r\n", "\n");
        };
        r = readBytes(version3(16));
        QVERIFY(r.messages.isEmpty() && !r.result.olderFile && !r.result.exportEnabled && r.data.spineFont.size == 9);
        // Both cover kinds, or no sheet at all, leave the choice of sheets alone.
        for (int c : {24, 13, 6}) QCOMPARE(readBytes(version3(c)).result.chosenSheets, std::optional<int>(c));
        for (int c : {0, 3, 7, 17, 32, -1}) QVERIFY2(!readBytes(version3(c)).result.chosenSheets, qPrintable(QString::number(c)));
    }

    void valuesTheReaderTakesOtherwise()
    {
        // "~@&" typed as a text line is written as is; reading stops the text
        // there and takes the next lines for the following values.
        ProjectData d = blank();
        d.freeText.append({FmtSimple, QStringLiteral("before\r\n~@&\r\nafter\r\n"), style(0, 0)});
        const QByteArray bytes = projectFileBytes(d);
        jk::resetApp();
        Read r = readBytes(bytes);
        QVERIFY(r.data.freeText.at(1).text == "before\r\n" && r.data.freeText.at(1).style.fontName == "after");
        QVERIFY(!r.messages.isEmpty() && r.messages.first().contains(QStringLiteral("\"~@&\" is not a number")));
        QCOMPARE(r.titles.first(), QStringLiteral("Jewelcase Studio"));  // no message file loaded
        jk::appSetup().texts.messages[std::size_t(Msg::ProgramTitle)] = QStringLiteral("Project error");
        QCOMPARE(readBytes(bytes).titles.first(), QStringLiteral("Project error"));

        // A spine-linked field with a digit code outside 1-4 has no number
        // text; the spine text still loses that many characters.
        d = blank();
        d.spineText = QStringLiteral("ABCDEFG");
        d.numFields.append({FmtInside, 5, 1, true, style(0, 0)});
        d.numFields.append({FmtInside, 2, 5, false, style(0, 0)});  // no link: no effect
        r = readBytes(projectFileBytes(d));
        QVERIFY(r.data.spineTitle == "ABCDEFG  " && r.data.spineText == "ABCD");
    }

    void encodingsOnWritingAndReading()
    {
        const struct {
            QString spine;
            QByteArray bytes;  // how the spine line is written
        } cases[] = {
            {QStringLiteral("Café €5"), "Caf\xE9 \x80" "5\r\n"},                      // fits Windows-1252
            {QStringLiteral("Café 日本"), "Caf\xC3\xA9 \xE6\x97\xA5\xE6\x9C\xAC\r\n"},  // does not: all UTF-8
            // Windows-1252 bytes that form valid UTF-8 would read back as "é".
            {QStringLiteral("Ã©"), "\xC3\x83\xC2\xA9\r\n"},
            // Only the file's own byte-order mark is dropped (found by fuzzing).
            {QStringLiteral("\uFEFF\uFEFFB"), "\xEF\xBB\xBF\xEF\xBB\xBF" "B\r\n"},
        };
        for (const auto& c : cases) {
            ProjectData d = blank();
            d.spineText = c.spine;
            const QByteArray bytes = projectFileBytes(d);
            QVERIFY2(bytes.contains("\r\n" + c.bytes), qPrintable(c.spine));
            QCOMPARE(readBytes(bytes).data.spineText, c.spine);
        }
        // A UTF-8 file from another editor, with a byte-order mark.
        const Read r = readBytes("\xEF\xBB\xBF 3 \r\n 1 \r\nFont\r\nT\xC3\xBCte\r\n");
        QVERIFY(r.data.spineText == "Tüte" && r.result.chosenSheets == 1);
    }

    void missingFilesAreFoundBesideTheProject()
    {
        QTemporaryDir dir;
        for (const char* name : {"logo.bmp", "Back.JPG", "values.txt"})
            QVERIFY(fixture::writeFile(dir.filePath(name), "One\r\nTwo\r\n"));
        // Names from an older machine: looked up by base name, ignoring case.
        ProjectData d = blank();
        d.backgrounds[1] = {QStringLiteral("D:\\Backs\\back.jpg")};
        d.pictures.append({FmtSimple, QStringLiteral("C:\\PICS\\LOGO.BMP"), 0, 0, 10, 10, 1});
        d.pictures.append({FmtSimple, QStringLiteral("/nowhere/missing.png"), 0, 0, 10, 10, 1});
        d.charFields.append({FmtSimple, QStringLiteral("A:\\VALUES.TXT"), QString(), style(0, 0)});
        const QString path = dir.filePath("old.prj");
        QVERIFY(writeProject(d, path));
        QStringList messages;
        readProject(path, d, [&](const QString& m, const QString&) { messages << m; });
        QVERIFY2(messages.isEmpty(), qPrintable(messages.join('\n')));
        QCOMPARE(d.pictures.at(1).file, dir.filePath("logo.bmp"));
        QCOMPARE(d.pictures.at(2).file, QStringLiteral("/nowhere/missing.png"));  // nothing found: kept
        QCOMPARE(d.backgrounds[1].text, dir.filePath("Back.JPG"));
        QVERIFY(d.charFields.at(1).valueFile == dir.filePath("values.txt") && d.charFields.at(1).text == "One");
        // Relative names count from the project's folder.
        QCOMPARE(resolveBesideProject(QStringLiteral("logo.bmp"), dir.path()), dir.filePath("logo.bmp"));
    }

    void failedSaveKeepsTheOldFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("keep.prj");
        ProjectData d = blank();
        d.spineText = QStringLiteral("old");
        QString error;
        QVERIFY(writeProject(d, path, &error));
        const QByteArray old = fixture::readFile(path);

        // Targets that fail whoever runs the test (CI runs as root).
        d.spineText = QStringLiteral("new");
        QVERIFY(!writeProject(d, dir.filePath("no/such/folder/p.prj"), &error));
        QVERIFY(error.contains(QStringLiteral("no/such/folder/p.prj")));
        // The "folder" is a file.
        QVERIFY(!writeProject(d, path + QStringLiteral("/p.prj"), &error) && !writeProject(d, QString(), &error));

        // A full disk, made real by a file-size limit (root is bound by it too).
        for (int i = 0; i < 50; ++i) d.freeText.append({FmtSimple, QStringLiteral("block %1\r\n").arg(i), style(0, 0)});
        struct rlimit saved;
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
        auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        struct rlimit small = saved;
        small.rlim_cur = 512;
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const bool written = writeProject(d, path, &error);
        setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, oldHandler);
        QVERIFY2(!written && error.contains(QStringLiteral("too large")), qPrintable(error));
        QCOMPARE(fixture::readFile(path), old);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("keep.prj")});
    }

    // Files the fuzzer found interesting: each reads with at most the capped
    // number of messages, and what is saved from it reads back cleanly and
    // is written back byte for byte.
    void corpusRoundTrip()
    {
        const QString corpus = qEnvironmentVariable("JK_TEST_DATA", QStringLiteral(JK_SOURCE_DIR "/tests/data")) +
                               QStringLiteral("/prj-corpus");
        QDirIterator it(corpus, QDir::Files);
        int files = 0;
        for (; it.hasNext(); ++files) {
            const QString path = it.next();
            auto saved = [](Read r) {
                r.data.sheetComposition = i16(r.result.composition);
                return projectFileBytes(r.data);
            };
            const Read first = readBytes(fixture::readFile(path));
            QVERIFY2(first.messages.size() <= kMaxReportedErrors + 1, qPrintable(path));
            const QByteArray once = saved(first);
            const Read again = readBytes(once);
            QVERIFY2(again.messages.isEmpty(), qPrintable(path + u'\n' + again.messages.join(u'\n')));
            QByteArrayList a = once.split('\n'), b = saved(again).split('\n');
            // A spine-linked field with a digit code outside 1-4 shows no
            // number, yet reading takes that many characters off the spine
            // line: such a spine text changes from save to save.
            const auto& nums = again.data.numFields;
            for (int i = 1; i <= nums.count(); ++i)
                if (nums.at(i).spineLink && (nums.at(i).digits < 1 || nums.at(i).digits > 4)) a[3] = b[3];
            QVERIFY2(a == b, qPrintable(path));
        }
        QVERIFY2(files >= 4, qPrintable(corpus));
    }
};

QTEST_GUILESS_MAIN(TestProjectFile)
#include "test_projectfile.moc"
