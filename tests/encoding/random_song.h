#pragma once

#include "plain_encoder.h"

#include "torv/icons/icon_catalogue.h"

#include <random>

/// What an icon's number in its database is: here, the articulation that it was made with.
struct Articulations : torv::IconCatalogue {
    Articulations() { torv::AddCatalogue(*this); }
    ~Articulations() override { torv::RemoveCatalogue(*this); }
    int IndexOf(const CIconObject& icon) const override { return torv::ArticulationFromID(icon.GetIconID()); }
};

/// A song made by chance, and an encoder's settings.
class RandomSong : public Chart {
public:
    explicit RandomSong(unsigned seed) : m_random(seed) {
        for (int i = Below(4); i > 0; --i)
            m_tempos[Tick(6000)] = static_cast<DWORD>(60000 + Below(1500000));
        for (const auto& [tick, tempo] : std::map(m_tempos))
            Tempo(static_cast<DWORD>(tick), tempo);
        m_track->SetChannel(Below(16));
        m_track->SetTranspose(Below(3) ? 0 : Below(300) - 150);
        m_track->SetDynamicsMode(Below(3));
        Draw(m_track->GetDynamicsBreakPointList(), 6000, 0, 127);
        Draw(m_track->GetTremoloDepthBreakPointList(), 6000, -5, 140);
        Draw(m_track->GetPitchBendBreakPointList(), 6000, -8192, 8191);
        Draw(m_track->GetPitchBendSensBreakPointList(), 6000, 0, 24);
        for (int i = Below(3); i > 0; --i)
            if (CBreakPointList* const list = m_track->CreateVoiceControlBreakPointList(Below(17)))
                Draw(list, 6000, 0, 127);
        for (int i = Below(12); i > 0; --i) {
            const auto tick = static_cast<DWORD>(m_tick + Tick(900));
            if (Below(4))
                AddNote(tick);
            else if (Below(2))
                AddLevel(tick);
            else
                Singer(tick, static_cast<WORD>(Below(130)), static_cast<WORD>(Below(130)));
        }
        Close();
    }
    void SetUp(CxQuillMidiEncoder& encoder) {
        encoder.SetPresendTime(static_cast<DWORD>(500 + Below(2) * Below(4501)));
        for (int slot = 0; slot < CxQuillMidiEncoder::kResolutionSlots; ++slot)
            encoder.SetExtractResolutionAt(slot, Below(4) ? CxQuillMidiEncoder::GetExtractResolution(Below(11)) : -1);
    }

private:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    /// Often on the grid, often nothing: so that borders meet.
    int Tick(int limit) { return Below(4) ? Below(limit / 60) * 60 : Below(2) * Below(limit); }

    void Draw(CBreakPointList* list, int length, int lowest, int highest) {
        std::multimap<int, int> points;
        for (int i = Below(8); i > 0; --i)
            points.emplace(Tick(length), lowest + Below(highest - lowest + 1));
        for (const auto& [at, value] : points)
            AddPoint(list, at, value);
    }
    template <class Kind>
    Kind* Made(int status) {
        auto* const icon = new Kind(status, Below(100), 1);
        // The low bytes count, and an id of 0 is one.
        *icon->GetExpressionEntry() = {0, Below(2) * Below(255) | 0x300, Below(2) * Below(256) | 0x500, 0};
        return icon;
    }
    template <class Kind>
    DWORD Shape(int status) {
        auto* const icon = Made<Kind>(status);
        icon->SetDuration(Below(256));
        if constexpr (requires { icon->SetDepth(0); })
            icon->SetDepth(Below(256));
        return Icon(icon);
    }
    /// 1 to 3.
    DWORD Shape(int status) {
        return status == 1   ? Shape<CIconNoteAttack>(status)
               : status == 2 ? Shape<CIconNoteRelease>(status)
                             : Shape<CIconNoteTransit>(status);
    }
    DWORD Lyric() {
        static const char* const texts[] = {"a", "i", "k", "tS", "ts", "s", "Asp", "@r"};
        auto* const lyric = new CLyricObject;
        for (int i = Below(12) ? 1 + Below(3) : 0; i > 0; --i) {
            CLyricElement* const element = lyric->AddNewElement();
            element->SetDeltaRate(static_cast<float>(Below(13)) / 12);
            for (int n = Below(6) ? Below(5) : 12; n > 0; --n) {
                element->AddPhonemeChara(texts[Below(8)]);
                element->SetConsonantAdvancement(element->GetPhonemeCharaCount() - 1, Below(Below(3) ? 128 : 256));
            }
        }
        return Attach(lyric);
    }
    void AddNote(DWORD tick) {
        const int length = Below(30) ? Tick(900) : 20000 + Below(90000);
        tagCsqEventAnote& note = *Note(tick, static_cast<DWORD>(length), Below(140), Lyric());
        note.header.status = static_cast<WORD>(0x90 | Below(16));
        note.noteDynamics = static_cast<WORD>(Below(200));
        note.noteAttribute = static_cast<WORD>(Below(3) ? 0 : Below(4));
        note.noteHeadHandle = Below(2) ? Shape(Below(8) ? 1 + Below(2) : 3) : 0;
        note.noteTailHandle = Below(2) ? Shape(Below(8) ? 2 + Below(2) : 1) : 0;
        if (Below(3))
            return;
        auto* const vibrato = Made<CIconVibrato>(4);
        vibrato->SetLength(static_cast<DWORD>(1 + Tick(900)));
        vibrato->SetStartDepth(Below(128));
        vibrato->SetStartRate(Below(128));
        Draw(vibrato->GetDepthBPList(), 10000, 0, 127);
        Draw(vibrato->GetRateBPList(), 10000, -3, 130);
        note.vibratoHandle = Icon(vibrato);
        note.vibratoOffset = Tick(600) - Below(2) * Below(9000);
    }
    void AddLevel(DWORD tick) {
        auto* const level = new CIconDynamics(5, 1 + Below(3), 1);
        level->SetStartDynamics(Below(128));
        level->SetEndDynamics(Below(255) - 127);
        level->SetLength(static_cast<DWORD>(1 + Tick(900)));
        Draw(level->GetDynamicsBPList(), 10000, -127, 127);
        Place(tick, level);
    }

    std::mt19937 m_random;
};
