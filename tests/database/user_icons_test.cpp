// Users' icons through the manager: registered, replaced, taken out and restored, and there again after a restart.
#include "allocation_failure.h"
#include "database/database_fixture.h"

#include "torv/score/cross_reference_map.h"

namespace {

struct OpenHost : FakeHost {
    OpenHost() {
        AddExpression(torv::kStatusAttack, 3, "plain", 1);
        REQUIRE(manager.OpenDatabase() == 1);
    }
    void Reopen() {
        manager.CloseDatabase();
        REQUIRE(manager.OpenDatabase() == 1);
    }
    std::unique_ptr<CIconNoteAttack> Attack(const char* name) {
        auto icon = std::make_unique<CIconNoteAttack>(torv::kStatusAttack, 1, 1);
        icon->SetIDString(name);
        icon->SetCaption("Caption");
        icon->SetLength(480);
        icon->SetDuration(11);
        icon->SetOriginalVariation(1);
        return icon;
    }
    Boxes boxes;
    CQuillDBManager manager;
};

/// An icon that says when it goes.
class Witness : public CIconDynamics {
public:
    Witness(int articulation, int& gone) : CIconDynamics(torv::kStatusDynamics, articulation, 0), m_gone(gone) {}
    ~Witness() override { ++m_gone; }

private:
    int& m_gone;
};

} // namespace

TEST_CASE("user icons: dynamics live in the file from one session to the next") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    CHECK(manager.RegisterIconObject(Level(torv::kDynaff, 0, "first", 10).release()) == 0x05018001);
    CHECK(manager.RegisterIconObject(Level(torv::kDynaff, 0, "second", 20).release()) == 0x05018002);
    host.Reopen();
    auto* const second = dynamic_cast<CIconDynamics*>(manager.GetModelIconObject(0x05018002));
    REQUIRE(second);
    CHECK((second->GetStartDynamics() == 20 && second->IsUserIcon()));

    // Taken out, the lowest number is free for the next; restored, an icon wants its own.
    std::unique_ptr<CIconObject> first(manager.UnregisterIconObject(0x05018001));
    REQUIRE(first);
    CHECK(manager.UnregisterIconObject(0x05018001) == nullptr);
    CHECK(manager.RestoreUserIconObject(second) == 0); // it is there
    const DWORD third = manager.RegisterIconObject(Level(torv::kDynaff, 0, "third", 30).release());
    CHECK(third == 0x05018001);
    CHECK(manager.RestoreUserIconObject(first.get()) == 0);
    delete manager.UnregisterIconObject(third);
    CHECK(manager.RestoreUserIconObject(first.get()) == 1);
    CHECK(manager.GetModelIconObject(0x05018001) == first.release());

    auto louder = Level(torv::kDynaff, 0x8002, "second", 99);
    CHECK(manager.ReplaceIconObject(louder.get()) == 1);
    louder->SetVariation(0x8009);
    CHECK(manager.ReplaceIconObject(louder.get()) == 0); // there is none
    louder->SetVariation(2);
    CHECK(manager.ReplaceIconObject(louder.get()) == 0); // presets stay as they are
    host.Reopen();
    CHECK(dynamic_cast<CIconDynamics*>(manager.GetModelIconObject(0x05018002))->GetStartDynamics() == 99);
    CHECK(manager.GetModelIconObject(0x05018001)->GetIDString() == "first");
    CHECK(host.boxes.texts.empty());
}

TEST_CASE("user icons: who owns an icon that is not registered") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    int gone = 0;
    // No variation for it: it is destroyed.
    CHECK(manager.RegisterIconObject(new Witness(9, gone)) == 0);
    CHECK(gone == 1);
    // Of no status that users have icons of, or of another class than its status says: still the caller's.
    CIconDynamics singer(torv::kStatusSinger, 1, 0);
    CIconDynamics attack(torv::kStatusAttack, 1, 0);
    CIconDynamics nothing(0, 1, 0);
    for (CIconObject* icon : std::vector<CIconObject*>{&singer, &attack, &nothing}) {
        CHECK(manager.RegisterIconObject(icon) == 0);
        icon->SetVariation(0x8001);
        CHECK(manager.RestoreUserIconObject(icon) == 0);
        CHECK(manager.ReplaceIconObject(icon) == 0);
    }
    CHECK(manager.RegisterIconObject(nullptr) == 0);
    CHECK(manager.RestoreUserIconObject(nullptr) == 0);
    CHECK(manager.ReplaceIconObject(nullptr) == 0);
    for (const DWORD id : {0U, 0x05010001U, 0x07010000U, 0x01018001U})
        CHECK(manager.UnregisterIconObject(id) == nullptr);
}

TEST_CASE("user icons: expressions are handed to the external library as a file") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    host.TakeCalls();
    const DWORD id = manager.RegisterIconObject(host.Attack("A\x83\x5C").release());
    CHECK(id == 0x01018001);
    CHECK(host.TakeCalls() == "CreateVirtualExpItem ");
    CHECK(host.fake->created.value == 1);
    const std::string file = host.fake->fileName;
    CHECK(file.substr(file.size() - 15) == "ux11_be7ca3.aic"); // the ID's bytes 41 83 5C, inverted
    CHECK(std::string(host.fake->handedOver) == "[Common]\r\nArticulation = NoteAttack\r\nCaption = Caption\r\n\r\n"
                                                "[Parameter]\r\nLength = 480\r\nDuration = 11\r\nDepth = 64\r\n\r\n");
    CHECK(!std::filesystem::exists(file)); // gone after the call
    const auto* const icon = dynamic_cast<CIconNoteAttack*>(manager.GetModelIconObject(id));
    REQUIRE(icon);
    CHECK(icon->GetExpressionID() == 0x0103); // from the preset that it was made from

    auto changed = host.Attack("A\x83\x5C");
    changed->SetVariation(0x8001);
    changed->SetDuration(99);
    CHECK(manager.ReplaceIconObject(changed.get()) == 1);
    CHECK(host.TakeCalls() == "DeleteVirtualExpItem CreateVirtualExpItem ");
    CHECK(icon->GetDuration() == 99);
    const std::unique_ptr<CIconObject> removed(manager.UnregisterIconObject(id));
    CHECK(removed.get() == icon);
    CHECK(host.TakeCalls() == "DeleteVirtualExpItem ");
    CHECK(host.fake->deletedValue == 1);
}

TEST_CASE("user icons: what the external library refuses is told, and nothing has changed") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    host.fake->createStatus = 6;
    const auto refused = host.Attack("a");
    CHECK(manager.RegisterIconObject(refused.get()) == 0); // still ours
    CHECK(host.boxes.Take() == Texts{"DBM_CreateVirtualExpItem returned 6"});
    CHECK(manager.GetModelIconObject(0x01018001) == nullptr);

    host.fake->createStatus = 0;
    const DWORD id = manager.RegisterIconObject(host.Attack("b").release());
    host.fake->deleteStatus = 5;
    CHECK(manager.UnregisterIconObject(id) == nullptr);
    CHECK(host.boxes.Take() == Texts{"DBM_DeleteVirtualExpItem returned 5"});
    CHECK(manager.VerifyIconID(id) == 1);
    host.fake->deleteStatus = 0;
    host.fake->createStatus = 6;
    auto changed = host.Attack("b");
    changed->SetVariation(0x8001);
    changed->SetDuration(99);
    host.TakeCalls();
    CHECK(manager.ReplaceIconObject(changed.get()) == 0);
    CHECK(host.TakeCalls() == "DeleteVirtualExpItem CreateVirtualExpItem CreateVirtualExpItem "); // the old one again
    CHECK(dynamic_cast<CIconNoteAttack*>(manager.GetModelIconObject(id))->GetDuration() == 11);
}

TEST_CASE("user icons: those in the file and those that the external library kept are joined") {
    FakeHost host;
    Boxes boxes;
    FakeDatabase::Expression& attacks = host.AddExpression(torv::kStatusAttack, 3, "plain", 1);
    attacks.items[1] = {5, 1, "both", host.IconFile("both"), "Kept", "Their singer", "D"};
    attacks.items[2] = {7, 1, "theirs", host.IconFile("theirs"), "", "", ""};
    attacks.items[3] = {8, 1, "theirs too", host.IconFile("theirs too"), "", "", ""};
    attacks.itemCount = 4;
    std::ofstream(host.UserFile(), std::ios::binary)
        << "[NoteAttack]\n2=#USER0001\n7=#USER0002\n[#USER0001]\nIconID=$01018002\nIDS=both\nOriginal=1\n"
           "Caption=Ours\nDuration=3\n[#USER0002]\nIconID=$01018007\nIDS=ours\nOriginal=1\n";
    CQuillDBManager manager;
    REQUIRE(manager.OpenDatabase() == 1);
    CHECK(boxes.texts.empty());
    // In both: the file's number and parameters, the library's identity.
    auto* icon = dynamic_cast<CIconNoteAttack*>(manager.GetModelIconObject(0x01018002));
    REQUIRE(icon);
    CHECK((icon->GetCaption() == "Ours" && icon->GetDuration() == 3 && icon->GetExpressionEntry()->itemValue == 5));
    CHECK(icon->GetOriginalSingerName() == "Their singer");
    // Only in the file: it sounds as what it was made from, and the library is not asked to drop it.
    icon = dynamic_cast<CIconNoteAttack*>(manager.GetModelIconObject(0x01018007));
    REQUIRE(icon);
    CHECK((icon->GetIDString() == "ours" && icon->GetExpressionID() == 0x0103));
    host.TakeCalls();
    delete manager.UnregisterIconObject(0x01018007);
    CHECK(host.TakeCalls().empty());
    // Only in the library: under its own number where that was free.
    CHECK(manager.GetModelIconObject(0x01018001)->GetIDString() == "theirs");
    CHECK(manager.GetModelIconObject(0x01018008)->GetIDString() == "theirs too");
    CHECK(manager.GetModelIconObject(0x01018005) == nullptr);
}

TEST_CASE("user icons: what the external library keeps has its number, whether it can be read or not") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    manager.CloseDatabase();
    FakeDatabase::Expression& attacks = host.fake->expressions[0];
    attacks.items[1] = {1, 1, "gone", "gone.aic", "", "", ""};
    attacks.items[2] = {2, 1, "ours", "gone too.aic", "", "Their singer", ""};
    attacks.itemCount = 3;
    std::ofstream(host.UserFile(), std::ios::binary)
        << "[NoteAttack]\n2=a\n[a]\nIconID=$01018002\nIDS=ours\nOriginal=1\nDuration=3\n";
    REQUIRE(manager.OpenDatabase() == 1);
    CHECK(host.boxes.Take() == Texts{"File not found !\n\ngone.aic", "File not found !\n\ngone too.aic"});
    CHECK(manager.GetModelIconObject(0x01018001) == nullptr);
    auto* const ours = dynamic_cast<CIconNoteAttack*>(manager.GetModelIconObject(0x01018002));
    REQUIRE(ours);
    CHECK(ours->GetDuration() == 3);
    CHECK(ours->GetExpressionEntry()->itemValue == 2); // the item's, though its file is gone
    CHECK(manager.RegisterIconObject(host.Attack("a").release()) == 0x01018003);

    // Another host has put in two meanwhile: their numbers are seen when the first is refused.
    attacks.items[3] = {4, 1, "theirs", "4.aic", "", "", ""};
    attacks.items[4] = {5, 1, "theirs", "5.aic", "", "", ""};
    attacks.itemCount = 5;
    CHECK(manager.RegisterIconObject(host.Attack("b").release()) == 0x01018006);
    CHECK(host.boxes.texts.empty());
    auto restored = host.Attack("c");
    attacks.items[5] = {7, 1, "theirs", "7.aic", "", "", ""};
    attacks.itemCount = 6;
    restored->SetVariation(0x8007);
    CHECK(manager.RestoreUserIconObject(restored.get()) == 0); // under its own number or not at all
    CHECK(host.boxes.Take() == Texts{"DBM_CreateVirtualExpItem returned 3"});
}

TEST_CASE("user icons: memory that is refused leaves database and library as they were") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    FailEachAllocation([&](AllocationFailure& failure) {
        host.TakeCalls();
        std::unique_ptr<CIconObject> icon = host.Attack("an ID string of more than fifteen bytes");
        const DWORD id = failure.During([&] { return manager.RegisterIconObject(icon.get()); });
        CHECK((id == 0x01018001) == !failure.HasHappened());
        CHECK(manager.VerifyIconID(0x01018001) == !failure.HasHappened());
        const std::string calls = host.TakeCalls();
        if (id) {
            static_cast<void>(icon.release());
            icon.reset(manager.UnregisterIconObject(id));
            CHECK(icon != nullptr);
        } else {
            CHECK((calls.empty() || calls == "CreateVirtualExpItem DeleteVirtualExpItem "));
        }
    });
    tagQuillIconOverview overview{};
    FailEachAllocation([&](AllocationFailure& failure) {
        CCrossReferenceMap map;
        const int found = failure.During([&] {
            return manager.LookupIconOverview(0x01010001, &overview) && manager.GetVariationReferenceMap(1, 1, map) &&
                   manager.GetStatusReferenceMap(map);
        });
        CHECK(found == !failure.HasHappened());
    });
}

TEST_CASE("user icons: a caption is changed for good") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    const DWORD id = manager.RegisterIconObject(host.Attack("a").release());
    host.Reopen();
    CIconNoteAttack copy(dynamic_cast<CIconNoteAttack*>(manager.GetModelIconObject(id)));
    CHECK(manager.GetExpressionDB()->SetUserItemCaption(copy, "New; caption") == 1);
    CHECK(copy.GetCaption() == "New; caption");
    host.Reopen();
    CHECK(manager.GetModelIconObject(id)->GetCaption() == "New; caption");
    CIconNoteAttack preset(torv::kStatusAttack, 1, 1), none(torv::kStatusAttack, 1, 0x8009);
    for (CIconNoteAttack* const icon : {&preset, &none})
        CHECK(manager.GetExpressionDB()->SetUserItemCaption(*icon, "x") == 0);
    CHECK(manager.GetModelIconObject(0x01010001)->GetCaption() == "plain");
}

TEST_CASE("user icons: names of expression files") {
    CHECK(CExpressionDB::UserExpressionFileName(4, 4, "Az") == "ux44_be85");
    CHECK(CExpressionDB::UserExpressionFileName(1, 1, "") == "ux11_");
    CHECK(CExpressionDB::UserExpressionFileName(1, 1, std::string(5000, 'x').c_str()).GetLength() == 5 + 180);
}
