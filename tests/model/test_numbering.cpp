// The document without windows: what its mutations mark and clamp, number
// formats and bounds, stepping across the open sheets, value files, the
// advance after a printed sheet and the per-copy values of a print run.
#include "Fixture.h"
#include "file/ValueFile.h"
#include "model/Numbering.h"
#include "model/Project.h"
#include <QTemporaryDir>
#include <QtTest>
#include <sys/stat.h>

using namespace jk;

class TestNumbering : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    Project project;
    QStringList spineLines;  // what the spines were told to show

    QString file(const QString& name, const QByteArray& bytes)
    {
        fixture::writeFile(tmp.filePath(name), bytes);
        return tmp.filePath(name);
    }
    int addNum(int sheet, int digits, int number, bool link = false)
    {
        return project.addNumField({i16(sheet), i16(digits), i16(number), link, {}, {}});
    }
    int addChar(int sheet, const QString& valueFile, const QString& shown)
    {
        return project.addCharField({i16(sheet), valueFile, shown, {}});
    }
    QString charText(int i) const { return project.charFields().at(i).text; }
    QString numText(int i) const { return numFieldText(project, i); }
    QStringList numTexts(std::initializer_list<int> fields) const
    {
        QStringList out;
        for (int i : fields) out << numText(i);
        return out;
    }

private Q_SLOTS:
    void initTestCase()
    {
        connect(&project, &Project::spinePropagated, this, [this](const QString& line) { spineLines << line; });
    }
    void init()
    {
        fixture::resetApp();
        project.reset(TableSizing::NewProject);
        project.setSheetComposition(FmtInside | FmtCdRom);  // the open sheets
        spineLines.clear();
    }

    void projectMarksClampsAndFills()
    {
        TextRecord t{FmtInside, QStringLiteral("text"), {}};
        t.style.top = -30;
        t.style.left = -40;
        int added = 0;
        while (project.addText(true, t)) ++added;
        QCOMPARE(added, project.pageText().capacity());  // a table takes exactly its capacity
        const ObjectRef refs[] = {{ObjKind::Text, project.addText(false, t)},
                                  {ObjKind::PageText, 2},
                                  {ObjKind::Picture, project.addPicture({FmtInside, QStringLiteral("a.png")})},
                                  {ObjKind::CharField, addChar(FmtInside, QStringLiteral("v.txt"), QStringLiteral("A"))},
                                  {ObjKind::NumField, addNum(FmtInside, 2, 5)}};
        project.setNumFieldShown(refs[4].index, QStringLiteral("07"));
        QSignalSpy changes(&project, &Project::objectChanged);
        // Removing leaves the mark the views and the file writer skip (a
        // numeric field's number 0, a character field without value file).
        for (const ObjectRef& r : refs) {
            QVERIFY(project.exists(FmtInside, r) && !project.exists(FmtCdRom, r));
            project.remove(r);
            QVERIFY2(!project.exists(FmtInside, r), qPrintable(QString::number(int(r.kind))));
        }
        QCOMPARE(changes.count(), 5);
        // A deleted slot is never reused.
        QVERIFY(project.addText(true, t) == 0 && project.addPicture({FmtInside, QStringLiteral("b.png")}) == 2);

        // Saving brings text blocks back to the canvas's edge, not fields;
        // the spine title takes the spine text.
        project.addText(false, t);
        const int field = addChar(FmtInside, QStringLiteral("v.txt"), QStringLiteral("A"));
        project.setGeometry({ObjKind::CharField, field}, -5, -6, 100, 100);
        project.setSpineText(QStringLiteral("Mine"));
        project.propagateSpine();
        project.prepareForSave();
        const TextStyle& free = project.freeText().at(2).style;
        QVERIFY(free.top == 0 && free.left == 0 && project.pageText().at(1).style.left == 0);
        QVERIFY(project.charFields().at(field).style.left == -5 && project.spineTitle() == "Mine");

        // Empty spine parts become blanks on the spines.
        project.reset(TableSizing::NewProject);
        spineLines.clear();
        project.propagateSpine();
        project.setSpineText(QStringLiteral("My Album"));
        project.setSpineNumberText(QStringLiteral("007"));
        project.propagateSpine();
        QCOMPARE(spineLines, (QStringList{"   ", "My Album 007"}));
    }

    void numbersAndTheirBounds()
    {
        // The format does not cut; digit codes outside 1-4 show nothing.
        QCOMPARE((QStringList{formatFieldNumber(7, 3), formatFieldNumber(1000, 3), formatFieldNumber(1, 4),
                              formatFieldNumber(5, 0) + formatFieldNumber(5, 5)}),
                 (QStringList{"007", "1000", "0001", ""}));
        QCOMPARE((QList<int>{leadingNumber("  012ab"), leadingNumber("abc"), leadingNumber("-3"),
                             leadingNumber("99999999999999999999"), leadingNumber("-99999"), nextFieldNumber(32766),
                             nextFieldNumber(32767), previousFieldNumber(0), numberForCopy(999, 2),
                             numberForCopy(32766, 5)}),
                 (QList<int>{12, 0, -3, 32767, -32768, 32767, 32767, 0, 1000, 32767}));
        // The last value repeats.
        QCOMPARE((QStringList{valueForCopy({"A", "B", "C"}, 1), valueForCopy({"A", "B", "C"}, 7), valueForCopy({}, 1)}),
                 (QStringList{"A", "C", ""}));
    }

    void steppingReachesEveryOpenSheet()
    {
        const int a = addNum(FmtInside, 3, 9, true);  // linked to the spines
        const int b = addNum(FmtCdRom, 1, 5);
        const int away = addNum(FmtSimple, 2, 4);  // its sheet is not open
        QVERIFY(stepNumber(project, a, 1));
        // Both open sheets show the stepped field's text, in its digit code;
        // stepping leaves the record's number.
        QCOMPARE(numTexts({a, b, away}), (QStringList{"010", "010", "04"}));
        QVERIFY(project.numFields().at(a).number == 9 && project.currentNumber() == 10);
        QCOMPARE(project.spineNumberText(), QStringLiteral("010"));
        QCOMPARE(spineLines.last(), QStringLiteral("  010"));  // empty spine text: a blank
        // The other field steps from what it shows, with its own code; never below 0.
        QVERIFY(stepNumber(project, b, 1));
        QCOMPARE(numText(a), QStringLiteral("11"));
        QVERIFY(resetNumber(project, b) && numText(a) == "1");
        QVERIFY(stepNumber(project, a, -1) && numText(b) == "000");
        QVERIFY(!stepNumber(project, a, -1));
        project.setNumFieldShown(a, QStringLiteral("32767"));
        QVERIFY(!stepNumber(project, a, 1) && !stepNumber(project, 99, 1));  // the largest 16-bit number stays
        QCOMPARE(numText(a), QStringLiteral("32767"));

        // Only fields 1-50 take part; a deleted field takes nothing.
        while (project.numFields().count() < kSteppedFieldRange) addNum(FmtCdRom, 1, 1);
        const int fiftyFirst = addNum(FmtCdRom, 1, 1);
        project.remove({ObjKind::NumField, b});
        QVERIFY(resetNumber(project, a));
        QCOMPARE(numTexts({kSteppedFieldRange, fiftyFirst, b}), (QStringList{"001", "1", "0"}));

        // The spine follows the linked field, and loses the number with it.
        updateSpineNumber(project);
        QCOMPARE(project.spineNumberText(), QStringLiteral("001"));
        project.remove({ObjKind::NumField, a});
        updateSpineNumber(project);
        QCOMPARE(project.spineNumberText(), QStringLiteral(" "));
    }

    void valueFilesReadWriteAndRefuse()
    {
        const QString mixed = file("mixed.txt", "  Ann  \r\nBob,Carl\n\"Smith, Dan\" , Eve\r\n\r\n  \"Fay, G\"\n");
        QCOMPARE(readFieldValues(mixed), (QStringList{"Ann", "Bob", "Carl", "Smith, Dan", "Eve", "", "Fay, G"}));
        QCOMPARE(readFieldValues(mixed, 2), (QStringList{"Ann", "Bob"}));
        QCOMPARE(fieldValues(mixed), (QStringList{"Ann", "Bob", "Carl", "Smith, Dan", "Eve", "Fay, G"}));
        QCOMPARE(firstFieldValue(file("late.txt", QByteArray(40, ',') + "\r\n \r\n\"Late\"\r\n")), QStringLiteral("Late"));
        QCOMPARE(firstFieldValue(file("cp.txt", "Z\xFCrich\r\n")), QStringLiteral("Zürich"));  // Windows-1252

        // What the dialog writes reads back value for value.
        const QStringList values{"Smith, John", " padded ", "\"quoted\"", "Zoë €", "plain"};
        const QString out = tmp.filePath("out.txt");
        QVERIFY(writeFieldValues(out, values));
        QCOMPARE(fieldValues(out), QStringList({"Smith, John", " padded ", "'quoted'", "Zoë €", "plain"}));
        QString error;
        QVERIFY(!writeFieldValues(tmp.path(), values, &error));
        QVERIFY(error.contains(u"folder"));

        // Files that hold no values, read without waiting (a pipe would block).
        const QString fifo = tmp.filePath("fifo");
        QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
        QFile sparse(tmp.filePath("huge.txt"));
        QVERIFY(sparse.open(QIODevice::WriteOnly) && sparse.write("first\r\n") == 7);
        QVERIFY(sparse.resize(100LL * 1024 * 1024));  // then NUL bytes
        sparse.close();
        QByteArray junk(300000, Qt::Uninitialized);
        for (int i = 0; i < junk.size(); ++i) junk[i] = char(i * 7919 % 251);
        const QString binary = file("binary.txt", junk);
        for (const QString& bad : {tmp.filePath("missing.txt"), file("empty.txt", {}), tmp.path(),
                                   QStringLiteral("/dev/zero"), fifo, binary}) {
            QVERIFY2(fieldValues(bad).isEmpty(), qPrintable(bad));
            QVERIFY2(firstFieldValue(bad).isEmpty(), qPrintable(bad));
        }
        // A huge file: its start, marked as cut.
        QCOMPARE(firstFieldValue(sparse.fileName()), QStringLiteral("first"));
        const ValueList cut = readValueList(sparse.fileName());
        QVERIFY(cut.values == QStringList{"first"} && !cut.complete);
        QVERIFY(readValueList(mixed).complete);
    }

    void characterFieldsStepThroughTheirFile()
    {
        const int f = addChar(FmtCdRom, file("abc.txt", "A\r\nB\r\nC\r\n"), "B");
        QVERIFY(valuePosition(project, f).position == 2 && valuePosition(project, f).count == 3);
        QVERIFY(stepValue(project, f, 1) && charText(f) == "C" && project.currentNumber() == 3);
        QVERIFY(!stepValue(project, f, 1));  // the last value stays
        QVERIFY(stepValue(project, f, -1) && stepValue(project, f, -1) && charText(f) == "A");
        QVERIFY(!stepValue(project, f, -1));

        // A shown value that is not in the file, or a file gone bad: nothing moves.
        project.setCharFieldShown(f, QStringLiteral("X"));
        QVERIFY(!stepValue(project, f, 1));
        QCOMPARE(valuePosition(project, f).position, 0);
        for (const QString& bad : {QStringLiteral("/dev/zero"), tmp.path(), tmp.filePath("gone.txt")}) {
            project.setCharField(f, {FmtCdRom, bad, QStringLiteral("A"), {}});
            QVERIFY2(!stepValue(project, f, 1) && charText(f) == "A", qPrintable(bad));
        }
    }

    void printedSheetAdvancesItsFields()
    {
        const QString abc = file("abc.txt", "A\nB\nC\n");
        const int first = addChar(FmtInside, abc, "A");
        const int second = addChar(FmtInside, abc, "A");
        const int other = addChar(FmtCdRom, abc, "A");
        const int n1 = addNum(FmtInside, 2, 5);
        const int n2 = addNum(FmtInside, 2, 5);
        const int discNum = addNum(FmtCdRom, 4, 1);
        advanceSheet(project, FmtInside);
        // Only the sheet's first character field moves on; its two numeric
        // fields rise by one, not by two, on every open sheet.
        QCOMPARE((QStringList{charText(first), charText(second), charText(other)}), (QStringList{"B", "A", "A"}));
        QCOMPARE(numTexts({n1, n2, discNum}), (QStringList{"06", "06", "06"}));
        QCOMPARE(project.currentNumber(), i16(6));
    }

    void sheetAdvanceAsValuesLeavesTheDocument()
    {
        const int c = addChar(FmtInside, file("abc.txt", "A\nB\nC\n"), "A");
        const int n = addNum(FmtInside, 2, 5, true);
        const int discNum = addNum(FmtCdRom, 4, 1);
        // Two printed copies of the inlay, as values: the second step starts
        // from the first one's values, not from the document.
        const FieldValues once = advancedSheetValues(project, FmtInside, {});
        const FieldValues twice = advancedSheetValues(project, FmtInside, once);
        QCOMPARE((QStringList{once.charText.value(c), once.numText.value(n), once.numText.value(discNum)}),
                 (QStringList{"B", "06", "06"}));
        QCOMPARE((QStringList{twice.charText.value(c), twice.numText.value(n), twice.spineNumber.value_or("-")}),
                 (QStringList{"C", "07", "07"}));
        QCOMPARE(twice.lastNumber, std::optional<int>(7));
        // Nothing changed the document; applying the values does what two
        // advances do, and at the file's end the value stays.
        QCOMPARE((QStringList{charText(c), numText(n), project.spineNumberText()}), (QStringList{"A", "05", ""}));
        applyFieldValues(project, advancedSheetValues(project, FmtInside, twice));
        QCOMPARE((QStringList{charText(c), numText(n), numText(discNum), project.spineNumberText()}),
                 (QStringList{"C", "08", "08", "08"}));
    }

    void printRunHandsEachCopyItsValues()
    {
        const int c = addChar(FmtCdRom, file("names.txt", "Ann\r\nBob\r\n"), "Bob");
        const int broken = addChar(FmtCdRom, QStringLiteral("/dev/zero"), "kept");
        const int n = addNum(FmtInside, 3, 1, true);
        const int m = addNum(FmtCdRom, 4, 7);
        project.setNumFieldShown(n, QStringLiteral("999"));  // stepped before printing

        const CopyNumbering run(project);
        file("names.txt", "Changed\r\n");  // a file edited during the run does not change it
        auto texts = [&](const FieldValues& v) {
            return QStringList{v.charText.value(c), v.numText.value(n), v.numText.value(m), v.spineNumber.value_or("-")};
        };
        // The last value repeats.
        QCOMPARE(texts(run.valuesForCopy(1)) + texts(run.valuesForCopy(2)) + texts(run.valuesForCopy(3)),
                 (QStringList{"Ann", "999", "0007", "999", "Bob", "1000", "0008", "1000", "Bob", "1001", "0009", "1001"}));
        QVERIFY(!run.valuesForCopy(1).charText.contains(broken));  // a file that is no list: the field keeps its text
        // The document is left alone until the run is over; then the next
        // run goes on from there.
        auto shown = [&] { return QStringList{charText(c), numText(n), numText(m), project.spineNumberText(), charText(broken)}; };
        QCOMPARE(shown(), (QStringList{"Bob", "999", "0007", "", "kept"}));
        run.finish(project, 3);
        QCOMPARE(shown(), (QStringList{"Bob", "1002", "0010", "1002", "kept"}));
        QCOMPARE(project.numFields().at(n).number, i16(1));

        project.setNumFieldShown(m, QStringLiteral("32766"));
        QCOMPARE(CopyNumbering(project).valuesForCopy(3).numText.value(m), QStringLiteral("32767"));
    }
};

QTEST_GUILESS_MAIN(TestNumbering)
#include "test_numbering.moc"
