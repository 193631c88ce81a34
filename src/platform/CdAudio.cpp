#include "platform/CdAudio.h"
#include <QDir>
#include <QFileInfo>
#include <cdio/cdio.h>
#include <cdio/cdtext.h>
#include <cdio/logging.h>
#include <sys/stat.h>
#include <mutex>

namespace jk::platform {

namespace {

// libcdio reports through a global log handler that prints to stderr by
// default; keep its last complaint per thread for our own messages instead.
thread_local QString lastLibcdioMessage;

void logHandler(cdio_log_level_t level, const char* message)
{
    if (level >= CDIO_LOG_WARN && message) lastLibcdioMessage = QString::fromLocal8Bit(message).trimmed();
}

void quietLibcdio()
{
    static std::once_flag once;
    std::call_once(once, [] { cdio_log_set_handler(logHandler); });
    lastLibcdioMessage.clear();
}

QString suffixOf(const QString& path) { return QFileInfo(path).suffix().toLower(); }

// libcdio's cdrdao driver looks for the data files a .toc names in the
// current folder, not beside the .toc: read it from its own folder.
struct WorkingFolder {
    QString saved;
    explicit WorkingFolder(const QString& dir)
    {
        if (dir.isEmpty()) return;
        saved = QDir::currentPath();
        if (!QDir::setCurrent(dir)) saved.clear();
    }
    ~WorkingFolder()
    {
        if (!saved.isEmpty()) QDir::setCurrent(saved);
    }
};

struct Handle {
    CdIo_t* p = nullptr;
    ~Handle()
    {
        if (p) cdio_destroy(p);
    }
};

CdRead fail(CdStatus status, const QString& error)
{
    CdRead r;
    r.status = status;
    r.error = error;
    return r;
}

QString withDetail(const QString& text)
{
    return lastLibcdioMessage.isEmpty() ? text : text + QStringLiteral(" (") + lastLibcdioMessage + u')';
}

// A plain ISO image is one data track of 2048-byte sectors; libcdio has no
// driver for it, and none is needed to know that much.
CdRead readIso(const QString& path)
{
    const qint64 sectors = QFileInfo(path).size() / 2048;
    if (sectors <= 0) return fail(CdStatus::Unreadable, QStringLiteral("The disc image %1 is empty.").arg(path));
    CdRead r;
    r.status = CdStatus::Ok;
    r.disc.tracks.append({1, kPregapFrames, false, QString()});
    r.disc.leadOutLba = int(qMin<qint64>(sectors, 100 * kFramesPerMinute)) + kPregapFrames;
    return r;
}

}  // namespace

int CdDisc::audioTrackCount() const
{
    int n = 0;
    for (const CdTrack& t : tracks) n += t.audio ? 1 : 0;
    return n;
}

bool isDiscImageName(const QString& path)
{
    static const QStringList kImages = {"cue", "bin", "toc", "nrg", "iso"};
    return kImages.contains(suffixOf(path));
}

bool isDevicePath(const QString& path)
{
    struct stat st {};
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 && S_ISBLK(st.st_mode);
}

CdRead readCd(const QString& source)
{
    quietLibcdio();
    const QFileInfo info(source);
    driver_id_t driver = DRIVER_DEVICE;
    if (!isDevicePath(source)) {
        if (!info.exists()) return fail(CdStatus::NoDisc, QStringLiteral("There is no disc in %1.").arg(source));
        // A FIFO or a folder would make libcdio block or misread.
        if (!info.isFile() || !isDiscImageName(source))
            return fail(CdStatus::Unreadable, QStringLiteral("%1 is neither a drive nor a disc image.").arg(source));
        const QString suffix = suffixOf(source);
        if (suffix == QLatin1String("iso")) return readIso(source);
        if (suffix == QLatin1String("cue")) {
            // The BIN/CUE driver reads the data file named like the cue.
            const QString bin = info.path() + u'/' + info.completeBaseName() + QStringLiteral(".bin");
            if (!QFileInfo(bin).isFile())
                return fail(CdStatus::Unreadable, QStringLiteral("The data file %1 of the disc image is missing.").arg(bin));
        }
        driver = suffix == QLatin1String("toc") ? DRIVER_CDRDAO
                 : suffix == QLatin1String("nrg") ? DRIVER_NRG
                                                  : DRIVER_BINCUE;
    }

    const WorkingFolder folder(driver == DRIVER_CDRDAO ? info.absolutePath() : QString());
    Handle h;
    h.p = cdio_open(QFile::encodeName(source).constData(), driver);
    if (!h.p) {
        if (driver == DRIVER_DEVICE) return fail(CdStatus::NoDisc, withDetail(QStringLiteral("The drive %1 cannot be opened.").arg(source)));
        return fail(CdStatus::Unreadable, withDetail(QStringLiteral("The disc image %1 cannot be read.").arg(source)));
    }

    const track_t first = cdio_get_first_track_num(h.p);
    const track_t count = cdio_get_num_tracks(h.p);
    if (first == CDIO_INVALID_TRACK || count == CDIO_INVALID_TRACK || count == 0) {
        if (driver == DRIVER_DEVICE) return fail(CdStatus::NoDisc, QStringLiteral("There is no disc in %1.").arg(source));
        return fail(CdStatus::Unreadable, withDetail(QStringLiteral("The disc image %1 has no tracks.").arg(source)));
    }
    if (first < 1 || first + count - 1 > 99)
        return fail(CdStatus::Unreadable, QStringLiteral("The table of contents of %1 is damaged.").arg(source));

    CdRead r;
    CdDisc& d = r.disc;
    for (int n = first; n < first + count; ++n) {
        CdTrack t;
        t.number = n;
        t.lba = cdio_get_track_lba(h.p, track_t(n));
        t.audio = cdio_get_track_format(h.p, track_t(n)) == TRACK_FORMAT_AUDIO;
        if (t.lba == CDIO_INVALID_LBA || (!d.tracks.isEmpty() && t.lba <= d.tracks.last().lba))
            return fail(CdStatus::Unreadable, QStringLiteral("The table of contents of %1 is damaged.").arg(source));
        d.tracks.append(t);
    }
    d.leadOutLba = cdio_get_track_lba(h.p, CDIO_CDROM_LEADOUT_TRACK);
    // An empty or cut BIN puts the lead-out before the tracks it should follow.
    if (d.leadOutLba == CDIO_INVALID_LBA || d.leadOutLba <= d.tracks.last().lba)
        return fail(CdStatus::Unreadable, QStringLiteral("The disc %1 ends before its last track: its data is missing or cut short.").arg(source));

    if (cdtext_t* text = cdio_get_cdtext(h.p)) {  // owned by the handle
        auto field = [text](cdtext_field_t f, int track) {
            const char* s = cdtext_get_const(text, f, track_t(track));
            return s ? QString::fromUtf8(s).trimmed() : QString();
        };
        d.title = field(CDTEXT_FIELD_TITLE, 0);
        d.performer = field(CDTEXT_FIELD_PERFORMER, 0);
        d.hasCdText = !d.title.isEmpty() || !d.performer.isEmpty();
        for (CdTrack& t : d.tracks) {
            t.title = field(CDTEXT_FIELD_TITLE, t.number);
            d.hasCdText = d.hasCdText || !t.title.isEmpty();
        }
    }
    r.status = CdStatus::Ok;
    return r;
}

QStringList opticalDrives()
{
    quietLibcdio();
    QStringList out;
    if (char** list = cdio_get_devices(DRIVER_DEVICE)) {
        for (char** p = list; *p; ++p) out << QFile::decodeName(*p);
        cdio_free_device_list(list);
    }
    return out;
}

QString msfText(int frames)
{
    frames = qMax(0, frames);
    return QStringLiteral("%1:%2:%3")
        .arg(frames / kFramesPerMinute, 2, 10, QLatin1Char('0'))
        .arg(frames / kFramesPerSecond % 60, 2, 10, QLatin1Char('0'))
        .arg(frames % kFramesPerSecond, 2, 10, QLatin1Char('0'));
}

}  // namespace jk::platform
