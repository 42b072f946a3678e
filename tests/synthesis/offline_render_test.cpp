#include "audio/wave_test_files.h"
#include "synthesis/driver.h"
#include "values.h"

#include <algorithm>

namespace {

struct Session {
    Session() : file(path.Text()) {
        driver.SetMasterOutputChannels(1);
        REQUIRE(driver.OpenSynthesizer() == 1);
        REQUIRE(stream.Create(1, 0, 0) == 1);
        previousBox = torv::SetMessageBoxHandler([this](HWND, const char*, const char*, UINT) { return ++boxes; });
    }
    ~Session() {
        torv::SetMessageBoxHandler(previousBox);
        CHECK(boxes == 0); // whatever goes wrong is quiet
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Add(LONG time, BYTE status, BYTE velocity) {
        const BYTE bytes[]{status, 60, velocity};
        REQUIRE(stream.AddEvent(1, bytes, 3, time) == 1);
        stream.SetLast(1, static_cast<DWORD>(time));
    }
    int Render(DWORD rate = 44100) { return driver.DoSynthesis(&stream, &file, rate); }

    FakeEngine engine;
    const Scratch path{MonoFile("")}; // what is opened, not made, can be read meanwhile
    CWaveFile file;
    Driver driver;
    CQuillMidiBuffer stream;
    int boxes = 0;
    torv::MessageBoxHandler previousBox;
};

} // namespace

TEST_CASE("offline: a note sounds from its very sample to its release's end, and one silent step closes") {
    for (const WORD channels : {1, 2}) {
        Session session;
        session.driver.SetMasterOutputChannels(channels);
        session.Add(10, 0x90, 100); // sample 441
        session.Add(20, 0x80, 0);   // sample 882, and 512 of release
        REQUIRE(session.Render() == 1);
        Shorts expected(1792u * channels, 0); // 882 + 512 = 1394 ends in the sixth step of 256; the seventh is silent
        std::fill(expected.begin() + 441 * channels, expected.begin() + 882 * channels, short{10000});
        std::fill(expected.begin() + 882 * channels, expected.begin() + 1394 * channels, short{7});
        CHECK(ShortsIn(session.path.Get(), 44) == expected);
        CHECK(session.engine.log->starts == 1);
    }
}

TEST_CASE("offline: how long, with engines that answer what they like") {
    const struct {
        const char* option;
        DWORD lastTime;
        DWORD rate;
        size_t samples;
        short level;
    } rows[] = {{"", 100, 44100, 4608, 0},       // 4410 samples are 18 steps
                {"endless", 0, 44100, 44032, 5}, // a second at most beyond the last time: 172 steps
                {"none", 100, 48000, 5015, 0},   // 4608 x 48000 / 44100 = 5015.5, in silence
                {"flood", 10, 44100, 512, 0}};   // claims more than fits: a frame a step
    for (const auto& row : rows) {
        CAPTURE(row.option);
        Session session;
        session.driver.SetEngineOption(row.option);
        session.Add(0, 0x90, 0);
        session.stream.SetLast(1, row.lastTime);
        REQUIRE(session.Render(row.rate) == 1);
        CHECK(ShortsIn(session.path.Get(), 44) == Shorts(row.samples, row.level));
        CHECK(session.path.Get().substr(12, 24) == Fmt(1, 16, row.rate));
        const RVEStaticSetting& setting = session.engine.log->setting;
        CHECK(Values(setting.sampleRate, setting.frameSize, +setting.one, setting.reserved) ==
              Values(row.rate, 256, 1, 0)); // one frame size at every rate
        CHECK(session.engine.log->option == std::string(row.option));
    }
}

TEST_CASE("offline: what goes wrong gives 0") {
    Session session;
    CHECK(session.Render() == 1); // an empty stream makes an empty file
    CHECK(session.path.Get().size() == 44);
    session.Add(100, 0x90, 100);
    SUBCASE("the engine fails in a step") {
        session.driver.SetEngineOption("error 3");
        CHECK(session.Render() == 0);
        CHECK(session.engine.log->steps == 4);
    }
    SUBCASE("the engine refuses its setting") {
        session.driver.SetEngineOption("refuse");
        CHECK(session.Render() == 0);
        CHECK(session.driver.OpenSynthesizer() == 0);
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
    SUBCASE("the listener cancels, at the end or before it") {
        std::vector<DWORD> heard;
        session.driver.SetProgressHandler([&heard](DWORD rendered, DWORD total) {
            heard.push_back(rendered);
            return rendered < total && heard.size() < 3;
        });
        CHECK(session.Render() == 0);
        CHECK(session.Render() == 0);
        CHECK(heard == std::vector<DWORD>{92, 100, 92}); // 16 steps of 256 samples
    }
    SUBCASE("nothing to render, nothing to render into, no rate, no library") {
        CHECK(session.driver.DoSynthesis(nullptr) == 0);
        CHECK(session.driver.DoSynthesis(nullptr, &session.file, 44100) == 0);
        CHECK(session.driver.DoSynthesis(&session.stream, nullptr, 44100) == 0);
        CHECK(session.Render(0) == 0);
        CHECK(session.driver.CloseSynthesizer() == 0);
        CHECK(session.Render() == 0);
    }
}
