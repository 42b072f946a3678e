#include "allocation_failure.h"
#include "boxes.h"
#include "lyrics/fake_converter/fake_converter.h"

#include "score/chart.h"
#include "torv/lyrics/converter_modules.h"
#include "torv/lyrics/sampa_transformer.h"
#include "values.h"

#include <doctest/doctest.h>

#include <cstring>
#include <memory>
#include <optional>

namespace {

/// The fake converter as that of both languages, and what the user would be shown.
struct Stage {
    HMODULE module;
    FakeState* fake = nullptr;
    Boxes boxes;
    std::optional<Chart> chart{std::in_place};
    DWORD tick = 0;
    std::vector<CLyricObject*> lyrics;

    explicit Stage(const char* name = "FAKE_G2PA_GOOD.DLL") : module(LoadLibraryA(name)) {
        REQUIRE(bool(module));
        if (const auto state = torv::EntryPoint<FakeStateProc>(module, "fakeState"))
            *(fake = state()) = {};
        torv::SetConverterModule(0, module);
        torv::SetConverterModule(1, module);
    }
    ~Stage() {
        torv::SetConverterModule(0, nullptr);
        torv::SetConverterModule(1, nullptr);
        FreeLibrary(module);
    }
    /// A note; its lyric has "before" as phonemes, and equal shares.
    void Note(DWORD delta, DWORD length, const std::vector<std::string>& texts, bool withLyric = true) {
        auto* const lyric = new CLyricObject;
        lyrics.push_back(lyric);
        for (const std::string& text : texts) {
            CLyricElement* const element = lyric->AddNewElement();
            element->SetLyricString(text.c_str());
            element->SetDeltaRate(1, static_cast<DWORD>(texts.size()));
            element->SetPhonemeString("before", 1);
        }
        tagCsqEventAnote* const note = chart->Note(tick += delta, length, 60, chart->Attach(lyric));
        if (!withLyric)
            note->lyricHandle = 0;
    }
    void Singer(DWORD delta, WORD language) { chart->Singer(tick += delta, language, 0); }
    CSequenceObject* Track() { return &chart->Track(); }
    /// Every syllable's phonemes.
    std::string Sung() const {
        std::string sung;
        for (const CLyricObject* const lyric : lyrics)
            for (int i = 0; i < lyric->GetElementCount(); ++i)
                sung += std::string(lyric->GetElementAt(i)->GetPhonemeString()) + "|";
        return sung;
    }
    std::string Log() const { return fake->log; }
};

} // namespace

TEST_CASE("transformer: each syllable its result, positions relative to the lyric before") {
    CxSampaTransformer transformer; // the same for all: nothing of a conversion is left for the next
    for (const bool holdBack : {false, true}) {
        CAPTURE(holdBack);
        Stage stage;
        stage.fake->holdBack = holdBack;
        stage.Note(480, 300, {"ab", "c", "de"});
        stage.Note(100, 50, {"silent"}, false); // no handle: passed over
        stage.Note(810, 100, {});               // no syllable, but positions count from here
        stage.Note(50, 120, {"k"});
        stage.lyrics[0]->GetElementAt(1)->SetPhonemeEditMark(1); // a user's: it stays, and uses its result up
        CHECK(Values{transformer.DoTransform(stage.Track(), 1440, 1), stage.Sung()} == "1 a b|before|d e|before|k|");
        CHECK(stage.Log() == "0 create 3|0 480+100 ab|0 580+100 c|0 680+100 de|0 50+120 k|0 end|0 delete|");
        CHECK(stage.fake->padded);
        CHECK(stage.lyrics[3]->GetElementAt(0)->GetConsonantAdvancement(0) == 64);
        CHECK(Values(stage.Track()->GetModify(), stage.boxes.texts.size()) == "1 0");
        stage.fake->getResult = 5;
        CHECK(transformer.DoTransform(stage.Track(), 480, 1) == 0);
        stage.fake->getResult = 0;
        // Japanese slots are joined as they are.
        CHECK(Values{transformer.DoTransform(stage.Track(), 479, 0), stage.Sung()} == "1 ab|before|de|before|k|");
        CHECK(stage.Log().ends_with("|2 create 0|2 480+100 ab|2 580+100 c|2 680+100 de|2 50+120 k|2 end|2 delete|"));
    }
}

TEST_CASE("transformer: odd outputs") {
    const struct {
        int count;
        size_t filled; // bytes of the slots without a terminator
        const char* japanese;
        const char* english;
    } rows[] = {{0, 1, "a|", "u:|"},
                {-7, 0, "a|", "u:|"},
                {0x7FFFFFFF, 8, "yyyyyyyy|", "yyyyyyyy"}, // a count beyond all room is cut
                {2, 16, "yyyyyyyyyyyyyyyy|", "yyyyyyyy yyyyyyyy|"},
                {256, 2048, "yyyyyyyyyyyyyyyy|", "yyyyyyyy yyyyyyyy yyyyyyyy"}}; // a phoneme keeps sixteen characters
    for (const auto& row : rows) {
        CAPTURE(row.count);
        Stage stage;
        stage.Note(0, 100, {"a"});
        stage.fake->odd.count = row.count;
        std::memset(stage.fake->odd.slots, 'y', row.filled);
        CHECK(Values{CxSampaTransformer().DoTransform(stage.Track(), 480, 0), stage.Sung()} == Values(1, row.japanese));
        CHECK(CxSampaTransformer().DoTransform(stage.Track(), 480, 1) == 1);
        CHECK(stage.Sung().starts_with(row.english));
        CHECK(stage.Sung().size() <= 256);
    }
    Stage stage;
    stage.Note(100, 100, {std::string(1000, 'b')}); // longer than the record's own room
    CHECK(CxSampaTransformer().DoTransform(stage.Track(), 480, 1) == 1);
    CHECK(stage.lyrics[0]->GetElementAt(0)->GetPhonemeCharaCount() == 128); // 255 characters: b, blank, b ... b
}

TEST_CASE("transformer: failures change no lyric, say so once and still free the converter") {
    const struct {
        void (*arrange)(Stage&);
        int code;
        bool isShown;
    } rows[] = {
        {[](Stage& stage) { stage.fake->putErrorAt = 1; }, -33, true},
        {[](Stage& stage) { stage.fake->getResult = 5; }, 5, true},
        {[](Stage& stage) { stage.fake->endless = true; }, -1, true},
        {[](Stage& stage) { stage.fake->createError = -9; }, -9, false},
        {[](Stage& stage) {
             stage.Track()->DetachLyricObject(torv::PointerOf(2), 1);
             stage.lyrics.erase(stage.lyrics.begin() + 1);
         },
         0, false},
    };
    for (const auto& row : rows) {
        CAPTURE(row.code);
        Stage stage;
        stage.Note(0, 100, {"a"});
        stage.Note(100, 100, {"b"});
        stage.Note(100, 100, {"c"});
        row.arrange(stage);
        CxSampaTransformer transformer;
        CHECK(Values{transformer.DoTransform(stage.Track(), 480, 1), transformer.GetLastReturnCode()} ==
              Values(0, row.code));
        CHECK(Values(stage.Sung().starts_with("before|"), stage.Track()->GetModify()) == "1 0");
        CHECK(stage.Log() == (row.code == -9 ? "0 create 1|" : "0 create 1|0 0+100 a|0 end|0 delete|"));
        const std::string message = "Sampa Transformation Error !\nG2PA.dll return code : " + std::to_string(row.code);
        CHECK(stage.boxes.texts == Texts(row.isShown, message));
        CHECK(stage.boxes.beeps == std::vector<UINT>(row.isShown, MB_ICONWARNING));
        CHECK(stage.boxes.types == std::vector<UINT>(row.isShown, MB_ICONWARNING | MB_OK));
    }
    Stage stage; // an error of delete is only remembered
    stage.fake->deleteResult = 4;
    stage.Note(0, 100, {"a"});
    CxSampaTransformer transformer;
    CHECK(Values{transformer.DoTransform(stage.Track(), 480, 1), transformer.GetLastReturnCode(), stage.Sung()} ==
          "1 4 a|");
}

TEST_CASE("transformer: a result that never comes is a default phoneme; at a message the host may do what it likes") {
    for (const bool isRefused : {false, true}) {
        CAPTURE(isRefused);
        Stage stage;
        stage.fake->holdBack = true;
        stage.fake->forgetLast = 2;
        stage.fake->putErrorAt = isRefused ? 1 : -1;
        stage.Note(0, 100, {"a"});
        stage.Note(100, 100, {"b", "c"});
        stage.chart->Close();
        CxSampaTransformer transformer;
        stage.boxes.atBox = [&] { // all is stored, and the converter gone, before anything is shown
            CHECK(stage.Log().ends_with("|0 delete|"));
            CHECK(stage.Track()->GetModify() == !isRefused);
            CHECK(stage.Sung() == (isRefused ? "before|before|before|" : "a|u:|u:|"));
            const std::unique_ptr<CSequenceObject> empty(CSequence::CreateObject());
            CHECK(transformer.DoTransform(empty.get(), 480, 1) == 1);
            torv::SetConverterModule(1, nullptr);
            stage.chart.reset();
        };
        CHECK(transformer.DoTransform(stage.Track(), 480, 1) == !isRefused);
        if (!isRefused)
            CHECK(stage.boxes.texts == Texts(2, "Internal Error"));
    }
}

TEST_CASE("transformer: languages and libraries that are not there") {
    {
        Stage stage;
        stage.Note(0, 100, {"a"});
        for (const int language : {-1, 2})
            CHECK(CxSampaTransformer().DoTransform(stage.Track(), 480, language) == 0);
        CHECK(Values(CxSampaTransformer().DoTransform(nullptr, 480, 1), CxSampaTransformer().DoTransform(nullptr, 480),
                     CxSampaTransformer::GetG2PAVersionString(1),
                     CxSampaTransformer::GetG2PAVersionString(2)) == "0 0 fake 1.0 ");
        torv::SetConverterModule(0, nullptr);
        CHECK(CxSampaTransformer().DoTransform(stage.Track(), 480) == 0); // both are needed
        CHECK(stage.Log().empty());
    }
    CHECK(CxSampaTransformer::GetG2PAVersionString(0).IsEmpty());
    Stage stage("FAKE_G2PA_NO_GET.DLL");
    stage.Note(0, 100, {"a"});
    // The version's entry point is missing too.
    CHECK(Values{CxSampaTransformer().DoTransform(stage.Track(), 480, 1), stage.Log(),
                 CxSampaTransformer::GetG2PAVersionString(1)} == "0  ");
}

TEST_CASE("transformer: by singer, each note in the language in force there") {
    CxSampaTransformer transformer;
    for (const bool holdBack : {false, true}) { // held back, the two languages' results come one after the other
        CAPTURE(holdBack);
        Stage stage;
        stage.fake->holdBack = holdBack;
        stage.Note(0, 100, {"ab"}); // before any singer: Japanese
        stage.Singer(100, 1);
        stage.Note(0, 100, {"cd"}); // exactly at the change
        stage.Singer(100, 0);
        stage.Singer(0, 1); // of two at once the first counts there, the last behind
        stage.Note(0, 100, {"ef"});
        stage.Note(50, 100, {"gh"});
        stage.Singer(20, 7); // a language that nobody knows: Japanese
        stage.Note(30, 100, {"ij"});
        CHECK(Values{transformer.DoTransform(stage.Track(), 480), stage.Sung()} == "1 ab|c d|ef|g h|ij|");
        CHECK(stage.Log() == "0 create 1|1 create 1|0 0+100 ab|1 100+100 cd|0 100+100 ef|1 50+100 gh|0 50+100 ij|"
                             "0 end|0 delete|1 end|1 delete|");
    }
    Stage stage; // one of the two cannot be made: the other goes, unused
    stage.fake->createErrorAt = 1;
    stage.fake->createError = -9;
    stage.Note(150, 100, {"ab"});
    CHECK(Values{transformer.DoTransform(stage.Track(), 480), stage.Sung()} == "0 before|");
    CHECK(stage.Log() == "0 create 1|1 create 1|0 end|0 delete|");
    CHECK(stage.boxes.texts.empty());
    stage.fake->createError = 0; // and no singer of those before is left
    CHECK(Values{transformer.DoTransform(stage.Track(), 480), stage.Sung()} == "1 ab|");
}

TEST_CASE("transformer: where memory is refused no lyric is changed and no converter is left") {
    FailEachAllocation([](AllocationFailure& failure) {
        Stage stage;
        stage.Singer(0, 1);
        stage.Note(0, 100, {"ab", "cd"});
        stage.Note(0, 100, {"ef"});
        CxSampaTransformer transformer;
        const int result = failure.During([&] { return transformer.DoTransform(stage.Track(), 480); });
        CHECK(result == !failure.HasHappened());
        CHECK(stage.Sung() == (result ? "a b|c d|e f|" : "before|before|before|"));
        CHECK(stage.Track()->GetModify() == result);
        CHECK(stage.fake->creates == stage.fake->deletes);
        CHECK(stage.boxes.texts.empty());
    });
}
