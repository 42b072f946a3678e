#include "database/database_fixture.h"

TEST_CASE("error reports: texts, icons and the question whether to go on") {
    Boxes boxes;
    const std::string question = "\nIgnore this error or warning, and continue ?";
    torv::ReportError(torv::kMsgFunctionError, "CAiconDB::LoadDatabase");
    torv::ReportError(torv::kMsgSectionNotFound, "Dynamics", "a%1.def");
    torv::ReportErrorFormat(torv::kMsgKeyNotFound, "Dyn%2aff", "Dynamics", "a.def");
    boxes.answer = IDYES;
    CHECK(torv::ReportError(torv::kMsgFolderNotFound, "here", true) == IDYES);
    boxes.answer = IDNO;
    CHECK(torv::ReportErrorFormat(torv::kMsgKeyNotFound, "%s", "", "", true) == IDNO);

    const TempFolder folder;
    const std::string file = folder.File("file", "");
    const std::string sub = folder.Folder("sub");
    const std::string none = folder.Path("none");
    CHECK(Values(torv::CheckFile(file.c_str(), true), torv::CheckFolder(sub.c_str(), true)) == "1 1");
    for (const char* path : {sub.c_str(), none.c_str(), "", static_cast<const char*>(nullptr)})
        CHECK(!torv::CheckFile(path, false));
    CHECK(Values{torv::CheckFile(sub.c_str(), true), torv::CheckFolder(file.c_str(), true)} == "0 0");

    CHECK(boxes.texts ==
          Texts{"Function error - 'CAiconDB::LoadDatabase'", "Section key \"[Dynamics]\" not found !\n\nfile : a%1.def",
                // shown so ever since: only the last placeholder is filled
                "Entry key \"'%1\" ([%2]) not found !\n\nDyn%2aff", "Folder not found !\n\nhere" + question,
                "Entry key \"'%1\" ([%2]) not found !\n\n%s" + question, "File not found !\n\n" + sub,
                "Folder not found !\n\n" + file});
    const UINT plain = MB_ICONEXCLAMATION | MB_OK;
    const UINT asking = MB_ICONQUESTION | MB_YESNO;
    CHECK(boxes.types == std::vector<UINT>{plain, plain, plain, asking, asking, plain, plain});
    CHECK(boxes.beeps == std::vector<UINT>(7, MB_ICONEXCLAMATION));
    CHECK(torv::DescribeEntry("A", "b", "%d") == "Section : 'A'\nEntry : 'b'\nValue : '%d'");
}
