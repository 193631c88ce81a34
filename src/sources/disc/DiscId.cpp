#include "sources/disc/DiscId.h"

namespace jk::sources {

using namespace jk::platform;

quint32 volumeSerial(const CdDisc& disc)
{
    quint32 sum = 0;
    for (const CdTrack& t : disc.tracks) {
        const quint32 m = quint32(t.lba / kFramesPerMinute), s = quint32(t.lba / kFramesPerSecond % 60),
                      f = quint32(t.lba % kFramesPerSecond);
        sum += (m << 16) | (s << 8) | f;
    }
    if (!disc.tracks.isEmpty() && disc.tracks.size() < 3) sum += quint32(disc.leadOutLba - disc.tracks.first().lba);
    return sum;
}

QString discIdentifier(const CdDisc& disc)
{
    const quint32 serial = volumeSerial(disc);
    return QStringLiteral("%1-%2")
        .arg(serial >> 16, 4, 16, QLatin1Char('0'))
        .arg(serial & 0xFFFF, 4, 16, QLatin1Char('0'))
        .toUpper();
}

}  // namespace jk::sources
