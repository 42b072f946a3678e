#include "torv/songs/report_writers.h"
#include "torv/songs/sung_lines.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace torv::songs {

namespace {

/// "01:02.34"
std::string Stamp(double seconds) {
    const long hundredths = std::lround(std::max(seconds, 0.0) * 100);
    char text[48];
    std::snprintf(text, sizeof text, "%02ld:%02ld.%02ld", hundredths / 6000, hundredths / 100 % 60, hundredths % 100);
    return text;
}

/// Text in which nothing can be taken for a stamp or a line's end.
std::string Plain(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == '[' || c == ']' || c == '<' || c == '>')
            c = ' ';
    return text;
}

} // namespace

std::string ToKaraokeLines(const Performance& performance) {
    std::string text;
    if (!performance.title.empty())
        text += "[ti:" + Plain(performance.title) + "]\n";
    if (!performance.composer.empty())
        text += "[au:" + Plain(performance.composer) + "]\n";
    text += "[length:" + Stamp(performance.seconds).substr(0, 5) + "]\n";
    for (const PerformedPart& part : performance.parts) {
        const std::vector<SungLine> lines = SungLinesOf(part);
        for (const SungLine& line : lines) {
            text += '[' + Stamp(line.start) + ']';
            for (const SungWord& word : line.words)
                text += std::string(word.blankBefore ? " " : "") + '<' + Stamp(word.start) + '>' + Plain(word.text);
            text += '<' + Stamp(line.end) + ">\n";
        }
        if (!lines.empty())
            break;
    }
    return text;
}

} // namespace torv::songs
