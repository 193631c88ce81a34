// The text dialog: what it hands back after OK, Cancel and Escape, the
// formatting that counts at once, the spine strip, text files, and the scan
// panel over folders and audio-disc images (real libcdio, CUE/BIN written here).
#include "UiFixture.h"
#include "ui/dialogs/TextBlockDialog.h"
#include <QCheckBox>
#include <QMenu>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QStorageInfo>
#include <utime.h>

using fixture::child;
using Mode = TextEditRequest::Mode;
namespace pf = jk::platform;

namespace {

QColor base(const TextBlockDialog* d) { return d->textInput()->palette().color(QPalette::Base); }
QColor ink(const TextBlockDialog* d) { return d->textInput()->palette().color(QPalette::Text); }
void click(QWidget* d, const char* names) { fixture::clickAll(d, QString::fromLatin1(names)); }

// NAME.cue (Latin-1, CD-TEXT when a disc title is given) and a sparse
// NAME.bin of binFrames sectors; tracks are (INDEX 01 time, title).
QString writeImage(const QString& dir, const QString& name, const QList<QPair<QString, QString>>& tracks,
                   qint64 binFrames, const QString& discTitle = {}, const QString& performer = {})
{
    QString cue;
    if (!discTitle.isEmpty()) cue += QStringLiteral("TITLE \"%1\"\nPERFORMER \"%2\"\n").arg(discTitle, performer);
    cue += QStringLiteral("FILE \"%1.bin\" BINARY\n").arg(name);
    for (int i = 0; i < tracks.size(); ++i) {
        cue += QStringLiteral("  TRACK %1 AUDIO\n").arg(i + 1, 2, 10, QLatin1Char('0'));
        if (!tracks[i].second.isEmpty()) cue += QStringLiteral("    TITLE \"%1\"\n").arg(tracks[i].second);
        cue += QStringLiteral("    INDEX 01 %1\n").arg(tracks[i].first);
    }
    QFile b(dir + u'/' + name + ".bin");
    if (!fixture::writeFile(dir + u'/' + name + ".cue", cue.toLatin1()) || !b.open(QIODevice::WriteOnly) ||
        !b.resize(binFrames * 2352))
        qFatal("cannot write the image");
    return dir + u'/' + name + ".cue";
}

void setStamp(const QString& path, const QDateTime& t)
{
    const utimbuf times{time_t(t.toSecsSinceEpoch()), time_t(t.toSecsSinceEpoch())};
    if (utime(QFile::encodeName(path).constData(), &times) != 0) qFatal("no stamp");
}

}  // namespace

class TestTextBlockDialog : public QObject {
    Q_OBJECT
    std::unique_ptr<fixture::Dialog<TextBlockDialog>> t;
    QTemporaryDir tmp;

    void open(const TextEditRequest& r = {}) { t->open(r); }
    TextBlockDialog* d() const { return t->dialog.get(); }
    FakeServices* fake() const { return t->fake.get(); }

private Q_SLOTS:
    void init()
    {
        t = std::make_unique<fixture::Dialog<TextBlockDialog>>();
        jk::appSetup().files.discDatabasePath = tmp.filePath("cdplayer.ini");
    }
    void cleanup() { t.reset(); }

    // Each row types into the dialog, then clicks the controls named.
    void okCancelAndEscape_data()
    {
        QTest::addColumn<bool>("spine");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("clicks");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("alignment");
        // Tabs become exactly eight spaces (no tab stops).
        QTest::newRow("block ok") << false << "\tc\n\t" << "Cntr Command1" << "Side A\tc\n\t" << 2;
        QTest::newRow("block cancel") << false << "x" << "Rgt Command2" << "" << 0;
        QTest::newRow("block escape") << false << "x" << "Rgt Escape" << "" << 0;
        QTest::newRow("spine ok") << true << "\tB" << "Command1" << "Side A\tB" << 0;
        // A cancelled spine edit hands back the text it started with.
        QTest::newRow("spine escape") << true << "more" << "Escape" << "Side A" << 0;
    }
    void okCancelAndEscape()
    {
        QFETCH(bool, spine);
        QFETCH(QString, typed);
        QFETCH(QString, clicks);
        TextEditRequest request{spine ? Mode::Spine : Mode::Block, "Side A", {}, {}};
        bool driven = false;
        fixture::whenModal<TextBlockDialog>([&](TextBlockDialog* d) {
            QCOMPARE(d->textInput()->toPlainText(), QString("Side A"));
            d->textInput()->insertPlainText(typed);
            fixture::clickAll(d, clicks);
            driven = true;
        });
        const TextEditResult r = TextBlockDialog::edit(nullptr, request);
        QVERIFY(driven);
        QCOMPARE(r.accepted, clicks.endsWith("Command1"));
        QFETCH(QString, text);
        QCOMPARE(r.text, text.replace('\t', QString(8, ' ')));
        QTEST(int(r.style.alignment), "alignment");
        // Nothing but the alignment was set: the sheet keeps giving the defaults.
        QVERIFY(r.style.fontName.isEmpty());
    }

    void formattingStartsFromTheBlockAndCountsAtOnce()
    {
        // Windows colours: red in the low byte.
        open({.style = {.fontName = "Arial", .italic = true, .foreColor = 0x0000FF, .backStyle = 1, .backColor = 0xFF0000, .alignment = 1}});
        QVERIFY(child<QRadioButton>(d(), "Option2")->isChecked() && child<QRadioButton>(d(), "Rgt")->isChecked());
        // The initial selection opened no colour choice.
        QVERIFY(base(d()) == Qt::blue && ink(d()) == Qt::red && d()->textInput()->font().italic() && fake()->colors.calls.isEmpty());
        click(d(), "Option1");
        QVERIFY(d()->result().style.backStyle == 0 && base(d()) == Qt::white);
        // White text on a transparent block shows on black, not on white.
        fake()->colors.answers = {QColor(Qt::white)};
        click(d(), "ForeColor");
        QCOMPARE(base(d()), QColor(Qt::black));

        init();
        QFont chosen("Liberation Serif");
        chosen.setPointSizeF(11.75);
        chosen.setUnderline(true);
        fake()->fonts.answers.push_back(chosen);
        fake()->colors.answers = {QColor(0, 128, 255), QColor(255, 0, 0), std::nullopt};
        fixture::whenModal<TextBlockDialog>([&](TextBlockDialog* d) {
            click(d, "Command4");
            QCOMPARE(d->result().style.foreColor, jk::i32(80008));  // from the block defaults
            click(d, "ForeColor");
            QCOMPARE(ink(d), QColor(0, 128, 255));
            click(d, "Option2 Option2");  // a cancelled colour choice keeps the colour
            QCOMPARE(base(d), QColor(Qt::red));
            click(d, "Check1");
            QTest::keyClicks(d->textInput(), "typed");
            click(d, "Command2");
        });
        // Cancel drops the text, not the formatting; a new block's font dialog starts from Arial 11.75.
        const TextEditResult res = TextBlockDialog::edit(nullptr, {});
        QVERIFY(fake()->fonts.calls[0].initial.family() == "Arial" && fake()->fonts.calls[0].initial.pointSizeF() == 11.75 &&
                !res.accepted && res.text.isEmpty());
        const jk::TextStyle& s = res.style;
        QVERIFY(s.fontName == "Liberation Serif" && s.fontSize == 12 && !s.bold && s.underline && s.borderStyle == 1 &&
                s.foreColor == 0xFF8000 && s.backStyle == 1 && s.backColor == 0x0000FF);
    }

    void spineModeLimitsAndHides()
    {
        open({Mode::Spine, "Greatest hits", {}, {.name = "Arial", .backColor = 0x00FFFF, .foreColor = 0xFF0000}});  // blue on yellow
        QPlainTextEdit* box = d()->textInput();
        QVERIFY(!child(d(), "Check1")->isVisible() && !child<QMenu>(d(), "TXTFILE")->menuAction()->isVisible());
        QVERIFY(base(d()) == Qt::yellow && ink(d()) == Qt::blue);

        // Typing stops at 60 characters, also in the middle of the text and
        // when a paste brings more than fits.
        QTest::keyClicks(box, QString(60, u'x'));
        box->moveCursor(QTextCursor::Start);
        QTest::keyClicks(box, "Z");
        box->moveCursor(QTextCursor::End);
        QTest::keyClicks(box, "\b\b");
        box->insertPlainText("123456");
        QCOMPARE(box->toPlainText(), "Greatest hits" + QString(45, u'x') + "12");

        // Font and colours go to the spine font, the size whole.
        QFont f("Liberation Sans");
        f.setPointSizeF(9.6);
        fake()->fonts.answers.push_back(f);
        fake()->colors.answers.push_back(QColor(Qt::red));
        click(d(), "Command4 Option2");
        // No block style touched.
        QVERIFY(d()->result().spineFont.size == 10 && d()->result().spineFont.backColor == 0x0000FF && base(d()) == Qt::red &&
                d()->result().style.fontName.isEmpty());
    }

    // Each row: a file, and the text it gives or why it is refused.
    void readsTextFiles_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");  // null: nothing written (a folder for folder.txt)
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("why");
        QTest::newRow("windows-1252") << "cp.txt" << QByteArray("caf\xe9 \x80 \x93q\x94") << QString::fromUtf8("café € “q”") << "";
        QTest::newRow("utf-8 with mark") << "bom.txt" << QByteArray("\xef\xbb\xbf\xc3\xa9t\xc3\xa9") << QString::fromUtf8("été") << "";
        // A plain file keeps its lines, without a trailing empty one.
        QTest::newRow("line ends") << "lines.txt" << QByteArray("one\r\ntwo\rthree\n") << "one\ntwo\nthree" << "";
        const int most = int(TextBlockDialog::kMaxFileBytes);
        QTest::newRow("largest taken") << "most.txt" << QByteArray(most, 'a') << QString(most, 'a') << "";
        QTest::newRow("too large") << "big.txt" << QByteArray(most + 1, 'a') << "" << "too large";
        QTest::newRow("folder") << "folder.txt" << QByteArray() << "" << "not a text file";
        QTest::newRow("missing") << "gone.txt" << QByteArray() << "" << "could not be found";
    }
    void readsTextFiles()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, why);
        // A refusal says why, naming the file.
        const QString path = tmp.filePath(name);
        if (name == "folder.txt") QVERIFY(QDir().mkpath(path));
        else if (!bytes.isNull()) QVERIFY(fixture::writeFile(path, bytes));
        QString text, error;
        QCOMPARE(TextBlockDialog::readTextFile(path, &text, &error), why.isEmpty());
        QTEST(text, "text");
        QVERIFY2(why.isEmpty() ? error.isEmpty() : error.contains(why) && error.contains(QFileInfo(path).fileName()), qPrintable(error));
    }

    void fileMenuSavesAndOpens()
    {
        open();
        const auto save = [&](const QString& text, const QString& path) {
            d()->textInput()->setPlainText(text);
            fake()->files.saveAnswers.push_back(path);
            child<QAction>(d(), "Fsave")->trigger();
        };
        const auto reopen = [&](const QString& path) {
            if (!path.isEmpty()) fake()->files.openAnswers.push_back(path);
            child<QAction>(d(), "Fopen")->trigger();
            return d()->textInput()->toPlainText();
        };
        // One quoted record, CR LF line ends, Windows-1252 when it all fits,
        // else UTF-8; the ".txt" suffix is added.
        const QString text = QString::fromUtf8("Côté \"A\"\n\tTrack 1\n\nEnd"), wide = QString::fromUtf8("€ 東京");
        save(text, tmp.filePath("notes"));
        save(wide, tmp.filePath("wide.txt"));
        QCOMPARE(fixture::readFile(tmp.filePath("notes.txt")) + fixture::readFile(tmp.filePath("wide.txt")),
                 QByteArray("\"C\xf4t\xe9 \"A\"\r\n\tTrack 1\r\n\r\nEnd\"\r\n\"\xe2\x82\xac \xe6\x9d\xb1\xe4\xba\xac\"\r\n"));
        // A cancelled file dialog changes nothing; a refused file keeps the
        // text and warns, naming the file; so does saving into a missing folder.
        QCOMPARE(reopen(tmp.filePath("notes.txt")) + reopen(tmp.filePath("wide.txt")) + reopen({}) + reopen(tmp.filePath("gone.txt")),
                 text + wide + wide + wide);
        save("x", tmp.filePath("missing/x.txt"));
        QCOMPARE(fake()->messages.calls.size(), 2);
        QVERIFY(fake()->messages.calls[0].text.contains("gone.txt") && fake()->messages.calls[1].text.contains("x.txt"));
    }

    // ---- The scan panel.
    QString shown() const { return d()->textInput()->toPlainText(); }
    void openScan(const TextEditRequest& r = {})
    {
        open(r);
        child<QAction>(d(), "SCANCD")->trigger();
    }
    // Stores the shown titles: yes to the question, then the answers for artist and title.
    void store(std::deque<std::optional<QString>> answers)
    {
        fake()->messages.answers = {pf::AnswerYes};
        fake()->input.answers = std::move(answers);
        click(d(), "Command1");
    }
    bool enabled(const char* name) const { return child(d(), name)->isEnabled(); }
    void chooseDrive(const QString& key)
    {
        auto* drives = child<DriveList>(d(), "Drive1");
        drives->setCurrentIndex(drives->findData(key));
    }
    // Chooses the image through the drive list's "Disc image..." entry.
    void chooseImage(const QString& cue)
    {
        fake()->files.openAnswers.push_back(cue);
        chooseDrive(TextBlockDialog::kDiscImageChoice);
    }
    QString three() const
    {
        // 04:08, 03:49 and 05:21; CD-TEXT in Latin-1.
        return writeImage(tmp.path(), "live", {{"00:00:00", "Opening"}, {"04:08:32", QString::fromUtf8("Côte")}, {"07:58:05", "Encore"}},
                          60000, "Live", "The Band");
    }

    void scanPanelListsAFolder()
    {
        const QString dir = tmp.filePath("disc");
        QVERIFY(QDir().mkpath(dir + "/IMAGES"));
        const QDateTime pm(QDate(1998, 12, 24), QTime(15, 15));
        QVERIFY(fixture::writeFile(dir + "/README.TXT", QByteArray(2048, 'x')) && fixture::writeFile(dir + "/a.txt", "abc"));
        for (const char* name : {"README.TXT", "a.txt", "IMAGES"}) setStamp(dir + u'/' + name, pm);

        openScan({.style = {.fontName = "Arial"}});
        QVERIFY(child(d(), "Frame1")->isVisible() && !child(d(), "Frame4")->isVisible());
        QVERIFY(QFontInfo(d()->textInput()->font()).fixedPitch());
        child<DirList>(d(), "Dir1")->setPath(dir);
        QCOMPARE(shown(), QString("a.txt\nREADME.TXT\n"));

        // Every change of an option rebuilds the whole text, dropping edits.
        d()->textInput()->appendPlainText("typed");
        click(d(), "DATETIME");
        QCOMPARE(shown(), QString("a.txt  24/12/98 03:15:00 PM\nREADME.TXT  24/12/98 03:15:00 PM\n"));
        click(d(), "FILESIZE");
        QCOMPARE(shown(), QString("a.txt                 3 Bytes  24/12/98 03:15:00 PM\n"
                                  "README.TXT         2048 Bytes  24/12/98 03:15:00 PM\n"));
        // Folders: no sizes, each named by its path below the drive's mount point.
        click(d(), "Option3");
        QVERIFY(!enabled("FILESIZE"));
        const QString name = QDir(QStorageInfo(dir).rootPath()).relativeFilePath(dir + "/IMAGES");
        QCOMPARE(shown(), name + QString(std::max<qsizetype>(0, 23 - name.size()), ' ') + "24/12/98 03:15:00 PM\n");
        click(d(), "Option4");
        QVERIFY(enabled("FILESIZE") && shown().startsWith("a.txt                 3 Bytes"));

        // The File menu brings the typing options back; the text stays a listing.
        QMetaObject::invokeMethod(child<QMenu>(d(), "TXTFILE"), "aboutToShow");
        QVERIFY(!child(d(), "Frame1")->isVisible() && child(d(), "Frame4")->isVisible());
        click(d(), "Command1");
        const TextEditResult res = d()->result();
        QVERIFY(res.accepted && res.fromListing && res.style.fontName == "Fixedsys" && fake()->messages.calls.isEmpty());
        QVERIFY(res.text.startsWith("a.txt                 3 Bytes  24/12/98"));
    }

    // An album image with CD-TEXT: its tracks and titles, the questions
    // started with its performer and title, and its database section, which a
    // second store replaces; then the stored titles win over the CD-TEXT.
    void scanPanelListsAnAudioImageAndStoresIt()
    {
        const QString cue = three();
        openScan();
        chooseImage(cue);
        QCOMPARE(child<FileList>(d(), "File1")->fileNames().join(' ') + ' ' + child<DirList>(d(), "Dir1")->path(), "Track01.cda Track02.cda Track03.cda " + cue);
        QCOMPARE(shown(), QString::fromUtf8("Opening\nCôte\nEncore\n"));
        QVERIFY(!enabled("Option3") && !enabled("Option4") && enabled("FILESIZE"));
        click(d(), "DATETIME");
        QCOMPARE(shown(), QString::fromUtf8("Opening          04:08\nCôte          03:49\nEncore          05:21\n"));
        click(d(), "FILESIZE");
        QVERIFY(shown().startsWith("Opening              44 Bytes           04:08\n"));
        click(d(), "FILESIZE");
        d()->textInput()->setPlainText("Intro\nSecond\nThird\n");

        store({QString("Band"), QString("Live at home")});
        // CD-TEXT performer, then title; the question defaults to No.
        QVERIFY(fake()->messages.calls[0].defaultAnswer == pf::AnswerNo && fake()->input.calls.size() == 2 && fake()->input.calls[0].initial == "The Band" && fake()->input.calls[1].initial == "Live");
        const QByteArray section = "[C0C25]\r\nArtist=Band\r\nTitle=Live at home\r\nnumtracks=3\r\n"
                                   "0=Intro\r\n1=Second\r\n2=Third\r\norder=0 1 2 \r\nnumplay=3\r\n";
        QCOMPARE(fixture::readFile(tmp.filePath("cdplayer.ini")), section);
        QVERIFY(d()->result().accepted && d()->result().fromListing);

        // Next time the image is offered as a drive and the stored titles show.
        init();
        openScan();
        chooseDrive(cue);
        QCOMPARE(shown(), QString("Intro\nSecond\nThird\n"));
        store({std::nullopt});  // a cancelled question stores nothing
        QCOMPARE(fake()->input.calls[0].initial, QString("Band"));
        QCOMPARE(fixture::readFile(tmp.filePath("cdplayer.ini")), section);
        d()->textInput()->setPlainText("A\nB\n");
        store({QString("Band"), QString("Live")});
        const QByteArray db = fixture::readFile(tmp.filePath("cdplayer.ini"));
        QVERIFY(db.count("[C0C25]") == 1 && db.contains("0=A\r\n1=B\r\n2=\r\norder=0 1 2 \r\n"));
    }

    // Discs that go away, cannot be read or hold one track, and a database
    // that cannot be used: a message or nothing, never a lost text.
    void badDiscsAndDatabases()
    {
        openScan();
        const QString cue = three();
        chooseImage(cue);
        const QString listing = shown();
        // The disc goes away: Retry asks again, Cancel keeps the text.
        QVERIFY(QFile::remove(cue) && QFile::remove(tmp.filePath("live.bin")));
        fake()->messages.answers = {pf::AnswerRetry, pf::AnswerCancel};
        click(d(), "DATETIME");
        QVERIFY(fake()->messages.calls.size() == 2 && fake()->messages.calls[0].buttons == pf::Buttons::RetryCancel &&
                shown() == listing && child<FileList>(d(), "File1")->fileNames().isEmpty());
        // Nothing to store without a disc.
        fake()->messages.calls.clear();
        click(d(), "Command1");
        QVERIFY(fake()->messages.calls.isEmpty());

        // Images that cannot be read say why and change nothing.
        init();
        openScan();
        d()->textInput()->setPlainText("kept");
        const QString noBin = writeImage(tmp.path(), "nobin", {{"00:00:00", ""}, {"00:10:00", ""}}, 1500);
        QVERIFY(QFile::remove(tmp.filePath("nobin.bin")));
        const QString keyword = writeImage(tmp.path(), "keyword", {{"00:00:00", ""}, {"00:10:00", ""}}, 1500);
        QVERIFY(fixture::writeFile(keyword, fixture::readFile(keyword) + "    NONSENSE 00:02:00\n"));
        chooseImage(noBin);
        chooseImage(keyword);
        chooseImage(writeImage(tmp.path(), "single", {{"00:00:00", "Only"}}, 750));  // one track: no output
        QVERIFY(shown() == "kept" && fake()->messages.calls.size() == 2 && fake()->messages.calls[0].text.contains("nobin.bin"));
        for (const auto& c : fake()->messages.calls) QCOMPARE(c.icon, pf::Icon::Warning);

        // An unusable database is reported before any question and left alone.
        fake()->messages.calls.clear();
        chooseImage(three());
        jk::appSetup().files.discDatabasePath = tmp.filePath("folder.ini");
        QVERIFY(QDir().mkpath(tmp.filePath("folder.ini")));
        store({});
        QVERIFY(fake()->messages.calls.size() == 2 && fake()->messages.calls[1].text.contains("folder.ini") && fake()->input.calls.isEmpty());
        QVERIFY(QFileInfo(tmp.filePath("folder.ini")).isDir() && d()->result().accepted);
    }
};

QTEST_MAIN(TestTextBlockDialog)
#include "test_textblockdialog.moc"
