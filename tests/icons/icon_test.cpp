#include "platform/temp_folder.h"

#include "torv/database/typed_file.h"
#include "torv/icons/icon_catalogue.h"
#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_note_attack.h"
#include "torv/icons/icon_note_release.h"
#include "torv/icons/icon_note_transit.h"
#include "torv/icons/icon_singer.h"
#include "torv/icons/icon_vibrato.h"

#include <doctest/doctest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using Rows = std::vector<std::vector<int>>;

Rows RowsOf(const CBreakPointList& list) {
    Rows rows;
    for (POSITION at = list.GetHeadPosition(); at;) {
        const tagBreakPoint& point = list.GetNext(at);
        rows.push_back({point.position, point.value, point.flags});
    }
    return rows;
}

void Fill(CBreakPointList& list, const Rows& rows) {
    list.RemoveAll();
    for (const auto& row : rows) {
        tagBreakPoint point{row[0], static_cast<SHORT>(row[1]), static_cast<WORD>(row.size() > 2 ? row[2] : 0)};
        list.AddTail(point);
    }
}

/// The list helpers that all kinds share, in the open.
struct Base : CIconObject {
    Base() : CIconObject(1, 2, 3) {}
    using CIconObject::FormatBreakPoint;
    using CIconObject::TrimBreakPointListHead;
    using CIconObject::TrimBreakPointListTail;
    using CIconObject::UnformatBreakPoint;
};

/// The icon as a section of a file, in the spaced form.
std::string Described(CIconObject& icon) {
    CxTypedFile file;
    CHECK(icon.DescribeParameter(&file, "S") == 1);
    CMemFile out;
    file.Save(&out);
    std::string text(static_cast<size_t>(out.GetLength()), '\0');
    out.SeekToBegin();
    out.Read(text.data(), static_cast<UINT>(text.size()));
    return text;
}

void Construct(CIconObject& icon, const char* text) {
    CxTypedFile file;
    file.Load(reinterpret_cast<const unsigned char*>(text), static_cast<DWORD>(std::strlen(text)));
    CHECK(icon.ConstructParameter(&file, "S") == 1);
}

/// What the user would have been shown.
struct Messages {
    std::vector<std::string> texts;
    int beeps = 0;
    torv::MessageBoxHandler box = torv::SetMessageBoxHandler([this](HWND, const char* text, const char*, UINT type) {
        CHECK(type == (MB_ICONEXCLAMATION | MB_OK));
        texts.push_back(text);
        return IDOK;
    });
    torv::BeepHandler beep = torv::SetBeepHandler([this](UINT) { ++beeps; });
    ~Messages() {
        torv::SetMessageBoxHandler(box);
        torv::SetBeepHandler(beep);
    }
};

} // namespace

TEST_CASE("ids and names") {
    CHECK(torv::MakeIconID(1, 2, 0x8003) == 0x01028003);
    CHECK((torv::StatusFromID(0xFF028003) == 255 && torv::ArticulationFromID(0x01FF0000) == 255 &&
           torv::VariationFromID(0x0102FFFF) == 0xFFFF));
    CHECK(torv::MakeSingerIconID(1, 2) == 0x07010102);
    CHECK((CIconObject::IsUserIcon(0x01018000) == 1 && CIconObject::IsUserIcon(0x01017FFF) == 0));
    CHECK(std::string(torv::IconStatusName(2)) == "Release");
    CHECK((std::string(torv::IconStatusName(6)).empty() && std::string(torv::IconStatusName(8)).empty()));
    CHECK(std::string(torv::IconArticulationName(2, 2)) == "NoteTransition"); // a release's own articulation: crossed
    CHECK(std::string(torv::IconArticulationName(3, 3)) == "NoteRelease");
    CHECK(std::string(torv::IconArticulationName(5, 3)) == "Decrescendo");
    CHECK(std::string(torv::IconArticulationName(5, 4)).empty());
}

TEST_CASE("base: keys with their defaults, lengths, trims that do nothing") {
    Base icon;
    CHECK(icon.GetLength() == 0);
    CHECK((icon.SetLength(5) == 1 && icon.SetLength(0) == 0 && icon.GetLength() == 5));
    CHECK((icon.TrimIconHead(1) == 0 && icon.TrimIconTail(1) == 0 && icon.IsContinuance() == 0));
    for (const char* text :
         {"[S]\nCaption=\nArticulation=NoteAttack\nLength=0", "[S]\nArticulation=NoteAttack\nLength=abc",
          "[S]\nArticulation=NoteAttack", "[S]\nArticulation=NoteAttack\nLength=-5"}) {
        Construct(icon, text);
        CHECK(icon.GetCaption() == "NoteAttack");
        CHECK(icon.GetLength() == 240);
    }
    Construct(icon, "[S]\nCaption=Soft\nArticulation=x\nLength=77");
    CHECK(Described(icon) == "[S]\r\nCaption = Soft\r\nLength = 77\r\n\r\n");
}

TEST_CASE("base: host records, whatever they hold") {
    Base icon;
    icon.SetIDString(std::string(200, 'i').c_str());
    icon.SetCaption("cap");
    icon.SetOriginalVariation(9);
    tagIconHeader record{};
    record.reserved = 0x1234;
    CHECK(icon.DescribeParameter(&record) == 1);
    CHECK((record.iconId == 0x01020003 && record.originalVariation == 9 && record.reserved == 0x1234));
    CHECK(std::string(record.idString).size() == 128);
    CHECK(std::string(record.caption) == "cap");
    std::memset(record.idString, 'z', sizeof record.idString); // unterminated
    record.iconId = 0x05018001;
    Base other;
    CHECK(other.ConstructParameter(&record) == 1);
    CHECK((other.GetIconID() == 0x05018001 && other.IsUserIcon() == 1 && other.GetIDString().GetLength() == 128));
    torv::ReleaseIconRecord(&record);
    CHECK(other.ConstructParameter(&record) == 1); // a null caption
    CHECK(other.GetCaption().IsEmpty());
}

TEST_CASE("curves as text: fractions, and a round trip that loses") {
    CBreakPointList list;
    Fill(list, {{0, 10}, {100, -20}});
    CString positions, values;
    Base::FormatBreakPoint(list, 480, positions, values);
    CHECK((positions == "0.000000,0.208333" && values == "10,-20"));
    CBreakPointList back;
    CHECK(Base::UnformatBreakPoint(back, 2, 480, positions, values) == 2);
    CHECK(RowsOf(back) == Rows{{0, 10, 0}, {99, -20, 0}}); // 0.208333 x 480 = 99.99984
    back.RemoveAll();
    CHECK(Base::UnformatBreakPoint(back, 5, 480, "0.0,0.5,1.0", "1,2,3") == 5); // what was asked for
    CHECK(RowsOf(back) == Rows{{0, 1, 0}, {240, 2, 0}});
    CHECK(Base::UnformatBreakPoint(back, -1, 480, "0.0", "1") == -1);
    CHECK(Base::UnformatBreakPoint(back, 65535, 480, "0.1,0.2", "1") == 65535);
    CHECK(back.GetCount() == 3);
}

TEST_CASE("curves cut at a place: the head moves, unless it starts later; the tail is interpolated") {
    struct Row {
        Rows points;
        int at;
        Rows head, tail;
    };
    for (const Row& row : {Row{{{0, 0}, {200, 100, 5}}, 100, {{0, 50, 5}, {100, 100, 5}}, {{0, 0, 0}, {100, 50, 5}}},
                           Row{{{150, 10}, {300, 20}}, 100, {{150, 10, 0}, {300, 20, 0}}, {}},
                           Row{{{0, 1}, {100, 2}, {200, 3}}, 100, {{0, 2, 0}, {100, 3, 0}}, {{0, 1, 0}, {100, 2, 0}}},
                           Row{{{0, 1}, {50, 2}}, 100, {}, {{0, 1, 0}, {50, 2, 0}}},
                           Row{{{0, 0}, {3, -5}}, 1, {{0, -2, 0}, {2, -5, 0}}, {{0, 0, 0}, {1, -2, 0}}}, // -1.67
                           Row{{}, 100, {}, {}}}) {
        CBreakPointList list;
        Fill(list, row.points);
        CHECK(Base::TrimBreakPointListHead(list, row.at) == 1);
        CHECK(RowsOf(list) == row.head);
        Fill(list, row.points);
        CHECK(Base::TrimBreakPointListTail(list, row.at) == 1);
        CHECK(RowsOf(list) == row.tail);
    }
}

TEST_CASE("preset files: loaded, or told why not") {
    const TempFolder folder;
    const std::string path = folder.File("soft.aic", "[Common]\nCaption=Soft\n[Parameter]\nLength=120\nDepth=7\n");
    Messages messages;
    CIconNoteAttack attack(1, 1, 1);
    CHECK(attack.LoadPreset(path.c_str()) == 1);
    CHECK((attack.GetCaption() == "Soft" && attack.GetLength() == 120 && attack.GetDuration() == 64 &&
           attack.GetDepth() == 7));
    CHECK(messages.texts.empty());
    const std::string missing = folder.Path("100%s none.aic");
    CHECK(attack.LoadPreset(missing.c_str()) == 0);
    CHECK(attack.LoadPreset(folder.Folder("sub.aic").c_str()) == 0);
    REQUIRE(messages.texts.size() == 2);
    CHECK(messages.texts[0] == "Cannot find Icon File \"" + missing + "\" ! ");
    CHECK(messages.beeps == 2);
    CHECK(attack.GetDepth() == 7); // keeps what it held
    CIconSinger singer;
    const std::string codes = folder.File("singer.aic", "[Parameter]\nLanguage=1\nProgram=2\n");
    CHECK((singer.LoadPreset(codes.c_str()) == 1 && singer.GetLanguageCode() == 0 && singer.GetProgramCode() == 0));
    CIconExpression none(1, 1, 1);
    CHECK(none.LoadPreset(path.c_str()) == 0);
}

TEST_CASE("note icons: shapes, user files, and what replacing takes over") {
    CIconNoteAttack attack(1, 1, 3);
    CHECK((attack.GetDuration() == 64 && attack.GetDepth() == 64));
    CHECK((attack.SetDepth(300) == 1 && attack.SetDepth(-5) == 1 && attack.GetDepth() == -5)); // any value
    Construct(attack, "[S]\nDuration=abc\nDepth=");
    CHECK((attack.GetDuration() == 0 && attack.GetDepth() == 64));
    CIconNoteTransit transit(3, 3, 1);
    transit.SetDuration(9);
    transit.SetLength(30);
    CHECK(transit.GetDepth() == 64); // it has none: the middle
    CHECK(Described(transit) == "[S]\r\nCaption = \r\nLength = 30\r\nDuration = 9\r\n\r\n");
    CIconNoteRelease release(2, 2, 1);
    release.SetCaption("mine");
    release.SetLength(50);
    CxTypedFile file;
    CHECK(release.DescribeUserExpression(&file) == 1);
    CMemFile out;
    file.Save2(&out);
    std::string text(static_cast<size_t>(out.GetLength()), '\0');
    out.SeekToBegin();
    out.Read(text.data(), static_cast<UINT>(text.size()));
    CHECK(text ==
          "[Common]\nArticulation=NoteTransition\nCaption=mine\n[Parameter]\nLength=50\nDuration=64\nDepth=64\n");

    tagNoteIconObject record{};
    record.header.iconId = 0x01010007;
    record.idHigh = 0x1234;
    record.idLow = 0x56;
    record.duration = 200;
    record.depth = 1;
    CIconNoteAttack other(1, 1, 1);
    CHECK(other.ConstructParameter(&record) == 1);
    CHECK(other.GetExpressionID() == 0x3456);
    CHECK(attack.ReplaceParameter(&other) == 1);
    CHECK((attack.GetIconID() == 0x01010007 && attack.GetDuration() == 200 && attack.GetExpressionID() == 0x3456));
    CHECK(attack.ReplaceParameter(&release) == 1); // another kind: what they share
    CHECK((attack.GetIconID() == 0x01010007 && attack.GetLength() == 50 && attack.GetDuration() == 200));
    CHECK(attack.ReplaceParameter(nullptr) == 0);
    CIconNoteAttack copy(&attack);
    tagNoteIconObject described{};
    CHECK(copy.DescribeParameter(&described) == 1);
    CHECK((described.duration == 200 && std::string(described.developerName).empty()));
    torv::ReleaseIconRecord(&described);
}

TEST_CASE("vibrato: ranges, files, exports and the cut") {
    CIconVibrato icon(4, 4, 1);
    CHECK((icon.SetStartDepth(200) == 0 && icon.SetStartDepth(127) == 1 && icon.SetStartRate(-1) == 0 &&
           icon.GetStartDepth() == 127));
    CHECK((icon.SetEndDepth(5) == 0 && icon.GetEndRate() == 0 && icon.IsContinuance() == 1));
    Construct(icon, "[S]\nLength=480\nStartDepth=200\nDepthBPNum=3\nDepthBPX=0.0,0.5,1.0\nDepthBPY=10,20,30\nStartRate="
                    "-4\nRateBPNum=0\nRateBPX=0.5\nRateBPY=5");
    CHECK((icon.GetStartDepth() == 127 && icon.GetStartRate() == 0));
    CHECK(RowsOf(*icon.GetDepthBPList()) == Rows{{0, 10, 0}, {5000, 20, 0}});
    CHECK(icon.GetRateBPList()->IsEmpty()); // a count of 0: the texts are not read
    CHECK(Described(icon) ==
          "[S]\r\nCaption = \r\nLength = 480\r\nStartDepth = 127\r\nDepthBPNum = 2\r\nDepthBPX = 0.000000,0.500000\r\n"
          "DepthBPY = 10,20\r\nStartRate = 0\r\nRateBPNum = 0\r\n\r\n");
    Fill(*icon.GetDepthBPList(), {{5000, 20}});
    icon.SetStartDepth(64);
    CBreakPointList exported;
    Fill(exported, {{1, 2}});
    CHECK(icon.ExportDepthBreakPoint(&exported, 1000) == 3); // the list's count
    CHECK(RowsOf(exported) == Rows{{1, 2, 0}, {1000, 64, 0x8000}, {1240, 20, 0}});
    CBreakPointArray array;
    array.SetSize(9);
    CHECK(icon.NormalizeDepthBreakPointArray(1000, array) == 2); // resized
    CHECK((array[0].flags == 0x8000 && array[1].position == 1240));

    Fill(*icon.GetDepthBPList(), {{2500, 10}, {7500, 30}});
    CHECK(icon.TrimIconTail(240) == 1);
    CHECK(RowsOf(*icon.GetDepthBPList()) == Rows{{5000, 10, 0}, {10000, 20, 0}});
    CHECK(icon.GetLength() == 240);
    CHECK((icon.TrimIconTail(0) == 1 && icon.GetDepthBPList()->IsEmpty() && icon.GetLength() == 0));
    CHECK(icon.TrimIconHead(10) == 0);

    tagVibratoIconObject record{};
    Fill(*icon.GetRateBPList(), {{1, 2, 3}});
    CHECK(icon.DescribeParameter(&record) == 1);
    CHECK((record.ratePointCount == 1 && record.ratePoints[0].flags == 3 && record.depthPoints == nullptr));
    record.endRate = 50;
    record.depthPointCount = 4; // with a null array: empty
    CIconVibrato other(4, 4, 2);
    CHECK(other.ConstructParameter(&record) == 1);
    CHECK((other.GetEndRate() == 0 && other.GetDepthBPList()->IsEmpty() && other.GetRateBPList()->GetCount() == 1));
    torv::ReleaseIconRecord(&record);
    CIconVibrato kept(4, 4, 9);
    CHECK(
        (kept.ReplaceParameter(&other) == 1 && torv::VariationFromID(kept.GetIconID()) == 9)); // unlike the note icons
}

TEST_CASE("dynamics: levels and changes") {
    CIconDynamics level(5, 1, 1), swell(5, 2, 1), odd(5, 7, 1);
    CHECK((level.SetStartDynamics(99) == 1 && level.GetEndDynamics() == 99 && level.SetEndDynamics(128) == 0));
    CHECK((swell.SetStartDynamics(500) == 1 && swell.GetStartDynamics() == 500 && swell.SetEndDynamics(500) == 0));
    CHECK((odd.SetStartDynamics(1) == 0 && odd.NormalizeValue(999) == 999));
    CHECK((level.IsContinuance() == 0 && swell.IsContinuance() == 1 && odd.IsContinuance() == 1));
    CHECK((CIconDynamics::CalcExportDynamics(100, 40) == 127 && CIconDynamics::CalcExportDynamics(10, -40) == 0));
    CHECK((CIconDynamics::GetThreshold(0) == 113 && CIconDynamics::GetThreshold(8) == -1 &&
           CIconDynamics::GetThreshold(-1) == -1));
    CHECK((CIconDynamics::ScanThresholdIndex(113) == 0 && CIconDynamics::ScanThresholdIndex(112) == 1 &&
           CIconDynamics::ScanThresholdIndex(0) == 7 && CIconDynamics::ScanThresholdIndex(-5) == 7));
    CHECK((level.GetOriginalSingerName() == "non" && level.GetDevelopperName().IsEmpty()));

    const TempFolder folder;
    const std::string preset = folder.File(
        "p.aic", "[Parameter]\nLength=960\nStartDyn=150\nEndDyn=-200\nDynBPNum=1\nDynBPX=0.5\nDynBPY=300\n");
    CHECK(level.LoadPreset(preset.c_str()) == 1);
    CHECK((level.GetLength() == 1 && level.GetStartDynamics() == 127 && level.GetEndDynamics() == 0));
    CHECK(swell.LoadPreset(preset.c_str()) == 1);
    CHECK((swell.GetLength() == 960 && swell.GetEndDynamics() == -127));
    CHECK(RowsOf(*swell.GetDynamicsBPList()) == Rows{{5000, 127, 0}});
    Construct(swell, "[S]\nLength=960\nDynBPNum=1\nDynBPX=0.5\nDynBPY=300"); // from a song: as it was written
    CHECK(RowsOf(*swell.GetDynamicsBPList()) == Rows{{5000, 300, 0}});
    Construct(level, "[S]\nLength=960");
    CHECK(level.GetLength() == 960);
}

TEST_CASE("dynamics: exports and cuts") {
    CIconDynamics swell(5, 2, 1);
    swell.SetLength(480);
    swell.SetEndDynamics(20);
    Fill(*swell.GetDynamicsBPList(), {{5000, 10}});
    CBreakPointList list;
    CHECK(swell.ExportBreakPoint(&list, 1000) == 3);
    CHECK(RowsOf(list) == Rows{{1000, 0, 0x8000}, {1240, 10, 0}, {1480, 20, 0x8000}});
    const auto normalized = [](CIconDynamics& icon) {
        CBreakPointArray array;
        icon.NormalizeBreakPointArray(1000, array, 120);
        Rows rows;
        for (int i = 0; i < array.GetSize(); ++i)
            rows.push_back({array[i].position, array[i].value, array[i].flags});
        return rows;
    };
    CHECK(normalized(swell) == Rows{{1000, 120, 0}, {1240, 127, 0}, {1480, 127, 0x8000}});
    CIconDynamics copy(&swell);
    Fill(*copy.GetDynamicsBPList(), {{0, -20, 4}});
    CHECK(normalized(copy) == Rows{{1000, 100, 4}, {1480, 127, 0x8000}}); // a first point at 0 is the head
    copy.GetDynamicsBPList()->RemoveAll();
    CHECK(normalized(copy) == Rows{{1000, 120, 0}, {1480, 127, 0x8000}});

    CIconDynamics tail(&swell);
    CHECK(tail.TrimIconTail(240) == 1);
    CHECK((tail.GetDynamicsBPList()->IsEmpty() && tail.GetEndDynamics() == 10 && tail.GetLength() == 240));
    CIconDynamics head(&swell);
    Fill(*head.GetDynamicsBPList(), {{2500, 4}, {5000, 10}});
    CHECK(head.TrimIconHead(180) == 1);                              // between 120 and 240: the point at the cut goes
    CHECK(RowsOf(*head.GetDynamicsBPList()) == Rows{{2000, 10, 0}}); // 60 of 300
    CHECK((head.GetLength() == 300 && head.GetStartDynamics() == 0 && head.GetEndDynamics() == 20));
    CHECK((head.TrimIconHead(900) == 1 && head.GetLength() == 0 && head.GetDynamicsBPList()->IsEmpty()));
}

TEST_CASE("singer: asks the open database") {
    struct Voices : torv::VoiceCatalogue {
        bool FindVoice(BYTE language, BYTE program, CString& name, tagVoiceChangeParam& parameters) const override {
            if (language != 1 || program != 44)
                return false;
            name = "Anna";
            parameters.values[16] = 77;
            return true;
        }
    } voices;
    CIconSinger icon;
    CHECK((icon.GetLength() == 1 && icon.GetIconID() == 0x07010000));
    Construct(icon, "[S]\nLanguage=257\nProgram=300");
    CHECK((icon.GetLanguageCode() == 1 && icon.GetProgramCode() == 44 && icon.GetLength() == 240));
    icon.SetIDString("id");
    CHECK((icon.GetSingerName() == "?????" && icon.GetIDString() == "id"));
    tagVoiceChangeParam parameters{};
    parameters.values[16] = 5;
    icon.GetVoiceChangeParam(&parameters);
    CHECK(parameters.values[16] == 5);
    torv::SetVoiceCatalogue(&voices);
    CHECK((icon.GetSingerName() == "Anna" && icon.GetIDString() == "Anna"));
    icon.GetVoiceChangeParam(&parameters);
    CHECK(parameters.values[16] == 77);
    torv::SetVoiceCatalogue(nullptr);
    Construct(icon, "[S]\nLanguage="); // empty: unchanged
    CHECK(icon.GetLanguageCode() == 1);
    CIconSinger other(7, 2, 9);
    CHECK((other.ReplaceParameter(&icon) == 1 && other.GetIconID() == 0x07010000 && other.GetProgramCode() == 44));
    tagSingerIconObject record{};
    CHECK((icon.DescribeParameter(&record) == 1 && record.programCode == 44));
    torv::ReleaseIconRecord(&record);
    struct Icons : torv::IconCatalogue {
        int IndexOf(const CIconObject& asked) const override { return asked.GetIDString() == "Anna" ? 3 : 0; }
    } icons;
    CHECK(torv::IconIndexOf(icon) == 0);
    torv::SetIconCatalogue(&icons);
    CHECK(torv::IconIndexOf(icon) == 3);
    torv::SetIconCatalogue(nullptr);
}
