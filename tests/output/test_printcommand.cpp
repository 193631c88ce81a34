// The headless --print command as scripts run it: exit statuses and
// messages, --pdf, and (under with_private_cupsd.sh) real jobs on a
// cups-pdf queue whose PDFs are read back: pages, orientation, the text of
// each copy, and where the labels land.
#include "Fixture.h"
#include "PrintProjects.h"
#include <QCoreApplication>
#include <QDirIterator>
#include <QImageReader>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString kStock = QStringLiteral("Avery L6015 (A4, 2 per sheet)");

struct Outcome {
    int status = -1;
    QString err;
};
using namespace printfixture;

// "P" or "L" per page (none when it is not a PDF).
QString orientations(const QString& pdf)
{
    QString o;
    const QString info = tool("pdfinfo", {"-f", "1", "-l", "99", pdf});
    for (const QString& line : info.split(u'\n'))
        if (line.startsWith("Page") && line.contains(" size:")) {
            const QStringList parts = line.section("size:", 1).simplified().split(u' ');
            o += parts.value(0).toDouble() > parts.value(2).toDouble() ? u'L' : u'P';
        }
    return o;
}

}  // namespace

class TestPrintCommand : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    QString fullProject, discProject, numbered, names;
    static QByteArray setup() { return qgetenv("JK_PRINTER_SETUP"); }

    Outcome jewlkit(const QStringList& args)
    {
        QProcess p;
        p.setProgram(QCoreApplication::applicationDirPath() + "/jewlkit");
        p.setArguments(args);
        p.start();
        if (!p.waitForFinished(60000)) return {};
        return {p.exitCode(), QString::fromUtf8(p.readAllStandardError())};
    }

    // The PDF cups-pdf wrote for a job titled after `stem`.
    QString cupsPdf(const QString& stem)
    {
        const passwd* pw = getpwuid(getuid());
        const QString dir = QString::fromLocal8Bit(pw ? pw->pw_dir : "/root") + "/PDF";
        QDirIterator it(dir, {"*" + stem + "*.pdf"}, QDir::Files);
        return it.hasNext() ? it.next() : QString();
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable("pdfinfo").isEmpty()) QSKIP("poppler-utils are not installed");
        fullProject = writeFullProject(QDir(tmp.path()));
        jk::ProjectData disc = emptyProject(jk::FmtCdRom);
        disc.freeText.append({jk::FmtCdRom, "Disc", textStyle(3000, 1000)});
        discProject = tmp.filePath("disc.prj");
        QVERIFY(jk::writeProject(disc, discProject));
        // A booklet numbered from 7 with a two-line value file.
        names = tmp.filePath("names.txt");
        QVERIFY(fixture::writeFile(names, "First line\r\nSecond line\r\n"));
        numbered = tmp.filePath(QStringLiteral("numbered-%1.prj").arg(QCoreApplication::applicationPid()));
        QVERIFY(writeNumbered(numberedBooklet(names), numbered, 7));
    }

    void pdfAndItsRefusals()
    {
        const QString pdf = tmp.filePath("full.pdf");
        Outcome o = jewlkit({"--print", fullProject, "--pdf", pdf, "--stock", kStock});
        QVERIFY2(o.status == 0, qPrintable(o.err));
        // Booklet landscape, inlay and disc label portrait.
        QCOMPARE(orientations(pdf), QStringLiteral("LPP"));
        QVERIFY(pageText(pdf, 1).contains("01"));  // the writer starts fields at 1

        // Selected sheets, two copies: disc then inlay each time.
        o = jewlkit({"--print", fullProject, "--pdf", pdf, "--stock", kStock.toLower(), "--sheets", "4,8", "--copies", "2"});
        QVERIFY2(o.status == 0, qPrintable(o.err));
        QCOMPARE(orientations(pdf), QStringLiteral("PPPP"));

        // Only a disc label: one copy, whatever was asked.
        o = jewlkit({"--print", discProject, "--pdf", pdf, "--stock", kStock, "--copies", "4"});
        QCOMPARE(o.status, 0);
        QCOMPARE(orientations(pdf), QStringLiteral("P"));

        struct Case {
            QStringList args;
            const char* says;
        };
        const Case refused[] = {
            {{"--print", fullProject, "--pdf", pdf, "--stock", "No such stock"}, "unknown disc-label stock"},
            {{"--print", fullProject, "--pdf", pdf}, "--stock"},
            {{"--print", tmp.filePath("missing.prj"), "--pdf", pdf}, "missing.prj"},
            {{"--print", fullProject, "--pdf", pdf, "--stock", kStock, "--copies", "0"}, "--copies"},
            {{"--print", fullProject, "--pdf", pdf, "--stock", kStock, "--sheets", "3"}, "--sheets"},
            {{"--print", fullProject, "--pdf", pdf, "--stock", kStock, "--sheets", "1"}, "no"},
            {{"--print", fullProject, "--pdf", fullProject + "/out.pdf", "--stock", kStock}, "PDF"},
        };
        for (const Case& c : refused) {
            o = jewlkit(c.args);
            QVERIFY2(o.status == 1 && o.err.contains(QLatin1String(c.says)), qPrintable(c.args.join(' ') + " -> " + o.err));
        }
        // The last good PDF is still there and whole.
        QCOMPARE(orientations(pdf), QStringLiteral("P"));
    }

    void withoutPrinters()
    {
        if (setup() != "none") QSKIP("needs CUPS_SERVER pointing at a missing socket");
        const Outcome o = jewlkit({"--print", fullProject, "--stock", kStock});
        QCOMPARE(o.status, 1);
        QVERIFY2(o.err.contains("No printer"), qPrintable(o.err));
    }

    void realJobsOnCupsPdf()
    {
        if (setup() != "cupsd") QSKIP("runs under with_private_cupsd.sh");
        // The filters run as user lp and write into the server's TempDir,
        // which the wrapper creates for root only.
        const QString serverTmp = QFileInfo(qEnvironmentVariable("CUPS_SERVER")).path() + "/tmp";
        QVERIFY(::chmod(QFile::encodeName(serverTmp).constData(), 01777) == 0);
        Outcome o = jewlkit({"--print", numbered, "--printer", "NO-SUCH-QUEUE"});
        QVERIFY2(o.status == 1 && o.err.contains("NO-SUCH-QUEUE"), qPrintable(o.err));
        // A queue that rejects jobs: said so, not lost in silence.
        QCOMPARE(QProcess::execute("cupsreject", {"TEST-PDF2"}), 0);
        o = jewlkit({"--print", numbered, "--printer", "TEST-PDF2"});
        QCOMPARE(QProcess::execute("cupsaccept", {"TEST-PDF2"}), 0);
        QVERIFY2(o.status == 1 && o.err.contains("TEST-PDF2"), qPrintable(o.err));

        const QString stem = QFileInfo(numbered).completeBaseName();
        o = jewlkit({"--print", numbered, "--printer", "TEST-PDF2", "--copies", "3"});
        QVERIFY2(o.status == 0, qPrintable(o.err));
        QVERIFY2(o.err.contains("( 3/ 2)"), qPrintable(o.err));  // the copies/values warning, printing goes on
        QString pdf;
        QTRY_VERIFY_WITH_TIMEOUT(!(pdf = cupsPdf(stem)).isEmpty() && orientations(pdf).size() == 3, 30000);
        // The queue's paper is portrait: CUPS turns the landscape pages onto it.
        QCOMPARE(orientations(pdf), QStringLiteral("PPP"));
        const QString want[] = {"07 First line", "08 Second line", "09 Second line"};
        for (int i = 0; i < 3; ++i) QCOMPARE(pageText(pdf, i + 1).simplified(), want[i]);

        // Placement on the printer's page: from the text page's edge to the
        // picture page's far edge, 24.4 cm at real size along the portrait
        // paper's height. (CUPS shifts a turned landscape page by a few
        // millimetres on this queue, so the span is checked, not its start.)
        QImageReader::setAllocationLimit(0);
        const QImage img = raster(pdf, 1, tmp.filePath("job"));
        QVERIFY(!img.isNull());
        QString seen;
        bool placed = false;
        for (double column : {60.0, pxToMm(img.width() - 1) - 60.0}) {
            const auto [from, to] = ink(img, false, column, 0, 1000);
            seen += QStringLiteral("%1..%2 ").arg(from).arg(to);
            placed = placed || std::abs((to - from) - 244.0) <= 0.1;
        }
        QVERIFY2(placed, qPrintable(seen));
        QFile::remove(pdf);
    }
};

QTEST_GUILESS_MAIN(TestPrintCommand)
#include "test_printcommand.moc"
