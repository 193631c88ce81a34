#include "sources/disc/DiscCommand.h"
#include "sources/disc/CdPlayerDatabase.h"
#include "sources/disc/DiscListing.h"
#include <QTextStream>

namespace jk::sources {

namespace {
// "--list=X" is "--list X".
QStringList split(const QStringList& raw)
{
    QStringList args;
    for (const QString& a : raw) {
        if (a.startsWith(QLatin1String("--list=")) || a.startsWith(QLatin1String("--disc-id=")))
            args << a.section(u'=', 0, 0) << a.section(u'=', 1);
        else
            args << a;
    }
    return args;
}
}  // namespace

bool isDiscCommand(const QStringList& raw)
{
    const QStringList args = split(raw);
    return args.contains(QLatin1String("--list")) || args.contains(QLatin1String("--disc-id"));
}

int runDiscCommand(const QStringList& raw, const QString& databasePath, QTextStream& out, QTextStream& err)
{
    const QStringList args = split(raw);
    ListingOptions options;
    QString command, source;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args.at(i);
        if (a == QLatin1String("--list") || a == QLatin1String("--disc-id")) {
            if (!command.isEmpty() || i + 1 >= args.size()) {
                err << "jewlkit: use --list SOURCE [--folders] [--sizes] [--dates], or --disc-id SOURCE" << Qt::endl;
                return 1;
            }
            command = a;
            source = args.at(++i);
        } else if (a == QLatin1String("--folders")) {
            options.folders = true;
        } else if (a == QLatin1String("--sizes")) {
            options.sizes = true;
        } else if (a == QLatin1String("--dates")) {
            options.dates = true;
        } else {
            err << "jewlkit: unexpected argument " << a << Qt::endl;
            return 1;
        }
    }

    // An unusable database only costs the stored titles here.
    CdPlayerDatabase db(databasePath);
    db.load();

    if (command == QLatin1String("--disc-id")) {
        Listing why;
        const std::optional<AudioDisc> disc = readAudioDisc(source, &db, &why);
        if (!disc) {
            err << "jewlkit: " << why.message << Qt::endl;
            return 1;
        }
        out << disc->id << Qt::endl;
        return 0;
    }

    // As on the scan panel, sizes go with files only.
    if (options.folders) options.sizes = false;
    const Listing l = listSource(source, options, &db);
    if (l.outcome == Listing::NoDisc || l.outcome == Listing::Failed) {
        err << "jewlkit: " << l.message << Qt::endl;
        return 1;
    }
    out << l.text;  // Unchanged: nothing to print
    out.flush();
    return 0;
}

}  // namespace jk::sources
