#pragma once

#include <string>
#include <vector>

/// All bytes of a file; throws InputError when it cannot be read.
std::vector<unsigned char> ReadInputFile(const std::string& path);
