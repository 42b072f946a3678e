#pragma once

#include "torv/platform/posix/multimedia.h"

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

/// What the calls for MIDI outputs and those for wave outputs share.
namespace torv {

constexpr UINT_PTR kMapper = 0xFFFFFFFF;

/// Stands for the first device of the list, however wide the caller's number is.
constexpr bool IsMapper(UINT_PTR number) { return number == kMapper || number == static_cast<UINT_PTR>(-1); }

/// The device of this number; null when there is none.
template <class Device>
std::shared_ptr<Device> DeviceAt(const std::vector<std::shared_ptr<Device>>& devices, UINT_PTR number) {
    if (IsMapper(number))
        return devices.front();
    return number < devices.size() ? devices[number] : nullptr;
}

/// What is open, by handle. Handles are never used twice.
template <class Handle, class Open>
class OpenOutputs {
public:
    Handle NewHandle() {
        const std::lock_guard lock(m_mutex);
        return reinterpret_cast<Handle>(++m_lastHandle);
    }
    void Add(Handle handle, std::shared_ptr<Open> open) {
        const std::lock_guard lock(m_mutex);
        m_open.emplace(handle, std::move(open));
    }
    void Remove(Handle handle) {
        const std::lock_guard lock(m_mutex);
        m_open.erase(handle);
    }
    std::shared_ptr<Open> Find(Handle handle) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_open.find(handle);
        return found != m_open.end() ? found->second : nullptr;
    }

private:
    std::mutex m_mutex;
    std::unordered_map<Handle, std::shared_ptr<Open>> m_open;
    ULONG_PTR m_lastHandle = 0xFFFF;
};

/// The text of an error that is not of one kind of device alone; empty for any other number. `kind` stands in it.
std::string OutputErrorText(MMRESULT error, const char* kind);
/// Cut to the size with its NUL; MMSYSERR_BADERRNUM for an empty text.
MMRESULT CopyErrorText(const std::string& found, LPSTR text, UINT size);

} // namespace torv
