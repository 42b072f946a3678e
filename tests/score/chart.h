#pragma once

#include "torv/icons/icon_singer.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/score/csq_builder.h"
#include "torv/score/master_track.h"
#include "torv/score/sequence.h"
#include "torv/score/sequence_object.h"

#include <map>
#include <utility>
#include <vector>

/// A song of one track that a test writes in words.
class Chart {
public:
    Chart() {
        m_song.Create(nullptr);
        m_track = CSequence::CreateObject();
        m_song.AddObject(m_track);
        m_builder.OpenBuffer(m_track);
    }
    CSequence& Sequence() { return m_song; }
    CSequenceObject& Track() { return *m_track; }
    const std::map<long, DWORD>& Tempos() const { return m_tempos; }
    /// With their ticks.
    const std::vector<std::pair<long, const tagEventHeader*>>& Events() const { return m_events; }
    void Close() { m_builder.CloseBuffer(); }

    void Tempo(DWORD tick, DWORD tempo) {
        tagMasterEventEntry entry{0, torv::kEventTempo, 0, tempo, 0};
        m_song.GetMasterTrack()->MoveTo(tick);
        m_song.GetMasterTrack()->InsertEvent(&entry);
        m_tempos[static_cast<long>(tick)] = tempo;
    }
    DWORD Attach(CLyricObject* lyric) { return torv::HandleOf(m_track->AttachLyricObject(lyric)); }
    DWORD Icon(CIconObject* icon) { return torv::HandleOf(m_builder.RegisterIconObject(icon)); }
    /// A note with a one-vowel lyric unless `lyric` names another; the record can be changed until the encoding.
    tagCsqEventAnote* Note(DWORD tick, DWORD length, int number = 60, DWORD lyric = 0) {
        if (!lyric) {
            auto* const vowel = new CLyricObject;
            vowel->AddNewElement()->SetPhonemeString("a", 0);
            lyric = Attach(vowel);
        }
        tagCsqEventAnote* const note = CCsqBuilder::CreateNoteEvent();
        note->noteLength = length;
        note->noteNumber = static_cast<WORD>(number);
        note->noteDynamics = 100;
        note->lyricHandle = lyric;
        Put(tick, note);
        return note;
    }
    void Place(DWORD tick, CIconObject* icon) {
        tagCsqEventAicon* const placement = CCsqBuilder::CreateIconEvent();
        placement->iconHandle = Icon(icon);
        Put(tick, placement);
    }
    void Singer(DWORD tick, WORD language, WORD program) {
        tagSingerIconObject record{};
        record.header.iconId = torv::MakeSingerIconID(language, program);
        record.languageCode = language;
        record.programCode = program;
        auto* const icon = new CIconSinger;
        icon->ConstructParameter(&record);
        tagCsqEventSinger* const singer = CCsqBuilder::CreateSingerEvent();
        singer->iconHandle = Icon(icon);
        Put(tick, singer);
    }

protected:
    template <class Record>
    void Put(DWORD tick, Record* record) {
        m_builder.SetEvent(tick - m_tick, reinterpret_cast<tagChartSeqEvent*>(record));
        m_tick = tick;
        m_events.emplace_back(tick, &record->header);
    }

    CSequence m_song;
    CSequenceObject* m_track;
    CCsqBuilder m_builder;
    DWORD m_tick = 0;
    std::map<long, DWORD> m_tempos;
    std::vector<std::pair<long, const tagEventHeader*>> m_events;
};
