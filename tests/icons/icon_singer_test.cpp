#include "icon_fixture.h"

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
    CHECK(Values(int{icon.GetLanguageCode()}, int{icon.GetProgramCode()}) == "1 44");
    icon.SetIDString("id");
    tagVoiceChangeParam parameters{};
    parameters.values[16] = 5;
    CHECK(Values{icon.GetSingerName(), icon.GetIDString()} == "????? id"); // no database
    CHECK(Values{icon.GetVoiceChangeParam(&parameters), int{parameters.values[16]}} == "0 5");
    const Voices voices;
    CHECK(Values{icon.GetSingerName(), icon.GetIDString()} == "Anna Anna");
    CHECK(Values{icon.GetVoiceChangeParam(&parameters), int{parameters.values[16]}} == "1 77");
    CHECK(icon.GetVoiceChangeParam(nullptr) == 0);
    CIconSinger unknown;
    CHECK(Values{unknown.GetSingerName(), unknown.GetVoiceChangeParam(&parameters)} == "????? 0");
    CHECK(Values(unknown.GetIDString().IsEmpty(), int{parameters.values[16]}) == "1 77");
}

TEST_CASE("singer: one tick long unless a file says otherwise; its codes are no preset parameters") {
    CIconSinger icon, given(7, 2, 9);
    CHECK(Values(icon.GetIconID(), icon.GetLength(), given.GetLength()) == Values(0x07010000, 1, 1));
    Construct(icon, "[S]\nCaption=A\nLanguage=1\nProgram=-1");
    CHECK(icon.GetLength() == 240); // no length is a file's default
    CHECK(Described(icon) == "[S]\nCaption=A\nLength=240\nLanguage=1\nProgram=255\n");
    Construct(icon, "[S]\nLanguage=");
    CHECK(Values(int{icon.GetLanguageCode()}, int{icon.GetProgramCode()}) == "1 255"); // empty or missing: unchanged
    CHECK(Values(CIconSinger(&icon).GetLength(), int{CIconSinger(icon).GetProgramCode()}) == "1 255");

    const TempFolder folder;
    const std::string path = folder.File("singer.aic", "[Common]\nCaption=B\n[Parameter]\nLanguage=1\nProgram=2\n");
    CIconSinger preset;
    CHECK(Values{preset.LoadPreset(path.c_str()), preset.GetCaption()} == "1 B");
    CHECK(Values(int{preset.GetLanguageCode()}, int{preset.GetProgramCode()}) == "0 0");
}

TEST_CASE("singer: replacing takes articulation, variation and codes; records have 16-bit codes") {
    tagSingerIconObject record{};
    record.header.iconId = 0x07030405;
    record.languageCode = 0x0104;
    record.programCode = 0xFF05;
    CIconSinger icon, other(7, 2, 9);
    CHECK(Values{icon.ConstructParameter(&record), other.ReplaceParameter(&icon), other.GetIconID()} ==
          Values(1, 1, 0x07030405));
    CHECK(Values{other.DescribeParameter(&record), record.languageCode, record.programCode} == "1 4 5");
    torv::ReleaseIconRecord(&record);
    CHECK(record.header.caption == nullptr);
    CIconObject plain(1, 1, 1);
    CHECK(Values{other.ReplaceParameter(&plain), other.GetIconID(), other.GetLength()} == Values(1, 0x07030405, 0));
}
