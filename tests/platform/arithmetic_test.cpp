#include "torv/platform/arithmetic.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

} // namespace

TEST_CASE("MulDiv: a 64-bit product, to the nearest, halves away from zero; -1 without a divisor or beyond 32 bits") {
    std::mt19937 random(20031222);
    std::uniform_int_distribution<int> any(-kMax, kMax);
    std::uniform_int_distribution<int> small(-9, 9);
    int differences = 0;
    for (int n = 0; n < 200000; ++n) {
        const int a = n % 2 ? any(random) : small(random);
        const int b = n % 3 ? small(random) : any(random);
        const int c = n % 5 ? small(random) : any(random);
        // std::round goes away from zero, and a long double holds every quotient's half exactly enough.
        const long double exact = std::round(static_cast<long double>(a) * b / (c ? c : 1));
        const int expected = c == 0 || std::abs(exact) > kMax ? -1 : static_cast<int>(exact);
        differences += torv::MulDiv(a, b, c) != expected;
#if defined(_WIN32)
        differences += ::MulDiv(a, b, c) != expected;
#endif
    }
    CHECK(differences == 0);
    CHECK(torv::MulDiv(kMin, 1, 2) == kMin / 2);
    CHECK(torv::MulDiv(kMax, 1, 1) == kMax);
    CHECK(torv::MulDiv(kMin, 1, 1) == -1); // a magnitude that has no positive counterpart is refused
}

TEST_CASE("truncation goes toward zero, stays in range, and takes NaN for 0") {
    const double infinity = std::numeric_limits<double>::infinity();
    CHECK(torv::TruncateToLong(2.999) == 2);
    CHECK(torv::TruncateToLong(-2.999) == -2);
    CHECK(torv::TruncateToLong(2147483646.9) == 2147483646);
    CHECK(torv::TruncateToLong(2147483647.5) == kMax);
    CHECK(torv::TruncateToLong(-2147483648.9) == kMin);
    CHECK(torv::TruncateToLong(-infinity) == kMin);
    CHECK(torv::TruncateToLong(std::nan("")) == 0);
    CHECK(torv::TruncateToInt64(-1234567890123.75) == -1234567890123LL);
    CHECK(torv::TruncateToInt64(9223372036854775808.0) == std::numeric_limits<long long>::max()); // 2^63
    CHECK(torv::TruncateToInt64(-infinity) == std::numeric_limits<long long>::min());
    CHECK(torv::TruncateToInt64(std::nan("")) == 0);
}
