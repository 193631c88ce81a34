// Fields in the main window: inserting and editing them through the
// (scripted) field dialog, stepping numbers across two sheets with the spine
// number and values through a file, deleting without reusing slots, full
// tables; and the field dialog's own rules.
#include "UiFixture.h"
#include "file/ValueFile.h"
#include "model/Numbering.h"
#include "ui/dialogs/FieldDialog.h"
#include <QCheckBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

using namespace fixture;
using jk::ObjKind;
using jk::ObjectRef;
namespace sh = jk::sheet;

class TestFields : public QObject {
    Q_OBJECT
    std::unique_ptr<SheetGui> gui;
    MainWindow* w = nullptr;
    QTemporaryDir tmp;

    jk::Project& doc() { return gui->project(); }
    QString shown(int numField) { return sh::shownText(doc(), {ObjKind::NumField, numField}); }
    QString lastMessage() const
    {
        return gui->fake->messages.calls.isEmpty() ? QString() : gui->fake->messages.calls.last().text;
    }
    QString file(const QString& name, const QByteArray& bytes)
    {
        return writeFile(tmp.filePath(name), bytes) ? tmp.filePath(name) : QString();
    }
    static FieldEditResult numOk(jk::NumFieldRecord r, const QString& number)
    {
        return {.accepted = true, .numField = r, .fieldText = number, .numberText = number};
    }

private Q_SLOTS:
    void init()
    {
        gui = std::make_unique<SheetGui>();
        w = gui->w.get();
    }
    void cleanup() { gui.reset(); }

    void dialogInsertsAndEditsFields()
    {
        w->addInlaySheet();
        SheetWindow* inlay = w->activeSheet();

        // "7" with three digits shows "007", and on the spines.
        gui->dialogs.fields = {numOk({.digits = 3, .spineLink = true, .style = {.alignment = 2}}, "7")};
        w->button("FDN")->click();
        const jk::NumFieldRecord& r = doc().numFields().at(1);
        QCOMPARE(r.sheet, 4);
        QCOMPARE(r.number, 7);
        QCOMPARE(r.style.alignment, 2);
        QCOMPARE(r.style.fontName, QStringLiteral("Ms Sans Serif"));
        QCOMPARE(shown(1), QStringLiteral("007"));
        QCOMPARE(r.style.width, sh::textExtentTwips(r.style, "007").width());
        QCOMPARE(doc().spineNumberText(), QStringLiteral("007"));
        QVERIFY(inlay->spineCaption().endsWith(QStringLiteral("007")));

        // A character field shows its file's first value.
        const QString names = file("names.txt", "Alpha\r\nBeta\r\n");
        gui->dialogs.fields = {{.accepted = true, .charField = {.valueFile = names}, .fieldText = "Alpha\nBeta"}};
        w->action("FieldCharacter")->trigger();
        QCOMPARE(doc().charFields().at(1).text, QStringLiteral("Alpha"));
        QCOMPARE(doc().charFields().at(1).sheet, 4);

        // Editing: four digits and another font.
        w->editor().selection.object = {ObjKind::NumField, 1};
        jk::NumFieldRecord e = r;
        e.digits = 4;
        e.style.fontName = "DejaVu Serif";
        e.style.fontSize = 14;
        gui->dialogs.fields = {numOk(e, "0007")};
        w->action("Nedit")->trigger();
        QCOMPARE(shown(1), QStringLiteral("0007"));
        QCOMPARE(r.style.fontName, QStringLiteral("DejaVu Serif"));
        QVERIFY(r.style.height >= sh::textExtentTwips(r.style, "0007").height());
        QCOMPARE(doc().spineNumberText(), QStringLiteral("0007"));

        // A cancelled insertion takes a slot and leaves it empty.
        w->action("FieldNumeric")->trigger();
        QCOMPARE(doc().numFields().count(), 2);
        QVERIFY(doc().numFields().at(2).isFree() && !doc().exists(4, {ObjKind::NumField, 2}));
        QCOMPARE(doc().spineNumberText(), QStringLiteral("0007"));
    }

    void steppingAcrossSheetsAndThroughValues()
    {
        const QString abc = file("abc.txt", "A\r\nB\r\nC\r\n");
        const int inlayNum = doc().addNumField(numAt(4, 3, 9, true, {3000, 2000, 900, 300}));
        const int discNum = doc().addNumField(numAt(8, 1, 5, false, {3000, 2000, 150, 300}));  // room for 1 digit
        const int discChar = doc().addCharField(charAt(8, abc, "B", {3000, 3000, 900, 300}));
        w->addInlaySheet();
        SheetWindow* inlay = w->activeSheet();
        w->addDiscSheet();
        SheetWindow* disc = w->activeSheet();
        const jk::CharFieldRecord& ch = doc().charFields().at(discChar);

        // Both sheets show the stepped field's text, in its digit code; the
        // record keeps its number.
        activate(*gui, 4);
        click(inlay, {3100, 2100});
        w->action("Plus1")->trigger();
        QCOMPARE(shown(inlayNum), QStringLiteral("010"));
        QCOMPARE(shown(discNum), QStringLiteral("010"));
        QCOMPARE(doc().spineNumberText(), QStringLiteral("010"));
        QVERIFY(inlay->spineCaption().endsWith(QStringLiteral("010")));
        QCOMPARE(doc().numFields().at(inlayNum).number, 9);
        // The fields grow with their text.
        doc().setNumFieldShown(inlayNum, "999");
        w->action("Plus1")->trigger();
        QCOMPARE(shown(discNum), QStringLiteral("1000"));
        const jk::TextStyle& ds = doc().numFields().at(discNum).style;
        QVERIFY(ds.width >= sh::textExtentTwips(ds, "1000").width());
        w->action("raz")->trigger();
        QCOMPARE(shown(discNum), QStringLiteral("001"));
        w->action("Moins1")->trigger();
        QCOMPARE(shown(inlayNum), QStringLiteral("000"));
        QCOMPARE(doc().spineNumberText(), QStringLiteral("000"));

        // The disc's field steps from what it shows, with its one digit.
        activate(*gui, 8);
        click(disc, {3100, 2100});
        w->action("Plus1")->trigger();
        QCOMPARE(shown(inlayNum), QStringLiteral("1"));
        QCOMPARE(doc().spineNumberText(), QStringLiteral("1"));

        // Next and Previous go as far as the file goes.
        click(disc, {3100, 3100});
        emit w->popup("AAction")->aboutToShow();
        QVERIFY(gui->enabled("voirnext") && gui->enabled("VoirPrevious"));
        w->action("voirnext")->trigger();
        w->action("voirnext")->trigger();
        QCOMPARE(ch.text, QStringLiteral("C"));
        QVERIFY(!gui->enabled("voirnext") && gui->enabled("VoirPrevious"));
        w->action("VoirPrevious")->trigger();
        w->action("VoirPrevious")->trigger();
        QCOMPARE(ch.text, QStringLiteral("A"));
        QVERIFY(gui->enabled("voirnext") && !gui->enabled("VoirPrevious"));
        w->action("Plus1")->trigger();  // not a numeric field: nothing
        QCOMPARE(shown(inlayNum), QStringLiteral("1"));

        // After printing the disc its fields move on one label.
        disc->advanceFields();
        QCOMPARE(ch.text, QStringLiteral("B"));
        QCOMPARE(shown(inlayNum), QStringLiteral("2"));

        // Numbers stop at 32767.
        click(disc, {3100, 2100});
        doc().setNumFieldShown(discNum, "32766");
        w->action("Plus1")->trigger();
        w->action("Plus1")->trigger();
        QCOMPARE(shown(inlayNum), QStringLiteral("32767"));
        QCOMPARE(doc().spineNumberText(), QStringLiteral("32767"));
    }

    void deletingKeepsSlotsAndFullTablesRefuse()
    {
        for (auto [digits, number, link, top] : {std::tuple{2, 1, false, 1000}, {3, 5, true, 2000}, {2, 8, false, 3000}})
            doc().addNumField(numAt(4, digits, number, link, {3000, top, 900, 300}));
        w->addInlaySheet();
        SheetWindow* inlay = w->activeSheet();
        jk::updateSpineNumber(doc());
        QCOMPARE(doc().spineNumberText(), QStringLiteral("005"));

        // The spines lose the number with its field.
        click(inlay, {3100, 2100});
        w->action("NDelete")->trigger();
        QVERIFY(doc().numFields().at(2).isFree());
        QCOMPARE(doc().spineNumberText(), QStringLiteral(" "));
        click(inlay, {3100, 3100});
        QCOMPARE(w->editor().selection.object, (ObjectRef{ObjKind::NumField, 3}));
        w->action("Plus1")->trigger();
        QCOMPARE(shown(1), QStringLiteral("09"));
        QVERIFY(!doc().exists(4, {ObjKind::NumField, 2}) && !doc().numFields().at(2).shown);
        gui->dialogs.fields = {numOk({}, "1")};
        w->button("FDN")->click();
        QVERIFY(doc().exists(4, {ObjKind::NumField, 4}));

        // Full tables: a clear refusal, no dialog, nothing written.
        while (!doc().numFields().full()) doc().addNumField({});
        while (!doc().charFields().full()) doc().addCharField({});
        const int asked = gui->dialogs.fieldRequests;
        w->button("FDN")->click();
        w->button("FDA")->click();
        QCOMPARE(gui->dialogs.fieldRequests, asked);
        QCOMPARE(gui->fake->messages.calls.size(), 2);
        QVERIFY(lastMessage().contains(QStringLiteral("character fields")));
    }

    void fieldDialogRules()
    {
        // Numeric field: a letter empties the box with a message; the digit count pads.
        FieldDialog d{jk::NumFieldRecord{}};
        d.show();
        auto* text1 = child<QLineEdit>(&d, "Text1");
        text1->clear();
        QTest::keyClicks(text1, "7x");
        QVERIFY(lastMessage().contains("whole number"));
        QCOMPARE(text1->text(), QString());
        QTest::keyClicks(text1, "7");
        child<QRadioButton>(&d, "Option3")->click();
        QCOMPARE(text1->text(), QStringLiteral("007"));
        child<QCheckBox>(&d, "Check1")->click();
        child<QRadioButton>(&d, "Cntr")->click();
        // A start value must be a number from 1.
        text1->setText("0");
        child<QPushButton>(&d, "Command3")->click();
        QVERIFY(d.isVisible());
        text1->setText("007");
        child<QPushButton>(&d, "Command3")->click();
        QVERIFY(!d.isVisible() && d.result().accepted);
        QCOMPARE(d.result().numberText, QStringLiteral("007"));
        QCOMPARE(d.result().numField.digits, 3);
        QVERIFY(d.result().numField.spineLink);
        QCOMPARE(d.result().numField.style.alignment, 2);

        // Character field: OK needs a value file; Save writes the values,
        // one a line.
        FieldDialog c{jk::CharFieldRecord{}};
        c.show();
        child<QPlainTextEdit>(&c, "Text2")->setPlainText("Alpha\nBeta, Gamma\n\n  Delta  ");
        child<QPushButton>(&c, "Command3")->click();
        QVERIFY(lastMessage().contains("save the values"));
        QVERIFY(c.isVisible());
        const QString names = tmp.filePath("names");
        gui->fake->files.saveAnswers = {names};
        child<QAction>(&c, "Fsave")->trigger();
        child<QPushButton>(&c, "Command3")->click();
        QVERIFY(c.result().accepted);
        QCOMPARE(c.result().charField.valueFile, names + ".txt");
        QCOMPARE(c.result().fieldText, QStringLiteral("Alpha\nBeta, Gamma\nDelta"));
        QCOMPARE(jk::fieldValues(names + ".txt"), QStringList({"Alpha", "Beta, Gamma", "Delta"}));

        // A binary file or a folder picked by mistake is not taken.
        FieldDialog b{jk::CharFieldRecord{}};
        auto* text2 = child<QPlainTextEdit>(&b, "Text2");
        for (const QString& bad : {file("zeros.bin", QByteArray(64, '\0')), tmp.path()}) {
            gui->fake->files.openAnswers = {bad};
            child<QAction>(&b, "Fopen")->trigger();
            QVERIFY(lastMessage().contains("not a text file"));
            QVERIFY(b.valueFile().isEmpty() && text2->toPlainText().isEmpty());
        }
        // A huge file is shown only in part, read-only, and OK leaves it whole.
        QByteArray big;
        for (int i = 0; big.size() <= jk::kMaxValueFileBytes; ++i) big += "Label " + QByteArray::number(i) + "\r\n";
        const QString bigFile = file("big.txt", big);
        gui->fake->files.openAnswers = {bigFile};
        child<QAction>(&b, "Fopen")->trigger();
        QVERIFY(text2->isReadOnly());
        QVERIFY(text2->toPlainText().startsWith(QStringLiteral("Label 0\nLabel 1\n")));
        b.show();
        child<QPushButton>(&b, "Command3")->click();
        QVERIFY(b.result().accepted);
        QCOMPARE(QFileInfo(bigFile).size(), qint64(big.size()));
    }
};

QTEST_MAIN(TestFields)
#include "test_fields.moc"
