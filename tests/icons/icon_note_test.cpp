#include "icon_fixture.h"
#include "platform/temp_folder.h"

#include "torv/icons/icon_note_attack.h"
#include "torv/icons/icon_note_release.h"
#include "torv/icons/icon_note_transit.h"

namespace {

tagNoteIconObject ExampleRecord() {
    tagNoteIconObject record{};
    record.header.iconId = 0x01010007;
    record.database = 5;
    record.idHigh = 0x1234;
    record.idLow = 0x56;
    record.itemValue = 0xFFFFFFF0;
    record.duration = 200;
    record.depth = 1;
    return record;
}

} // namespace

TEST_CASE("shapes: 64 unless a file says otherwise, and any value a host sets") {
    CIconNoteAttack attack(1, 1, 3);
    CIconNoteTransit transit(3, 3, 1);
    CHECK((attack.GetDuration() == 64 && attack.GetDepth() == 64 && transit.GetDuration() == 64));
    CHECK(transit.GetDepth() == 64); // it has none: the middle
    CHECK((attack.SetDepth(300) == 1 && attack.GetDepth() == 300));
    CHECK((attack.SetDepth(-5) == 1 && attack.GetDepth() == -5));
    Construct(attack, "[S]\nDuration=abc\nDepth=");
    CHECK((attack.GetDuration() == 0 && attack.GetDepth() == 64)); // no number is 0, an empty text the default
    CHECK((attack.IsContinuance() == 0 && attack.TrimIconHead(1) == 0 && attack.TrimIconTail(1) == 0));

    const TempFolder folder;
    const std::string path = folder.File("soft.aic", "[Common]\nCaption=Soft\n[Parameter]\nLength=120\nDuration=7\n");
    CHECK(attack.LoadPreset(path.c_str()) == 1);
    CHECK((attack.GetCaption() == "Soft" && attack.GetLength() == 120));
    CHECK((attack.GetDuration() == 7 && attack.GetDepth() == 64));
    CHECK((transit.LoadPreset(path.c_str()) == 1 && transit.GetDuration() == 7));
    CIconExpression none(1, 1, 1);
    CHECK((none.LoadPreset(path.c_str()) == 0 && none.GetCaption().IsEmpty()));
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
    CHECK(TextOf(file) ==
          "[Common]\nArticulation=NoteTransition\nCaption=mine\n[Parameter]\nLength=50\nDuration=64\nDepth=-1\n");
    CIconNoteTransit unnamed(3, 9, 1);
    CHECK(unnamed.DescribeUserExpression(&odd) == 1);
    CHECK(TextOf(odd) == "[Common]\nArticulation=\nCaption=\n[Parameter]\nLength=0\nDuration=64\n");
    CHECK(unnamed.DescribeUserExpression(nullptr) == 0);
}

TEST_CASE("note records: bytes of shapes, names that stay") {
    CIconNoteAttack attack(1, 1, 1);
    char singer[] = "Anna", developer[] = "Dev";
    tagNoteIconObject record = ExampleRecord();
    record.originalSingerName = singer;
    record.developerName = developer;
    CHECK(attack.ConstructParameter(&record) == 1);
    CHECK((attack.GetIconID() == 0x01010007 && attack.GetExpressionID() == 0x3456));
    record.originalSingerName = record.developerName = nullptr;
    CHECK(attack.ConstructParameter(&record) == 1);
    CHECK((attack.GetOriginalSingerName() == "Anna" && attack.GetDevelopperName() == "Dev"));

    attack.SetDuration(0x1FF);
    CIconNoteAttack copy(&attack);
    tagNoteIconObject described{};
    CHECK(copy.DescribeParameter(&described) == 1);
    CHECK((described.database == 5 && described.idHigh == 0x1234 && described.itemValue == 0xFFFFFFF0));
    CHECK((described.duration == 0xFF && described.depth == 1 && std::string(described.developerName) == "Dev"));
    torv::ReleaseIconRecord(&described);
    CHECK((described.originalSingerName == nullptr && described.header.caption == nullptr));

    CIconNoteTransit transit(3, 3, 1);
    record.depth = 99;
    CHECK((transit.ConstructParameter(&record) == 1 && transit.GetDuration() == 200 && transit.GetDepth() == 64));
}

TEST_CASE("replacing a note icon takes the other's variation too, of another kind only what both have") {
    tagNoteIconObject record = ExampleRecord();
    CIconNoteAttack attack(1, 1, 3), other(1, 1, 1);
    other.ConstructParameter(&record);
    CHECK(attack.ReplaceParameter(&other) == 1);
    CHECK(attack.GetIconID() == 0x01010007);
    CHECK((attack.GetDuration() == 200 && attack.GetDepth() == 1 && attack.GetExpressionEntry()->database == 5));
    CHECK((attack.ReplaceParameter(&attack) == 1 && attack.GetExpressionID() == 0x3456));

    CIconNoteTransit from(3, 3, 8), to(3, 3, 2);
    from.SetDuration(11);
    CHECK((to.ReplaceParameter(&from) == 1 && to.GetIconID() == 0x03030008 && to.GetDuration() == 11));

    CIconNoteRelease release(2, 2, 5);
    release.SetLength(50);
    CHECK(attack.ReplaceParameter(&release) == 1);
    CHECK((attack.GetIconID() == 0x01010007 && attack.GetLength() == 50 && attack.GetDuration() == 200));
    CHECK(attack.GetExpressionID() == 0); // an expression both are
    CHECK(attack.ReplaceParameter(nullptr) == 0);
}
