#pragma once

#include <chrono>
#include <string>

/// A line on the terminal with the share done and the time left; nothing at all when standard error is no terminal or
/// `quiet` is set. Drawn at most ten times a second, and wiped when the work is over.
class Progress {
public:
    Progress(std::string what, bool quiet);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(double done, double total);

private:
    std::string m_what;
    bool m_visible;
    bool m_drawn = false;
    std::chrono::steady_clock::time_point m_start;
    std::chrono::steady_clock::time_point m_last;
};
