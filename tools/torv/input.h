#pragma once

#include <iosfwd>
#include <memory>
#include <string>

/// What the user names as an input: a file, or standard input as "-", which is read to its end at once, as any pipe is.
/// To read and to seek in. Throws SongError when a file cannot be opened, WrongUse when standard input is named a
/// second time.
std::unique_ptr<std::istream> OpenInput(const std::string& path);

/// The same for what is read from its beginning only: no more of it is taken than the reader asks for.
std::unique_ptr<std::istream> OpenSequentialInput(const std::string& path);

bool IsStandardInput(const std::string& path);
/// For messages.
std::string NameOfInput(const std::string& path);
