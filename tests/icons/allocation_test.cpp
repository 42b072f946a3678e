// Memory that is refused: every function with a result answers it and leaves its icon as it was.
#include "allocation_failure.h"
#include "boxes.h"
#include "icon_fixture.h"
#include "platform/temp_folder.h"

#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_factory.h"
#include "torv/icons/icon_vibrato.h"

#include <functional>

namespace {

/// Longer than what a text holds without memory of its own.
const std::string kLong = "a text of more than fifteen characters";

CBreakPointList* CurveOf(CIconObject& icon) {
    auto* const vibrato = dynamic_cast<CIconVibrato*>(&icon);
    auto* const dynamics = dynamic_cast<CIconDynamics*>(&icon);
    return vibrato ? vibrato->GetDepthBPList() : dynamics ? dynamics->GetDynamicsBPList() : nullptr;
}

std::unique_ptr<CIconObject> Example(int status, int points) {
    auto icon = torv::MakeIcon(status, status == torv::kStatusDynamics ? torv::kCrescendo : status, 1);
    icon->SetIDString((kLong + "id").c_str());
    icon->SetCaption((kLong + std::to_string(points)).c_str());
    icon->SetLength(480);
    if (auto* const expression = dynamic_cast<CIconExpression*>(icon.get()))
        expression->SetDevelopperName(kLong.c_str());
    if (CBreakPointList* const curve = CurveOf(*icon)) {
        Rows rows;
        for (int i = 1; i <= points; ++i)
            rows.push_back({i * 1000, i});
        Fill(*curve, rows);
    }
    return icon;
}

std::string StateOf(CIconObject& icon) {
    const auto* const expression = dynamic_cast<CIconExpression*>(&icon);
    return Described(icon) + icon.GetIDString().GetStdString() +
           (expression ? expression->GetDevelopperName().GetStdString() : "");
}

template <class Record, class Icon>
int ThroughRecord(Icon& icon, Icon& other) {
    Record record{};
    const int described = other.DescribeParameter(&record);
    const int constructed = described && icon.ConstructParameter(&record);
    torv::ReleaseIconRecord(&record);
    return constructed;
}

int Records(CIconObject& icon, CIconObject& other) {
    if (auto* const vibrato = dynamic_cast<CIconVibrato*>(&icon))
        return ThroughRecord<tagVibratoIconObject>(*vibrato, dynamic_cast<CIconVibrato&>(other));
    if (auto* const dynamics = dynamic_cast<CIconDynamics*>(&icon))
        return ThroughRecord<tagDynamicsIconObject>(*dynamics, dynamic_cast<CIconDynamics&>(other));
    if (auto* const expression = dynamic_cast<CIconExpression*>(&icon))
        return ThroughRecord<tagNoteIconObject>(*expression, dynamic_cast<CIconExpression&>(other));
    return ThroughRecord<tagIconHeader>(icon, other);
}

int Export(CIconObject& icon) {
    CBreakPointArray array;
    if (auto* const vibrato = dynamic_cast<CIconVibrato*>(&icon))
        return vibrato->NormalizeDepthBreakPointArray(0, array) && vibrato->ExportDepthBreakPoint(CurveOf(icon), 0);
    auto* const dynamics = dynamic_cast<CIconDynamics*>(&icon);
    return dynamics->NormalizeBreakPointArray(0, array, 64) && dynamics->ExportBreakPoint(CurveOf(icon), 0);
}

} // namespace

TEST_CASE("memory that is refused leaves an icon as it was") {
    const TempFolder folder;
    const std::string path = folder.File("p.aic", "[Common]\nCaption=" + kLong +
                                                      "\n[Parameter]\nDepthBPNum=2\nDepthBPX=0.1,0.2\nDepthBPY=1,"
                                                      "2\nDynBPNum=2\nDynBPX=0.1,0.2\nDynBPY=1,2\n");
    const Boxes boxes;
    for (const int status : {1, 2, 3, 4, 5, 7}) {
        const std::unique_ptr<CIconObject> other = Example(status, 5);
        CxTypedFile described;
        other->DescribeParameter(&described, "S");
        using Operation = std::function<int(CIconObject&)>;
        std::vector<std::pair<std::string, Operation>> operations{
            {"construct", [&](CIconObject& icon) { return icon.ConstructParameter(&described, "S"); }},
            {"preset", [&](CIconObject& icon) { return icon.LoadPreset(path.c_str()); }},
            {"replace", [&](CIconObject& icon) { return icon.ReplaceParameter(other.get()); }},
            {"records", [&](CIconObject& icon) { return Records(icon, *other); }},
            {"id", [](CIconObject& icon) { return icon.SetIDString(kLong.c_str()); }},
            {"caption", [](CIconObject& icon) { return icon.SetCaption(kLong.c_str()); }},
            {"copy", [](CIconObject& icon) { return torv::CopyIcon(&icon) != nullptr; }},
            {"file", [](CIconObject& icon) {
                 CxTypedFile file;
                 return icon.DescribeParameter(&file, "S");
             }}};
        if (CurveOf(*other)) {
            operations.emplace_back("tail", [](CIconObject& icon) { return icon.TrimIconTail(100); });
            operations.emplace_back("export", Export);
        }
        if (status == torv::kStatusDynamics)
            operations.emplace_back("head", [](CIconObject& icon) { return icon.TrimIconHead(100); });
        for (const auto& [name, operation] : operations) {
            CAPTURE(status);
            CAPTURE(name);
            FailEachAllocation([&](AllocationFailure& failure) {
                const std::unique_ptr<CIconObject> icon = Example(status, 3);
                const std::string before = StateOf(*icon);
                const int result = failure.During([&] { return operation(*icon); });
                CHECK((result != 0) == !failure.HasHappened());
                if (!result)
                    CHECK(StateOf(*icon) == before);
            });
        }
    }
}
