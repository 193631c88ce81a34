// Scanning through SANE's own test backend, from a private SANE_CONFIG_DIR
// whose dll.conf names only "test". SANE is set up afresh whenever a device
// is opened after the last one closed, so each case writes its test.conf.
#include "ui/UiFixture.h"
#include "platform/Scanner.h"
#include "ui/dialogs/PictureDialog.h"
#include "ui/dialogs/ScanDialog.h"
#include <QComboBox>
#include <QEventLoop>
#include <QLabel>
#include <QListWidget>

namespace pf = jk::platform;

// Runs the script on the first modal dialog of class D to come up, however
// late (fixture::whenModal looks once, at once).
template <class D>
void whenShown(std::function<void(D*)> script)
{
    auto* poll = new QTimer(qApp);
    QObject::connect(poll, &QTimer::timeout, [poll, script] {
        if (auto* d = qobject_cast<D*>(QApplication::activeModalWidget())) {
            poll->deleteLater();
            script(d);
        }
    });
    poll->start(10);
}

class TestScanner : public QObject {
    Q_OBJECT
    QTemporaryDir config;
    QImage colour;  // the colour scan, for the one that comes in three frames

    void writeConfig(const QByteArray& extra)
    {
        QVERIFY(fixture::writeFile(config.filePath("test.conf"),
                                   "resolution 75\nmode Color\ntest-picture \"Color pattern\"\n" + extra));
    }

    // Opens test:0 in the session and waits for its options.
    static std::optional<pf::ScanOptions> open(pf::ScannerSession& s, const QString& device = "test:0")
    {
        QSignalSpy opened(&s, &pf::ScannerSession::opened), failed(&s, &pf::ScannerSession::failed);
        s.open(device);
        if (!opened.wait(10000)) return std::nullopt;
        return opened.first().first().value<pf::ScanOptions>();
    }

    // How a scan ended: the picture, cancelled, or the fault.
    struct Outcome {
        QImage image;
        bool cancelled = false;
        std::optional<pf::ScanFault> fault;
    };
    static Outcome scan(pf::ScannerSession& s, const pf::ScanRequest& r)
    {
        Outcome o;
        QEventLoop loop;
        QObject::connect(&s, &pf::ScannerSession::scanned, &loop, [&](const QImage& i) { o.image = i, loop.quit(); });
        QObject::connect(&s, &pf::ScannerSession::cancelled, &loop, [&] { o.cancelled = true, loop.quit(); });
        QObject::connect(&s, &pf::ScannerSession::failed, &loop, [&](pf::ScanFault f) { o.fault = f, loop.quit(); });
        QTimer::singleShot(20000, &loop, &QEventLoop::quit);  // a hung scan fails the test instead
        s.scan(r);
        loop.exec();
        return o;
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (!pf::scanningAvailable()) QSKIP("built without SANE");
        qputenv("SANE_CONFIG_DIR", config.path().toLocal8Bit());
        QVERIFY(fixture::writeFile(config.filePath("dll.conf"), "test\n"));
        writeConfig("");
        std::optional<QList<pf::ScanDevice>> found;
        pf::findScanDevices(this, [&](const QList<pf::ScanDevice>& d) { found = d; });
        QTRY_VERIFY_WITH_TIMEOUT(found.has_value(), 10000);
        if (found->isEmpty()) QSKIP("SANE's test backend is not installed");
        QCOMPARE(found->first().name, "test:0");
        QCOMPARE(found->first().label(), "Noname frontend-tester");
        QCOMPARE(found->size(), 2);
    }

    void opensADeviceOnce()
    {
        pf::ScannerSession first, second;
        const auto options = open(first);
        QVERIFY(options);
        // Line art comes as 1-bit gray, which the backend offers as a depth.
        QCOMPARE(options->modes, QStringList({"Gray", "Color", "Lineart"}));
        QCOMPARE(options->area, QRectF(0, 0, 200, 200));
        for (int dpi : {75, 150, 300, 600}) QVERIFY(options->resolutions.contains(dpi));
        // A device in use elsewhere says so, and can be had once let go.
        QSignalSpy failed(&second, &pf::ScannerSession::failed);
        second.open("test:0");
        QVERIFY(failed.wait(10000));
        QCOMPARE(failed.first().first().value<pf::ScanFault>(), pf::ScanFault::Busy);
        QVERIFY(!second.isOpen());
        first.close();
        QVERIFY(open(second));
    }

    void scans_data()
    {
        QTest::addColumn<QByteArray>("conf");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<int>("dpi");
        QTest::addColumn<QRectF>("area");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QImage::Format>("format");
        // "rising": a 16-bit ramp; "black": nothing else; "colour": the same
        // picture as that row's.
        QTest::addColumn<QString>("expect");
        const QRectF area(10, 10, 50, 40);
        const QSize size(295, 236);  // 50 x 40 mm at 150 dpi
        QTest::newRow("colour") << QByteArray() << "Color" << 150 << area << size << QImage::Format_RGB888 << "";
        QTest::newRow("gray") << QByteArray() << "Gray" << 150 << area << size << QImage::Format_Grayscale8 << "";
        QTest::newRow("line art") << QByteArray() << "Lineart" << 150 << area << size << QImage::Format_Mono << "";
        QTest::newRow("line art, all black") << QByteArray("test-picture \"Solid black\"\n") << "Lineart" << 150 << area
                                             << size << QImage::Format_Mono << "black";
        QTest::newRow("gray 16 bits") << QByteArray("depth 16\n") << "Gray" << 150 << area << size
                                      << QImage::Format_Grayscale16 << "rising";
        QTest::newRow("colour 16 bits") << QByteArray("depth 16\n") << "Color" << 150 << area << size
                                        << QImage::Format_RGBX64 << "rising";
        QTest::newRow("colour in three frames") << QByteArray("three-pass true\n") << "Color" << 150 << area << size
                                                << QImage::Format_RGB888 << "colour";
        // A hand scanner does not know its height (lines = -1): 110 x 170 mm.
        QTest::newRow("height unknown") << QByteArray("hand-scanner true\n") << "Gray" << 50 << QRectF()
                                        << QSize(216, 334) << QImage::Format_Grayscale8 << "";
    }
    void scans()
    {
        QFETCH(QByteArray, conf);
        QFETCH(QString, mode);
        QFETCH(int, dpi);
        QFETCH(QRectF, area);
        QFETCH(QString, expect);
        writeConfig(conf);
        pf::ScannerSession s;
        QVERIFY(open(s));
        QSignalSpy progress(&s, &pf::ScannerSession::progress);
        const Outcome o = scan(s, {mode, dpi, area, false});
        QVERIFY(!o.fault && !o.cancelled);
        QTEST(o.image.size(), "size");
        QTEST(o.image.format(), "format");
        QCOMPARE(progress.last().first().toInt(), area.isEmpty() ? -1 : 100);
        QSet<QRgb> colours;
        for (int y = 0; y < o.image.height(); y += 7)
            for (int x = 0; x < o.image.width(); x += 7) colours.insert(o.image.pixel(x, y));
        if (expect == "black") {
            QCOMPARE(colours, QSet<QRgb>({qRgb(0, 0, 0)}));
        } else if (expect == "rising") {
            // At 16 bits the backend draws a ramp from dark to full red
            // (gray): it must rise steadily, whatever the byte order.
            const int w = o.image.width();
            const QImage row = o.image.copy(w / 10, o.image.height() / 2, w * 3 / 4, 1);
            int last = 0;
            for (int x = 0; x < row.width(); ++x) {
                const QColor c = row.pixelColor(x, 0);
                QVERIFY2(c.red() >= last && c.green() == c.blue(), qPrintable(QString::number(x)));
                last = c.red();
            }
            QVERIFY(last > 180);
        } else if (!expect.isEmpty()) {
            QCOMPARE(o.image, colour);
        } else {
            QVERIFY(colours.size() >= 2);  // the test pattern, not one plain colour
        }
        if (QTest::currentDataTag() == QLatin1String("colour")) colour = o.image;
    }

    void cancelsHalfway()
    {
        // Slow data: a block every 0.2 s, some ten seconds for the whole scan.
        writeConfig("read-delay true\nread-delay-duration 200000\n");
        pf::ScannerSession s;
        QVERIFY(open(s));
        connect(&s, &pf::ScannerSession::progress, &s, [&](int percent) {
            if (percent > 0) s.cancel();
        });
        QElapsedTimer clock;
        clock.start();
        const Outcome o = scan(s, {"Color", 300, QRectF(0, 0, 80, 100), false});
        QCOMPARE_LT(clock.elapsed(), 5000);
        QVERIFY(o.cancelled);
        QVERIFY(o.image.isNull());
        // The device is ready for the next scan.
        s.disconnect(&s);
        QCOMPARE(scan(s, {"Gray", 75, QRectF(0, 0, 10, 10), false}).image.size(), QSize(29, 29));
    }

    // No read errors are injected (read-status-code): the test backend then
    // cancels its reader thread asynchronously while it may still be in
    // malloc, which can deadlock the whole process.

    // The picture dialog: Scanner, the scan dialog, then Select saves the
    // scan where the save dialog says; cancelling it or a failed save keeps
    // the scan on show.
    void pictureDialogSavesTheScan()
    {
        writeConfig("");
        fixture::Dialog<PictureDialog> t;
        QTemporaryDir pictures;
        jk::appSetup().settings.picturesFolder = pictures.path();
        PictureDialog* d = t.open(PicturePurpose::Picture);
        QTRY_VERIFY(t.control("Scanner")->isEnabled());
        fixture::whenModal<ScanDialog>([](ScanDialog* scan) {
            QSignalSpy ready(scan, &ScanDialog::ready);
            QVERIFY(scan->session()->isOpen() || ready.wait(10000));
            auto* resolution = fixture::child<QComboBox>(scan, "scanResolution");
            resolution->setCurrentIndex(resolution->findData(75));
            scan->areaView()->setSelection(QRectF(0, 0, 20, 10));
            QCOMPARE(fixture::child<QLabel>(scan, "scanSize")->text(), QString("59 \u00d7 29"));
            fixture::clickAll(scan, "scanStart");
            QTRY_VERIFY_WITH_TIMEOUT(!scan->isVisible(), 10000);
        });
        t.click("Scanner");
        QCOMPARE(d->scannedPicture().size(), QSize(59, 29));
        QCOMPARE(d->preview()->picture(), d->scannedPicture());
        QCOMPARE(jk::app().settings.scannerSource, "test:0");

        const QString saved = pictures.filePath("scan.jpg");
        t.fake->files.saveAnswers = {QString(), "/no such folder/scan.jpg", pictures.filePath("scan")};
        for (int attempt = 0; attempt < 2; ++attempt) {
            d->select();
            QVERIFY(d->isVisible() && !d->choice());
        }
        QCOMPARE(t.fake->messages.calls.size(), 1);  // the failed save, not the cancelled one
        QVERIFY(QDir("/no such folder").isEmpty());
        d->select();
        QVERIFY(!d->isVisible());
        QCOMPARE(d->choice()->file, saved);
        QCOMPARE(QImage(saved).size(), QSize(59, 29));
        const auto& call = t.fake->files.saveCalls.first();
        QCOMPARE(call.folder, pictures.filePath("untitled.jpg"));
        QCOMPARE(call.defaultSuffix, "jpg");
        QVERIFY(call.filter.startsWith("Bitmap (*.bmp);;JPEG (*.jpg)"));
    }

    // The scan dialog on a device another program holds: it says so, and
    // the other device can be chosen and previewed.
    void scanDialogPassesOverABusyDevice()
    {
        writeConfig("");
        fixture::Dialog<ScanDialog> t;
        pf::ScannerSession elsewhere;
        QVERIFY(open(elsewhere));
        ScanDialog* d = t.open(*pf::knownScanDevices(), QString("test:0"));
        QTRY_COMPARE(t.fake->messages.calls.size(), 1);
        QCOMPARE(t.fake->messages.calls.first().text, jk::texts().msg(jk::Msg::ScannerBusy));
        QVERIFY(!t.control("scanStart")->isEnabled() && t.control("scanDevice")->isEnabled());
        QSignalSpy ready(d, &ScanDialog::ready);
        fixture::child<QComboBox>(d, "scanDevice")->setCurrentIndex(1);
        QVERIFY(ready.wait(10000));
        t.click("scanPreview");
        QTRY_VERIFY(!d->areaView()->preview().isNull());
        QVERIFY(d->isVisible() && t.control("scanStart")->isEnabled());
    }

    // Select source: no device is said so; otherwise the choice is kept.
    void selectSource()
    {
        fixture::Gui gui;
        QVERIFY(fixture::writeFile(config.filePath("dll.conf"), ""));
        gui.w->action("ScanSel")->trigger();
        QTRY_COMPARE(gui.fake->messages.calls.size(), 1);
        QCOMPARE(gui.fake->messages.calls.first().text, jk::texts().msg(jk::Msg::NoScanner));
        QVERIFY(fixture::writeFile(config.filePath("dll.conf"), "test\n"));
        whenShown<ScanSourceDialog>([](ScanSourceDialog* d) {
            QCOMPARE(d->list()->item(1)->text(), "Noname frontend-tester (test:1)");
            d->list()->setCurrentRow(1);
            d->accept();
        });
        gui.w->action("ScanSel")->trigger();
        QTRY_COMPARE(jk::app().settings.scannerSource, "test:1");
        QVERIFY(gui.w->action("ScanSel")->isEnabled());
    }
};

QTEST_MAIN(TestScanner)
#include "test_scanner.moc"
