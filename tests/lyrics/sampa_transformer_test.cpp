#include "lyrics/fake_converter/fake_converter.h"

#include "torv/icons/icon_singer.h"
#include "torv/lyrics/converter_modules.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/lyrics/sampa_transformer.h"
#include "torv/score/csq_builder.h"
#include "torv/score/sequence.h"
#include "torv/score/sequence_object.h"

#include <doctest/doctest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

/// The fake converter as that of both languages, and what the user would be shown.
struct Stage {
    HMODULE module;
    FakeState* fake = nullptr;
    std::vector<std::string> messages;
    std::vector<UINT> beeps;
    std::function<void()> atMessage = [] {}; ///< what the host does while the first one is shown
    torv::MessageBoxHandler box = torv::SetMessageBoxHandler([this](HWND, const char* text, const char*, UINT type) {
        CHECK((type & MB_ICONWARNING) == MB_ICONWARNING);
        messages.push_back(text);
        std::exchange(atMessage, [] {})();
        return IDOK;
    });
    torv::BeepHandler beep = torv::SetBeepHandler([this](UINT type) { beeps.push_back(type); });
    std::unique_ptr<CSequenceObject> track{CSequence::CreateObject()};
    CCsqBuilder builder;
    void* lastLyric = nullptr; ///< the handle of the note set last

    explicit Stage(const char* name = "FAKE_G2PA_GOOD.DLL") : module(LoadLibraryA(name)) {
        REQUIRE(bool(module));
        if (const auto state = torv::EntryPoint<FakeStateProc>(module, "fakeState"))
            *(fake = state()) = {};
        torv::SetConverterModule(0, module);
        torv::SetConverterModule(1, module);
        builder.OpenBuffer(track.get());
    }
    ~Stage() {
        torv::SetConverterModule(0, nullptr);
        torv::SetConverterModule(1, nullptr);
        FreeLibrary(module);
        torv::SetMessageBoxHandler(box);
        torv::SetBeepHandler(beep);
    }
    CLyricObject* Note(DWORD delta, DWORD length, const std::vector<std::string>& texts, bool withLyric = true) {
        auto* const lyric = new CLyricObject;
        for (const std::string& text : texts) {
            CLyricElement* const element = lyric->AddNewElement();
            element->SetLyricString(text.c_str());
            element->SetDeltaRate(1, static_cast<DWORD>(texts.size()));
            element->SetPhonemeString("before", 1);
        }
        tagCsqEventAnote* const note = CCsqBuilder::CreateNoteEvent();
        note->noteLength = length;
        lastLyric = track->AttachLyricObject(lyric);
        note->lyricHandle = withLyric ? static_cast<DWORD>(reinterpret_cast<uintptr_t>(lastLyric)) : 0;
        builder.SetEvent(delta, reinterpret_cast<tagChartSeqEvent*>(note));
        return lyric;
    }
    void Singer(DWORD delta, WORD language) {
        tagSingerIconObject record{};
        record.header.iconId = 0x07010000;
        record.languageCode = language;
        auto* const icon = new CIconSinger;
        icon->ConstructParameter(&record);
        tagCsqEventSinger* const singer = CCsqBuilder::CreateSingerEvent();
        singer->iconHandle = static_cast<DWORD>(reinterpret_cast<uintptr_t>(builder.RegisterIconObject(icon)));
        builder.SetEvent(delta, reinterpret_cast<tagChartSeqEvent*>(singer));
    }
};

std::string PhonemesOf(CLyricObject* lyric, int element = 0) {
    return std::string(lyric->GetElementAt(element)->GetPhonemeString());
}

} // namespace

TEST_CASE("transformer: each element its result, positions relative to the lyric before") {
    for (const bool holdBack : {false, true}) {
        CAPTURE(holdBack);
        Stage stage;
        stage.fake->holdBack = holdBack;
        CLyricObject* const first = stage.Note(480, 300, {"ab", "c", "de"});
        stage.Note(100, 50, {"silent"}, false); // no handle: passed over
        CLyricObject* const second = stage.Note(860, 120, {"k"});
        CxSampaTransformer transformer;
        CHECK(transformer.DoTransform(stage.track.get(), 1440, 1) == 1);
        CHECK(stage.fake->beats == 3);
        REQUIRE(stage.fake->puts == 4);
        const unsigned positions[] = {480, 580, 680, 960}; // thirds of 300; then 1440 - 480
        const unsigned lengths[] = {100, 100, 100, 120};
        for (int i = 0; i < 4; ++i)
            CHECK((stage.fake->positions[i] == positions[i] && stage.fake->lengths[i] == lengths[i]));
        CHECK((std::string(stage.fake->texts[2]) == "de" && stage.fake->padded));
        CHECK((PhonemesOf(first, 0) == "a b" && PhonemesOf(first, 1) == "c" && PhonemesOf(first, 2) == "d e"));
        CHECK((PhonemesOf(second) == "k" && second->GetElementAt(0)->GetConsonantAdvancement(0) == 64));
        CHECK((stage.track->GetModify() == 1 && stage.fake->sweeps == 1 && stage.fake->deletes == 1));
        CHECK(stage.messages.empty());
    }
}

TEST_CASE("transformer: Japanese slots are joined as they are") {
    Stage stage;
    CLyricObject* const lyric = stage.Note(0, 100, {"ka"});
    CHECK(CxSampaTransformer().DoTransform(stage.track.get(), 480, 0) == 1);
    CHECK(PhonemesOf(lyric) == "ka");
    CHECK(lyric->GetElementAt(0)->GetPhonemeCharaCount() == 1);
}

TEST_CASE("transformer: odd outputs") {
    struct Row {
        const char* text;
        int language;
        std::string phonemes;
    };
    for (const Row& row : {Row{"0", 0, "a"}, Row{"0", 1, "u:"}, Row{"1", 1, "u:"}, Row{"3", 0, "xxxxxxxxxxxxxxxx"},
                           Row{"3", 1, "xxxxxxxx xxxxxxxx"}, Row{"4", 0, std::string(16, 'y')}}) {
        CAPTURE(row.text);
        Stage stage;
        CLyricObject* const lyric = stage.Note(0, 100, {row.text});
        CHECK(CxSampaTransformer().DoTransform(stage.track.get(), 480, row.language) == 1);
        CHECK(PhonemesOf(lyric) == row.phonemes); // a phoneme keeps sixteen characters
    }
    Stage stage;
    CLyricObject* const lyric = stage.Note(0, 100, {"2"}); // a count beyond all room is cut
    CHECK(CxSampaTransformer().DoTransform(stage.track.get(), 480, 0) == 1);
    CHECK(PhonemesOf(lyric) == "2");
    CLyricObject* const text = stage.Note(100, 100, {std::string(1000, 'b')}); // longer than the record's own room
    CHECK(CxSampaTransformer().DoTransform(stage.track.get(), 480, 1) == 1);
    CHECK(text->GetElementAt(0)->GetPhonemeCharaCount() == 128); // 255 characters: b, blank, b ... b
}

TEST_CASE("transformer: what a user edited stays, and uses its result up") {
    Stage stage;
    CLyricObject* const lyric = stage.Note(0, 100, {"a", "b"});
    lyric->GetElementAt(0)->SetPhonemeEditMark(1);
    CHECK(CxSampaTransformer().DoTransform(stage.track.get(), 480, 1) == 1);
    CHECK((PhonemesOf(lyric, 0) == "before" && PhonemesOf(lyric, 1) == "b"));
}

TEST_CASE("transformer: failures change no lyric, say so once and still free the converter") {
    struct Row {
        const char* what;
        void (*arrange)(FakeState&);
        int code;
        int deletes;
    };
    for (const Row& row : {Row{"put", [](FakeState& fake) { fake.putErrorAt = 1; }, -33, 1},
                           Row{"get", [](FakeState& fake) { fake.getResult = 5; }, 5, 1},
                           Row{"create", [](FakeState& fake) { fake.createError = -9; }, -9, 0}}) {
        CAPTURE(row.what);
        Stage stage;
        row.arrange(*stage.fake);
        CLyricObject* const first = stage.Note(0, 100, {"a"});
        stage.Note(100, 100, {"b"});
        CxSampaTransformer transformer;
        CHECK(transformer.DoTransform(stage.track.get(), 480, 1) == 0);
        CHECK((PhonemesOf(first) == "before" && stage.track->GetModify() == 0));
        CHECK((transformer.GetLastReturnCode() == row.code && stage.fake->deletes == row.deletes &&
               stage.fake->sweeps == row.deletes));
        if (row.deletes) // a converter that cannot be made is no error of the transformation
            CHECK(stage.messages == std::vector<std::string>{"Sampa Transformation Error !\nG2PA.dll return code : " +
                                                             std::to_string(row.code)});
        else
            CHECK(stage.messages.empty());
        CHECK(stage.beeps == std::vector<UINT>(stage.messages.size(), MB_ICONWARNING));
    }
    Stage stage; // an error of delete is only remembered
    stage.fake->deleteResult = 4;
    CLyricObject* const lyric = stage.Note(0, 100, {"a"});
    CxSampaTransformer transformer;
    CHECK((transformer.DoTransform(stage.track.get(), 480, 1) == 1 && transformer.GetLastReturnCode() == 4));
    CHECK(PhonemesOf(lyric) == "a");
}

TEST_CASE("transformer: a result that never comes is the default phoneme, with a message each") {
    Stage stage;
    stage.fake->holdBack = true;
    stage.fake->forgetLast = 1;
    CLyricObject* const lyric = stage.Note(0, 100, {"a", "b"});
    CHECK(CxSampaTransformer().DoTransform(stage.track.get(), 480, 1) == 1);
    CHECK((PhonemesOf(lyric, 0) == "a" && PhonemesOf(lyric, 1) == "u:"));
    CHECK(stage.messages == std::vector<std::string>{"Internal Error"});
}

TEST_CASE("transformer: a lyric that is not there fails the conversion without a message") {
    {
        Stage stage;
        CLyricObject* const first = stage.Note(0, 100, {"a"});
        stage.Note(100, 100, {"b"});
        stage.track->DetachLyricObject(stage.lastLyric, 1);
        CHECK(CxSampaTransformer().DoTransform(stage.track.get(), 480, 1) == 0);
        CHECK((PhonemesOf(first) == "before" && stage.messages.empty()));
        CHECK((stage.fake->sweeps == 1 && stage.fake->deletes == 1));
    }
}

TEST_CASE("transformer: at a message the host may do what it likes") {
    struct Row {
        const char* what;
        void (*arrange)(FakeState&);
        int result;
        size_t messages;
    };
    for (const Row& row :
         {Row{"results are missing", [](FakeState& fake) { fake.holdBack = true, fake.forgetLast = 2; }, 1, 2},
          Row{"a put is refused", [](FakeState& fake) { fake.putErrorAt = 1; }, 0, 1}}) {
        CAPTURE(row.what);
        Stage stage;
        row.arrange(*stage.fake);
        stage.Note(0, 100, {"a"});
        stage.Note(100, 100, {"b"});
        stage.builder.CloseBuffer();
        CxSampaTransformer transformer;
        stage.atMessage = [&] {
            CHECK(stage.fake->deletes == 1);
            CHECK(stage.track->GetModify() == row.result); // all is stored before anything is shown
            const std::unique_ptr<CSequenceObject> empty(CSequence::CreateObject());
            CHECK(transformer.DoTransform(empty.get(), 480, 1) == 1);
            torv::SetConverterModule(1, nullptr);
            stage.track.reset();
        };
        CHECK(transformer.DoTransform(stage.track.get(), 480, 1) == row.result);
        CHECK(stage.messages.size() == row.messages);
    }
}

