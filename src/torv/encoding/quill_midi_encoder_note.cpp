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

void* HandleOf(DWORD handle) { return reinterpret_cast<void*>(static_cast<uintptr_t>(handle)); }

/// The note or vibrato icon under a handle; null when there is none or it is of another kind.
CIconExpression* ExpressionOf(CSequenceObject* track, DWORD handle) {
    return dynamic_cast<CIconExpression*>(track->LookupIconObject(HandleOf(handle)));
}

void FillAttack(tagQuillMidiOutNoteParam* note, CIconExpression* icon) {
    note->attackCode = icon->GetExpressionID();
    note->attackIndex = torv::IconIndexOf(*icon);
    note->attackLength = static_cast<LONG>(icon->GetLength());
    note->attackDuration = icon->GetDuration();
    note->attackDepth = icon->GetDepth();
}

void FillRelease(tagQuillMidiOutNoteParam* note, CIconExpression* icon) {
    note->releaseCode = icon->GetExpressionID();
    note->releaseIndex = torv::IconIndexOf(*icon);
    note->releaseLength = static_cast<LONG>(icon->GetLength());
    note->releaseDuration = icon->GetDuration();
    note->releaseDepth = icon->GetDepth();
}

void FillTransition(tagQuillMidiOutNoteParam* note, CIconExpression* icon) {
    note->transitionCode = icon->GetExpressionID();
    note->transitionIndex = torv::IconIndexOf(*icon);
    note->transitionLength = static_cast<LONG>(icon->GetLength());
    note->transitionDuration = icon->GetDuration();
}

WORD CodeField(LONG code) { return code == kNoCode ? kNoIconCode : static_cast<WORD>(code); }
BYTE ByteField(LONG value) { return torv::SevenBits(value); }

void FillPhonemes(tagQuillMidiNoteSegment& segment, CLyricElement* element) {
    std::fill(std::begin(segment.advancements), std::end(segment.advancements), kNoAdvancement);
    int used = 0;
    for (int i = 0; i < element->GetPhonemeCharaCount() && used < kMaxPhonemeCharacters; ++i) {
        const char* const text = element->GetPhonemeChara(i);
        const int length =
            text ? static_cast<int>(strnlen(text, static_cast<size_t>(kMaxPhonemeCharacters - used))) : 0;
        if (length == 0)
            continue;
        std::memcpy(segment.phonemes + used, text, static_cast<size_t>(length));
        segment.advancements[used] = static_cast<BYTE>(element->GetConsonantAdvancement(i));
        used += length;
    }
}

} // namespace

int CxQuillMidiEncoder::WriteCsqAnoteEvent(CCsqEvent* event, tagQuillMidiRealtimeInfo* info) {
    if (info->time < m_dwPresend)
        return 0;
    tagQuillMidiOutNoteParam note;
    if (!CreateQuillNoteStruct(&note, event, info))
        return 0;
    for (DWORD i = 0; i < note.segmentCount; ++i) {
        const DWORD length = torv::WriteNoteSegmentBlock(m_work.data(), note, note.segments[i]);
        PlaceBlock(static_cast<LONG>(note.segments[i].startTime - m_dwPresend), info, m_work.data(), length);
    }
    if (note.vibrato)
        InsertContinuousVibrato(note.vibratoStart, note.vibrato, info);
    const DWORD end = note.position + note.length;
    m_pBuffer->RaiseLast(end, torv::SearchTimePosition(end, info->map, info->index));
    DeleteQuillNoteStruct(&note, info);
    return 1;
}

int CxQuillMidiEncoder::CreateQuillNoteStruct(tagQuillMidiOutNoteParam* note, CCsqEvent* event,
                                              const tagQuillMidiRealtimeInfo* info) {
    *note = {};
    note->attackCode = note->releaseCode = note->transitionCode = note->vibratoCode = kNoCode;
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

    CLyricObject* lyric = lyricHandle ? event->GetSequence()->LookupLyricObject(HandleOf(lyricHandle)) : nullptr;
    if (!lyric || lyric->GetElementCount() < 1)
        return 0;
    note->segmentCount = static_cast<DWORD>(lyric->GetElementCount());
    note->segments = new (std::nothrow) tagQuillMidiNoteSegment[note->segmentCount]();
    if (!note->segments)
        return 0;
    for (DWORD i = 0; i < note->segmentCount; ++i)
        SetNoteSegmentParam(note, info, i, lyric->GetElementAt(static_cast<int>(i)));
    return 1;
}

void CxQuillMidiEncoder::DeleteQuillNoteStruct(tagQuillMidiOutNoteParam* note, tagQuillMidiRealtimeInfo* info) {
    if (note->segmentCount)
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
            FillTransition(note, icon);
        else if (status != kStatusAttack)
            return 0;
        else if (!(note->attribute & kJoinedToPrevious)) // a joined note has no attack
            FillAttack(note, icon);
    }
    if (record->noteTailHandle) {
        CIconExpression* const icon = ExpressionOf(track, record->noteTailHandle);
        const int status = icon ? torv::StatusFromID(icon->GetIconID()) : 0;
        if (status == kStatusTransition)
            FillTransition(note, icon);
        else if (status == kStatusRelease)
            FillRelease(note, icon);
        else
            return 0;
    }
    if (record->vibratoHandle) {
        auto* const icon = dynamic_cast<CIconVibrato*>(track->LookupIconObject(HandleOf(record->vibratoHandle)));
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
            FillTransition(note, icon);
    }
    event->RestoreLocation(&here, 1);
    return kind == torv::kEventAnote;
}

void CxQuillMidiEncoder::SetNoteSegmentParam(tagQuillMidiOutNoteParam* note, const tagQuillMidiRealtimeInfo* info,
                                             DWORD index, CLyricElement* element) {
    tagQuillMidiNoteSegment& segment = note->segments[index];
    const bool first = index == 0;
    const bool last = index + 1 == note->segmentCount;
    const DWORD noteEnd = note->position + note->length;
    if (first) {
        segment.startTick = note->position;
        segment.startTime = info->time;
    } else {
        const tagQuillMidiNoteSegment& before = note->segments[index - 1];
        segment.startTick = before.startTick + before.lengthTicks;
        segment.startTime = before.startTime + before.durationTime;
    }
    const DWORD left = noteEnd > segment.startTick ? noteEnd - segment.startTick : 0;
    const DWORD length = last ? left : std::min(left, torv::ShareOf(note->length, element->GetDeltaRate()));
    const DWORD end = segment.startTick + length;
    segment.lengthTicks = static_cast<WORD>(length);
    segment.durationTime = static_cast<WORD>(torv::SearchTimePosition(end, info->map, info->index) - segment.startTime);

    if (first && !(note->attribute & kJoinedToPrevious))
        segment.type |= kBeginsSound;
    if (last && !(note->attribute & kJoinedToNext))
        segment.type |= kEndsSound;

    segment.attackCode = first ? CodeField(note->attackCode) : kNoIconCode;
    segment.releaseCode = last ? CodeField(note->releaseCode) : kNoIconCode;
    segment.transitionCode = last ? CodeField(note->transitionCode) : kNoIconCode;
    if (segment.attackCode != kNoIconCode) {
        segment.attackIndex = ByteField(note->attackIndex);
        segment.attackDepth = ByteField(note->attackDepth);
        segment.attackDuration = ByteField(note->attackDuration);
    }
    if (segment.releaseCode != kNoIconCode) {
        segment.releaseIndex = ByteField(note->releaseIndex);
        segment.releaseDepth = ByteField(note->releaseDepth);
        segment.releaseDuration = ByteField(note->releaseDuration);
    }
    if (segment.transitionCode != kNoIconCode) {
        segment.transitionIndex = ByteField(note->transitionIndex);
        segment.transitionDuration = ByteField(note->transitionDuration);
    }

    segment.vibratoCode = kNoIconCode;
    DWORD shareStart = 0;
    DWORD shareEnd = 0;
    if (note->vibratoCode != kNoCode &&
        IntersectTime(&shareStart, &shareEnd, segment.startTick, end, note->vibratoStart, note->vibratoEnd)) {
        segment.vibratoCode = CodeField(note->vibratoCode);
        segment.vibratoIndex = ByteField(note->vibratoIndex);
        const auto units = [length](DWORD ticks) {
            return static_cast<BYTE>(torv::MulDiv(static_cast<int>(ticks), kVibratoUnits, static_cast<int>(length)));
        };
        segment.vibratoStart = units(shareStart - segment.startTick);
        segment.vibratoExtent = units(shareEnd - shareStart);
        const bool goesOn = note->vibratoEnd > end;
        if (goesOn && segment.type <= kBeginsSound)
            segment.vibratoExtent = 0;
        else if (!goesOn && segment.vibratoExtent == 0)
            segment.vibratoExtent = 1;
    }

    segment.one = 1;
    FillPhonemes(segment, element);
}
