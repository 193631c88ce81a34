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

    // The mount point holding path, among the mounted file systems (at
    // least "/").
    static QString mountPointOf(const QString& path);

Q_SIGNALS:
    void driveChanged(const QString& mountPoint);

private:
    void addDrive(const QString& root, const QString& label);
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

Q_SIGNALS:
    void pathChanged(const QString& path);

private:
    void fill();
    QString path_;
    QStringList subfolders_;
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

Q_SIGNALS:
    void driveChanged(const QString& mountPoint);
    void pathChanged(const QString& path);
    void fileClicked(const QString& name);
    void fileDoubleClicked(const QString& name);

private:
    DriveList* drive_;
    DirList* dir_;
    FileList* file_;
};
