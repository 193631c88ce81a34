#include "platform/SingleInstance.h"
#include <QDir>

SingleInstance::SingleInstance(const QString& lockDir)
    : lock_(QDir(lockDir).filePath(QStringLiteral("jewlkit.lock")))
{
    // A lock is never stale by age, however long the first instance runs;
    // a lock left by a crashed process is still taken over because
    // QLockFile checks whether the recorded process is alive.
    lock_.setStaleLockTime(0);
}

SingleInstance::~SingleInstance() { release(); }

bool SingleInstance::tryAcquire()
{
    if (lock_.isLocked()) return true;
    return lock_.tryLock(0);
}

void SingleInstance::release()
{
    if (lock_.isLocked()) lock_.unlock();
}
