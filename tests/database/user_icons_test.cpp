// Users' icons through the manager: registered, replaced, taken out and restored, and there again after a restart.
#include "allocation_failure.h"
#include "database/database_fixture.h"
#include "platform/small_disk.h"

#include "torv/score/cross_reference_map.h"

namespace {

std::unique_ptr<CIconNoteAttack> Attack(const char* name, int duration = 11, int variation = 1) {
    auto icon = std::make_unique<CIconNoteAttack>(torv::kStatusAttack, 1, variation);
    icon->SetIDString(name);
    icon->SetCaption("Caption");
    icon->SetLength(480);
    icon->SetDuration(duration);
    icon->SetOriginalVariation(1);
    return icon;
}

} // namespace

TEST_CASE("user icons: dynamics live in the file from one session to the next") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    const auto put = [&manager](const char* name, int level) {
        return manager.RegisterIconObject(Level(torv::kDynaff, 0, name, level).release());
    };
    CHECK(put("first", 10) == 0x05018001);
    CHECK(put("second", 20) == 0x05018002);
    host.Reopen();
    CHECK(host.AboutModel(0x05018002) == "05018002 second 'second' 1 from 0 level 20");

    // Taken out, the lowest number is free for the next; restored, an icon wants its own.
    CHECK(manager.RestoreUserIconObject(manager.GetModelIconObject(0x05018002)) == 0); // it is there
    CIconObject* const first = manager.UnregisterIconObject(0x05018001);
    CHECK(manager.UnregisterIconObject(0x05018001) == nullptr);
    CHECK(put("third", 30) == 0x05018001);
    CHECK(manager.RestoreUserIconObject(first) == 0);
    delete manager.UnregisterIconObject(0x05018001);
    CHECK(manager.RestoreUserIconObject(first) == 1);
    CHECK(manager.GetModelIconObject(0x05018001) == first);

    auto louder = Level(torv::kDynaff, 0x8002, "second", 99);
    louder->SetOriginalVariation(4);
    CHECK(manager.ReplaceIconObject(louder.get()) == 1);
    for (const int variation : {0x8009, 2}) { // there is none; presets stay as they are
        louder->SetVariation(variation);
        CHECK(manager.ReplaceIconObject(louder.get()) == 0);
    }
    host.Reopen();
    CHECK(host.AboutModel(0x05018001) == "05018001 first 'first' 1 from 0 level 10");
    CHECK(host.AboutModel(0x05018002) == "05018002 second 'second' 1 from 4 level 99");
    CHECK(host.boxes.texts.empty());
}

TEST_CASE("user icons: who owns an icon that is not registered") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    CHECK(manager.RegisterIconObject(new CIconDynamics(torv::kStatusDynamics, 9, 0)) == 0); // no variation: destroyed
    // Of no status that users have icons of, or of another class than its status says: still the caller's.
    CIconDynamics singer(torv::kStatusSinger, 1, 0x8001);
    CIconDynamics attack(torv::kStatusAttack, 1, 0x8001);
    CIconDynamics nothing(0, 1, 0x8001);
    for (CIconObject* icon : std::vector<CIconObject*>{&singer, &attack, &nothing, nullptr})
        CHECK(Values{manager.RegisterIconObject(icon), manager.RestoreUserIconObject(icon),
                     manager.ReplaceIconObject(icon)} == "0 0 0");
    for (const DWORD id : {0U, 0x05010001U, 0x07010000U, 0x01018001U})
        CHECK(manager.UnregisterIconObject(id) == nullptr);
}

TEST_CASE("user icons: expressions are handed to the external library as a file") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    host.TakeCalls();
    const DWORD id = manager.RegisterIconObject(Attack("A\x83\x5C").release());
    CHECK(host.TakeCalls() == "CreateVirtualExpItem ");
    const std::string file = host.fake->fileName;
    CHECK(file.substr(file.size() - 15) == "ux11_be7ca3.aic"); // the ID's bytes 41 83 5C, inverted
    CHECK(std::string(host.fake->handedOver) == "[Common]\r\nArticulation = NoteAttack\r\nCaption = Caption\r\n\r\n"
                                                "[Parameter]\r\nLength = 480\r\nDuration = 11\r\nDepth = 64\r\n\r\n");
    CHECK(!std::filesystem::exists(file)); // gone after the call
    // 0x0103 is the number of the preset that it was made from.
    CHECK(host.AboutModel(id) == "01018001 A\x83\x5C 'Caption' 480 from 1 shape 11 64 of 259 1  ");

    CHECK(manager.ReplaceIconObject(Attack("A\x83\x5C", 99, 0x8001).get()) == 1);
    CHECK(host.TakeCalls() == "DeleteVirtualExpItem CreateVirtualExpItem ");
    CHECK(host.AboutModel(id) == "01018001 A\x83\x5C 'Caption' 480 from 1 shape 99 64 of 259 1  ");
    delete manager.UnregisterIconObject(id);
    CHECK(Values(host.TakeCalls(), host.fake->deletedValue, host.AboutModel(id)) == "DeleteVirtualExpItem  1 none");
    CHECK(CExpressionDB::UserExpressionFileName(4, 4, std::string(5000, 'x').c_str()).GetLength() == 5 + 180);
}

TEST_CASE("user icons: what the external library refuses is told, and nothing has changed") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    host.fake->createStatus = 6;
    const auto refused = Attack("a");
    CHECK(manager.RegisterIconObject(refused.get()) == 0); // still ours
    CHECK(host.boxes.Take() == Texts{"DBM_CreateVirtualExpItem returned 6"});
    CHECK(host.AboutModel(0x01018001) == "none");

    host.fake->createStatus = 0;
#if !defined(_WIN32)
    {
        const SmallDisk disk(0); // for the file to hand over
        CHECK(manager.RegisterIconObject(refused.get()) == 0);
    }
    CHECK(host.boxes.Take() == Texts{"Function error - 'CExpressionDB::CreateUserItem'"});
#endif
    const DWORD id = manager.RegisterIconObject(Attack("b").release());
    const std::string registered = host.AboutModel(id);
    host.fake->deleteStatus = 5;
    CHECK(manager.UnregisterIconObject(id) == nullptr);
    CHECK(manager.ReplaceIconObject(Attack("b", 99, 0x8001).get()) == 0);
    CHECK(host.boxes.Take() == Texts(2, "DBM_DeleteVirtualExpItem returned 5"));
    CHECK(host.AboutModel(id) == registered);
    host.fake->deleteStatus = 0;
    host.fake->createStatus = 6;
    host.TakeCalls();
    CHECK(manager.ReplaceIconObject(Attack("b", 99, 0x8001).get()) == 0);
    CHECK(host.TakeCalls() == "DeleteVirtualExpItem CreateVirtualExpItem CreateVirtualExpItem "); // the old one again
    CHECK(host.AboutModel(id) == "01018001 b 'Caption' 480 from 1 shape 11 64 of 259 0  "); // no item of theirs now
}

TEST_CASE("user icons: those in the file and those that the external library kept are joined") {
    FakeHost host;
    FakeDatabase::Expression& attacks = host.AddExpression(torv::kStatusAttack, 3, "plain", 1);
    attacks.items[1] = {5, 1, "both", host.IconFile("both"), "Kept", "Their singer", "D"};
    attacks.items[2] = {7, 1, "theirs", host.IconFile("theirs"), "", "", ""};
    attacks.items[3] = {8, 1, "theirs too", host.IconFile("theirs too"), "", "", ""};
    attacks.itemCount = 4;
    std::ofstream(host.UserFile(), std::ios::binary)
        << "[NoteAttack]\n2=#USER0001\n7=#USER0002\n[#USER0001]\nIconID=$01018002\nIDS=both\nOriginal=1\n"
           "Caption=Ours\nDuration=3\n[#USER0002]\nIconID=$01018007\nIDS=ours\nOriginal=1\n";
    REQUIRE(host.manager.OpenDatabase() == 1);
    CHECK(host.boxes.texts.empty());
    std::string found;
    for (CIconObject* const icon : host.manager.GetExpressionDB()->GetModels(1, 1))
        found += About(icon) + "\n";
    CHECK(found == "01010001 plain 'plain' 360 from 1 shape 20 30 of 259 1 Singer Developer\n"
                   // Only in the library: under its own number where that was free.
                   "01018001 theirs 'theirs' 360 from 1 shape 20 30 of 259 7  \n"
                   // In both: the file's number and parameters, the library's identity.
                   "01018002 both 'Ours' 240 from 1 shape 3 64 of 259 5 Their singer D\n"
                   // Only in the file: it sounds as what it was made from.
                   "01018007 ours '' 240 from 1 shape 64 64 of 259 0  \n"
                   "01018008 theirs too 'theirs too' 360 from 1 shape 20 30 of 259 8  \n");
    host.TakeCalls();
    delete host.manager.UnregisterIconObject(0x01018007);
    CHECK(host.TakeCalls().empty()); // the library is not asked to drop what it does not have
}

TEST_CASE("user icons: what the external library keeps has its number, whether it can be read or not") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    manager.CloseDatabase();
    FakeDatabase::Expression& attacks = host.fake->expressions[0];
    const auto keep = [&attacks](DWORD value, const char* name, const char* file) {
        attacks.items[attacks.itemCount++] = {value, 1, name, file, "", "Their singer", ""};
    };
    keep(1, "gone", "gone.aic");
    keep(2, "ours", "gone too.aic");
    std::ofstream(host.UserFile(), std::ios::binary)
        << "[NoteAttack]\n2=a\n[a]\nIconID=$01018002\nIDS=ours\nOriginal=1\nDuration=3\n";
    REQUIRE(manager.OpenDatabase() == 1);
    CHECK(host.boxes.Take() == Texts{"File not found !\n\ngone.aic", "File not found !\n\ngone too.aic"});
    CHECK(host.AboutModel(0x01018001) == "none");
    // The item's number, though its file is gone.
    CHECK(host.AboutModel(0x01018002) == "01018002 ours '' 240 from 1 shape 3 64 of 259 2 Their singer ");
    host.TakeCalls();
    CHECK(Values{manager.RegisterIconObject(Attack("a").release()), host.TakeCalls()} ==
          Values(0x01018003, "CreateVirtualExpItem ")); // asked once, for none that is taken

    // Another host has put in two meanwhile: their numbers are seen when the first is refused.
    keep(4, "theirs", "4.aic");
    keep(5, "theirs", "5.aic");
    CHECK(manager.RegisterIconObject(Attack("b").release()) == 0x01018006);
    CHECK(host.boxes.texts.empty());
    keep(7, "theirs", "7.aic");
    CHECK(manager.RestoreUserIconObject(Attack("c", 1, 0x8007).get()) == 0); // under its own number or not at all
    CHECK(host.boxes.Take() == Texts{"DBM_CreateVirtualExpItem returned 3"});
}

TEST_CASE("user icons: memory that is refused leaves database and library as they were") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    FailEachAllocation([&](AllocationFailure& failure) {
        host.TakeCalls();
        std::unique_ptr<CIconObject> icon = Attack("an ID string of more than fifteen bytes");
        const DWORD id = failure.During([&] { return manager.RegisterIconObject(icon.get()); });
        CHECK((id == 0x01018001) == !failure.HasHappened());
        CHECK(manager.VerifyIconID(0x01018001) == !failure.HasHappened());
        const std::string calls = host.TakeCalls();
        if (id) {
            static_cast<void>(icon.release());
            icon.reset(manager.UnregisterIconObject(id));
        } else if (!calls.empty()) {
            CHECK(calls == "CreateVirtualExpItem DeleteVirtualExpItem ");
        }
    });
    FailEachAllocation([&](AllocationFailure& failure) {
        CCrossReferenceMap map;
        const int found = failure.During(
            [&] { return manager.GetVariationReferenceMap(1, 1, map) && manager.GetStatusReferenceMap(map); });
        CHECK(found == !failure.HasHappened());
    });
}

TEST_CASE("user icons: a caption is changed for good") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    const DWORD id = manager.RegisterIconObject(Attack("a").release());
    CIconNoteAttack copy(dynamic_cast<CIconNoteAttack*>(manager.GetModelIconObject(id)));
    host.TakeCalls();
    CHECK(Values{manager.GetExpressionDB()->SetUserItemCaption(copy, "New; caption"), copy.GetCaption(),
                 host.TakeCalls()} == "1 New; caption SetVirtualExpItemCaption ");
    host.Reopen();
    CHECK(manager.GetModelIconObject(id)->GetCaption() == "New; caption");
    CHECK(manager.GetExpressionDB()->SetUserItemCaption(copy, "Newer") == 1); // and nothing else since it was opened
    host.Reopen();
    CHECK(manager.GetModelIconObject(id)->GetCaption() == "Newer");
    const std::string newest(40, 'n'); // which a text does not hold without memory
    FailEachAllocation([&](AllocationFailure& failure) {
        const int changed =
            failure.During([&] { return manager.GetExpressionDB()->SetUserItemCaption(copy, newest.c_str()); });
        CHECK(changed == !failure.HasHappened());
        CHECK(manager.GetModelIconObject(id)->GetCaption() == (changed ? newest.c_str() : "Newer"));
        manager.GetExpressionDB()->SetUserItemCaption(copy, "Newer");
    });
    for (const int variation : {1, 0x8009}) // a preset, and none
        CHECK(manager.GetExpressionDB()->SetUserItemCaption(*Attack("a", 1, variation), "x") == 0);
    CHECK(manager.GetModelIconObject(0x01010001)->GetCaption() == "plain");
}
