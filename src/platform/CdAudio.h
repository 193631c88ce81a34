#pragma once
// Audio CDs through libcdio: a disc's table of contents and CD-TEXT, read from
// an optical drive (/dev/sr0) or from a disc image (.cue/.bin, cdrdao .toc,
// .nrg), and the optical drives present. Nothing else in the program includes
// a libcdio header. Qt Core only.
#include <QList>
#include <QString>
#include <QStringList>

namespace jk::platform {

constexpr int kFramesPerSecond = 75;
constexpr int kFramesPerMinute = 60 * kFramesPerSecond;
// Addresses on a CD start 2 seconds before the first sector (LBA = LSN + 150).
constexpr int kPregapFrames = 2 * kFramesPerSecond;

struct CdTrack {
    int number = 0;     // 1..99
    int lba = 0;        // absolute start, 150 for a first track at 00:00:00 of the data
    bool audio = true;
    QString title;      // CD-TEXT, empty when the disc has none
};

struct CdDisc {
    QList<CdTrack> tracks;  // in TOC order
    int leadOutLba = 0;
    QString title, performer;  // CD-TEXT of the whole disc
    bool hasCdText = false;

    int audioTrackCount() const;
    bool isAudio() const { return audioTrackCount() > 0; }
};

enum class CdStatus {
    Ok,
    NoDisc,      // an empty drive, or an image file that is not there (any more)
    Unreadable,  // something is there but its table of contents cannot be used
};

struct CdRead {
    CdStatus status = CdStatus::NoDisc;
    CdDisc disc;
    QString error;  // what went wrong, for a message box; empty when Ok
};

// Reads the table of contents and CD-TEXT of a drive (device path) or of a
// disc image. Never blocks on anything but a real drive, and libcdio's own
// diagnostics never reach the terminal (they become the error text).
CdRead readCd(const QString& source);

// True for the file names readCd treats as disc images (.cue .bin .toc .nrg),
// plus .iso, which holds a data disc only.
bool isDiscImageName(const QString& path);
// A block device: something readCd opens as a drive.
bool isDevicePath(const QString& path);

// The optical drives libcdio finds, as device paths, with or without a disc.
QStringList opticalDrives();

// "mm:ss:ff" of a frame count (negative counts as 0).
QString msfText(int frames);

}  // namespace jk::platform
