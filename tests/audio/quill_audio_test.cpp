#include "allocation_failure.h"
#include "audio/wave_test_files.h"
#include "torv/audio/quill_audio.h"
#include "values.h"

#include <array>
#include <cmath>
#include <functional>
#include <random>

namespace {

std::string Random(size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

/// A file and all its samples.
struct Loaded {
    explicit Loaded(const Scratch& file, BYTE flags = 0) {
        REQUIRE(audio.Load(file.Text()) == 1);
        REQUIRE(audio.ReadWave(&buffer, 0, flags) == 1);
    }
    CxQuillAudio audio;
    Held buffer{1, 8, ""};
};

} // namespace

TEST_CASE("quill audio: any PCM wave comes back bit for bit, with all its chunks") {
    const Scratch file;
    const auto roundTrips = [&](int channels, int bits, size_t size, bool pad) {
        INFO(channels, " channels, ", bits, " bits, ", size, " bytes, padded ", pad);
        const std::string data = Random(size, static_cast<unsigned>(size) + bits);
        // An odd chunk before the data only where a pad follows it: without pads odd ones are put at the end.
        const std::string odd = Chunk("bext", "odd", pad);
        const std::string cue = Chunk("cue ", Le(0)) + Chunk("LIST", Le(0)); // a form of zeros
        const std::string bytes =
            Wave(Chunk("LIST", "INFO" + Chunk("INAM", "a name", true)) + Fmt(channels, bits) + Chunk("fact", "any!") +
                 (pad ? odd : cue) + Chunk("data", data, pad) + (pad ? cue : ""s) + odd);
        file.Put(bytes);
        const DWORD frames = static_cast<DWORD>(size) / (channels * ((bits + 7) / 8));
        for (const BYTE flags : {0, 1}) {
            Loaded loaded(file, flags);
            auto& [audio, buffer] = loaded;
            CHECK(Values(buffer.GetSampleBitLength(), buffer.IsLoaded(), buffer.GetModify()) == Values(bits, 1, 0));
            CHECK(Values(audio.GetNumSamples(), buffer.GetNumSamples()) == Values(frames, frames));
            CHECK(buffer.IsTop());
            CHECK(buffer.Content() == data);
            CWaveBuffer place; // known by its file only
            CHECK(audio.ReadProperty(&place) == 1);
            CHECK(audio.Save(flags ? &place : &buffer) == 1);
            CHECK(file.Get() == bytes);
        }
        CHECK(file.IsAlone());
    };
    for (const auto& [channels, bits] : {std::pair(1, 8), {3, 12}, {2, 24}})
        for (const size_t size : {0u, 7u, 70001u}) // broken frames too
            for (const bool pad : {true, false})
                roundTrips(channels, bits, size, pad);
}

TEST_CASE("quill audio: the format chunk") {
    const std::string pcm = Fmt(1, 24).substr(8);
    const std::string other = Le(0xFFFE, 2) + pcm.substr(2) + Le(22, 2) + Le(24, 2) + Le(4); // the kind stands behind
    const struct {
        std::string fmt;
        DWORD unit, rate; // 0: refused
    } cases[] = {{"", 4, 44100},
                 {Le(1, 2) + Le(1, 2) + Le(8000), 2, 8000},
                 {Fmt(1, 16, 0).substr(8), 2, 44100},
                 {other + Le(1, 2) + "\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71"s, 3, 44100},
                 {other + Le(3, 2), 0, 0}, // float
                 {Le(3, 2) + Fmt(2, 32).substr(10), 0, 0},
                 {pcm.substr(0, 12) + Le(4, 2) + Le(24, 2), 0, 0}, // 24 bits in frames of 4 bytes
                 {Fmt(0, 16).substr(8), 0, 0},
                 {Fmt(2, 0).substr(8), 0, 0}};
    const std::string data = Chunk("data", "123456789012");
    for (const auto& test : cases) {
        CAPTURE(&test - cases);
        const Scratch file(Wave(Chunk("fmt ", test.fmt) + data));
        const std::string whole = file.Get();
        CxQuillAudio audio;
        CHECK(audio.Load(file.Text()) == (test.unit > 0));
        CHECK(audio.GetError(0) == 0);
        if (!test.unit)
            continue;
        Loaded loaded(file);
        CHECK(Values(loaded.buffer.GetSampleUnitSize(), loaded.buffer.GetSampleRate()) == Values(test.unit, test.rate));
        CHECK(Values{loaded.audio.GetNumSamples(), loaded.audio.Save(&loaded.buffer)} == Values(12 / test.unit, 1));
        CHECK(file.Get() == whole); // what it says beyond PCM is kept
    }
    const Scratch file(Wave(data)); // no such chunk: it gets one
    Loaded loaded(file);
    CHECK(loaded.audio.Save(&loaded.buffer) == 1);
    CHECK(file.Get() == Wave(Fmt(2, 16) + data));
}

TEST_CASE("quill audio: what an edit changes in the file") {
    const std::string tail = Chunk("cue ", Le(0));
    const auto wave = [](const std::string& fmt, DWORD frames, const std::string& dataAndTail) {
        return Wave(fmt + Chunk("fact", Le(frames)) + dataAndTail);
    };
    const std::string mono = Fmt(1, 8);
    const std::string old = wave(mono, 4, Chunk("data", "abcd") + tail);
    const struct {
        std::function<void(Loaded&)> edit;
        DWORD frames;
        std::string bytes;
    } cases[] = {
        {[](Loaded& of) { of.buffer.AddSample("e"), of.buffer.AddSample("f"); }, // their false count is made true
         6, wave(mono, 6, Chunk("data", "abcdef") + tail)},
        {[](Loaded& of) { of.buffer.AddSample("e", 1); }, // an odd end, for which the file had no pads
         5, wave(mono, 5, tail + Chunk("data", "abcde"))},
        {[](Loaded& of) { of.buffer.SetWaveInfo(2, 16, 8000); }, 1,
         wave(Fmt(2, 16, 8000), 1, Chunk("data", "abcd") + tail)},
        {[](Loaded& of) { of.buffer.RemoveSample(torv::kAllFrames); }, // not the file's old data
         0, wave(mono, 0, Chunk("data", "") + tail)},
        {[](Loaded& of) { // a modified mark without data in memory loses nothing
             of.buffer.Delete();
             of.audio.ReadProperty(&of.buffer);
             of.buffer.SetModify(1);
         },
         4, old}};
    for (const auto& test : cases) {
        CAPTURE(&test - cases);
        const Scratch file(old);
        Loaded loaded(file);
        auto& [audio, buffer] = loaded;
        test.edit(loaded);
        CHECK(audio.Save(&buffer) == 1);
        CHECK(Values(buffer.GetNumSamples(), audio.GetNumSamples(), buffer.GetModify()) ==
              Values(test.frames, test.frames, 0));
        CHECK(file.Get() == test.bytes);
        WAVEHDR headers[2] = {}; // the data may have moved in the file; a buffer that plays from it has learnt that
        buffer.SetPlayParam(0, 99, 0, torv::kPlayFromFile);
        CHECK(buffer.InitialLoadDataBlock(headers) == 1);
        CHECK(test.bytes.find(Chunk("data", {headers[0].lpData, headers[0].dwBufferLength})) < test.bytes.size());
    }
}

TEST_CASE("quill audio: the kinds of saving") {
    const std::string list = Chunk("LIST", "INFOtext");
    const std::string old = Wave(Fmt(1, 16) + list + Chunk("data", "abcd"));
    const Scratch first(old);
    const Scratch second("old");
    Loaded loaded(first);
    auto& [audio, buffer] = loaded;
    CHECK(CxQuillAudio().Save(&buffer) == 0); // stands for no file yet
    buffer.AddSample("ef", 1);
    const struct {
        int (CxQuillAudio::*save)(const char* path, CWaveBuffer* buffer);
        const Scratch& to;
        const Scratch& standsFor; // then
        const char* then;         // modified, frames, chunks
        std::string inFirst;
    } cases[] = {{&CxQuillAudio::SaveCopy, second, first, "1 2 3", old},
                 {&CxQuillAudio::SaveAs, second, second, "0 3 3", old},
                 {&CxQuillAudio::SaveNew, first, first, "0 3 2", MonoFile("abcdef")}};
    for (const auto& test : cases) {
        CHECK((audio.*test.save)(test.to.Text(), &buffer) == 1);
        CHECK(audio.GetFilePath() == test.standsFor.Text());
        CHECK(buffer.GetFilePath() == test.standsFor.Text());
        CHECK(Values(buffer.GetModify(), audio.GetNumSamples(), audio.GetChunkList().size()) == test.then);
        CHECK(first.Get() == test.inFirst);
        CHECK(second.Get() == Wave(Fmt(1, 16) + list + Chunk("data", "abcdef")));
    }
}

TEST_CASE("quill audio: a save that fails leaves the old file and no other") {
    const std::string old = Wave(Fmt(1, 8) + Chunk("data", "abcd") + Chunk("LIST", "INFO" + Random(6000, 1)));
    const Scratch file(old);
    const Scratch target("stays");
    Loaded loaded(file);
    auto& [audio, buffer] = loaded;
    buffer.AddSample("e", 1);
    const auto fails = [&](int result, int cause) {
        CHECK(result == 0);
        CHECK((cause < 0 || loaded.audio.GetError(1) == cause));
        CHECK(loaded.audio.GetFilePath() == file.Text());
        CHECK(loaded.buffer.GetModify() == 1);
        CHECK(loaded.buffer.Content() == "abcde");
        CHECK(target.Get() == "stays");
        CHECK(Values(target.IsAlone(), file.IsAlone()) == "1 1");
    };
    fails(audio.SaveAs(target.Text(), nullptr), -1);
    fails(audio.SaveAs(nullptr, &buffer), -1);
    fails(audio.SaveAs("torv_no_such_folder/x.wav", &buffer), CFileException::badPath);
    fails(audio.SaveAs(target.Folder(), &buffer), CFileException::accessDenied);

    for (const std::string& now : {old.substr(0, old.size() - 1000), // a kept chunk is cut off, or stands elsewhere
                                   Wave(Fmt(1, 8) + Chunk("LIST", "INFO" + Random(6000, 1)) + Chunk("data", "abcd"))}) {
        file.Put(now);
        fails(audio.SaveAs(target.Text(), &buffer), -1);
        fails(audio.Save(&buffer), -1);
        CHECK(file.Get() == now);
    }
    CHECK(audio.SaveNew(target.Text(), &buffer) == 1); // the samples are not lost with the chunks
    CHECK(target.Get() == Wave(Fmt(1, 8) + Chunk("data", "abcde")));
}

TEST_CASE("quill audio: any bytes are loaded or refused") {
    const Scratch file;
    const Scratch copy;
    /// What loads must be all there, and the same after a save.
    const auto survives = [&](const std::string& bytes) {
        file.Put(bytes);
        CxQuillAudio audio;
        Held buffer(1, 8, "");
        const int loads = audio.Load(file.Text());
        const int reads = audio.ReadWave(&buffer, 0, 1);
        CHECK(audio.GetError(0) == 0);
        CHECK(buffer.GetSize() <= bytes.size());
        if (reads) {
            CHECK(audio.SaveCopy(copy.Text(), &buffer) == 1);
            CHECK(Loaded(copy).buffer.Content() == buffer.Content());
        }
        return Values(loads, reads);
    };
    const std::string good =
        Wave(Chunk("bext", "odd", true) + Fmt(1, 16) + Chunk("LIST", "INFOtext") + Chunk("data", "12345678"));
    CHECK(survives(good + "behind") == "1 1");
    for (size_t size = 1; size < good.size(); ++size) {
        CHECK(survives(good.substr(0, size)) == "0 0");
        std::string flipped = good; // each byte turned one of three ways
        flipped[size - 1] = static_cast<char>(good[size - 1] ^ std::array{0x01, 0x80, 0xFF}[size % 3]);
        survives(flipped);
    }
    for (const DWORD lie : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFF0u, 0xFFFFFFFFu}) {
        CHECK(survives("RIFF" + Le(lie) + "WAVE" + Fmt(1, 8) + Chunk("data", "123456789012")) == "0 0");
        CHECK(survives(Wave(Fmt(1, 8) + "data" + Le(lie) + "123456789012")) == "1 0"); // data behind their file's end
    }
    std::string many = Fmt(2, 32, 0xFFFFFFFF); // a second of 32 GiB
    for (int i = 2; i < 4096; ++i)
        many += Chunk("junk", "");
    CHECK(survives(Wave(many + Chunk("data", "12345678") + std::string(9999, '\0'))) == "1 1");
    CHECK(survives(Wave(many + Chunk("junk", "") + Chunk("data", ""))) == "0 0"); // one more than anybody writes
    CHECK(survives(Chunk("junk", "") + good) == "0 0");

    file.Put(good);
    Loaded loaded(file);
    CHECK(loaded.audio.Load(nullptr) == 0); // changes nothing
    CHECK(loaded.audio.GetFilePath() == file.Text());
    file.Put(good.substr(0, good.size() - 1)); // shorter since it was loaded
    CHECK(Values{loaded.audio.ReadWave(&loaded.buffer, 0, 0), loaded.buffer.IsLoaded()} == "0 0");
    CHECK(loaded.buffer.GetSize() == 0);
}

TEST_CASE("quill audio: another extension") {
    const struct {
        const char *path, *ext, *swapped;
    } cases[] = {{"song.wav", ".aif", "song.aif"},
                 {"a.b/song", ".wav", "a.b/song.wav"},
                 {"a.b\\song.one.two", "wav", "a.b\\song.one.wav"},
                 {"song", nullptr, "song"},
                 {nullptr, "wav", ".wav"}};
    for (const auto& test : cases)
        CHECK(CxQuillAudio::SwapFileExt(test.path, test.ext) == test.swapped);
}

TEST_CASE("quill audio: a mix by hand") {
    const Scratch file;
    Held mono(1, 16, Words({1000, 2001, -3}));
    Held stereo(2, 16, Words({30000, -30000}));
    Held low(1, 8, "\xC0\x40\x80\x7F\xFF");                         // 0.5, -0.5, 0, -1/128, 127/128
    Held wide(1, 24, Le(0x800000, 3) + Le(1, 3) + Le(0x123456, 3)); // -1, 2^-23
    Held widest(1, 32, Le(0x80000000) + Le(1));
    const float half = -6.0206F; // a gain of 0.5, to seven digits
    const struct {
        std::vector<__tagMixDownTrack> tracks;
        std::string data;
        DWORD bits;
    } cases[] = {
        {{{0, 0, 0, 0, &mono}}, Words({1000, 1000, 2001, 2001, -3, -3}), 16},
        {{{2, 99, half, 0, &mono}}, Words({-1, -1}), 16}, // -1.5, toward zero
        {{{2, 1, 0, 0, &mono}}, "", 16},
        {{{0, 1, 0, -1, &mono}}, Words({2000, 0}), 16}, // the side it is panned to is doubled
        {{{0, 1, 0, NAN, &mono}, {1, 2, NAN, 0, &mono}}, Words({3001, 3001}), 16},
        {{{0, 0, 20, 0, &stereo}}, Words({32767, -32768}), 16}, // stays at the ends
        {{{0, 0, 0, 0, &low}}, Words({16384, 16384, -16384, -16384, 0, 0, -256, -256, 32512, 32512}), 16},
        {{{0, 0, 0, 0, &wide}, {0, 2, 0, 0, &low}}, // 0.5 - 1, 2^-23 - 0.5
         Le(0xC00000, 3) + Le(0xC00000, 3) + Le(0xC00001, 3) + Le(0xC00001, 3) + Le(0x123456, 3) + Le(0x123456, 3),
         24},
        {{{0, 0, 0, 0, &widest}}, Le(0x80000000) + Le(0x80000000) + Le(1) + Le(1), 32}};
    for (auto test : cases) {
        CAPTURE(test.data);
        mono.MoveTo(1);
        CHECK(CxQuillAudio().AudioMixDown(file.Text(), test.tracks.data(), static_cast<int>(test.tracks.size())) == 1);
        CHECK(file.Get() == Wave(Fmt(2, test.bits) + Chunk("data", test.data)));
        CHECK(mono.GetSamplePosition() == 1);
    }

    file.Put("stays");
    Held slow(1, 16, "ab", 22050);
    Held three(3, 16, "abcdef");
    Held vast(1, 64, "abcdefgh");
    CWaveBuffer place;
    place.SetRiffInfo("torv_no_such_file.wav", 44, 100);
    CxQuillAudio audio;
    __tagMixDownTrack tracks[2] = {{0, 0, 0, 0, &mono}, {}};
    for (CWaveBuffer* const bad : std::initializer_list<CWaveBuffer*>{&slow, &three, &vast, &place, nullptr}) {
        tracks[1].buffer = bad;
        CHECK(audio.AudioMixDown(file.Text(), tracks, 2) == 0);
    }
    CHECK(audio.GetError(1) == CFileException::fileNotFound);
    CHECK(audio.AudioMixDown(file.Text(), tracks, 0) == 0);
    CHECK(audio.AudioMixDown(nullptr, tracks, 1) == 0);
    CHECK(file.Get() == "stays");

    std::string once, twice; // more than two of the blocks that mixing uses
    for (int i = 0; i < 40000; ++i) {
        once += Words({i % 5000});
        twice += Words({i % 5000 * 2, i % 5000 * 2});
    }
    file.Put(MonoFile(once));
    REQUIRE(audio.Load(file.Text()) == 1);
    REQUIRE(audio.ReadProperty(&place) == 1);
    for (__tagMixDownTrack& track : tracks)
        track = {0, 0, 0, 0, &place};
    CHECK(audio.AudioMixDown(file.Text(), tracks, 2) == 1);         // into the file that it is made of
    CHECK((file.Get() == Wave(Fmt(2, 16) + Chunk("data", twice)))); // too long to be shown
}

TEST_CASE("quill audio: without memory a load, a save and a mix answer 0, and nothing has changed") {
    const std::string list = Chunk("LIST", "INFOtext");
    const Scratch file(Wave(Fmt(1, 16) + list + Chunk("data", "abcd")));
    const CString path = file.Text();
    FailEachAllocation([&](AllocationFailure& failure) {
        const Scratch target("old");
        const CString name = target.Text();
        Loaded loaded(file);
        auto& [audio, buffer] = loaded;
        buffer.AddSample("ef", 1);
        const int isSaved = failure.During([&] { return audio.SaveAs(name, &buffer); });
        CHECK((isSaved || failure.HasHappened())); // sorting does with less memory
        CHECK(target.Get() == (isSaved ? Wave(Fmt(1, 16) + list + Chunk("data", "abcdef")) : "old"));
        CHECK(target.IsAlone());
        for (const CString& standsFor : {audio.GetFilePath(), buffer.GetFilePath()})
            CHECK(standsFor == (isSaved ? name : path));
        CHECK(buffer.GetModify() == !isSaved);

        __tagMixDownTrack track{0, 1, 0, 0, &buffer};
        target.Put("old");
        const int isMixed = failure.During([&] { return audio.AudioMixDown(name, &track, 1); });
        CHECK((isMixed || failure.HasHappened()));
        CHECK(target.Get() == (isMixed ? Wave(Fmt(2, 16) + Chunk("data", "abab")) : "old"));
        CHECK(target.IsAlone());
    });
    FailEachAllocation([&](AllocationFailure& failure) {
        CxQuillAudio audio;
        Held buffer(1, 8, "");
        const int isRead = failure.During([&] { return audio.Load(path) && audio.ReadWave(&buffer, 0, 0); });
        CHECK(isRead != failure.HasHappened());
        CHECK(buffer.Content() == (isRead ? "abcd" : ""));
        CHECK(audio.GetFilePath().IsEmpty() == audio.GetChunkList().empty());
    });
}
