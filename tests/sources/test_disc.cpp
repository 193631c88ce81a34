// Disc listing, audio CDs and the CD player database, over real libcdio
// reading CUE/BIN images that the tests write.
#include "platform/MciCdAudio.h"
#include "sources/disc/CdPlayerDatabase.h"
#include "sources/disc/DiscCommand.h"
#include "sources/disc/DiscListing.h"
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <unistd.h>
#include <utime.h>

using namespace jk::sources;
using jk::platform::MciCdAudio;

namespace {

struct Track {
    QString index01;  // "mm:ss:ff" from the start of the BIN
    QString title = {};
};

// NAME.cue (Latin-1, with CD-TEXT when titles are given) and a sparse NAME.bin
// of binFrames sectors.
QString writeImage(const QString& dir, const QString& name, const QList<Track>& tracks, qint64 binFrames,
                   const QString& discTitle = {}, const QString& performer = {})
{
    QString cue;
    if (!discTitle.isEmpty()) cue += QStringLiteral("TITLE \"%1\"\nPERFORMER \"%2\"\n").arg(discTitle, performer);
    cue += QStringLiteral("FILE \"whatever.bin\" BINARY\n");
    for (int i = 0; i < tracks.size(); ++i) {
        cue += QStringLiteral("  TRACK %1 AUDIO\n").arg(i + 1, 2, 10, QLatin1Char('0'));
        if (!tracks[i].title.isEmpty()) cue += QStringLiteral("    TITLE \"%1\"\n").arg(tracks[i].title);
        cue += QStringLiteral("    INDEX 01 %1\n").arg(tracks[i].index01);
    }
    QFile c(dir + u'/' + name + ".cue"), b(dir + u'/' + name + ".bin");
    if (!c.open(QIODevice::WriteOnly) || c.write(cue.toLatin1()) != cue.toLatin1().size()) qFatal("cannot write cue");
    if (!b.open(QIODevice::WriteOnly) || !b.resize(binFrames * 2352)) qFatal("cannot write bin");
    return c.fileName();
}

QString mci(MciCdAudio& cd, const QString& command)
{
    QString reply;
    const int e = cd.send(command, &reply);
    return e ? QStringLiteral("error %1").arg(e) : reply;
}

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<unreadable>");
}

void setStamp(const QString& path, const QDateTime& t)
{
    const utimbuf times{time_t(t.toSecsSinceEpoch()), time_t(t.toSecsSinceEpoch())};
    if (utime(QFile::encodeName(path).constData(), &times) != 0) qFatal("no stamp");
}

}  // namespace

class TestDisc : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    // Three tracks at 00:02:00, 04:10:32, 08:00:05; lead-out at 60150.
    QString three() { return writeImage(tmp.path(), "three", {{"00:00:00", "Opening"}, {"04:08:32", ""}, {"07:58:05", ""}}, 60000, "Live", "The Band"); }

private Q_SLOTS:
    void mciCommandStrings()
    {
        MciCdAudio cd(three());
        QCOMPARE(mci(cd, "status cd position"), QString("error 263"));  // not open yet
        QCOMPARE(mci(cd, "open cdaudio alias cd wait shareable"), QString());
        QCOMPARE(mci(cd, "set cd time format tmsf wait"), QString());
        QCOMPARE(mci(cd, "status cd media present"), QString("true"));
        QCOMPARE(mci(cd, "status cd number of tracks wait"), QString("3"));
        QCOMPARE(mci(cd, "status cd length track 1"), QString("04:08:32"));
        QCOMPARE(mci(cd, "status cd length track 2"), QString("03:49:48"));
        QCOMPARE(mci(cd, "status cd length track 3"), QString("05:21:69"));  // to the lead-out, less a frame
        QCOMPARE(mci(cd, "status cd length track 4"), QString("error 282"));
        QCOMPARE(mci(cd, "status cd length wait"), QString("13:20:00"));
        QCOMPARE(mci(cd, "status cd position"), QString("01:00:00:00"));
        QCOMPARE(mci(cd, "play cd from 3"), QString());
        QCOMPARE(mci(cd, "status cd position"), QString("03:00:00:00"));
        QCOMPARE(mci(cd, "seek cd to 1"), QString());
        QCOMPARE(mci(cd, "status cd position"), QString("01:00:00:00"));
        QCOMPARE(mci(cd, "eject cd"), QString("error 261"));
        QVERIFY(MciCdAudio::errorText(261).contains("cannot recognize"));
        QCOMPARE(mci(cd, "close all"), QString());
        QCOMPARE(mci(cd, "status cd number of tracks"), QString("error 263"));

        MciCdAudio one(writeImage(tmp.path(), "one", {{"00:00:00", ""}}, 750));
        QCOMPARE(mci(one, "open cdaudio alias cd wait shareable"), QString());
        QCOMPARE(mci(one, "status cd number of tracks wait"), QString("1"));
        QCOMPARE(mci(one, "status cd length track 1"), QString("00:09:74"));
    }

    void discIdentifiers()
    {
        const QString four = writeImage(tmp.path(), "four", {{"00:00:00"}, {"04:08:32"}, {"07:58:05"}, {"12:28:70"}}, 60000);
        const QString two = writeImage(tmp.path(), "two", {{"00:00:00"}, {"03:18:15"}}, 34765);  // lead-out 07:45:40
        const std::optional<AudioDisc> a = readAudioDisc(four, nullptr, nullptr), b = readAudioDisc(two, nullptr, nullptr);
        QVERIFY(a && b);
        QCOMPARE(a->id, QString("0018-2A6B"));
        QCOMPARE(b->id, QString("0003-9DDC"));
        QCOMPARE(CdPlayerDatabase::sectionName(" 0A1B-00C2"), QString("A1B00C2"));
        QCOMPARE(CdPlayerDatabase::sectionName("0000-0012"), QString("0012"));
    }

    void audioListing()
    {
        const QString plain = writeImage(tmp.path(), "plain", {{"00:00:00"}, {"04:08:32"}, {"07:58:05"}}, 60000);
        QCOMPARE(listSource(plain, {}, nullptr).text, QString("Track01.cda\r\nTrack02.cda\r\nTrack03.cda\r\n"));
        Listing l = listSource(plain, {true, true, true}, nullptr);  // folders are not offered
        QVERIFY(l.audio);
        QCOMPARE(l.text.section("\r\n", 0, 0), QString("Track01.cda          44 Bytes           04:08"));
        l = listSource(three(), {false, false, true}, nullptr);
        QCOMPARE(l.text, QString("Opening          04:08\r\nTrack02.cda          03:49\r\nTrack03.cda          05:21\r\n"));
        QCOMPARE(listSource(writeImage(tmp.path(), "single", {{"00:00:00"}}, 750), {}, nullptr).outcome, Listing::Unchanged);

        // CD-TEXT starts the questions; titles stored for the disc win and replace its section.
        CdPlayerDatabase db(tmp.path() + "/cdplayer.ini");
        std::optional<AudioDisc> d = readAudioDisc(three(), &db, nullptr);
        QVERIFY(d);
        QCOMPARE(d->artist, QString("The Band"));
        QCOMPARE(d->title, QString("Live"));
        QVERIFY(db.store(d->id, {"Me", "Mine", CdPlayerDatabase::titlesFromText(l.text)}, 3));
        QVERIFY(db.store(d->id, {"Me", "Mine", {"", "Second", "Third          05:21"}}, 3));
        QVERIFY(db.load());
        QCOMPARE(readAll(db.path()).count("numtracks="), 1);
        d = readAudioDisc(three(), &db, nullptr);
        QCOMPARE(d->artist, QString("Me"));
        QCOMPARE(listAudioDisc(*d, {false, false, true}).text,
                 QString("Opening          04:08\r\nSecond          03:49\r\nThird          05:21\r\n"));
    }

    void databaseFile()
    {
        const QString path = tmp.path() + "/db/cdplayer.ini";
        QDir().mkpath(tmp.path() + "/db");
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("[OTHER]\r\nArtist=x\r\n[a1b00c2]\r\nArtist=old\r\n\r\n[LAST]\r\nTitle=y");
        f.close();
        CdPlayerDatabase db(path);
        QCOMPARE(CdPlayerDatabase::titlesFromText("One\r\nTwo\r\nrest"), QStringList({"One", "Two"}));
        QVERIFY(db.store("0A1B-00C2", {"Artist", "Disc", {"One", "Two"}}, 3));
        QCOMPARE(readAll(path), QByteArray("[OTHER]\r\nArtist=x\r\n[A1B00C2]\r\nArtist=Artist\r\nTitle=Disc\r\nnumtracks=3\r\n"
                                           "0=One\r\n1=Two\r\n2=\r\norder=0 1 2 \r\nnumplay=3\r\n[LAST]\r\nTitle=y"));
        QVERIFY(db.store("0000-0012", {"A", "T", {}}, 1));  // one track: nothing written
        QVERIFY(db.store("0000-0012", {"A", "T", {"x", "y"}}, 2));
        QVERIFY(readAll(path).endsWith("Title=y\r\n[0012]\r\nArtist=A\r\nTitle=T\r\nnumtracks=2\r\n0=x\r\n1=y\r\norder=0 1 \r\nnumplay=2\r\n"));
    }

    void folderListing()
    {
        const QString dir = tmp.path() + "/folder";
        QDir().mkpath(dir + "/DATA/IMAGES");
        QDir().mkpath(dir + "/.hidden");
        const QDateTime pm(QDate(1998, 12, 24), QTime(15, 15)), midnight(QDate(2001, 1, 2), QTime(0, 0));
        const QList<QPair<QString, int>> files = {{"README.TXT", 2048}, {"a.txt", 1024}, {"abcdefghijklmnopqr.txt", 5},
                                                   {"a name longer than the column.txt", 7}, {".profile", 1}};
        for (const auto& [name, size] : files) {
            QFile f(dir + u'/' + name);
            QVERIFY(f.open(QIODevice::WriteOnly) && f.resize(size));
            f.close();
            setStamp(f.fileName(), name == "a.txt" ? midnight : pm);
        }
        setStamp(dir + "/DATA", pm);
        QVERIFY(QFile::link(dir + "/gone", dir + "/dangling"));

        QCOMPARE(listFolder(dir, {false, true, true}).text,
                 QString("a name longer than the column.txt 7 Bytes  24/12/98 03:15:00 PM\r\n"
                         "a.txt              1024 Bytes  02/01/01 12:00:00 AM\r\n"
                         "abcdefghijklmnopqr.txt 5 Bytes  24/12/98 03:15:00 PM\r\n"
                         "README.TXT         2048 Bytes  24/12/98 03:15:00 PM\r\n"));
        QCOMPARE(listFolder(dir, {true, false, true}, tmp.path()).text, QString("folder/DATA            24/12/98 03:15:00 PM\r\n"));
        QCOMPARE(listFolder(dir + "/DATA", {true, false, false}, dir).text, QString("DATA/IMAGES\r\n"));
    }

    void hostileInputs()
    {
        const QString d = tmp.path() + "/bad";
        QDir().mkpath(d);
        QString keyword = writeImage(d, "keyword", {{"00:00:00"}, {"00:10:00"}}, 1500), missing = writeImage(d, "missing", {{"00:00:00"}}, 75);
        QFile::remove(d + "/missing.bin");
        QFile c(keyword), t(d + "/big.toc"), b(d + "/big.bin"), n(d + "/nodata.toc");
        QVERIFY(c.open(QIODevice::Append) && c.write("    NONSENSE 00:02:00\n"));
        c.close();
        QString toc = "CD_DA\n";  // a cdrdao TOC of 99 tracks of one second
        for (int i = 0; i < 99; ++i) toc += QStringLiteral("TRACK AUDIO\nFILE \"big.bin\" %1:%2:0 0:1:0\n").arg(i / 60).arg(i % 60);
        QVERIFY(t.open(QIODevice::WriteOnly) && t.write(toc.toLatin1()) && b.open(QIODevice::WriteOnly) && b.resize(99 * 75 * 2352));
        t.close();
        QVERIFY(n.open(QIODevice::WriteOnly) && n.write("CD_DA\nTRACK AUDIO\nFILE \"absent.bin\" 0:0:0 0:1:0\n"));
        n.close();
        const QString pulled = writeImage(d, "pulled", {{"00:00:00"}, {"00:10:00"}}, 1500);
        const std::optional<AudioDisc> disc = readAudioDisc(pulled, nullptr, nullptr);
        QVERIFY(disc && QFile::remove(pulled));  // the disc goes away before it is listed

        QList<Listing> bad;
        Listing big, gone;
        {
            // libcdio's complaints (warnings go to standard output) must not reach the terminal.
            const int saved[2] = {dup(1), dup(2)};
            QFile out(d + "/printed");
            QVERIFY(out.open(QIODevice::WriteOnly));
            dup2(out.handle(), 1);
            dup2(out.handle(), 2);
            for (const QString& s : {missing, keyword, writeImage(d, "empty", {{"00:00:00"}, {"00:10:00"}}, 0),
                                     writeImage(d, "cut", {{"00:00:00"}, {"00:10:00"}}, 700), d + "/nothing.cue", n.fileName()})
                bad << listSource(s, {}, nullptr);
            big = listSource(t.fileName(), {false, false, true}, nullptr);
            gone = listAudioDisc(*disc, {false, false, true});
            fflush(stdout);
            fflush(stderr);
            dup2(saved[0], 1);
            dup2(saved[1], 2);
        }
        QCOMPARE(readAll(d + "/printed"), QByteArray());
        QVERIFY(bad.at(0).message.contains("missing.bin"));
        for (const Listing& l : bad) QCOMPARE(l.outcome, Listing::Failed);
        QCOMPARE(big.text.count("\r\n"), 99);
        QVERIFY(big.text.endsWith("Track99.cda          00:00\r\n"));
        QCOMPARE(gone.outcome, Listing::NoDisc);

        // Databases that must be left alone: a folder, binary, huge.
        QDir().mkpath(d + "/folder.ini");
        QFile bin(d + "/binary.ini"), huge(d + "/huge.ini");
        QVERIFY(bin.open(QIODevice::WriteOnly) && bin.write(QByteArray("[X]\r\n\0\0", 7)) && huge.open(QIODevice::WriteOnly) &&
                huge.resize(CdPlayerDatabase::kMaxBytes + 1));
        bin.close();
        huge.close();
        for (const char* name : {"folder.ini", "binary.ini", "huge.ini"}) {
            CdPlayerDatabase db(d + u'/' + name);
            const QByteArray before = readAll(db.path());
            QString why;
            QVERIFY(!db.load(&why) && !why.isEmpty());
            QVERIFY(!db.store("0018-2A6B", {"A", "T", {}}, 3, &why));
            QCOMPARE(readAll(db.path()), before);
        }
    }

    void headlessCommands()
    {
        QString out, err;
        QTextStream o(&out), e(&err);
        QCOMPARE(runDiscCommand({"--disc-id", three()}, tmp.path() + "/none.ini", o, e), 0);
        QCOMPARE(runDiscCommand({"--list=" + three(), "--dates", "--sizes"}, tmp.path() + "/none.ini", o, e), 0);
        QCOMPARE(out.section("\r\n", 0, 0), QString("000C-0C25\nOpening              44 Bytes           04:08"));
        QCOMPARE(runDiscCommand({"--disc-id", tmp.path()}, tmp.path() + "/none.ini", o, e), 1);
        QVERIFY(!err.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestDisc)
#include "test_disc.moc"
