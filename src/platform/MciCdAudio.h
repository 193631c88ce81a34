#pragma once
// A small interpreter of the classic MCI command strings for audio CDs, over
// libcdio (CdAudio.h), so code written against those strings keeps working:
//   open cdaudio alias cd wait shareable     set cd time format tmsf|msf wait
//   status cd media present                  status cd number of tracks wait
//   status cd length track N                 status cd length wait
//   status cd position                       status cd current track
//   seek cd to N|start|end                   play cd from N [to M]
//   stop cd / pause cd                       close cd / close all
// Lengths are "mm:ss:ff" even in tmsf mode: a track's is the next track's
// start minus its own, the last track's runs to the lead-out minus one frame.
// Positions in tmsf are "tt:mm:ss:ff" relative to the current track. No sound
// is played: "play" only moves the position. Qt Core only.
#include "platform/CdAudio.h"
#include <QString>
#include <optional>

namespace jk::platform {

class MciCdAudio {
public:
    // Error codes, with the numbers MCI gives them.
    enum Error {
        NoError = 0,
        UnrecognizedKeyword = 259,
        UnrecognizedCommand = 261,
        Hardware = 262,  // no disc, or a disc that cannot be read
        InvalidDeviceName = 263,
        MissingParameter = 273,
        OutOfRange = 282,
        DuplicateAlias = 289,
    };

    // source: the drive's device path or a disc image (what readCd takes).
    explicit MciCdAudio(QString source);

    // Runs one command string (case and extra blanks do not matter). Returns
    // NoError and the reply ("" for commands without one), or an error code.
    int send(const QString& command, QString* reply = nullptr);
    // The message for an error code, as a message box would show it.
    static QString errorText(int code);

    bool isOpen() const { return !alias_.isEmpty(); }

private:
    enum class Format { Tmsf, Msf, Milliseconds };
    int status(const QStringList& words, QString* reply);
    int moveTo(const QString& where);
    bool refresh();  // re-reads the disc; false when none is there
    int trackIndex(int number) const;  // index into disc_.tracks, -1 when absent
    int trackLength(int index) const;  // in frames
    QString timeText(int frames, bool positionInTrack) const;

    QString source_;
    QString alias_;
    Format format_ = Format::Msf;
    std::optional<CdDisc> disc_;  // empty: no disc
    int current_ = 0;             // index of the current track
};

}  // namespace jk::platform
