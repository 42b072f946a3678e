#pragma once

#include "failure.h"

#include <string>

namespace torv::c {

/// Where a text goes that a call gives out.
struct OutText {
    char* buffer;
    size_t capacity;
    size_t* needed;
};

/// Throws Failure when the buffer is too small, which has been told then.
void Give(const std::string& text, const OutText& out);

/// A text that is taken in; throws Failure for null and for what is no UTF-8.
std::string Taken(const char* text, const char* name);
/// The same where null stands for "".
std::string TakenOrEmpty(const char* text, const char* name);

/// A path as the library's files take it. Throws Failure for one that this system cannot tell them.
std::string TakenPath(const char* path);

/// Throws Failure unless `index` is below `count`.
void CheckIndex(size_t index, size_t count, const char* what);

} // namespace torv::c
