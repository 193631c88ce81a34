#include "platform/Ghostscript.h"
#include <QCoreApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <memory>
#include <vector>

namespace jk::platform {

namespace {

// Ghostscript's first message line, else its exit code.
QString failure(QProcess& p)
{
    const QStringList lines = QString::fromLocal8Bit(p.readAllStandardError()).split(u'\n', Qt::SkipEmptyParts);
    for (const QString& line : lines)
        if (!line.trimmed().isEmpty()) return line.trimmed();
    if (p.exitStatus() != QProcess::NormalExit) return QStringLiteral("gs stopped unexpectedly");
    return QStringLiteral("gs ended with exit code %1").arg(p.exitCode());
}

}  // namespace

GhostscriptResult convertPdfToEps(const QList<EpsConversion>& jobs, int pictureDpi, int timeLimitMs)
{
    const QString gs = QStandardPaths::findExecutable(QStringLiteral("gs"));
    if (gs.isEmpty()) return {GhostscriptResult::Missing, {}};
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("GS_OPTIONS"));  // could carry -dNOSAFER

    QStringList options = {QStringLiteral("-q"), QStringLiteral("-dSAFER"), QStringLiteral("-dBATCH"),
                           QStringLiteral("-dNOPAUSE"), QStringLiteral("-sDEVICE=eps2write"),
                           QStringLiteral("-dNoOutputFonts")};
    if (pictureDpi > 0)
        for (const char* kind : {"Color", "Gray"})
            options << QStringLiteral("-dDownsample%1Images=true").arg(QLatin1String(kind))
                    << QStringLiteral("-d%1ImageDownsampleType=/Bicubic").arg(QLatin1String(kind))
                    << QStringLiteral("-d%1ImageResolution=%2").arg(QLatin1String(kind)).arg(pictureDpi);
    std::vector<std::unique_ptr<QProcess>> running;
    for (const EpsConversion& job : jobs) {
        auto p = std::make_unique<QProcess>();
        p->setProcessEnvironment(env);
        p->setStandardInputFile(QProcess::nullDevice());
        p->setStandardOutputFile(QProcess::nullDevice());
        QString out = job.eps;
        out.replace(u'%', QStringLiteral("%%"));  // gs reads %d and friends in file names
        p->start(gs, options + QStringList{QStringLiteral("-sOutputFile=") + out, QStringLiteral("-f"),
                                           QFileInfo(job.pdf).absoluteFilePath()});
        running.push_back(std::move(p));
    }

    GhostscriptResult result{GhostscriptResult::Done, {}};
    QElapsedTimer clock;
    clock.start();
    for (std::size_t i = 0; i < running.size() && result.status == GhostscriptResult::Done; ++i) {
        QProcess& p = *running[i];
        // A quick one may have ended already, while another was waited for.
        if (p.state() == QProcess::Starting) p.waitForStarted(std::max(1000, timeLimitMs));
        if (p.error() == QProcess::FailedToStart) {
            result = {GhostscriptResult::Failed, p.errorString()};
            break;
        }
        // Waiting on one process in slices lets the others' error output drain too.
        while (p.state() != QProcess::NotRunning) {
            if (clock.elapsed() >= timeLimitMs) {
                result = {GhostscriptResult::TimedOut, QStringLiteral("%1 s").arg(timeLimitMs / 1000.0)};
                break;
            }
            for (auto& other : running)
                if (other.get() != &p && other->state() == QProcess::Running) other->waitForFinished(0);
            p.waitForFinished(int(std::min<qint64>(50, timeLimitMs - clock.elapsed())));
            // Windows keep painting meanwhile; input waits.
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        }
        if (result.status != GhostscriptResult::Done) break;
        if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
            result = {GhostscriptResult::Failed, failure(p)};
        else if (QFileInfo(jobs[qsizetype(i)].eps).size() <= 0)
            result = {GhostscriptResult::Failed, QStringLiteral("gs wrote no EPS file")};
    }
    if (result.status == GhostscriptResult::Done) return result;
    for (auto& p : running) {
        if (p->state() != QProcess::NotRunning) {
            p->kill();
            p->waitForFinished(5000);
        }
    }
    return result;
}

}  // namespace jk::platform
