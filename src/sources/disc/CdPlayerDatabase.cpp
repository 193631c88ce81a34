#include "sources/disc/CdPlayerDatabase.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>

namespace jk::sources {

namespace {

bool isUtf8(const QByteArray& bytes)
{
    QStringDecoder dec(QStringDecoder::Utf8);
    (void)dec.decode(bytes);
    return !dec.hasError();
}

QString decode(const QByteArray& bytes)
{
    return isUtf8(bytes) ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
}

// The header's name when the line is "[name]", else nothing.
std::optional<QString> sectionOf(const QByteArray& line)
{
    const QByteArray t = line.trimmed();
    if (t.size() < 2 || !t.startsWith('[') || !t.endsWith(']')) return std::nullopt;
    return decode(t.mid(1, t.size() - 2)).trimmed();
}

// Lines with their ends kept, so untouched lines are written back as read.
QList<QByteArray> splitKeepingEnds(const QByteArray& data)
{
    QList<QByteArray> lines;
    qsizetype start = 0;
    while (start < data.size()) {
        qsizetype nl = data.indexOf('\n', start);
        if (nl < 0) nl = data.size() - 1;
        lines.append(data.mid(start, nl - start + 1));
        start = nl + 1;
    }
    return lines;
}

}  // namespace

CdPlayerDatabase::CdPlayerDatabase(QString path) : path_(std::move(path)) {}

QString CdPlayerDatabase::sectionName(const QString& discId)
{
    QString s = discId.trimmed();
    qsizetype zeros = 0;
    while (zeros < s.size() && s.at(zeros) == u'0') ++zeros;
    return s.mid(zeros).remove(u'-');
}

QStringList CdPlayerDatabase::titlesFromText(const QString& text)
{
    QStringList lines = QString(text).remove(u'\n').split(u'\r');
    lines.removeLast();  // what follows the last carriage return
    return lines;
}

std::optional<QByteArray> CdPlayerDatabase::readRaw(QString* error) const
{
    auto refuse = [&](const QString& why) {
        if (error) *error = QStringLiteral("The CD player database %1 %2; it is left as it is.").arg(path_, why);
        return std::nullopt;
    };
    const QFileInfo info(path_);
    if (!info.exists() && !info.isSymLink()) return QByteArray();
    if (!info.isFile()) return refuse(QStringLiteral("is not a file"));
    if (info.size() > kMaxBytes) return refuse(QStringLiteral("is too large"));
    QFile f(path_);
    if (!f.open(QIODevice::ReadOnly)) return refuse(QStringLiteral("cannot be read"));
    QByteArray data = f.read(kMaxBytes + 1);
    if (f.error() != QFileDevice::NoError) return refuse(QStringLiteral("cannot be read"));
    if (data.size() > kMaxBytes) return refuse(QStringLiteral("is too large"));
    if (data.contains('\0')) return refuse(QStringLiteral("is not a text file"));
    return data;
}

bool CdPlayerDatabase::load(QString* error)
{
    std::optional<QByteArray> raw = readRaw(error);
    data_ = raw.value_or(QByteArray());
    return raw.has_value();
}

std::optional<CdPlayerDatabase::Disc> CdPlayerDatabase::find(const QString& discId) const
{
    const QString name = sectionName(discId);
    std::optional<Disc> found;
    bool inside = false;
    for (const QByteArray& raw : splitKeepingEnds(data_)) {
        if (std::optional<QString> s = sectionOf(raw)) {
            if (found && inside) break;  // the first section of that name wins
            inside = s->compare(name, Qt::CaseInsensitive) == 0;
            if (inside) found = Disc();
            continue;
        }
        if (!inside) continue;
        const QString line = decode(raw).remove(u'\r').remove(u'\n');
        const qsizetype eq = line.indexOf(u'=');
        if (eq <= 0) continue;
        const QString key = line.left(eq).trimmed(), value = line.mid(eq + 1);
        bool isTrack = false;
        const int k = key.toInt(&isTrack);
        if (isTrack && k >= 0 && k < 99) {
            while (found->titles.size() <= k) found->titles.append(QString());
            found->titles[k] = value;
        } else if (key.compare(QLatin1String("artist"), Qt::CaseInsensitive) == 0) {
            found->artist = value;
        } else if (key.compare(QLatin1String("title"), Qt::CaseInsensitive) == 0) {
            found->title = value;
        }
    }
    return found;
}

bool CdPlayerDatabase::store(const QString& discId, const Disc& disc, int trackCount, QString* error)
{
    if (trackCount < 2) return true;
    // Read again: the file may have changed since load(), and an unusable
    // one must not be replaced by what little we know.
    std::optional<QByteArray> raw = readRaw(error);
    if (!raw) return false;

    const QString name = sectionName(discId);
    QString block = u'[' + name + QStringLiteral("]\r\n");
    block += QStringLiteral("Artist=") + disc.artist + QStringLiteral("\r\n");
    block += QStringLiteral("Title=") + disc.title + QStringLiteral("\r\n");
    block += QStringLiteral("numtracks=%1\r\n").arg(trackCount);
    QString order;
    for (int k = 0; k < trackCount; ++k) {
        block += QStringLiteral("%1=").arg(k) + disc.titles.value(k) + QStringLiteral("\r\n");
        order += QString::number(k) + u' ';
    }
    block += QStringLiteral("order=") + order + QStringLiteral("\r\n");
    block += QStringLiteral("numplay=%1\r\n").arg(trackCount);
    // Keep the file in one encoding: an old Latin-1 database stays Latin-1
    // when the new text allows it.
    const bool latin1 = !isUtf8(*raw) && QString::fromLatin1(block.toLatin1()) == block;
    const QByteArray bytes = latin1 ? block.toLatin1() : block.toUtf8();

    QByteArray out;
    bool placed = false, skipping = false;
    for (const QByteArray& line : splitKeepingEnds(*raw)) {
        if (std::optional<QString> s = sectionOf(line)) {
            skipping = s->compare(name, Qt::CaseInsensitive) == 0;
            if (skipping && !placed) {
                out += bytes;
                placed = true;
            }
        }
        if (!skipping) out += line;
    }
    if (!placed) {
        if (!out.isEmpty() && !out.endsWith('\n')) out += "\r\n";
        out += bytes;
    }

    const QString dir = QFileInfo(path_).absolutePath();
    QSaveFile f(path_);
    if (!QDir().mkpath(dir) || !f.open(QIODevice::WriteOnly) || f.write(out) != out.size() || !f.commit()) {
        if (error) *error = QStringLiteral("The CD player database %1 cannot be written: %2").arg(path_, f.errorString());
        return false;
    }
    data_ = out;
    return true;
}

}  // namespace jk::sources
