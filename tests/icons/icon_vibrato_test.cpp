#include "icon_fixture.h"

TEST_CASE("vibrato: setters refuse what files have brought into range") {
    CIconVibrato icon(4, 4, 1);
    CHECK(Values{icon.SetStartDepth(200), icon.SetStartDepth(127), icon.SetStartRate(-1), icon.GetStartDepth()} ==
          "0 1 0 127");
    CHECK(Values{icon.SetEndDepth(5), icon.SetEndRate(5), icon.IsContinuance()} == "0 0 1");
    CHECK(Values(CIconVibrato::NormalizeDepth(-4), CIconVibrato::NormalizeRate(200)) == "0 127");
    Construct(icon, "[S]\nLength=480\nStartDepth=200\nDepthBPNum=3\nDepthBPX=0.0,0.5,1.0\nDepthBPY=10,200,30\n"
                    "StartRate=-4\nRateBPNum=65536\nRateBPX=0.5\nRateBPY=5");
    CHECK(Values(icon.GetStartDepth(), icon.GetStartRate()) == "127 0");
    CHECK(RowsOf(*icon.GetDepthBPList()) == Rows{{0, 10, 0}, {5000, 200, 0}}); // points are taken as written
    CHECK(icon.GetRateBPList()->IsEmpty()); // the low 16 bits of the count are 0: the texts are not read
    CHECK(Described(icon) == "[S]\nCaption=\nLength=480\n"
                             "StartDepth=127\nDepthBPNum=2\nDepthBPX=0.000000,0.500000\nDepthBPY=10,200\n"
                             "StartRate=0\nRateBPNum=0\n");
    CxTypedFile file;
    CHECK(icon.DescribeUserExpression(&file) == 1);
    CHECK(Compact(file) == "[Common]\nArticulation=Vibrato\nCaption=\n"
                           "[Parameter]\nLength=480\n"
                           "StartDepth=127\nDepthBPNum=2\nDepthBPX=0.000000,0.500000\nDepthBPY=10,200\n"
                           "StartRate=0\nRateBPNum=0\n");
    Construct(icon, "[S]\nRateBPNum=-1\nRateBPX=0.25\nRateBPY=5"); // 65535 asked for, one there
    CHECK(icon.GetDepthBPList()->IsEmpty());
    CHECK(RowsOf(*icon.GetRateBPList()) == Rows{{2500, 5, 0}});
    Construct(icon, "[S]\nRateBPX=0.25\nRateBPY=5"); // no count: the curve that was there goes too
    CHECK(icon.GetRateBPList()->IsEmpty());
}

TEST_CASE("vibrato: exports in ticks") {
    CIconVibrato icon(4, 4, 1);
    icon.SetLength(480);
    icon.SetStartDepth(64);
    icon.SetStartRate(7);
    Fill(*icon.GetDepthBPList(), {{5000, 20, 3}});
    CBreakPointList exported;
    Fill(exported, {{1, 2}});
    CHECK(icon.ExportDepthBreakPoint(&exported, 1000) == 3); // the list's count
    CHECK(RowsOf(exported) == Rows{{1, 2, 0}, {1000, 64, 0x8000}, {1240, 20, 3}});
    CHECK(Values{icon.ExportRateBreakPoint(&exported, 1000), exported.GetTail().value} == "4 7");
    CBreakPointArray array;
    array.SetSize(9);
    CHECK(icon.NormalizeDepthBreakPointArray(1000, array) == 2); // resized
    CHECK(RowsOf(array) == Rows{{1000, 64, 0x8000}, {1240, 20, 3}});
    CHECK(Values(icon.NormalizeRateBreakPointArray(5, array), array[0].value) == "1 7");
    CHECK(icon.ExportDepthBreakPoint(nullptr, 0) == 0);
    CHECK(icon.ExportDepthBreakPoint(icon.GetDepthBPList(), 0) == 3); // into its own list: as it stood
    CHECK(RowsOf(*icon.GetDepthBPList()) == Rows{{5000, 20, 3}, {0, 64, 0x8000}, {240, 20, 3}});
}

TEST_CASE("vibrato: a cut keeps the points' ticks") {
    struct Row {
        DWORD clock;
        Rows depth;
    };
    for (const Row& row : {Row{240, {{5000, 10, 0}, {10000, 20, 0}}}, // 120 of 240, and halfway from 10 to 30 at 240
                           Row{360, {{3333, 10, 0}, {10000, 30, 0}}}, // a point exactly at the cut
                           Row{960, {{1250, 10, 0}, {3750, 30, 0}}},  // beyond the end: 120 and 360 of 960
                           Row{0xFFFFFFFF, {{0, 10, 0}, {0, 30, 0}}}, //
                           Row{0, {}}}) {
        CIconVibrato icon(4, 4, 1);
        icon.SetLength(480);
        icon.SetStartDepth(64);
        Fill(*icon.GetDepthBPList(), {{2500, 10}, {7500, 30}});
        Fill(*icon.GetRateBPList(), {{0, 8}});
        CHECK(icon.TrimIconTail(row.clock) == 1);
        CHECK(RowsOf(*icon.GetDepthBPList()) == row.depth);
        CHECK(RowsOf(*icon.GetRateBPList()) == (row.clock ? Rows{{0, 8, 0}} : Rows{}));
        CHECK(Values(icon.GetLength(), icon.GetStartDepth()) == Values(row.clock, 64));
        CHECK(icon.TrimIconHead(10) == 0);
    }
}

TEST_CASE("vibrato: records, copies and replacements carry ends that nobody reads") {
    CIconVibrato icon(4, 4, 1);
    Fill(*icon.GetRateBPList(), {{1, 2, 3}});
    tagVibratoIconObject record{};
    record.header.reserved = 0x1234;
    CHECK(icon.DescribeParameter(&record) == 1);
    CHECK(Values(record.ratePointCount, record.ratePoints[0].flags) == "1 3");
    CHECK(Values(record.depthPointCount, record.depthPoints, record.header.reserved) == Values(0, 0, 0x1234));
    record.length = 480;
    record.startDepth = 5;
    record.startRate = 6;
    record.endDepth = 40;
    record.endRate = 50;
    record.depthPointCount = 4; // with a null array: empty
    record.idLow = 9;
    CIconVibrato other(4, 4, 2);
    Fill(*other.GetDepthBPList(), {{7, 7}});
    CHECK(Values{other.ConstructParameter(&record), other.GetEndRate(), other.GetDepthBPList()->IsEmpty()} == "1 0 1");
    torv::ReleaseIconRecord(&record);
    CHECK(record.ratePoints == nullptr);

    CIconVibrato replaced(4, 4, 9);
    CHECK(Values{replaced.ReplaceParameter(&other), replaced.GetIconID()} == Values(1, 0x04040009)); // unlike notes
    CIconVibrato copied(&other);
    for (CIconVibrato* const copy : {&replaced, &copied}) {
        tagVibratoIconObject described{};
        CHECK(copy->DescribeParameter(&described) == 1);
        CHECK(Values(described.startDepth, described.endDepth, described.startRate, described.endRate) == "5 40 6 50");
        CHECK(Values(described.length, described.idLow) == "480 9");
        CHECK(Values(described.ratePointCount, described.ratePoints[0].position) == "1 1");
        torv::ReleaseIconRecord(&described);
    }
}
