#pragma once
// The identifier of an audio disc: the volume serial number that Windows shows
// for it, computed from the table of contents, which is also the key of the
// disc in the CD player database.
#include "platform/CdAudio.h"
#include <QString>

namespace jk::sources {

// The sum of every track's absolute start as (M << 16) | (S << 8) | F; a disc
// of fewer than 3 tracks also adds its length in frames (lead-out minus the
// first track's start). Wraps around at 32 bits.
quint32 volumeSerial(const jk::platform::CdDisc& disc);

// "0018-2A6B": the serial's high and low 16 bits in hexadecimal.
QString discIdentifier(const jk::platform::CdDisc& disc);

}  // namespace jk::sources
