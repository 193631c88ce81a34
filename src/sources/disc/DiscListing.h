#pragma once
// The text of the "Scan drive" panel: a folder's sub-folders or files, with
// sizes and dates, in columns for a fixed-pitch font, or an audio disc's
// tracks with their times (asked through the MCI command strings, as the
// track list always did). Widget-free; the dialog shows what comes back.
#include "platform/CdAudio.h"
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

namespace jk::sources {

class CdPlayerDatabase;

struct ListingOptions {
    bool folders = false;  // sub-folders instead of files ("Directories")
    bool sizes = false;    // file sizes; ignored for folders
    bool dates = false;    // dates and times; track times on an audio disc
};

struct Listing {
    enum Outcome {
        Text,       // text holds the listing (possibly empty)
        Unchanged,  // nothing to show, keep the text box as it is (a one-track disc)
        NoDisc,     // no disc, or it went away: offer Retry / Cancel
        Failed,     // the source cannot be listed; message says why
    };
    Outcome outcome = Text;
    QString text;     // lines ended by CR LF
    QString message;  // for NoDisc and Failed
    bool audio = false;  // an audio disc: only its tracks, the kind cannot be chosen
};

// An audio disc as the dialog needs it: the file list's entries, the
// identifier and what is known of its titles.
struct AudioDisc {
    QString source;
    jk::platform::CdDisc toc;
    QString id;             // "0018-2A6B"
    QStringList fileNames;  // "Track01.cda"… one per audio track, in order
    QList<int> trackNumbers;  // the track number of each entry
    QStringList titles;     // known title of each entry, empty when unknown
    QString artist, title;  // known performer and disc title, to start the questions with
};

// Reads a drive or disc image as an audio disc. Titles come from the
// database (db may be null) first, then from the disc's CD-TEXT. On failure
// the Listing tells why (NoDisc, or Failed for an unreadable image or a disc
// without audio tracks).
std::optional<AudioDisc> readAudioDisc(const QString& source, const CdPlayerDatabase* db, Listing* failure);

// "24/12/98 03:15:00 PM" (a midnight stamp gives " 12:00:00 AM").
QString dateTimeText(const QDateTime& stamp);

// Files or sub-folders of folder, sorted by name ignoring case, hidden ones
// left out (as the file and folder lists show them). A folder's name is its
// path below mountPoint (default: the mount point holding the folder).
// Entries that vanish or cannot be read are skipped.
Listing listFolder(const QString& folder, const ListingOptions& options, const QString& mountPoint = QString());

// The tracks of an audio disc as file entries, their times asked from an MCI
// device over the disc (options.folders is ignored). A disc of one track
// gives Unchanged; an open that fails or a disc that goes away gives NoDisc.
Listing listAudioDisc(const AudioDisc& disc, const ListingOptions& options);

// What the scan panel shows for a folder, a drive (its mount point when it
// is mounted, else its audio disc) or a disc image.
Listing listSource(const QString& source, const ListingOptions& options, const CdPlayerDatabase* db);

// The drive list of the scan panel.
struct ScanDrive {
    enum Kind { Volume, OpticalDrive, DiscImage };
    Kind kind = Volume;
    QString path;        // mount point (Volume), device (OpticalDrive); empty for DiscImage
    QString mountPoint;  // where an optical drive's disc is mounted, if it is
    QString label;       // volume name, or "Disc image…"
};
// Mounted file systems, every optical drive (with or without a disc, listed
// once even when its disc is mounted), and the "Disc image…" entry last.
QList<ScanDrive> scanDrives();

// The filter of the "Disc image…" file choice.
QString discImageFilter();

}  // namespace jk::sources
