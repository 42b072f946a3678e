#include <torv/songs/casting.h>
#include <torv/songs/engine_stream.h>
#include <torv/songs/read_song.h>
#include <torv/songs/synthesis.h>
#include <torv/torv.h>

#include <cstdio>

using namespace torv::songs;

/// What the pages call a score: a song of the examples, ready to be sung.
int main() {
    const MessageCatcher messages;
    Databases databases(messages);
    const Song song = ReadSongFile("twinkle.mid");
    PartPlan plan;
    plan.line = MakeVoiceLine(song.parts.front());
    plan.voices = {{0, CastVoice(song.parts.front(), torv::kEnglish, databases)}};
    const ScoreOptions options;
    Score score = BuildScore(song, {plan}, options, databases);
    AddPhonemes(score, messages);
    [[maybe_unused]] CSequenceObject* const track = score.parts.front().track;
    { BLOCK }
    return 0;
}
