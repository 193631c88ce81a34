#include "platform/FakeServices.h"
#include "file/FontCache.h"
#include "model/Global.h"
#include "file/MessageFile.h"
#include "model/Procedures.h"
#include "file/Settings.h"
#include "model/Shell.h"
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace jk;

namespace {

void writeFile(const QString& path, const QByteArray& data)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(data);
}

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

struct RecordingSheet : ISheet {
    int code;
    QStringList* log;
    QString caption;
    RecordingSheet(int c, QStringList* l) : code(c), log(l) {}
    int formatCode() const override { return code; }
    void setSpineCaption(const QString& text) override
    {
        caption = text;
        log->append(QString::number(code));
    }
};

struct RecordingShell : IShell {
    std::vector<ISheet*> open;
    int refreshes = 0;
    int enabledCalls = 0;
    bool printEnabled = false;
    void setPrintCommandsEnabled(bool e) override
    {
        printEnabled = e;
        ++enabledCalls;
    }
    std::vector<ISheet*> sheets() const override { return open; }
    void refresh() override { ++refreshes; }
};

}  // namespace

class TestState : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { resetGlobal(); }

    void listItemsFollowTheListReader()
    {
        const QByteArray data = "  Plain text  \r\n\"Quoted, with comma\"\r\n"
                                "a,b\n"
                                "\n"
                                "\"Closed\" junk after quote\n"
                                "last";
        const QStringList items = readListItems(data, 100);
        QCOMPARE(items, (QStringList{"Plain text", "Quoted, with comma", "a", "b", "", "Closed", "last"}));
        // The reader stops at the number of entries asked for.
        QCOMPARE(readListItems(data, 3).size(), 3);
        // An unterminated quote takes the rest of the file instead of failing.
        QCOMPARE(readListItems("\"open quote\nnext", 5), QStringList{"open quote\nnext"});
    }

    void textFilesDecodeAsUtf8OrWindows1252()
    {
        QCOMPARE(decodeText("caf\xc3\xa9"), QStringLiteral("café"));
        QCOMPARE(decodeText("caf\xe9 \x80"), QStringLiteral("café €"));
    }

    void messageEntriesFillTheTablesInFileOrder()
    {
        QStringList entries;
        for (int i = 1; i <= kMessageFileEntries; ++i) entries << QStringLiteral("E%1").arg(i);
        entries[4] = "Front cover";
        entries[5] = "Booklet";
        const Texts t = textsFromEntries(entries);
        QCOMPARE(t.splash[0], "E1");
        QCOMPARE(t.splash[3], "E4");
        QCOMPARE(t.formatNames[0], "Front cover");
        QCOMPARE(t.formatNames[4], "E9");
        // Entries 5-9 of the format-name table are derived, not read.
        QCOMPARE(t.formatNames[5], "ver]");
        QCOMPARE(t.formatNames[6], "let]");
        QCOMPARE(t.formatNames[9], "E9]");
        QCOMPARE(menuCaptionOrder().size(), 55);
        QCOMPARE(menuCaption(t, "Mfile"), "E10");
        QCOMPARE(menuCaption(t, "raz"), "E64");
        // Shared captions: one entry feeds the edit, delete, move entries of every pop-up.
        QCOMPARE(menuCaption(t, "Nedit"), menuCaption(t, "EditObj"));
        QCOMPARE(menuCaption(t, "Moins1"), "E63");
        QCOMPARE(t.fitCaptions[1], "E66");
        QCOMPARE(t.toolTips[0], "E67");
        QCOMPARE(t.toolTips[25], "E92");
        QCOMPARE(t.msg(Msg::Ok), "E93");
        QCOMPARE(t.msg(Msg(75)), "E168");
        QCOMPARE(t.spineCaptions[1], "E170");
        QCOMPARE(t.extraCaptions[2], "E173");
        QCOMPARE(t.msg(Msg::AudioCdNotOpened), "E174");
        QCOMPARE(t.msg(Msg::ExistingProjectTab), "E183");
    }

    void shortMissingAndJunkMessageFilesLeaveEntriesEmpty()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("Default.msg");
        writeFile(path, "one\ntwo\n\"three, quoted\"\n");
        Texts t = loadMessageFile(path);
        QCOMPARE(t.splash[2], "three, quoted");
        QVERIFY(t.splash[3].isEmpty());
        QVERIFY(t.msg(Msg::ExistingProjectTab).isEmpty());
        QCOMPARE(t.formatNames[5], "]");

        t = loadMessageFile(dir.filePath("missing.msg"));
        QVERIFY(t.splash[0].isEmpty());

        QByteArray junk(3 * 1024 * 1024, '\0');
        for (int i = 0; i < junk.size(); ++i) junk[i] = char((i * 7919) & 0xff);
        writeFile(path, junk);
        t = loadMessageFile(path);  // must simply not crash or hang
        writeFile(path, QByteArray(2 * 1024 * 1024, 'x'));
        t = loadMessageFile(path);
        QCOMPARE(t.splash[0].size(), 2 * 1024 * 1024);
        QVERIFY(t.splash[1].isEmpty());
    }

    void shippedMessageFileHasEveryEntry()
    {
        const QString path = QStringLiteral(JK_SOURCE_DIR "/data/Default.msg");
        const QStringList items = readListItems(readAll(path), 1000);
        QCOMPARE(items.size(), kMessageFileEntries);
        for (const QString& s : items) QVERIFY2(!s.isEmpty(), "every shipped entry has a text");
        const Texts t = textsFromEntries(items);
        QSet<QString> derived;
        for (int i = 5; i < 10; ++i) derived.insert(t.formatNames[std::size_t(i)]);
        QCOMPARE(derived.size(), 5);
        QVERIFY(!t.msg(Msg::CopiesDifferFromValues).endsWith('.'));
        QVERIFY(!t.msg(Msg::EnterWholeNumber).endsWith('.'));
    }

    void settingsRoundTripAndTheCommaCut()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("JEWLKIT.INI");
        SettingsValues v = readSettings(path, "/home/me");
        QVERIFY(v.picturesEditor.isEmpty() && v.picturesFolder.isEmpty() && v.backgroundFolder.isEmpty());
        QCOMPARE(v.projectFolder, "/home/me");

        v = {"/usr/bin/gimp", "/pics", "/backs", "/projects"};
        QVERIFY(writeSettings(path, v));
        QCOMPARE(readAll(path), QByteArray("[Preferences]\n/usr/bin/gimp\n/pics\n/backs\n/projects\n"));
        const SettingsValues back = readSettings(path, "/home/me");
        QCOMPARE(back.picturesEditor, v.picturesEditor);
        QCOMPARE(back.projectFolder, v.projectFolder);

        // A comma ends an item: the rest moves into the next setting.
        writeSettings(path, {"/opt/edit", "/pics,old", "/backs", "/projects"});
        const SettingsValues cut = readSettings(path, "/home/me");
        QCOMPARE(cut.picturesFolder, "/pics");
        QCOMPARE(cut.backgroundFolder, "old");
        QCOMPARE(cut.projectFolder, "/backs");

        // Short and junk files keep what could be read.
        writeFile(path, "[Preferences]\n/editor\n");
        QCOMPARE(readSettings(path, "/d").picturesEditor, "/editor");
        QCOMPARE(readSettings(path, "/d").projectFolder, "/d");
        writeFile(path, QByteArray(1024 * 1024, '\x01'));
        readSettings(path, "/d");

        // An unwritable place reports failure and changes nothing.
        QVERIFY(!writeSettings(dir.filePath("no/such/dir/JEWLKIT.INI"), v));
    }

    void fontCacheIsRewrittenOnlyWhenStale()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("Fonts.lst");
        QVERIFY(!fontCacheIsCurrent(path, 3));
        int calls = 0;
        QVERIFY(writeFontCache(path, {"Arial", "Courier", "Times"}, [&](int) { ++calls; }));
        QCOMPARE(calls, 3);
        QCOMPARE(readAll(path), QByteArray("2\r\nArial\r\nCourier\r\nTimes\r\n"));
        QVERIFY(fontCacheIsCurrent(path, 3));
        QVERIFY(!fontCacheIsCurrent(path, 4));
        writeFile(path, "");
        QVERIFY(!fontCacheIsCurrent(path, 1));
        writeFile(path, "\xff\xfe junk\n");
        QVERIFY(!fontCacheIsCurrent(path, 1));
    }

    void stepRuleKeepsOneTo999()
    {
        QCOMPARE(stepRule("0").step, 10);
        QVERIFY(stepRule("0").notice);
        QCOMPARE(stepRule("1000").step, 10);
        QVERIFY(stepRule("1000").notice);
        QVERIFY(stepRule("abc").notice);
        QCOMPARE(stepRule("1").step, 1);
        QCOMPARE(stepRule("999").step, 999);
        QVERIFY(!stepRule("999").notice);
    }

    void recordTablesHaveTheirCapacitiesAndNeverReuseSlots()
    {
        Global& g = G();
        g.createTables(TableSizing::StartUp);
        QCOMPARE(g.charFields.capacity(), 100);
        QCOMPARE(g.numFields.capacity(), 50);
        g.createTables(TableSizing::NewProject);
        QCOMPARE(g.numFields.capacity(), 100);
        g.createTables(TableSizing::OpenProject);
        QCOMPARE(g.charFields.capacity(), 50);
        QCOMPARE(g.freeText.capacity(), 100);
        QCOMPARE(g.pageText.capacity(), 50);
        QCOMPARE(g.pictures.capacity(), 50);

        TextRecord r;
        r.text = "x";
        QCOMPARE(g.pageText.append(r), 1);
        g.pageText.at(1).text.clear();  // deleted: the slot stays taken
        QCOMPARE(g.pageText.append(r), 2);
        while (!g.pageText.full()) g.pageText.append(r);
        QCOMPARE(g.pageText.append(r), 0);
        QCOMPARE(g.pageText.count(), 50);
        QVERIFY(!g.pageText.valid(0) && g.pageText.valid(50) && !g.pageText.valid(51));
        g.createTables(TableSizing::NewProject);
        QCOMPARE(g.pageText.count(), 0);
    }

    void formatTables()
    {
        QCOMPARE(formatNameIndex(FmtJacket), 2);
        QCOMPARE(formatNameIndex(FmtCdRom), 3);
        QCOMPARE(formatNameIndex(3), -1);
        QCOMPARE(compositionWeight(FmtSimple) + compositionWeight(FmtDouble) + compositionWeight(FmtInside) +
                     compositionWeight(FmtCdRom),
                 15);
    }

    void spinePropagationFillsEverySheetLastFirst()
    {
        QStringList order;
        RecordingSheet a(1, &order), b(4, &order);
        RecordingShell sh;
        sh.open = {&a, &b};
        setShell(&sh);
        spinePropagation();
        QCOMPARE(order, (QStringList{"4", "1"}));
        QCOMPARE(a.caption, "   ");
        QCOMPARE(G().spineTitle, "   ");
        G().spineText = "My Album";
        G().spineNumberText = "007";
        spinePropagation();
        QCOMPARE(b.caption, "My Album 007");
        QCOMPARE(G().spineTitle, "My Album 007");
        QCOMPARE(sh.refreshes, 2);
        setShell(nullptr);
    }

    void printerAvailabilityFollowsTheInstalledPrinters()
    {
        FakeServices fake;
        fake.install();
        RecordingShell sh;
        setShell(&sh);
        fake.printers.list = {};
        QCOMPARE(printerAvailabilityRule(), 0);
        QVERIFY(!sh.printEnabled);
        fake.printers.list = {"", "Office"};
        QCOMPARE(printerAvailabilityRule(), 1);
        QVERIFY(sh.printEnabled);
        QCOMPARE(G().printerAvailable, 1);
        setShell(nullptr);
    }

    void twoSecondPauseUsesTheClock()
    {
        FakeServices fake;
        fake.install();
        const QDateTime before = fake.clock.now();
        twoSecondPause();
        QCOMPARE(before.msecsTo(fake.clock.now()), 2000);
    }
};

QTEST_GUILESS_MAIN(TestState)
#include "test_state.moc"
