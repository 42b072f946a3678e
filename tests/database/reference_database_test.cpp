// The databases as they are shipped: the tree's presets over the reference libraries.
#include "database/database_fixture.h"

#include "environment.h"
#include "torv/icons/icon_singer.h"

#include <array>
#include <set>

namespace {

/// With no data of the user's own at first.
struct Shipped : FakeHost {
    Shipped() {
        SetEnvironment("TORV_USER_DATA", files.Path("user"));
        registry.Set(kDatabaseKey, "PATH", "DBM.dll");
        registry.Set(kEditorKey, "PATH", "VEDIT.dll");
        REQUIRE(manager.OpenDatabase() == 1);
    }
    ~Shipped() { CHECK(boxes.texts.empty()); }
};

} // namespace

TEST_CASE("shipped databases: levels rise, and every icon has its picture") {
    const Shipped shipped;
    const CQuillDBManager& manager = shipped.manager;
    std::set<HBITMAP> pictures;
    for (const auto& [status, articulation, count] :
         {std::array{1, 1, 5}, {2, 2, 3}, {3, 3, 4}, {4, 4, 5}, {5, 1, 8}, {5, 2, 4}, {5, 3, 4}}) {
        int last = -1;
        for (int variation = 1; variation <= count; ++variation) {
            const DWORD id = torv::MakeIconID(status, articulation, variation);
            CHECK(SizeOf(manager.GetButtonBitmap(id)) == "16x15");
            CHECK(pictures.insert(manager.GetButtonBitmap(id)).second);
            if (status == 5 && articulation == 1) {
                const int level = dynamic_cast<CIconDynamics&>(*manager.GetModelIconObject(id)).GetStartDynamics();
                CHECK(level > last);
                last = level;
            }
        }
        CHECK(!manager.VerifyIconID(torv::MakeIconID(status, articulation, count + 1)));
    }
}

TEST_CASE("shipped databases: a user's expression is there after a restart, with and without the user file") {
    Shipped shipped;
    CQuillDBManager& manager = shipped.manager;
    auto* const vibrato = dynamic_cast<CIconVibrato*>(manager.CreateIconObject(4, 4, 5));
    REQUIRE(vibrato);
    vibrato->SetIDString("My Vibrato");
    vibrato->SetStartRate(99);
    vibrato->SetOriginalSingerName("Hana");
    const int code = vibrato->GetExpressionID();
    const DWORD id = manager.RegisterIconObject(vibrato);
    CHECK(id == 0x04048001);
    for (const bool keepsFile : {true, false, false}) {
        manager.CloseDatabase();
        if (!keepsFile)
            shipped.RemoveUserFile();
        REQUIRE(manager.OpenDatabase() == 1);
        auto* const kept = dynamic_cast<CIconVibrato*>(manager.GetModelIconObject(id));
        REQUIRE(kept);
        CHECK(Values(kept->GetIDString(), kept->GetStartRate(), kept->GetExpressionID(),
                     kept->GetExpressionEntry()->itemValue,
                     kept->GetOriginalSingerName()) == Values("My Vibrato 99", code, "1 Hana"));
    }
    delete manager.UnregisterIconObject(id);
    shipped.Reopen();
    CHECK(manager.VerifyIconID(id) == 0);
}

TEST_CASE("shipped databases: a user's voice from making it to removing it") {
    Shipped shipped;
    CVoiceDB& voices = *shipped.manager.GetVoiceDB();
    const size_t before = voices.GetModels(7, 1).size();
    int program = -1, copy = -1;
    REQUIRE(voices.CreateVoice(1, 0, "Nova", &program) == 1);
    CHECK(voices.GetInstalledVoiceName(1, program) == "Soprano");
    CHECK(voices.GetInstalledVoiceName(2, program - 256) == ""); // no such numbers
    tagVoiceChangeParam parameters{}, read{};
    parameters.values[16] = 90;
    CHECK(Values{voices.SetVoiceParameters(1, program, parameters), voices.RenameVoice(1, program, "Supernova"),
                 voices.CopyVoice(1, program, "Twin", &copy), voices.MoveVoice(1, copy, 0, 124)} == "1 1 1 1");
    shipped.Reopen();
    CHECK(voices.GetModels(7, 1).size() == before + 2);
    CIconSinger singer;
    CHECK(Values{shipped.manager.ReloadSingerIcon(&singer, 1, program), singer.GetSingerName()} == "1 Supernova");
    CHECK(Values{singer.GetVoiceChangeParam(&read), int{read.values[16]}, int{read.values[0]}} == "1 90 0");
    CHECK(Values{voices.DeleteVoice(1, program), singer.GetSingerName(), voices.DeleteVoice(0, 124)} == "1 ????? 1");
    CHECK(voices.CreateVoice(1, 99, "Nobody", nullptr) == 0);
    CHECK(Values{voices.DeleteVoice(0, 0), voices.GetLastStatus()} == Values(0, DBM_READ_ONLY)); // the library's own
    CHECK(voices.GetModels(7, 1).size() == before);
}
