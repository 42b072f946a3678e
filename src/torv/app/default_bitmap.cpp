#include "torv/platform/platform.h"

// On Windows the same bitmap is in the module's resources.
#if !defined(_WIN32)
namespace {

constexpr BYTE kDefaultButton[] = {
#include "default_button.inc"
};
constexpr torv::BitmapEntry kBitmaps[] = {{1000, kDefaultButton}};

const torv::BitmapTable g_bitmaps(kBitmaps);

} // namespace
#endif
