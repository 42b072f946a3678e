/// How an edit that comes to nothing ends: with a status, up to the entry point.
#pragma once

#include "vedit_abi.h"

namespace vedit {

struct Failure {
    int32_t status;
};

[[noreturn]] inline void Fail(int32_t status) { throw Failure{status}; }

inline void Require(bool condition, int32_t status) {
    if (!condition)
        Fail(status);
}

} // namespace vedit
