#pragma once
// Scanners through SANE. Every SANE call runs on one scanner thread of its
// own, so a slow network backend or a long scan never blocks a window: the
// device list and every result arrive later, as a callback or a signal in
// the asker's thread. SANE is set up while a list is being made or a device
// is open, and let go when nothing uses it.
//
// No SANE type shows here, so any part of the program may include this.
#include <QImage>
#include <QList>
#include <QObject>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

namespace jk::platform {

// False when the program was built without SANE: no scanner then.
bool scanningAvailable();

struct ScanDevice {
    QString name;  // what SANE opens, e.g. "test:0" or "genesys:libusb:001:004"
    QString vendor, model, type;
    // "Vendor Model", as a user knows the device.
    QString label() const;
};

// Calls done in context's thread with the devices SANE lists. They are
// looked for once per process; refresh looks again (a scanner plugged in
// since). A dropped context drops the answer.
void findScanDevices(QObject* context, std::function<void(const QList<ScanDevice>&)> done, bool refresh = false);
// The devices found so far; nullopt until the first list has arrived.
std::optional<QList<ScanDevice>> knownScanDevices();

// What an open device offers.
struct ScanOptions {
    QStringList modes;        // "Color", "Gray", "Lineart"… as the device names them
    QString mode;             // the device's current mode
    QList<int> resolutions;   // dpi, ascending: the device's list, or steps of its range
    int resolution = 0;
    QRectF area;              // the whole scan area in millimetres; empty: the device has none
};

// Why a device could not be opened or a scan did not finish; the detail
// that comes with it is SANE's own English.
enum class ScanFault {
    NotOpened,  // the device cannot be opened (gone, no permission, …)
    Busy,       // another program uses it
    Gone,       // it stopped answering during the scan
    Failed,     // the device refused or broke off the scan
    TooLarge,   // the picture would not fit in memory
};

struct ScanRequest {
    QString mode;
    int resolution = 0;
    QRectF area;           // millimetres; empty: the whole area
    bool preview = false;  // a quick look: the device may cut corners
};

// One device, opened on the scanner thread. Everything it does is
// asynchronous; the signals tell how it went. Deleting a session cancels
// its scan and closes the device without waiting for either.
class ScannerSession : public QObject {
    Q_OBJECT
public:
    explicit ScannerSession(QObject* parent = nullptr);
    ~ScannerSession() override;

    void open(const QString& device);  // closes the device open before
    void scan(const ScanRequest& request);
    // Stops a scan at the next block of data; ends in cancelled().
    void cancel();
    void close();

    QString device() const { return device_; }
    bool isOpen() const { return open_; }
    bool isScanning() const { return scanning_; }

    // What the session shares with the jobs it hands the scanner thread.
    struct Core;

Q_SIGNALS:
    void opened(const jk::platform::ScanOptions& options);
    // Percent done; -1 while the device does not say how long the scan is.
    void progress(int percent);
    void scanned(const QImage& image);
    void cancelled();
    // Opening or scanning went wrong; isOpen() says whether the device is
    // still there to try again.
    void failed(jk::platform::ScanFault fault, const QString& detail);

private:
    std::shared_ptr<Core> core_;
    quint64 generation_ = 0;  // answers to an earlier open are dropped
    QString device_;
    bool open_ = false;
    bool scanning_ = false;
};

}  // namespace jk::platform
