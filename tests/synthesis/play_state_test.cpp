#include "torv/synthesis/play_state.h"

#include <doctest/doctest.h>

using torv::PlayState;

TEST_CASE("state: where a change of region, loop or position leads") {
    struct Row {
        DWORD start;
        DWORD end;
        DWORD asked;
        DWORD changed; ///< by a new region, or a new loop flag
        DWORD sought;
        DWORD looped; ///< where a loop that was begun there is heard from
    };
    const Row rows[] = {{1000, 2000, 1500, 1500, 1500, 1500}, {1000, 2000, 500, 500, 500, 500},
                        {1000, 2000, 2000, 1000, 1000, 1000}, {1000, 2000, 9000, 1000, 1000, 1000},
                        {1000, 1000, 5000, 1000, 1000, 5000}, {1000, 1000, 400, 1000, 400, 400}, // an empty region
                        {2000, 1000, 1500, 2000, 2000, 1500}};                                   // and one turned round
    for (const auto& row : rows) {
        CAPTURE(row.start);
        CAPTURE(row.end);
        CAPTURE(row.asked);
        PlayState state;
        state.ChangeRegion(row.start, row.end, row.asked);
        CHECK(state.Position() == row.changed);
        state.Place(row.start, row.end, 7, 0);
        state.ChangeLoop(1, row.asked);
        CHECK(state.Position() == row.changed);
        CHECK(state.IsLooping());
        state.Seek(row.asked);
        CHECK(state.Position() == row.sought);
        state.Place(row.start, row.end, row.asked, 0);
        CHECK(state.FirstPassBegin() == row.asked);
        state.Place(row.start, row.end, row.asked, 1);
        CHECK(state.Position() == row.asked);
        CHECK(state.FirstPassBegin() == row.looped);
        CHECK(state.RegionEnd() == (row.start == row.end ? 0x7FFFFFFF : row.end));
    }
}

TEST_CASE("state: a region ends the play with the song, or goes on behind it") {
    PlayState state; // no region
    state.SetSongEnd(500);
    CHECK(state.EndsWithSong());
    state.Place(0, 500, 0, 0);
    CHECK(state.EndsWithSong());
    state.Place(0, 501, 0, 0);
    CHECK_FALSE(state.EndsWithSong());
}

TEST_CASE("state: the rings belong to the synthesis until it has begun anew as often as it was asked") {
    PlayState state;
    CHECK(state.IsStopAsked());
    CHECK(state.HasSynthesisStopped());
    state.Fail();
    state.BeginSynthesis();
    CHECK_FALSE(state.HasFailed());
    CHECK_FALSE(state.IsInterrupted());
    CHECK_FALSE(state.HasSynthesisStopped());
    state.FinishSynthesis();
    CHECK(state.HasSynthesisStopped());
    state.AskForRestart();
    const DWORD asked = state.RestartsAsked();
    state.AskForRestart();
    CHECK_FALSE(state.HasSynthesisStopped()); // more is on its way
    state.RestartsDone(asked);
    CHECK(state.IsInterrupted());
    state.RestartsDone(asked + 1);
    CHECK_FALSE(state.IsInterrupted());
    CHECK(state.IsSynthesizing());
    state.AskForRestart();
    state.EndSynthesis(); // nobody obeys it any more
    CHECK(state.HasSynthesisStopped());
    state.Fail();
    CHECK(state.HasFailed());
    CHECK(state.IsStopAsked());
}
