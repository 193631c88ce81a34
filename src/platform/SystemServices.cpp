#include "platform/SystemServices.h"
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QPrinterInfo>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>
#include <QTimer>
#include <cups/cups.h>

namespace pf = jk::platform;

namespace {

class Clock final : public pf::IClock {
public:
    QDateTime now() override { return QDateTime::currentDateTime(); }

    void pause(int ms) override
    {
        if (ms <= 0) {
            QCoreApplication::processEvents();
            return;
        }
        QEventLoop loop;
        QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
        loop.exec();
    }
};

class Printers final : public pf::IPrinters {
public:
    QStringList printers() override { return QPrinterInfo::availablePrinterNames(); }
    QString defaultPrinter() override { return QPrinterInfo::defaultPrinterName(); }

    bool setDefaultPrinter(const QString& name, QString* error) override
    {
        auto fail = [error](const QString& why) {
            if (error) *error = why;
            return false;
        };
        if (name.isEmpty()) return fail(QStringLiteral("No printer named."));
        // Qt names instances "queue/instance", as lpoptions does.
        const QByteArray queue = name.section(u'/', 0, 0).toUtf8();
        const QByteArray instance = name.section(u'/', 1).toUtf8();
        cups_dest_t* dests = nullptr;
        const int count = cupsGetDests(&dests);
        const bool known =
            cupsGetDest(queue.constData(), instance.isEmpty() ? nullptr : instance.constData(), count, dests);
        cupsFreeDests(count, dests);
        if (!known) return fail(QStringLiteral("The printer \"%1\" is not known.").arg(name));
        // The user's own lpoptions, written here rather than by cupsSetDests,
        // which as root would rewrite the system-wide file and change every
        // user's printing.
        const QString dir = QDir::homePath() + QStringLiteral("/.cups");
        const QString path = dir + QStringLiteral("/lpoptions");
        QString why;
        if (!setDefaultInLpoptions(dir, path, name, &why))
            return fail(QStringLiteral("The default printer could not be saved in %1: %2").arg(path, why));
        return true;
    }

private:
    // "Default NAME options" marks the default; the line that had it keeps
    // its options as a "Dest" line, as lpoptions -d leaves them.
    static bool setDefaultInLpoptions(const QString& dir, const QString& path, const QString& name, QString* why)
    {
        QStringList lines;
        QFile in(path);
        if (in.exists()) {
            if (!in.open(QIODevice::ReadOnly)) {
                *why = in.errorString();
                return false;
            }
            lines = QString::fromUtf8(in.readAll()).split(u'\n', Qt::SkipEmptyParts);
        }
        bool found = false;
        for (QString& line : lines) {
            const QString keyword = line.section(u' ', 0, 0, QString::SectionSkipEmpty);
            if (keyword.compare(QLatin1String("Default"), Qt::CaseInsensitive) != 0 &&
                keyword.compare(QLatin1String("Dest"), Qt::CaseInsensitive) != 0)
                continue;
            const QString dest = line.section(u' ', 1, 1, QString::SectionSkipEmpty);
            const QString rest = line.section(u' ', 2, -1, QString::SectionSkipEmpty);
            const bool chosen = dest == name;
            found = found || chosen;
            line = (chosen ? QStringLiteral("Default ") : QStringLiteral("Dest ")) + dest +
                   (rest.isEmpty() ? QString() : u' ' + rest);
        }
        if (!found) lines << QStringLiteral("Default ") + name;
        if (!QDir().mkpath(dir)) {
            *why = QStringLiteral("the folder cannot be made");
            return false;
        }
        QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QSaveFile out(path);
        if (!out.open(QIODevice::WriteOnly)) {
            *why = out.errorString();
            return false;
        }
        out.write((lines.join(u'\n') + u'\n').toUtf8());
        if (!out.commit()) {
            *why = out.errorString();
            return false;
        }
        return true;
    }
};

class Programs final : public pf::IPrograms {
public:
    bool exists(const QString& program) override
    {
        if (program.isEmpty()) return false;
        if (program.contains(u'/')) {
            const QFileInfo fi(program);
            return fi.isFile() && fi.isExecutable();
        }
        return !QStandardPaths::findExecutable(program).isEmpty();
    }

    bool start(const QString& program, const QStringList& args, QString* error) override
    {
        if (!exists(program)) return fail(error, notFound(program));
        QProcess p;
        p.setProgram(program);
        p.setArguments(args);
        if (p.startDetached()) return true;
        return fail(error, cannotStart(program, p.errorString()));
    }

    bool runAndWait(const QString& program, const QStringList& args, QString* error) override
    {
        if (!exists(program)) return fail(error, notFound(program));
        QProcess p;
        p.setProcessChannelMode(QProcess::ForwardedChannels);
        QEventLoop loop;
        QObject::connect(&p, &QProcess::finished, &loop, &QEventLoop::quit);
        QObject::connect(&p, &QProcess::errorOccurred, &loop, [&](QProcess::ProcessError e) {
            if (e == QProcess::FailedToStart) loop.quit();
        });
        p.start(program, args);
        // A failure to start may be reported before the loop runs.
        if (p.state() != QProcess::NotRunning) loop.exec();
        if (p.error() == QProcess::FailedToStart) return fail(error, cannotStart(program, p.errorString()));
        if (p.exitStatus() == QProcess::CrashExit)
            return fail(error, QStringLiteral("%1 ended abnormally.").arg(program));
        return true;
    }

private:
    static bool fail(QString* error, const QString& why)
    {
        if (error) *error = why;
        return false;
    }
    static QString notFound(const QString& program)
    {
        return QStringLiteral("The program %1 was not found.").arg(program);
    }
    static QString cannotStart(const QString& program, const QString& why)
    {
        return QStringLiteral("The program %1 could not be started: %2").arg(program, why);
    }
};

class Desktop final : public pf::IDesktop {
public:
    bool openUrl(const QUrl& url) override { return QDesktopServices::openUrl(url); }
};

}  // namespace

struct pf::SystemServices::Impl {
    Clock clock;
    Printers printers;
    Programs programs;
    Desktop desktop;
};

pf::SystemServices::SystemServices() : d(std::make_unique<Impl>()) {}

pf::SystemServices::~SystemServices()
{
    // Never leave the installed services pointing at freed objects.
    if (services().clock == &d->clock) {
        Services s = services();
        s.clock = nullptr;
        s.printers = nullptr;
        s.programs = nullptr;
        s.desktop = nullptr;
        install(s);
    }
}

void pf::SystemServices::fill(Services& s) const
{
    s.clock = &d->clock;
    s.printers = &d->printers;
    s.programs = &d->programs;
    s.desktop = &d->desktop;
}

namespace jk::platform {

QueueState queueState(const QString& printer)
{
    QueueState state;
    const QByteArray queue = printer.section(u'/', 0, 0).toUtf8();
    const QByteArray instance = printer.section(u'/', 1).toUtf8();
    cups_dest_t* dests = nullptr;
    const int count = cupsGetDests(&dests);
    if (cups_dest_t* dest = cupsGetDest(queue.constData(), instance.isEmpty() ? nullptr : instance.constData(), count, dests)) {
        const char* accepting = cupsGetOption("printer-is-accepting-jobs", dest->num_options, dest->options);
        // Servers that do not say are taken to accept.
        state.accepting = !accepting || qstrcmp(accepting, "false") != 0;
        if (!state.accepting) {
            const char* why = cupsGetOption("printer-state-message", dest->num_options, dest->options);
            state.reason = why && *why ? QString::fromUtf8(why) : QStringLiteral("the queue rejects jobs");
        }
    } else {
        state.reason = QStringLiteral("no such printer");
    }
    cupsFreeDests(count, dests);
    return state;
}

bool jobSubmitted(const QString& printer, const QString& title, qint64 since)
{
    const QByteArray queue = printer.section(u'/', 0, 0).toUtf8();
    cups_job_t* jobs = nullptr;
    const int count = cupsGetJobs2(CUPS_HTTP_DEFAULT, &jobs, queue.constData(), 1, CUPS_WHICHJOBS_ALL);
    bool found = false;
    for (int i = 0; i < count && !found; ++i)
        found = jobs[i].creation_time >= since && QString::fromUtf8(jobs[i].title) == title;
    cupsFreeJobs(count, jobs);
    return found;
}

}  // namespace jk::platform
