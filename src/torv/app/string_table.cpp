#include "torv/platform/string_table.h"

// On Windows the same texts are in the module's resources.
#if !defined(_WIN32)
namespace {

constexpr torv::StringEntry kStrings[] = {
#define TORV_STRING(id, text) {id, text},
#include "torv/app/string_table.inc"
#undef TORV_STRING
};

const torv::StringTable g_strings(kStrings);

} // namespace
#endif
