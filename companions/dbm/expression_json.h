/// Expression databases as JSON: definitions, and what the user keeps.
#pragma once

#include "expressions.h"
#include "json_text.h"

#include <string>
#include <vector>

namespace dbm {

constexpr int32_t kOwnDatabase = 1;
constexpr int32_t kLastDatabase = 255;

/// Where the icon file of an item is kept for the user. Made of numbers only: what a host or a file calls an item never
/// becomes part of a path.
std::string KeptIconFile(const std::string& userFolder, const Database& database, const Item& item);

/// A database with icon files in `folder`. Fails with DBM_FILE_ERROR.
Database ReadDefinition(const Json& file, const std::string& folder);
/// Adds databases and items of the user's. False when some of it makes no sense and is left out.
bool ReadUserExpressions(const Json& file, const std::string& userFolder, std::vector<Database>& databases);
Json UserExpressionsToJson(const std::vector<Database>& databases);

} // namespace dbm
