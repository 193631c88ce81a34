#pragma once
// The mounted file systems a user would call drives, as plain data (the
// drive list widget and the disc scan both need them). Qt Core only.
#include <QList>
#include <QString>

namespace jk::platform {

struct MountedVolume {
    QString root;    // mount point
    QString device;  // "/dev/sr0", "/dev/sda1"...
    QString label;
};

// Sorted by mount point, ignoring case; "/" is always there.
QList<MountedVolume> mountedVolumes();

// The mount point holding path ("/" when nothing closer is mounted).
QString mountPointOf(const QString& path);

}  // namespace jk::platform
