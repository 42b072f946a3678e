#pragma once

#if !defined(_WIN32)
#include <csignal>
#include <sys/resource.h>

/// While it lives no file may grow past a size: the system refuses it as a full disk does.
class SmallDisk {
public:
    explicit SmallDisk(rlim_t room) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{room, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallDisk() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_before{};
};
#endif
