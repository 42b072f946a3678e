#include "torv/typed_file/typed_file.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "platform/temp_folder.h"
#include "values.h"

namespace {

std::vector<std::string> Fields(const char* list, char separator, int size = 100) {
    std::vector<std::string> fields;
    char field[100];
    for (const char* rest = list; *rest;) {
        rest = CxTypedFile::ExtractString(field, size, rest, separator);
        fields.emplace_back(field);
    }
    return fields;
}

using Texts = std::vector<std::string>;

} // namespace

TEST_CASE("typed file: fields of a list") {
    CHECK(Fields("10, 20,30", ',') == Texts{"10", "20", "30"});
    CHECK(Fields(" a b \t, ,c,", ',') == Texts{"a b", "", "c"});
    CHECK(Fields("", ',').empty());
    CHECK(Fields("   ", ',') == Texts{""});
    CHECK(Fields("a:\x83\x3A:b", ':') == Texts{"a", "\x83\x3A", "b"}); // 0x3A as a trail byte is no separator
    CHECK(Fields("abc  ,d", ',', 3) == Texts{"ab", "d"});
    CHECK(Fields("a     ,d", ',', 4) == Texts{"a", "d"}); // cut first, trimmed afterwards
    CHECK(Fields("a,b", '\0') == Texts{"a,b"});

    char field[4] = "xyz";
    const char* text = "abc,def";
    CHECK(CxTypedFile::ExtractString(field, 0, text, ',') == text + 4);
    CHECK(std::string(field) == "xyz"); // no room, nothing written
    CHECK(CxTypedFile::ExtractString(field, 1, text, ',') == text + 4);
    CHECK(std::string(field).empty());
    CHECK(*CxTypedFile::ExtractString(field, 4, nullptr, ',') == '\0');
    CHECK(*CxTypedFile::ExtractString(nullptr, 4, text, ',') == 'd');
}

TEST_CASE("typed file: hexadecimal texts") {
    CHECK(CxTypedFile::ahextol("0x1F") == 31); // the x is passed over, the zero is a digit
    CHECK(CxTypedFile::ahextol("$a-f.9A") == 0xAF9A);
    CHECK(CxTypedFile::ahextol("123456789") == 0x12345678);
    CHECK(CxTypedFile::ahextol("FFFFFFFE") == -2);
    CHECK(Values(CxTypedFile::ahextol(""), CxTypedFile::ahextol(nullptr), CxTypedFile::ahextodouble("")) == "0 0 0");
    CHECK(CxTypedFile::ahextodouble("3FF8000000000000") == 1.5); // sign 0, exponent 3FF, first fraction bit
    CHECK(CxTypedFile::ahextodouble("C000 0000 0000 0000 7") == -2.0);
}

TEST_CASE("typed file: fixed point") {
    struct Row {
        double value;
        DWORD whole, fraction;
    };
    const double huge = std::numeric_limits<double>::infinity();
    for (const Row& row : {Row{0.0, 0, 0}, Row{1.5, 1, 0x80000000}, Row{3.25, 3, 0x40000000},
                           // -1.25 is -1 and a quarter below it: -(2^30) in 32 bits
                           Row{-1.25, 0xFFFFFFFF, 0xC0000000}, Row{4294967297.0, 1, 0}, Row{1e300, 0xFFFFFFFF, 0},
                           Row{huge, 0xFFFFFFFF, 0}, Row{-huge, 0, 0}, Row{NAN, 0, 0}}) {
        CAPTURE(row.value);
        DWORD whole = 7, fraction = 7;
        CxTypedFile::ftofix(&whole, &fraction, row.value);
        CHECK(Values(whole, fraction) == Values(row.whole, row.fraction));
    }
    CxTypedFile::ftofix(nullptr, nullptr, 1.0);
}

TEST_CASE("typed file: copying bytes of any count") {
    for (DWORD count = 0; count <= 9; ++count) {
        char copy[] = "---------";
        CxTypedFile::BuffCopy(copy, "abcdefghi", count);
        CHECK(std::string(copy) == std::string("abcdefghi").substr(0, count) + std::string(9 - count, '-'));
    }
    CxTypedFile::BuffCopy(nullptr, nullptr, 4);
}

TEST_CASE("typed file: searching a folder by attributes") {
    const TempFolder folder;
    const auto find = [&folder](const char* pattern, int archive, int directory) {
        WIN32_FIND_DATAA found = {};
        const int has = CxTypedFile::Dir(folder.Path(pattern).c_str(), &found, archive, directory, 0, 0, 0, 0);
        return has ? std::string(found.cFileName) : "";
    };
    CHECK(find("*", 0, 1).empty()); // "." and ".." are folders, never accepted
    folder.File("a.aic", "");
    CHECK(find("*", 0, 1).empty());
    CHECK(find("*", 0, 0).empty());
    CHECK(find("*", 1, 0) == "a.aic");
    folder.Folder("b.aic");
    CHECK(find("*.aic", 0, 1) == "b.aic"); // past the file
    CHECK(find("*.def", 1, 1).empty());
    CHECK(CxTypedFile::Dir(folder.Path("*").c_str(), nullptr, 1, 0, 0, 0, 0, 0));
    CHECK(CxTypedFile::Dir(nullptr, nullptr, 1, 1, 1, 1, 1, 1) == 0);
}
