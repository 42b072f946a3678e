#include "torv/platform/replaced_file.h"

#include "torv/platform/replaced_file_system.h"

#include <array>
#include <atomic>
#include <memory>
#include <new>
#include <utility>

namespace torv {
namespace {

/// The names under way. A name belongs to whom it is taken out by: a signal handler that took one may still be reading
/// it, so its object leaves the memory alone, and it stays where it can be found.
std::array<std::atomic<char*>, 256> g_underWay{};
std::array<std::atomic<char*>, 256> g_removed{};
std::atomic<unsigned> g_count{0};

int Register(char* name) {
    for (std::size_t slot = 0; slot < g_underWay.size(); ++slot) {
        char* none = nullptr;
        if (g_underWay[slot].compare_exchange_strong(none, name))
            return static_cast<int>(slot);
    }
    return -1;
}

std::unique_ptr<char[]> NewName(const std::string& folder) {
    const std::string name =
        folder + "torv-" + std::to_string(replaced_file::ProcessNumber()) + "-" + std::to_string(++g_count) + ".new";
    auto copy = std::make_unique<char[]>(name.size() + 1);
    name.copy(copy.get(), name.size());
    return copy;
}

} // namespace

ReplacedFile::ReplacedFile(const char* path) noexcept {
    try {
        Begin(path ? path : "");
    } catch (const std::bad_alloc&) {
        Fail(replaced_file::kNoMemory);
    }
}

ReplacedFile::~ReplacedFile() { Discard(); }

bool ReplacedFile::Begin(const char* path) {
    replaced_file::Target target;
    if (const int error = replaced_file::FindTarget(path, target))
        return Fail(error);
    int error = 0;
    do {
        // Before the file is there: a signal finds its name at every moment.
        m_name = NewName(target.folder).release();
        m_slot = Register(m_name);
        error = replaced_file::CreateNew(m_name, target);
        if (error)
            Forget();
    } while (replaced_file::IsTaken(error)); // by another library of this process, or one that was killed
    m_target = std::move(target.path);
    m_isStraight = target.isStraight;
    return !error || Fail(error);
}

bool ReplacedFile::Fail(int error) noexcept {
    if (!m_error)
        m_error = error;
    return false;
}

bool ReplacedFile::Open() noexcept {
    if (!m_name || m_error)
        return false;
    const int error = m_handle == replaced_file::kNone ? replaced_file::Open(m_name, m_handle) : 0;
    return !error || Fail(error);
}

bool ReplacedFile::Write(const void* bytes, std::size_t count) noexcept {
    if (!Open())
        return false;
    const int error = replaced_file::Write(m_handle, static_cast<const char*>(bytes), count);
    return !error || Fail(error);
}

bool ReplacedFile::Seek(std::uint64_t position) noexcept {
    if (!Open())
        return false;
    const int error = replaced_file::Seek(m_handle, position);
    return !error || Fail(error);
}

int ReplacedFile::Close() noexcept {
    return m_handle == replaced_file::kNone ? 0 : replaced_file::Close(std::exchange(m_handle, replaced_file::kNone));
}

bool ReplacedFile::Commit() noexcept {
    if (const int error = Close())
        Fail(error);
    if (!m_name || m_error) {
        Discard();
        return false;
    }
    const auto put = m_isStraight ? replaced_file::Pour : replaced_file::Replace;
    const int error = put(m_name, m_target.c_str());
    if (error || m_isStraight) {
        Discard();
        return !error || Fail(error);
    }
    Forget();
    return true;
}

void ReplacedFile::Discard() noexcept {
    Close();
    if (!m_name)
        return;
    replaced_file::Remove(m_name);
    Forget();
}

void ReplacedFile::Forget() noexcept {
    char* const name = std::exchange(m_name, nullptr);
    const int slot = std::exchange(m_slot, -1);
    if (slot < 0 || g_underWay[static_cast<std::size_t>(slot)].exchange(nullptr) == name)
        delete[] name;
}

bool ReplacedFile::IsDiskFull() const noexcept { return replaced_file::IsDiskFull(m_error); }

void ReplacedFile::RemoveAllUnfinished() noexcept {
    for (std::size_t slot = 0; slot < g_underWay.size(); ++slot)
        if (char* const name = g_underWay[slot].exchange(nullptr)) {
            g_removed[slot] = name;
            replaced_file::Remove(name);
        }
}

} // namespace torv
