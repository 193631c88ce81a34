#include "ui/widgets/DriveFolderFile.h"
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QStorageInfo>
#include <QStyle>
#include <QStyledItemDelegate>
#include <algorithm>

namespace {

constexpr int kPathRole = Qt::UserRole;
constexpr int kLevelRole = Qt::UserRole + 1;
constexpr int kFolderRole = Qt::UserRole + 2;

struct Drive {
    QString root, label;
};

bool isUnder(const QString& path, const QString& root)
{
    if (root == QLatin1String("/")) return path.startsWith(u'/');
    return path == root || path.startsWith(root + u'/');
}

// Kernel and desktop plumbing that no user thinks of as a drive.
bool isPseudo(const QStorageInfo& v)
{
    static const QByteArrayList kTypes = {
        "proc",     "sysfs",    "devtmpfs",   "devpts",    "cgroup",   "cgroup2",   "securityfs",
        "pstore",   "debugfs",  "tracefs",    "mqueue",    "hugetlbfs", "configfs", "fusectl",
        "binfmt_misc", "autofs", "bpf",       "efivarfs",  "rpc_pipefs", "nsfs",    "ramfs",
        "selinuxfs", "squashfs", "fuse.gvfsd-fuse", "fuse.portal", "tmpfs"};
    const QString root = v.rootPath();
    if (v.device().startsWith("/dev/sr")) return false;  // a mounted optical disc
    // A scratch tmpfs on /tmp is where users do keep files.
    if (v.fileSystemType() == "tmpfs" && root == QLatin1String("/tmp")) return false;
    if (kTypes.contains(v.fileSystemType())) return true;
    for (const char* sys : {"/proc", "/sys", "/dev", "/snap"})
        if (isUnder(root, QLatin1String(sys))) return true;
    if (isUnder(root, QStringLiteral("/run")) && !isUnder(root, QStringLiteral("/run/media"))) return true;
    return false;
}

QList<Drive> mountedDrives()
{
    QList<Drive> out;
    for (const QStorageInfo& v : QStorageInfo::mountedVolumes()) {
        if (!v.isValid() || !v.isReady() || isPseudo(v)) continue;
        const QString root = v.rootPath();
        if (!QFileInfo(root).isDir()) continue;  // containers bind single files
        if (std::any_of(out.cbegin(), out.cend(), [&](const Drive& d) { return d.root == root; })) continue;
        out.append({root, v.name()});
    }
    if (std::none_of(out.cbegin(), out.cend(), [](const Drive& d) { return d.root == QLatin1String("/"); }))
        out.append({QStringLiteral("/"), QString()});
    std::sort(out.begin(), out.end(), [](const Drive& a, const Drive& b) {
        return QString::compare(a.root, b.root, Qt::CaseInsensitive) < 0;
    });
    return out;
}

QString longestRootHolding(const QString& path, const QStringList& roots)
{
    QString best;
    for (const QString& r : roots)
        if (isUnder(path, r) && r.size() > best.size()) best = r;
    return best;
}

void sortByName(QStringList& names)
{
    std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
        const int c = QString::compare(a, b, Qt::CaseInsensitive);
        return c != 0 ? c < 0 : a < b;
    });
}

QString cleanAbsolute(const QString& path)
{
    return QDir::cleanPath(QDir(path).absolutePath());
}

// Indents each folder entry by its depth, as the classic folder list did.
class IndentDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    static constexpr int kStep = 12;
    void paint(QPainter* p, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem o(option);
        o.rect.setLeft(o.rect.left() + kStep * index.data(kLevelRole).toInt());
        QStyledItemDelegate::paint(p, o, index);
    }
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QSize s = QStyledItemDelegate::sizeHint(option, index);
        s.rwidth() += kStep * index.data(kLevelRole).toInt();
        return s;
    }
};

}  // namespace

// ---------------------------------------------------------------- DriveList

DriveList::DriveList(QWidget* parent) : QComboBox(parent)
{
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
    refresh();
    connect(this, &QComboBox::currentIndexChanged, this, [this] {
        const QString d = drive();
        if (d == last_) return;
        last_ = d;
        Q_EMIT driveChanged(d);
    });
}

void DriveList::addDrive(const QString& root, const QString& label, bool folder)
{
    addItem(label.isEmpty() ? root : label, root);
    setItemData(count() - 1, folder, kFolderRole);
}

QList<DriveEntry> DriveList::entries() const
{
    if (provider_) return provider_();
    QList<DriveEntry> out;
    for (const Drive& d : mountedDrives())
        out.append({d.root, d.label.isEmpty() ? QString() : d.root + QStringLiteral("  [") + d.label + u']', true});
    return out;
}

void DriveList::setProvider(std::function<QList<DriveEntry>()> provider)
{
    provider_ = std::move(provider);
    refresh();
}

void DriveList::addEntry(const DriveEntry& entry)
{
    const int i = findData(entry.key);
    if (i < 0) {
        addDrive(entry.key, entry.label, entry.folder);
        return;
    }
    setItemText(i, entry.label.isEmpty() ? entry.key : entry.label);
    setItemData(i, entry.folder, kFolderRole);
}

bool DriveList::isFolder(const QString& key) const
{
    const int i = findData(key);
    return i >= 0 && itemData(i, kFolderRole).toBool();
}

void DriveList::refresh()
{
    const QString keep = last_;
    {
        const QSignalBlocker block(this);
        clear();
        for (const DriveEntry& e : entries()) addDrive(e.key, e.label, e.folder);
        int i = findData(keep);
        if (i < 0) i = findData(QStringLiteral("/"));
        setCurrentIndex(i >= 0 ? i : 0);
    }
    const QString now = drive();
    if (now == last_) return;
    last_ = now;
    if (!keep.isEmpty()) Q_EMIT driveChanged(now);
}

QString DriveList::drive() const
{
    return currentData().toString();
}

QStringList DriveList::drives() const
{
    QStringList out;
    for (int i = 0; i < count(); ++i) out << itemData(i).toString();
    return out;
}

void DriveList::setDrive(const QString& mountPoint)
{
    const QString root = mountPoint.size() > 1 ? QDir::cleanPath(mountPoint) : mountPoint;
    int i = findData(root);
    if (i < 0) {
        if (root.isEmpty() || !QFileInfo(root).isDir()) return;
        addDrive(root, QString());
        i = count() - 1;
    }
    setCurrentIndex(i);
}

void DriveList::setDriveForPath(const QString& path)
{
    QStringList folders;
    for (int k = 0; k < count(); ++k)
        if (itemData(k, kFolderRole).toBool()) folders << itemData(k).toString();
    const int i = findData(longestRootHolding(cleanAbsolute(path), folders));
    if (i < 0) return;
    const QSignalBlocker block(this);
    setCurrentIndex(i);
    last_ = drive();
}

QString DriveList::mountPointOf(const QString& path)
{
    QStringList roots;
    for (const Drive& d : mountedDrives()) roots << d.root;
    const QString r = longestRootHolding(cleanAbsolute(path), roots);
    return r.isEmpty() ? QStringLiteral("/") : r;
}

// ------------------------------------------------------------------ DirList

DirList::DirList(QWidget* parent) : QListWidget(parent)
{
    setItemDelegate(new IndentDelegate(this));
    setUniformItemSizes(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    connect(this, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* it) { setPath(it->data(kPathRole).toString()); });
}

void DirList::setPath(const QString& path)
{
    QString p = cleanAbsolute(path);
    while (!QFileInfo(p).isDir() && p != QLatin1String("/")) p = QFileInfo(p).path();
    if (p == path_) return;
    path_ = p;
    source_ = false;
    fill();
    Q_EMIT pathChanged(path_);
}

void DirList::refresh()
{
    if (!path_.isEmpty() && !source_) fill();
}

void DirList::showSource(const QString& key, const QString& label)
{
    path_ = key;
    source_ = true;
    subfolders_.clear();
    clear();
    auto* it = new QListWidgetItem(style()->standardIcon(QStyle::SP_DriveCDIcon), label, this);
    it->setData(kPathRole, key);
    it->setData(kLevelRole, 0);
    it->setToolTip(key);
    setCurrentItem(it);
}

void DirList::fill()
{
    setUpdatesEnabled(false);
    clear();
    subfolders_.clear();
    const QIcon open = style()->standardIcon(QStyle::SP_DirOpenIcon);
    const QIcon closed = style()->standardIcon(QStyle::SP_DirClosedIcon);
    auto add = [this](const QString& text, const QString& full, int level, const QIcon& icon) {
        auto* it = new QListWidgetItem(icon, text, this);
        it->setData(kPathRole, full);
        it->setData(kLevelRole, level);
        it->setToolTip(full);
    };

    add(QStringLiteral("/"), QStringLiteral("/"), 0, open);
    const QStringList parts = path_.split(u'/', Qt::SkipEmptyParts);
    QString full;
    for (int i = 0; i < parts.size(); ++i) {
        full += u'/' + parts.at(i);
        add(parts.at(i), full, i + 1, open);
    }
    QListWidgetItem* current = item(count() - 1);

    // An unreadable folder lists nothing; the folder itself stays shown.
    QStringList names = QDir(path_).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted);
    sortByName(names);
    const QString prefix = path_ == QLatin1String("/") ? path_ : path_ + u'/';
    for (const QString& n : names) {
        subfolders_ << prefix + n;
        add(n, prefix + n, parts.size() + 1, closed);
    }
    setCurrentItem(current);
    setUpdatesEnabled(true);
    scrollToItem(current, QAbstractItemView::PositionAtTop);
}

// ----------------------------------------------------------------- FileList

FileList::FileList(QWidget* parent) : QListWidget(parent)
{
    setUniformItemSizes(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    connect(this, &QListWidget::itemClicked, this, [this](QListWidgetItem* it) { Q_EMIT fileClicked(it->text()); });
    connect(this, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* it) { Q_EMIT fileDoubleClicked(it->text()); });
}

void FileList::setPath(const QString& path)
{
    path_ = path;
    given_ = false;
    refresh();
}

void FileList::setEntries(const QStringList& names)
{
    path_.clear();
    given_ = true;
    names_ = names;
    setUpdatesEnabled(false);
    clear();
    addItems(names_);
    setUpdatesEnabled(true);
}

void FileList::setPattern(const QString& pattern)
{
    pattern_ = pattern;
    refresh();
}

void FileList::setExecutablesOnly(bool on)
{
    if (on == executablesOnly_) return;
    executablesOnly_ = on;
    refresh();
}

void FileList::refresh()
{
    if (given_) return;
    QStringList filters;
    for (const QString& raw : pattern_.split(u';', Qt::SkipEmptyParts)) {
        const QString f = raw.trimmed();
        if (f.isEmpty()) continue;
        filters << (f == QLatin1String("*.*") ? QStringLiteral("*") : f);
    }
    if (filters.isEmpty()) filters << QStringLiteral("*");

    names_.clear();
    if (!path_.isEmpty()) {
        // No QDir::CaseSensitive: the patterns match ignoring case.
        QDir::Filters which = QDir::Files;
        if (executablesOnly_) which |= QDir::Executable;
        names_ = QDir(path_).entryList(filters, which, QDir::Unsorted);
        sortByName(names_);
    }
    setUpdatesEnabled(false);
    clear();
    addItems(names_);
    setUpdatesEnabled(true);
}

QString FileList::fileName() const
{
    const QList<QListWidgetItem*> sel = selectedItems();
    return sel.isEmpty() ? QString() : sel.first()->text();
}

bool FileList::setFileName(const QString& name)
{
    int i = int(names_.indexOf(name));
    if (i < 0)
        for (int k = 0; k < names_.size() && i < 0; ++k)
            if (names_.at(k).compare(name, Qt::CaseInsensitive) == 0) i = k;
    if (i < 0) return false;
    setCurrentRow(i);
    scrollToItem(item(i));
    return true;
}

void FileList::keyPressEvent(QKeyEvent* e)
{
    // Moving the selection with the keys counts as a click on the new file.
    QListWidgetItem* before = currentItem();
    QListWidget::keyPressEvent(e);
    QListWidgetItem* after = currentItem();
    if (after && after != before) Q_EMIT fileClicked(after->text());
}

// --------------------------------------------------------- DriveFolderFileTrio

DriveFolderFileTrio::DriveFolderFileTrio(QWidget* parent)
    : QWidget(parent), drive_(new DriveList(this)), dir_(new DirList(this)), file_(new FileList(this))
{
    drive_->setObjectName("Drive1");
    dir_->setObjectName("Dir1");
    file_->setObjectName("File1");

    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(drive_, 0, 0);
    grid->addWidget(dir_, 1, 0);
    grid->addWidget(file_, 0, 1, 2, 1);

    connect(drive_, &DriveList::driveChanged, this, [this](const QString& root) {
        if (!drive_->isFolder(root)) {
            Q_EMIT sourceChosen(root);
            return;
        }
        source_.clear();
        dir_->setPath(root);
        Q_EMIT driveChanged(root);
    });
    connect(dir_, &DirList::pathChanged, this, [this](const QString& p) {
        source_.clear();
        file_->setPath(p);
        drive_->setDriveForPath(p);
        Q_EMIT pathChanged(p);
    });
    connect(file_, &FileList::fileClicked, this, &DriveFolderFileTrio::fileClicked);
    connect(file_, &FileList::fileDoubleClicked, this, &DriveFolderFileTrio::fileDoubleClicked);

    setPath(QDir::homePath());
}

QString DriveFolderFileTrio::path() const
{
    return dir_->path();
}

void DriveFolderFileTrio::setPath(const QString& folder)
{
    drive_->setDriveForPath(folder);
    dir_->setPath(folder);
}

void DriveFolderFileTrio::showSource(const QString& key, const QString& label, const QStringList& entries)
{
    source_ = key;
    dir_->showSource(key, label);
    file_->setEntries(entries);
}

QString DriveFolderFileTrio::filePath() const
{
    const QString name = file_->fileName();
    if (name.isEmpty()) return QString();
    const QString dir = path();
    return dir.endsWith(u'/') ? dir + name : dir + u'/' + name;
}
