#include "platform/Volumes.h"
#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>
#include <algorithm>

namespace jk::platform {

namespace {

bool isUnder(const QString& path, const QString& root)
{
    if (root == QLatin1String("/")) return path.startsWith(u'/');
    return path == root || path.startsWith(root + u'/');
}

// Kernel and desktop plumbing that no user thinks of as a drive.
bool isPseudo(const QStorageInfo& v)
{
    static const QByteArrayList kTypes = {
        "proc",      "sysfs",   "devtmpfs", "devpts",   "cgroup",     "cgroup2",   "securityfs",
        "pstore",    "debugfs", "tracefs",  "mqueue",   "hugetlbfs",  "configfs",  "fusectl",
        "binfmt_misc", "autofs", "bpf",     "efivarfs", "rpc_pipefs", "nsfs",      "ramfs",
        "selinuxfs", "squashfs", "fuse.gvfsd-fuse", "fuse.portal", "tmpfs"};
    const QString root = v.rootPath();
    if (v.device().startsWith("/dev/sr")) return false;  // a mounted optical disc
    if (v.fileSystemType() == "tmpfs" && root == QLatin1String("/tmp")) return false;
    if (kTypes.contains(v.fileSystemType())) return true;
    for (const char* sys : {"/proc", "/sys", "/dev", "/snap"})
        if (isUnder(root, QLatin1String(sys))) return true;
    return isUnder(root, QStringLiteral("/run")) && !isUnder(root, QStringLiteral("/run/media"));
}

}  // namespace

QList<MountedVolume> mountedVolumes()
{
    QList<MountedVolume> out;
    auto known = [&out](const QString& root) {
        return std::any_of(out.cbegin(), out.cend(), [&](const MountedVolume& v) { return v.root == root; });
    };
    for (const QStorageInfo& v : QStorageInfo::mountedVolumes()) {
        if (!v.isValid() || !v.isReady() || isPseudo(v)) continue;
        const QString root = v.rootPath();
        if (!QFileInfo(root).isDir() || known(root)) continue;  // containers bind single files
        out.append({root, QString::fromLocal8Bit(v.device()), v.name()});
    }
    if (!known(QStringLiteral("/"))) out.append({QStringLiteral("/"), QString(), QString()});
    std::sort(out.begin(), out.end(), [](const MountedVolume& a, const MountedVolume& b) {
        return QString::compare(a.root, b.root, Qt::CaseInsensitive) < 0;
    });
    return out;
}

QString mountPointOf(const QString& path)
{
    const QString root = QStorageInfo(path).rootPath();
    return root.isEmpty() ? QStringLiteral("/") : root;
}

}  // namespace jk::platform
