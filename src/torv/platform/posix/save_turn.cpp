#include "torv/platform/save_turn.h"

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace torv {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kLongestWait{10};
constexpr std::chrono::milliseconds kPause{1};

/// The folder itself is locked: each opening of it counts apart, also within one process.
int OpenFolderOf(const char* path) {
    const char* const separator = std::strrchr(path, '/');
    const std::size_t length = separator ? static_cast<std::size_t>(separator - path) + 1 : 0;
    char folder[PATH_MAX];
    if (length + 2 > sizeof(folder))
        return -1;
    std::memcpy(folder, path, length);
    std::memcpy(folder + length, ".", 2);
    return open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

bool Lock(int folder) {
    const auto end = steady_clock::now() + kLongestWait;
    while (flock(folder, LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

} // namespace

SaveTurn::SaveTurn(const char* path) noexcept {
    const int folder = OpenFolderOf(path);
    if (folder == -1)
        return;
    if (Lock(folder))
        m_handle = folder;
    else
        close(folder);
}

SaveTurn::~SaveTurn() {
    if (IsHeld())
        close(static_cast<int>(m_handle));
}

} // namespace torv
