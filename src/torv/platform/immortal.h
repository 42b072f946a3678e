#pragma once

#include <cstddef>
#include <new>

namespace torv {

/// The one object of its type, made when first asked for and never destroyed: threads, timers and static objects may
/// ask for it after others of its kind are gone. Its own place needs no memory.
template <class Type>
Type& Immortal() {
    alignas(Type) static std::byte place[sizeof(Type)];
    static Type& object = *new (place) Type;
    return object;
}

} // namespace torv
