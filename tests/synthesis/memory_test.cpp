#include "allocation_failure.h"
#include "synthesis/play_fixture.h"

TEST_CASE("memory: where it is refused a call answers 0 and the next one succeeds") {
    Play play;
    play.AddNote(0, 0, 10, 40);
    const BYTE bend[]{0xB0, 99, 0x67, 0xB0, 98, 0, 0xB0, 6, 1};
    play.streams[0].AddEvent(1, bend, sizeof bend, 5); // to be chased
    const Scratch path;
    using Call = std::function<int(Driver&, CWaveFile&)>;
    const Call steps[] = {[](Driver& driver, CWaveFile&) { return driver.OpenSynthesizer(); },
                          [&](Driver& driver, CWaveFile&) {
                              return driver.RTS_SetQuillMidiBuffer(0, &play.streams[0]) && driver.RTS_CreateRVE();
                          }};
    const struct {
        const char* name;
        int steps; ///< before
        Call call;
    } rows[] = {
        {"open", 0, steps[0]},
        {"make", 1, steps[1]},
        {"begin", 1, [](Driver& driver, CWaveFile&) { return driver.RTS_DoSynthesis(); }},
        {"play", 2,
         [](Driver& driver, CWaveFile&) {
             const int isBegun = driver.RTS_StartSynthesis() && driver.RTS_Play();
             driver.RTS_StopSynthesis();
             return isBegun;
         }},
        {"threads", 2, // which have no other answer
         [](Driver& driver, CWaveFile&) {
             driver.m_state.BeginSynthesis();
             driver.m_state.AskToStop();
             driver.RTS_SynthesisThread_2();
             driver.RTS_WaveOutThread_2();
             return !driver.HasSynthesisFailed();
         }},
        {"chase", 2, [](Driver& driver, CWaveFile&) { return driver.RTS_ChaseEvent(0, 1000) > 0; }},
        {"offline", 1,
         [&](Driver& driver, CWaveFile& file) { return driver.DoSynthesis(&play.streams[0], &file, 44100); }},
        {"data", 2,
         [](Driver& driver, CWaveFile&) {
             DWORD bytes = 0;
             BYTE* buffer = nullptr;
             DWORD blocks = 0;
             return driver.RTS_GetWaveOutSilentData(bytes, buffer, 3, 1, blocks);
         }},
    };
    for (const auto& row : rows) {
        CAPTURE(row.name);
        FailEachAllocation([&](AllocationFailure& failure) {
            CWaveFile file(path.Text());
            Driver driver;
            driver.SetMasterOutputChannels(1);
            driver.RTS_SetSynthesisParam(1, 1, 0, 44100, 100, 1);
            driver.RTS_SetPlayParam(0, 10, 0, 0);
            driver.SetPlayParameters(play.DeviceName(), nullptr, 0, 0, 44100, 0);
            const auto prepare = [&] {
                for (int step = 0; step < row.steps; ++step)
                    steps[step](driver, file);
            };
            prepare();
            const int answer = failure.During([&] { return row.call(driver, file); });
            CHECK(answer == !failure.HasHappened());
            driver.RTS_StopSynthesis();
            prepare();
            CHECK(row.call(driver, file) == 1);
        });
    }
}
