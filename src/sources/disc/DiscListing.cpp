#include "sources/disc/DiscListing.h"
#include "platform/MciCdAudio.h"
#include "platform/Volumes.h"
#include "sources/disc/CdPlayerDatabase.h"
#include "sources/disc/DiscId.h"
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>
#include <algorithm>

namespace jk::sources {

using namespace jk::platform;

namespace {

constexpr int kNameColumn = 23;  // names are padded to here, sizes end here
constexpr int kTrackFileSize = 44;

const QString kLineEnd = QStringLiteral("\r\n");

QString spaces(qsizetype n) { return QString(qMax<qsizetype>(0, n), u' '); }

bool byName(const QString& a, const QString& b)
{
    const int c = QString::compare(a, b, Qt::CaseInsensitive);
    return c != 0 ? c < 0 : a < b;
}

// name, then the size column ending in column 23 and " Bytes".
QString withSize(const QString& name, qint64 size)
{
    const QString sizeText = u' ' + QString::number(size);
    return name + spaces(13 - name.size() + 10 - sizeText.size()) + sizeText + QStringLiteral(" Bytes");
}

Listing failed(Listing::Outcome outcome, const QString& message)
{
    Listing l;
    l.outcome = outcome;
    l.message = message;
    return l;
}

// A title stored from an earlier listing may still carry that listing's
// size and time columns; they are added again when it is shown.
QString bareTitle(const QString& stored)
{
    static const QRegularExpression columns(QStringLiteral("(\\s+\\d+ Bytes)?(\\s{2,}\\d\\d:\\d\\d)?\\s*$"));
    return QString(stored).remove(columns);
}

}  // namespace

QString dateTimeText(const QDateTime& stamp)
{
    // The 12-hour clock shows midnight as 12:00:00 AM, the form wanted for
    // a stamp without a time of day.
    return QLocale::c().toString(stamp, QStringLiteral("dd/MM/yy hh:mm:ss AP"));
}

Listing listFolder(const QString& folder, const ListingOptions& options, const QString& mountPoint)
{
    const QDir dir(folder);
    const QDir::Filters which = options.folders ? QDir::Dirs | QDir::NoDotAndDotDot : QDir::Files;
    struct Entry {
        QString name;
        QFileInfo info;
    };
    QList<Entry> entries;
    for (const QFileInfo& e : dir.entryInfoList(which, QDir::NoSort)) entries.append({e.fileName(), e});
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return byName(a.name, b.name); });

    const QDir root(mountPoint.isEmpty() ? mountPointOf(dir.absolutePath()) : mountPoint);
    Listing l;
    QString& text = l.text;
    text.reserve(entries.size() * 64);
    for (const auto& [fileName, e] : entries) {
        const QDateTime stamp = options.dates ? e.lastModified() : QDateTime();
        if (options.dates && !stamp.isValid()) continue;  // vanished since it was listed
        if (options.folders) {
            const QString name = root.relativeFilePath(e.absoluteFilePath());
            text += name;
            if (options.dates) text += spaces(kNameColumn - name.size()) + dateTimeText(stamp);
        } else {
            text += options.sizes ? withSize(fileName, e.size()) : fileName;
            if (options.dates) text += QStringLiteral("  ") + dateTimeText(stamp);
        }
        text += kLineEnd;
    }
    return l;
}

std::optional<AudioDisc> readAudioDisc(const QString& source, const CdPlayerDatabase* db, Listing* failure)
{
    CdRead read = readCd(source);
    Listing why;
    if (read.status == CdStatus::NoDisc) why = failed(Listing::NoDisc, read.error);
    else if (read.status == CdStatus::Unreadable) why = failed(Listing::Failed, read.error);
    else if (!read.disc.isAudio()) why = failed(Listing::Failed, QStringLiteral("The disc in %1 holds no audio tracks.").arg(source));
    if (why.outcome != Listing::Text) {
        if (failure) *failure = why;
        return std::nullopt;
    }

    AudioDisc d;
    d.source = source;
    d.toc = std::move(read.disc);
    d.id = discIdentifier(d.toc);
    const std::optional<CdPlayerDatabase::Disc> stored = db ? db->find(d.id) : std::nullopt;
    d.artist = stored && !stored->artist.isEmpty() ? stored->artist : d.toc.performer;
    d.title = stored && !stored->title.isEmpty() ? stored->title : d.toc.title;
    for (const CdTrack& t : d.toc.tracks) {
        if (!t.audio) continue;
        d.fileNames << QStringLiteral("Track%1.cda").arg(t.number, 2, 10, QLatin1Char('0'));
        d.trackNumbers << t.number;
        // Entry k of the database is the k-th line of the listing.
        const QString known = stored ? bareTitle(stored->titles.value(d.titles.size())).trimmed() : QString();
        d.titles << (known.isEmpty() ? t.title : known);
    }
    return d;
}

Listing listAudioDisc(const AudioDisc& disc, const ListingOptions& options)
{
    if (disc.toc.tracks.size() == 1) return failed(Listing::Unchanged, QString());

    MciCdAudio cd(disc.source);
    QString reply;
    if (const int e = cd.send(QStringLiteral("open cdaudio alias cd wait shareable")))
        return failed(Listing::NoDisc, MciCdAudio::errorText(e));
    cd.send(QStringLiteral("set cd time format tmsf wait"));

    Listing l;
    l.audio = true;
    for (int i = 0; i < disc.fileNames.size(); ++i) {
        const QString title = disc.titles.value(i);
        const QString name = title.isEmpty() ? disc.fileNames.at(i) : title;
        QString line = options.sizes ? withSize(name, kTrackFileSize) : name;
        if (options.dates) {
            // Move to the entry's track, then read its length where the
            // position says we are, as the track list always did.
            cd.send(QStringLiteral("seek cd to 1"));
            cd.send(QStringLiteral("play cd from %1").arg(disc.trackNumbers.at(i)));
            if (cd.send(QStringLiteral("status cd media present"), &reply) || reply != QLatin1String("true"))
                return failed(Listing::NoDisc, QStringLiteral("The disc was taken out of %1.").arg(disc.source));
            cd.send(QStringLiteral("status cd number of tracks wait"), &reply);
            if (reply.left(2).trimmed().toInt() == 1) return failed(Listing::Unchanged, QString());
            cd.send(QStringLiteral("status cd position"), &reply);
            const int current = reply.left(2).toInt();
            cd.send(QStringLiteral("status cd length track %1").arg(current), &reply);
            line += spaces(options.sizes ? 40 - line.size() : 10) + reply.left(5);
        }
        l.text += line + kLineEnd;
    }
    cd.send(QStringLiteral("status cd length wait"), &reply);
    cd.send(QStringLiteral("seek cd to 1"));
    cd.send(QStringLiteral("close all"));
    return l;
}

Listing listSource(const QString& source, const ListingOptions& options, const CdPlayerDatabase* db)
{
    const QFileInfo info(source);
    if (info.isDir()) return listFolder(info.absoluteFilePath(), options);
    if (isDevicePath(source)) {
        // A mounted data disc is listed like any folder.
        for (const MountedVolume& v : mountedVolumes())
            if (v.device == source || QFileInfo(v.device).canonicalFilePath() == info.canonicalFilePath())
                return listFolder(v.root, options, v.root);
    } else if (!info.exists()) {
        return failed(Listing::Failed, QStringLiteral("%1 does not exist.").arg(source));
    } else if (!isDiscImageName(source)) {
        return failed(Listing::Failed, QStringLiteral("%1 is not a folder, a drive or a disc image.").arg(source));
    }
    Listing why;
    const std::optional<AudioDisc> disc = readAudioDisc(source, db, &why);
    return disc ? listAudioDisc(*disc, options) : why;
}

QList<ScanDrive> scanDrives()
{
    const QStringList optical = opticalDrives();
    QList<ScanDrive> out;
    QList<ScanDrive> drives;
    for (const QString& dev : optical) drives.append({ScanDrive::OpticalDrive, dev, QString(), QString()});
    for (const MountedVolume& v : mountedVolumes()) {
        const QString dev = QFileInfo(v.device).canonicalFilePath();
        auto it = std::find_if(drives.begin(), drives.end(), [&](const ScanDrive& d) {
            return d.path == v.device || (!dev.isEmpty() && QFileInfo(d.path).canonicalFilePath() == dev);
        });
        if (it != drives.end()) {
            it->mountPoint = v.root;
            it->label = v.label;
        } else {
            out.append({ScanDrive::Volume, v.root, QString(), v.label});
        }
    }
    out += drives;
    out.append({ScanDrive::DiscImage, QString(), QString(), QStringLiteral("Disc image…")});
    return out;
}

QString discImageFilter()
{
    return QStringLiteral("Disc images (*.cue *.bin *.toc *.nrg *.iso)");
}

}  // namespace jk::sources
