#pragma once

namespace torv {

/// A member that belongs to its object alone: a copy begins with a fresh one.
template <class T>
struct PerObject : T {
    PerObject() = default;
    PerObject(const PerObject& /*other*/) : T() {}
    PerObject& operator=(const PerObject& /*other*/) { return *this; }
    ~PerObject() = default;
};

} // namespace torv
