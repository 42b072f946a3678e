#include "icon_fixture.h"
#include "platform/temp_folder.h"

#include "torv/icons/icon_singer.h"

namespace {

struct Voices : torv::VoiceCatalogue {
    Voices() { torv::AddCatalogue(*this); }
    ~Voices() override { torv::RemoveCatalogue(*this); }
    bool FindVoice(BYTE language, BYTE program, CString& name, tagVoiceChangeParam& parameters) const override {
        if (language != 1 || program != 44)
            return false;
        name = "Anna";
        parameters.values[16] = 77;
        return true;
    }
};

} // namespace

TEST_CASE("singer: asks the open voice database by its two codes") {
    CIconSinger icon;
    Construct(icon, "[S]\nLanguage=257\nProgram=300"); // modulo 256: 1 and 44
    CHECK((icon.GetLanguageCode() == 1 && icon.GetProgramCode() == 44));
    icon.SetIDString("id");
    tagVoiceChangeParam parameters{};
    parameters.values[16] = 5;
    CHECK((icon.GetSingerName() == "?????" && icon.GetIDString() == "id")); // no database
    CHECK((icon.GetVoiceChangeParam(&parameters) == 0 && parameters.values[16] == 5));
    const Voices voices;
    CHECK((icon.GetSingerName() == "Anna" && icon.GetIDString() == "Anna"));
    CHECK((icon.GetVoiceChangeParam(&parameters) == 1 && parameters.values[16] == 77));
    CHECK(icon.GetVoiceChangeParam(nullptr) == 0);
    CIconSinger unknown;
    CHECK((unknown.GetSingerName() == "?????" && unknown.GetVoiceChangeParam(&parameters) == 0));
    CHECK((unknown.GetIDString().IsEmpty() && parameters.values[16] == 77));
}

TEST_CASE("singer: one tick long unless a file says otherwise; its codes are no preset parameters") {
    CIconSinger icon, given(7, 2, 9);
    CHECK((icon.GetIconID() == 0x07010000 && icon.GetLength() == 1 && given.GetLength() == 1));
    Construct(icon, "[S]\nCaption=A\nLanguage=1\nProgram=-1");
    CHECK(icon.GetLength() == 240); // no length is a file's default
    CHECK(Described(icon) == "[S]\nCaption=A\nLength=240\nLanguage=1\nProgram=255\n");
    Construct(icon, "[S]\nLanguage=");
    CHECK((icon.GetLanguageCode() == 1 && icon.GetProgramCode() == 255)); // empty or missing: unchanged
    CHECK((CIconSinger(&icon).GetLength() == 1 && CIconSinger(icon).GetProgramCode() == 255));

    const TempFolder folder;
    const std::string path = folder.File("singer.aic", "[Common]\nCaption=B\n[Parameter]\nLanguage=1\nProgram=2\n");
    CIconSinger preset;
    CHECK((preset.LoadPreset(path.c_str()) == 1 && preset.GetCaption() == "B"));
    CHECK((preset.GetLanguageCode() == 0 && preset.GetProgramCode() == 0));
}

TEST_CASE("singer: replacing takes articulation, variation and codes; records have 16-bit codes") {
    tagSingerIconObject record{};
    record.header.iconId = 0x07030405;
    record.languageCode = 0x0104;
    record.programCode = 0xFF05;
    CIconSinger icon, other(7, 2, 9);
    CHECK(icon.ConstructParameter(&record) == 1);
    CHECK((icon.GetLanguageCode() == 4 && icon.GetProgramCode() == 5));
    CHECK((other.ReplaceParameter(&icon) == 1 && other.GetIconID() == 0x07030405 && other.GetProgramCode() == 5));
    tagSingerIconObject described{};
    CHECK((other.DescribeParameter(&described) == 1 && described.languageCode == 4 && described.programCode == 5));
    torv::ReleaseIconRecord(&described);
    CIconObject plain(1, 1, 1);
    CHECK((other.ReplaceParameter(&plain) == 1 && other.GetIconID() == 0x07030405 && other.GetLength() == 0));
}
