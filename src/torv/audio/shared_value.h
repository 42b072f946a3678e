#pragma once

#include <atomic>

namespace torv {

/// A number that one thread sets while another reads it. Copying copies the number, so that classes which hold such
/// values stay copyable; the copy is not atomic as a whole.
template <class T>
class Shared {
    static_assert(std::atomic<T>::is_always_lock_free, "a reader on an output thread must never wait");

public:
    Shared(T value = T()) : m_value(value) {} // implicit: it stands for a plain member
    Shared(const Shared& other) : m_value(other.Get()) {}
    Shared& operator=(const Shared& other) {
        Set(other.Get());
        return *this;
    }
    Shared& operator=(T value) {
        Set(value);
        return *this;
    }
    ~Shared() = default;

    operator T() const { return Get(); }
    T Get() const { return m_value.load(std::memory_order_acquire); }
    void Set(T value) { m_value.store(value, std::memory_order_release); }

private:
    std::atomic<T> m_value;
};

} // namespace torv
