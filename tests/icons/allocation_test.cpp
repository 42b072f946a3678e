// Memory that is refused: every function with a result answers it and leaves its icon as it was.
#include "allocation_failure.h"
#include "boxes.h"
#include "icon_fixture.h"

#include "torv/icons/icon_factory.h"

#include <functional>

namespace {

/// Longer than what a text holds without memory of its own.
const std::string kLong = "a text of more than fifteen characters";

template <class Icon>
std::unique_ptr<Icon> Example(int status, int points) {
    auto icon = std::make_unique<Icon>(status, torv::kCrescendo, 1);
    icon->SetIDString((kLong + "id").c_str());
    icon->SetCaption((kLong + std::to_string(points)).c_str());
    icon->SetLength(480);
    if constexpr (std::is_base_of_v<CIconExpression, Icon>)
        icon->SetDevelopperName(kLong.c_str());
    const Rows rows(static_cast<size_t>(points), {1000, points});
    if constexpr (std::is_same_v<CIconVibrato, Icon>)
        Fill(*icon->GetDepthBPList(), rows);
    if constexpr (std::is_same_v<CIconDynamics, Icon>)
        Fill(*icon->GetDynamicsBPList(), rows);
    return icon;
}

template <class Icon>
std::string StateOf(Icon& icon) {
    std::string state = Described(icon) + icon.GetIDString().GetStdString();
    if constexpr (std::is_base_of_v<CIconExpression, Icon>)
        state += icon.GetDevelopperName().GetStdString();
    return state;
}

/// What every icon does, and `operations` of its kind.
template <class Icon, class Record>
void RefuseMemory(int status, std::vector<std::function<int(Icon&)>> operations = {}) {
    const TempFolder folder;
    const std::string path = folder.File("p.aic", "[Common]\nCaption=" + kLong +
                                                      "\n[Parameter]\nDepthBPNum=2\nDepthBPX=0.1,0.2\nDepthBPY=1,"
                                                      "2\nDynBPNum=2\nDynBPX=0.1,0.2\nDynBPY=1,2\n");
    const std::unique_ptr<Icon> other = Example<Icon>(status, 5);
    CxTypedFile described;
    other->DescribeParameter(&described, "S");
    const std::vector<std::function<int(Icon&)>> common{
        [&](Icon& icon) { return icon.ConstructParameter(&described, "S"); },
        [&](Icon& icon) { return icon.LoadPreset(path.c_str()); },
        [&](Icon& icon) { return icon.ReplaceParameter(other.get()); },
        [&](Icon& icon) {
            Record record{};
            const int constructed = other->DescribeParameter(&record) && icon.ConstructParameter(&record);
            torv::ReleaseIconRecord(&record);
            return constructed;
        },
        [](Icon& icon) { return icon.SetIDString(kLong.c_str()); },
        [](Icon& icon) { return icon.SetCaption(kLong.c_str()); },
        [](Icon& icon) { return int{torv::CopyIcon(&icon) != nullptr}; },
        [](Icon& icon) {
            CxTypedFile file;
            return icon.DescribeParameter(&file, "S");
        }};
    operations.insert(operations.end(), common.begin(), common.end());
    for (size_t i = 0; i < operations.size(); ++i) {
        CAPTURE(status);
        CAPTURE(i);
        FailEachAllocation([&](AllocationFailure& failure) {
            const std::unique_ptr<Icon> icon = Example<Icon>(status, 3);
            const std::string before = StateOf(*icon);
            const int result = failure.During([&] { return operations[i](*icon); });
            CHECK((result != 0) == !failure.HasHappened());
            if (!result)
                CHECK(StateOf(*icon) == before);
        });
    }
}

} // namespace

TEST_CASE("memory that is refused leaves an icon as it was") {
    const Boxes boxes;
    RefuseMemory<CIconNoteAttack, tagNoteIconObject>(1);
    RefuseMemory<CIconNoteTransit, tagNoteIconObject>(3);
    RefuseMemory<CIconSinger, tagSingerIconObject>(7);
    RefuseMemory<CIconVibrato, tagVibratoIconObject>(4, {[](auto& icon) { return icon.TrimIconTail(100); },
                                                         [](auto& icon) {
                                                             CBreakPointArray array;
                                                             return icon.NormalizeDepthBreakPointArray(0, array) &&
                                                                    icon.ExportDepthBreakPoint(icon.GetDepthBPList(),
                                                                                               0);
                                                         }});
    RefuseMemory<CIconDynamics, tagDynamicsIconObject>(
        5, {[](auto& icon) { return icon.TrimIconTail(100); }, [](auto& icon) { return icon.TrimIconHead(100); },
            [](auto& icon) {
                CBreakPointArray array;
                return icon.NormalizeBreakPointArray(0, array, 64) &&
                       icon.ExportBreakPoint(icon.GetDynamicsBPList(), 0);
            }});
}
