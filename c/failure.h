#pragma once

#include "torv/c/torv.h"

#include <string>

namespace torv::c {

/// Why a call cannot be done; its guard makes the answer of it.
struct Failure {
    torv_status status;
    std::string text;
};

/// Answers `failure`'s status and keeps its text for this thread.
torv_status Tell(torv_status status, const std::string& text) noexcept;
/// The answer for whatever is being thrown.
torv_status TellCurrent() noexcept;

/// What every call is: nothing is thrown across it.
template <class Work>
torv_status Guard(Work work) noexcept {
    try {
        work();
        return TORV_OK;
    } catch (...) {
        return TellCurrent();
    }
}

/// For pointers to what a call gives out or takes.
template <class T>
T& Need(T* pointer, const char* name) {
    if (!pointer)
        throw Failure{TORV_BAD_ARGUMENT, std::string(name) + " is null"};
    return *pointer;
}

} // namespace torv::c
