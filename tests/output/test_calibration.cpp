// Printer calibration: what measurements give and refuse; on private cups-pdf
// queues, on a 600-dpi raster, the calibration page's marks, a calibrated
// disc label and test outline; PDF output and export untouched unless asked.
#include "Fixture.h"
#include "PrintProjects.h"
#include "output/Calibration.h"
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
QPointF cal(QPointF mm) { return {1.5 + mm.x() * 1.004, -0.7 + mm.y() * 0.996}; }  // where kCal puts mm
QByteArray setup() { return qgetenv("JK_PRINTER_SETUP"); }
}  // namespace

class TestCalibration : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    const QString pid = QString::number(QCoreApplication::applicationPid());
    QStringList off;  // marks found elsewhere

    // Along a row (or column) at `at`: a line centred on `first`, or (with
    // `last`) a black area from `first` to `last`, within 0.1 mm.
    void expect(const QImage& img, bool row, double at, double first, double last = -1)
    {
        const auto [a, b] = ink(img, row, at, first - 1, (last < 0 ? first : last) + 1);
        if (last < 0 ? std::abs((a + b) / 2 - first) > 0.1 : std::abs(a - first) > 0.1 || std::abs(b - last) > 0.1)
            off << QStringLiteral("%1..%2 at %3: %4..%5").arg(first).arg(last).arg(at).arg(a).arg(b);
    }
    // The page cups-pdf wrote for the job `title`, once wholly written.
    QImage queued(const QString& title)
    {
        for (int i = 0; i < 300; ++i, QTest::qWait(100)) {
            QDirIterator it(QString::fromLocal8Bit(getpwuid(getuid())->pw_dir) + "/PDF", {"*" + title + "*.pdf"}, QDir::Files);
            const QString pdf = it.hasNext() ? it.next() : QString();
            const QImage img = pdf.isEmpty() ? QImage() : raster(pdf, 1, tmp.filePath(title));
            if (!img.isNull() && QFile::remove(pdf)) return img;
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
        qputenv("JEWLKIT_HOME", QFile::encodeName(tmp.path()));  // shared with the program it starts
    }
    void init() { fixture::resetApp(); }

    void measurementsUndoThePrinter()
    {
        if (setup() == "cupsd") QSKIP("runs without the queues");
        // A printer stretching by k and shifting by d, measured on a page printed
        // uncalibrated and on one calibrated: A and the rulers' ends then land true.
        const double k[2] = {1.004, 0.995}, d[2] = {1.2, -0.8};
        for (const PrinterCalibration& was : {PrinterCalibration{}, PrinterCalibration{1, -1, 101, 99}}) {
            const double o[2] = {was.offsetXMm, was.offsetYMm}, s[2] = {was.scaleXPercent / 100, was.scaleYPercent / 100};
            auto printed = [&](int i, double mm) { return k[i] * (o[i] + s[i] * mm) + d[i]; };
            auto text = [](double v) { return QString::number(v); };
            const MeasuredCalibration r = calibrationFromMeasurement(
                {text(printed(0, 30)).replace('.', ','), text(printed(1, 30)), text(printed(0, 180) - printed(0, 30)) + " mm",
                 text(printed(1, 180) - printed(1, 30))}, was, texts());
            QVERIFY2(r.calibration, qPrintable(r.error));
            const PrinterCalibration& n = *r.calibration;
            for (double mm : {30.0, 180.0})
                QVERIFY(std::abs(k[0] * (n.offsetXMm + n.scaleXPercent / 100 * mm) + d[0] - mm) < 0.02 &&
                        std::abs(k[1] * (n.offsetYMm + n.scaleYPercent / 100 * mm) + d[1] - mm) < 0.02);
        }
        // Refused: not a length (naming the field), beyond 20 mm or 90-110 %.
        const struct { Measurement m; int badField; const char* says; } refused[] = {
            {{"", "30", "150", "150"}, 0, "Cross A from the left edge"}, {{"30", "thirty", "150", "150"}, 1, "thirty"},
            {{"30", "30", "-150", "150"}, 2, "Horizontal ruler"}, {{"30", "30", "150", "15"}, -1, "90 to 110"},
            {{"55", "30", "150", "150"}, -1, "20 mm"}};
        for (const auto& c : refused) {
            const MeasuredCalibration r = calibrationFromMeasurement(c.m, {}, texts());
            QVERIFY2(!r.calibration && r.badField == c.badField && r.error.contains(c.says), qPrintable(r.error));
        }
        // No page with a calibration out of range, nor on paper too small.
        QString error;
        QPrinter a5(QPrinter::HighResolution);
        a5.setOutputFileName(tmp.filePath("a5.pdf"));
        a5.setPageSize(QPageSize(QPageSize::A5));
        QVERIFY(!printCalibrationPage({{}, tmp.filePath("x.pdf"), nullptr, PrinterCalibration{25, 0, 100, 100}}, texts(), &error));
        QVERIFY(error.contains("25.00") && !QFile::exists(tmp.filePath("x.pdf")));
        QVERIFY(!printCalibrationPage({{}, {}, &a5, {}}, texts(), &error) && error.contains("148 x 210"));
    }

    void marksWhereTheyBelong()
    {
        if (setup() != "cupsd") QSKIP("runs under with_private_cupsd.sh");
        // The calibration page, uncalibrated: the crosses through an arm (A
        // outside its circle), the rulers' 0 and 150 through the long ticks.
        QString error;
        QVERIFY2(printCalibrationPage({"TEST-PDF", {}, nullptr, {}}, texts(), &error, "calpage-" + pid), qPrintable(error));
        QImage img = queued("calpage-" + pid);
        const QMarginsF m = QPrinter(QPrinterInfo::printerInfo("TEST-PDF")).pageLayout().margins(QPageLayout::Millimeter);
        const QPointF b(m.left() + kCrossBInsetMm, m.top() + kCrossBInsetMm), a(kCrossAMm, kCrossAMm),
            c(pxToMm(img.width()) - kCrossCInsetMm, pxToMm(img.height()) - kCrossCInsetMm);
        const std::pair<QPointF, double> crosses[] = {{a, 4.5}, {b, 3}, {c, 4.5}};
        for (const auto& [cross, arm] : crosses) {
            expect(img, true, cross.y() + arm, cross.x());
            expect(img, false, cross.x() + arm, cross.y());
        }
        for (double end : {0.0, kRulerMm}) {
            expect(img, true, kRulerAcrossYMm + 4.5, kRulerAcrossXMm + end);
            expect(img, false, kRulerDownXMm + 4.5, kRulerDownYMm + end);
        }
        QVERIFY2(off.isEmpty(), qPrintable("calibration page: " + off.join(", ")));

        // A black disc label, by the program with its settings: true to size
        // in a PDF though the default printer has a calibration, calibrated on
        // its printer.
        UserSettings s;
        s.calibrations = {{"Office", kCal}, {"TEST-PDF", kCal}, {"TEST-PDF2", kCal}};
        QVERIFY(writeSettings(paths::settingsFile(), s));
        ProjectData d = emptyProject(FmtCdRom);
        d.backgrounds[FmtCdRom].text = "~0";
        const QString prj = tmp.filePath("disc-" + pid + ".prj"), pdf = tmp.filePath("disc.pdf");
        QVERIFY(writeProject(d, prj));
        const QStringList disc = {"--print", prj, "--stock", kStock.name, "--keep-background"};
        QCOMPARE(jewlkit(disc + QStringList{"--pdf", pdf}), 0);
        expect(raster(pdf, 1, tmp.filePath("disc")), true, kCentre.y(), kCentre.x() - 59, kCentre.x() + 59);
        QCOMPARE(jewlkit(disc + QStringList{"--printer", "TEST-PDF2"}), 0);
        img = queued("disc-" + pid);
        const QPointF centre = cal(kCentre), topLeft = cal(kCentre - QPointF(59, 59)), bottomRight = cal(kCentre + QPointF(59, 59));
        expect(img, true, centre.y(), topLeft.x(), bottomRight.x());
        expect(img, false, centre.x(), topLeft.y(), bottomRight.y());
        // The test outline, calibrated for a printer: its circles and cross.
        QCOMPARE(jewlkit({"--print-test-outline", "--stock", kStock.name, "--pdf", pdf, "--calibrated-for", "Office"}), 0);
        img = raster(pdf, 1, tmp.filePath("outline"));
        for (double radius : {-59.0, -16.4, 16.4, 59.0}) {
            expect(img, true, centre.y(), cal(kCentre + QPointF(radius, 0)).x());
            expect(img, false, centre.x(), cal(kCentre + QPointF(0, radius)).y());
        }
        expect(img, true, centre.y() + 3, centre.x());
        expect(img, false, centre.x() + 3, centre.y());
        QVERIFY2(off.isEmpty(), qPrintable("disc and outline: " + off.join(", ")));

        // A printer renamed or removed since: refused, naming those there are.
        QString err;
        QCOMPARE(jewlkit({"--print-test-outline", "--stock", kStock.name, "--pdf", pdf, "--calibrated-for", "Gone"}, &err), 1);
        QVERIFY2(err.contains("\"Gone\"") && err.contains("Office"), qPrintable(err));
        // Export: the same image with and without calibrations.
        QCOMPARE(jewlkit({"--export", tmp.filePath("with"), prj}), 0);
        QVERIFY(writeSettings(paths::settingsFile(), {}));
        QCOMPARE(jewlkit({"--export", tmp.filePath("without"), prj}), 0);
        QCOMPARE(QImage(tmp.filePath("with/8.png")), QImage(tmp.filePath("without/8.png")));
    }
};

QTEST_MAIN(TestCalibration)
#include "test_calibration.moc"
