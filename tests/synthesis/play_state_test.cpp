#include "torv/synthesis/play_state.h"

#include "values.h"

#include <doctest/doctest.h>

using torv::PlayState;

TEST_CASE("state: where a change of region, loop or position leads, and a region's end") {
    const struct {
        DWORD start, end, asked;
        DWORD changed; ///< by a new region, or a new loop flag
        DWORD sought;
        DWORD looped; ///< where a loop that was begun there is heard from
        bool endsWithSong;
    } rows[] = {{1000, 2000, 1500, 1500, 1500, 1500, true}, {1000, 2001, 500, 500, 500, 500, false},
                {1000, 2000, 2000, 1000, 1000, 1000, true}, {1000, 2000, 9000, 1000, 1000, 1000, true},
                {1000, 1000, 5000, 1000, 1000, 5000, true}, {1000, 1000, 400, 1000, 400, 400, true}, // an empty region
                {2000, 1000, 1500, 2000, 2000, 1500, true}}; // and one turned round
    for (const auto& row : rows) {
        CAPTURE(&row - rows);
        PlayState state;
        state.SetSongEnd(2000);
        state.ChangeRegion(row.start, row.end, row.asked);
        CHECK(state.Position() == row.changed);
        state.Place(row.start, row.end, 7, 0);
        state.ChangeLoop(1, row.asked);
        CHECK(Values(state.Position(), state.IsLooping()) == Values(row.changed, 1));
        state.Seek(row.asked);
        CHECK(state.Position() == row.sought);
        state.Place(row.start, row.end, row.asked, 0);
        CHECK(state.FirstPassBegin() == row.asked);
        state.Place(row.start, row.end, row.asked, 1);
        CHECK(Values(state.Position(), state.FirstPassBegin()) == Values(row.asked, row.looped));
        CHECK(state.RegionEnd() == (row.start == row.end ? 0x7FFFFFFF : row.end));
        CHECK(state.EndsWithSong() == row.endsWithSong);
    }
}

TEST_CASE("state: the rings belong to the synthesis until it has begun anew as often as it was asked") {
    PlayState state;
    CHECK(Values(state.IsStopAsked(), state.HasSynthesisStopped()) == "1 1");
    state.Fail();
    state.BeginSynthesis();
    CHECK(Values(state.HasFailed(), state.IsInterrupted(), state.HasSynthesisStopped()) == "0 0 0");
    state.FinishSynthesis();
    state.AskForRestart();
    const DWORD asked = state.RestartsAsked();
    state.AskForRestart();
    for (const DWORD done : {asked - 1, asked, asked + 1}) {
        CHECK(state.HasSynthesisStopped() == false); // more is on its way
        state.RestartsDone(done);
        CHECK(state.IsInterrupted() == (done <= asked));
    }
    state.AskForRestart();
    state.EndSynthesis(); // nobody obeys it any more
    CHECK(Values(state.HasSynthesisStopped(), state.IsSynthesizing()) == "1 0");
}
