#pragma once

#include <csignal>
#include <sys/resource.h>

// While alive, no write of this process may take a file beyond `bytes`: such writes fail
// (SIGXFSZ stays ignored from the first use on). Makes a save fail even for a test that runs as
// root.
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
