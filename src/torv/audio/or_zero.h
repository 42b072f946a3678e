#pragma once

#include <new>

namespace torv {

/// What `work` answers; 0 when memory is refused on the way.
template <class Work>
int OrZero(Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

} // namespace torv
