// What a host finds in the open databases: the tree's own presets, and expressions and voices of a fake library.
#include "database/database_fixture.h"

#include "torv/icons/icon_singer.h"
#include "torv/score/cross_reference_map.h"

namespace {

/// Takes `kMost` of them.
template <size_t kMost, class... Numbers>
int CALLBACK Collect(Numbers... numbers, const char* name, LPARAM data) {
    auto& texts = *reinterpret_cast<Texts*>(data);
    texts.push_back(Values(numbers..., name));
    return texts.size() < kMost ? 7 : 0;
}

} // namespace

TEST_CASE("catalogue: statuses, articulations and variations are told through callbacks") {
    OpenHost host;
    const CQuillDBManager& manager = host.manager;
    Texts seen;
    const auto data = reinterpret_cast<LPARAM>(&seen);
    CHECK(manager.EnumIconStatus(Collect<99, int>, data) == 7);
    CHECK(std::exchange(seen, {}) ==
          Texts{"1 Attack", "2 Release", "3 Transit", "4 Vibrato", "5 Dynamics", "7 Singer"});
    for (int status = 0; status <= 8; ++status) {
        const bool isThere = status > 0 && status < 8 && status != 6;
        CHECK(manager.EnumIconArticulation(status, Collect<99, int, int>, data) == 7 * isThere);
        CHECK(manager.EnumIconArticulation(status, nullptr, 0) == isThere);
    }
    // The names of 2 and 3 go by the articulation's number, not by the status's name.
    CHECK(std::exchange(seen, {}) == Texts{"1 1 NoteAttack", "2 2 NoteTransition", "3 3 NoteRelease", "4 4 Vibrato",
                                           "5 1 Dynaff", "5 2 Crescendo", "5 3 Decrescendo",
                                           "7 1 DEFAULT_ARTICURATION"});
    CHECK(manager.EnumIconVariation(5, 1, Collect<2, int, int, int>, data) == 0); // ended by the callback
    CHECK(manager.EnumIconVariation(1, 2, Collect<2, int, int, int>, data) == 0);
    CHECK(Values(manager.EnumIconVariation(5, 1, nullptr, 0), manager.EnumIconVariation(1, 2, nullptr, 0)) == "1 0");
    CHECK(seen == Texts{"5 1 1 ppp", "5 1 2 pp"});
    std::unique_ptr<CIconObject> unnamed = Level(torv::kDecrescendo, 0, "", 0);
    host.manager.RegisterIconObject(unnamed.release());

    CCrossReferenceMap map;
    DWORD number = 0;
    const auto found = [&](const char* name) { return Values{map.GetCount(), map.Lookup(name, number), number}; };
    CHECK(Values{manager.GetStatusReferenceMap(map), found("Singer")} == "1 6 1 7");
    CHECK(Values{manager.GetArticulationReferenceMap(5, map), found("Decrescendo")} == "1 3 1 3");
    CHECK(Values{manager.GetVariationReferenceMap(7, 1, map), found("Second")} == "1 2 1 258");
    CHECK(Values{manager.GetVariationReferenceMap(5, 3, map), found("DEFAULT_VARIATION")} == Values(1, 5, 1, 0x8001));
    CHECK(Values{manager.GetVariationReferenceMap(7, 2, map), map.GetCount()} == "0 0");
}

TEST_CASE("catalogue: models, copies of them, and expressions that keep their library's numbers where they can") {
    const OpenHost host;
    const CQuillDBManager& manager = host.manager;
    CHECK(Values(host.fake->mostListsOut, host.fake->listsOut) == "1 1"); // one list of items at a time
    const std::string soft = "01010004 soft 'soft' 360 from 4 shape 20 30 of 257 4 Singer Developer";
    CHECK(host.AboutModel(0x01010004) == soft); // the file's caption, as the library says none
    CHECK(host.AboutModel(0x01010005) == "01010005 softer 'Softer still' 360 from 5 shape 20 30 of 257 4 S D");
    CHECK(Values(manager.VerifyIconID(0x04040001), manager.VerifyIconID(0x01010003),
                 manager.VerifyIconID(0x01018001)) == "1 0 0");

    const std::unique_ptr<CIconObject> made(manager.CreateIconObject(1, 1, 4));
    const std::unique_ptr<CIconObject> copy(CQuillDBManager::CreateIconObject(made.get()));
    CHECK(About(copy.get()) == soft);
    CHECK(copy.get() != made.get());
    CHECK(made.get() != manager.GetModelIconObject(0x01010004));
    CHECK(Values(manager.CreateIconObject(0x06010001), CQuillDBManager::CreateIconObject(nullptr)) == "0 0");
    CIconNoteAttack blank(torv::kStatusAttack, 1, 4), unknown(torv::kStatusAttack, 1, 99);
    CHECK(Values{manager.LoadIconParameter(&blank), About(&blank)} == "1 " + soft);
    CHECK(Values{manager.LoadIconParameter(&unknown), manager.LoadIconParameter(nullptr)} == "0 0");

    CIconSinger voice;
    const auto reload = [&](int language, int program) {
        return Values{manager.ReloadSingerIcon(&voice, language, program), int{voice.GetLanguageCode()},
                      int{voice.GetProgramCode()}, voice.GetSingerName(), voice.GetOriginalVariation()};
    };
    CHECK(reload(1, 2) == "1 1 2 Second 258");
    CHECK(reload(0, 0) == "1 0 0 First 0");
    CHECK(reload(0, 256) == "0 0 0 First 0");
    CHECK(reload(-1, 258) == "0 0 0 First 0");
    CHECK(manager.ReloadSingerIcon(nullptr, 0, 0) == 0);
}

TEST_CASE("catalogue: ids that stand in for missing ones") {
    const OpenHost host;
    const CQuillDBManager& manager = host.manager;
    CHECK(Values(manager.ConvertToDefaultIconID(0x05020063), manager.ConvertToDefaultIconID(1, 1, 9)) ==
          Values(0x05020001, 0x01010001));
    CHECK(manager.ConvertToDefaultIconID(2, 2, 9) == 0);               // there is no variation 1
    CHECK(manager.ConvertToDefaultIconID(7, 5, 0x0177) == 0x07010102); // the language stays
    CHECK(manager.ConvertToDefaultIconID(7, 1, 0x0977) == 0x07010000);
    CHECK(manager.ConvertToDefaultIconID(6, 3, 9) == 0x06010001); // not looked up
    CHECK(manager.MakeDefaultIconID(7, 1) == 0x07010000);
    CHECK(Values(manager.GetDefaultSingerVariation(1), manager.GetDefaultSingerVariation(-1)) == "258 0");
    CHECK(Values(CQuillDBManager::VariationFromID(0x05028003), CQuillDBManager::MakeIconID(5, 2, 0x8003),
                 CQuillDBManager::MakeSingerIconID(1, 2)) == Values(0x8003, 0x05028003, 0x07010102));
}

TEST_CASE("catalogue: overviews, buttons, and the encoder's index of an icon, which goes by its ID string") {
    OpenHost host;
    CQuillDBManager& manager = host.manager;
    auto user = Level(torv::kDynaff, 0, "mine", 50);
    user->SetOriginalVariation(3);
    const DWORD mine = manager.RegisterIconObject(user.release());
    tagQuillIconOverview overview{};
    const auto look = [&](DWORD id) {
        return Values{manager.LookupIconOverview(id, &overview),
                      overview.iconId,
                      overview.originalVariation,
                      overview.length,
                      overview.isUserIcon,
                      overview.idString,
                      overview.caption,
                      overview.singerName};
    };
    CHECK(look(0x01010004) == Values(1, 0x01010004, 4, 360, 0, "soft", "soft", "Singer"));
    CHECK(overview.button == manager.GetButtonBitmap(1, 1, 4));
    CHECK(look(mine) == Values(1, mine, 3, 1, 1, "mine", "mine", ""));
    CHECK(overview.button == manager.GetButtonBitmap(0x05010003)); // of what it was made from
    CHECK(look(0x01010003) == Values(0, mine, 3, 1, 1, "mine", "mine", ""));
    SIZE size{};
    CHECK(Values{manager.GetButtonBitmapSize(size), size.cx, size.cy} == "1 16 15");
    CHECK(manager.GetButtonBitmap(0x01010003) == nullptr);
    CHECK(manager.GetButtonBitmap(0x07010000) != nullptr); // a singer has the library's

    CIconNoteAttack icon(torv::kStatusAttack, 1, 77);
    const auto index = [&icon](const char* name) {
        icon.SetIDString(name);
        return torv::IconIndexOf(icon);
    };
    CHECK(Values(index("soft"), index("softer"), index("theirs"), index("")) == "2 3 0 0");
    auto theirs = std::make_unique<CIconNoteAttack>(torv::kStatusAttack, 1, 0);
    theirs->SetIDString("theirs");
    const DWORD id = manager.RegisterIconObject(theirs.release());
    CHECK(index("theirs") == 4); // users' stand behind the presets
    delete manager.UnregisterIconObject(id);
    CHECK(index("theirs") == 0);
    manager.CloseDatabase();
    CHECK(Values(index("soft"), manager.GetButtonBitmapSize(size), manager.EnumIconStatus(nullptr, 0)) == "0 0 0");
}

TEST_CASE("catalogue: voices with their parameters") {
    FakeHost host;
    host.fake->pairs[0] = {"Harmonics", "100"};
    host.fake->pairs[1] = {"Resonance2 Band Width", "257"};
    host.fake->pairs[2] = {"Gender Factor", nullptr};
    host.fake->pairs[3] = {"Unknown", "3"};
    host.fake->voices[2] = {0, 0, 0, 0, "Again"};
    host.fake->voices[3] = {300, 0, 0, 0, "Far"};
    host.fake->voices[4] = {1, 0, 0, 0, "Third"};
    host.fake->voiceCount = 5;
    REQUIRE(host.manager.OpenDatabase() == 1);
    CHECK(host.boxes.Take() == Texts{"Singer 'First' has already been used !\n\nlanguage 0, program 0"});
    tagVoiceParameters voice{};
    REQUIRE(host.manager.GetVoiceDB()->GetVoiceParameters(0, 0, &voice) == 1);
    CHECK(std::string(voice.name) == "First");
    for (int i = 0; i < 17; ++i)
        CHECK(voice.parameters.values[i] == (i == 12 ? 100 : i == 4 ? 1 : 64)); // a byte keeps the low 8 bits
    torv::ReleaseVoiceParameters(&voice);
    CHECK(voice.name == nullptr);
    CHECK(Values(host.manager.GetVoiceDB()->GetVoiceParameters(0, 1, &voice),
                 host.manager.GetVoiceDB()->GetModels(7, 1).size()) == "0 3");
    CHECK(host.manager.GetDefaultSingerVariation(1) == 256); // the first

    // The editor changes a voice, and the databases follow.
    host.fake->voices[1].name = "Renamed";
    int language = 0, program = 0;
    CHECK(Values{host.manager.OpenVoiceEditDialog(&language, &program), language, program} == "1 1 3");
    CHECK(host.manager.GetModelIconObject(0x07010102)->GetIDString() == "Renamed");
    host.fake->dialogStatus = 1; // cancelled
    language = 0;
    CHECK(Values{host.manager.OpenVoiceEditDialog(&language, &program), language} == "0 0");
    CHECK(host.manager.OpenVoiceEditDialog(nullptr, &program) == 0);
}
