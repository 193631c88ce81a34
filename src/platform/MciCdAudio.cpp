#include "platform/MciCdAudio.h"
#include <QStringList>

namespace jk::platform {

namespace {
// Words that only say how to wait or share, which changes nothing here.
bool isFlag(const QString& w)
{
    return w == QLatin1String("wait") || w == QLatin1String("notify") || w == QLatin1String("shareable");
}
}  // namespace

MciCdAudio::MciCdAudio(QString source) : source_(std::move(source)) {}

QString MciCdAudio::errorText(int code)
{
    switch (code) {
    case NoError: return QString();
    case UnrecognizedKeyword: return QStringLiteral("The driver cannot recognize the specified command parameter.");
    case UnrecognizedCommand: return QStringLiteral("The driver cannot recognize the specified command.");
    case Hardware:
        return QStringLiteral("There is a problem with your media device. Make sure it is working correctly "
                              "and that it holds a disc.");
    case InvalidDeviceName: return QStringLiteral("The specified device is not open or is not recognized by MCI.");
    case MissingParameter: return QStringLiteral("The specified command requires a parameter. Please supply one.");
    case OutOfRange: return QStringLiteral("The specified parameter is out of range for the specified command.");
    case DuplicateAlias:
        return QStringLiteral("The specified alias is already being used in this application. Use a unique alias.");
    }
    return QStringLiteral("Unknown MCI error %1.").arg(code);
}

bool MciCdAudio::refresh()
{
    CdRead r = readCd(source_);
    if (r.status != CdStatus::Ok) {
        disc_.reset();
        return false;
    }
    disc_ = std::move(r.disc);
    current_ = qBound(0, current_, int(disc_->tracks.size()) - 1);
    return true;
}

int MciCdAudio::trackIndex(int number) const
{
    if (!disc_) return -1;
    for (int i = 0; i < disc_->tracks.size(); ++i)
        if (disc_->tracks.at(i).number == number) return i;
    return -1;
}

int MciCdAudio::trackLength(int index) const
{
    const QList<CdTrack>& t = disc_->tracks;
    if (index + 1 < t.size()) return t.at(index + 1).lba - t.at(index).lba;
    return disc_->leadOutLba - t.at(index).lba - 1;
}

QString MciCdAudio::timeText(int frames, bool positionInTrack) const
{
    switch (format_) {
    case Format::Milliseconds: return QString::number(qint64(frames) * 1000 / kFramesPerSecond);
    case Format::Msf: return msfText(frames);
    case Format::Tmsf:
        if (!positionInTrack) return msfText(frames);
        return QStringLiteral("%1:").arg(disc_->tracks.at(current_).number, 2, 10, QLatin1Char('0')) + msfText(frames);
    }
    return QString();
}

int MciCdAudio::send(const QString& command, QString* reply)
{
    QString ignored;
    QString& out = reply ? *reply : ignored;
    out.clear();
    QStringList words = command.toLower().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    words.removeIf(isFlag);
    if (words.isEmpty()) return UnrecognizedCommand;
    const QString verb = words.takeFirst();

    if (verb == QLatin1String("open")) {
        if (words.isEmpty()) return MissingParameter;
        if (words.takeFirst() != QLatin1String("cdaudio")) return InvalidDeviceName;
        QString alias = QStringLiteral("cdaudio");
        if (words.size() == 2 && words.first() == QLatin1String("alias")) alias = words.last();
        else if (!words.isEmpty()) return UnrecognizedKeyword;
        if (isOpen()) return alias == alias_ ? DuplicateAlias : Hardware;  // one drive, one user
        // A drive opens empty (media present then says false); an image must be readable.
        if (!refresh() && !isDevicePath(source_)) return Hardware;
        alias_ = alias;
        format_ = Format::Msf;
        current_ = 0;
        return NoError;
    }
    if (verb == QLatin1String("close")) {
        if (words.size() != 1) return MissingParameter;
        if (words.first() != QLatin1String("all") && words.first() != alias_) return InvalidDeviceName;
        alias_.clear();
        disc_.reset();
        return NoError;
    }

    static const QStringList kVerbs = {"set", "status", "seek", "play", "stop", "pause"};
    if (!kVerbs.contains(verb)) return UnrecognizedCommand;
    if (words.isEmpty()) return MissingParameter;
    if (!isOpen() || words.takeFirst() != alias_) return InvalidDeviceName;

    if (verb == QLatin1String("set")) {
        if (words.size() != 3 || words.at(0) != QLatin1String("time") || words.at(1) != QLatin1String("format"))
            return UnrecognizedKeyword;
        const QString f = words.at(2);
        if (f == QLatin1String("tmsf")) format_ = Format::Tmsf;
        else if (f == QLatin1String("msf")) format_ = Format::Msf;
        else if (f == QLatin1String("milliseconds") || f == QLatin1String("ms")) format_ = Format::Milliseconds;
        else return UnrecognizedKeyword;
        return NoError;
    }
    if (verb == QLatin1String("status")) return status(words, &out);
    if (!disc_) return Hardware;
    if (verb == QLatin1String("stop") || verb == QLatin1String("pause")) return words.isEmpty() ? NoError : UnrecognizedKeyword;
    if (verb == QLatin1String("seek")) {
        if (words.size() != 2 || words.first() != QLatin1String("to")) return MissingParameter;
        return moveTo(words.last());
    }
    // play [from N] [to M]: only the start matters, nothing is played.
    if (words.isEmpty()) return NoError;
    if (words.size() < 2 || (words.at(0) != QLatin1String("from") && words.at(0) != QLatin1String("to")))
        return UnrecognizedKeyword;
    return words.at(0) == QLatin1String("from") ? moveTo(words.at(1)) : NoError;
}

int MciCdAudio::moveTo(const QString& where)
{
    if (where == QLatin1String("start")) current_ = 0;
    else if (where == QLatin1String("end")) current_ = int(disc_->tracks.size()) - 1;
    else {
        // A position is a track number in tmsf; other formats are not needed.
        bool ok = false;
        const int i = trackIndex(where.section(u':', 0, 0).toInt(&ok));
        if (!ok) return UnrecognizedKeyword;
        if (i < 0) return OutOfRange;
        current_ = i;
    }
    return NoError;
}

int MciCdAudio::status(const QStringList& w, QString* reply)
{
    const QString what = w.join(u' ');
    if (what == QLatin1String("media present")) {
        *reply = refresh() ? QStringLiteral("true") : QStringLiteral("false");
        return NoError;
    }
    if (what == QLatin1String("mode")) {
        *reply = disc_ ? QStringLiteral("stopped") : QStringLiteral("not ready");
        return NoError;
    }
    if (!disc_) return Hardware;
    if (what == QLatin1String("number of tracks")) {
        *reply = QString::number(disc_->tracks.size());
    } else if (what == QLatin1String("current track")) {
        *reply = QString::number(disc_->tracks.at(current_).number);
    } else if (what == QLatin1String("position")) {
        *reply = format_ == Format::Tmsf ? timeText(0, true) : timeText(disc_->tracks.at(current_).lba, false);
    } else if (what == QLatin1String("length")) {
        *reply = timeText(disc_->leadOutLba - disc_->tracks.first().lba, false);
    } else if (w.size() == 3 && w.at(0) == QLatin1String("length") && w.at(1) == QLatin1String("track")) {
        bool ok = false;
        const int i = trackIndex(w.at(2).toInt(&ok));
        if (!ok) return UnrecognizedKeyword;
        if (i < 0) return OutOfRange;
        *reply = timeText(trackLength(i), false);
    } else {
        return UnrecognizedKeyword;
    }
    return NoError;
}

}  // namespace jk::platform
