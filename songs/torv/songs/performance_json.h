#pragma once

#include "torv/songs/performance.h"

#include <nlohmann/json.hpp>

namespace torv::songs {

/// What a JSON report says, and the page draws.
nlohmann::ordered_json DescribeAsJson(const Performance& performance);

} // namespace torv::songs
