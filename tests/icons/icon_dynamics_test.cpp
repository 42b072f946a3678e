#include "icon_fixture.h"

namespace {

/// From 0 to 20 over 480 ticks, 10 in the middle.
struct Swell : CIconDynamics {
    Swell() : CIconDynamics(5, 2, 1) {
        SetLength(480);
        SetEndDynamics(20);
        Fill(*GetDynamicsBPList(), {{5000, 10}});
    }
};

} // namespace

TEST_CASE("dynamics: levels and changes") {
    CIconDynamics level(5, 1, 1), swell(5, 2, 1), odd(5, 7, 1);
    CHECK(Values{level.SetStartDynamics(99), level.GetEndDynamics(), level.SetEndDynamics(128)} == "1 99 0");
    CHECK(Values{level.SetEndDynamics(5), level.GetStartDynamics(), level.SetStartDynamics(-1)} == "1 5 0");
    CHECK(Values{swell.SetStartDynamics(500), swell.GetStartDynamics(), swell.SetEndDynamics(500)} == "1 500 0");
    CHECK(Values{swell.SetEndDynamics(-127), swell.GetStartDynamics()} == "1 500");
    CHECK(Values{odd.SetStartDynamics(1), odd.SetEndDynamics(1), odd.NormalizeValue(999)} == "0 0 999");
    CHECK(Values(level.IsContinuance(), swell.IsContinuance(), odd.IsContinuance()) == "0 1 1");
    CHECK(Values(CIconDynamics::CalcExportDynamics(100, 40), CIconDynamics::CalcExportDynamics(10, -40),
                 CIconDynamics::CalcExportDynamics(2147483647, 1)) == "127 0 127");
    CHECK(Values(CIconDynamics::GetThreshold(0), CIconDynamics::GetThreshold(8), CIconDynamics::GetThreshold(-1)) ==
          "113 -1 -1");
    CHECK(Values(CIconDynamics::ScanThresholdIndex(113), CIconDynamics::ScanThresholdIndex(112),
                 CIconDynamics::ScanThresholdIndex(0), CIconDynamics::ScanThresholdIndex(-5)) == "0 1 7 7");
    CHECK(CIconDynamics::GetDefaultDynamics() == 72);
    CHECK(Values(level.GetOriginalSingerName(), level.GetDevelopperName().IsEmpty()) == "non 1");
}

TEST_CASE("dynamics: preset files are brought into range, a song's icons read as they were written") {
    CIconDynamics level(5, 1, 1), swell(5, 2, 1);
    const TempFolder folder;
    const std::string preset = folder.File(
        "p.aic", "[Parameter]\nLength=960\nStartDyn=150\nEndDyn=-200\nDynBPNum=1\nDynBPX=0.5\nDynBPY=300\n");
    CHECK(Values{level.LoadPreset(preset.c_str()), level.GetLength(), level.GetStartDynamics(),
                 level.GetEndDynamics()} == "1 1 127 0");
    CHECK(Values{swell.LoadPreset(preset.c_str()), swell.GetLength(), swell.GetEndDynamics()} == "1 960 -127");
    CHECK(swell.LoadPreset(preset.c_str()) == 1); // points are added to those there
    CHECK(RowsOf(*swell.GetDynamicsBPList()) == Rows{{5000, 127, 0}, {5000, 127, 0}});

    Construct(swell, "[S]\nLength=960\nStartDyn=999\nDynBPNum=1\nDynBPX=0.5\nDynBPY=300");
    CHECK(RowsOf(*swell.GetDynamicsBPList()) == Rows{{5000, 300, 0}});
    CHECK(Described(swell) == "[S]\nCaption=\nLength=960\nStartDyn=127\nEndDyn=0\nDynBPNum=1\n"
                              "DynBPX=0.500000\nDynBPY=300\n");
    const std::string flat = folder.File("flat.aic", "[Parameter]\nDynBPX=0.5\nDynBPY=1\n");
    CHECK(swell.LoadPreset(flat.c_str()) == 1); // no points stated: those there are not looked at
    CHECK(RowsOf(*swell.GetDynamicsBPList()) == Rows{{5000, 300, 0}});
    CHECK(swell.ConstructParameter(static_cast<CxTypedFile*>(nullptr), "S") == 0);
    Construct(level, "[S]\nLength=960");
    CHECK(Described(level) == "[S]\nCaption=\nLength=960\nStartDyn=0\nEndDyn=0\nDynBPNum=0\n");
}

TEST_CASE("dynamics: exports with the icon's own values, and as levels") {
    Swell swell;
    CBreakPointList list;
    CHECK(swell.ExportBreakPoint(&list, 1000) == 3);
    CHECK(RowsOf(list) == Rows{{1000, 0, 0x8000}, {1240, 10, 0}, {1480, 20, 0x8000}});
    CHECK(swell.ExportBreakPoint(nullptr, 0) == 0);
    struct Row {
        Rows stored, levels;
    };
    for (const Row& row : {Row{{{5000, 10}}, {{1000, 120, 0}, {1240, 127, 0}, {1480, 127, 0x8000}}},
                           Row{{{1, -20, 4}}, {{1000, 120, 4}, {1000, 100, 4}, {1480, 127, 0x8000}}}, // 0.048 ticks
                           Row{{{0, -20, 4}}, {{1000, 100, 4}, {1480, 127, 0x8000}}}, // itself the head point
                           Row{{}, {{1000, 120, 0}, {1480, 127, 0x8000}}}}) {
        CIconDynamics icon(&swell);
        icon.SetStartDynamics(-50); // not looked at: the curve starts from the level in force
        Fill(*icon.GetDynamicsBPList(), row.stored);
        CBreakPointArray array;
        tagBreakPoint there{1, 2, 3};
        array.Add(there);
        Rows levels = row.levels;
        levels.insert(levels.begin(), {1, 2, 3}); // appended to what is there
        CHECK(icon.NormalizeBreakPointArray(1000, array, 120) == static_cast<int>(levels.size()));
        CHECK(RowsOf(array) == levels);
    }
    CHECK(swell.ExportBreakPoint(swell.GetDynamicsBPList(), 0) == 4); // into its own list: as it stood
}

TEST_CASE("dynamics: cuts") {
    struct Row {
        DWORD clock;
        Rows points;
        int end;
        DWORD length;
    };
    for (const Row& row : {Row{240, {}, 10, 240},                         // the point at the cut is the end
                           Row{360, {{6667, 10, 0}}, 15, 360},            // 240 of 360, halfway from 10 to 20
                           Row{960, {{2500, 10, 0}}, 20, 960},            // beyond the end
                           Row{0xFFFFFFFF, {{0, 10, 0}}, 20, 0xFFFFFFFF}, //
                           Row{0, {}, 0, 0}}) {
        Swell tail;
        CHECK(tail.TrimIconTail(row.clock) == 1);
        CHECK(RowsOf(*tail.GetDynamicsBPList()) == row.points);
        CHECK(Values(tail.GetEndDynamics(), tail.GetLength(), tail.GetStartDynamics()) ==
              Values(row.end, row.length, 0));
    }
    // 120 and 240 ticks; the point put at the cut goes again, and start and end stay
    for (const Row& row : {Row{180, {{2000, 10, 0}}, 20, 300}, // 60 of 300
                           Row{120, {{3333, 10, 0}}, 20, 360}, // 120 of 360
                           Row{0, {{2500, 4, 0}, {5000, 10, 0}}, 20, 480}, Row{480, {}, 20, 0}, Row{900, {}, 20, 0},
                           Row{0x80000000, {}, 20, 0}}) {
        Swell head;
        Fill(*head.GetDynamicsBPList(), {{2500, 4}, {5000, 10}});
        CHECK(head.TrimIconHead(row.clock) == 1);
        CHECK(RowsOf(*head.GetDynamicsBPList()) == row.points);
        CHECK(Values(head.GetLength(), head.GetStartDynamics(), head.GetEndDynamics()) ==
              Values(row.length, 0, row.end));
    }
}

TEST_CASE("dynamics: records, copies and replacements") {
    Swell swell;
    swell.SetStartDynamics(-30);
    tagDynamicsIconObject record{};
    CHECK(swell.DescribeParameter(&record) == 1);
    CHECK(Values(record.header.iconId, record.length, record.startDynamics, record.endDynamics, record.pointCount,
                 record.points[0].position) == Values(0x05020001, 480, -30, 20, 1, 5000));
    CIconDynamics built(5, 3, 9), replaced(5, 3, 9);
    CHECK(Values{built.ConstructParameter(&record), replaced.ReplaceParameter(&built)} == "1 1");
    torv::ReleaseIconRecord(&record);
    CIconDynamics copy(&built);
    CHECK(Values(built.GetIconID(), copy.GetIconID(), replaced.GetIconID()) ==
          Values(0x05020001, 0x05020001, 0x05030009));
    const std::string text = Described(swell);
    CHECK(Values(Described(built), Described(copy), Described(replaced)) == Values(text, text, text));
    CIconVibrato vibrato(4, 4, 1);
    vibrato.SetLength(10);
    CHECK(Values{replaced.ReplaceParameter(&vibrato), replaced.GetLength()} == "1 10"); // what both have
    CHECK(Values(replaced.GetStartDynamics(), replaced.GetDynamicsBPList()->GetCount()) == "-30 1");
    tagDynamicsIconObject empty{};
    empty.pointCount = 7; // with a null array
    CHECK(Values{copy.ConstructParameter(&empty), copy.GetDynamicsBPList()->IsEmpty()} == "1 1");
}
