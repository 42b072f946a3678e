/// How work that cannot be done ends: with a status, up to the entry point that was called.
#pragma once

#include "dbm_abi.h"

namespace dbm {

struct Failure {
    int32_t status;
};

[[noreturn]] inline void Fail(int32_t status) { throw Failure{status}; }

inline void Require(bool condition, int32_t status) {
    if (!condition)
        Fail(status);
}

} // namespace dbm
