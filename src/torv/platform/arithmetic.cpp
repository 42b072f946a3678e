#include "torv/platform/arithmetic.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace torv {
namespace {

template <class Integer>
Integer Truncate(double value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(value))
        return 0;
    // Both ends as powers of two, which a double holds exactly; the type's greatest value may not be one.
    const double beyond = -static_cast<double>(Limits::min());
    if (value >= beyond)
        return Limits::max();
    if (value <= -beyond)
        return Limits::min();
    return static_cast<Integer>(value);
}

} // namespace

int MulDiv(int a, int b, int c) {
    if (c == 0)
        return -1;
    const long long product = static_cast<long long>(a) * b;
    const long long divisor = std::llabs(static_cast<long long>(c));
    const long long magnitude = (std::llabs(product) + divisor / 2) / divisor;
    if (magnitude > std::numeric_limits<int>::max())
        return -1;
    return static_cast<int>((product < 0) != (c < 0) ? -magnitude : magnitude);
}

LONG TruncateToLong(double value) { return Truncate<LONG>(value); }
long long TruncateToInt64(double value) { return Truncate<long long>(value); }

} // namespace torv
