// The small files around a project: the message file, JEWLKIT.INI and the
// font cache; and the step box's rule.
#include "Fixture.h"
#include "file/FontCache.h"
#include "file/MessageFile.h"
#include "file/Settings.h"
#include "model/Procedures.h"
#include <QTemporaryDir>
#include <QtTest>

using namespace jk;

namespace {

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

}  // namespace

class TestState : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { fixture::resetApp(); }

    void listItemsAndTheirEncoding()
    {
        // Blanks, quotes and commas are covered with the value files.
        const QByteArray data = "\"Closed\" junk after quote\n  \"Blank first\"\n\nlast";
        QCOMPARE(readListItems(data, 100), (QStringList{"Closed", "Blank first", "", "last"}));
        QCOMPARE(readListItems(data, 2).size(), 2);
        // An unterminated quote takes the rest of the file instead of failing.
        QCOMPARE(readListItems("\"open quote\nnext", 5), QStringList{"open quote\nnext"});
        QCOMPARE(decodeText("caf\xc3\xa9"), QStringLiteral("café"));
        QCOMPARE(decodeText("caf\xe9 \x80"), QStringLiteral("café €"));
    }

    void messageEntriesFillTheTablesInFileOrder()
    {
        QStringList entries;
        for (int i = 1; i <= kMessageFileEntries; ++i) entries << QStringLiteral("E%1").arg(i);
        entries[4] = "Front cover";
        const Texts t = textsFromEntries(entries);
        // The first and last entry of every table.
        const QStringList got = {t.splash[0], t.splash[3], t.formatNames[0], t.formatNames[4],
                                 menuCaption(t, "Mfile"), menuCaption(t, "raz"), t.fitCaptions[1], t.toolTips[0],
                                 t.toolTips[25], t.msg(Msg::Ok), t.spineCaptions[1], t.extraCaptions[2],
                                 t.msg(Msg::AudioCdNotOpened), t.msg(Msg::ExistingProjectTab)};
        QCOMPARE(got, (QStringList{"E1", "E4", "Front cover", "E9", "E10", "E64", "E66", "E67", "E92", "E93", "E170",
                                   "E173", "E174", "E183"}));
        QCOMPARE(t.formatNames[5], "ver]");  // derived, not read
        QCOMPARE(t.formatNames[9], "E9]");
        // One entry feeds the edit entries of every pop-up.
        QCOMPARE(menuCaption(t, "Nedit"), menuCaption(t, "EditObj"));
    }

    void messageFilesShortMissingLongAndShipped()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("Default.msg");
        QVERIFY(fixture::writeFile(path, "one\ntwo\n\"three, quoted\"\n"));
        Texts t = loadMessageFile(path);
        QCOMPARE(t.splash[2], "three, quoted");
        QVERIFY(t.splash[3].isEmpty() && t.msg(Msg::ExistingProjectTab).isEmpty());
        QCOMPARE(t.formatNames[5], "]");
        QVERIFY(loadMessageFile(dir.filePath("missing.msg")).splash[0].isEmpty());
        QVERIFY(fixture::writeFile(path, QByteArray(2 * 1024 * 1024, 'x')));
        t = loadMessageFile(path);
        QCOMPARE(t.splash[0].size(), 2 * 1024 * 1024);
        QVERIFY(t.splash[1].isEmpty());

        // The shipped file has every entry, the appended messages in their
        // places (an unquoted comma would shift them), and distinct derived names.
        const QStringList items = readListItems(readAll(QStringLiteral(JK_SOURCE_DIR "/data/Default.msg")), 1000);
        QVERIFY(items.size() > kMessageFileEntries);
        // Only the appended part has empty entries: room kept for messages to come.
        QVERIFY(!items.mid(0, kMessageFileEntries).contains(QString()));
        t = textsFromEntries(items);
        for (int i = kFirstAppendedMessage; i < kMessageCount; ++i)
            QCOMPARE(t.messages[std::size_t(i)], QString::fromUtf8(builtInMessage(Msg(i))));
        QSet<QString> derived;
        for (int i = 5; i < 10; ++i) derived.insert(t.formatNames[std::size_t(i)]);
        QCOMPARE(derived.size(), 5);
    }

    void settingsRoundTripAndTheCommaCut()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("JEWLKIT.INI");
        auto read = [&] {
            const UserSettings v = readSettings(path, "/home/me");
            return QStringList{v.picturesEditor, v.picturesFolder, v.backgroundFolder, v.projectFolder};
        };
        QCOMPARE(read(), (QStringList{"", "", "", "/home/me"}));
        UserSettings v{"/usr/bin/gimp", "/pics", "/backs", "/projects"};
        v.exportDpi = 600;
        v.calibrations.insert("Office Laser", {1.5, -0.7, 100.4, 99.6});
        QVERIFY(writeSettings(path, v));
        QVERIFY(readAll(path).startsWith("[Preferences]\n/usr/bin/gimp\n/pics\n/backs\n/projects\n["));
        QCOMPARE(read(), (QStringList{"/usr/bin/gimp", "/pics", "/backs", "/projects"}));
        const UserSettings back = readSettings(path, "/home/me");
        QCOMPARE(back.exportDpi, 600);
        QCOMPARE(back.calibrations.value("Office Laser").scaleYPercent, 99.6);
        // Broken or out-of-range values fall back to the defaults; good lines stay.
        QVERIFY(fixture::writeFile(path, "[Preferences]\n\n\n\n\n[Jewelcase Studio]\nexportdpi=5000\n"
                                         "calibration=A|25|0|100|100\ncalibration=B|x|0|100|100\n"
                                         "calibration=C|1|2|100\ncalibration=D|1|-2|95|105\n"));
        const UserSettings bad = readSettings(path, "/home/me");
        QCOMPARE(bad.exportDpi, 300);
        QCOMPARE(bad.calibrations.keys(), QStringList{"D"});
        // A comma ends an item: the rest moves into the next setting.
        QVERIFY(writeSettings(path, {"/opt/edit", "/pics,old", "/backs", "/projects"}));
        QCOMPARE(read(), (QStringList{"/opt/edit", "/pics", "old", "/backs"}));
        // Short and junk files keep what could be read.
        QVERIFY(fixture::writeFile(path, "[Preferences]\n/editor\n"));
        QCOMPARE(read(), (QStringList{"/editor", "", "", "/home/me"}));
        QVERIFY(fixture::writeFile(path, QByteArray(1024 * 1024, '\x01')));
        read();
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
        for (const QByteArray& junk : {QByteArray(), QByteArray("\xff\xfe junk\n")}) {
            QVERIFY(fixture::writeFile(path, junk));
            QVERIFY(!fontCacheIsCurrent(path, 1));
        }
    }

    void stepBoxKeepsOneTo999()
    {
        for (const char* bad : {"0", "1000", "abc", ""})
            QVERIFY(stepRule(bad).step == 10 && stepRule(bad).notice);
        QVERIFY(stepRule(" 1 ").step == 1 && stepRule("999").step == 999 && !stepRule("999").notice);
    }
};

QTEST_GUILESS_MAIN(TestState)
#include "test_state.moc"
