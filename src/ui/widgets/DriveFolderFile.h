#pragma once
// Drive, folder and file lists: the browsing widgets several dialogs embed.
// A "drive" is a mounted file system (or a mounted optical disc); folders are
// listed from "/" down to the current folder, followed by its sub-folders.
// Listings read names only (no per-file icons or stat calls beyond what the
// filters need) so that big folders stay quick.
#include <QComboBox>
#include <QListWidget>
#include <QStringList>
#include <QWidget>
#include <functional>

// One entry of a drive list. A folder entry is browsed; any other (an optical
// drive without a mounted disc, a disc image, the choice of one) is handed to
// whoever offered it.
struct DriveEntry {
    QString key;    // mount point, or what the offerer makes of it
    QString label;  // shown instead of the key when not empty
    bool folder = true;
};

// The mounted file systems a user would call drives.
class DriveList : public QComboBox {
    Q_OBJECT
    Q_PROPERTY(QString drive READ drive WRITE setDrive NOTIFY driveChanged)
public:
    explicit DriveList(QWidget* parent = nullptr);

    // Re-reads the mounted file systems, keeping the current drive when it
    // is still mounted.
    void refresh();
    // Mount point of the current entry, empty when the list is empty.
    QString drive() const;
    // Selects the entry of that mount point; an unknown mount point that is
    // an existing folder is added, anything else is ignored.
    void setDrive(const QString& mountPoint);
    // Selects the drive that holds the folder (the longest mount point that
    // contains it).
    void setDriveForPath(const QString& path);
    // Mount points listed, in list order.
    QStringList drives() const;

    // Offers these entries instead of the mounted file systems, now and on
    // every refresh().
    void setProvider(std::function<QList<DriveEntry>()> provider);
    // Adds an entry (or relabels the one of that key) without selecting it.
    void addEntry(const DriveEntry& entry);
    // True for a listed folder entry (every entry of the default list).
    bool isFolder(const QString& key) const;

    // The mount point holding path, among the mounted file systems (at
    // least "/").
    static QString mountPointOf(const QString& path);

Q_SIGNALS:
    void driveChanged(const QString& mountPoint);

private:
    void addDrive(const QString& root, const QString& label, bool folder = true);
    QList<DriveEntry> entries() const;
    std::function<QList<DriveEntry>()> provider_;
    QString last_;
};

// The classic folder list: the current folder's ancestors, the folder itself
// and its sub-folders. A double click (or Enter) opens the entry.
class DirList : public QListWidget {
    Q_OBJECT
    Q_PROPERTY(QString path READ path WRITE setPath NOTIFY pathChanged)
public:
    explicit DirList(QWidget* parent = nullptr);

    QString path() const { return path_; }
    // Goes to the folder (made absolute and clean); a folder that does not
    // exist is replaced by its nearest existing ancestor. Emits pathChanged
    // when the folder differs from the current one.
    void setPath(const QString& path);
    // Lists the folder again (its sub-folders may have changed).
    void refresh();
    // Full paths of the listed sub-folders, in list order.
    QStringList subfolders() const { return subfolders_; }
    // Shows something that is no folder (a disc) as the one entry; path()
    // is then key, and opening the entry goes to the folder holding it.
    void showSource(const QString& key, const QString& label);

Q_SIGNALS:
    void pathChanged(const QString& path);

private:
    void fill();
    QString path_;
    QStringList subfolders_;
    bool source_ = false;  // path_ is a disc shown by showSource()
};

// The files of one folder that match a pattern ("*.exe", "*.bmp;*.jpg"),
// ignoring case, sorted by name ignoring case. Hidden files are left out.
class FileList : public QListWidget {
    Q_OBJECT
    Q_PROPERTY(QString path READ path WRITE setPath)
    Q_PROPERTY(QString pattern READ pattern WRITE setPattern)
public:
    explicit FileList(QWidget* parent = nullptr);

    QString path() const { return path_; }
    void setPath(const QString& path);
    QString pattern() const { return pattern_; }
    // Patterns separated by ";"; "*.*" means every file, as it always did.
    void setPattern(const QString& pattern);
    // Lists only files the user may run (Linux programs need no ".exe").
    void setExecutablesOnly(bool on);
    bool executablesOnly() const { return executablesOnly_; }
    void refresh();
    // Lists these names instead of a folder's files (the tracks of an audio
    // disc); path() is then empty, and setPath() lists a folder again.
    void setEntries(const QStringList& names);

    // The selected file name, empty when none is selected.
    QString fileName() const;
    // Selects the file of that name (exact match first, then ignoring case).
    bool setFileName(const QString& name);
    // Every listed name, in list order.
    QStringList fileNames() const { return names_; }

Q_SIGNALS:
    void fileClicked(const QString& name);
    void fileDoubleClicked(const QString& name);

protected:
    void keyPressEvent(QKeyEvent* e) override;

private:
    QString path_, pattern_ = QStringLiteral("*.*");
    QStringList names_;
    bool executablesOnly_ = false;
    bool given_ = false;  // names_ came from setEntries()
};

// The three lists wired together: a drive change opens the drive's root, a
// folder change lists that folder's files (and follows with the drive).
// The children are named Drive1, Dir1 and File1.
class DriveFolderFileTrio : public QWidget {
    Q_OBJECT
public:
    explicit DriveFolderFileTrio(QWidget* parent = nullptr);

    DriveList* driveList() const { return drive_; }
    DirList* dirList() const { return dir_; }
    FileList* fileList() const { return file_; }

    QString path() const;
    // Selects the drive holding the folder and opens the folder.
    void setPath(const QString& folder);
    // The folder, one "/" (none when the folder already ends in one) and the
    // selected file name; empty when no file is selected.
    QString filePath() const;

    // A drive entry that is no folder was chosen; its offerer shows it with
    // showSource() or selects another drive.
    QString source() const { return source_; }
    // Shows a disc that is no folder: Dir1 holds it alone, File1 the
    // entries given. Leaving it (another drive or folder) ends it.
    void showSource(const QString& key, const QString& label, const QStringList& entries);

Q_SIGNALS:
    void driveChanged(const QString& mountPoint);
    void sourceChosen(const QString& key);
    void pathChanged(const QString& path);
    void fileClicked(const QString& name);
    void fileDoubleClicked(const QString& name);

private:
    DriveList* drive_;
    DirList* dir_;
    FileList* file_;
    QString source_;
};
