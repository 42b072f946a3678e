#include "torv/platform/arithmetic.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

struct Row {
    int a, b, c, expected;
};

} // namespace

TEST_CASE("MulDiv: a 64-bit product, nearest, halves away from zero in every combination of signs") {
    const Row rows[] = {
        {7, 1, 2, 4},
        {-7, 1, 2, -4},
        {7, -1, 2, -4},
        {7, 1, -2, -4}, // 3.5
        {-7, -1, 2, 4},
        {-7, 1, -2, 4},
        {-7, -1, -2, -4},
        {1, 1, 3, 0},
        {2, 1, 3, 1},
        {-1, 1, 3, 0},
        {-2, 1, 3, -1}, // thirds
        {0, 5, 7, 0},
        {0, 5, -7, 0},
        {kMax, kMax, kMax, kMax},
        {65536, 65535, 2, 2147450880}, // 65536 x 65535 = 4294901760
        {kMin, 1, 2, -1073741824},     // half of -2147483648
        {5, 1, 0, -1},
        {0, 0, 0, -1},         // no divisor
        {65536, 65536, 2, -1}, // 2147483648: one too many
        {kMax, 2, 1, -1},
        {kMin, 1, 1, -1}, // a magnitude that has no positive counterpart is refused
    };
    for (const Row& row : rows) {
        CAPTURE(row.a);
        CAPTURE(row.b);
        CAPTURE(row.c);
        CHECK(torv::MulDiv(row.a, row.b, row.c) == row.expected);
#if defined(_WIN32)
        CHECK(::MulDiv(row.a, row.b, row.c) == row.expected);
#endif
    }
}

#if defined(_WIN32)
TEST_CASE("MulDiv: the system's answers for any numbers, small divisors and near halves included") {
    std::mt19937 random(20031222);
    std::uniform_int_distribution<int> any(-kMax, kMax);
    std::uniform_int_distribution<int> small(-1000, 1000);
    int differences = 0;
    for (int n = 0; n < 200000; ++n) {
        const int a = n % 2 ? any(random) : small(random);
        const int b = n % 3 ? small(random) : any(random);
        const int c = n % 5 ? small(random) : any(random);
        differences += torv::MulDiv(a, b, c) != ::MulDiv(a, b, c);
    }
    CHECK(differences == 0);
}
#endif

TEST_CASE("truncation goes toward zero, stays in range, and takes NaN for 0") {
    const double infinity = std::numeric_limits<double>::infinity();
    CHECK(torv::TruncateToLong(2.999) == 2);
    CHECK(torv::TruncateToLong(-2.999) == -2);
    CHECK(torv::TruncateToLong(2147483646.9) == 2147483646);
    CHECK(torv::TruncateToLong(2147483647.5) == kMax);
    CHECK(torv::TruncateToLong(-2147483648.9) == kMin);
    CHECK(torv::TruncateToLong(1e300) == kMax);
    CHECK(torv::TruncateToLong(-infinity) == kMin);
    CHECK(torv::TruncateToLong(std::nan("")) == 0);

    CHECK(torv::TruncateToInt64(-1234567890123.75) == -1234567890123LL);
    CHECK(torv::TruncateToInt64(9223372036854775808.0) == std::numeric_limits<long long>::max()); // 2^63
    CHECK(torv::TruncateToInt64(-9223372036854775808.0) == std::numeric_limits<long long>::min());
    CHECK(torv::TruncateToInt64(infinity) == std::numeric_limits<long long>::max());
    CHECK(torv::TruncateToInt64(std::nan("")) == 0);
}
