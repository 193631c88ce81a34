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

QString tool(const QString& program, const QStringList& args)
{
    QProcess p;
    p.start(program, args);
    p.waitForFinished(30000);
    return QString::fromUtf8(p.readAllStandardOutput());
}

int pageCount(const QString& pdf)
{
    const QString info = tool("pdfinfo", {pdf});
    const qsizetype at = info.indexOf("Pages:");
    return at < 0 ? -1 : info.mid(at + 6).section(u'\n', 0, 0).trimmed().toInt();
}

// "P" or "L" per page.
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

QString pageText(const QString& pdf, int page)
{
    return tool("pdftotext", {"-f", QString::number(page), "-l", QString::number(page), pdf, "-"}).simplified();
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
        fullProject = printfixture::writeFullProject(QDir(tmp.path()));
        jk::ProjectData disc = printfixture::emptyProject(jk::FmtCdRom);
        disc.freeText.append({jk::FmtCdRom, "Disc", printfixture::textStyle(3000, 1000)});
        discProject = tmp.filePath("disc.prj");
        QVERIFY(jk::writeProject(disc, discProject));
        // A booklet with a two-digit number at 7 and a two-line value file.
        names = tmp.filePath("names.txt");
        QVERIFY(fixture::writeFile(names, "First line\r\nSecond line\r\n"));
        jk::ProjectData g = printfixture::emptyProject(jk::FmtDouble);
        g.numFields.append({jk::FmtDouble, 2, 7, false, printfixture::textStyle(300, 5000, 1200, 400)});
        g.charFields.append({jk::FmtDouble, names, {}, printfixture::textStyle(300, 3000)});
        numbered = tmp.filePath(QStringLiteral("numbered-%1.prj").arg(QCoreApplication::applicationPid()));
        QVERIFY(printfixture::writeNumbered(g, numbered, 7));
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
        QCOMPARE(pageCount(pdf), 1);

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
        QCOMPARE(pageCount(pdf), 1);
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

        const QString stem = QFileInfo(numbered).completeBaseName();
        o = jewlkit({"--print", numbered, "--printer", "TEST-PDF2", "--copies", "3"});
        QVERIFY2(o.status == 0, qPrintable(o.err));
        QVERIFY2(o.err.contains("( 3/ 2)"), qPrintable(o.err));  // the copies/values warning, printing goes on
        QString pdf;
        QTRY_VERIFY_WITH_TIMEOUT(!(pdf = cupsPdf(stem)).isEmpty() && pageCount(pdf) == 3, 30000);
        // The queue's paper is portrait: CUPS turns the landscape pages onto it.
        QCOMPARE(orientations(pdf), QStringLiteral("PPP"));
        const QStringList want[] = {{"07", "First line"}, {"08", "Second line"}, {"09", "Second line"}};
        for (int i = 0; i < 3; ++i)
            for (const QString& w : want[i]) QVERIFY2(pageText(pdf, i + 1).contains(w), qPrintable(pageText(pdf, i + 1)));

        // Placement on the printer's page: the picture page from 12.1 cm to
        // 24.4 cm of the landscape page's width, which runs along the
        // portrait paper's height (from its top or its bottom, as CUPS turned it).
        QImageReader::setAllocationLimit(0);
        tool("pdftoppm", {"-r", "600", "-gray", "-png", "-singlefile", "-f", "1", "-l", "1", pdf, tmp.filePath("job")});
        const QImage img(tmp.filePath("job.png"));
        QVERIFY(!img.isNull());
        auto mm = [](int px) { return px * 25.4 / 600; };
        QString seen;
        bool placed = false;
        for (int column : {int(60 / 25.4 * 600), img.width() - 1 - int(60 / 25.4 * 600)}) {
            int first = -1, last = -1;
            for (int y = 0; y < img.height(); ++y)
                if (qGray(img.pixel(column, y)) < 128) {
                    if (first < 0) first = y;
                    last = y;
                }
            const double height = mm(img.height());
            const std::pair<double, double> spans[] = {{mm(first), mm(last + 1)}, {height - mm(last + 1), height - mm(first)}};
            for (const auto& [from, to] : spans) {
                seen += QStringLiteral("%1..%2 ").arg(from).arg(to);
                // From the text page's edge to the picture page's far edge:
                // 24.4 cm at real size. (CUPS shifts a turned landscape page
                // by a few millimetres on this queue, so the span is checked,
                // not its start.)
                placed = placed || std::abs((to - from) - 244.0) <= 0.1;
            }
        }
        QVERIFY2(placed, qPrintable(seen));
        QFile::remove(pdf);
    }
};

QTEST_GUILESS_MAIN(TestPrintCommand)
#include "test_printcommand.moc"
