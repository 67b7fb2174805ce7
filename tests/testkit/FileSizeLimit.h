#pragma once

#include <csignal>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// While alive, no write of this process may take a file beyond `bytes`: such writes stop short
// or fail, as on a full disk (SIGXFSZ stays ignored from the first use on). Makes a save fail
// even for a test that runs as root.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_saved);
        const rlimit limit{bytes, m_saved.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_saved); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_saved{};
};

// Runs `body` in a child process whose files may not grow beyond `bytes`, as a program on a
// nearly full disk; returns the child's exit status (what `body` returned), or -1 when it did
// not exit normally. The parent's own limits stay untouched.
inline int exitStatusUnderFileSizeLimit(rlim_t bytes, const std::function<int()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        const FileSizeLimit limit(bytes);
        _exit(body());
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}
