#include "torv/songs/musicxml_measures.h"

#include "torv/songs/musicxml_metronome.h"
#include "torv/songs/number_text.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <numeric>
#include <utility>

namespace torv::songs::musicxml {

namespace {

constexpr double kMostQuarters = 100000; // of one duration: what no song has
constexpr double kFastest = 3000;        // quarters a minute
constexpr int kNamedVoices = 1000;       // voices without a number are counted from here

std::string InLowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

/// "3+2" is one sum.
int BeatsOf(std::string_view text) {
    int sum = 0;
    while (!text.empty()) {
        sum += std::clamp(WholeNumberOf(text, 0), 0, 1000);
        text.remove_prefix(std::min(text.find('+'), text.size() - 1) + 1);
    }
    return sum;
}

std::string NameOfClef(XmlElement clef) {
    const std::string_view sign = clef.Child("sign").Text();
    if (sign == "G")
        return WholeNumberOf(clef.Child("clef-octave-change").Text(), 0) < 0 ? "treble-8" : "treble";
    if (sign == "F")
        return "bass";
    if (sign == "C")
        return WholeNumberOf(clef.Child("line").Text(), 3) == 4 ? "tenor" : "alto";
    return "";
}

class PartReader {
public:
    WrittenPart Read(const std::vector<XmlElement>& measures) {
        int number = 0;
        for (const XmlElement element : measures) {
            WrittenMeasure& measure = m_part.measures.emplace_back();
            m_measure = &measure;
            m_spansBefore = std::exchange(m_spans, {});
            m_isHeldBefore = m_isHeldAtEnd = false;
            measure.isPickup = element.Attribute("implicit") == "yes";
            number = measure.number = WholeNumberOf(element.Attribute("number"), number + (measure.isPickup ? 0 : 1));
            m_at = m_lastOnset = 0;
            measure.signs.endings = m_openEndings;
            for (const XmlElement child : element)
                ReadChild(child);
            Close(measure);
        }
        ExplainCodas();
        SortOutUnpitched();
        BringCrossingVoicesHome();
        m_part.language = m_lyrics.Language();
        m_part.laughs = m_lyrics.Laughs();
        return std::move(m_part);
    }

private:
    void ReadChild(XmlElement child) {
        const std::string_view name = child.Name();
        if (name == "note") {
            ReadNote(child);
        } else if (name == "backup") {
            m_at = std::max(0.0, m_at - Ticks(child.Child("duration").Text()));
        } else if (name == "forward") {
            Advance(Ticks(child.Child("duration").Text()));
        } else if (name == "attributes") {
            ReadAttributes(child);
        } else if (name == "direction") {
            ReadDirection(child);
        } else if (name == "sound") {
            ReadSound(child, m_at);
        } else if (name == "barline") {
            ReadBarline(child);
        }
    }

    double Ticks(std::string_view duration) const {
        const double quarters = NumberOf(duration, 0) / m_divisions;
        return kTicksPerQuarter * std::clamp(quarters, 0.0, kMostQuarters);
    }
    static uint32_t Whole(double ticks) { return static_cast<uint32_t>(std::lround(ticks)); }

    void Advance(double ticks) {
        m_at = std::min(m_at + ticks, kMostQuarters * kTicksPerQuarter);
        m_measure->length = std::max(m_measure->length, Whole(m_at));
    }

    void Close(WrittenMeasure& measure) {
        for (auto& [id, notes] : measure.voices)
            std::stable_sort(notes.begin(), notes.end(), IsEarlier);
        if (measure.signs.endingStops)
            m_openEndings.clear();
        if (m_isHeldBefore && m_part.measures.size() > 1)
            HoldEnd(m_part.measures[m_part.measures.size() - 2], m_spansBefore);
        if (m_isHeldAtEnd)
            HoldEnd(measure, m_spans);
    }

    void ReadAttributes(XmlElement attributes) {
        for (const XmlElement child : attributes) {
            const std::string_view name = child.Name();
            if (name == "divisions") {
                const double divisions = NumberOf(child.Text(), 0);
                m_divisions = divisions > 0 ? divisions : 1;
            } else if (name == "time") {
                ReadTime(child);
            } else if (name == "key" && child.Has("fifths")) {
                m_measure->key = KeySignature{0, std::clamp(WholeNumberOf(child.Child("fifths").Text(), 0), -7, 7),
                                              child.Child("mode").Text() == "minor"};
            } else if (name == "clef") {
                m_part.clefs.try_emplace(WholeNumberOf(child.Attribute("number"), 1), NameOfClef(child));
            } else if (name == "transpose") {
                const int octaves = WholeNumberOf(child.Child("octave-change").Text(), 0);
                m_transposition = std::clamp(WholeNumberOf(child.Child("chromatic").Text(), 0), -60, 60) +
                                  12 * std::clamp(octaves, -5, 5);
            }
        }
    }

    /// Several signatures one behind the other are one sum: "2/4 + 3/8" is 7/8.
    void ReadTime(XmlElement time) {
        int numerator = 0;
        int denominator = 1;
        int beats = 0;
        for (const XmlElement child : time) {
            if (child.Name() == "beats")
                beats = BeatsOf(child.Text());
            if (child.Name() != "beat-type")
                continue;
            const int type = std::clamp(WholeNumberOf(child.Text(), 4), 1, 128);
            const int common = std::lcm(denominator, type);
            numerator = numerator * (common / denominator) + beats * (common / type);
            denominator = common;
        }
        int exponent = 0;
        while (exponent < 7 && 1 << exponent < denominator)
            ++exponent;
        if (numerator > 0 && 1 << exponent == denominator)
            m_measure->meter = Meter{0, std::min(numerator, 255), exponent};
    }

    void ReadNote(XmlElement element) {
        const bool isChord = element.Has("chord");
        const bool isGrace = element.Has("grace");
        const double duration = isGrace ? 0 : Ticks(element.Child("duration").Text());
        const double onset = isChord ? m_lastOnset : m_at;
        if (!isChord) {
            m_lastOnset = m_at;
            Advance(duration);
        }
        if (element.Has("cue")) {
            ++m_part.cues;
            return;
        }
        if (!isChord)
            m_id = {WholeNumberOf(element.Child("staff").Text(), 1), VoiceOf(element.Child("voice").Text())};
        if (!isChord && !isGrace)
            m_stays[m_id.voice].push_back({m_part.measures.size() - 1, onset, onset + duration, m_id.staff});
        m_spans.push_back({onset, onset + duration});
        if (element.Has("rest")) {
            for (const XmlElement child : element)
                if (child.Name() == "notations" && child.Has("fermata"))
                    m_measure->holds.push_back({Whole(onset), Whole(duration)});
            return;
        }
        if (!isGrace && duration <= 0)
            return;
        WrittenNote written;
        written.onset = Whole(onset);
        written.passes = PassesOf(element.Attribute("time-only"));
        written.note.length = std::max<uint32_t>(1, Whole(onset + duration) - written.onset);
        written.hasPitch = element.Has("pitch");
        if (written.hasPitch)
            ReadPitch(element.Child("pitch"), written);
        written.isChord = isChord;
        written.isGrace = isGrace;
        written.hasSlash = element.Child("grace").Attribute("slash") == "yes";
        if (const double percent = NumberOf(element.Attribute("dynamics"), 0); percent > 0)
            written.note.velocity = static_cast<int>(std::min(90 * percent / 100, 127.0));
        for (const XmlElement child : element) {
            if (child.Name() == "tie")
                (child.Attribute("type") == "start" ? written.tieStarts : written.tieStops) = true;
            else if (child.Name() == "notations")
                ReadNotations(child, written);
            else if (child.Name() == "lyric")
                m_lyrics.Read(child, written.words);
        }
        m_part.hasWords = m_part.hasWords || !written.words.empty();
        m_measure->voices[m_id].push_back(std::move(written));
    }

    /// Voices have numbers as a rule, but any text may stand there.
    int VoiceOf(std::string_view text) {
        if (text.empty())
            return 1;
        const auto known = m_voices.try_emplace(std::string(text), 0).first;
        if (!known->second)
            known->second = WholeNumberOf(text, kNamedVoices + static_cast<int>(m_voices.size()));
        return known->second;
    }

    /// A quarter tone is the nearest key, bent.
    void ReadPitch(XmlElement pitch, WrittenNote& written) const {
        static constexpr int kSteps[] = {9, 11, 0, 2, 4, 5, 7}; // A to G over C
        const std::string_view step = pitch.Child("step").Text();
        const int index = step.empty() ? 2 : std::clamp(std::toupper(static_cast<unsigned char>(step[0])) - 'A', 0, 6);
        const double altered = std::clamp(NumberOf(pitch.Child("alter").Text(), 0), -12.0, 12.0);
        const int octave = std::clamp(WholeNumberOf(pitch.Child("octave").Text(), 4), -2, 12);
        const double whole = std::round(altered);
        written.note.key = kSteps[index] + static_cast<int>(whole) + 12 * (octave + 1) + m_transposition;
        written.bend = altered - whole;
    }

    void ReadNotations(XmlElement notations, WrittenNote& written) {
        for (const XmlElement child : notations) {
            const std::string_view name = child.Name();
            if (name == "slur") {
                const int number = WholeNumberOf(child.Attribute("number"), 1);
                if (child.Attribute("type") == "start")
                    written.slurStarts.push_back(number);
                else if (child.Attribute("type") == "stop")
                    written.slurStops.push_back(number);
            } else if (name == "tied") { // which some write alone
                written.tieStarts = written.tieStarts || child.Attribute("type") == "start";
                written.tieStops = written.tieStops || child.Attribute("type") == "stop";
            } else if (name == "fermata") {
                written.note.fermata = true;
            } else if (name == "slide" || name == "glissando") {
                written.note.slides = written.note.slides || child.Attribute("type") == "start";
            } else if (name == "ornaments") {
                ++m_part.ornaments;
            } else if (name == "articulations") {
                ReadArticulations(child, written.note);
            }
        }
    }

    void ReadArticulations(XmlElement articulations, Note& note) {
        for (const XmlElement child : articulations) {
            const std::string_view name = child.Name();
            if (name == "staccato" || name == "staccatissimo" || name == "spiccato")
                note.staccato = true;
            else if (name == "tenuto" || name == "detached-legato")
                note.tenuto = true;
            else if (name == "accent" || name == "strong-accent" || name == "stress")
                note.accent = true;
            else if (name == "breath-mark" || name == "caesura")
                note.breathAfter = true;
            else if (name == "scoop" || name == "plop" || name == "doit" || name == "falloff")
                ++m_part.ornaments;
        }
    }

    void ReadDirection(XmlElement direction) {
        const double onset = std::max(0.0, m_at + SignedTicks(direction.Child("offset").Text()));
        const XmlElement sound = direction.Child("sound");
        StaffMarks& marks = m_measure->staves[WholeNumberOf(direction.Child("staff").Text(), 1)];
        bool isToCoda = !sound.Attribute("tocoda").empty();
        bool hasCodaSign = false;
        for (const XmlElement type : direction) {
            if (type.Name() != "direction-type")
                continue;
            for (const XmlElement mark : type) {
                const std::string_view name = mark.Name();
                if (name == "dynamics") {
                    for (const XmlElement level : mark)
                        marks.levels.emplace_back(Whole(onset),
                                                  level.Name() == "other-dynamics" ? level.Text() : level.Name());
                } else if (name == "wedge") {
                    ReadWedge(mark, Whole(onset), marks);
                } else if (name == "metronome" && sound.Attribute("tempo").empty()) {
                    AddMetronome(ReadMetronome(mark), Whole(onset));
                } else if (name == "segno" && sound.Attribute("segno").empty()) {
                    m_measure->signs.segno = kPlainLabel;
                } else if (name == "coda") {
                    hasCodaSign = sound.Attribute("coda").empty();
                } else if (name == "words") {
                    isToCoda = ReadWords(InLowerCase(mark.Text()), sound, Whole(onset)) || isToCoda;
                }
            }
        }
        if (hasCodaSign && !isToCoda)
            m_codaSigns.push_back(m_part.measures.size() - 1);
        if (sound)
            ReadSound(sound, onset);
    }

    double SignedTicks(std::string_view offset) const {
        return kTicksPerQuarter * std::clamp(NumberOf(offset, 0) / m_divisions, -kMostQuarters, kMostQuarters);
    }

    static void ReadWedge(XmlElement mark, uint32_t onset, StaffMarks& marks) {
        const std::string_view type = mark.Attribute("type");
        const int number = WholeNumberOf(mark.Attribute("number"), 1);
        if (type == "crescendo")
            marks.wedges.push_back({onset, number, Wedge::Type::Crescendo});
        else if (type == "diminuendo")
            marks.wedges.push_back({onset, number, Wedge::Type::Diminuendo});
        else if (type == "stop")
            marks.wedges.push_back({onset, number, Wedge::Type::Stop});
    }

    /// Whether they say "To Coda". Words are looked at where no sound tells what they mean.
    bool ReadWords(const std::string& words, XmlElement sound, uint32_t onset) {
        MeasureSigns& signs = m_measure->signs;
        for (const char* const change : {"rit", "rall", "accel", "string"})
            m_part.hasTempoWords = m_part.hasTempoWords || words.starts_with(change);
        if (!sound.Has("swing") && (words.starts_with("swing") || words.ends_with(" swing"))) {
            AddSwing(onset, kTicksPerQuarter / 2.0, 2.0 / 3);
            m_part.hasSwingWords = true;
        }
        if (words.find("to coda") == 0) {
            signs.toCoda = kPlainLabel;
            return true;
        }
        if (words == "coda")
            signs.coda = kPlainLabel;
        if (!sound.Attribute("dacapo").empty() || !sound.Attribute("dalsegno").empty())
            return false;
        if (words.starts_with("d.c.") || words.starts_with("d. c.") || words.starts_with("da capo"))
            signs.daCapo = true;
        else if (words.starts_with("d.s.") || words.starts_with("d. s.") || words.starts_with("dal segno"))
            signs.dalSegno = kPlainLabel;
        else if (words == "fine")
            signs.fine = true;
        return false;
    }

    void AddMetronome(const Metronome& metronome, uint32_t onset) {
        if (metronome.swing > 0)
            AddSwing(onset, metronome.swingUnit * kTicksPerQuarter, metronome.swing);
        else if (metronome.quartersPerMinute > 0)
            AddTempo(onset, metronome.quartersPerMinute);
        else if (metronome.speed > 0)
            m_measure->tempos.push_back({onset, 0, metronome.speed});
    }

    void AddTempo(uint32_t onset, double quartersPerMinute) {
        if (quartersPerMinute > kFastest)
            ++m_part.oddTempos;
        else
            m_measure->tempos.push_back({onset, quartersPerMinute, 0});
    }

    void AddSwing(uint32_t onset, double unit, double share) {
        m_measure->swings.push_back(
            {onset, std::clamp(Whole(unit), 30U, kTicksPerQuarter), std::clamp(share, 0.5, 0.95)});
    }

    void ReadSwing(XmlElement swing, uint32_t onset) {
        const double first = NumberOf(swing.Child("first").Text(), 1);
        const double second = NumberOf(swing.Child("second").Text(), 1);
        if (first > 0 && second > 0)
            AddSwing(onset,
                     swing.Child("swing-type").Text() == "16th" ? kTicksPerQuarter / 4.0 : kTicksPerQuarter / 2.0,
                     first / (first + second));
    }

    void ReadSound(XmlElement sound, double onset) {
        MeasureSigns& signs = m_measure->signs;
        const auto label = [&sound](const char* name, std::string& value) {
            if (!sound.Attribute(name).empty())
                value = sound.Attribute(name);
        };
        label("segno", signs.segno);
        label("coda", signs.coda);
        label("dalsegno", signs.dalSegno);
        label("tocoda", signs.toCoda);
        signs.daCapo = signs.daCapo || sound.Attribute("dacapo") == "yes";
        signs.fine = signs.fine || !sound.Attribute("fine").empty();
        signs.repeatForward = signs.repeatForward || sound.Attribute("forward-repeat") == "yes";
        if (const XmlElement swing = sound.Child("swing"))
            ReadSwing(swing, Whole(onset));
        if (const double tempo = NumberOf(sound.Attribute("tempo"), 0); tempo > 0)
            AddTempo(Whole(onset), tempo);
    }

    void ReadBarline(XmlElement barline) {
        MeasureSigns& signs = m_measure->signs;
        const XmlElement repeat = barline.Child("repeat");
        if (repeat.Attribute("direction") == "forward")
            signs.repeatForward = true;
        else if (repeat.Attribute("direction") == "backward")
            signs.repeatBackward = std::max(2, WholeNumberOf(repeat.Attribute("times"), 2));
        const XmlElement ending = barline.Child("ending");
        if (ending.Attribute("type") == "start")
            signs.endings = m_openEndings = PassesOf(ending.Attribute("number"));
        else if (ending)
            signs.endingStops = true;
        if (!barline.Attribute("segno").empty() || barline.Has("segno"))
            signs.segno = kPlainLabel;
        if (!barline.Attribute("coda").empty() || barline.Has("coda"))
            signs.coda = kPlainLabel;
        if (barline.Has("fermata"))
            (barline.Attribute("location") == "left" ? m_isHeldBefore : m_isHeldAtEnd) = true;
    }

    /// When notes and rests sound, in ticks from their measure's beginning.
    struct Span {
        double from;
        double to;
    };

    /// What sounds or rests until a measure's end is held there, of several that which begins last.
    static void HoldEnd(WrittenMeasure& measure, const std::vector<Span>& spans) {
        double begin = -1;
        for (const Span& span : spans)
            if (std::abs(span.to - measure.length) < 0.5)
                begin = std::max(begin, span.from);
        if (begin >= 0)
            measure.holds.push_back({Whole(begin), measure.length - std::min(Whole(begin), measure.length)});
    }

    /// Claps and the like are no part's own among notes with a pitch.
    void SortOutUnpitched() {
        bool hasPitched = false;
        size_t unpitched = 0;
        const auto isUnpitched = [](const WrittenNote& note) { return !note.hasPitch; };
        for (const WrittenMeasure& measure : m_part.measures)
            for (const auto& [id, notes] : measure.voices) {
                const auto count = static_cast<size_t>(std::count_if(notes.begin(), notes.end(), isUnpitched));
                unpitched += count;
                hasPitched = hasPitched || count < notes.size();
            }
        m_part.isPercussion = !hasPitched && unpitched > 0;
        if (m_part.isPercussion || unpitched == 0)
            return;
        m_part.unpitched = unpitched;
        for (WrittenMeasure& measure : m_part.measures)
            for (auto& [id, notes] : measure.voices)
                std::erase_if(notes, isUnpitched);
    }

    /// One number is one voice wherever it stands, unless it sounds or rests on two staves at once.
    void BringCrossingVoicesHome() {
        for (auto& [voice, stays] : m_stays) {
            std::map<int, size_t> counts;
            for (const Stay& stay : stays)
                ++counts[stay.staff];
            if (counts.size() < 2 || IsOnTwoStavesAtOnce(stays))
                continue;
            const auto isLess = [](const auto& a, const auto& b) { return a.second < b.second; };
            const int home = std::max_element(counts.begin(), counts.end(), isLess)->first;
            for (const Stay& stay : stays)
                if (stay.staff != home)
                    Move(m_part.measures[stay.measure], {stay.staff, voice}, {home, voice});
        }
    }

    /// From when to when a voice stands on a staff, a note or a rest; in ticks from its measure's beginning.
    struct Stay {
        size_t measure;
        double from;
        double to;
        int staff;
    };

    static bool IsOnTwoStavesAtOnce(std::vector<Stay>& stays) {
        std::stable_sort(stays.begin(), stays.end(), [](const Stay& a, const Stay& b) {
            return a.measure != b.measure ? a.measure < b.measure : a.from < b.from;
        });
        return std::adjacent_find(stays.begin(), stays.end(), [](const Stay& a, const Stay& b) {
                   return a.measure == b.measure && a.staff != b.staff && b.from < a.to - 0.5;
               }) != stays.end();
    }

    static void Move(WrittenMeasure& measure, const VoiceId& from, const VoiceId& to) {
        const auto moved = measure.voices.find(from);
        if (moved == measure.voices.end())
            return;
        std::vector<WrittenNote>& notes = measure.voices[to];
        notes.insert(notes.end(), moved->second.begin(), moved->second.end());
        std::stable_sort(notes.begin(), notes.end(), IsEarlier);
        measure.voices.erase(moved);
    }

    static bool IsEarlier(const WrittenNote& a, const WrittenNote& b) { return a.onset < b.onset; }

    /// A sign alone stands where the way to the coda leaves and where the coda begins; a single one is the coda's.
    void ExplainCodas() {
        const auto leaves = [](const WrittenMeasure& measure) { return !measure.signs.toCoda.empty(); };
        const bool isToldElsewhere = std::any_of(m_part.measures.begin(), m_part.measures.end(), leaves);
        for (size_t i = 0; i < m_codaSigns.size(); ++i) {
            MeasureSigns& signs = m_part.measures[m_codaSigns[i]].signs;
            (i == 0 && m_codaSigns.size() > 1 && !isToldElsewhere ? signs.toCoda : signs.coda) = kPlainLabel;
        }
    }

    static constexpr const char* kPlainLabel = "sign"; // of what the file gives no name

    WrittenPart m_part;
    WrittenMeasure* m_measure = nullptr;
    double m_divisions = 1; ///< of a quarter
    int m_transposition = 0;
    double m_at = 0; ///< ticks from the measure's beginning
    double m_lastOnset = 0;
    VoiceId m_id; ///< of the note at hand, which its chord shares
    std::vector<int> m_openEndings;
    bool m_isHeldBefore = false; ///< a fermata stands over the measure's first barline
    bool m_isHeldAtEnd = false;  ///< or over its last one
    std::vector<Span> m_spans;   ///< of the measure
    std::vector<Span> m_spansBefore;
    std::vector<size_t> m_codaSigns;          ///< measures
    std::map<int, std::vector<Stay>> m_stays; ///< of each voice
    std::map<std::string, int> m_voices;
    LyricReader m_lyrics;
};

} // namespace

WrittenPart ReadPart(const std::vector<XmlElement>& measures) { return PartReader().Read(measures); }

} // namespace torv::songs::musicxml
