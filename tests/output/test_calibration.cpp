// Printer calibration: what measurements give and refuse; on private
// cups-pdf queues, read back on a 600-dpi raster, the calibration page's
// marks, a calibrated disc label and the test outline; PDF output and export
// left alone unless asked.
#include "Fixture.h"
#include "PrintProjects.h"
#include "output/Calibration.h"
#include "output/PrintRun.h"
#include "file/Paths.h"
#include "file/Settings.h"
#include <QCoreApplication>
#include <QDirIterator>
#include <QImageReader>
#include <QPrinter>
#include <QPrinterInfo>
#include <QTemporaryDir>
#include <QtTest>
#include <pwd.h>
#include <unistd.h>

using namespace jk;
using namespace jk::print;
using namespace printfixture;

namespace {

const PrinterCalibration kCal{1.5, -0.7, 100.4, 99.6};
const DiscStock kStock{"Avery L6015 (A4, 2 per sheet)", 45.0, 19.9, {}};
const QPointF kCentre(kStock.xMm + 60, kStock.yMm + 60);

// Where a point meant at `mm` lands under kCal.
QPointF cal(QPointF mm) { return {1.5 + mm.x() * 1.004, -0.7 + mm.y() * 0.996}; }
PrintTarget to(const QString& printer, const QString& pdf = {})
{
    PrintTarget t;
    t.printer = printer;
    t.pdfPath = pdf;
    return t;
}
QByteArray setup() { return qgetenv("JK_PRINTER_SETUP"); }

}  // namespace

class TestCalibration : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    const QString pid = QString::number(QCoreApplication::applicationPid());
    QStringList off;  // marks found elsewhere than expected

    // The ink along a row (or column) at `at` within 1 mm of `want` must be centred on it.
    void expect(const QImage& img, bool row, double at, double want)
    {
        const auto [a, b] = ink(img, row, at, want - 1, want + 1);
        if (std::abs((a + b) / 2 - want) > 0.1) off << QStringLiteral("%1 at %2: %3").arg(want).arg(at).arg((a + b) / 2);
    }
    // A black disc's edges along a row (or column) at `at`: first and last ink on the page.
    void expectDisc(const QImage& img, bool row, double at, double first, double last)
    {
        const auto [a, b] = ink(img, row, at, 0, 250);
        if (std::abs(a - first) > 0.1 || std::abs(b - last) > 0.1)
            off << QStringLiteral("%1..%2 at %3: %4..%5").arg(first).arg(last).arg(at).arg(a).arg(b);
    }
    // The page cups-pdf wrote for the job `title`, once wholly written.
    QImage queued(const QString& title)
    {
        const QString dir = QString::fromLocal8Bit(getpwuid(getuid())->pw_dir) + "/PDF";
        for (int i = 0; i < 300; ++i, QTest::qWait(100)) {
            QDirIterator it(dir, {"*" + title + "*.pdf"}, QDir::Files);
            const QString pdf = it.hasNext() ? it.next() : QString();
            const QImage img = pdf.isEmpty() ? QImage() : raster(pdf, 1, tmp.filePath(title));
            if (img.isNull()) continue;
            QFile::remove(pdf);
            return img;
        }
        return {};
    }
    int jewlkit(const QStringList& args, QString* err = nullptr)
    {
        QProcess p;
        p.start(QCoreApplication::applicationDirPath() + "/jewlkit", args);
        p.waitForFinished(60000);
        if (err) *err = QString::fromUtf8(p.readAllStandardError());
        return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QImageReader::setAllocationLimit(0);
        // This test's settings, shared with the program it starts.
        qputenv("JEWLKIT_HOME", QFile::encodeName(tmp.path()));
    }
    void init()
    {
        fixture::resetApp();
        off.clear();
    }

    void measurementsUndoThePrinter()
    {
        if (setup() != "none") QSKIP("runs without the queues");
        // A printer stretching by k and shifting by d, measured on a page
        // printed uncalibrated and on one printed calibrated: A and the far
        // ends of the rulers then land where they belong.
        const double k[2] = {1.004, 0.995}, d[2] = {1.2, -0.8};
        for (const PrinterCalibration& was : {PrinterCalibration{}, PrinterCalibration{1, -1, 101, 99}}) {
            const double o[2] = {was.offsetXMm, was.offsetYMm}, s[2] = {was.scaleXPercent / 100, was.scaleYPercent / 100};
            auto printed = [&](int i, double mm) { return k[i] * (o[i] + s[i] * mm) + d[i]; };
            auto length = [&](int i) { return QString::number(printed(i, 180) - printed(i, 30)); };
            const MeasuredCalibration r = calibrationFromMeasurement(
                {QString::number(printed(0, 30)).replace('.', ','), QString::number(printed(1, 30)), length(0) + " mm", length(1)}, was,
                texts());
            QVERIFY2(r.calibration, qPrintable(r.error));
            const double no[2] = {r.calibration->offsetXMm, r.calibration->offsetYMm};
            const double ns[2] = {r.calibration->scaleXPercent / 100, r.calibration->scaleYPercent / 100};
            for (int i : {0, 1})
                for (double mm : {30.0, 180.0}) QVERIFY(std::abs(k[i] * (no[i] + ns[i] * mm) + d[i] - mm) < 0.02);
        }
        // Refused: not a length (naming the field), or beyond 20 mm / 90-110 %.
        const struct {
            Measurement m;
            int badField;
            const char* says;
        } refused[] = {{{"", "30", "150", "150"}, 0, "Cross A from the left edge"},
                       {{"30", "thirty", "150", "150"}, 1, "thirty"},
                       {{"30", "30", "-150", "150"}, 2, "Horizontal ruler"},
                       {{"30", "30", "150", "15"}, -1, "90 to 110"},
                       {{"55", "30", "150", "150"}, -1, "20 mm"}};
        for (const auto& c : refused) {
            const MeasuredCalibration r = calibrationFromMeasurement(c.m, {}, texts());
            QVERIFY2(!r.calibration && r.badField == c.badField && r.error.contains(c.says), qPrintable(r.error));
        }
        // Nor is a page printed with a calibration out of range, or on paper it does not fit.
        QString error;
        PrintTarget pdf = to({}, tmp.filePath("refused.pdf"));
        pdf.calibration = PrinterCalibration{25, 0, 100, 100};
        QVERIFY(!printCalibrationPage(pdf, texts(), &error) && error.contains("25.00"));
        QPrinter a5(QPrinter::HighResolution);
        a5.setOutputFileName(tmp.filePath("a5.pdf"));
        a5.setPageSize(QPageSize(QPageSize::A5));
        pdf.device = &a5;
        pdf.calibration.reset();
        QVERIFY(!printCalibrationPage(pdf, texts(), &error) && error.contains("148 x 210"));
        QVERIFY(!QFile::exists(tmp.filePath("refused.pdf")));
    }

    void pdfAndExportUncalibratedUnlessAsked()
    {
        // With the queues: the default printer's calibration must not leak in.
        if (setup() == "none") QSKIP("runs under with_private_cupsd.sh");
        UserSettings s;
        s.calibrations = {{"Office", kCal}, {"TEST-PDF", kCal}};
        QVERIFY(writeSettings(paths::settingsFile(), s));
        ProjectData d = emptyProject(FmtCdRom);
        d.backgrounds[FmtCdRom].text = "~0";
        const QString prj = tmp.filePath("disc.prj"), pdf = tmp.filePath("disc.pdf");
        QVERIFY(writeProject(d, prj));
        QString err;
        QVERIFY2(jewlkit({"--print", prj, "--pdf", pdf, "--stock", kStock.name, "--keep-background"}, &err) == 0, qPrintable(err));
        expectDisc(raster(pdf, 1, tmp.filePath("disc")), true, kCentre.y(), kCentre.x() - 59, kCentre.x() + 59);
        QVERIFY2(jewlkit({"--print-test-outline", "--stock", kStock.name, "--pdf", pdf, "--calibrated-for", "Office"}, &err) == 0,
                 qPrintable(err));
        expect(raster(pdf, 1, tmp.filePath("outline")), true, cal(kCentre).y(), cal(kCentre + QPointF(59, 0)).x());
        QVERIFY2(off.isEmpty(), qPrintable(off.join(", ")));
        // A printer renamed or removed since: refused, naming those there are.
        QCOMPARE(jewlkit({"--print-test-outline", "--stock", kStock.name, "--pdf", pdf, "--calibrated-for", "Gone"}, &err), 1);
        QVERIFY2(err.contains("\"Gone\"") && err.contains("Office"), qPrintable(err));
        // Export: the same image with and without calibrations.
        QCOMPARE(jewlkit({"--export", tmp.filePath("with"), prj}), 0);
        QVERIFY(writeSettings(paths::settingsFile(), {}));
        QCOMPARE(jewlkit({"--export", tmp.filePath("without"), prj}), 0);
        QCOMPARE(QImage(tmp.filePath("with/8.png")), QImage(tmp.filePath("without/8.png")));
    }

    void marksWhereTheyBelongOnTheQueues()
    {
        if (setup() != "cupsd") QSKIP("runs under with_private_cupsd.sh");
        // The calibration page, uncalibrated: each cross through an arm
        // (A outside its circle), each ruler's 0 and 150 through the long ticks.
        QString error;
        QVERIFY2(printCalibrationPage(to("TEST-PDF"), texts(), &error, "calpage-" + pid), qPrintable(error));
        QImage img = queued("calpage-" + pid);
        QVERIFY(!img.isNull());
        const QMarginsF m = QPrinter(QPrinterInfo::printerInfo("TEST-PDF")).pageLayout().margins(QPageLayout::Millimeter);
        const QPointF b(m.left() + kCrossBInsetMm, m.top() + kCrossBInsetMm);
        const QPointF c(pxToMm(img.width()) - kCrossCInsetMm, pxToMm(img.height()) - kCrossCInsetMm);
        const struct {
            bool row;
            double at, want;
        } marks[] = {{true, kCrossAMm + 4.5, kCrossAMm},
                     {false, kCrossAMm + 4.5, kCrossAMm},
                     {true, b.y() + 3, b.x()},
                     {false, b.x() + 3, b.y()},
                     {true, c.y() + 4.5, c.x()},
                     {false, c.x() + 4.5, c.y()},
                     {true, kRulerAcrossYMm + 4.5, kRulerAcrossXMm},
                     {true, kRulerAcrossYMm + 4.5, kRulerAcrossXMm + kRulerMm},
                     {false, kRulerDownXMm + 4.5, kRulerDownYMm},
                     {false, kRulerDownXMm + 4.5, kRulerDownYMm + kRulerMm}};
        for (const auto& k : marks) expect(img, k.row, k.at, k.want);
        QVERIFY2(off.isEmpty(), qPrintable("calibration page: " + off.join(", ")));

        // Calibrated: a black disc label's edges, then the test outline's circles and cross.
        appSetup().settings.calibrations.insert("TEST-PDF2", kCal);
        Project project;
        ProjectData d = emptyProject(FmtCdRom);
        d.backgrounds[FmtCdRom].text = "~0";
        project.load(std::move(d));
        project.setSheetComposition(FmtCdRom);
        project.setPrintWeights(2);
        RunOptions o;
        o.stock = kStock;
        o.keepBackground = true;
        o.jobName = "caldisc-" + pid;
        const RunResult r = printRun(project, planForProject(project, RunKind::Project, 1, 0, 0, kStock), to("TEST-PDF2"), o);
        QVERIFY2(r.status == RunResult::Printed, qPrintable(r.error));
        img = queued(o.jobName);
        const QPointF centre = cal(kCentre);
        const QPointF topLeft = cal(kCentre - QPointF(59, 59)), bottomRight = cal(kCentre + QPointF(59, 59));
        expectDisc(img, true, centre.y(), topLeft.x(), bottomRight.x());
        expectDisc(img, false, centre.x(), topLeft.y(), bottomRight.y());
        QVERIFY2(printTestOutline(kStock, to("TEST-PDF2"), texts(), &error, "outline-" + pid), qPrintable(error));
        img = queued("outline-" + pid);
        for (double radius : {-59.0, -16.4, 16.4, 59.0}) {
            expect(img, true, centre.y(), cal(kCentre + QPointF(radius, 0)).x());
            expect(img, false, centre.x(), cal(kCentre + QPointF(0, radius)).y());
        }
        expect(img, true, centre.y() + 3, centre.x());
        expect(img, false, centre.x() + 3, centre.y());
        QVERIFY2(off.isEmpty(), qPrintable("calibrated: " + off.join(", ")));
    }
};

QTEST_MAIN(TestCalibration)
#include "test_calibration.moc"
