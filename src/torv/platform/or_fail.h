#pragma once

#include "torv/platform/system.h"

#include <new>
#include <system_error>

namespace torv {

/// What `call` answers, or `failed`, with the last error set, when memory or a thread cannot be had on the way.
template <class Result, class Call>
Result OrFail(Result failed, Call call) {
    try {
        return call();
    } catch (const std::bad_alloc&) {
    } catch (const std::system_error&) {
    }
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return failed;
}

} // namespace torv
