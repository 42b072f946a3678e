#include "torv/platform/platform.h"
#include "torv/platform/string_table.h"

#include <doctest/doctest.h>

#include <string>

#include "values.h"

namespace {

constexpr torv::StringEntry kEntries[] = {
    {60001, "one %1, two %2, one %1"},
    {60002, "%3 \"%1\" %s %% %"},
    {60003, "first"},
};
constexpr torv::StringEntry kLater[] = {{60003, "second"}};

class TestApp : public CWinApp {
public:
    using CWinApp::CWinApp;
};

} // namespace

TEST_CASE("strings: tables live as long as their objects, the latest is asked first") {
    CString text("old");
    const auto found = [&] { return text.LoadString(60003) ? text : CString("(none)") + text; };
    CHECK(found() == "(none)");
    {
        const torv::StringTable table(kEntries);
        {
            const torv::StringTable later(kLater);
            CHECK(found() == "second");
        }
        CHECK(found() == "first");
    }
    CHECK(found() == "(none)");
}

TEST_CASE("strings: arguments take the place of %1 and %2 and of nothing else") {
    const torv::StringTable table(kEntries);
    CString text;
    AfxFormatString1(text, 60001, "A%2%1");
    CHECK(text == "one A%2%1, two %2, one A%2%1"); // what an argument brings along stays as it is
    AfxFormatString2(text, 60001, "%2", "B");
    CHECK(text == "one %2, two B, one %2");
    AfxFormatString2(text, 60002, "key", nullptr);
    CHECK(text == "%3 \"key\" %s %% %");
    AfxFormatString1(text, 60099, "x");
    CHECK(text == "");
}

TEST_CASE("message boxes and beeps go to the handlers; without one a box gives the safe answer") {
    std::string seen;
    const auto before = torv::SetMessageBoxHandler([&](HWND, const char* text, const char* caption, UINT type) {
        seen = std::string(caption) + "|" + text + "|" + std::to_string(type);
        return IDYES;
    });
    const auto beepBefore = torv::SetBeepHandler([&](UINT type) { seen = std::to_string(type); });
    {
        const TestApp app("Editor");
        CHECK(AfxMessageBox("Go on ?", MB_ICONQUESTION | MB_YESNO) == IDYES);
        CHECK(seen == "Editor|Go on ?|36"); // 0x20 + 4
    }
    CHECK(CWnd().MessageBox(nullptr, "Title") == IDYES);
    CHECK(seen == "Title||0");
    CHECK(MessageBeep(MB_ICONEXCLAMATION));
    CHECK(seen == "48");
    CHECK(torv::SetMessageBoxHandler(before) != nullptr);
    CHECK(torv::SetBeepHandler(beepBefore) != nullptr);
#if !defined(_WIN32)
    CHECK(AfxMessageBox("(a test's text)") == IDOK);
    CHECK(AfxMessageBox("(a test's text)", MB_YESNO) == IDNO);
    CHECK(AfxMessageBox("(a test's text)", MB_OKCANCEL) == IDCANCEL);
#endif
}

TEST_CASE("the application object answers for itself; the first one counts") {
    TestApp first("first");
    { const TestApp second("second"); }
    CHECK(AfxGetApp() == &first);
    CHECK(Values(first.InitInstance(), first.ExitInstance()) == "1 0");
    CHECK(first.m_hInstance == torv::LibraryModule());
    CHECK(first.GetMessageMap()->lpEntries == nullptr);
}
