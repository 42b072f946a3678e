#include "progress.h"

#include "terminal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

using namespace std::chrono_literals;

constexpr auto kInterval = 100ms;
constexpr auto kBeforeEstimate = 500ms; // an earlier estimate would only jump about

} // namespace

Progress::Progress(std::string what, bool quiet)
    : m_what(std::move(what)), m_visible(!quiet && IsTerminal(stderr)), m_start(std::chrono::steady_clock::now()),
      m_last(m_start) {}

Progress::~Progress() {
    if (m_drawn)
        std::fputs("\r\033[K", stderr);
}

void Progress::Show(double done, double total) {
    const auto now = std::chrono::steady_clock::now();
    if (!m_visible || total <= 0 || now - m_last < kInterval)
        return;
    m_last = now;
    m_drawn = true;
    const double share = std::clamp(done / total, 0.0, 1.0);
    char text[32];
    std::snprintf(text, sizeof text, " %3d %%", static_cast<int>(share * 100));
    std::vector<std::string> pieces{m_what + text};
    const double elapsed = std::chrono::duration<double>(now - m_start).count();
    if (now - m_start > kBeforeEstimate && share > 0)
        pieces.push_back(", " + std::to_string(std::lround(elapsed / share * (1 - share))) + " s left");
    std::fprintf(stderr, "\r\033[K%s", FittingLine(pieces, TerminalWidth(stderr)).c_str());
    std::fflush(stderr);
}
