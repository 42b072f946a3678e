#pragma once

#include <stdexcept>

namespace editor {

/// What cannot be done: one line for the user (what, where, what to do), without a line end.
class EditorError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace editor
