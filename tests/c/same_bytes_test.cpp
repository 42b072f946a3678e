// One song through the C++ interface and through C.
#include <torv/c/torv.h>
#include <torv/songs/casting.h>
#include <torv/songs/curves.h>
#include <torv/songs/engine_stream.h>
#include <torv/songs/read_song.h>
#include <torv/songs/synthesis.h>

#include <doctest/doctest.h>

#include <filesystem>

using namespace torv::songs;

namespace {

const std::string kSong = "c_twinkle.mid";

/// What the engine sings of the song's one part, and the events that it was told, from the song's start on.
struct Sung {
    std::vector<SHORT> samples;
    std::vector<BYTE> events;
};

Sung SingInCpp() {
    const Song song = ReadSongFile(kSong);
    const MessageCatcher messages;
    Databases databases(messages);
    PartPlan plan;
    plan.line = MakeVoiceLine(song.parts[0]);
    plan.voices = {{0, CastVoice(song.parts[0], torv::kEnglish, databases)}};
    plan.expressions = FindExpressions(databases, {});
    plan.curves = MakeCurves(song.parts[0], plan.line, databases);
    Score score = BuildScore(song, {plan}, {}, databases);
    AddPhonemes(score, messages);
    const auto stream = MakeEngineStream(score, score.parts[0], 2000);
    Sung sung;
    stream->SeekToBegin();
    for (tagQuillMidiEntry entry{}; stream->ReadNextEntry(&entry);) {
        sung.events.resize(sung.events.size() + entry.length);
        stream->ReadEvent(entry.offset, sung.events.data() + sung.events.size() - entry.length, entry.length);
    }
    {
        CWaveFile wave("c_same.wav");
        SingStreams({{stream.get(), &wave}}, 44100);
        wave.SeekSample(static_cast<LONG>(uint64_t{score.leadMilliseconds} * 44100 / 1000), 0);
        for (DWORD left = 0, right = 0; wave.ReadSample(left, right);)
            sung.samples.push_back(static_cast<SHORT>(left));
    }
    std::filesystem::remove("c_same.wav");
    return sung;
}

Sung SingInC() {
    torv_song* song = nullptr;
    torv_databases* databases = nullptr;
    torv_score* score = nullptr;
    torv_sound* sound = nullptr;
    REQUIRE(torv_song_open(kSong.c_str(), nullptr, &song) == TORV_OK);
    REQUIRE(torv_databases_open(&databases) == TORV_OK);
    REQUIRE(torv_score_make(song, databases, nullptr, &score) == TORV_OK);
    Sung sung;
    const auto take = [](const torv_event* event, void* user) {
        auto& events = *static_cast<std::vector<BYTE>*>(user);
        events.insert(events.end(), event->bytes, event->bytes + event->length);
        return 0;
    };
    CHECK(torv_score_encode(score, 0, take, &sung.events) == TORV_OK);
    REQUIRE(torv_sing(score, nullptr, &sound) == TORV_OK);
    torv_sound_info info{sizeof info, 0, 0, 0, 0};
    const float* samples = nullptr;
    CHECK(torv_sound_get_info(sound, &info) == TORV_OK);
    CHECK(torv_sound_get_samples(sound, &samples) == TORV_OK);
    for (uint64_t i = 0; i < info.frames; ++i)
        sung.samples.push_back(static_cast<SHORT>(samples[i] * 32768));
    torv_sound_free(sound);
    torv_score_free(score);
    torv_databases_free(databases);
    torv_song_free(song);
    return sung;
}

} // namespace

TEST_CASE("the same song through C++ and through C gives the same bytes") {
    const Sung cpp = SingInCpp();
    const Sung c = SingInC();
    CHECK(cpp.events == c.events);
    REQUIRE(cpp.samples.size() == c.samples.size());
    CHECK(cpp.samples == c.samples);
    CHECK(cpp.samples.size() > 100000);
}
