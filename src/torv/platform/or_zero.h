#pragma once

#include <new>

namespace torv {

/// What `work` answers; 0 or null when memory is refused on the way.
template <class Work>
auto OrZero(Work work) -> decltype(work()) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

/// The other way about: throws std::bad_alloc for an answer of 0 or null.
template <class Answer>
void OrBadAlloc(const Answer& answer) {
    if (!answer)
        throw std::bad_alloc();
}

} // namespace torv
