#pragma once
// One running program per user: the first instance holds a lock file in the
// runtime folder for its whole life; a later start finds it held and ends.
#include <QLockFile>
#include <QString>

class SingleInstance {
public:
    explicit SingleInstance(const QString& lockDir);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    // True when this instance now holds the lock (or already did). Never
    // waits: a lock held by a live process means another instance runs.
    bool tryAcquire();
    bool isHeld() const { return lock_.isLocked(); }
    void release();

private:
    QLockFile lock_;
};
