#pragma once

#include <QLockFile>
#include <QString>

namespace kx {

// Keeps the program to one running instance per user through a lock file. The lock names the
// process that holds it, so a lock left behind by a crashed run is recognised as stale and
// taken over instead of blocking every later start.
class SingleInstance {
public:
    // The lock file every run of the program uses: in the user's runtime folder.
    static QString defaultLockPath();

    explicit SingleInstance(const QString& lockPath = defaultLockPath());

    // True when this process now holds the lock (or already held it); false when another
    // running process holds it. Never waits.
    bool tryAcquire();

private:
    QLockFile m_lock;
};

} // namespace kx
