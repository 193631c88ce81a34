#pragma once
// The CD player database "cdplayer.ini": one section per disc, named after
// the disc identifier, holding the artist, the disc title and the track
// titles. Storing a disc replaces its section (or adds one); the file is
// written whole to a temporary file and renamed, and a file that cannot be
// read back safely (a folder, unreadable, huge, binary) is never written.
#include <QString>
#include <QStringList>
#include <optional>

namespace jk::sources {

class CdPlayerDatabase {
public:
    struct Disc {
        QString artist, title;
        QStringList titles;  // track k + 1 at index k
    };

    explicit CdPlayerDatabase(QString path);
    QString path() const { return path_; }

    // Reads the file; a missing file is an empty database. False, with the
    // reason, when the file cannot be used (the database is then empty).
    bool load(QString* error = nullptr);
    // The stored disc of that identifier ("0A1B-00C2"), if any.
    std::optional<Disc> find(const QString& discId) const;

    // Writes the disc's section: [section], Artist=, Title=, numtracks=,
    // 0= … (trackCount titles, missing ones empty), order=0 1 … with a blank
    // after each number, numplay=. Nothing is written for fewer than 2
    // tracks (still true). False, with the reason, when the file is unusable
    // or cannot be written; the file is then left as it was.
    bool store(const QString& discId, const Disc& disc, int trackCount, QString* error = nullptr);

    // Section name of an identifier: trimmed, leading zeros dropped, then
    // the hyphen dropped ("0A1B-00C2" -> "A1B00C2", "0000-0012" -> "0012").
    static QString sectionName(const QString& discId);
    // Track titles from the accepted text: each line ended by a carriage
    // return is one title (line feeds dropped); text after the last one is
    // not a title.
    static QStringList titlesFromText(const QString& text);

    static constexpr qint64 kMaxBytes = 16 * 1024 * 1024;

private:
    std::optional<QByteArray> readRaw(QString* error) const;

    QString path_;
    QByteArray data_;
};

}  // namespace jk::sources
