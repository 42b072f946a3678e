/// JSON as the library's files use it.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace dbm {

using Json = nlohmann::json;

/// A host's texts are bytes in whatever encoding it works in, and JSON is Unicode. Each byte becomes the code point of
/// its number, so that every text comes back as it was.
std::string ToJsonText(const std::string& bytes);

// Members of an entry, nothing when they are missing or make no sense.
std::optional<int64_t> Integer(const Json& entry, const char* key, int64_t least, int64_t most);
std::optional<std::string> Text(const Json& entry, const char* key);
/// A text that may be missing.
std::optional<std::string> OptionalText(const Json& entry, const char* key);
/// The entries of a list, none when it is missing.
const Json& List(const Json& entry, const char* key);

/// Reads what a person wrote or what came with the library. Fails with DBM_FILE_ERROR.
Json ReadJson(const std::string& path);

} // namespace dbm
