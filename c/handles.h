#pragma once

#include "failure.h"

#include <atomic>
#include <cstdint>
#include <memory>

/// What handles name. A handle is no address but the number of a slot and of its use, so that one that was freed, or
/// never was, is told from a good one whatever it is.
namespace torv::c {

enum class Kind : uint8_t { None, Song, Databases, Score, Sound, Player };

/// What a handle names; its class has a `kKind`.
class Object {
public:
    virtual ~Object() = default;
};

/// A slot in use by a call. Nothing waits: what another call has is refused.
class Claim {
public:
    /// A player is steered and read by two threads at once, anything else is used by one call.
    enum class Use : uint8_t { Control, Read };

    /// Throws Failure: TORV_BAD_HANDLE or TORV_BUSY. No lock and no allocation unless it does.
    Claim(const void* handle, Kind kind, Use use);
    ~Claim();
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;

    Object& Get() const { return *m_object; }

private:
    void* m_slot = nullptr;
    Object* m_object = nullptr;
    Use m_use;
};

/// The object of a handle while a call uses it.
template <class T>
class Held {
public:
    explicit Held(const void* handle, Claim::Use use = Claim::Use::Control) : m_claim(handle, T::kKind, use) {}
    T& operator*() const { return static_cast<T&>(m_claim.Get()); }
    T* operator->() const { return &**this; }

private:
    Claim m_claim;
};

/// A handle for a new object. Throws Failure when there are too many.
void* AddObject(std::unique_ptr<Object> object, Kind kind);
/// Takes an object from its handle; null for a null handle. Throws Failure.
std::unique_ptr<Object> TakeObject(const void* handle, Kind kind);

/// Gives a new object out.
template <class Handle, class T>
void GiveOut(Handle** out, std::unique_ptr<T> object) {
    *out = static_cast<Handle*>(AddObject(std::move(object), T::kKind));
}

} // namespace torv::c
