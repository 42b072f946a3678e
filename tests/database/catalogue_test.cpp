// What a host finds in the open databases: the tree's own presets, and expressions and voices of a fake library.
#include "database/database_fixture.h"

#include "torv/icons/icon_singer.h"
#include "torv/score/cross_reference_map.h"

namespace {

struct OpenHost : FakeHost {
    OpenHost() {
        AddExpression(torv::kStatusAttack, 0, "plain", 2);
        AddExpression(torv::kStatusAttack, 1, "soft", 4);
        fake->expressions[1].items[1] = {4, 0, "softer", IconFile("softer"), "Softer still", "S", "D"};
        fake->expressions[1].itemCount = 2;
        AddExpression(torv::kStatusVibrato, 0, "wave", 1);
        REQUIRE(manager.OpenDatabase() == 1);
    }
    Boxes boxes;
    CQuillDBManager manager;
};

int CALLBACK CollectStatus(int status, const char* name, LPARAM data) {
    reinterpret_cast<Texts*>(data)->push_back(std::to_string(status) + name);
    return 1;
}
int CALLBACK CollectArticulation(int status, int articulation, const char* name, LPARAM data) {
    reinterpret_cast<Texts*>(data)->push_back(std::to_string(status) + "." + std::to_string(articulation) + name);
    return 1;
}
int CALLBACK CollectTwoVariations(int status, int articulation, int variation, const char* name, LPARAM data) {
    auto& texts = *reinterpret_cast<Texts*>(data);
    texts.push_back(std::to_string(status) + "." + std::to_string(articulation) + "." + std::to_string(variation) +
                    name);
    return texts.size() < 2 ? 7 : 0;
}

} // namespace

TEST_CASE("catalogue: statuses, articulations and variations are told through callbacks") {
    const OpenHost host;
    const CQuillDBManager& manager = host.manager;
    Texts seen;
    const auto data = reinterpret_cast<LPARAM>(&seen);
    CHECK(manager.EnumIconStatus(CollectStatus, data) == 1);
    CHECK(seen == Texts{"1Attack", "2Release", "3Transit", "4Vibrato", "5Dynamics", "7Singer"});
    seen.clear();
    for (int status = 0; status <= 8; ++status)
        manager.EnumIconArticulation(status, CollectArticulation, data);
    // The names of 2 and 3 go by the articulation's number, not by the status's name.
    CHECK(seen == Texts{"1.1NoteAttack", "2.2NoteTransition", "3.3NoteRelease", "4.4Vibrato", "5.1Dynaff",
                        "5.2Crescendo", "5.3Decrescendo", "7.1DEFAULT_ARTICURATION"});
    CHECK(manager.EnumIconArticulation(3, nullptr, 0) == 1);
    CHECK(manager.EnumIconArticulation(6, CollectArticulation, data) == 0);
    seen.clear();
    CHECK(manager.EnumIconVariation(5, 1, CollectTwoVariations, data) == 0); // ended by the callback
    CHECK(seen == Texts{"5.1.1ppp", "5.1.2pp"});
    seen.clear();
    CHECK(manager.EnumIconVariation(1, 2, CollectTwoVariations, data) == 0);
    CHECK(seen.empty());

    CCrossReferenceMap map;
    CHECK(manager.GetStatusReferenceMap(map));
    DWORD number = 0;
    CHECK((map.Lookup("Singer", number) && number == 7));
    CHECK(manager.GetArticulationReferenceMap(5, map));
    CHECK((map.GetCount() == 3 && map.Lookup("Decrescendo", number) && number == 3));
    CHECK(manager.GetVariationReferenceMap(7, 1, map));
    CHECK((map.GetCount() == 2 && map.Lookup("Second", number) && number == 0x102));
    CHECK(!manager.GetVariationReferenceMap(7, 2, map));
    CHECK(map.IsEmpty());
}

TEST_CASE("catalogue: expressions keep their library's numbers where they can") {
    const OpenHost host;
    const CQuillDBManager& manager = host.manager;
    CHECK(host.fake->mostListsOut == 1); // one list of items at a time
    CHECK(host.fake->listsOut == 1);
    auto* const soft = dynamic_cast<CIconNoteAttack*>(manager.GetModelIconObject(0x01010004));
    REQUIRE(soft);
    CHECK(soft->GetIDString() == "soft");
    CHECK((soft->GetLength() == 360 && soft->GetDuration() == 20 && soft->GetDepth() == 30));
    CHECK(soft->GetExpressionID() == 0x0101);
    CHECK(soft->GetExpressionEntry()->itemValue == 4);
    CHECK(soft->GetOriginalSingerName() == "Singer");
    CHECK(soft->GetCaption() == "soft");                         // the file's, as the library says none
    auto* const softer = manager.GetModelIconObject(0x01010005); // its number was taken
    REQUIRE(softer);
    CHECK(softer->GetCaption() == "Softer still");
    CHECK(manager.GetModelIconObject(0x04040001) != nullptr);
    CHECK(manager.VerifyIconID(0x01010002) == 1);
    CHECK(manager.VerifyIconID(0x01010001) == 0);
    CHECK(manager.VerifyIconID(0x01018002) == 0);
}

TEST_CASE("catalogue: icons are made by id, by numbers and from a model") {
    const OpenHost host;
    const CQuillDBManager& manager = host.manager;
    const std::unique_ptr<CIconObject> byID(manager.CreateIconObject(0x01010004));
    const std::unique_ptr<CIconObject> byNumbers(manager.CreateIconObject(5, 2, 1));
    const std::unique_ptr<CIconObject> copy(CQuillDBManager::CreateIconObject(byNumbers.get()));
    const std::unique_ptr<CIconObject> singer(manager.CreateIconObject(CQuillDBManager::MakeSingerIconID(1, 2)));
    REQUIRE((byID && byNumbers && copy && singer));
    CHECK(byID.get() != manager.GetModelIconObject(0x01010004));
    CHECK((copy->GetIconID() == 0x05020001 && copy->GetLength() == byNumbers->GetLength()));
    CHECK(dynamic_cast<CIconDynamics*>(copy.get()) != nullptr);
    auto* const voice = dynamic_cast<CIconSinger*>(singer.get());
    REQUIRE(voice);
    CHECK((voice->GetLanguageCode() == 1 && voice->GetProgramCode() == 2 && voice->GetSingerName() == "Second"));
    CHECK(manager.CreateIconObject(0x06010001) == nullptr);
    CHECK(CQuillDBManager::CreateIconObject(nullptr) == nullptr);

    CIconNoteAttack blank(torv::kStatusAttack, 1, 4);
    CHECK(manager.LoadIconParameter(&blank) == 1);
    CHECK((blank.GetIDString() == "soft" && blank.GetDuration() == 20));
    CIconNoteAttack unknown(torv::kStatusAttack, 1, 99);
    CHECK(manager.LoadIconParameter(&unknown) == 0);
    CHECK(manager.ReloadSingerIcon(voice, 0, 0) == 1);
    CHECK((voice->GetIconID() == 0x07010000 && voice->GetIDString() == "First"));
    CHECK(manager.ReloadSingerIcon(voice, 0, 256) == 0);
    CHECK(manager.ReloadSingerIcon(nullptr, 0, 0) == 0);
}

TEST_CASE("catalogue: ids that stand in for missing ones") {
    const OpenHost host;
    const CQuillDBManager& manager = host.manager;
    CHECK(manager.ConvertToDefaultIconID(0x05020063) == 0x05020001);
    CHECK(manager.ConvertToDefaultIconID(4, 4, 9) == 0x04040001);
    CHECK(manager.ConvertToDefaultIconID(1, 1, 9) == 0);               // there is no variation 1
    CHECK(manager.ConvertToDefaultIconID(7, 5, 0x0177) == 0x07010102); // the language stays
    CHECK(manager.ConvertToDefaultIconID(7, 1, 0x0977) == 0x07010000);
    CHECK(manager.ConvertToDefaultIconID(6, 3, 9) == 0x06010001); // not looked up
    CHECK(manager.MakeDefaultIconID(7, 1) == 0x07010000);
    CHECK(manager.GetDefaultSingerVariation(1) == 0x0102);
    CHECK(CQuillDBManager::MakeIconID(5, 2, 0x8003) == 0x05028003);
    CHECK(CQuillDBManager::VariationFromID(0x05028003) == 0x8003);
}

TEST_CASE("catalogue: overviews and buttons") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    tagQuillIconOverview overview{};
    CHECK(manager.LookupIconOverview(1, 1, 4, &overview) == 1);
    CHECK((overview.iconId == 0x01010004 && overview.length == 360 && !overview.isUserIcon));
    CHECK(std::string(overview.idString) == "soft");
    CHECK(std::string(overview.singerName) == "Singer");
    CHECK(overview.button == manager.GetButtonBitmap(1, 1, 4));
    CHECK(manager.LookupIconOverview(0x01010003, &overview) == 0);
    CHECK(overview.iconId == 0x01010004);

    SIZE size{};
    CHECK(manager.GetButtonBitmapSize(size) == 1);
    CHECK((size.cx == 16 && size.cy == 15));
    CHECK(manager.GetButtonBitmap(0x01010003) == nullptr);
    CHECK(manager.GetButtonBitmap(0x07010000) != nullptr); // a singer has the library's
    auto user = Level(torv::kDynaff, 0, "mine", 50);
    user->SetOriginalVariation(3);
    const DWORD id = manager.RegisterIconObject(user.release());
    CHECK(manager.GetButtonBitmap(id) == manager.GetButtonBitmap(0x05010003));
    manager.CloseDatabase();
    CHECK(manager.GetButtonBitmapSize(size) == 0);
}

TEST_CASE("catalogue: the encoder's index of an icon goes by its ID string, users' after presets") {
    OpenHost host;
    CIconNoteAttack icon(torv::kStatusAttack, 1, 77);
    const auto index = [&icon](const char* name) {
        icon.SetIDString(name);
        return torv::IconIndexOf(icon);
    };
    CHECK(index("soft") == 2);
    CHECK(index("softer") == 3);
    CHECK(index("mine") == 0);
    CHECK(index("") == 0);
    auto user = std::make_unique<CIconNoteAttack>(torv::kStatusAttack, 1, 0);
    user->SetIDString("mine");
    const DWORD id = host.manager.RegisterIconObject(user.release());
    CHECK(index("mine") == 4);
    delete host.manager.UnregisterIconObject(id);
    CHECK(index("mine") == 0);
    host.manager.CloseDatabase();
    CHECK(index("soft") == 0);
}

TEST_CASE("catalogue: voices with their parameters") {
    FakeHost host;
    Boxes boxes;
    host.fake->pairs[0] = {"Harmonics", "100"};
    host.fake->pairs[1] = {"Resonance2 Band Width", "257"};
    host.fake->pairs[2] = {"Gender Factor", nullptr};
    host.fake->pairs[3] = {"Unknown", "3"};
    host.fake->voices[2] = {0, 0, 0, 0, "Again"};
    host.fake->voices[3] = {300, 0, 0, 0, "Far"};
    host.fake->voiceCount = 4;
    CQuillDBManager manager;
    REQUIRE(manager.OpenDatabase() == 1);
    CHECK(boxes.Take() == Texts{"Singer 'First' has already been used !\n\nlanguage 0, program 0"});
    tagVoiceParameters voice{};
    REQUIRE(manager.GetVoiceDB()->GetVoiceParameters(0, 0, &voice) == 1);
    CHECK(std::string(voice.name) == "First");
    for (int i = 0; i < 17; ++i)
        CHECK(voice.parameters.values[i] == (i == 12 ? 100 : i == 4 ? 1 : 64)); // a byte keeps the low 8 bits
    torv::ReleaseVoiceParameters(&voice);
    CHECK(manager.GetVoiceDB()->GetVoiceParameters(0, 1, &voice) == 0);
    CHECK(manager.GetVoiceDB()->GetModels(7, 1).size() == 2);

    // The editor changes a voice, and the databases follow.
    host.fake->voices[1].name = "Renamed";
    int language = 0, program = 0;
    CHECK(manager.OpenVoiceEditDialog(&language, &program) == 1);
    CHECK((language == 1 && program == 3));
    CHECK(manager.GetModelIconObject(0x07010102)->GetIDString() == "Renamed");
    boxes.Take();
    host.fake->dialogStatus = 1; // cancelled
    language = 0;
    CHECK(manager.OpenVoiceEditDialog(&language, &program) == 0);
    CHECK(language == 0);
    CHECK(manager.OpenVoiceEditDialog(nullptr, &program) == 0);
}
