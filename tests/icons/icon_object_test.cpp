#include "boxes.h"
#include "icon_fixture.h"

#include "torv/icons/icon_catalogue.h"

#include <cstddef>
#include <cstring>

namespace {

/// The list helpers that all kinds share, in the open.
struct Base : CIconObject {
    Base() : CIconObject(1, 2, 3) {}
    using CIconObject::FormatBreakPoint;
    using CIconObject::TrimBreakPointListHead;
    using CIconObject::TrimBreakPointListTail;
    using CIconObject::UnformatBreakPoint;
};

/// Where a virtual function stands in its class's table: a pointer to it holds its offset and one.
template <class Function>
size_t SlotOf(Function function) {
    std::ptrdiff_t words[2];
    static_assert(sizeof function == sizeof words);
    std::memcpy(words, &function, sizeof words);
    return static_cast<size_t>(words[0] - 1) / sizeof(void*);
}

} // namespace

TEST_CASE("ids and names") {
    CHECK(torv::MakeIconID(0x105, -1, 0x12345) == 0x05FF2345); // no part reaches into another
    CHECK(Values(torv::StatusFromID(0xFF028003), torv::ArticulationFromID(0x01FF0000),
                 torv::VariationFromID(0x0102FFFF)) == Values(255, 255, 0xFFFF));
    CHECK(torv::MakeSingerIconID(1, 258) == 0x07010202); // 1 x 256 + 258 = 514
    CHECK(torv::MakeSingerIconID(300, 1) == 0x07012C01); // 76801 = 0x12C01
    CHECK(Values(CIconObject::IsUserIcon(0x01018000), CIconObject::IsUserIcon(0x01017FFF)) == "1 0");
    // A release's own articulation is crossed, and the status does not choose among the first four.
    CHECK(Values(torv::IconStatusName(2), torv::IconArticulationName(2, 2), torv::IconArticulationName(3, 3),
                 torv::IconArticulationName(4, 1),
                 torv::IconArticulationName(5, 3)) == "Release NoteTransition NoteRelease NoteAttack Decrescendo");
    CHECK(Values(torv::IconStatusName(6), torv::IconStatusName(8), torv::IconArticulationName(5, 4),
                 torv::IconArticulationName(7, 1)) == "   "); // no names
}

TEST_CASE("virtual functions stand in the order in which built hosts call them") {
    using File = int (CIconObject::*)(CxTypedFile*, const char*);
    const size_t first = SlotOf(&CIconObject::IsContinuance);
    CHECK(SlotOf(&CIconObject::LoadPreset) == first + 1);
    CHECK(SlotOf(static_cast<File>(&CIconObject::ConstructParameter)) == first + 2);
    CHECK(SlotOf(static_cast<File>(&CIconObject::DescribeParameter)) == first + 3);
    CHECK(SlotOf(&CIconObject::ReplaceParameter) == first + 4);
    CHECK(SlotOf(&CIconObject::TrimIconHead) == first + 5);
    CHECK(SlotOf(&CIconObject::TrimIconTail) == first + 6);
    CHECK(SlotOf(&CIconExpression::DescribeUserExpression) == first + 7);
}

TEST_CASE("base: keys with their defaults, lengths, trims that do nothing") {
    Base icon;
    CHECK(Values{icon.GetLength(), icon.SetLength(5), icon.SetLength(0), icon.GetLength()} == "0 1 0 5");
    CHECK(Values{icon.TrimIconHead(1), icon.TrimIconTail(1), icon.IsContinuance()} == "0 0 0");
    for (const char* text :
         {"[S]\nCaption=\nArticulation=NoteAttack\nLength=0", "[S]\nArticulation=NoteAttack\nLength=abc",
          "[S]\nArticulation=NoteAttack", "[S]\nArticulation=NoteAttack\nLength=-5"}) {
        Construct(icon, text);
        CHECK(Values(icon.GetCaption(), icon.GetLength()) == "NoteAttack 240");
    }
    Construct(icon, "[S]\nCaption=Soft\nArticulation=x\nLength=77");
    CHECK(Described(icon) == "[S]\nCaption=Soft\nLength=77\n");
    Construct(icon, "[Other]\nCaption=Loud\nLength=5"); // a missing section is one without keys
    CHECK(Values(icon.GetCaption().IsEmpty(), icon.GetLength()) == "1 240");
}

TEST_CASE("base: copies take everything, replacing keeps the id, null is harmless") {
    Base icon;
    icon.SetIDString("soft");
    icon.SetCaption("Soft");
    icon.SetLength(77);
    icon.SetOriginalVariation(9);
    CIconObject copy(&icon);
    CHECK(Values(copy.GetIconID(), copy.GetOriginalVariation(), copy.GetIDString()) == Values(0x01020003, 9, "soft"));
    CIconObject other(5, 6, 7);
    other.SetOriginalVariation(4);
    CHECK(Values{other.ReplaceParameter(&icon), other.ReplaceParameter(&other)} == "1 1");
    CHECK(Values(other.GetIconID(), other.GetOriginalVariation()) == Values(0x05060007, 4));
    CHECK(Values(other.GetIDString(), other.GetCaption(), other.GetLength()) == "soft Soft 77");

    CHECK(Values{other.ReplaceParameter(nullptr), other.ConstructParameter(nullptr, "S"),
                 other.DescribeParameter(nullptr, "S")} == "0 0 0");
    const auto takesNull = []<class Icon, class Record>(Icon made, Record* none) {
        torv::ReleaseIconRecord(none);
        return Values(made.ConstructParameter(none), made.DescribeParameter(none),
                      Icon(static_cast<Icon*>(nullptr)).GetLength());
    };
    CHECK(takesNull(other, static_cast<tagIconHeader*>(nullptr)) == "0 0 0");
    CHECK(takesNull(CIconNoteAttack(1, 1, 1), static_cast<tagNoteIconObject*>(nullptr)) == "0 0 0");
    CHECK(takesNull(CIconVibrato(4, 4, 1), static_cast<tagVibratoIconObject*>(nullptr)) == "0 0 0");
    CHECK(takesNull(CIconDynamics(5, 1, 1), static_cast<tagDynamicsIconObject*>(nullptr)) == "0 0 0");
    CHECK(takesNull(CIconSinger(), static_cast<tagSingerIconObject*>(nullptr)) == "0 0 1");
}

TEST_CASE("base: host records, whatever they hold") {
    Base icon;
    icon.SetIDString(std::string(200, 'i').c_str());
    icon.SetCaption("cap");
    icon.SetOriginalVariation(9);
    tagIconHeader record{};
    record.reserved = 0x1234;
    CHECK(icon.DescribeParameter(&record) == 1);
    CHECK(Values(record.iconId, record.originalVariation, record.reserved) == Values(0x01020003, 9, 0x1234));
    CHECK(Values(std::string(record.idString).size(), record.caption) == "128 cap");
    std::memset(record.idString, 'z', sizeof record.idString); // unterminated
    record.iconId = 0x05018001;
    Base other;
    CHECK(other.ConstructParameter(&record) == 1);
    CHECK(Values(other.GetIconID(), other.IsUserIcon(), other.GetIDString().GetLength(), other.GetCaption()) ==
          Values(0x05018001, 1, 128, "cap"));
    torv::ReleaseIconRecord(&record);
    CHECK(Values{other.ConstructParameter(&record), other.GetCaption()} == "1 "); // a null caption
}

TEST_CASE("curves as text: fractions, and a round trip that loses") {
    CBreakPointList list;
    Fill(list, {{0, 10}, {100, -20}});
    CString positions, values;
    Base::FormatBreakPoint(list, 480, positions, values);
    CHECK(Values(positions, values) == "0.000000,0.208333 10,-20");
    CBreakPointList back;
    CHECK(Base::UnformatBreakPoint(back, 2, 480, positions, values) == 2);
    CHECK(RowsOf(back) == Rows{{0, 10, 0}, {99, -20, 0}}); // 0.208333 x 480 = 99.99984
    Base::FormatBreakPoint(list, 480, positions, values);  // appends, and no comma joins the two
    CHECK(Values(positions, values) == "0.000000,0.2083330.000000,0.208333 10,-2010,-20");

    struct Row {
        int count;
        const char *positions, *values;
        Rows points;
    };
    for (const Row& row :
         {Row{5, "0.0,0.5,1.0", "1,2,3", {{0, 1, 0}, {240, 2, 0}}}, // a point at the length ends it
          Row{1, "0.0,0.5", "1,2", {{0, 1, 0}}}, Row{65535, "0.1,0.2", "1", {{48, 1, 0}}},
          Row{2, "x,0.5", "7,y", {{0, 7, 0}, {240, 0, 0}}},
          Row{2, "0.50000000000000009,0.1", "65537", {{240, 1, 0}}}, // 15 characters; 16 bits
          Row{2, "-1e30", "1", {{-2147483647 - 1, 1, 0}}}, Row{0, "0.0", "1", {}}, Row{-1, "0.0", "1", {}}}) {
        CAPTURE(row.positions);
        back.RemoveAll();
        CHECK(Base::UnformatBreakPoint(back, row.count, 480, row.positions, row.values) == row.count); // as asked for
        CHECK(RowsOf(back) == row.points);
    }
}

TEST_CASE("curves cut at a place: the head moves, unless it starts later; the tail is interpolated") {
    constexpr int kLowest = -2147483647 - 1;
    struct Row {
        Rows points;
        int at;
        Rows head, tail;
    };
    for (const Row& row :
         {Row{{{0, 0}, {200, 100, 5}}, 100, {{0, 50, 5}, {100, 100, 5}}, {{0, 0, 0}, {100, 50, 5}}},
          Row{{{150, 10}, {300, 20}}, 100, {{150, 10, 0}, {300, 20, 0}}, {}},
          Row{{{0, 1}, {100, 2}, {200, 3}}, 100, {{0, 2, 0}, {100, 3, 0}}, {{0, 1, 0}, {100, 2, 0}}},
          Row{{{0, 1}, {50, 2}}, 100, {}, {{0, 1, 0}, {50, 2, 0}}},
          Row{{{0, 0}, {3, -5}}, 1, {{0, -2, 0}, {2, -5, 0}}, {{0, 0, 0}, {1, -2, 0}}}, // -1.67
          Row{{{100, 7}}, 100, {{100, 7, 0}}, {}},                                      // nothing before it
          // halfway between two that lie 2^32 - 2 apart
          Row{{{kLowest, 0}, {2147483646, 100}}, 0, {{0, 50, 0}, {2147483646, 100, 0}}, {{kLowest, 0, 0}, {0, 50, 0}}},
          // out of order: the last one's shift wraps; 1 + 0.5 rounds up
          Row{{{0, 1}, {200, 2}, {kLowest, 3}},
              100,
              {{0, 2, 0}, {100, 2, 0}, {2147483548, 3, 0}},
              {{0, 1, 0}, {100, 2, 0}}},
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

TEST_CASE("preset files: the user is told why one does not load, and the icon keeps what it held") {
    const TempFolder folder;
    const std::string path = folder.File("soft.aic", "[Common]\nCaption=Soft\n[Parameter]\nLength=120\nDepthBPNum=1\n");
    const Boxes messages;
    Base icon;
    CHECK(Values{icon.LoadPreset(path.c_str()), icon.GetCaption(), icon.GetLength()} == "1 Soft 120");
    CHECK(messages.texts.empty());
    const std::string missing = folder.Path("100%s none.aic");
    const std::string subfolder = folder.Folder("sub.aic");
    const std::string pattern = folder.Path("sof*.aic"); // is found, and cannot be opened
    CHECK(Values{icon.LoadPreset(missing.c_str()), icon.LoadPreset(subfolder.c_str()), icon.LoadPreset(pattern.c_str()),
                 icon.LoadPreset(nullptr)} == "0 0 0 0");
    CHECK(messages.texts == Texts{"Cannot find Icon File \"" + missing + "\" ! ",
                                  "Cannot find Icon File \"" + subfolder + "\" ! ",
                                  "Cannot read Icon File \"" + pattern + "\" ! ", "Cannot find Icon File \"\" ! "});
    CHECK(messages.beeps == std::vector<UINT>(4, MB_ICONEXCLAMATION));
    CHECK(messages.types == std::vector<UINT>(4, MB_ICONEXCLAMATION | MB_OK));
    CHECK(Values(icon.GetCaption(), icon.GetLength()) == "Soft 120");
}

TEST_CASE("of the open databases the last one is asked, in whatever order they close") {
    struct Icons : torv::IconCatalogue {
        explicit Icons(int place) : m_place(place) { torv::AddCatalogue(*this); }
        ~Icons() override { torv::RemoveCatalogue(*this); }
        int IndexOf(const CIconObject&) const override { return m_place; }
        int m_place;
    };
    const Base icon;
    CHECK(torv::IconIndexOf(icon) == 0);
    auto first = std::make_unique<Icons>(1), second = std::make_unique<Icons>(2), third = std::make_unique<Icons>(3);
    second.reset();
    CHECK(torv::IconIndexOf(icon) == 3);
    torv::AddCatalogue(*first); // again: once in the list, and in front
    CHECK(torv::IconIndexOf(icon) == 1);
    first.reset();
    CHECK(torv::IconIndexOf(icon) == 3);
    third.reset();
    CHECK(torv::GetIconCatalogue() == nullptr);
}
