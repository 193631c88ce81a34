// Fields in the main window: inserting and editing them through the field
// dialog (its OK rules, its File menu), stepping numbers across two sheets
// and values through a file, deleting without reusing indexes, full tables,
// bad value files, and a save and read of a project with fields.
#include "ui/mainwindow/MainWindow.h"
#include "platform/FakeServices.h"
#include "file/ProjectFile.h"
#include "ui/dialogs/FieldDialog.h"
#include "ui/sheet/SheetWindow.h"
#include "render/SheetRenderer.h"
#include "file/FieldValues.h"
#include "model/Global.h"
#include "model/Numbering.h"
#include <QAction>
#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QMdiArea>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>
#include <QtTest>

using jk::G;
namespace sh = jk::sheet;
using sh::ObjKind;
using sh::ObjectRef;

namespace {

const QString kMsg37 = QStringLiteral("Please enter a whole number");
const QString kMsg41 = QStringLiteral("Please save the values to a file first (File > Save).");

template <typename T>
T* child(QWidget* d, const char* name)
{
    return d->findChild<T*>(QString::fromLatin1(name));
}

QPoint px(QPoint twips) { return {twips.x() / sh::kTwipsPerPixel, twips.y() / sh::kTwipsPerPixel}; }

jk::TextStyle styleAt(int left, int top)
{
    jk::TextStyle s;
    sh::applyDefaultFont(s);
    s.left = jk::i16(left);
    s.top = jk::i16(top);
    s.width = 900;
    s.height = 300;
    return s;
}

}  // namespace

class TestFields : public QObject {
    Q_OBJECT
    FakeServices* fake = nullptr;
    MainWindow* w = nullptr;
    QTemporaryDir tmp;
    QStringList popups;
    int dialogs = 0;

    // Runs the script on the field dialog once it is up. A dialog the script
    // leaves open is cancelled, so a failing script cannot hang the test.
    void whenDialog(std::function<void(FieldDialog*)> script)
    {
        QTimer::singleShot(0, this, [this, script] {
            auto* d = qobject_cast<FieldDialog*>(QApplication::activeModalWidget());
            if (!d) return;
            ++dialogs;
            script(d);
            if (d->isVisible()) static_cast<QDialog*>(d)->reject();
        });
    }
    QString file(const QString& name, const QByteArray& bytes)
    {
        QFile f(tmp.filePath(name));
        f.open(QIODevice::WriteOnly);
        f.write(bytes);
        return f.fileName();
    }
    int addNum(int sheet, int digits, int number, int link, QPoint at)
    {
        return G().numFields.append({jk::i16(sheet), jk::i16(digits), jk::i16(number), jk::i16(link),
                                     styleAt(at.x(), at.y())});
    }
    int addChar(int sheet, const QString& valueFile, const QString& shown, QPoint at)
    {
        return G().charFields.append({jk::i16(sheet), valueFile, shown, styleAt(at.x(), at.y())});
    }
    void activate(SheetWindow* s) { w->mdiArea()->setActiveSubWindow(s->frameWindow()); }
    void click(SheetWindow* s, QPoint twips) { QTest::mouseClick(s->canvas(), Qt::LeftButton, {}, px(twips)); }
    QString lastMessage() const { return fake->messages.calls.isEmpty() ? QString() : fake->messages.calls.last().text; }

private Q_SLOTS:
    void init()
    {
        jk::resetGlobal();
        G().createTables(jk::TableSizing::NewProject);
        G().texts.formatNames = {"Simple", "Double", "Paper jacket", "CD ROM", "Inside"};
        G().texts.messages[27] = "Jewelcase Studio";
        G().texts.messages[37] = kMsg37;
        G().texts.messages[41] = kMsg41;
        G().projectFolder = tmp.path();
        fake = new FakeServices;
        fake->install();
        popups.clear();
        dialogs = 0;
        SheetWindow::showPopup = [this](QMenu* m, const QPoint&) { popups << m->objectName(); };
        w = new MainWindow;
        w->resize(1200, 900);
        w->show();
    }
    void cleanup()
    {
        delete w;
        w = nullptr;
        SheetWindow::showPopup = nullptr;
        SheetWindow::mayClose = false;
        delete fake;
        fake = nullptr;
    }

    void dialogInsertsAndEditsFields()
    {
        w->addInlaySheet();
        SheetWindow* inlay = w->activeSheet();

        // Numeric field: a letter is refused, "7" with 3 digits is "007",
        // and the number goes onto the spines.
        whenDialog([&](FieldDialog* d) {
            QVERIFY(d->numericMode());
            QVERIFY(child<QGroupBox>(d, "Frame2")->isVisible() && !child<QGroupBox>(d, "Frame1")->isVisible());
            QVERIFY(!child<QMenu>(d, "Mfile")->menuAction()->isEnabled());
            auto* text1 = child<QLineEdit>(d, "Text1");
            QCOMPARE(text1->text(), QStringLiteral("1"));
            text1->clear();
            QTest::keyClicks(text1, "7x");
            QCOMPARE(lastMessage(), kMsg37);
            QCOMPARE(text1->text(), QString());
            QTest::keyClicks(text1, "7");
            child<QRadioButton>(d, "Option3")->click();
            QCOMPARE(text1->text(), QStringLiteral("007"));
            child<QCheckBox>(d, "Check1")->click();
            child<QRadioButton>(d, "Cntr")->click();
            child<QPushButton>(d, "Command3")->click();
        });
        w->button("FDN")->click();
        QCOMPARE(dialogs, 1);
        QCOMPARE(G().numFields.count(), 1);
        const jk::NumFieldRecord& n = G().numFields.at(1);
        QCOMPARE(n.sheet, 4);
        QCOMPARE(n.digits, 3);
        QCOMPARE(n.number, 7);
        QCOMPARE(n.spineLink, 1);
        QCOMPARE(n.style.alignment, 2);
        QCOMPARE(n.style.fontName, QStringLiteral("Ms Sans Serif"));
        QCOMPARE(sh::shownText({ObjKind::NumField, 1}), QStringLiteral("007"));
        QCOMPARE(n.style.width, sh::textExtentTwips(n.style, "007").width());
        QCOMPARE(G().spineNumberText, QStringLiteral("007"));
        QVERIFY(inlay->spineCaption().endsWith(QStringLiteral("007")));
        QCOMPARE(inlay->stackingOrder().back(), (ObjectRef{ObjKind::NumField, 1}));

        // Character field: OK without a value file stays open with message
        // 41; saving the values gives the field its file and first value.
        const QString names = tmp.filePath("names");
        whenDialog([&](FieldDialog* d) {
            QVERIFY(!d->numericMode());
            child<QPlainTextEdit>(d, "Text2")->setPlainText("Alpha\nBeta, Gamma\n\n  Delta  ");
            child<QPushButton>(d, "Command3")->click();
            QCOMPARE(lastMessage(), kMsg41);
            QVERIFY(d->isVisible());
            fake->files.saveAnswers = {names};
            child<QAction>(d, "Fsave")->trigger();
            QCOMPARE(fake->files.saveCalls.last().defaultSuffix, QStringLiteral("txt"));
            QCOMPARE(d->valueFile(), names + ".txt");
            child<QPushButton>(d, "Command3")->click();
            QVERIFY(!d->isVisible());
        });
        w->action("FieldCharacter")->trigger();
        QCOMPARE(G().charFields.count(), 1);
        QCOMPARE(G().charFields.at(1).valueFile, names + ".txt");
        QCOMPARE(G().charFields.at(1).text, QStringLiteral("Alpha"));
        QCOMPARE(jk::fieldValues(names + ".txt"), QStringList({"Alpha", "Beta, Gamma", "Delta"}));
        QCOMPARE(jk::fieldHandOver().fieldText, QStringLiteral("Alpha\nBeta, Gamma\nDelta"));

        // Editing: the dialog starts from the field; four digits now.
        G().selectedIndex = 1;
        G().selectedKind = 2;
        G().fieldSubKind = 2;
        whenDialog([&](FieldDialog* d) {
            auto* text1 = child<QLineEdit>(d, "Text1");
            QCOMPARE(text1->text(), QStringLiteral("007"));
            QVERIFY(child<QRadioButton>(d, "Option3")->isChecked());
            QVERIFY(child<QCheckBox>(d, "Check1")->isChecked());
            child<QRadioButton>(d, "Option4")->click();
            fake->fonts.answers = {QFont("DejaVu Serif", 14)};
            child<QPushButton>(d, "Command1")->click();
            QCOMPARE(fake->fonts.calls.last().initial.family(), QStringLiteral("Ms Sans Serif"));
            fake->colors.answers = {QColor(Qt::yellow)};
            child<QRadioButton>(d, "Option6")->click();
            child<QPushButton>(d, "Command3")->click();
        });
        w->action("Nedit")->trigger();
        QCOMPARE(sh::shownText({ObjKind::NumField, 1}), QStringLiteral("0007"));
        QCOMPARE(n.style.fontName, QStringLiteral("DejaVu Serif"));
        QCOMPARE(n.style.fontSize, 14);
        QCOMPARE(n.style.backStyle, 1);
        QCOMPARE(n.style.backColor, 0x00ffff);  // yellow, red in the low byte
        QVERIFY(n.style.height >= sh::textExtentTwips(n.style, "0007").height());
        QCOMPARE(G().spineNumberText, QStringLiteral("0007"));

        // A cancelled insertion takes a slot and leaves it empty; the start
        // value must be a number from 1.
        whenDialog([&](FieldDialog* d) {
            auto* text1 = child<QLineEdit>(d, "Text1");
            text1->setText("0");
            child<QPushButton>(d, "Command3")->click();
            QVERIFY(lastMessage().startsWith(kMsg37));
            QVERIFY(d->isVisible());
            child<QRadioButton>(d, "Option2")->click();
            child<QPushButton>(d, "Command2")->click();
        });
        w->action("FieldNumeric")->trigger();
        QCOMPARE(G().numFields.count(), 2);
        QVERIFY(G().numFields.at(2).isFree());
        QVERIFY(!sh::objectExists(4, {ObjKind::NumField, 2}));
        QCOMPARE(jk::fieldHandOver().numberText, QString());
        QCOMPARE(G().spineNumberText, QStringLiteral("0007"));
    }

    void steppingAcrossSheetsAndThroughValues()
    {
        const QString abc = file("abc.txt", "A\r\nB\r\nC\r\n");
        const int inlayNum = addNum(4, 3, 9, 1, {3000, 2000});
        const int discNum = addNum(8, 1, 5, 0, {3000, 2000});
        const int discChar = addChar(8, abc, "B", {3000, 3000});
        w->addInlaySheet();
        SheetWindow* inlay = w->activeSheet();
        w->addDiscSheet();
        SheetWindow* disc = w->activeSheet();

        activate(inlay);
        click(inlay, {3100, 2100});
        QCOMPARE(popups.last(), QStringLiteral("Naction"));
        w->action("Plus1")->trigger();
        // Both sheets show the stepped field's text, in its digit code.
        QCOMPARE(sh::shownText({ObjKind::NumField, inlayNum}), QStringLiteral("010"));
        QCOMPARE(sh::shownText({ObjKind::NumField, discNum}), QStringLiteral("010"));
        QCOMPARE(G().spineNumberText, QStringLiteral("010"));
        QVERIFY(inlay->spineCaption().endsWith(QStringLiteral("010")));
        QCOMPARE(G().numFields.at(inlayNum).number, 9);

        G().numFields.at(inlayNum).shown = QStringLiteral("999");
        w->action("Plus1")->trigger();
        QCOMPARE(sh::shownText({ObjKind::NumField, discNum}), QStringLiteral("1000"));
        // The fields grow with their text.
        const jk::TextStyle& ds = G().numFields.at(discNum).style;
        QVERIFY(ds.width >= sh::textExtentTwips(ds, "1000").width());
        w->action("raz")->trigger();
        QCOMPARE(sh::shownText({ObjKind::NumField, discNum}), QStringLiteral("001"));
        w->action("Moins1")->trigger();
        w->action("Moins1")->trigger();
        QCOMPARE(sh::shownText({ObjKind::NumField, inlayNum}), QStringLiteral("000"));
        QCOMPARE(G().spineNumberText, QStringLiteral("000"));

        // The disc's numeric field steps from what it shows, with one digit.
        activate(disc);
        click(disc, {3100, 2100});
        w->action("Plus1")->trigger();
        QCOMPARE(sh::shownText({ObjKind::NumField, inlayNum}), QStringLiteral("1"));
        QCOMPARE(G().spineNumberText, QStringLiteral("1"));

        // Character field: Next and Previous as far as the file goes.
        click(disc, {3100, 3100});
        QCOMPARE(popups.last(), QStringLiteral("AAction"));
        QMenu* menu = w->popup("AAction");
        emit menu->aboutToShow();
        QVERIFY(w->action("voirnext")->isEnabled() && w->action("VoirPrevious")->isEnabled());
        w->action("voirnext")->trigger();
        QCOMPARE(G().charFields.at(discChar).text, QStringLiteral("C"));
        QVERIFY(!w->action("voirnext")->isEnabled() && w->action("VoirPrevious")->isEnabled());
        w->action("voirnext")->trigger();
        QCOMPARE(G().charFields.at(discChar).text, QStringLiteral("C"));
        w->action("VoirPrevious")->trigger();
        w->action("VoirPrevious")->trigger();
        QCOMPARE(G().charFields.at(discChar).text, QStringLiteral("A"));
        QVERIFY(w->action("voirnext")->isEnabled() && !w->action("VoirPrevious")->isEnabled());
        // The stepping commands act on their own kind of field only.
        w->action("Plus1")->trigger();
        QCOMPARE(sh::shownText({ObjKind::NumField, inlayNum}), QStringLiteral("1"));

        // Value files gone bad: nothing moves, nothing is offered.
        for (const QString& bad : {QStringLiteral("/dev/zero"), tmp.path(), tmp.filePath("gone.txt"),
                                   file("bin.dat", QByteArray("\0\1\2\3PK\x03\x04", 8))}) {
            G().charFields.at(discChar).valueFile = bad;
            disc->nextValue();
            QCOMPARE(G().charFields.at(discChar).text, QStringLiteral("A"));
            QVERIFY(!w->action("voirnext")->isEnabled() && !w->action("VoirPrevious")->isEnabled());
        }

        // advanceFields after printing the disc: its fields move on one label.
        G().charFields.at(discChar).valueFile = abc;
        disc->advanceFields();
        QCOMPARE(G().charFields.at(discChar).text, QStringLiteral("B"));
        QCOMPARE(sh::shownText({ObjKind::NumField, inlayNum}), QStringLiteral("2"));
    }

    void deletingKeepsIndexesAndFullTablesRefuse()
    {
        addNum(4, 2, 1, 0, {3000, 1000});
        addNum(4, 3, 5, 1, {3000, 2000});
        addNum(4, 2, 8, 0, {3000, 3000});
        w->addInlaySheet();
        SheetWindow* inlay = w->activeSheet();
        jk::updateSpineNumber();
        QCOMPARE(G().spineNumberText, QStringLiteral("005"));

        click(inlay, {3100, 2100});
        w->action("NDelete")->trigger();
        QVERIFY(G().numFields.at(2).isFree());
        QCOMPARE(G().spineNumberText, QStringLiteral(" "));  // the spines lose the number
        click(inlay, {3100, 3100});
        QCOMPARE(G().selectedIndex, 3);
        w->action("Plus1")->trigger();
        QCOMPARE(sh::shownText({ObjKind::NumField, 1}), QStringLiteral("09"));
        QVERIFY(!sh::objectExists(4, {ObjKind::NumField, 2}) && !G().numFields.at(2).shown);

        whenDialog([](FieldDialog* d) { child<QPushButton>(d, "Command3")->click(); });
        w->button("FDN")->click();
        QCOMPARE(G().numFields.count(), 4);
        QVERIFY(sh::objectExists(4, {ObjKind::NumField, 4}));

        // Full tables: a clear refusal, no dialog, nothing written.
        while (!G().numFields.full()) G().numFields.append(jk::NumFieldRecord{});
        while (!G().charFields.full()) G().charFields.append(jk::CharFieldRecord{});
        const int before = dialogs;
        const int messages = int(fake->messages.calls.size());
        whenDialog([](FieldDialog*) {});
        w->button("FDN")->click();
        whenDialog([](FieldDialog*) {});
        w->button("FDA")->click();
        QCoreApplication::processEvents();  // the scripts find no dialog
        QCOMPARE(dialogs, before);
        QCOMPARE(int(fake->messages.calls.size()), messages + 2);
        QVERIFY(lastMessage().contains(QStringLiteral("character fields")));
        QCOMPARE(G().charFields.count(), G().charFields.capacity());
    }

    void badValueFilesInTheDialog()
    {
        w->addDiscSheet();
        const QString zeros = tmp.filePath("zeros.txt");
        {
            QFile f(zeros);
            QVERIFY(f.open(QIODevice::WriteOnly));
            QVERIFY(f.resize(100LL * 1024 * 1024));
        }
        QByteArray big;
        for (int i = 0; big.size() <= jk::kMaxValueFileBytes; ++i) big += "Label " + QByteArray::number(i) + "\r\n";
        const QString bigFile = file("big.txt", big);

        // A binary file, a folder: refused with a message and not taken as
        // the value file; a huge text file is shown, read-only, and OK
        // leaves it as it is.
        whenDialog([&](FieldDialog* d) {
            auto* text2 = child<QPlainTextEdit>(d, "Text2");
            for (const QString& bad : {zeros, tmp.path()}) {
                fake->files.openAnswers = {bad};
                child<QAction>(d, "Fopen")->trigger();
                QVERIFY(lastMessage().contains(QStringLiteral("not a text file")));
                QCOMPARE(d->valueFile(), QString());
                QVERIFY(text2->toPlainText().isEmpty());
            }
            child<QPushButton>(d, "Command3")->click();
            QCOMPARE(lastMessage(), kMsg41);
            fake->files.openAnswers = {bigFile};
            child<QAction>(d, "Fopen")->trigger();
            QCOMPARE(d->valueFile(), bigFile);
            QVERIFY(text2->isReadOnly());
            QVERIFY(text2->toPlainText().startsWith(QStringLiteral("Label 0\nLabel 1\n")));
            child<QPushButton>(d, "Command3")->click();
        });
        w->button("FDA")->click();
        QCOMPARE(QFileInfo(bigFile).size(), qint64(big.size()));
        QCOMPARE(G().charFields.at(1).text, QStringLiteral("Label 0"));

        // A field whose file went bad opens an empty dialog, without a message.
        G().charFields.at(1).valueFile = QStringLiteral("/dev/zero");
        G().selectedIndex = 1;
        G().selectedKind = 2;
        G().fieldSubKind = 1;
        const int messages = int(fake->messages.calls.size());
        whenDialog([&](FieldDialog* d) {
            QVERIFY(child<QPlainTextEdit>(d, "Text2")->toPlainText().isEmpty());
            child<QPushButton>(d, "Command2")->click();
        });
        w->action("AAEdit")->trigger();
        QCOMPARE(int(fake->messages.calls.size()), messages);
        QCOMPARE(G().charFields.at(1).text, QStringLiteral("Label 0"));
    }

    void fieldsSurviveSaveAndOpen()
    {
        const QString names = file("names.txt", "Ann\r\nBob\r\n");
        G().spineText = QStringLiteral("Best of");
        addChar(8, names, "Bob", {1500, 1500});
        addNum(4, 3, 1, 1, {2000, 2000});  // deleted below
        const int kept = addNum(8, 4, 12, 0, {2500, 2500});
        G().numFields.at(kept).style.bold = false;
        G().numFields.at(kept).style.alignment = 1;
        G().numFields.at(1).number = 0;
        const int linked = addNum(4, 2, 3, 1, {3000, 3000});
        G().numFields.at(linked).shown = QStringLiteral("77");  // stepped: not saved
        G().sheetComposition = 12;

        const QString path = tmp.filePath("fields.prj");
        QString error;
        QVERIFY2(jk::writeProject(path, &error), qPrintable(error));
        jk::resetGlobal();
        G().createTables(jk::TableSizing::OpenProject);
        QVERIFY(jk::readProject(path).opened);

        // Deleted records are left out; every number starts again at 1; the
        // character field shows its file's first value.
        QCOMPARE(G().charFields.count(), 1);
        QCOMPARE(G().charFields.at(1).valueFile, names);
        QCOMPARE(G().charFields.at(1).text, QStringLiteral("Ann"));
        QCOMPARE(G().charFields.at(1).style.left, 1500);
        QCOMPARE(G().numFields.count(), 2);
        const jk::NumFieldRecord& a = G().numFields.at(1);
        QCOMPARE(a.sheet, 8);
        QCOMPARE(a.digits, 4);
        QCOMPARE(a.number, 1);
        QCOMPARE(a.style.alignment, 1);
        QCOMPARE(a.style.bold, false);
        QVERIFY(!a.shown);
        QCOMPARE(G().numFields.at(2).spineLink, 1);
        QCOMPARE(G().spineNumberText, QStringLiteral("01"));
        QCOMPARE(G().spineText, QStringLiteral("Best of"));

        // The sheets show them, and they step.
        w->addDiscSheet();
        SheetWindow* disc = w->activeSheet();
        QCOMPARE(sh::shownText({ObjKind::NumField, 1}), QStringLiteral("0001"));
        click(disc, {2600, 2600});
        w->action("Plus1")->trigger();
        QCOMPARE(sh::shownText({ObjKind::NumField, 1}), QStringLiteral("0002"));
        click(disc, {1600, 1600});
        w->action("voirnext")->trigger();
        QCOMPARE(G().charFields.at(1).text, QStringLiteral("Bob"));
    }
};

QTEST_MAIN(TestFields)
#include "test_fields.moc"
