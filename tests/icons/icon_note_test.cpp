#include "icon_fixture.h"

TEST_CASE("shapes: 64 unless a file says otherwise, and any value a host sets") {
    CIconNoteAttack attack(1, 1, 3);
    CIconNoteTransit transit(3, 3, 1);
    CHECK(Values(attack.GetDuration(), attack.GetDepth(), transit.GetDuration()) == "64 64 64");
    CHECK(transit.GetDepth() == 64); // it has none: the middle
    CHECK(Values{attack.SetDepth(300), attack.GetDepth()} == "1 300");
    CHECK(Values{attack.SetDepth(-5), attack.GetDepth()} == "1 -5");
    Construct(attack, "[S]\nDuration=abc\nDepth=");
    CHECK(Values(attack.GetDuration(), attack.GetDepth()) == "0 64"); // no number is 0, an empty text the default
    CHECK(Values{attack.IsContinuance(), attack.TrimIconHead(1), attack.TrimIconTail(1)} == "0 0 0");

    const TempFolder folder;
    const std::string path = folder.File("soft.aic", "[Common]\nCaption=Soft\n[Parameter]\nLength=120\nDuration=7\n");
    CHECK(Values{attack.LoadPreset(path.c_str()), attack.GetCaption(), attack.GetLength()} == "1 Soft 120");
    CHECK(Values(attack.GetDuration(), attack.GetDepth()) == "7 64");
    CHECK(Values{transit.LoadPreset(path.c_str()), transit.GetDuration()} == "1 7");
    CIconExpression none(1, 1, 1);
    CHECK(Values{none.LoadPreset(path.c_str()), none.GetCaption().IsEmpty()} == "0 1");
}

TEST_CASE("shapes as text: sections of songs, and a user's expression files") {
    CIconNoteRelease release(2, 2, 1);
    release.SetCaption("mine");
    release.SetLength(50);
    release.SetDepth(-1);
    CHECK(Described(release) == "[S]\nCaption=mine\nLength=50\nDuration=64\nDepth=-1\n");
    CIconNoteTransit transit(3, 3, 1);
    transit.SetLength(30);
    transit.SetDuration(9);
    CHECK(Described(transit) == "[S]\nCaption=\nLength=30\nDuration=9\n");
    CxTypedFile file, odd;
    CHECK(release.DescribeUserExpression(&file) == 1);
    CHECK(Compact(file) ==
          "[Common]\nArticulation=NoteTransition\nCaption=mine\n[Parameter]\nLength=50\nDuration=64\nDepth=-1\n");
    CIconNoteTransit unnamed(3, 9, 1);
    CHECK(unnamed.DescribeUserExpression(&odd) == 1);
    CHECK(Compact(odd) == "[Common]\nArticulation=\nCaption=\n[Parameter]\nLength=0\nDuration=64\n");
    CHECK(unnamed.DescribeUserExpression(nullptr) == 0);
}

TEST_CASE("note records: bytes of shapes, names that stay; copies and replacements take all, the variation too") {
    CIconNoteAttack attack(1, 1, 1);
    char singer[] = "Anna", developer[] = "Dev";
    tagNoteIconObject record{};
    record.header.iconId = 0x01010007;
    record.database = 5;
    record.idHigh = 0x1234;
    record.idLow = 0x56;
    record.itemValue = 0xFFFFFFF0;
    record.duration = 200;
    record.depth = 1;
    record.originalSingerName = singer;
    record.developerName = developer;
    CHECK(attack.ConstructParameter(&record) == 1);
    record.originalSingerName = record.developerName = nullptr;
    CHECK(attack.ConstructParameter(&record) == 1);
    attack.SetDuration(0x1FF);

    CIconNoteAttack copy(&attack), replaced(1, 1, 3);
    CHECK(Values{replaced.ReplaceParameter(&attack), replaced.ReplaceParameter(&replaced)} == "1 1");
    for (CIconNoteAttack* const icon : {&copy, &replaced}) {
        CHECK(Values(icon->GetIconID(), icon->GetExpressionID()) == Values(0x01010007, 0x3456));
        tagNoteIconObject described{};
        CHECK(icon->DescribeParameter(&described) == 1);
        CHECK(Values(described.database, described.idHigh, described.itemValue) == Values(5, 0x1234, 0xFFFFFFF0));
        CHECK(Values(int{described.duration}, int{described.depth}) == "255 1");
        CHECK(Values(described.originalSingerName, described.developerName) == "Anna Dev");
        torv::ReleaseIconRecord(&described);
        CHECK(Values(described.originalSingerName == nullptr, described.header.caption == nullptr) == "1 1");
    }
    CIconNoteTransit from(3, 3, 1), to(3, 3, 2);
    record.depth = 99;
    CHECK(Values{from.ConstructParameter(&record), from.GetDuration(), from.GetDepth()} == "1 200 64");
    CHECK(Values{to.ReplaceParameter(&from), to.GetIconID(), to.GetDuration()} == Values(1, 0x03030007, 200));
    // Of another kind only what both have: an expression both are.
    CIconNoteRelease release(2, 2, 5);
    release.SetLength(50);
    CHECK(Values{attack.ReplaceParameter(&release), attack.ReplaceParameter(nullptr)} == "1 0");
    CHECK(Values(attack.GetIconID(), attack.GetLength(), attack.GetDuration(), attack.GetExpressionID()) ==
          Values(0x01010007, 50, 511, 0));
}
