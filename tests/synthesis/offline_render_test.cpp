#include "audio/wave_test_files.h"
#include "synthesis/fake_engine_library.h"
#include "torv/synthesis/rt_synthesis.h"

#include <doctest/doctest.h>

#include <algorithm>

namespace {

using Samples = std::vector<short>;

struct Session {
    Session() : path("torv_render.wav"), file(path.Text()) {
        synthesis.SetEngineLibrary(FakeEngine::kName);
        synthesis.SetMasterOutputChannels(1);
        REQUIRE(synthesis.OpenSynthesizer() == 1);
        REQUIRE(stream.Create(1, 0, 0) == 1);
        previousBox = torv::SetMessageBoxHandler([this](HWND, const char*, const char*, UINT) { return ++boxes; });
    }
    ~Session() { torv::SetMessageBoxHandler(previousBox); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Add(LONG time, BYTE status, BYTE note, BYTE velocity) {
        const BYTE bytes[]{status, note, velocity};
        REQUIRE(stream.AddEvent(1, bytes, 3, time) == 1);
    }
    int Render(DWORD rate = 44100) { return synthesis.DoSynthesis(&stream, &file, rate); }
    Samples Rendered() {
        Samples samples;
        DWORD left = 0;
        DWORD right = 0;
        file.SeekSample(0, 0);
        while (file.ReadSample(left, right)) {
            CHECK(left == right);
            samples.push_back(static_cast<short>(left));
        }
        return samples;
    }

    FakeEngine engine;
    ScratchPath path;
    CWaveFile file;
    CRtSynthesis synthesis;
    CQuillMidiBuffer stream;
    int boxes = 0;
    torv::MessageBoxHandler previousBox;
};

} // namespace

TEST_CASE("offline: a note sounds from its very sample to its release's end, and one silent step closes") {
    Session session;
    session.Add(10, 0x90, 60, 100); // sample 441
    session.Add(20, 0x80, 60, 0);   // sample 882, and 512 of release
    session.stream.SetLast(1, 20);
    SUBCASE("mono") {}
    SUBCASE("stereo") { session.synthesis.SetMasterOutputChannels(2); }
    REQUIRE(session.Render() == 1);
    const Samples samples = session.Rendered();
    REQUIRE(samples.size() == 1792); // 882 + 512 = 1394 ends in the sixth step of 256; the seventh is silent
    Samples expected(1792, 0);
    std::fill(expected.begin() + 441, expected.begin() + 882, short{10000});
    std::fill(expected.begin() + 882, expected.begin() + 1394, short{7});
    CHECK(samples == expected);
    CHECK(session.engine.Log().starts == 1);
    CHECK(session.engine.Log().stops == 1);
    CHECK(session.engine.Log().live == 0);
}

TEST_CASE("offline: rendering goes on to the stream's last time, and a second at most beyond it") {
    Session session;
    session.Add(0, 0x90, 60, 0);
    SUBCASE("silent to the end") {
        session.stream.SetLast(1, 100);
        REQUIRE(session.Render() == 1);
        CHECK(session.Rendered() == Samples(4608, 0)); // 4410 samples are 18 steps
    }
    SUBCASE("an engine that is never silent") {
        session.synthesis.SetEngineOption("endless");
        REQUIRE(session.Render() == 1);
        CHECK(session.Rendered() == Samples(44032, 5)); // 172 steps
    }
    SUBCASE("an engine that answers no samples, at another rate") {
        session.synthesis.SetEngineOption("none");
        session.stream.SetLast(1, 100);
        REQUIRE(session.Render(48000) == 1);
        CHECK(session.Rendered() == Samples(5015, 0)); // 4608 x 48000 / 44100 = 5015.5
        WAVEFORMATEX format;
        session.file.GetWaveFormat(format);
        CHECK(+format.nSamplesPerSec == 48000);
        CHECK(session.engine.Log().setting.sampleRate == 48000);
    }
    SUBCASE("an engine that claims more than fits") {
        session.synthesis.SetEngineOption("flood");
        session.stream.SetLast(1, 10);
        REQUIRE(session.Render() == 1);
        CHECK(session.Rendered() == Samples(512, 0)); // a frame a step
    }
}

TEST_CASE("offline: an empty stream makes an empty file") {
    Session session;
    REQUIRE(session.Render() == 1);
    CHECK(session.Rendered().empty());
    CHECK(session.engine.Log().live == 0);
}

TEST_CASE("offline: the static setting always says 256 and carries the option") {
    Session session;
    session.synthesis.SetEngineOption("voice=A");
    REQUIRE(session.Render(96000) == 1);
    const FakeLog& log = session.engine.Log();
    CHECK(log.setting.sampleRate == 96000);
    CHECK(log.setting.frameSize == 256);
    CHECK(log.setting.one == 1);
    CHECK(log.setting.reserved == 0);
    CHECK(std::string(log.option) == "voice=A");
}

TEST_CASE("offline: what goes wrong gives 0, quietly, and leaves no instance") {
    Session session;
    session.Add(0, 0x90, 60, 100);
    session.stream.SetLast(1, 100);
    SUBCASE("the engine fails in a step") {
        session.synthesis.SetEngineOption("error 3");
        CHECK(session.Render() == 0);
        CHECK(session.engine.Log().steps == 4);
        CHECK(session.engine.Log().stops == 1);
    }
    SUBCASE("the engine refuses its setting") {
        session.synthesis.SetEngineOption("refuse");
        CHECK(session.Render() == 0);
        CHECK(session.synthesis.OpenSynthesizer() == 0);
        CHECK(session.engine.Log().starts == 0);
    }
    SUBCASE("the file has data of another format") {
        session.file.SetWaveFormat(Format(1, 8));
        session.file.AppendSample(1);
        CHECK(session.Render() == 0);
        CHECK(session.file.GetTotalSamples() == 1);
    }
    SUBCASE("the file is closed") {
        session.file.Close();
        CHECK(session.Render() == 0);
    }
    SUBCASE("nothing to render, nothing to render into, no rate, no library") {
        CHECK(session.synthesis.DoSynthesis(nullptr) == 0);
        CHECK(session.synthesis.DoSynthesis(nullptr, &session.file, 44100) == 0);
        CHECK(session.synthesis.DoSynthesis(&session.stream, nullptr, 44100) == 0);
        CHECK(session.Render(0) == 0);
        CHECK(session.synthesis.CloseSynthesizer() == 0);
        CHECK(session.Render() == 0);
        CHECK(session.synthesis.CreateRVE() == -2);
    }
    SUBCASE("the listener cancels") {
        int asked = 0;
        session.synthesis.SetProgressHandler([&asked](DWORD rendered, DWORD total) {
            CHECK(rendered == 92); // 16 steps of 256 samples
            CHECK(total == 100);
            return ++asked < 1;
        });
        CHECK(session.Render() == 0);
        CHECK(asked == 1);
    }
    CHECK(session.engine.Log().live == 0);
    CHECK(session.boxes == 0);
}

TEST_CASE("offline: a listener hears of the end") {
    Session session;
    session.stream.SetLast(1, 50);
    session.Add(0, 0x90, 60, 0);
    std::vector<DWORD> heard;
    session.synthesis.SetProgressHandler([&heard](DWORD rendered, DWORD total) {
        heard.push_back(rendered);
        return total == 50;
    });
    CHECK(session.Render() == 1);
    CHECK(heard == std::vector<DWORD>{50});
}
