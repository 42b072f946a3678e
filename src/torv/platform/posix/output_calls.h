#pragma once

#include "torv/platform/or_fail.h"
#include "torv/platform/posix/multimedia.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

/// What the calls for MIDI outputs and those for wave outputs share.
namespace torv {

constexpr UINT_PTR kMapper = 0xFFFFFFFF;

/// Stands for the first device of the list, however wide the caller's number is.
constexpr bool IsMapper(UINT_PTR number) { return number == kMapper || number == static_cast<UINT_PTR>(-1); }

/// The devices that the host added, with those of the system and the one that is always there behind them.
template <class Device>
class DeviceList {
public:
    using Devices = std::vector<std::shared_ptr<Device>>;

    explicit DeviceList(std::shared_ptr<Device> last) : m_last(std::move(last)) {}
    void Add(std::shared_ptr<Device> device) {
        const std::lock_guard lock(m_mutex);
        if (device)
            m_added.push_back(std::move(device));
    }
    void Remove(const Device* device) {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_added, [&](const auto& candidate) { return candidate.get() == device; });
    }
    Devices With(const Devices& offered) const {
        const std::lock_guard lock(m_mutex);
        Devices devices = m_added;
        devices.insert(devices.end(), offered.begin(), offered.end());
        devices.push_back(m_last);
        return devices;
    }

private:
    mutable std::mutex m_mutex;
    Devices m_added;
    const std::shared_ptr<Device> m_last;
};

/// How many devices `list` answers, and the one of a number; 0 and null when there is none, or no memory to ask.
template <class List>
UINT CountDevices(List list) {
    return OrFail(0u, [&] { return static_cast<UINT>(list().size()); });
}
template <class List>
auto FindDevice(List list, UINT_PTR number) {
    using Found = typename decltype(list())::value_type;
    return OrFail(Found(), [&] {
        const auto devices = list();
        if (IsMapper(number))
            return devices.front();
        return number < devices.size() ? devices[number] : nullptr;
    });
}

/// Headers on their way, chained through themselves. Not guarded.
template <class Header>
class HeaderQueue {
public:
    bool IsEmpty() const { return !m_first; }
    void Append(Header& header) {
        header.lpNext = nullptr;
        (m_first ? m_last->lpNext : m_first) = &header;
        m_last = &header;
    }
    Header& TakeFirst() {
        Header& header = *m_first;
        m_first = header.lpNext;
        header.lpNext = nullptr;
        return header;
    }
    void RemoveLast() {
        Header* before = m_first == m_last ? nullptr : m_first;
        while (before && before->lpNext != m_last)
            before = before->lpNext;
        (before ? before->lpNext : m_first) = nullptr;
        m_last = before;
    }

private:
    Header* m_first = nullptr;
    Header* m_last = nullptr;
};

/// What is open, by handle. Handles are never used twice.
template <class Handle, class Output>
class OpenOutputs {
public:
    /// Makes an output of a handle and `make`'s arguments, opens it and tells it `message`. With `isAlone` the device
    /// must not be open already: MMSYSERR_ALLOCATED.
    template <class... Arguments>
    MMRESULT Open(Handle* handle, UINT message, bool isAlone, const Arguments&... arguments) {
        const Handle fresh = NewHandle();
        std::shared_ptr<Output> open;
        const MMRESULT result = OrFail(MMSYSERR_NOMEM, [&] {
            open = std::make_shared<Output>(fresh, arguments...);
            return Add(fresh, open, isAlone) ? open->Open() : MMSYSERR_ALLOCATED;
        });
        if (result != MMSYSERR_NOERROR) {
            Remove(fresh);
            return result;
        }
        *handle = fresh;
        open->Tell(message, 0);
        return result;
    }
    MMRESULT Close(Handle handle, UINT message) {
        const auto open = Find(handle);
        const MMRESULT result = open ? open->Close() : MMSYSERR_INVALHANDLE;
        if (result == MMSYSERR_NOERROR) {
            Remove(handle);
            open->Tell(message, 0);
        }
        return result;
    }
    template <class Call, class... Arguments>
    MMRESULT On(Handle handle, Call call, const Arguments&... arguments) {
        const auto open = Find(handle);
        return open ? ((*open).*call)(arguments...) : MMSYSERR_INVALHANDLE;
    }
    template <class Call, class Header>
    MMRESULT OnHeader(Handle handle, Call call, Header* header, UINT size) {
        const auto open = Find(handle);
        if (!open)
            return MMSYSERR_INVALHANDLE;
        if (!header || (!header->lpData && header->dwBufferLength > 0) || size < sizeof(Header))
            return MMSYSERR_INVALPARAM;
        return ((*open).*call)(*header);
    }

private:
    std::shared_ptr<Output> Find(Handle handle) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_open.find(handle);
        return found != m_open.end() ? found->second : nullptr;
    }
    Handle NewHandle() {
        const std::lock_guard lock(m_mutex);
        return reinterpret_cast<Handle>(++m_lastHandle);
    }
    /// A device is in use from before it opens until after it closed.
    bool Add(Handle handle, std::shared_ptr<Output> open, bool isAlone) {
        const std::lock_guard lock(m_mutex);
        const auto isSame = [&](const auto& other) { return other.second->Device() == open->Device(); };
        if (isAlone && std::any_of(m_open.begin(), m_open.end(), isSame))
            return false;
        m_open.emplace(handle, std::move(open));
        return true;
    }
    void Remove(Handle handle) {
        const std::lock_guard lock(m_mutex);
        m_open.erase(handle);
    }

    std::mutex m_mutex;
    std::unordered_map<Handle, std::shared_ptr<Output>> m_open;
    ULONG_PTR m_lastHandle = 0xFFFF;
};

} // namespace torv
