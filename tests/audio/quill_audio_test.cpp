#include "allocation_failure.h"
#include "audio/quill_audio_fixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <random>

namespace {

using namespace std::string_literals;

std::string Le(ULONGLONG value, int bytes = 4) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> 8 * i & 0xFF);
    return text;
}

std::string Chunk(const char* id, const std::string& content, bool pad = false) {
    return id + Le(content.size()) + content + (pad && content.size() % 2 ? "\0"s : "");
}

std::string Wave(const std::string& chunks) { return Chunk("RIFF", "WAVE" + chunks); }

std::string Fmt(DWORD channels, DWORD bits, DWORD rate = 44100) {
    const DWORD unit = channels * ((bits + 7) / 8);
    return Chunk("fmt ", Le(1, 2) + Le(channels, 2) + Le(rate) + Le(rate * unit) + Le(unit, 2) + Le(bits, 2));
}

std::string Random(size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

std::string Content(CWaveBuffer& buffer) {
    std::string bytes(buffer.GetSize(), '\0');
    buffer.SeekTo(0);
    buffer.Read(bytes.data(), buffer.GetSize());
    return bytes;
}

/// A file and all its samples.
struct Loaded {
    explicit Loaded(const Scratch& file, BYTE flags = 0) {
        REQUIRE(audio.Load(file.Text()) == 1);
        REQUIRE(audio.ReadWave(&buffer, 0, flags) == 1);
    }
    CxQuillAudio audio;
    CWaveBuffer buffer;
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
            CHECK(buffer.GetSampleBitLength() == static_cast<DWORD>(bits));
            CHECK(audio.GetNumSamples() == frames);
            CHECK(buffer.GetNumSamples() == frames);
            CHECK(buffer.IsLoaded() == 1);
            CHECK(buffer.GetModify() == 0);
            CHECK(buffer.IsTop());
            CHECK(Content(buffer) == data);
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
    const std::string other = Le(0xFFFE, 2) + pcm.substr(2); // the kind stands behind
    const std::string guid = Le(24, 2) + Le(4) + Le(1, 2) + "\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71"s;
    struct {
        std::string fmt;            // "none": no such chunk
        DWORD channels, bits, rate; // 0 channels: refused
    } const cases[] = {{pcm, 1, 24, 44100},
                       {"none", 2, 16, 44100},
                       {"", 2, 16, 44100},
                       {pcm.substr(0, 4), 1, 16, 44100},
                       {Le(1, 2) + Le(1, 2) + Le(8000), 1, 16, 8000},
                       {Fmt(1, 16, 0).substr(8), 1, 16, 44100},
                       {other + Le(22, 2) + guid, 1, 24, 44100},
                       {other + Le(22, 2) + guid.substr(0, 6) + Le(3, 2), 0, 0, 0}, // float
                       {Le(3, 2) + Fmt(2, 32).substr(10), 0, 0, 0},
                       {pcm.substr(0, 12) + Le(4, 2) + Le(24, 2), 0, 0, 0}, // 24 bits in frames of 4 bytes
                       {Fmt(0, 16).substr(8), 0, 0, 0},
                       {Fmt(2, 0).substr(8), 0, 0, 0}};
    const Scratch file;
    for (const auto& test : cases) {
        CAPTURE(&test - cases);
        const bool isNone = test.fmt == "none";
        const std::string data = Chunk("data", "123456789012");
        const std::string whole = Wave((isNone ? "" : Chunk("fmt ", test.fmt)) + data);
        file.Put(whole);
        CxQuillAudio audio;
        CHECK(audio.Load(file.Text()) == (test.channels > 0));
        CHECK(audio.GetError(0) == 0);
        if (!test.channels)
            continue;
        CHECK(audio.GetNumSamples() == 12 / (test.channels * test.bits / 8));
        CWaveBuffer buffer;
        CHECK(audio.ReadWave(&buffer, 0, 0) == 1);
        CHECK(buffer.GetSampleUnitSize() == test.channels * test.bits / 8);
        CHECK(buffer.GetSampleRate() == test.rate);
        CHECK(audio.Save(&buffer) == 1);
        CHECK(file.Get() == (isNone ? Wave(Fmt(2, 16) + data) : whole)); // what it says beyond PCM is kept
    }
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
        CHECK(buffer.GetNumSamples() == test.frames);
        CHECK(audio.GetNumSamples() == test.frames);
        CHECK(buffer.GetModify() == 0);
        CHECK(file.Get() == test.bytes);
        // The data may have moved in the file; a buffer that plays from it has learnt that.
        WAVEHDR headers[2] = {};
        CHECK(buffer.SetPlayParam(0, 99, 0, torv::kPlayFromFile) == (test.frames > 0));
        CHECK(buffer.InitialLoadDataBlock(headers) == 1);
        const std::string data(headers[0].lpData, headers[0].dwBufferLength);
        CHECK(test.bytes.find(Chunk("data", data)) < test.bytes.size());
    }
}

TEST_CASE("quill audio: the kinds of saving") {
    const std::string list = Chunk("LIST", "INFOtext");
    const std::string old = Wave(Fmt(1, 16) + list + Chunk("data", "abcd"));
    const std::string edited = Wave(Fmt(1, 16) + list + Chunk("data", "abcdef"));
    const std::string bare = Wave(Fmt(1, 16) + Chunk("data", "abcdef"));
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
        int modified;
        DWORD frames;
        size_t chunks;
        std::string inFirst, inSecond;
    } cases[] = {{&CxQuillAudio::SaveCopy, second, first, 1, 2, 3, old, edited},
                 {&CxQuillAudio::SaveAs, second, second, 0, 3, 3, old, edited},
                 {&CxQuillAudio::SaveNew, first, first, 0, 3, 2, bare, edited}};
    for (const auto& test : cases) {
        CAPTURE(&test - cases);
        CHECK((audio.*test.save)(test.to.Text(), &buffer) == 1);
        CHECK(audio.GetFilePath() == test.standsFor.Text());
        CHECK(buffer.GetFilePath() == test.standsFor.Text());
        CHECK(buffer.GetModify() == test.modified);
        CHECK(audio.GetNumSamples() == test.frames);
        CHECK(audio.GetChunkList().size() == test.chunks);
        CHECK(first.Get() == test.inFirst);
        CHECK(second.Get() == test.inSecond);
    }
}

TEST_CASE("quill audio: a save that fails leaves the old file and no other") {
    const std::string old = Wave(Fmt(1, 8) + Chunk("data", "abcd") + Chunk("LIST", "INFO" + Random(6000, 1)));
    const Scratch file(old);
    const Scratch target("stays");
    Loaded loaded(file);
    auto& [audio, buffer] = loaded;
    buffer.AddSample("e", 1);
    const auto fails = [&](int result) {
        CHECK(result == 0);
        CHECK(loaded.audio.GetFilePath() == file.Text());
        CHECK(loaded.buffer.GetModify() == 1);
        CHECK(Content(loaded.buffer) == "abcde");
        CHECK(target.Get() == "stays");
        CHECK(target.IsAlone());
        CHECK(file.IsAlone());
    };
    fails(audio.SaveAs(target.Text(), nullptr));
    fails(audio.SaveAs(nullptr, &buffer));
    fails(audio.SaveAs("torv_no_such_folder/x.wav", &buffer));
    CHECK(audio.GetError(1) == CFileException::badPath);
    fails(audio.SaveAs(CString(target.Parent().string()), &buffer)); // a folder
    CHECK(audio.GetError(1) == CFileException::accessDenied);

    SUBCASE("a kept chunk is cut off in the middle") { file.Put(old.substr(0, old.size() - 1000)); }
    SUBCASE("another program wrote something else where a kept chunk was") {
        file.Put(Wave(Fmt(1, 8) + Chunk("LIST", "INFO" + Random(6000, 1)) + Chunk("data", "abcd")));
    }
    SUBCASE("the file is gone") { CHECK(std::filesystem::remove(file.Text().GetStdString())); }
    const std::string now = file.Exists() ? file.Get() : "";
    fails(audio.SaveAs(target.Text(), &buffer));
    fails(audio.Save(&buffer));
    CHECK((file.Exists() ? file.Get() : "") == now);
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
        CWaveBuffer buffer;
        const int loads = audio.Load(file.Text());
        const int reads = audio.ReadWave(&buffer, 0, 1);
        CHECK(reads <= loads);
        CHECK(audio.GetError(0) == 0);
        CHECK(audio.GetNumSamples() <= bytes.size());
        CHECK(buffer.GetSize() <= bytes.size());
        if (!reads)
            return loads;
        CHECK(audio.SaveCopy(copy.Text(), &buffer) == 1);
        Loaded again(copy);
        CHECK(Content(again.buffer) == Content(buffer));
        return loads;
    };
    const std::string good =
        Wave(Chunk("bext", "odd", true) + Fmt(1, 16) + Chunk("LIST", "INFOtext") + Chunk("data", "12345678"));
    CHECK(survives(good) == 1);
    CHECK(survives(good + "behind") == 1);
    for (size_t size = 1; size < good.size(); ++size) {
        CAPTURE(size);
        CHECK(survives(good.substr(0, size)) == 0);
        std::string flipped = good; // each byte turned one of three ways
        flipped[size - 1] = static_cast<char>(good[size - 1] ^ std::array{0x01, 0x80, 0xFF}[size % 3]);
        survives(flipped);
    }

    const std::string front = "WAVE" + Fmt(1, 8);
    for (const DWORD lie : {13u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFF0u, 0xFFFFFFFFu}) {
        CAPTURE(lie);
        CHECK(survives("RIFF" + Le(lie) + front + Chunk("data", "123456789012")) == (lie == 13));
        // Data that pass the end of their file are no data.
        CHECK(survives(Wave(Fmt(1, 8) + "data" + Le(lie) + "123456789012")) == 1);
        CxQuillAudio audio;
        CWaveBuffer buffer;
        CHECK(audio.Load(file.Text()) == 1);
        CHECK(audio.ReadProperty(&buffer) == 0);
        CHECK(audio.GetNumSamples() == 0);
    }
    CHECK(survives(Wave(Fmt(2, 32, 0xFFFFFFFF) + Chunk("data", "12345678"))) == 1); // a second of 32 GiB
    CHECK(survives(Wave(Fmt(1, 8) + Chunk("data", "12") + std::string(9999, '\0'))) == 1);
    std::string many = Fmt(1, 8);
    for (int i = 1; i < 4096; ++i)
        many += Chunk("junk", "");
    CHECK(survives(Wave(many)) == 1);
    CHECK(survives(Wave(many + Chunk("data", ""))) == 0);
    CHECK(survives(Chunk("junk", "") + good) == 0);

    CxQuillAudio audio; // a failed load changes nothing
    file.Put(good);
    CHECK(audio.Load(file.Text()) == 1);
    copy.Put("RIFF");
    CHECK(audio.Load(copy.Text()) == 0);
    CHECK(audio.Load(nullptr) == 0);
    CHECK(audio.GetFilePath() == file.Text());
    CWaveBuffer buffer;
    CHECK(audio.ReadWave(nullptr, 0, 0) == 0);
    file.Put(good.substr(0, good.size() - 1)); // shorter since it was loaded
    CHECK(audio.ReadWave(&buffer, 0, 0) == 0);
    CHECK(buffer.GetSize() == 0);
    CHECK(buffer.IsLoaded() == 0);
}

TEST_CASE("quill audio: another extension") {
    struct {
        const char *path, *ext, *swapped;
    } const cases[] = {{"song.wav", ".aif", "song.aif"},
                       {"a.b/song", ".wav", "a.b/song.wav"},
                       {"a.b\\song.one.two", "wav", "a.b\\song.one.wav"},
                       {"song", nullptr, "song"},
                       {"", "wav", ".wav"},
                       {nullptr, "wav", ".wav"}};
    for (const auto& test : cases)
        CHECK(CxQuillAudio::SwapFileExt(test.path, test.ext) == test.swapped);
}

TEST_CASE("quill audio: a mix by hand") {
    const Scratch file;
    const auto value = [](int left, int right) {
        return Le(static_cast<ULONGLONG>(left), 2) + Le(static_cast<ULONGLONG>(right), 2);
    };
    Held mono(1, 16, Le(1000, 2) + Le(2001, 2) + Le(0xFFFF - 2, 2)); // 1000, 2001, -3
    Held stereo(2, 16, value(30000, -30000));
    Held low(1, 8, "\xC0\x40\x80\x7F\xFF");                         // 0.5, -0.5, 0, -1/128, 127/128
    Held wide(1, 24, Le(0x800000, 3) + Le(1, 3) + Le(0x123456, 3)); // -1, 2^-23
    const float half = -6.0206F;                                    // a gain of 0.5, to seven digits
    struct {
        std::vector<__tagMixDownTrack> tracks;
        std::string data;
        DWORD bits;
    } const cases[] = {
        {{{0, 0, 0, 0, &mono}}, value(1000, 1000) + value(2001, 2001) + value(-3, -3), 16},
        {{{1, 2, 0, 0, &mono}}, value(2001, 2001), 16},
        {{{2, 99, half, 0, &mono}}, value(-1, -1), 16}, // -1.5, toward zero
        {{{2, 1, 0, 0, &mono}}, "", 16},
        {{{0, 1, 0, -1, &mono}}, value(2000, 0), 16}, // the side it is panned to is doubled
        {{{0, 1, 0, -7, &mono}}, value(1000, 1000), 16},
        {{{0, 1, 0, NAN, &mono}, {1, 2, NAN, 0, &mono}}, value(3001, 3001), 16},
        {{{0, 0, 20, 0, &stereo}}, value(32767, -32768), 16}, // stays at the ends
        {{{0, 2, 0, 0, &mono}, {0, 0, 0, 0, &stereo}}, value(31000, -29000) + value(2001, 2001), 16},
        {{{0, 0, 0, 0, &low}},
         value(16384, 16384) + value(-16384, -16384) + value(0, 0) + value(-256, -256) + value(32512, 32512),
         16},
        {{{0, 0, 0, 0, &wide}, {0, 2, 0, 0, &low}}, // 0.5 - 1, 2^-23 - 0.5
         Le(0xC00000, 3) + Le(0xC00000, 3) + Le(0xC00001, 3) + Le(0xC00001, 3) + Le(0x123456, 3) + Le(0x123456, 3),
         24}};
    for (auto test : cases) {
        CAPTURE(&test - cases);
        CxQuillAudio audio;
        mono.MoveTo(1);
        CHECK(audio.AudioMixDown(file.Text(), test.tracks.data(), static_cast<int>(test.tracks.size())) == 1);
        CHECK(file.Get() == Wave(Fmt(2, test.bits) + Chunk("data", test.data)));
        CHECK(mono.GetSamplePosition() == 1);
    }

    file.Put("stays");
    Held slow(1, 16, "ab", 22050);
    Held three(3, 16, "abcdef");
    Held vast(1, 64, "abcdefgh");
    CWaveBuffer missing;
    missing.SetRiffInfo("torv_no_such_file.wav", 44, 100);
    missing.SetWaveInfo(1, 16, 44100);
    CxQuillAudio audio;
    __tagMixDownTrack tracks[2] = {{0, 0, 0, 0, &mono}, {}};
    for (CWaveBuffer* bad : {static_cast<CWaveBuffer*>(&slow), static_cast<CWaveBuffer*>(&three),
                             static_cast<CWaveBuffer*>(&vast), &missing, static_cast<CWaveBuffer*>(nullptr)}) {
        tracks[1].buffer = bad;
        CHECK(audio.AudioMixDown(file.Text(), tracks, 2) == 0);
    }
    CHECK(audio.GetError(1) == CFileException::fileNotFound);
    CHECK(audio.AudioMixDown(file.Text(), tracks, 0) == 0);
    CHECK(audio.AudioMixDown(file.Text(), nullptr, 1) == 0);
    CHECK(audio.AudioMixDown(nullptr, tracks, 1) == 0);
    CHECK(file.Get() == "stays");
}

TEST_CASE("quill audio: a mix of many blocks is the sum, and may replace a file that it is made of") {
    const Scratch file;
    std::string once, twice; // more than two of the blocks that mixing uses
    for (ULONGLONG i = 0; i < 40000; ++i) {
        once += Le(i % 5000, 2);
        twice += Le(i % 5000 * 2, 2) + Le(i % 5000 * 2, 2);
    }
    Held memory(1, 16, once);
    CxQuillAudio audio;
    CWaveBuffer place;
    REQUIRE(audio.SaveNew(file.Text(), &memory) == 1);
    REQUIRE(audio.ReadProperty(&place) == 1);
    __tagMixDownTrack tracks[] = {{0, 0, 0, 0, &memory}, {0, 0, 0, 0, &place}};
    CHECK(audio.AudioMixDown(file.Text(), tracks, 2) == 1);
    CHECK((file.Get() == Wave(Fmt(2, 16) + Chunk("data", twice)))); // too long to be shown
}

TEST_CASE("quill audio: without memory a load, a save and a mix answer 0, and nothing has changed") {
    const std::string list = Chunk("LIST", "INFOtext");
    FailEachAllocation([&](AllocationFailure& failure) {
        const Scratch file(Wave(Fmt(1, 16) + list + Chunk("data", "abcd")));
        const Scratch target("old");
        const CString path = target.Text();
        Loaded loaded(file);
        auto& [audio, buffer] = loaded;
        buffer.AddSample("ef", 1);
        const int saved = failure.During([&] { return audio.SaveAs(path, &buffer); });
        CHECK((saved || failure.HasHappened())); // sorting does with less memory
        CHECK(target.Get() == (saved ? Wave(Fmt(1, 16) + list + Chunk("data", "abcdef")) : "old"));
        CHECK(target.IsAlone());
        for (const CString& name : {audio.GetFilePath(), buffer.GetFilePath()})
            CHECK(name == (saved ? target : file).Text());
        CHECK(buffer.GetModify() == !saved);
    });
    const Scratch file(Wave(Fmt(1, 16) + list + Chunk("data", "abcd")));
    const CString path = file.Text();
    FailEachAllocation([&](AllocationFailure& failure) {
        CxQuillAudio audio;
        CWaveBuffer buffer;
        const int read = failure.During([&] { return audio.Load(path) && audio.ReadWave(&buffer, 0, 0); });
        CHECK(read != failure.HasHappened());
        CHECK(Content(buffer) == (read ? "abcd" : ""));
        CHECK(audio.GetFilePath().IsEmpty() == audio.GetChunkList().empty());
    });
    FailEachAllocation([&](AllocationFailure& failure) {
        const Scratch target("old");
        const CString mixed = target.Text();
        CxQuillAudio audio;
        Held buffer(1, 16, "abcd");
        __tagMixDownTrack track{0, 0, 0, 0, &buffer};
        const int isMixed = failure.During([&] { return audio.AudioMixDown(mixed, &track, 1); });
        CHECK((isMixed || failure.HasHappened()));
        CHECK(target.Get() == (isMixed ? Wave(Fmt(2, 16) + Chunk("data", "ababcdcd")) : "old"));
        CHECK(target.IsAlone());
    });
}
