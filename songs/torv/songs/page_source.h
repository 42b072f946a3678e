#pragma once

#include <string_view>

namespace torv::songs {

/// The report's page before its data: songs/page/page.html with its style and script in it, put here by the build.
extern const std::string_view kPageBeforeData;
extern const std::string_view kPageAfterData;

} // namespace torv::songs
