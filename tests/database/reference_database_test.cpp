// The databases as they are shipped: the tree's presets over the reference libraries.
#include "database/database_fixture.h"

#include "torv/app/torv_app.h"
#include "torv/icons/icon_singer.h"
#include "torv/lyrics/converter_modules.h"

#include <cstdlib>
#include <set>

namespace {

/// A user's own data for one test.
class UserData {
public:
    UserData() { Set(m_folder.Path("user").c_str()); }
    ~UserData() { Set(""); }

private:
    static void Set(const char* folder) {
#if defined(_WIN32)
        _putenv_s("TORV_USER_DATA", folder);
#else
        *folder ? setenv("TORV_USER_DATA", folder, 1) : unsetenv("TORV_USER_DATA");
#endif
    }
    TempFolder m_folder;
};

struct Shipped : FakeHost {
    Shipped() {
        registry.Set(kDatabaseKey, "PATH", "DBM.dll");
        registry.Set(kEditorKey, "PATH", "VEDIT.dll");
        REQUIRE(manager.OpenDatabase() == 1);
        CHECK(boxes.texts.empty());
    }
    void Reopen() {
        manager.CloseDatabase();
        REQUIRE(manager.OpenDatabase() == 1);
    }
    UserData user;
    Boxes boxes;
    CQuillDBManager manager;
};

std::vector<CIconObject*> ModelsOf(const CQuillDBManager& manager, int status, int articulation) {
    std::vector<CIconObject*> models;
    for (int variation = 1;
         CIconObject* icon = manager.GetModelIconObject(torv::MakeIconID(status, articulation, variation)); ++variation)
        models.push_back(icon);
    return models;
}

} // namespace

TEST_CASE("shipped databases: levels rise, and every icon has its picture") {
    const Shipped shipped;
    const CQuillDBManager& manager = shipped.manager;
    int last = -1;
    for (CIconObject* icon : ModelsOf(manager, 5, torv::kDynaff)) {
        const int level = dynamic_cast<CIconDynamics&>(*icon).GetStartDynamics();
        CHECK(level > last);
        last = level;
    }
    CHECK(last > 112);
    struct Kind {
        int status, articulation;
        size_t count;
    };
    std::set<HBITMAP> pictures;
    for (const Kind& kind :
         {Kind{1, 1, 5}, Kind{2, 2, 3}, Kind{3, 3, 4}, Kind{4, 4, 5}, Kind{5, 1, 8}, Kind{5, 2, 4}, Kind{5, 3, 4}}) {
        const auto models = ModelsOf(manager, kind.status, kind.articulation);
        CHECK(models.size() == kind.count);
        for (const CIconObject* icon : models) {
            BITMAP bitmap{};
            const HBITMAP button = manager.GetButtonBitmap(icon->GetIconID());
            CHECK(GetObjectA(button, sizeof bitmap, &bitmap));
            CHECK((bitmap.bmWidth == 16 && bitmap.bmHeight == 15 && bitmap.bmBitsPixel == 24));
            CHECK(pictures.insert(button).second);
        }
    }
}

TEST_CASE("shipped databases: a user's expression is there after a restart, with and without the user file") {
    Shipped shipped;
    CQuillDBManager& manager = shipped.manager;
    std::unique_ptr<CIconObject> vibrato(manager.CreateIconObject(4, 4, 5));
    REQUIRE(vibrato);
    vibrato->SetIDString("My Vibrato");
    dynamic_cast<CIconVibrato&>(*vibrato).SetStartRate(99);
    dynamic_cast<CIconVibrato&>(*vibrato).SetOriginalSingerName("Hana");
    const int code = dynamic_cast<CIconExpression&>(*vibrato).GetExpressionID();
    const DWORD id = manager.RegisterIconObject(vibrato.release());
    CHECK(id == 0x04048001);
    for (const bool keepsFile : {true, false, false}) {
        manager.CloseDatabase();
        if (!keepsFile)
            shipped.RemoveUserFile();
        REQUIRE(manager.OpenDatabase() == 1);
        auto* const kept = dynamic_cast<CIconVibrato*>(manager.GetModelIconObject(id));
        REQUIRE(kept);
        CHECK((kept->GetIDString() == "My Vibrato" && kept->GetStartRate() == 99 && kept->GetExpressionID() == code));
        CHECK((kept->GetExpressionEntry()->itemValue == 1 && kept->GetOriginalSingerName() == "Hana"));
    }
    delete manager.UnregisterIconObject(id);
    shipped.Reopen();
    CHECK(manager.VerifyIconID(id) == 0);
    CHECK(shipped.boxes.texts.empty());
}

TEST_CASE("shipped databases: a user's voice from making it to removing it") {
    Shipped shipped;
    CVoiceDB& voices = *shipped.manager.GetVoiceDB();
    const size_t before = voices.GetModels(7, 1).size();
    CHECK(before >= 3);
    int program = -1;
    REQUIRE(voices.CreateVoice(1, 0, "Nova", &program) == 1);
    CHECK(voices.GetInstalledVoiceName(1, program) == "Soprano");
    CHECK(program % 4 == 0); // the engine sings it with the voice that it was made over
    tagVoiceChangeParam parameters{};
    parameters.values[16] = 90;
    CHECK(voices.SetVoiceParameters(1, program, parameters) == 1);
    CHECK(voices.RenameVoice(1, program, "Supernova") == 1);
    int copy = -1;
    CHECK(voices.CopyVoice(1, program, "Twin", &copy) == 1);
    CHECK(voices.MoveVoice(1, copy, 0, 124) == 1);
    shipped.Reopen();
    CHECK(voices.GetModels(7, 1).size() == before + 2);
    CIconSinger singer;
    CHECK(shipped.manager.ReloadSingerIcon(&singer, 1, program) == 1);
    CHECK(singer.GetSingerName() == "Supernova");
    tagVoiceChangeParam read{};
    CHECK(singer.GetVoiceChangeParam(&read) == 1);
    CHECK((read.values[16] == 90 && read.values[0] == 0));
    CHECK(voices.DeleteVoice(1, program) == 1);
    CHECK(singer.GetSingerName() == "?????");
    CHECK(voices.DeleteVoice(0, 124) == 1);
    CHECK(voices.DeleteVoice(0, 0) == 0); // came with the library
    CHECK(voices.GetLastStatus() == DBM_READ_ONLY);
    CHECK(voices.GetModels(7, 1).size() == before);
}
