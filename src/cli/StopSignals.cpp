#include "cli/StopSignals.h"

#include <QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace kx::cli {

namespace {

// [0] is written by the handler, [1] read by the notifier.
int g_pair[2] = {-1, -1};

extern "C" void onStopSignal(int signal) {
    const int saved = errno;
    const char number = static_cast<char>(signal);
    // A full pair drops the byte: a stop is already pending then.
    [[maybe_unused]] const ssize_t written = ::write(g_pair[0], &number, 1);
    errno = saved;
}

void handle(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

} // namespace

StopSignals::StopSignals(QObject* parent)
    : QObject(parent) {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, g_pair) != 0)
        return; // without the pair the signals keep their default action: the process ends
    for (const int fd : g_pair)
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    m_notifier = new QSocketNotifier(g_pair[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &StopSignals::readPending);
    handle(SIGINT, onStopSignal);
    handle(SIGTERM, onStopSignal);
}

StopSignals::~StopSignals() {
    if (!m_notifier)
        return;
    handle(SIGINT, SIG_DFL);
    handle(SIGTERM, SIG_DFL);
    delete m_notifier;
    for (int& fd : g_pair) {
        ::close(fd);
        fd = -1;
    }
}

void StopSignals::readPending() {
    char number = 0;
    while (::read(g_pair[1], &number, 1) == 1)
        Q_EMIT received(number);
}

} // namespace kx::cli
