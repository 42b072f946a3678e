#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace torv::songs {

/// Names for the voices of a staff from the staff's own: "S A", "Soprano / Alto" or "SATB" name each where they are as
/// many; else the first has the name and the others a number behind it. UTF-8.
std::vector<std::string> NamesOfVoices(const std::string& name, size_t voices);

} // namespace torv::songs
