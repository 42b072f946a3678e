#pragma once

#include "torv/icons/icon_note_attack.h"
#include "torv/icons/icon_note_transit.h"
#include "torv/icons/icon_singer.h"
#include "torv/icons/icon_vibrato.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/score/csq_builder.h"
#include "torv/score/master_track.h"
#include "torv/score/sequence.h"
#include "torv/score/sequence_object.h"

#include <memory>

namespace bench {

constexpr DWORD kNoteTicks = 240;
constexpr DWORD kLead = 1920;

/// One track of so many notes, a quarter of a second each, with attack, transition, vibrato, bends and tempo changes.
/// Icons and lyrics are few and shared: handles are 16 bits, notes are not. The engine's voice `program` sings it in
/// English.
inline std::unique_ptr<CSequence> MakeSong(DWORD notes, int program = 0) {
    auto song = std::make_unique<CSequence>();
    song->Create(nullptr);
    for (DWORD i = 0; i < 1000; ++i) {
        tagMasterEventEntry tempo{i ? kNoteTicks * (notes / 1000) : 0, torv::kEventTempo, 0, 500000 + i % 7, 0};
        song->GetMasterTrack()->AddEvent(&tempo);
    }
    CSequenceObject* const track = CSequence::CreateObject();
    song->AddObject(track);
    CCsqBuilder builder;
    builder.OpenBuffer(track);
    auto* const lyric = new CLyricObject;
    for (const char* phonemes : {"s t r aI", "N"}) {
        CLyricElement* const element = lyric->AddNewElement();
        element->SetPhonemeString(phonemes, 1);
        element->SetDeltaRate(0.5F);
    }
    auto* const vibrato = new CIconVibrato(4, 4, 1);
    vibrato->SetLength(kNoteTicks);
    tagBreakPoint point{5000, 60, 0};
    vibrato->GetDepthBPList()->AddTail(point);
    const DWORD lyricHandle = torv::HandleOf(track->AttachLyricObject(lyric));
    const DWORD attack = torv::HandleOf(builder.RegisterIconObject(new CIconNoteAttack(1, 1, 1)));
    const DWORD release = torv::HandleOf(builder.RegisterIconObject(new CIconNoteTransit(3, 3, 1)));
    const DWORD vibratoHandle = torv::HandleOf(builder.RegisterIconObject(vibrato));
    if (program != 0) {
        auto* const singer = new CIconSinger;
        tagSingerIconObject codes{};
        singer->DescribeParameter(&codes);
        codes.languageCode = 1;
        codes.programCode = static_cast<WORD>(program);
        singer->ConstructParameter(&codes);
        torv::ReleaseIconRecord(&codes);
        tagCsqEventSinger* const change = CCsqBuilder::CreateSingerEvent();
        change->iconHandle = torv::HandleOf(builder.RegisterIconObject(singer));
        builder.SetEvent(0, reinterpret_cast<tagChartSeqEvent*>(change));
    }
    for (DWORD i = 0; i < notes; ++i) {
        tagCsqEventAnote* const note = CCsqBuilder::CreateNoteEvent();
        note->noteLength = kNoteTicks;
        note->noteNumber = static_cast<WORD>(48 + i % 24);
        note->noteDynamics = 100;
        note->lyricHandle = lyricHandle;
        note->noteHeadHandle = attack;
        note->noteTailHandle = release;
        note->vibratoHandle = vibratoHandle;
        builder.SetEvent(i ? kNoteTicks : kLead, reinterpret_cast<tagChartSeqEvent*>(note));
        for (DWORD bend = 0; bend < 4; ++bend) {
            tagBreakPoint bent{static_cast<LONG>(kLead + i * kNoteTicks + bend * kNoteTicks / 4),
                               static_cast<SHORT>(i % 100), 0};
            track->GetPitchBendBreakPointList()->AddTail(bent);
        }
    }
    builder.CloseBuffer();
    return song;
}

} // namespace bench
