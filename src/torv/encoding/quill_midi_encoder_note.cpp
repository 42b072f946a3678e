// How a note becomes segments, and its segments blocks.
#include "torv/encoding/quill_midi_encoder.h"

#include "torv/icons/icon_catalogue.h"
#include "torv/icons/icon_expression.h"
#include "torv/icons/icon_id.h"
#include "torv/icons/icon_vibrato.h"
#include "torv/lyrics/lyric_element.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/score/csq_event.h"
#include "torv/score/sequence_object.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr DWORD kJoinedToPrevious = 1;
constexpr DWORD kJoinedToNext = 2;
constexpr BYTE kBeginsSound = 1;
constexpr BYTE kEndsSound = 2;
constexpr LONG kNoCode = -1;
constexpr int kVibratoUnits = 127;

// The encoder goes by these numbers. Status 2 is named after releases and 3 after transitions, here 2 fills the
// transition's fields and 3 the release's: the stored articulation names cross in the same way, and files rely on it.
constexpr int kStatusAttack = 1;
constexpr int kStatusTransition = 2;
constexpr int kStatusRelease = 3;

/// The note or vibrato icon under a handle; null when there is none or it is of another kind.
CIconExpression* ExpressionOf(CSequenceObject* track, DWORD handle) {
    return dynamic_cast<CIconExpression*>(track->LookupIconObject(torv::PointerOf(handle)));
}

void Fill(tagQuillMidiOutIcon& to, const CIconExpression& icon) {
    to = {icon.GetExpressionID(), torv::IconIndexOf(icon), static_cast<LONG>(icon.GetLength()), icon.GetDuration()};
}

void Fill(tagQuillMidiOutShape& to, const CIconExpression& icon) {
    Fill(to.icon, icon);
    to.depth = icon.GetDepth();
}

WORD CodeField(LONG code) { return code == kNoCode ? kNoIconCode : static_cast<WORD>(code); }
BYTE ByteField(LONG value) { return torv::SevenBits(value); }

tagQuillMidiSegmentShape SegmentShape(const tagQuillMidiOutShape& shape) {
    return {CodeField(shape.icon.code), ByteField(shape.icon.index), ByteField(shape.depth),
            ByteField(shape.icon.duration), 0};
}

/// A segment follows the one before; all but the last take their element's share. Returns the segment's end.
DWORD SetPlace(const tagQuillMidiOutNoteParam& note, const tagQuillMidiRealtimeInfo& info, DWORD index, float share) {
    tagQuillMidiNoteSegment& segment = note.segments[index];
    segment.startTick = note.position;
    segment.startTime = info.time;
    if (index > 0) {
        const tagQuillMidiNoteSegment& before = note.segments[index - 1];
        segment.startTick = before.startTick + before.lengthTicks;
        segment.startTime = before.startTime + before.durationTime;
    }
    const DWORD noteEnd = note.position + note.length;
    DWORD length = noteEnd > segment.startTick ? noteEnd - segment.startTick : 0;
    if (index + 1 < note.segmentCount)
        length = std::min(length, torv::ShareOf(note.length, share));
    const DWORD end = segment.startTick + length;
    segment.lengthTicks = static_cast<WORD>(length);
    segment.durationTime = static_cast<WORD>(torv::SearchTimePosition(end, info.map, info.index) - segment.startTime);
    return end;
}

/// What happens at a note's ends happens in its first and its last segment.
void SetEnds(const tagQuillMidiOutNoteParam& note, DWORD index) {
    tagQuillMidiNoteSegment& segment = note.segments[index];
    if (index == 0) {
        segment.type |= note.attribute & kJoinedToPrevious ? 0 : kBeginsSound;
        segment.attack = SegmentShape(note.attack);
    }
    if (index + 1 == note.segmentCount) {
        segment.type |= note.attribute & kJoinedToNext ? 0 : kEndsSound;
        segment.release = SegmentShape(note.release);
        segment.transitionCode = CodeField(note.transition.code);
        segment.transitionIndex = ByteField(note.transition.index);
        segment.transitionDuration = ByteField(note.transition.duration);
    }
}

/// What of the note's vibrato lies in the segment, in units of the segment's length.
void SetVibrato(const tagQuillMidiOutNoteParam& note, DWORD end, tagQuillMidiNoteSegment& segment) {
    DWORD from = 0;
    DWORD to = 0;
    if (note.vibratoCode == kNoCode ||
        !CxQuillMidiEncoder::IntersectTime(&from, &to, segment.startTick, end, note.vibratoStart, note.vibratoEnd))
        return;
    const int length = static_cast<int>(end - segment.startTick);
    const auto units = [length](DWORD ticks) {
        return static_cast<BYTE>(torv::MulDiv(static_cast<int>(ticks), kVibratoUnits, length));
    };
    segment.vibratoCode = CodeField(note.vibratoCode);
    segment.vibratoIndex = ByteField(note.vibratoIndex);
    segment.vibratoStart = units(from - segment.startTick);
    segment.vibratoExtent = units(to - from);
    const bool goesOn = note.vibratoEnd > end;
    if (goesOn && segment.type <= kBeginsSound)
        segment.vibratoExtent = 0;
    else if (!goesOn && segment.vibratoExtent == 0)
        segment.vibratoExtent = 1;
}

void FillPhonemes(tagQuillMidiNoteSegment& segment, const CLyricElement& element) {
    std::fill(std::begin(segment.advancements), std::end(segment.advancements), kNoAdvancement);
    int used = 0;
    for (int i = 0; i < element.GetPhonemeCharaCount() && used < kMaxPhonemeCharacters; ++i) {
        const char* const text = element.GetPhonemeChara(i);
        const int length =
            text ? static_cast<int>(strnlen(text, static_cast<size_t>(kMaxPhonemeCharacters - used))) : 0;
        if (length == 0)
            continue;
        std::memcpy(segment.phonemes + used, text, static_cast<size_t>(length));
        segment.advancements[used] = static_cast<BYTE>(element.GetConsonantAdvancement(i));
        used += length;
    }
}

} // namespace

int CxQuillMidiEncoder::WriteCsqAnoteEvent(CCsqEvent* event, tagQuillMidiRealtimeInfo* info) {
    if (!CanWrite(event, info) || info->time < m_dwPresend)
        return 0;
    tagQuillMidiOutNoteParam note;
    if (!CreateQuillNoteStruct(&note, event, info))
        return 0;
    int placed = 1;
    for (DWORD i = 0; i < note.segmentCount; ++i) {
        const tagQuillMidiNoteSegment& segment = note.segments[i];
        placed &=
            Place(torv::NoteSegmentBlock(note, segment), info, static_cast<LONG>(segment.startTime - m_dwPresend));
    }
    if (note.vibrato)
        InsertContinuousVibrato(note.vibratoStart, note.vibrato, info);
    const DWORD end = note.position + note.length;
    m_pBuffer->RaiseLast(end, torv::SearchTimePosition(end, info->map, info->index));
    DeleteQuillNoteStruct(&note, info);
    return placed;
}

int CxQuillMidiEncoder::CreateQuillNoteStruct(tagQuillMidiOutNoteParam* note, CCsqEvent* event,
                                              const tagQuillMidiRealtimeInfo* info) {
    if (!note || !event || !info || !info->map)
        return 0;
    *note = {};
    const tagCsqEventAnote* record = event->GetAnoteEventParam();
    if (!record)
        return 0;
    note->position = event->GetPosition();
    note->length = record->noteLength;
    note->channel = record->header.status & 0x0F;
    note->noteNumber = Transpose(record->noteNumber, m_nTranspose);
    note->dynamics = record->noteDynamics;
    note->attribute = record->noteAttribute & 0xFFFF;
    note->presend = m_dwPresend;
    if (!FillNoteIcons(note, event))
        return 0;
    const DWORD lyricHandle = record->lyricHandle;
    if ((note->attribute & kJoinedToNext) && !FillNextNoteTransition(note, event))
        return 0;

    CLyricObject* lyric = lyricHandle ? event->GetSequence()->LookupLyricObject(torv::PointerOf(lyricHandle)) : nullptr;
    if (!lyric || lyric->GetElementCount() < 1)
        return 0;
    note->segmentCount = static_cast<DWORD>(lyric->GetElementCount());
    note->segments = new (std::nothrow) tagQuillMidiNoteSegment[note->segmentCount]();
    if (!note->segments)
        return Lack();
    for (DWORD i = 0; i < note->segmentCount; ++i)
        SetNoteSegmentParam(note, info, i, lyric->GetElementAt(static_cast<int>(i)));
    return 1;
}

void CxQuillMidiEncoder::DeleteQuillNoteStruct(tagQuillMidiOutNoteParam* note, tagQuillMidiRealtimeInfo* info) {
    if (!note)
        return;
    if (info && note->segmentCount)
        info->lastSegmentTick = note->segments[note->segmentCount - 1].startTick;
    delete[] note->segments;
    *note = {};
}

int CxQuillMidiEncoder::FillNoteIcons(tagQuillMidiOutNoteParam* note, CCsqEvent* event) {
    CSequenceObject* const track = event->GetSequence();
    const tagCsqEventAnote* const record = event->GetAnoteEventParam();
    if (record->noteHeadHandle) {
        CIconExpression* const icon = ExpressionOf(track, record->noteHeadHandle);
        const int status = icon ? torv::StatusFromID(icon->GetIconID()) : 0;
        if (status == kStatusTransition)
            Fill(note->transition, *icon);
        else if (status != kStatusAttack)
            return 0;
        else if (!(note->attribute & kJoinedToPrevious)) // a joined note has no attack
            Fill(note->attack, *icon);
    }
    if (record->noteTailHandle) {
        CIconExpression* const icon = ExpressionOf(track, record->noteTailHandle);
        const int status = icon ? torv::StatusFromID(icon->GetIconID()) : 0;
        if (status == kStatusTransition)
            Fill(note->transition, *icon);
        else if (status == kStatusRelease)
            Fill(note->release, *icon);
        else
            return 0;
    }
    if (record->vibratoHandle) {
        auto* const icon = dynamic_cast<CIconVibrato*>(track->LookupIconObject(torv::PointerOf(record->vibratoHandle)));
        if (!icon)
            return 0;
        note->vibratoCode = icon->GetExpressionID();
        note->vibratoIndex = torv::IconIndexOf(*icon);
        // The offset is signed, ticks are not: a vibrato from before the song starts with it.
        const long long start = static_cast<long long>(note->position) + record->vibratoOffset;
        note->vibratoStart = static_cast<DWORD>(std::clamp<long long>(start, 0, 0x7FFFFFFF));
        note->vibratoEnd = note->vibratoStart + icon->GetLength();
        note->vibrato = icon;
    }
    return 1;
}

// A joined note passes into the next one as that one begins: its attack icon is this note's transition.
int CxQuillMidiEncoder::FillNextNoteTransition(tagQuillMidiOutNoteParam* note, CCsqEvent* event) {
    tagLocateMarker here;
    event->StoreLocation(&here);
    int kind = event->GetNext();
    while (kind != torv::kEventAnote && kind != torv::kEventEnd)
        kind = event->GetNext();
    if (kind == torv::kEventAnote) {
        const DWORD head = event->GetAnoteEventParam()->noteHeadHandle;
        CIconExpression* const icon = head ? ExpressionOf(event->GetSequence(), head) : nullptr;
        if (icon && torv::StatusFromID(icon->GetIconID()) == kStatusAttack)
            Fill(note->transition, *icon);
    }
    event->RestoreLocation(&here, 1);
    return kind == torv::kEventAnote;
}

void CxQuillMidiEncoder::SetNoteSegmentParam(tagQuillMidiOutNoteParam* note, const tagQuillMidiRealtimeInfo* info,
                                             DWORD index, CLyricElement* element) {
    if (!note || !info || !info->map || index >= note->segmentCount || !element)
        return;
    const DWORD end = SetPlace(*note, *info, index, element->GetDeltaRate());
    tagQuillMidiNoteSegment& segment = note->segments[index];
    SetEnds(*note, index);
    SetVibrato(*note, end, segment);
    segment.one = 1;
    FillPhonemes(segment, *element);
}
