#pragma once

#include <string_view>

namespace torv::songs {

/// The number at a text's beginning; `otherwise` when there is none, or none that is finite. Nothing depends on the
/// system's language.
double NumberOf(std::string_view text, double otherwise);
int WholeNumberOf(std::string_view text, int otherwise);

} // namespace torv::songs
