#include "torv/songs/musicxml_metronome.h"

#include "torv/songs/number_text.h"

#include <algorithm>
#include <cmath>

namespace torv::songs::musicxml {

namespace {

/// In quarters.
double LengthOfType(std::string_view type) {
    static constexpr const char* kTypes[] = {"maxima", "long", "breve", "whole", "half",  "quarter", "eighth",
                                             "16th",   "32nd", "64th",  "128th", "256th", "512th",   "1024th"};
    double length = 32;
    for (const char* const each : kTypes) {
        if (type == each)
            return length;
        length /= 2;
    }
    return 1;
}

/// One side of an equation: the notes that are tied or beamed to one length.
struct Side {
    double quarters = 0;
    double first = 0; ///< of the first note
    double dot = 0;   ///< what the next dot adds
    int notes = 0;

    void Add(double length) {
        quarters += length;
        dot = length / 2;
        first += ++notes == 1 ? length : 0;
    }
    void AddDot() {
        quarters += dot;
        first += notes == 1 ? dot : 0;
        dot /= 2;
    }
};

class MetronomeReader {
public:
    Metronome Read(XmlElement mark) {
        double perMinute = 0;
        for (const XmlElement child : mark) {
            const std::string_view name = child.Name();
            if (name == "beat-unit") {
                Turn(m_left.notes > 0);
                m_side->Add(LengthOfType(child.Text()));
            } else if (name == "beat-unit-dot") {
                m_side->AddDot();
            } else if (name == "beat-unit-tied") {
                AddNote(child, "beat-unit", "beat-unit-dot", 1);
            } else if (name == "metronome-note") {
                AddTupletNote(child);
            } else if (name == "metronome-relation") {
                Turn(true);
            } else if (name == "per-minute") { // "80", "c. 80", "ca. 76-80"
                const size_t number = child.Text().find_first_of("0123456789");
                perMinute = NumberOf(child.Text().substr(std::min(number, child.Text().size())), 0);
            }
        }
        Metronome metronome;
        metronome.quartersPerMinute = perMinute * m_left.quarters;
        if (m_right.quarters > 0 && m_left.quarters > 0)
            metronome.speed = m_right.quarters / m_left.quarters;
        if (std::abs(metronome.speed - 1) < 0.001 && m_left.notes == 2 && m_right.notes == 2) {
            metronome.swing = m_right.first / m_right.quarters;
            metronome.swingUnit = m_left.quarters / 2;
        }
        return metronome;
    }

private:
    void Turn(bool isRight) { m_side = isRight ? &m_right : &m_left; }

    void AddNote(XmlElement note, const char* type, std::string_view dotName, double tuplet) {
        m_side->Add(LengthOfType(note.Child(type).Text()) * tuplet);
        for (const XmlElement dot : note)
            if (dot.Name() == dotName)
                m_side->AddDot();
    }

    void AddTupletNote(XmlElement note) {
        const XmlElement tuplet = note.Child("metronome-tuplet");
        if (tuplet.Attribute("type") == "start")
            m_tuplet = NumberOf(tuplet.Child("normal-notes").Text(), 2) /
                       std::max(1.0, NumberOf(tuplet.Child("actual-notes").Text(), 3));
        AddNote(note, "metronome-type", "metronome-dot", m_tuplet);
        if (tuplet.Attribute("type") == "stop")
            m_tuplet = 1;
    }

    Side m_left;
    Side m_right;
    Side* m_side = &m_left;
    double m_tuplet = 1;
};

} // namespace

Metronome ReadMetronome(XmlElement mark) { return MetronomeReader().Read(mark); }

} // namespace torv::songs::musicxml
