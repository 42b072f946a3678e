#pragma once

#include "document.h"

#include <string_view>

/// What a user does to a track, without any drawing. Notes are named by their places in the track; an edit that sorts
/// them anew keeps the selection on the same notes.
namespace editor {

using Selection = std::vector<size_t>; ///< places of notes, ascending

/// Puts a note into its place and returns that; the track is left alone, and the answer is the number of its notes,
/// when it is full.
size_t AddNote(Track& track, Note note);
/// All of them by the same way, and no further than the first of them can go.
void MoveNotes(Track& track, Selection& selection, int64_t ticks, int keys);
/// Their ends; none becomes shorter than `shortest`.
void StretchNotes(Track& track, const Selection& selection, int64_t ticks, uint32_t shortest);
/// Makes two of a note; the second goes on with its vowel and takes the release. False where it has no middle there.
bool CutNote(Track& track, size_t note, uint32_t tick);
/// Leaves nothing selected.
void EraseNotes(Track& track, Selection& selection);

/// The chosen notes with ticks from the first one's, and such notes at a tick, which are then selected.
std::vector<Note> CopyNotes(const Track& track, const Selection& selection);
void PasteNotes(Track& track, Selection& selection, const std::vector<Note>& notes, uint32_t tick);

/// Cuts a line into syllables: behind blanks and behind hyphens, but not within brackets. "-" or "_" alone gives a note
/// that goes on with the vowel before.
std::vector<std::string> SyllablesOf(std::string_view line);
/// Gives a line's syllables to the notes from `first` on, each its own. Returns the first note that got none.
size_t TypeLyrics(Track& track, size_t first, std::string_view line);

void SetIcon(Track& track, const Selection& selection, IconSlot slot, const std::string& name);
/// At a tick there is one at most; an empty name takes it away.
void SetMark(Track& track, uint32_t tick, const std::string& icon);

/// Draws a straight line in steps of kCurveStep ticks, in place of what was there; behind it the curve is as it was.
/// The two may come in either order.
constexpr uint32_t kCurveStep = 30;
void DrawCurve(Curve& curve, CurveKind kind, CurvePoint from, CurvePoint to);
/// From `from` until `to` nothing is drawn any more.
void EraseCurve(Curve& curve, CurveKind kind, uint32_t from, uint32_t to);

} // namespace editor
