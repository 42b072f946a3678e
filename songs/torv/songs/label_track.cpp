#include "torv/songs/report_writers.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace torv::songs {

namespace {

struct Label {
    double start;
    double end;
    std::string text;
};

/// Seconds with six digits behind the point, whatever the locale.
std::string Microseconds(double seconds) {
    char text[64];
    const auto end = std::to_chars(std::begin(text), std::end(text), seconds, std::chars_format::fixed, 6).ptr;
    return {text, end};
}

void AddLabels(const PerformedPart& part, const std::string& prefix, std::vector<Label>& labels) {
    bool wasSung = false; // by this part
    for (const PerformedNote& note : part.notes)
        for (const PerformedSyllable& syllable : note.lyric) {
            if (!syllable.text.empty())
                labels.push_back({syllable.start, syllable.end, prefix + syllable.text});
            else if (wasSung)
                labels.back().end = syllable.end;
            wasSung |= !syllable.text.empty();
        }
}

} // namespace

std::string ToLabelTrack(const Performance& performance) {
    const auto sings = [](const PerformedPart& part) { return !part.notes.empty(); };
    const auto singing = std::count_if(performance.parts.begin(), performance.parts.end(), sings);
    std::vector<Label> labels;
    for (const PerformedPart& part : performance.parts)
        AddLabels(part, singing > 1 && !part.name.empty() ? part.name + ": " : "", labels);
    std::stable_sort(labels.begin(), labels.end(), [](const Label& a, const Label& b) { return a.start < b.start; });
    std::string text;
    for (Label& label : labels) {
        for (char& c : label.text)
            if (static_cast<unsigned char>(c) < ' ')
                c = ' ';
        text += Microseconds(label.start) + '\t' + Microseconds(label.end) + '\t' + label.text + '\n';
    }
    return text;
}

} // namespace torv::songs
