#pragma once

#include "torv/platform/system.h"

#include <atomic>

namespace torv {

/// A header's flags as its device has left them. A thread that polls for WHDR_DONE reads them here: what the device
/// did before it set the flag has then happened.
inline DWORD HeaderFlags(const WAVEHDR& header) {
    return std::atomic_ref<DWORD>(const_cast<DWORD&>(header.dwFlags)).load(std::memory_order_acquire);
}

} // namespace torv
