#include "platform/Pictures.h"
#include <QCoreApplication>
#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QImageReader>
#include <QMutex>
#include <QMutexLocker>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtMath>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#ifndef JK_LIBEXEC_DIR
#define JK_LIBEXEC_DIR "/usr/local/libexec/jewlkit"
#endif

namespace jk::platform {

namespace {

constexpr qint64 kMb = 1024 * 1024;
constexpr char kHelperName[] = "jewlkit-imaging";

QMutex& guard()
{
    static QMutex m;
    return m;
}

PictureLimits& limitsStore()
{
    static PictureLimits l;
    return l;
}

// Files that failed, by path, size and time, with the reason: a picture that
// timed out must not cost its time limit again on every repaint.
QHash<QString, QString>& failures()
{
    static QHash<QString, QString> f;
    return f;
}

QString failureKey(const QFileInfo& info)
{
    return info.absoluteFilePath() + u'|' + QString::number(info.size()) + u'|' +
           QString::number(info.lastModified().toMSecsSinceEpoch());
}

bool setError(QString* error, const QString& why)
{
    if (error) *error = why;
    return false;
}

bool tooBig(const QSize& s, const PictureLimits& l)
{
    return s.width() > l.maxSide || s.height() > l.maxSide ||
           qint64(s.width()) * s.height() * 4 > qint64(l.allocationMb) * kMb;
}

QString tooBigText(const QSize& s)
{
    return QStringLiteral("The picture is too large (%1 × %2 pixels).").arg(s.width()).arg(s.height());
}

// ------------------------------------------------------------ recognition

// Enough for every signature below (PhotoCD's sits at 2048).
constexpr qint64 kHeadBytes = 4096;

QByteArray readHead(const QString& path, qint64 n = kHeadBytes)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return {};
    return f.read(n);
}

bool at(const QByteArray& h, qsizetype pos, const char* bytes, qsizetype n)
{
    return h.size() >= pos + n && std::memcmp(h.constData() + pos, bytes, size_t(n)) == 0;
}

uchar byteAt(const QByteArray& h, qsizetype i)
{
    return i < h.size() ? uchar(h.at(i)) : 0;
}

PictureFormat byContent(const QByteArray& h)
{
    if (at(h, 0, "%!", 2) || at(h, 0, "\xC5\xD0\xD3\xC6", 4)) return PictureFormat::Eps;
    if (at(h, 0, "\xD7\xCD\xC6\x9A", 4)) return PictureFormat::Wmf;  // placeable metafile
    // A bare metafile header: type 1 or 2, 9 words long, version 1 or 3.
    if ((byteAt(h, 0) == 1 || byteAt(h, 0) == 2) && byteAt(h, 1) == 0 && byteAt(h, 2) == 9 && byteAt(h, 3) == 0 &&
        byteAt(h, 4) == 0 && (byteAt(h, 5) == 1 || byteAt(h, 5) == 3))
        return PictureFormat::Wmf;
    if (at(h, 0, "\xFFWPC", 4)) return PictureFormat::Wpg;
    if (at(h, 0x800, "PCD_IPI", 7) || at(h, 0, "PCD_OPA", 7)) return PictureFormat::PhotoCd;
    // ZSoft header: manufacturer 10, a known version, RLE or raw, a sane depth.
    const uchar version = byteAt(h, 1), bits = byteAt(h, 3);
    if (h.size() >= 128 && byteAt(h, 0) == 0x0A && (version <= 5 && version != 1) && byteAt(h, 2) <= 1 &&
        (bits == 1 || bits == 2 || bits == 4 || bits == 8))
        return PictureFormat::Pcx;
    return PictureFormat::Unknown;
}

PictureFormat byExtension(const QString& path)
{
    const QString ext = QFileInfo(path).suffix().toLower();
    if (ext == QLatin1String("pcx")) return PictureFormat::Pcx;
    if (ext == QLatin1String("pcd")) return PictureFormat::PhotoCd;
    if (ext == QLatin1String("wmf")) return PictureFormat::Wmf;
    if (ext == QLatin1String("wpg")) return PictureFormat::Wpg;
    return PictureFormat::Qt;
}

// Whether one of Qt's readers knows the bytes, name aside.
bool qtKnows(const QByteArray& head)
{
    QBuffer buf;
    buf.setData(head);
    buf.open(QIODevice::ReadOnly);
    return !QImageReader::imageFormat(&buf).isEmpty();
}

// The bytes first (ours, then Qt's), the extension only when both say nothing.
PictureFormat recognise(const QByteArray& head, const QString& path)
{
    if (head.isEmpty()) return PictureFormat::Unknown;
    const PictureFormat f = byContent(head);
    if (f != PictureFormat::Unknown) return f;
    return qtKnows(head) ? PictureFormat::Qt : byExtension(path);
}

const char* coderName(PictureFormat f)
{
    switch (f) {
    case PictureFormat::Pcx: return "PCX";
    case PictureFormat::PhotoCd: return "PCD";
    case PictureFormat::Wmf: return "WMF";
    case PictureFormat::Wpg: return "WPG";
    default: return nullptr;
    }
}

// --------------------------------------------------------------- processes

struct RunResult {
    bool ok = false;
    QByteArray out;
    QString error;
};

// Runs a program to its end or to the time limit, whichever comes first.
// Standard output is kept up to outCap bytes (more stops the program when
// stopOnCap, else is dropped); standard error only for the message.
RunResult runLimited(const QString& program, const QStringList& args, const QProcessEnvironment& env,
                     int timeLimitMs, qint64 outCap, bool stopOnCap)
{
    RunResult r;
    QProcess p;
    p.setProcessEnvironment(env);
    p.setStandardInputFile(QProcess::nullDevice());
    p.start(program, args, QIODevice::ReadOnly);
    if (!p.waitForStarted(std::max(timeLimitMs, 1000))) {
        r.error = QStringLiteral("%1 could not be started: %2").arg(QFileInfo(program).fileName(), p.errorString());
        return r;
    }
    QByteArray err;
    QElapsedTimer clock;
    clock.start();
    bool overflow = false;
    auto drain = [&] {
        const QByteArray chunk = p.readAllStandardOutput();
        if (r.out.size() + chunk.size() <= outCap) r.out += chunk;
        else overflow = true;
        const QByteArray e = p.readAllStandardError();
        if (err.size() < 4096) err += e.left(4096 - err.size());
    };
    while (p.state() != QProcess::NotRunning) {
        const qint64 left = timeLimitMs - clock.elapsed();
        if (left <= 0 || (overflow && stopOnCap)) {
            p.kill();
            p.waitForFinished(5000);
            r.error = overflow && stopOnCap
                          ? QStringLiteral("The picture decoder gave more data than allowed.")
                          : QStringLiteral("Decoding took longer than %1 s and was stopped.").arg(timeLimitMs / 1000.0);
            return r;
        }
        p.waitForFinished(int(std::min<qint64>(left, 200)));
        drain();
    }
    drain();
    if (overflow && stopOnCap) {
        r.error = QStringLiteral("The picture decoder gave more data than allowed.");
        return r;
    }
    if (p.exitStatus() != QProcess::NormalExit) {
        r.error = QStringLiteral("The picture decoder failed on this file.");
        return r;
    }
    if (p.exitCode() != 0) {
        const QStringList lines = QString::fromLocal8Bit(err).split(u'\n', Qt::SkipEmptyParts);
        r.error = lines.isEmpty() ? QStringLiteral("The picture could not be read (exit code %1).").arg(p.exitCode())
                                  : lines.first().trimmed();
        return r;
    }
    r.ok = true;
    return r;
}

// Beside the program (a build tree), else where it is installed. Found once,
// whichever thread asks first.
QString helperProgram()
{
    static const QString program = [] {
        if (QCoreApplication::instance()) {
            const QString beside = QCoreApplication::applicationDirPath() + u'/' + QLatin1String(kHelperName);
            if (QFileInfo(beside).isExecutable()) return beside;
        }
        return QStringLiteral(JK_LIBEXEC_DIR "/") + QLatin1String(kHelperName);
    }();
    return program;
}

// ---------------------------------------------------------------- decoders

QImage readWithQt(const QString& path, const PictureLimits& l, QString* error)
{
    QImageReader r(path);
    r.setDecideFormatFromContent(true);
    r.setAutoTransform(true);
    r.setAllocationLimit(l.allocationMb);
    // The header's claim is checked before a single pixel is decoded.
    const QSize claimed = r.size();
    if (claimed.isValid() && tooBig(claimed, l)) {
        setError(error, tooBigText(claimed));
        return {};
    }
    QImage img = r.read();
    if (img.isNull()) {
        setError(error, QStringLiteral("The picture could not be read: %1").arg(r.errorString()));
        return {};
    }
    if (tooBig(img.size(), l)) {
        setError(error, tooBigText(img.size()));
        return {};
    }
    return img;
}

// Runs the ImageMagick helper; with ping only the size is asked for.
std::optional<QSize> runHelper(PictureFormat f, const QString& path, const PictureLimits& l, bool ping, QImage* out,
                               QString* error)
{
    const QTemporaryDir scratch(QDir::tempPath() + QStringLiteral("/jewlkit-XXXXXX"));
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    if (scratch.isValid()) env.insert(QStringLiteral("MAGICK_TMPDIR"), scratch.path());
    QStringList args;
    if (ping) args << QStringLiteral("--ping");
    args << QStringLiteral("--format") << QLatin1String(coderName(f)) << QStringLiteral("--dpi")
         << QString::number(l.vectorDpi) << QStringLiteral("--max-mb") << QString::number(l.allocationMb)
         << QStringLiteral("--max-side") << QString::number(l.maxSide) << QStringLiteral("--seconds")
         << QString::number(std::max(1, (l.timeLimitMs + 999) / 1000)) << QFileInfo(path).absoluteFilePath();
    const qint64 cap = qint64(l.allocationMb) * kMb + 64;
    const RunResult r = runLimited(helperProgram(), args, env, l.timeLimitMs, cap, true);
    if (!r.ok) {
        setError(error, r.error);
        return std::nullopt;
    }
    const qsizetype eol = r.out.indexOf('\n');
    const QList<QByteArray> head = r.out.left(std::max<qsizetype>(eol, 0)).split(' ');
    if (eol < 0 || head.size() != 4 || head.at(0) != "JKIMG") {
        setError(error, QStringLiteral("The picture decoder gave no picture."));
        return std::nullopt;
    }
    const QSize size(head.at(1).toInt(), head.at(2).toInt());
    if (size.isEmpty() || tooBig(size, l)) {
        setError(error, size.isEmpty() ? QStringLiteral("The picture is empty.") : tooBigText(size));
        return std::nullopt;
    }
    if (ping) return size;
    const qint64 bytes = qint64(size.width()) * size.height() * 4;
    if (r.out.size() - eol - 1 != bytes) {
        setError(error, QStringLiteral("The picture decoder gave a truncated picture."));
        return std::nullopt;
    }
    const QImage rgba(reinterpret_cast<const uchar*>(r.out.constData() + eol + 1), size.width(), size.height(),
                      size.width() * 4, QImage::Format_RGBA8888);
    *out = rgba.convertToFormat(head.at(3) == "1" ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    return size;
}

// The EPS bounding box in points, from the header comments (also inside a
// DOS EPS binary, whose PostScript starts at the offset its header gives).
std::optional<QRectF> epsBoundingBox(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return std::nullopt;
    QByteArray h = f.read(8);
    if (h.startsWith("\xC5\xD0\xD3\xC6") && h.size() == 8) {
        const quint32 off = quint32(uchar(h[4])) | quint32(uchar(h[5])) << 8 | quint32(uchar(h[6])) << 16 |
                            quint32(uchar(h[7])) << 24;
        if (!f.seek(off)) return std::nullopt;
    } else {
        f.seek(0);
    }
    // The box belongs to the header comments, well inside the first 64 KB.
    const QByteArray text = f.read(64 * 1024);
    for (const QByteArray& raw : text.split('\n')) {
        const QByteArray line = raw.trimmed();
        if (!line.startsWith("%%BoundingBox:")) continue;
        const QList<QByteArray> v = line.mid(14).simplified().split(' ');
        if (v.size() != 4) continue;  // "(atend)"
        bool ok[4];
        const double llx = v[0].toDouble(&ok[0]), lly = v[1].toDouble(&ok[1]);
        const double urx = v[2].toDouble(&ok[2]), ury = v[3].toDouble(&ok[3]);
        if (!(ok[0] && ok[1] && ok[2] && ok[3]) || urx <= llx || ury <= lly) return std::nullopt;
        return QRectF(QPointF(llx, lly), QPointF(urx, ury));
    }
    return std::nullopt;
}

// The resolution that keeps the EPS within the limits, 0 when even one dot
// per inch is too much.
double epsDpi(const QRectF& box, const PictureLimits& l)
{
    double dpi = l.vectorDpi;
    const double w = box.width() * dpi / 72, h = box.height() * dpi / 72;
    const double shrink = std::min({1.0, l.maxSide / w, l.maxSide / h,
                                    std::sqrt(double(l.allocationMb) * kMb / 4 / (w * h))});
    if (shrink < 1) dpi *= shrink * 0.999;  // a hair under, so rounding cannot tip it over
    return dpi >= 1 ? dpi : 0;
}

QSize epsPixels(const QRectF& box, double dpi)
{
    return QSize(qRound(box.width() * dpi / 72), qRound(box.height() * dpi / 72));
}

QImage readEps(const QString& path, const PictureLimits& l, QString* error)
{
    const QString gs = QStandardPaths::findExecutable(QStringLiteral("gs"));
    if (gs.isEmpty()) {
        setError(error, QStringLiteral("Ghostscript (gs) is not installed: EPS pictures cannot be shown."));
        return {};
    }
    double dpi = l.vectorDpi;
    if (const auto box = epsBoundingBox(path)) {
        dpi = epsDpi(*box, l);
        if (dpi <= 0) {
            setError(error, tooBigText(epsPixels(*box, l.vectorDpi)));
            return {};
        }
    }
    const QTemporaryDir scratch(QDir::tempPath() + QStringLiteral("/jewlkit-XXXXXX"));
    if (!scratch.isValid()) {
        setError(error, QStringLiteral("No temporary folder for the EPS picture: %1").arg(scratch.errorString()));
        return {};
    }
    QString output = scratch.filePath(QStringLiteral("page.png"));
    output.replace(u'%', QStringLiteral("%%"));  // gs reads %d and friends in file names
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("GS_OPTIONS"));  // could carry -dNOSAFER
    env.insert(QStringLiteral("TMPDIR"), scratch.path());
    const QStringList args = {QStringLiteral("-q"),
                              QStringLiteral("-dSAFER"),
                              QStringLiteral("-dBATCH"),
                              QStringLiteral("-dNOPAUSE"),
                              QStringLiteral("-dEPSCrop"),
                              QStringLiteral("-dFirstPage=1"),
                              QStringLiteral("-dLastPage=1"),
                              QStringLiteral("-dTextAlphaBits=4"),
                              QStringLiteral("-dGraphicsAlphaBits=4"),
                              QStringLiteral("-sDEVICE=png16m"),
                              QStringLiteral("-r%1").arg(dpi, 0, 'f', 3),
                              QStringLiteral("-sOutputFile=") + output,
                              QStringLiteral("-f"),
                              QFileInfo(path).absoluteFilePath()};
    const RunResult r = runLimited(gs, args, env, l.timeLimitMs, 64 * 1024, false);
    if (!r.ok) {
        setError(error, r.error.startsWith(QLatin1String("Decoding took"))
                            ? r.error
                            : QStringLiteral("Ghostscript could not draw the EPS file."));
        return {};
    }
    const QString png = scratch.filePath(QStringLiteral("page.png"));
    if (!QFileInfo(png).isFile()) {
        setError(error, QStringLiteral("Ghostscript drew no page from the EPS file."));
        return {};
    }
    QImage img = readWithQt(png, l, error);
    if (img.isNull()) return {};
    const int dpm = qRound(dpi / 0.0254);
    img.setDotsPerMeterX(dpm);
    img.setDotsPerMeterY(dpm);
    return img;
}

}  // namespace

PictureFormat pictureFormat(const QString& path)
{
    return recognise(readHead(path), path);
}

PictureLimits pictureLimits()
{
    const QMutexLocker lock(&guard());
    return limitsStore();
}

void setPictureLimits(const PictureLimits& limits)
{
    const QMutexLocker lock(&guard());
    limitsStore() = limits;
}

void forgetFailedPictures()
{
    const QMutexLocker lock(&guard());
    failures().clear();
}

QImage loadPicture(const QString& path, QString* error)
{
    const QFileInfo info(path);
    if (path.isEmpty() || !info.isFile()) {
        setError(error, QStringLiteral("The picture file does not exist: %1").arg(path));
        return {};
    }
    if (info.size() == 0) {
        setError(error, QStringLiteral("The picture file is empty."));
        return {};
    }
    const PictureLimits l = pictureLimits();
    if (info.size() > l.maxFileMb * kMb) {
        setError(error, QStringLiteral("The picture file is too large (%1 MB).").arg(info.size() / kMb));
        return {};
    }
    const QString key = failureKey(info);
    {
        const QMutexLocker lock(&guard());
        const auto it = failures().constFind(key);
        if (it != failures().cend()) {
            setError(error, it.value());
            return {};
        }
    }

    QString why;
    QImage img;
    const PictureFormat f = recognise(readHead(path), path);
    switch (f) {
    case PictureFormat::Unknown: why = QStringLiteral("The picture file cannot be read."); break;
    case PictureFormat::Qt:
        img = readWithQt(path, l, &why);
        // A reader of Qt's claimed the bytes but failed: a file that carries a
        // Magick extension still gets its chance there.
        if (img.isNull() && coderName(byExtension(path))) {
            QString magickWhy;
            runHelper(byExtension(path), path, l, false, &img, &magickWhy);
        }
        break;
    case PictureFormat::Eps: img = readEps(path, l, &why); break;
    case PictureFormat::Pcx:
    case PictureFormat::PhotoCd:
    case PictureFormat::Wmf:
    case PictureFormat::Wpg:
        runHelper(f, path, l, false, &img, &why);
        if (!img.isNull() && f == PictureFormat::Wmf) {
            const int dpm = qRound(l.vectorDpi / 0.0254);
            img.setDotsPerMeterX(dpm);
            img.setDotsPerMeterY(dpm);
        }
        break;
    }
    if (img.isNull()) {
        if (why.isEmpty()) why = QStringLiteral("The picture file cannot be read.");
        const QMutexLocker lock(&guard());
        if (failures().size() > 1000) failures().clear();
        failures().insert(key, why);
        setError(error, why);
    }
    return img;
}

QSize pictureSize(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isFile() || info.size() == 0) return {};
    {
        const QMutexLocker lock(&guard());
        if (failures().contains(failureKey(info))) return {};
    }
    const PictureLimits l = pictureLimits();
    const QByteArray head = readHead(path);
    switch (recognise(head, path)) {
    case PictureFormat::Unknown: return {};
    case PictureFormat::Qt: {
        QImageReader r(path);
        r.setDecideFormatFromContent(true);
        QSize s = r.size();
        if (!s.isValid()) break;
        if (r.transformation() & QImageIOHandler::TransformationRotate90) s.transpose();
        return tooBig(s, l) ? QSize() : s;
    }
    case PictureFormat::Eps:
        if (const auto box = epsBoundingBox(path)) {
            const double dpi = epsDpi(*box, l);
            return dpi > 0 ? epsPixels(*box, dpi) : QSize();
        }
        break;
    case PictureFormat::Pcx:
        if (byContent(head) == PictureFormat::Pcx) {
            auto word = [&](int i) { return int(byteAt(head, i)) | int(byteAt(head, i + 1)) << 8; };
            const QSize s(word(8) - word(4) + 1, word(10) - word(6) + 1);
            if (!s.isEmpty() && !tooBig(s, l)) return s;
            return {};
        }
        [[fallthrough]];
    case PictureFormat::PhotoCd:
    case PictureFormat::Wmf:
    case PictureFormat::Wpg: {
        if (const auto s = runHelper(recognise(head, path), path, l, true, nullptr, nullptr)) return *s;
        return {};
    }
    }
    return loadPicture(path).size();
}

}  // namespace jk::platform
