#include "torv/platform/text.h"

#include <doctest/doctest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <utility>

#include "values.h"

using torv::FindChar932;
using torv::FormatReal;
using torv::NextChar932;
using torv::ParseInteger;
using torv::ParseReal;

namespace {

std::string Printf(double value) {
    char digits[400];
    std::snprintf(digits, sizeof(digits), "%f", value);
    return digits;
}

} // namespace

TEST_CASE("ParseInteger reads blanks, a sign and digits, and stays at the ends of its range") {
    CHECK(Values(ParseInteger(" \t\r\n-42xyz"), ParseInteger("+7"), ParseInteger("007.9")) == "-42 7 7");
    CHECK(Values(ParseInteger("2147483647"), ParseInteger("2147483648")) == "2147483647 2147483647");
    CHECK(Values(ParseInteger("-2147483648"), ParseInteger("-99999999999999999999999")) == "-2147483648 -2147483648");
    for (const char* none : {"", "x1", "-", "+-1", "- 1", "\xA0-1", static_cast<const char*>(nullptr)})
        CHECK(ParseInteger(none) == 0);
}

TEST_CASE("ParseReal reads a decimal number, always finite") {
    const double most = std::numeric_limits<double>::max();
    const std::pair<std::string, double> rows[] = {{"  0.5,7", 0.5},
                                                   {"-.25e2rest", -25.0},
                                                   {"+3.", 3.0},
                                                   {"1e", 1.0}, // an exponent needs digits
                                                   {"2e+x", 2.0},
                                                   {"0x10", 0.0}, // decimal only: the number ends at the x
                                                   {"1e999", most},
                                                   {"-1e99999999999999", -most},
                                                   {"1" + std::string(400, '0'), most},
                                                   {"1e-999", 0.0},
                                                   {"0.0e999", 0.0},
                                                   {"0." + std::string(400, '0') + "1", 0.0}};
    for (const auto& [text, value] : rows) {
        CAPTURE(text);
        CHECK(ParseReal(text.c_str()) == value);
    }
    for (const char* none : {"", ".", "-", "e5", "inf", "nan", "-infinity", static_cast<const char*>(nullptr)})
        CHECK(ParseReal(none) == 0.0);
}

TEST_CASE("FormatReal writes the digits of %f for every finite value") {
    CHECK(FormatReal(0.5) == "0.500000");
    CHECK(FormatReal(-1.0 / 3) == "-0.333333");
    CHECK(FormatReal(0.0000005) == "0.000000"); // the double lies just below a half of the last place
    CHECK(FormatReal(0.0078125) == "0.007812"); // a true half, 0.0078125 = 2^-7: to the even digit
    CHECK(FormatReal(std::nan("")) == "0.000000");
    CHECK(FormatReal(-std::numeric_limits<double>::infinity()) == "0.000000");

    std::mt19937_64 random(480);
    const double least = -std::numeric_limits<double>::max();
    int differences = FormatReal(least) != Printf(least).c_str();
    for (int n = 0; n < 20000; ++n) {
        const double value = std::bit_cast<double>(static_cast<std::uint64_t>(random()));
        if (std::isfinite(value))
            differences += FormatReal(value) != Printf(value).c_str();
        const double common = static_cast<double>(static_cast<std::int64_t>(random()) >> 32) / 1000.0;
        differences += FormatReal(common) != Printf(common).c_str();
    }
    CHECK(differences == 0);
}

TEST_CASE("what FormatReal writes, ParseReal reads, in any locale") {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"de_DE.UTF-8", "German_Germany.1252", "C"})
        if (std::setlocale(LC_ALL, locale)) {
            CHECK(FormatReal(1234.25) == "1234.250000");
            CHECK(ParseReal("1234.250000") == 1234.25);
        }
    std::setlocale(LC_ALL, before.c_str());
}

TEST_CASE("code page 932: lead bytes, steps and searches") {
    int leads = 0;
    for (int byte = 0; byte < 256; ++byte)
        leads += torv::IsLeadByte932(static_cast<unsigned char>(byte));
    CHECK(leads == 31 + 29); // 81..9F and E0..FC
    for (const unsigned char none : {0x80, 0xA0, 0xDF, 0xFD})
        CHECK_FALSE(torv::IsLeadByte932(none));

    const char* text = "\x82\xA0"
                       "a\xB1\x83"; // a double-byte letter, a, a half-width kana, a lead byte that ends it
    std::string steps;
    for (const char* at = text; *at; at = NextChar932(at))
        steps += std::to_string(at - text);
    CHECK(steps == "0234");
    CHECK(NextChar932(text + 5) == text + 5);

    const char* so = "\x83\x5C\\x\x83"; // the trail byte of the first character is a backslash's
    CHECK(FindChar932(so, '\\') == so + 2);
    CHECK(FindChar932(so, 'x') == so + 3);
    CHECK(FindChar932(so, '\x83') == so + 4);
    CHECK(FindChar932("\x83\x5C", '\\') == nullptr);
    CHECK(FindChar932("abc", 'd') == nullptr);
    CHECK(FindChar932("abc", '\0') == nullptr);
    CHECK(FindChar932(nullptr, 'a') == nullptr);
}

TEST_CASE("text: a field takes what fits and zeroes the rest, even out of itself") {
    char field[9] = "????????";
    const auto content = [&field] { return std::string(field, sizeof field); };
    torv::CopyText(field, 5, "abcdef");
    CHECK(content() == std::string("abcd\0???\0", 9));
    torv::CopyText(field, 8, "abcdefg");
    torv::CopyText(field + 2, 6, field); // onto its own rear, and back
    CHECK(content() == std::string("ababcde\0\0", 9));
    torv::CopyText(field, 8, field + 3);
    CHECK(content() == std::string("bcde\0\0\0\0\0", 9));
    torv::CopyText(field, 0, "x");
    CHECK(field[0] == 'b');
    torv::CopyText(field, sizeof field, nullptr);
    CHECK(content() == std::string(9, '\0'));
}
