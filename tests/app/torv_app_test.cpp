#include "torv/app/torv_app.h"
#include "torv/lyrics/converter_modules.h"

#include <doctest/doctest.h>

#include <string>

namespace {

std::string Resource(UINT id) {
    CString text;
    return text.LoadString(id) ? text.GetStdString() : "(none)";
}

} // namespace

TEST_CASE("library object: the one application of its module") {
    CHECK(AfxGetApp() == CTORVApp::GetApp());
    CHECK(CTORVApp::GetApp()->InitInstance());
    CHECK(CTORVApp::GetApp()->ExitInstance() == 0);
    const AFX_MSGMAP* messages = CTORVApp::GetApp()->GetMessageMap();
    REQUIRE(messages);
    CHECK(messages->lpEntries == nullptr);
    const int areLoaded =
        CTORVApp::GetApp()->LoadG2PALibrary(); // they stand beside a whole build, not beside every test
    CHECK(areLoaded == (torv::ConverterModule(0) && torv::ConverterModule(1)));
    CTORVApp::GetApp()->FreeG2PALibrary();
    CHECK(torv::ConverterModule(0) == nullptr);
    CHECK(CTORVApp::GetVersionString() == "TORV.dll Version 0.16 Rev.011b Built 2003/12/22");
}

TEST_CASE("library object: the message texts") {
    // Both compilers that read the table must agree on quotes, tabs and line ends: the texts that have them.
    CHECK(Resource(10100) == "Failed to loading databae ! - %1\n\n%2");
    CHECK(Resource(10101) == "Failed to loading SingerDB ! - %1\n\n%2\n\n\tContinue ?");
    CHECK(Resource(10106) == "Section key \"[%1]\" not found !\n\nfile : %2");
    CHECK(Resource(10108) == "Entry key \"'%1\" ([%2]) not found !\n\n%s");
    CHECK(Resource(10111) == "Invalid section \"[%1]\".\n\nfile : %2");
    CHECK(Resource(10201) == "\tSection : %1\n\tEntry : %2\n\tValue : %3");
    CHECK(Resource(10202) == "\nIgnore this error or warning, and continue ?");
    for (const UINT id : {10102u, 10103u, 10104u, 10105u, 10107u, 10109u, 10110u, 10200u})
        CHECK(Resource(id) != "(none)");
    CHECK(Resource(10112) == "(none)");
    CString text;
    AfxFormatString2(text, 10106, "Common", "a.aic");
    CHECK(text == "Section key \"[Common]\" not found !\n\nfile : a.aic");
}

TEST_CASE("library object: the default button is a bitmap of the module") {
    HANDLE image = LoadImageA(torv::LibraryModule(), MAKEINTRESOURCEA(1000), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION);
    REQUIRE(image);
    BITMAP bitmap = {};
    CHECK(GetObjectA(image, sizeof bitmap, &bitmap) != 0);
    CHECK(bitmap.bmWidth == 16);
    CHECK(bitmap.bmHeight == 15);
    CHECK(bitmap.bmBitsPixel == 24);
    DeleteObject(image);
}
