// Numbering without windows: number formats and bounds, stepping across
// sheets, value files (reading, writing, bad files), advanceFields and the per-copy
// update of a print run.
#include "file/FieldValues.h"
#include "model/Global.h"
#include "model/Numbering.h"
#include "model/Shell.h"
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <sys/stat.h>

using jk::G;

namespace {

struct FakeSheet final : jk::ISheet {
    int code;
    QStringList captions;
    explicit FakeSheet(int c) : code(c) {}
    int formatCode() const override { return code; }
    void setSpineCaption(const QString& text) override { captions << text; }
};

struct FakeShell final : jk::IShell {
    std::vector<FakeSheet*> open;
    int refreshes = 0;
    void setPrintCommandsEnabled(bool) override {}
    std::vector<jk::ISheet*> sheets() const override { return {open.begin(), open.end()}; }
    void refresh() override { ++refreshes; }
};

int addNum(int sheet, int digits, int number, int link = 0)
{
    jk::NumFieldRecord r;
    r.sheet = jk::i16(sheet);
    r.digits = jk::i16(digits);
    r.number = jk::i16(number);
    r.spineLink = jk::i16(link);
    return G().numFields.append(r);
}

int addChar(int sheet, const QString& file, const QString& shown)
{
    jk::CharFieldRecord r;
    r.sheet = jk::i16(sheet);
    r.valueFile = file;
    r.text = shown;
    return G().charFields.append(r);
}

}  // namespace

class TestNumbering : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    FakeSheet inlay{jk::FmtInside}, disc{jk::FmtCdRom};
    FakeShell shell;

    QString file(const QString& name, const QByteArray& bytes)
    {
        QFile f(tmp.filePath(name));
        f.open(QIODevice::WriteOnly);
        f.write(bytes);
        return f.fileName();
    }

private Q_SLOTS:
    void init()
    {
        jk::resetGlobal();
        G().createTables(jk::TableSizing::NewProject);
        inlay.captions.clear();
        shell.open = {&inlay, &disc};
        jk::setShell(&shell);
        jk::setFieldShownHook({});
    }
    void cleanup() { jk::setShell(nullptr); }

    void numbersAndTheirBounds()
    {
        QCOMPARE(jk::formatFieldNumber(7, 3), QStringLiteral("007"));
        QCOMPARE(jk::formatFieldNumber(1000, 3), QStringLiteral("1000"));  // the format does not cut
        QCOMPARE(jk::formatFieldNumber(1, 4), QStringLiteral("0001"));
        QCOMPARE(jk::formatFieldNumber(5, 0), QString());
        QCOMPARE(jk::formatFieldNumber(5, 5), QString());
        QCOMPARE(jk::leadingNumber(QStringLiteral("  012ab")), 12);
        QCOMPARE(jk::leadingNumber(QStringLiteral("abc")), 0);
        QCOMPARE(jk::leadingNumber(QString()), 0);
        QCOMPARE(jk::leadingNumber(QStringLiteral("-3")), -3);
        QCOMPARE(jk::leadingNumber(QStringLiteral("99999999999999999999")), 32767);
        QCOMPARE(jk::leadingNumber(QStringLiteral("-99999")), -32768);
        QCOMPARE(jk::nextFieldNumber(32766), 32767);
        QCOMPARE(jk::nextFieldNumber(32767), 32767);
        QCOMPARE(jk::previousFieldNumber(1), 0);
        QCOMPARE(jk::previousFieldNumber(0), 0);
        QCOMPARE(jk::numberForCopy(999, 2), 1000);
        QCOMPARE(jk::numberForCopy(32766, 5), 32767);
        const QStringList abc{"A", "B", "C"};
        QCOMPARE(jk::valueForCopy(abc, 1), QStringLiteral("A"));
        QCOMPARE(jk::valueForCopy(abc, 3), QStringLiteral("C"));
        QCOMPARE(jk::valueForCopy(abc, 7), QStringLiteral("C"));  // the last one repeats
        QCOMPARE(jk::valueForCopy({}, 1), QString());
    }

    void steppingReachesEveryOpenSheet()
    {
        const int a = addNum(jk::FmtInside, 3, 9, 1);  // linked to the spines
        const int b = addNum(jk::FmtCdRom, 1, 5);
        const int away = addNum(jk::FmtSimple, 2, 4);  // its sheet is not open
        QVERIFY(jk::stepNumber(a, 1));
        // Both open sheets show the stepped field's text, in its digit code.
        QCOMPARE(jk::numFieldText(a), QStringLiteral("010"));
        QCOMPARE(jk::numFieldText(b), QStringLiteral("010"));
        QCOMPARE(jk::numFieldText(away), QStringLiteral("04"));
        QCOMPARE(G().numFields.at(a).number, 9);  // stepping leaves the record's number
        QCOMPARE(G().currentNumber, 10);
        QCOMPARE(G().spineNumberText, QStringLiteral("010"));
        QCOMPARE(inlay.captions.last(), QStringLiteral("  010"));  // empty spine text: a blank
        QVERIFY(shell.refreshes > 0);
        // The other field steps from what it shows, with its own code.
        QVERIFY(jk::stepNumber(b, 1));
        QCOMPARE(jk::numFieldText(a), QStringLiteral("11"));

        G().numFields.at(a).shown = QStringLiteral("999");
        QVERIFY(jk::stepNumber(a, 1));
        QCOMPARE(jk::numFieldText(b), QStringLiteral("1000"));
        QVERIFY(jk::resetNumber(b));
        QCOMPARE(jk::numFieldText(a), QStringLiteral("1"));
        QVERIFY(jk::stepNumber(a, -1));
        QCOMPARE(jk::numFieldText(a), QStringLiteral("000"));
        QVERIFY(!jk::stepNumber(a, -1));  // never below 0
        QCOMPARE(jk::numFieldText(b), QStringLiteral("000"));
        G().numFields.at(a).shown = QStringLiteral("32767");
        QVERIFY(!jk::stepNumber(a, 1));  // the largest 16-bit number stays
        QCOMPARE(jk::numFieldText(a), QStringLiteral("32767"));
        QVERIFY(!jk::stepNumber(99, 1));

        // Only fields 1-50 take part; a deleted field takes nothing.
        for (int i = G().numFields.count(); i < 50; ++i) addNum(jk::FmtCdRom, 1, 1);
        const int fiftyFirst = addNum(jk::FmtCdRom, 1, 1);
        G().numFields.at(b).number = 0;
        QVERIFY(jk::resetNumber(a));
        QCOMPARE(jk::numFieldText(50), QStringLiteral("001"));
        QCOMPARE(jk::numFieldText(fiftyFirst), QStringLiteral("1"));
        QCOMPARE(jk::numFieldText(b), QStringLiteral("000"));

        // The spine follows the linked field, and loses the number with it.
        jk::updateSpineNumber();
        QCOMPARE(G().spineNumberText, QStringLiteral("001"));
        G().numFields.at(a).number = 0;
        jk::updateSpineNumber();
        QCOMPARE(G().spineNumberText, QStringLiteral(" "));
    }

    void valueFilesReadWriteAndRefuse()
    {
        const QString mixed = file("mixed.txt", "Alpha, \"Beta, Gamma\" ,  Delta  \r\nEpsilon\n\n\"Zeta\"\r\n");
        QCOMPARE(jk::fieldValues(mixed), QStringList({"Alpha", "Beta, Gamma", "Delta", "Epsilon", "Zeta"}));

        // What the dialog writes reads back value for value.
        const QStringList values{"Smith, John", " padded ", "\"quoted\"", "Zoë €", "plain"};
        const QString out = tmp.filePath("out.txt");
        QVERIFY(jk::writeFieldValues(out, values));
        QCOMPARE(jk::fieldValues(out),
                 QStringList({"Smith, John", " padded ", "'quoted'", "Zoë €", "plain"}));
        QFile f(out);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QVERIFY(f.readAll().endsWith("plain\r\n"));
        QString error;
        QVERIFY(!jk::writeFieldValues(tmp.path(), values, &error));
        QVERIFY(error.contains(u"folder"));

        // Files that hold no values, read without waiting.
        const QString fifo = tmp.filePath("fifo");
        QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
        QFile sparse(tmp.filePath("zeros.bin"));
        QVERIFY(sparse.open(QIODevice::WriteOnly));
        QVERIFY(sparse.resize(100LL * 1024 * 1024));
        sparse.close();
        const QString binary = file("pic.png", QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16));
        QElapsedTimer timer;
        timer.start();
        for (const QString& bad : {tmp.filePath("missing.txt"), file("empty.txt", {}), tmp.path(), QStringLiteral("/dev/zero"),
                                   fifo, sparse.fileName(), binary})
            QVERIFY2(jk::fieldValues(bad).isEmpty(), qPrintable(bad));
        QVERIFY(timer.elapsed() < 20000);

        // A very long file: its start, marked as cut.
        QByteArray big;
        for (int i = 0; big.size() <= jk::kMaxValueFileBytes; ++i) big += "Name " + QByteArray::number(i) + "\r\n";
        const jk::ValueList list = jk::readValueList(file("big.txt", big));
        QCOMPARE(list.values.first(), QStringLiteral("Name 0"));
        QVERIFY(!list.complete);
        QVERIFY(jk::readValueList(mixed).complete);
    }

    void characterFieldsStepThroughTheirFile()
    {
        const QString abc = file("abc.txt", "A\r\nB\r\nC\r\n");
        const int f = addChar(jk::FmtCdRom, abc, "B");
        QCOMPARE(jk::valuePosition(f).position, 2);
        QCOMPARE(jk::valuePosition(f).count, 3);
        QVERIFY(jk::stepValue(f, 1));
        QCOMPARE(G().charFields.at(f).text, QStringLiteral("C"));
        QCOMPARE(G().currentNumber, 3);
        QVERIFY(!jk::stepValue(f, 1));  // the last value stays
        QVERIFY(jk::stepValue(f, -1) && jk::stepValue(f, -1));
        QCOMPARE(G().charFields.at(f).text, QStringLiteral("A"));
        QVERIFY(!jk::stepValue(f, -1));

        // A shown value that is not in the file, or a file gone bad: nothing moves.
        G().charFields.at(f).text = "X";
        QVERIFY(!jk::stepValue(f, 1));
        QCOMPARE(jk::valuePosition(f).position, 0);
        for (const QString& bad : {QStringLiteral("/dev/zero"), tmp.path(), tmp.filePath("gone.txt")}) {
            G().charFields.at(f).valueFile = bad;
            G().charFields.at(f).text = "A";
            QVERIFY(!jk::stepValue(f, 1));
            QCOMPARE(G().charFields.at(f).text, QStringLiteral("A"));
        }
    }

    void majSelAdvancesOneSheet()
    {
        const QString abc = file("abc.txt", "A\nB\nC\n");
        const int first = addChar(jk::FmtInside, abc, "A");
        const int second = addChar(jk::FmtInside, abc, "A");
        const int other = addChar(jk::FmtCdRom, abc, "A");
        const int n1 = addNum(jk::FmtInside, 2, 5);
        const int n2 = addNum(jk::FmtInside, 2, 5);
        const int discNum = addNum(jk::FmtCdRom, 4, 1);
        const int blank = addNum(jk::FmtInside, 9, 3);  // shows nothing: left alone
        jk::advanceSheet(jk::FmtInside);
        QCOMPARE(G().charFields.at(first).text, QStringLiteral("B"));
        QCOMPARE(G().charFields.at(second).text, QStringLiteral("A"));  // only the first field moves on
        QCOMPARE(G().charFields.at(other).text, QStringLiteral("A"));
        // Two fields of the sheet rise by one, not by two.
        QCOMPARE(jk::numFieldText(n1), QStringLiteral("06"));
        QCOMPARE(jk::numFieldText(n2), QStringLiteral("06"));
        QCOMPARE(jk::numFieldText(discNum), QStringLiteral("06"));
        QCOMPARE(jk::numFieldText(blank), QStringLiteral("06"));
        QCOMPARE(G().currentNumber, 6);
    }

    void printRunShowsOneLabelPerCopy()
    {
        const QString names = file("names.txt", "Ann\r\nBob\r\n");
        const int c = addChar(jk::FmtCdRom, names, "Bob");
        const int broken = addChar(jk::FmtCdRom, QStringLiteral("/dev/zero"), "kept");
        const int n = addNum(jk::FmtInside, 3, 1, 1);
        const int m = addNum(jk::FmtCdRom, 1, 7);
        G().numFields.at(n).shown = QStringLiteral("999");  // stepped before printing

        const jk::CopyNumbering run;
        // A file edited during the run does not change it.
        file("names.txt", "Changed\r\n");
        run.showCopy(1);
        QCOMPARE(G().charFields.at(c).text, QStringLiteral("Ann"));
        QCOMPARE(jk::numFieldText(n), QStringLiteral("999"));
        QCOMPARE(jk::numFieldText(m), QStringLiteral("7"));
        QCOMPARE(G().spineNumberText, QStringLiteral("999"));
        run.showCopy(2);
        QCOMPARE(G().charFields.at(c).text, QStringLiteral("Bob"));
        QCOMPARE(jk::numFieldText(n), QStringLiteral("1000"));
        QCOMPARE(jk::numFieldText(m), QStringLiteral("8"));
        run.showCopy(3);
        QCOMPARE(G().charFields.at(c).text, QStringLiteral("Bob"));  // the last value repeats
        QCOMPARE(G().charFields.at(broken).text, QStringLiteral("kept"));
        QCOMPARE(G().spineNumberText, QStringLiteral("1001"));
        run.finish(3);
        QCOMPARE(jk::numFieldText(n), QStringLiteral("1002"));  // the next run goes on from here
        QCOMPARE(G().numFields.at(n).number, 1);

        G().numFields.at(m).shown = QStringLiteral("32766");
        const jk::CopyNumbering high;
        high.showCopy(3);
        QCOMPARE(jk::numFieldText(m), QStringLiteral("32767"));
    }
};

QTEST_GUILESS_MAIN(TestNumbering)
#include "test_numbering.moc"
