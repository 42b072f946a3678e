/// A place in an array, from a number that is counted with a sign.
#pragma once

#include <cstddef>

namespace rve {

constexpr std::size_t Place(int index) { return static_cast<std::size_t>(index); }

} // namespace rve
