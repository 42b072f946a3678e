#pragma once

#include <atomic>

/// Plain fields that the player's timer and the host both touch while a sequence plays: each one alone is read and
/// written whole. They promise no order among each other.
namespace torv {

template <class T>
T ReadShared(const T& field) {
    return std::atomic_ref<T>(const_cast<T&>(field)).load(std::memory_order_relaxed);
}

template <class T>
void WriteShared(T& field, T value) {
    std::atomic_ref<T>(field).store(value, std::memory_order_relaxed);
}

} // namespace torv
