#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

/// A file to read and to seek in; what cannot be sought in, as a pipe, is read whole first. Throws InputError when it
/// cannot be opened.
std::unique_ptr<std::istream> OpenInputFile(const std::string& path);

/// All bytes of a file; throws InputError when it cannot be read.
std::vector<unsigned char> ReadInputFile(const std::string& path);
