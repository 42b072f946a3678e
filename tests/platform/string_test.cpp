#include "torv/platform/afx/string.h"

#include <doctest/doctest.h>

#include <cstring>
#include <string>

#include "values.h"

TEST_CASE("string: null texts are empty, indexes out of range harmless") {
    constexpr LPCSTR kNull = nullptr;
    CString text(kNull);
    text += kNull;
    CHECK(text == kNull);
    text = "x";
    text = kNull;
    CHECK(text == "");
    CHECK(text.GetAt(-1) == '\0');
    text.SetAt(0, 'x');
    CHECK(text.IsEmpty());
    CHECK(CString("abc", 2) + CString("abc", -1) + CString('-', 3) == "ab---");
}

TEST_CASE("string: parts meet again in the whole, wherever it is cut") {
    const CString text("score");
    for (int cut = -2; cut <= 7; ++cut) {
        CAPTURE(cut);
        CHECK(text.Left(cut) + text.Mid(cut) == text);
        CHECK(text.Left(text.GetLength() - (cut < 0 ? 0 : cut)) + text.Right(cut) == text);
    }
    CHECK(text.Mid(1, 3) == "cor");
}

TEST_CASE("string: searches") {
    const CString text("abcabc");
    CHECK(Values(text.Find('b'), text.Find('b', 2), text.Find("ca"), text.Find("ca", 3)) == "1 4 2 -1");
    CHECK(Values(text.Find('x'), text.Find('a', 100), text.Find('a', -5)) == "-1 -1 0");
    CHECK(Values(text.ReverseFind('a'), text.FindOneOf("xcb")) == "3 1");
    CString replaced(text);
    CHECK(replaced.Replace("bc", "-bc-") == 2); // what was put in is not looked at again
    CHECK(replaced == "a-bc-a-bc-");
    CHECK(replaced.Replace("", "x") == 0);
}

TEST_CASE("string: comparisons go by unsigned bytes, both ways round") {
    const CString low("a");
    const CString high("\xE0");
    CHECK(Values(low < high, low<"\xE0", "a" < high, high> low, low <= "a", "a" == low, low != "b") == "1 1 1 1 1 1 1");
    CHECK(low.Compare("\xE0") < 0);
    CHECK(CString("NOTE").CompareNoCase("note") == 0);
    CHECK(CString("\xC4").CompareNoCase("\xE4") != 0); // ASCII letters only, whatever the locale
}

TEST_CASE("string: trimming and case") {
    CString text("\t \x01 a b\xA0 \r\n");
    text.TrimLeft();
    CHECK(text == "a b\xA0 \r\n");
    text.TrimRight();
    text.MakeUpper();
    CHECK(text == "A B\xA0"); // only bytes up to 32 are white space
    CString blank(" \n ");
    blank.TrimRight();
    CHECK(blank.IsEmpty());
}

TEST_CASE("string: formatting may read the string that it writes") {
    CString text("name");
    text.Format("<%s> %04d", static_cast<LPCSTR>(text), 7);
    CHECK(text == "<name> 0007");
    const std::string big(5000, 'x');
    text.Format("%s", big.c_str());
    CHECK(text == big.c_str());
}

TEST_CASE("string: direct writing ends where it is told, or at the first NUL") {
    CString text("old");
    std::memcpy(text.GetBuffer(100), "new text", 9);
    text.ReleaseBuffer();
    CHECK(text == "new text");
    text.GetBuffer();
    text.ReleaseBuffer(3);
    CHECK(text == "new");
    text.ReleaseBuffer(100); // never past the room that was asked for
    CHECK(text.GetLength() == 3);
}
