#include "platform/FakeServices.h"
#include "ui/dialogs/TextBlockDialog.h"
#include "model/Global.h"
#include <QAction>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QFile>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

using jk::G;

namespace {

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& data)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(data) == data.size();
}

QColor base(const TextBlockDialog* d) { return d->textInput()->palette().color(QPalette::Base); }
QColor ink(const TextBlockDialog* d) { return d->textInput()->palette().color(QPalette::Text); }

}  // namespace

class TestTxtForm : public QObject {
    Q_OBJECT
    FakeServices* fake = nullptr;
    TextBlockDialog* dlg = nullptr;
    QTemporaryDir tmp;

    TextBlockDialog* open()
    {
        delete dlg;
        dlg = new TextBlockDialog;
        dlg->show();
        return dlg;
    }
    template <class T = QWidget>
    T* child(const char* name)
    {
        T* w = dlg->findChild<T*>(name);
        if (!w) qFatal("no control %s", name);
        return w;
    }
    void click(const char* name) { QTest::mouseClick(child(name), Qt::LeftButton); }
    // A block being inserted: slot 1 of the free text table, as yet empty.
    jk::TextRecord& newBlock()
    {
        G().freeText.append(jk::TextRecord{});
        G().currentBlock = 1;
        return G().freeText.at(1);
    }

private Q_SLOTS:
    void init()
    {
        jk::resetGlobal();
        G().createTables(jk::TableSizing::NewProject);
        fake = new FakeServices;
        fake->install();
    }
    void cleanup()
    {
        delete dlg;
        dlg = nullptr;
        delete fake;
        fake = nullptr;
    }

    void pendingTextInAndOut()
    {
        newBlock();
        G().pendingText = "ZILCH";
        open();
        QCOMPARE(dlg->textInput()->toPlainText(), QString());
        G().pendingText = "";
        open();
        QCOMPARE(dlg->textInput()->toPlainText(), QString());
        G().pendingText = "Side A\nSide B";
        open();
        QCOMPARE(dlg->textInput()->toPlainText(), QString("Side A\nSide B"));

        // Through the modal run: tabs become exactly eight spaces (no tab
        // stops), and the alignment goes into the record as well.
        G().pendingText = "ZILCH";
        bool driven = false;
        QTimer::singleShot(0, this, [&] {
            auto* d = qobject_cast<TextBlockDialog*>(QApplication::activeModalWidget());
            if (!d) return;
            QTest::keyClicks(d->textInput(), "ab\tc");
            QTest::keyClick(d->textInput(), Qt::Key_Return);
            QTest::keyClicks(d->textInput(), "\t");
            d->findChild<QRadioButton*>("Cntr")->click();
            d->findChild<QPushButton*>("Command1")->click();
            driven = true;
        });
        TextBlockDialog::run(nullptr);
        QVERIFY(driven);
        QCOMPARE(G().textAccepted, true);
        QCOMPARE(G().pendingText, QString("ab        c\n        "));
        QCOMPARE(G().alignmentChoice, jk::i16(2));
        QCOMPARE(G().freeText.at(1).style.alignment, jk::i16(2));
        // Nothing but the alignment was set: the sheet gives the defaults.
        QVERIFY(G().freeText.at(1).style.fontName.isEmpty());
        QCOMPARE(G().listingFlag, false);
    }

    void editingStartsFromTheRecordOfTheRequestedPage()
    {
        G().freeText.append(jk::TextRecord{});
        jk::TextRecord page;
        page.sheet = jk::FmtDouble;
        page.text = "Track list";
        page.style.fontName = "Arial";
        page.style.fontSize = 14;
        page.style.italic = true;
        page.style.foreColor = 0x0000FF;  // red
        page.style.backStyle = 1;
        page.style.backColor = 0xFF0000;  // blue
        page.style.borderStyle = 1;
        page.style.alignment = 1;
        G().pageText.append(page);
        G().pageText.append(page);
        G().currentBlock = 2;
        G().pageRequest = 2;
        G().blockSelector = 0;
        G().pendingText = page.text;
        open();
        QVERIFY(child<QRadioButton>("Option2")->isChecked());
        QVERIFY(child<QCheckBox>("Check1")->isChecked());
        QVERIFY(child<QRadioButton>("Rgt")->isChecked());
        QCOMPARE(G().alignmentChoice, jk::i16(1));
        QCOMPARE(base(dlg), QColor(Qt::blue));
        QCOMPARE(ink(dlg), QColor(Qt::red));
        QVERIFY(dlg->textInput()->font().italic());
        QCOMPARE(dlg->textInput()->font().pointSizeF(), 14.0);
        // The initial selection of the colour button opened no colour choice.
        QVERIFY(fake->colors.calls.isEmpty());

        // Border and background go to the same record, the free table untouched.
        click("Check1");
        QCOMPARE(G().pageText.at(2).style.borderStyle, jk::i16(0));
        click("Option1");
        QCOMPARE(G().pageText.at(2).style.backStyle, jk::i16(0));
        QCOMPARE(base(dlg), QColor(Qt::white));
        QCOMPARE(G().pageText.at(1).style.borderStyle, jk::i16(1));
        QVERIFY(G().freeText.at(1).style.fontName.isEmpty());
    }

    void formattingIsWrittenAtOnceAndKeptOnCancel()
    {
        jk::TextRecord& r = newBlock();
        G().pendingText = "ZILCH";
        open();
        QCOMPARE(base(dlg), QColor(Qt::white));

        QFont chosen("Liberation Serif");
        chosen.setPointSizeF(11.75);
        chosen.setBold(false);
        chosen.setUnderline(true);
        fake->fonts.answers.push_back(chosen);
        click("Command4");
        QCOMPARE(fake->fonts.calls.size(), 1);
        // A new block's font dialog starts from Arial 11.75.
        QCOMPARE(fake->fonts.calls[0].initial.family(), QString("Arial"));
        QCOMPARE(fake->fonts.calls[0].initial.pointSizeF(), 11.75);
        QCOMPARE(r.style.fontName, QString("Liberation Serif"));
        QCOMPARE(r.style.fontSize, jk::i16(12));
        QCOMPARE(r.style.bold, false);
        QCOMPARE(r.style.underline, jk::i32(true));
        // The first formatting starts from the block defaults.
        QCOMPARE(r.style.foreColor, jk::i32(80008));
        QCOMPARE(dlg->textInput()->font().pointSizeF(), 11.75);
        QVERIFY(dlg->textInput()->font().underline());

        // Colours are Windows values: red in the low byte.
        fake->colors.answers.push_back(QColor(0, 128, 255));
        click("ForeColor");
        QCOMPARE(r.style.foreColor, jk::i32(0xFF8000));
        QCOMPARE(ink(dlg), QColor(0, 128, 255));
        fake->colors.answers.push_back(QColor(255, 0, 0));
        click("Option2");
        QCOMPARE(r.style.backStyle, jk::i16(1));
        QCOMPARE(r.style.backColor, jk::i32(0x0000FF));
        QCOMPARE(base(dlg), QColor(Qt::red));
        // A cancelled colour choice keeps the colour.
        click("Option2");
        QCOMPARE(r.style.backColor, jk::i32(0x0000FF));
        click("Check1");
        QCOMPARE(r.style.borderStyle, jk::i16(1));

        QTest::keyClicks(dlg->textInput(), "typed");
        click("Command2");
        QVERIFY(!dlg->isVisible());
        QCOMPARE(G().textAccepted, false);
        QCOMPARE(G().pendingText, QString());
        QCOMPARE(r.style.fontName, QString("Liberation Serif"));
        QCOMPARE(r.style.backColor, jk::i32(0x0000FF));

        // Escape cancels the same way.
        G().pendingText = "kept?";
        open();
        QTest::keyClick(dlg, Qt::Key_Escape);
        QCOMPARE(G().textAccepted, false);
        QCOMPARE(G().pendingText, QString());
    }

    void previewOfWhiteTextOnTransparentIsBlack()
    {
        jk::TextRecord& r = newBlock();
        r.style.fontName = "Arial";
        r.style.fontSize = 10;
        r.style.foreColor = 0xFFFFFF;
        r.style.backColor = 0x00FF00;
        open();
        QCOMPARE(base(dlg), QColor(Qt::black));
        QCOMPARE(ink(dlg), QColor(Qt::white));
        QVERIFY(child<QRadioButton>("Option1")->isChecked());
        // Opaque shows the fill colour; transparent again goes back to black.
        click("Option2");
        QCOMPARE(base(dlg), QColor(Qt::green));
        click("Option1");
        QCOMPARE(base(dlg), QColor(Qt::black));
        fake->colors.answers.push_back(QColor(1, 2, 3));
        click("ForeColor");
        QCOMPARE(base(dlg), QColor(Qt::white));
    }

    void spineModeLimitsAndHides()
    {
        G().spineTextMode = true;
        G().spineText = "Greatest hits";
        G().spineFont.name = "Arial";
        G().spineFont.backColor = 0x00FFFF;  // yellow
        G().spineFont.foreColor = 0xFF0000;  // blue
        G().pendingText = "ZILCH";
        G().textDestination = 2;
        open();
        QCOMPARE(dlg->textInput()->toPlainText(), QString("Greatest hits"));
        QCOMPARE(G().pendingText, QString("Greatest hits"));
        QVERIFY(child("SSPanel2")->isVisible());
        QVERIFY(!child("Option1")->isVisible());
        QVERIFY(!child("Check1")->isVisible());
        QVERIFY(!child<QMenu>("TXTFILE")->menuAction()->isVisible());
        QVERIFY(child("Option2")->isVisible());
        QCOMPARE(base(dlg), QColor(Qt::yellow));
        QCOMPARE(ink(dlg), QColor(Qt::blue));

        // Typing stops at 60 characters, also in the middle of the text and
        // when a paste brings more than fits.
        QTest::keyClicks(dlg->textInput(), QString(60, u'x'));
        QCOMPARE(dlg->textInput()->toPlainText().size(), TextBlockDialog::kSpineMaxChars);
        QVERIFY(dlg->textInput()->toPlainText().startsWith("Greatest hits"));
        dlg->textInput()->moveCursor(QTextCursor::Start);
        QTest::keyClicks(dlg->textInput(), "Z");
        QVERIFY(dlg->textInput()->toPlainText().startsWith("Greatest"));
        QTest::keyClick(dlg->textInput(), Qt::Key_Backspace);
        dlg->textInput()->moveCursor(QTextCursor::End);
        QTest::keyClick(dlg->textInput(), Qt::Key_Backspace);
        QTest::keyClick(dlg->textInput(), Qt::Key_Backspace);
        dlg->textInput()->insertPlainText("123456");
        QCOMPARE(dlg->textInput()->toPlainText().right(3), QString("x12"));
        QCOMPARE(dlg->textInput()->toPlainText().size(), TextBlockDialog::kSpineMaxChars);

        // Font and colours go to the spine variables, the size whole.
        QFont f("Liberation Sans");
        f.setPointSizeF(9.6);
        f.setBold(true);
        f.setItalic(true);
        fake->fonts.answers.push_back(f);
        click("Command4");
        QCOMPARE(fake->fonts.calls[0].initial.family(), QString("Arial"));
        QCOMPARE(G().spineFont.name, QString("Liberation Sans"));
        QCOMPARE(G().spineFont.size, 10);
        QVERIFY(G().spineFont.bold != 0 && G().spineFont.italic != 0);
        QCOMPARE(G().spineFont.underline, quint8(0));
        fake->colors.answers.push_back(QColor(Qt::red));
        click("Option2");
        QCOMPARE(G().spineFont.backColor, jk::i32(0x0000FF));
        QCOMPARE(base(dlg), QColor(Qt::red));
        // No record was touched.
        QCOMPARE(G().freeText.count(), 0);

        // Cancel hands the old spine text back.
        click("Command2");
        QCOMPARE(G().textAccepted, false);
        QCOMPARE(G().pendingText, QString("Greatest hits"));

        // OK hands the new one over, tabs expanded.
        open();
        dlg->textInput()->setPlainText("A\tB");
        click("Command1");
        QCOMPARE(G().textAccepted, true);
        QCOMPARE(G().pendingText, QString("A        B"));
    }

    void textFileRoundTrip()
    {
        newBlock();
        const QString path = tmp.filePath("notes.txt");
        const QString text = QString::fromUtf8("Côté \"A\"\n\tTrack 1\n\nEnd");
        open();
        dlg->textInput()->setPlainText(text);
        fake->files.saveAnswers.push_back(tmp.filePath("notes"));  // the suffix is added
        child<QAction>("Fsave")->trigger();
        QCOMPARE(fake->files.saveCalls.size(), 1);
        QCOMPARE(fake->files.saveCalls[0].defaultSuffix, QString("txt"));
        // One quoted record, CR LF line ends, Windows-1252 as it all fits.
        QCOMPARE(readAll(path), QByteArray("\"C\xf4t\xe9 \"A\"\r\n\tTrack 1\r\n\r\nEnd\"\r\n"));

        open();
        fake->files.openAnswers.push_back(path);
        child<QAction>("Fopen")->trigger();
        QCOMPARE(dlg->textInput()->toPlainText(), text);
        // A cancelled file dialog leaves the edit box as it is.
        child<QAction>("Fopen")->trigger();
        QCOMPARE(dlg->textInput()->toPlainText(), text);
        QVERIFY(fake->messages.calls.isEmpty());

        // Characters Windows-1252 lacks make the file UTF-8, which reads back.
        QString wide;
        QVERIFY(TextBlockDialog::writeTextFile(path, QString::fromUtf8("€ 東京"), &wide));
        QCOMPARE(readAll(path), QByteArray("\"\xe2\x82\xac \xe6\x9d\xb1\xe4\xba\xac\"\r\n"));
        QString back, error;
        QVERIFY(TextBlockDialog::readTextFile(path, &back, &error));
        QCOMPARE(back, QString::fromUtf8("€ 東京"));
        // A plain file keeps its lines, without a trailing empty one.
        QVERIFY(writeAll(path, "one\r\ntwo\rthree\n"));
        QVERIFY(TextBlockDialog::readTextFile(path, &back, &error));
        QCOMPARE(back, QString("one\ntwo\nthree"));
        // Saving into a folder that does not exist reports it.
        open();
        fake->files.saveAnswers.push_back(tmp.filePath("missing/x.txt"));
        child<QAction>("Fsave")->trigger();
        QCOMPARE(fake->messages.calls.size(), 1);
        QVERIFY(fake->messages.calls[0].text.contains("x.txt"));
    }

    void anyFileOpensOrIsRefusedClearly()
    {
        newBlock();
        open();
        dlg->textInput()->setPlainText("before");
        const auto tryOpen = [&](const QString& path) {
            fake->files.openAnswers.push_back(path);
            child<QAction>("Fopen")->trigger();
            return dlg->textInput()->toPlainText();
        };

        // Windows-1252, UTF-8 with a byte-order mark, UTF-16.
        QVERIFY(writeAll(tmp.filePath("cp.txt"), "caf\xe9 \x80 \x93q\x94"));
        QCOMPARE(tryOpen(tmp.filePath("cp.txt")), QString::fromUtf8("café € “q”"));
        QVERIFY(writeAll(tmp.filePath("bom.txt"), "\xef\xbb\xbf\xc3\xa9t\xc3\xa9"));
        QCOMPARE(tryOpen(tmp.filePath("bom.txt")), QString::fromUtf8("été"));
        QVERIFY(writeAll(tmp.filePath("u16.txt"), QByteArray("\xff\xfeh\0i\0", 6)));
        QCOMPARE(tryOpen(tmp.filePath("u16.txt")), QString("hi"));
        QVERIFY(fake->messages.calls.isEmpty());

        // Each refusal keeps the text and says why, naming the file.
        dlg->textInput()->setPlainText("before");
        struct Bad {
            QString path;
            const char* why;
        };
        QByteArray big(int(TextBlockDialog::kMaxFileBytes) + 1, 'a');
        QVERIFY(writeAll(tmp.filePath("big.txt"), big));
        QVERIFY(writeAll(tmp.filePath("binary.dat"), QByteArray("\x7f" "ELF\x02\x01\x01\0\0\0junk", 14)));
        QVERIFY(QDir(tmp.path()).mkdir("folder.txt"));
        QList<Bad> bad = {{tmp.filePath("big.txt"), "too large"},
                          {tmp.filePath("binary.dat"), "not a text file"},
                          {tmp.filePath("folder.txt"), "not a text file"},
                          {tmp.filePath("gone.txt"), "could not be found"}};
        if (QFile::exists("/dev/zero")) bad.append(Bad{"/dev/zero", "not a text file"});
        QFile locked(tmp.filePath("locked.txt"));
        QVERIFY(writeAll(locked.fileName(), "secret"));
        locked.setPermissions(QFileDevice::WriteOwner);
        if (!locked.open(QIODevice::ReadOnly))  // root reads it anyway
            bad.append(Bad{locked.fileName(), "could not be read"});
        for (const Bad& b : bad) {
            fake->messages.calls.clear();
            QCOMPARE(tryOpen(b.path), QString("before"));
            QCOMPARE(fake->messages.calls.size(), 1);
            QVERIFY2(fake->messages.calls[0].text.contains(b.why), qPrintable(fake->messages.calls[0].text));
            QVERIFY(fake->messages.calls[0].text.contains(QFileInfo(b.path).fileName()));
            QCOMPARE(fake->messages.calls[0].icon, jk::platform::Icon::Warning);
        }

        // The biggest file taken, one long line of arbitrary bytes, opens.
        QByteArray junk(int(TextBlockDialog::kMaxFileBytes), '\0');
        for (int i = 0; i < junk.size(); ++i) junk[i] = char(0x20 + (qint64(i) * 7919) % 0xDF);
        QVERIFY(writeAll(tmp.filePath("junk.txt"), junk));
        fake->messages.calls.clear();
        dlg->textInput()->clear();
        QElapsedTimer t;
        t.start();
        QCOMPARE(tryOpen(tmp.filePath("junk.txt")).size(), junk.size());

        dlg->repaint();
        qInfo("1 MB line opened and painted in %lld ms", t.elapsed());
        QVERIFY(fake->messages.calls.isEmpty());
    }
};

QTEST_MAIN(TestTxtForm)
#include "test_textblockdialog.moc"
