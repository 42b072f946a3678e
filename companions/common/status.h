/// How work that cannot be done ends: with a status, up to the entry point that was called. The statuses are those of
/// the library that uses this.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>

#if defined(_WIN32)
#define COMPANION_EXPORT extern "C" __declspec(dllexport)
#else
#define COMPANION_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace companion {

struct Failure {
    int32_t status;
};

[[noreturn]] inline void Fail(int32_t status) { throw Failure{status}; }

inline void Require(bool condition, int32_t status) {
    if (!condition)
        Fail(status);
}

/// The border between a library and its host: no exception passes it. 0 when the work succeeds.
template <typename Work>
int32_t Answer(Work work, int32_t noMemory, int32_t otherwise) noexcept {
    try {
        work();
        return 0;
    } catch (const Failure& failure) {
        return failure.status;
    } catch (const std::bad_alloc&) {
        return noMemory;
    } catch (...) {
        return otherwise;
    }
}

/// Writes a text into a host's buffer, cut to its size. Fails with `badBuffer` when there is none.
inline void CopyText(std::string_view text, char* buffer, int32_t size, int32_t badBuffer) {
    Require(buffer && size > 0, badBuffer);
    const size_t length = std::min(text.size(), static_cast<size_t>(size) - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
}

} // namespace companion
