#include "platform/Scanner.h"
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QMutex>
#include <QPointer>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#ifdef JK_HAVE_SANE
#include <sane/sane.h>
#include <sane/saneopts.h>
#endif

namespace jk::platform {

QString ScanDevice::label() const
{
    const QString both = (vendor + u' ' + model).simplified();
    return both.isEmpty() ? name : both;
}

bool scanningAvailable()
{
#ifdef JK_HAVE_SANE
    return true;
#else
    return false;
#endif
}

namespace {

// ------------------------------------------------------------ scanner thread

// Everything that talks to SANE runs here, one job after the other: a SANE
// handle must stay on one thread, and sane_read blocks.
class ScannerThread final : public QThread {
public:
    QObject* host = nullptr;  // lives in this thread; jobs are posted to it

protected:
    void run() override;
};

ScannerThread* gThread = nullptr;  // made by the GUI thread on first use

void stopScannerThread()
{
    if (!gThread) return;
    // Posted behind every job already waiting, so pending closes still run.
    QMetaObject::invokeMethod(gThread->host, [] { QThread::currentThread()->quit(); }, Qt::QueuedConnection);
    // A device hanging in sane_read must not hang the program's exit.
    if (gThread->wait(QDeadlineTimer(10000))) {
        delete gThread->host;
        delete gThread;
    }
    gThread = nullptr;
}

void post(std::function<void()> job)
{
    if (!gThread) {
        gThread = new ScannerThread;
        gThread->setObjectName(QStringLiteral("scanner"));
        gThread->host = new QObject;
        gThread->host->moveToThread(gThread);
        gThread->start();
        qAddPostRoutine(stopScannerThread);
    }
    QMetaObject::invokeMethod(gThread->host, std::move(job), Qt::QueuedConnection);
}

// ------------------------------------------------------------- device list

// The GUI thread's view of the device list.
struct DeviceCache {
    std::optional<QList<ScanDevice>> devices;
    bool asking = false;
    QList<std::pair<QPointer<QObject>, std::function<void(const QList<ScanDevice>&)>>> waiting;
};

DeviceCache& deviceCache()
{
    static DeviceCache c;
    return c;
}

void devicesArrived(const QList<ScanDevice>& devices)
{
    DeviceCache& c = deviceCache();
    c.devices = devices;
    c.asking = false;
    const auto waiting = std::exchange(c.waiting, {});
    for (const auto& [context, done] : waiting)
        if (context) done(devices);
}

}  // namespace

// What a session shares with the jobs it posts.
struct ScannerSession::Core {
    QMutex mutex;                     // guards owner
    ScannerSession* owner = nullptr;  // null once the session is gone
    std::atomic<bool> cancel{false};
    void* handle = nullptr;           // the SANE handle; scanner thread only

    // Runs f on the session in its own thread, if the session still exists
    // (events posted to a deleted object are dropped).
    void tell(std::function<void(ScannerSession*)> f)
    {
        QMutexLocker lock(&mutex);
        if (!owner) return;
        ScannerSession* s = owner;
        QMetaObject::invokeMethod(owner, [s, f = std::move(f)] { f(s); }, Qt::QueuedConnection);
    }
};

namespace {

struct OpenResult {
    bool ok = false;
    ScanOptions options;
    ScanFault fault = ScanFault::NotOpened;
    QString detail;
};

struct ScanResult {
    enum Kind { Done, Cancelled, Failed } kind = Failed;
    QImage image;
    ScanFault fault = ScanFault::Failed;
    QString detail;
};

#ifdef JK_HAVE_SANE

// Scanner thread only: SANE is set up while anything uses it.
int gUsers = 0;
bool gInited = false;

bool useSane()
{
    ++gUsers;
    if (!gInited) {
        SANE_Int version = 0;
        gInited = sane_init(&version, nullptr) == SANE_STATUS_GOOD;
    }
    return gInited;
}

void releaseSane()
{
    if (--gUsers == 0 && gInited) {
        sane_exit();
        gInited = false;
    }
}

QString statusText(SANE_Status s) { return QString::fromUtf8(sane_strstatus(s)); }

ScanFault faultOf(SANE_Status s)
{
    switch (s) {
    case SANE_STATUS_DEVICE_BUSY: return ScanFault::Busy;
    case SANE_STATUS_IO_ERROR: return ScanFault::Gone;
    case SANE_STATUS_NO_MEM: return ScanFault::TooLarge;
    default: return ScanFault::Failed;
    }
}

QList<ScanDevice> listDevices()
{
    QList<ScanDevice> devices;
    if (useSane()) {
        const SANE_Device** list = nullptr;
        if (sane_get_devices(&list, SANE_FALSE) == SANE_STATUS_GOOD && list)
            for (int i = 0; list[i]; ++i) {
                const SANE_Device* d = list[i];
                auto text = [](const char* s) { return s ? QString::fromUtf8(s) : QString(); };
                devices.append({text(d->name), text(d->vendor), text(d->model), text(d->type)});
            }
    }
    releaseSane();
    return devices;
}

// Options are looked up by name each time: a set option may change others
// (SANE_INFO_RELOAD_OPTIONS), and this always reads them afresh.
struct Option {
    SANE_Int index = 0;
    const SANE_Option_Descriptor* d = nullptr;
    explicit operator bool() const { return d != nullptr; }
};

Option findOption(SANE_Handle h, const char* name)
{
    SANE_Int count = 0;
    if (sane_control_option(h, 0, SANE_ACTION_GET_VALUE, &count, nullptr) != SANE_STATUS_GOOD) return {};
    for (SANE_Int i = 1; i < count; ++i) {
        const SANE_Option_Descriptor* d = sane_get_option_descriptor(h, i);
        if (d && d->name && std::strcmp(d->name, name) == 0 && SANE_OPTION_IS_ACTIVE(d->cap)) return {i, d};
    }
    return {};
}

bool isNumber(const Option& o)
{
    return o && (o.d->type == SANE_TYPE_INT || o.d->type == SANE_TYPE_FIXED) && o.d->size == sizeof(SANE_Word);
}

double fromWord(const Option& o, SANE_Word w) { return o.d->type == SANE_TYPE_FIXED ? SANE_UNFIX(w) : double(w); }
SANE_Word toWord(const Option& o, double v)
{
    return o.d->type == SANE_TYPE_FIXED ? SANE_FIX(v) : SANE_Word(std::lround(v));
}

std::optional<double> getNumber(SANE_Handle h, const char* name)
{
    const Option o = findOption(h, name);
    SANE_Word w = 0;
    if (!isNumber(o) || sane_control_option(h, o.index, SANE_ACTION_GET_VALUE, &w, nullptr) != SANE_STATUS_GOOD)
        return std::nullopt;
    return fromWord(o, w);
}

// Sets a number, moved onto what the option allows (nearest list entry,
// inside the range on its steps).
void setNumber(SANE_Handle h, const char* name, double v)
{
    const Option o = findOption(h, name);
    if (!isNumber(o) || !SANE_OPTION_IS_SETTABLE(o.d->cap)) return;
    SANE_Word w = toWord(o, v);
    if (o.d->constraint_type == SANE_CONSTRAINT_WORD_LIST && o.d->constraint.word_list[0] > 0) {
        const SANE_Word* list = o.d->constraint.word_list;
        SANE_Word best = list[1];
        for (SANE_Int i = 1; i <= list[0]; ++i)
            if (std::abs(fromWord(o, list[i]) - v) < std::abs(fromWord(o, best) - v)) best = list[i];
        w = best;
    } else if (o.d->constraint_type == SANE_CONSTRAINT_RANGE) {
        const SANE_Range* r = o.d->constraint.range;
        w = std::clamp(w, r->min, r->max);
        if (r->quant > 0) w = std::min(r->max, r->min + (w - r->min + r->quant / 2) / r->quant * r->quant);
    }
    sane_control_option(h, o.index, SANE_ACTION_SET_VALUE, &w, nullptr);
}

QString getString(SANE_Handle h, const char* name)
{
    const Option o = findOption(h, name);
    if (!o || o.d->type != SANE_TYPE_STRING || o.d->size <= 0) return {};
    QByteArray buf(o.d->size + 1, '\0');
    if (sane_control_option(h, o.index, SANE_ACTION_GET_VALUE, buf.data(), nullptr) != SANE_STATUS_GOOD) return {};
    return QString::fromUtf8(buf.constData());
}

void setString(SANE_Handle h, const char* name, const QString& value)
{
    const Option o = findOption(h, name);
    if (!o || o.d->type != SANE_TYPE_STRING || !SANE_OPTION_IS_SETTABLE(o.d->cap)) return;
    QByteArray buf = value.toUtf8();
    if (buf.size() >= o.d->size) return;
    buf.append(QByteArray(o.d->size - buf.size(), '\0'));
    sane_control_option(h, o.index, SANE_ACTION_SET_VALUE, buf.data(), nullptr);
}

void setBool(SANE_Handle h, const char* name, bool on)
{
    const Option o = findOption(h, name);
    if (!o || o.d->type != SANE_TYPE_BOOL || !SANE_OPTION_IS_SETTABLE(o.d->cap)) return;
    SANE_Bool b = on ? SANE_TRUE : SANE_FALSE;
    sane_control_option(h, o.index, SANE_ACTION_SET_VALUE, &b, nullptr);
}

QStringList stringList(SANE_Handle h, const char* name)
{
    QStringList list;
    const Option o = findOption(h, name);
    if (o && o.d->type == SANE_TYPE_STRING && o.d->constraint_type == SANE_CONSTRAINT_STRING_LIST)
        for (const SANE_String_Const* s = o.d->constraint.string_list; *s; ++s) list.append(QString::fromUtf8(*s));
    return list;
}

QList<double> wordList(const Option& o)
{
    QList<double> list;
    if (isNumber(o) && o.d->constraint_type == SANE_CONSTRAINT_WORD_LIST)
        for (SANE_Int i = 1; i <= o.d->constraint.word_list[0]; ++i) list.append(fromWord(o, o.d->constraint.word_list[i]));
    return list;
}

// A device without a line-art mode of its own but with a 1-bit depth scans
// line art as gray at that depth.
const QString kLineart = QStringLiteral(SANE_VALUE_SCAN_MODE_LINEART);

bool emulatesLineart(SANE_Handle h)
{
    const QStringList modes = stringList(h, SANE_NAME_SCAN_MODE);
    return !modes.contains(kLineart, Qt::CaseInsensitive) &&
           modes.contains(QStringLiteral(SANE_VALUE_SCAN_MODE_GRAY)) &&
           wordList(findOption(h, SANE_NAME_BIT_DEPTH)).contains(1);
}

QList<int> resolutionsOf(SANE_Handle h)
{
    QList<int> list;
    const Option o = findOption(h, SANE_NAME_SCAN_RESOLUTION);
    if (!isNumber(o)) return list;
    if (o.d->constraint_type == SANE_CONSTRAINT_WORD_LIST) {
        for (double v : wordList(o)) list.append(int(std::lround(v)));
    } else if (o.d->constraint_type == SANE_CONSTRAINT_RANGE) {
        // A range offers the usual steps inside it, as other scanning tools do.
        const double lo = fromWord(o, o.d->constraint.range->min), hi = fromWord(o, o.d->constraint.range->max);
        const double quant = fromWord(o, o.d->constraint.range->quant);
        for (int v : {50, 75, 100, 150, 200, 300, 400, 600, 1200, 2400, 4800})
            if (v >= lo && v <= hi && (quant <= 0 || std::fmod(v - lo, quant) < 1e-6)) list.append(v);
        if (list.isEmpty()) list = {int(std::ceil(lo)), int(std::floor(hi))};
    }
    if (const auto now = getNumber(h, SANE_NAME_SCAN_RESOLUTION)) list.append(int(std::lround(*now)));
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
    list.removeIf([](int v) { return v <= 0; });
    return list;
}

// The whole area the geometry options allow, in millimetres.
QRectF areaOf(SANE_Handle h)
{
    double edge[4];
    const char* names[4] = {SANE_NAME_SCAN_TL_X, SANE_NAME_SCAN_TL_Y, SANE_NAME_SCAN_BR_X, SANE_NAME_SCAN_BR_Y};
    for (int i = 0; i < 4; ++i) {
        const Option o = findOption(h, names[i]);
        if (!isNumber(o) || o.d->unit != SANE_UNIT_MM || o.d->constraint_type != SANE_CONSTRAINT_RANGE) return {};
        edge[i] = fromWord(o, i < 2 ? o.d->constraint.range->min : o.d->constraint.range->max);
    }
    return QRectF(QPointF(edge[0], edge[1]), QPointF(edge[2], edge[3])).normalized();
}

ScanOptions optionsOf(SANE_Handle h)
{
    ScanOptions o;
    o.modes = stringList(h, SANE_NAME_SCAN_MODE);
    o.mode = getString(h, SANE_NAME_SCAN_MODE);
    if (emulatesLineart(h)) {
        o.modes.append(kLineart);
        if (getNumber(h, SANE_NAME_BIT_DEPTH) == 1.0) o.mode = kLineart;
    }
    o.resolutions = resolutionsOf(h);
    o.resolution = int(std::lround(getNumber(h, SANE_NAME_SCAN_RESOLUTION).value_or(0)));
    o.area = areaOf(h);
    return o;
}

void closeHandle(ScannerSession::Core& core)
{
    if (!core.handle) return;
    sane_cancel(core.handle);
    sane_close(core.handle);
    core.handle = nullptr;
    releaseSane();
}

OpenResult openDevice(ScannerSession::Core& core, const QString& device)
{
    closeHandle(core);
    OpenResult r;
    if (!useSane()) {
        releaseSane();
        r.detail = QStringLiteral("SANE cannot be started.");
        return r;
    }
    SANE_Handle h = nullptr;
    const SANE_Status s = sane_open(device.toUtf8().constData(), &h);
    if (s != SANE_STATUS_GOOD || !h) {
        releaseSane();
        r.fault = s == SANE_STATUS_DEVICE_BUSY ? ScanFault::Busy : ScanFault::NotOpened;
        r.detail = statusText(s);
        return r;
    }
    core.handle = h;
    r.ok = true;
    r.options = optionsOf(h);
    return r;
}

void applyRequest(SANE_Handle h, const ScanRequest& req)
{
    setBool(h, SANE_NAME_PREVIEW, req.preview);
    if (!req.mode.isEmpty()) {
        const bool lineart = req.mode == kLineart && emulatesLineart(h);
        setString(h, SANE_NAME_SCAN_MODE, lineart ? QStringLiteral(SANE_VALUE_SCAN_MODE_GRAY) : req.mode);
        // Back from emulated line art, gray and colour want their bytes again.
        const auto depth = getNumber(h, SANE_NAME_BIT_DEPTH);
        if (lineart) setNumber(h, SANE_NAME_BIT_DEPTH, 1);
        else if (depth == 1.0 && !req.mode.contains(kLineart, Qt::CaseInsensitive))
            setNumber(h, SANE_NAME_BIT_DEPTH, 8);
    }
    if (req.resolution > 0) setNumber(h, SANE_NAME_SCAN_RESOLUTION, req.resolution);
    const QRectF whole = areaOf(h);
    if (!whole.isEmpty()) {
        QRectF a = req.area.normalized().intersected(whole);
        if (a.isEmpty()) a = whole;
        // The corner first moved out of the way, so no moment has the
        // top-left beyond the bottom-right.
        setNumber(h, SANE_NAME_SCAN_TL_X, whole.left());
        setNumber(h, SANE_NAME_SCAN_TL_Y, whole.top());
        setNumber(h, SANE_NAME_SCAN_BR_X, a.right());
        setNumber(h, SANE_NAME_SCAN_BR_Y, a.bottom());
        setNumber(h, SANE_NAME_SCAN_TL_X, a.left());
        setNumber(h, SANE_NAME_SCAN_TL_Y, a.top());
    }
}

// Puts the frames SANE sends into one picture: gray or colour in one frame,
// or colour as three frames of one channel each; 1, 8 or 16 bits a sample;
// of known height or of a height found only at the end (lines = -1).
class PictureBuilder {
public:
    bool begin(const SANE_Parameters& p, QString* error)
    {
        if (p.depth != 1 && p.depth != 8 && p.depth != 16) {
            *error = QStringLiteral("The scanner sends %1 bits a sample, which cannot be shown.").arg(p.depth);
            return false;
        }
        if (p.format > SANE_FRAME_BLUE) {
            *error = QStringLiteral("The scanner sends its picture in a form that cannot be shown.");
            return false;
        }
        const int channels = p.format == SANE_FRAME_RGB ? 3 : 1;
        const int width = p.depth == 1 ? std::min<qint64>(p.pixels_per_line, qint64(p.bytes_per_line) * 8 / channels)
                                       : std::min(p.pixels_per_line, p.bytes_per_line / (channels * p.depth / 8));
        if (width <= 0 || p.bytes_per_line <= 0) {
            *error = QStringLiteral("The scanner sends an empty picture.");
            return false;
        }
        if (!image_.isNull() && (width != image_.width() || (p.format == SANE_FRAME_GRAY) != gray_)) {
            *error = QStringLiteral("The frames of the scan do not fit together.");
            return false;
        }
        frame_ = p;
        height_ = std::max(height_, rows_);
        rows_ = 0;
        line_.clear();
        if (image_.isNull()) {
            gray_ = p.format == SANE_FRAME_GRAY;
            const QImage::Format f = gray_ ? (p.depth == 1    ? QImage::Format_Mono
                                              : p.depth == 8 ? QImage::Format_Grayscale8
                                                             : QImage::Format_Grayscale16)
                                           : (p.depth == 16 ? QImage::Format_RGBX64 : QImage::Format_RGB888);
            image_ = QImage(width, p.lines > 0 ? p.lines : 256, f);
            if (image_.isNull()) {
                *error = QStringLiteral("The picture is too large for the memory.");
                tooLarge_ = true;
                return false;
            }
            // Line art: a set bit is black.
            if (f == QImage::Format_Mono) image_.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
            image_.fill(0);
        }
        return true;
    }

    // Takes the data as it comes; lines may be split between reads.
    bool feed(const uchar* data, int length)
    {
        const int bpl = frame_.bytes_per_line;
        while (length > 0) {
            if (line_.isEmpty() && length >= bpl) {
                if (!addLine(data)) return false;
                data += bpl;
                length -= bpl;
                continue;
            }
            const int take = std::min(length, int(bpl - line_.size()));
            line_.append(reinterpret_cast<const char*>(data), take);
            data += take;
            length -= take;
            if (line_.size() == bpl) {
                if (!addLine(reinterpret_cast<const uchar*>(line_.constData()))) return false;
                line_.clear();
            }
        }
        return true;
    }

    // Share of the current frame done, 0-1; -1 while the height is unknown.
    double done() const { return frame_.lines > 0 ? double(rows_) / frame_.lines : -1; }
    bool tooLarge() const { return tooLarge_; }

    QImage result() const
    {
        const int h = std::max(height_, rows_);
        if (image_.isNull() || h == 0) return {};
        return h == image_.height() ? image_ : image_.copy(0, 0, image_.width(), h);
    }

private:
    bool addLine(const uchar* line)
    {
        if (rows_ >= image_.height()) {
            if (frame_.lines > 0) return true;  // more than announced: dropped
            image_ = image_.copy(0, 0, image_.width(), image_.height() * 2);  // adds black rows
            if (image_.isNull()) {
                tooLarge_ = true;
                return false;
            }
        }
        const int w = image_.width();
        uchar* out = image_.scanLine(rows_);
        const int depth = frame_.depth;
        if (frame_.format == SANE_FRAME_GRAY || (frame_.format == SANE_FRAME_RGB && depth != 1)) {
            // Same layout as the picture's: SANE sends 16-bit samples in the
            // machine's byte order, as QImage keeps them.
            if (depth == 16 && !gray_) {
                auto* px = reinterpret_cast<quint16*>(out);
                auto* in = reinterpret_cast<const quint16*>(line);
                for (int x = 0; x < w; ++x, px += 4, in += 3) {
                    px[0] = in[0];
                    px[1] = in[1];
                    px[2] = in[2];
                    px[3] = 0xffff;
                }
            } else {
                std::memcpy(out, line, std::min<qsizetype>(image_.bytesPerLine(), frame_.bytes_per_line));
            }
        } else {
            // One channel of three, or 1-bit colour, where a set bit is full
            // intensity.
            const int channels = frame_.format == SANE_FRAME_RGB ? 3 : 1;
            const int first = frame_.format == SANE_FRAME_RGB ? 0 : frame_.format - SANE_FRAME_RED;
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < channels; ++c) {
                    const int i = x * channels + c;
                    if (depth == 16)
                        reinterpret_cast<quint16*>(out)[x * 4 + first + c] = reinterpret_cast<const quint16*>(line)[i];
                    else if (depth == 8)
                        out[x * 3 + first + c] = line[i];
                    else
                        out[x * 3 + first + c] = (line[i >> 3] >> (7 - (i & 7))) & 1 ? 255 : 0;
                }
            if (depth == 16)
                for (int x = 0; x < w; ++x) reinterpret_cast<quint16*>(out)[x * 4 + 3] = 0xffff;
        }
        ++rows_;
        return true;
    }

    QImage image_;
    SANE_Parameters frame_{};
    bool gray_ = false;
    bool tooLarge_ = false;
    int rows_ = 0;
    int height_ = 0;  // the most rows an earlier frame had
    QByteArray line_;
};

ScanResult scanPicture(ScannerSession::Core& core, const ScanRequest& req, const std::function<void(int)>& progress)
{
    ScanResult r;
    SANE_Handle h = core.handle;
    if (!h) {
        r.fault = ScanFault::NotOpened;
        return r;
    }
    applyRequest(h, req);
    auto fail = [&](ScanFault fault, const QString& detail) {
        sane_cancel(h);
        r.fault = fault;
        r.detail = detail;
        return r;
    };
    auto cancelled = [&] {
        sane_cancel(h);
        r.kind = ScanResult::Cancelled;
        return r;
    };
    PictureBuilder picture;
    QByteArray buffer(256 * 1024, Qt::Uninitialized);
    int frame = 0, shown = -2;
    for (;;) {
        if (core.cancel) return cancelled();
        SANE_Status s = sane_start(h);
        if (s == SANE_STATUS_CANCELLED) return cancelled();
        if (s != SANE_STATUS_GOOD) return fail(faultOf(s), statusText(s));
        SANE_Parameters p;
        s = sane_get_parameters(h, &p);
        if (s != SANE_STATUS_GOOD) return fail(faultOf(s), statusText(s));
        QString error;
        if (!picture.begin(p, &error)) return fail(picture.tooLarge() ? ScanFault::TooLarge : ScanFault::Failed, error);
        // Colour in three passes counts each pass as a third.
        const int frames = p.format == SANE_FRAME_GRAY || p.format == SANE_FRAME_RGB ? 1 : 3;
        for (;;) {
            if (core.cancel) return cancelled();
            SANE_Int length = 0;
            s = sane_read(h, reinterpret_cast<SANE_Byte*>(buffer.data()), SANE_Int(buffer.size()), &length);
            if (s == SANE_STATUS_EOF) break;
            if (s == SANE_STATUS_CANCELLED) return cancelled();
            if (s != SANE_STATUS_GOOD) return fail(faultOf(s), statusText(s));
            if (!picture.feed(reinterpret_cast<const uchar*>(buffer.constData()), length))
                return fail(ScanFault::TooLarge, QStringLiteral("The picture is too large for the memory."));
            const double done = picture.done();
            const int percent = done < 0 ? -1 : int(100 * (std::min(frame, frames - 1) + done) / frames);
            if (percent != shown) progress(shown = percent);
        }
        ++frame;
        if (p.last_frame) break;
    }
    sane_cancel(h);  // the standard asks for it after every scan
    r.image = picture.result();
    if (r.image.isNull()) {
        r.detail = QStringLiteral("The scanner sent no picture.");
        return r;
    }
    r.kind = ScanResult::Done;
    return r;
}

#else  // built without SANE

QList<ScanDevice> listDevices() { return {}; }
void closeHandle(ScannerSession::Core&) {}
OpenResult openDevice(ScannerSession::Core&, const QString&)
{
    OpenResult r;
    r.detail = QStringLiteral("This program was built without SANE.");
    return r;
}
ScanResult scanPicture(ScannerSession::Core&, const ScanRequest&, const std::function<void(int)>&)
{
    return {};
}

#endif

}  // namespace

void ScannerThread::run()
{
    exec();
#ifdef JK_HAVE_SANE
    // Closes whatever is still open.
    if (gInited) sane_exit();
    gInited = false;
    gUsers = 0;
#endif
}

void findScanDevices(QObject* context, std::function<void(const QList<ScanDevice>&)> done, bool refresh)
{
    DeviceCache& c = deviceCache();
    if (!scanningAvailable()) c.devices = QList<ScanDevice>();
    if (c.devices && !refresh && !c.asking) {
        done(*c.devices);
        return;
    }
    c.waiting.append({QPointer<QObject>(context), std::move(done)});
    if (c.asking) return;
    c.asking = true;
    post([] {
        const QList<ScanDevice> devices = listDevices();
        QMetaObject::invokeMethod(qApp, [devices] { devicesArrived(devices); }, Qt::QueuedConnection);
    });
}

std::optional<QList<ScanDevice>> knownScanDevices() { return deviceCache().devices; }

// ------------------------------------------------------------ ScannerSession

ScannerSession::ScannerSession(QObject* parent) : QObject(parent), core_(std::make_shared<Core>())
{
    core_->owner = this;
}

ScannerSession::~ScannerSession()
{
    {
        QMutexLocker lock(&core_->mutex);
        core_->owner = nullptr;
    }
    if (open_ || scanning_ || !device_.isEmpty()) close();
}

void ScannerSession::open(const QString& device)
{
    ++generation_;
    device_ = device;
    open_ = scanning_ = false;
    core_->cancel = true;  // a scan still running on the device before stops
    const std::shared_ptr<Core> core = core_;
    const quint64 generation = generation_;
    post([core, device, generation] {
        const OpenResult r = openDevice(*core, device);
        core->tell([r, generation](ScannerSession* s) {
            if (s->generation_ != generation) return;
            s->open_ = r.ok;
            if (r.ok) Q_EMIT s->opened(r.options);
            else Q_EMIT s->failed(r.fault, r.detail);
        });
    });
}

void ScannerSession::scan(const ScanRequest& request)
{
    if (scanning_) return;
    if (!open_) {
        Q_EMIT failed(ScanFault::NotOpened, QString());
        return;
    }
    scanning_ = true;
    core_->cancel = false;
    const std::shared_ptr<Core> core = core_;
    const quint64 generation = generation_;
    post([core, request, generation] {
        auto progress = [&core, generation](int percent) {
            core->tell([percent, generation](ScannerSession* s) {
                if (s->generation_ == generation && s->scanning_) Q_EMIT s->progress(percent);
            });
        };
        const ScanResult r = scanPicture(*core, request, progress);
        core->tell([r, generation](ScannerSession* s) {
            if (s->generation_ != generation) return;
            s->scanning_ = false;
            if (r.kind == ScanResult::Done) Q_EMIT s->scanned(r.image);
            else if (r.kind == ScanResult::Cancelled) Q_EMIT s->cancelled();
            else Q_EMIT s->failed(r.fault, r.detail);
        });
    });
}

void ScannerSession::cancel()
{
    if (scanning_) core_->cancel = true;
}

void ScannerSession::close()
{
    ++generation_;
    open_ = scanning_ = false;
    device_.clear();
    core_->cancel = true;
    const std::shared_ptr<Core> core = core_;
    post([core] { closeHandle(*core); });
}

}  // namespace jk::platform
