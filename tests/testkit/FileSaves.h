#pragma once

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

// Counts the saves of one file as the system saw them: an atomic save either creates the file
// or moves a new one over it, so each save is one such event on its name in its folder. The
// events queue up as the saves happen and are read only when asked: nothing waits. The folder
// must exist when counting starts.
class FileSaves {
public:
    explicit FileSaves(const QString& path)
        : m_name(QFile::encodeName(QFileInfo(path).fileName()))
        , m_fd(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        if (m_fd >= 0)
            inotify_add_watch(m_fd, QFile::encodeName(QFileInfo(path).absolutePath()).constData(),
                              IN_CREATE | IN_MOVED_TO);
    }
    ~FileSaves() {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    FileSaves(const FileSaves&) = delete;
    FileSaves& operator=(const FileSaves&) = delete;

    bool watching() const { return m_fd >= 0; }

    // The saves since the last call (or since counting started); -1 when nothing is watched.
    int take() {
        if (m_fd < 0)
            return -1;
        int saves = 0;
        alignas(inotify_event) char buffer[16384];
        for (;;) {
            const ssize_t size = ::read(m_fd, buffer, sizeof buffer);
            if (size <= 0)
                return saves;
            for (ssize_t at = 0; at < size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
                if (event->len > 0 && m_name == event->name)
                    ++saves;
                at += ssize_t(sizeof(inotify_event) + event->len);
            }
        }
    }

private:
    QByteArray m_name;
    int m_fd;
};
