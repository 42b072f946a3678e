#include "torv/songs/performance_json.h"

#include "torv/songs/report_writers.h"
#include "torv/songs/sung_lines.h"

#include <cmath>

namespace torv::songs {

namespace {

using Json = nlohmann::ordered_json;

double Rounded(double value, double steps) { return std::round(value * steps) / steps; }
/// Times to a tenth of a millisecond: more would only be digits.
double Time(double seconds) { return Rounded(seconds, 1e4); }

Json Lyric(const PerformedNote& note) {
    Json syllables = Json::array();
    for (const PerformedSyllable& syllable : note.lyric) {
        Json phonemes = Json::array();
        for (const PerformedPhoneme& phoneme : syllable.phonemes)
            phonemes.push_back({{"symbol", phoneme.symbol}, {"advancement", phoneme.advancement}});
        syllables.push_back({{"text", syllable.text},
                             {"hyphen", syllable.hyphenAfter},
                             {"start", Time(syllable.start)},
                             {"end", Time(syllable.end)},
                             {"phonemes", std::move(phonemes)}});
    }
    return syllables;
}

Json Notes(const PerformedPart& part) {
    Json notes = Json::array();
    for (const PerformedNote& note : part.notes)
        notes.push_back({{"start", Time(note.start)},
                         {"end", Time(note.end)},
                         {"tick", note.tick},
                         {"length", note.length},
                         {"key", note.key},
                         {"name", note.name},
                         {"velocity", note.velocity},
                         {"joined", note.joined},
                         {"lyric", Lyric(note)}});
    return notes;
}

Json Lines(const PerformedPart& part) {
    Json lines = Json::array();
    for (const SungLine& line : SungLinesOf(part))
        lines.push_back({{"start", Time(line.start)}, {"end", Time(line.end)}, {"text", TextOf(line)}});
    return lines;
}

Json Curve(const std::vector<float>& values, double steps) {
    Json curve = Json::array();
    for (const float value : values)
        curve.push_back(std::isnan(value) ? Json() : Json(Rounded(value, steps)));
    return curve;
}

Json Describe(const PerformedPart& part) {
    Json voices = Json::array();
    for (const PerformedVoice& voice : part.voices)
        voices.push_back({{"start", Time(voice.start)}, {"name", voice.name}});
    return {{"name", part.name},
            {"voices", std::move(voices)},
            {"lines", Lines(part)},
            {"notes", Notes(part)},
            {"step", kCurveStep},
            {"pitch", Curve(part.heard.pitch, 100)},
            {"level", Curve(part.heard.level, 10)}};
}

/// Objects and lists stand on lines of their own down to those that hold nothing but values.
void Put(const Json& value, const std::string& indent, std::string& text) {
    bool isFlat = !value.is_structured() || value.empty();
    if (!isFlat) {
        isFlat = true;
        for (const Json& member : value)
            isFlat = isFlat && !member.is_structured();
    }
    if (isFlat) {
        text += value.dump(-1, ' ', false, Json::error_handler_t::replace);
        return;
    }
    const std::string inner = indent + "  ";
    text += value.is_array() ? '[' : '{';
    bool first = true;
    for (const auto& item : value.items()) {
        text += (first ? "\n" : ",\n") + inner;
        if (value.is_object())
            text += Json(item.key()).dump() + ": ";
        Put(item.value(), inner, text);
        first = false;
    }
    text += "\n" + indent;
    text += value.is_array() ? ']' : '}';
}

} // namespace

Json DescribeAsJson(const Performance& performance) {
    Json measures = Json::array();
    for (const PerformedMeasure& measure : performance.measures) {
        Json beats = Json::array();
        for (const double beat : measure.beats)
            beats.push_back(Time(beat));
        measures.push_back({{"number", measure.number},
                            {"start", Time(measure.start)},
                            {"end", Time(measure.end)},
                            {"beats", std::move(beats)}});
    }
    Json tempos = Json::array();
    for (const PerformedTempo& tempo : performance.tempos)
        tempos.push_back({{"start", Time(tempo.start)}, {"quartersPerMinute", Rounded(tempo.quartersPerMinute, 100)}});
    Json parts = Json::array();
    for (const PerformedPart& part : performance.parts)
        parts.push_back(Describe(part));
    return {{"title", performance.title},         {"composer", performance.composer},
            {"input", performance.input},         {"output", performance.output},
            {"rate", performance.rate},           {"seconds", Time(performance.seconds)},
            {"transpose", performance.transpose}, {"verse", performance.verse},
            {"remarks", performance.remarks},     {"measures", std::move(measures)},
            {"tempos", std::move(tempos)},        {"parts", std::move(parts)}};
}

std::string ToJsonReport(const Performance& performance) {
    std::string text;
    Put(DescribeAsJson(performance), "", text);
    return text + '\n';
}

} // namespace torv::songs
