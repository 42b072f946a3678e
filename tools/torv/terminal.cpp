#include "terminal.h"

namespace {

constexpr size_t kUsualWidth = 80;

} // namespace

#ifdef _WIN32
#include "torv/platform/system.h"

#include <io.h>

bool IsTerminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }

size_t TerminalWidth(std::FILE* stream) {
    CONSOLE_SCREEN_BUFFER_INFO about{};
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    return GetConsoleScreenBufferInfo(handle, &about) && about.dwSize.X > 0 ? static_cast<size_t>(about.dwSize.X)
                                                                            : kUsualWidth;
}
#else
#include <sys/ioctl.h>
#include <unistd.h>

bool IsTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

size_t TerminalWidth(std::FILE* stream) {
    winsize size{};
    return ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualWidth;
}
#endif

std::string FittingLine(const std::vector<std::string>& pieces, size_t columns) {
    const size_t most = columns > 0 ? columns - 1 : 0;
    std::string line = pieces.front().substr(0, most);
    for (size_t i = 1; i < pieces.size() && line.size() + pieces[i].size() <= most; ++i)
        line += pieces[i];
    return line;
}
