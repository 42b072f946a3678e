#include "allocation_failure.h"
#include "synthesis/play_fixture.h"

#include <optional>

TEST_CASE("memory: where it is refused a call answers 0 and the next one succeeds") {
    Play play;
    play.AddNote(0, 0, 10, 40);
    const Scratch path;
    std::optional<CWaveFile> file;
    struct Row {
        std::string name;
        std::function<void(Driver&)> before;
        std::function<int(Driver&)> call;
    };
    const auto nothing = [](Driver&) {};
    const auto open = [&](Driver& driver) {
        driver.SetMasterOutputChannels(1);
        driver.OpenSynthesizer();
        driver.RTS_SetSynthesisParam(1, 1, 0, 44100, 100, 1);
        driver.RTS_SetPlayParam(0, 10, 0, 0);
        driver.SetPlayParameters(CString(play.device->Name(), MAXPNAMELEN - 1), nullptr, 0, 0, 44100, 0);
    };
    const auto create = [&](Driver& driver) {
        open(driver);
        driver.RTS_SetQuillMidiBuffer(0, &play.streams[0]);
        driver.RTS_CreateRVE();
    };
    const Row rows[] = {
        {"open", nothing, [](Driver& driver) { return driver.OpenSynthesizer(); }},
        {"stream", open, [&](Driver& driver) { return driver.RTS_SetQuillMidiBuffer(0, &play.streams[0]); }},
        {"create", open, [](Driver& driver) { return driver.RTS_CreateRVE(); }},
        {"begin", open, [](Driver& driver) { return driver.RTS_DoSynthesis(); }},
        {"play", create,
         [](Driver& driver) {
             const int isBegun = driver.RTS_StartSynthesis() && driver.RTS_Play();
             driver.RTS_StopSynthesis();
             return isBegun;
         }},
        {"threads", create, // which have no other answer
         [](Driver& driver) {
             driver.m_state.BeginSynthesis();
             driver.m_state.AskToStop();
             driver.RTS_SynthesisThread_2();
             driver.RTS_WaveOutThread_2();
             return !driver.HasSynthesisFailed();
         }},
        {"chase", create, [](Driver& driver) { return driver.RTS_ChaseEvent(0, 1000) > 0; }},
        {"offline",
         [&](Driver& driver) {
             open(driver);
             file.emplace(path.Text());
         },
         [&](Driver& driver) { return driver.DoSynthesis(&play.streams[0], &*file, 44100); }},
        {"data", create,
         [](Driver& driver) {
             DWORD bytes = 0;
             BYTE* buffer = nullptr;
             DWORD blocks = 0;
             return driver.RTS_GetWaveOutSilentData(bytes, buffer, 3, 1, blocks);
         }},
    };
    const BYTE bend[]{0xB0, 99, 0x67, 0xB0, 98, 0, 0xB0, 6, 1};
    play.streams[0].AddEvent(1, bend, sizeof bend, 5); // to be chased
    for (const Row& row : rows) {
        CAPTURE(row.name);
        FailEachAllocation([&](AllocationFailure& failure) {
            Driver driver;
            row.before(driver);
            const int answer = failure.During([&] { return row.call(driver); });
            CHECK(answer == !failure.HasHappened());
            driver.RTS_StopSynthesis();
            row.before(driver);
            CHECK(row.call(driver) == 1);
        });
    }
}
