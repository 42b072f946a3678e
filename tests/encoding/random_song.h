#pragma once

#include "encoding_fixture.h"
#include "plain_encoder.h"

#include "torv/icons/icon_catalogue.h"

#include <random>

/// What an icon's number in its database is: here, the articulation that it was made with.
struct Articulations : torv::IconCatalogue {
    Articulations() { torv::AddCatalogue(*this); }
    ~Articulations() override { torv::RemoveCatalogue(*this); }
    int IndexOf(const CIconObject& icon) const override { return torv::ArticulationFromID(icon.GetIconID()); }
};

class Composer {
public:
    explicit Composer(unsigned seed) : m_random(seed) {}

    plain::Song Song() {
        plain::Song song{};
        for (int i = Below(4); i > 0; --i)
            song.tempos[Tick(6000)] = 60000 + Below(1500000);
        song.channel = Below(16);
        song.transpose = Below(3) ? 0 : Below(300) - 150;
        song.dynamicsMode = Below(3);
        song.dynamics = Curve(6000, 0, 127);
        song.tremolo = Curve(6000, -5, 140);
        song.bend = Curve(6000, -8192, 8191);
        song.sensitivity = Curve(6000, 0, 24);
        for (int i = Below(3); i > 0; --i)
            song.controls[Below(17)] = Curve(6000, 0, 127);
        song.presend = 500 + Below(2) * Below(4501);
        song.dynamicsStep = Step();
        song.depthStep = Step();
        song.rateStep = Step();
        long tick = 0;
        for (int i = Below(12); i > 0; --i) {
            tick += Tick(900);
            if (Below(4))
                song.events.emplace_back(Note(tick));
            else if (Below(2))
                song.events.emplace_back(Level(tick));
            else
                song.events.emplace_back(plain::Singer{tick, Below(130), Below(130)});
        }
        return song;
    }

private:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    /// Often on the grid, often nothing: so that borders meet.
    long Tick(int limit) { return Below(4) ? Below(limit / 60) * 60 : Below(2) * Below(limit); }
    int Step() { return Below(4) ? CxQuillMidiEncoder::GetExtractResolution(Below(11)) : -1; }

    plain::Points Curve(int length, int lowest, int highest) {
        plain::Points points;
        for (int i = Below(8); i > 0; --i)
            points.push_back({Tick(length), lowest + Below(highest - lowest + 1)});
        std::stable_sort(points.begin(), points.end(), [](auto& a, auto& b) { return a.at < b.at; });
        return points;
    }
    plain::Shape Shape(int status) { return {status, Below(100), Below(255), Below(256), Below(256), Below(256)}; }
    plain::Note Note(long tick) {
        plain::Note note{tick,       Below(30) ? Tick(900) : 20000 + Below(90000),
                         Below(140), Below(200),
                         Below(16),  Below(3) ? 0 : Below(4),
                         {},         {},
                         {},         {}};
        if (Below(2))
            note.head = Shape(Below(8) ? 1 + Below(2) : 3);
        if (Below(2))
            note.tail = Shape(Below(8) ? 2 + Below(2) : 1);
        if (Below(3) == 0)
            note.vibrato = {
                Below(100), Below(255), Below(256),           1 + Tick(900),        Tick(600) - Below(2) * Below(9000),
                Below(128), Below(128), Curve(10000, 0, 127), Curve(10000, -3, 130)};
        static const char* const texts[] = {"a", "i", "k", "tS", "ts", "s", "Asp", "@r"};
        for (int i = Below(12) ? 1 + Below(3) : 0; i > 0; --i) {
            plain::Syllable syllable{static_cast<float>(Below(13)) / 12, {}};
            for (int n = Below(6) ? Below(5) : 12; n > 0; --n)
                syllable.phonemes.push_back({texts[Below(8)], Below(3) ? Below(128) : Below(256)});
            note.syllables.push_back(syllable);
        }
        return note;
    }
    plain::Level Level(long tick) {
        const int articulation = 1 + Below(3);
        const int level = Below(128);
        return {tick,
                1 + Tick(900),
                articulation,
                level,
                articulation == 1 ? level : Below(255) - 127,
                Curve(10000, -127, 127)};
    }

    std::mt19937 m_random;
};

inline void Add(CBreakPointList* list, const plain::Points& points) {
    for (const plain::Point& point : points)
        AddPoint(list, point.at, point.value);
}

template <class Icon>
Icon* Made(int status, int index, int high, int low) {
    auto* const icon = new Icon(status, index, 1);
    icon->GetExpressionEntry()->idHigh = high | 0x300; // of which the low bytes count
    icon->GetExpressionEntry()->idLow = low | 0x500;
    return icon;
}

/// The song in the library's own objects.
struct Written : Chart {
    explicit Written(const plain::Song& song) {
        for (const auto& [tick, tempo] : song.tempos)
            Tempo(static_cast<DWORD>(tick), static_cast<DWORD>(tempo));
        CSequenceObject& track = Track();
        track.SetChannel(song.channel);
        track.SetTranspose(song.transpose);
        track.SetDynamicsMode(song.dynamicsMode);
        Add(track.GetDynamicsBreakPointList(), song.dynamics);
        Add(track.GetTremoloDepthBreakPointList(), song.tremolo);
        Add(track.GetPitchBendBreakPointList(), song.bend);
        Add(track.GetPitchBendSensBreakPointList(), song.sensitivity);
        for (const auto& [index, points] : song.controls)
            Add(track.CreateVoiceControlBreakPointList(index), points);
        for (const auto& event : song.events)
            std::visit([this](const auto& record) { Write(record); }, event);
        Close();
    }

private:
    void Write(const plain::Singer& singer) {
        Singer(static_cast<DWORD>(singer.tick), static_cast<WORD>(singer.language), static_cast<WORD>(singer.program));
    }
    void Write(const plain::Level& level) {
        auto* const icon = new CIconDynamics(5, level.articulation, 1);
        icon->SetStartDynamics(level.start);
        icon->SetEndDynamics(level.end);
        icon->SetLength(static_cast<DWORD>(level.length));
        Add(icon->GetDynamicsBPList(), level.points);
        Place(static_cast<DWORD>(level.tick), icon);
    }
    void Write(const plain::Note& note) {
        auto* const lyric = new CLyricObject;
        for (const plain::Syllable& syllable : note.syllables) {
            CLyricElement* const element = lyric->AddNewElement();
            element->SetDeltaRate(syllable.share);
            for (const plain::Phoneme& phoneme : syllable.phonemes) {
                element->AddPhonemeChara(phoneme.text.c_str());
                element->SetConsonantAdvancement(element->GetPhonemeCharaCount() - 1, phoneme.advancement);
            }
        }
        tagCsqEventAnote* const record =
            Note(static_cast<DWORD>(note.tick), static_cast<DWORD>(note.length), note.number, Attach(lyric));
        record->header.status = static_cast<WORD>(0x90 | note.channel);
        record->noteDynamics = static_cast<WORD>(note.velocity);
        record->noteAttribute = static_cast<WORD>(note.attribute);
        record->noteHeadHandle = note.head ? Shape(*note.head) : 0;
        record->noteTailHandle = note.tail ? Shape(*note.tail) : 0;
        if (!note.vibrato)
            return;
        auto* const icon = Made<CIconVibrato>(4, note.vibrato->index, note.vibrato->high, note.vibrato->low);
        icon->SetLength(static_cast<DWORD>(note.vibrato->length));
        icon->SetStartDepth(note.vibrato->depth);
        icon->SetStartRate(note.vibrato->rate);
        Add(icon->GetDepthBPList(), note.vibrato->depths);
        Add(icon->GetRateBPList(), note.vibrato->rates);
        record->vibratoHandle = Icon(icon);
        record->vibratoOffset = note.vibrato->offset;
    }
    template <class Kind>
    DWORD Shaped(const plain::Shape& shape) {
        auto* const icon = Made<Kind>(shape.status, shape.index, shape.high, shape.low);
        icon->SetDuration(shape.duration);
        if constexpr (requires { icon->SetDepth(0); })
            icon->SetDepth(shape.depth);
        return Icon(icon);
    }
    DWORD Shape(const plain::Shape& shape) {
        return shape.status == 1   ? Shaped<CIconNoteAttack>(shape)
               : shape.status == 2 ? Shaped<CIconNoteRelease>(shape)
                                   : Shaped<CIconNoteTransit>(shape);
    }
};

inline void SetUp(CxQuillMidiEncoder& encoder, const plain::Song& song) {
    encoder.SetPresendTime(static_cast<DWORD>(song.presend));
    encoder.SetExtractResolutionAt(CxQuillMidiEncoder::kDynamicsSlot, song.dynamicsStep);
    encoder.SetExtractResolutionAt(CxQuillMidiEncoder::kVibratoDepthSlot, song.depthStep);
    encoder.SetExtractResolutionAt(CxQuillMidiEncoder::kVibratoRateSlot, song.rateStep);
}
