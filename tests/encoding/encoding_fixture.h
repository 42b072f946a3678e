#pragma once

#include "torv/encoding/quill_midi_encoder.h"
#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_note_attack.h"
#include "torv/icons/icon_note_release.h"
#include "torv/icons/icon_note_transit.h"
#include "torv/icons/icon_singer.h"
#include "torv/icons/icon_vibrato.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/score/csq_builder.h"
#include "torv/score/master_track.h"
#include "torv/score/sequence.h"
#include "torv/score/sequence_object.h"

#include <initializer_list>
#include <map>
#include <memory>
#include <vector>

using Bytes = std::vector<BYTE>;

/// One block as the engine would take it apart: its number, and what stands at each parameter number.
struct DecodedBlock {
    int number = -1;
    int channel = -1;
    struct Data {
        int msb = -1;
        int lsb = -1; ///< -1 when it was not sent
    };
    std::map<int, Data> parameters;

    int Delay() const { return parameters.at(1).msb * 128 + parameters.at(1).lsb; }
    int At(int parameter) const { return Has(parameter) ? parameters.at(parameter).msb : -1; }
    int LsbAt(int parameter) const { return Has(parameter) ? parameters.at(parameter).lsb : -1; }
    bool Has(int parameter) const { return parameters.count(parameter) != 0; }
};

/// The blocks of a run of three-byte control changes; a block opens at parameter 0.
inline std::vector<DecodedBlock> Decode(const Bytes& bytes) {
    std::vector<DecodedBlock> blocks;
    int number = -1;
    int parameter = -1;
    for (size_t i = 0; i + 2 < bytes.size(); i += 3) {
        if (bytes[i + 1] == 99) {
            number = bytes[i + 2];
        } else if (bytes[i + 1] == 98) {
            parameter = bytes[i + 2];
            if (parameter == 0)
                blocks.push_back({number, bytes[i] & 0x0F, {}});
        } else if (bytes[i + 1] == 6) {
            blocks.back().parameters[parameter].msb = bytes[i + 2];
        } else if (bytes[i + 1] == 38) {
            blocks.back().parameters[parameter].lsb = bytes[i + 2];
        }
    }
    return blocks;
}

/// What stands in a stream: where, when, and the bytes.
struct StreamEntry {
    DWORD tick;
    LONG time;
    Bytes bytes;
    DecodedBlock Block() const { return Decode(bytes).front(); }
};

inline std::vector<StreamEntry> EntriesOf(CQuillMidiBuffer& stream) {
    std::vector<StreamEntry> entries;
    tagQuillMidiEntry entry;
    stream.SeekToBegin();
    while (stream.ReadNextEntry(&entry)) {
        Bytes bytes(entry.length);
        stream.ReadEvent(entry.offset, bytes.data(), entry.length);
        entries.push_back({stream.GetPosition(), entry.time, bytes});
    }
    return entries;
}

inline std::vector<StreamEntry> EntriesOf(CQuillMidiBuffer& stream, int number) {
    std::vector<StreamEntry> some;
    for (const StreamEntry& entry : EntriesOf(stream))
        if (Decode(entry.bytes).front().number == number)
            some.push_back(entry);
    return some;
}

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

    void Tempo(DWORD tick, DWORD tempo) {
        tagMasterEventEntry entry{0, torv::kEventTempo, 0, tempo, 0};
        m_song.GetMasterTrack()->MoveTo(tick);
        m_song.GetMasterTrack()->InsertEvent(&entry);
    }
    /// A lyric of elements, each with its share and phonemes.
    struct Element {
        float share;
        const char* phonemes;
    };
    DWORD Lyric(std::initializer_list<Element> elements, int language = 1) {
        auto* const lyric = new CLyricObject;
        for (const Element& element : elements) {
            CLyricElement* const added = lyric->AddNewElement();
            added->SetDeltaRate(element.share);
            added->SetPhonemeString(element.phonemes, language);
        }
        return Attach(lyric);
    }
    DWORD Attach(CLyricObject* lyric) {
        return static_cast<DWORD>(reinterpret_cast<uintptr_t>(m_track->AttachLyricObject(lyric)));
    }
    DWORD Icon(CIconObject* icon) {
        return static_cast<DWORD>(reinterpret_cast<uintptr_t>(m_builder.RegisterIconObject(icon)));
    }
    /// A note with a one-vowel lyric unless `lyric` names another; the record can be changed until the encoding.
    tagCsqEventAnote* Note(DWORD tick, DWORD length, int number = 60, DWORD lyric = 0) {
        tagCsqEventAnote* const note = CCsqBuilder::CreateNoteEvent();
        note->noteLength = length;
        note->noteNumber = static_cast<WORD>(number);
        note->noteDynamics = 100;
        note->lyricHandle = lyric ? lyric : Lyric({{1.0F, "a"}}, 0);
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
    std::unique_ptr<tagSequenceTimeMap[]> Map() {
        return std::unique_ptr<tagSequenceTimeMap[]>(
            CxQuillMidiEncoder::CreateSequenceTimeMap(m_song.GetMasterTrack()));
    }
    std::unique_ptr<CQuillMidiBuffer> Encode(CxQuillMidiEncoder& encoder) {
        m_builder.CloseBuffer();
        const auto map = Map();
        tagQuillMidiEncodeStruct encode{m_track, map.get()};
        return std::unique_ptr<CQuillMidiBuffer>(encoder.EncodeSequenceTrack(&encode));
    }
    std::unique_ptr<CQuillMidiBuffer> Encode() {
        CxQuillMidiEncoder encoder;
        return Encode(encoder);
    }

protected:
    template <class Record>
    void Put(DWORD tick, Record* record) {
        m_builder.SetEvent(tick - m_tick, reinterpret_cast<tagChartSeqEvent*>(record));
        m_tick = tick;
    }

    CSequence m_song;
    CSequenceObject* m_track;
    CCsqBuilder m_builder;
    DWORD m_tick = 0;
};

inline void AddPoint(CBreakPointList* list, LONG position, SHORT value) {
    tagBreakPoint point{position, value, 0};
    list->AddTail(point);
}

/// A note icon whose engine code is high * 256 + low.
template <class Icon>
Icon* NoteIcon(int status, int high, int low, int duration, int depth, DWORD length = 120) {
    tagNoteIconObject record{};
    record.header.iconId = torv::MakeIconID(status, status, 1);
    record.idHigh = static_cast<DWORD>(high);
    record.idLow = static_cast<DWORD>(low);
    record.duration = static_cast<BYTE>(duration);
    record.depth = static_cast<BYTE>(depth);
    auto* const icon = new Icon(status, status, 1);
    icon->ConstructParameter(&record);
    icon->SetLength(length);
    return icon;
}
