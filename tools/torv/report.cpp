#include "report.h"

#include "key_names.h"
#include "output_file.h"
#include <torv/songs/text_encoding.h>

#include <nlohmann/json.hpp>

using namespace torv::songs;

namespace {

using Json = nlohmann::ordered_json;

Json LyricOf(CLyricObject& lyric) {
    Json elements = Json::array();
    for (int i = 0; i < lyric.GetElementCount(); ++i) {
        CLyricElement& element = *lyric.GetElementAt(i);
        Json phonemes = Json::array();
        for (int p = 0; p < element.GetPhonemeCharaCount(); ++p)
            phonemes.push_back({{"symbol", std::string(element.GetPhonemeChara(p))},
                                {"advancement", element.GetConsonantAdvancement(p)}});
        elements.push_back({{"text", ToUtf8(std::string(element.GetLyricString()), kShiftJis)},
                            {"share", element.GetDeltaRate()},
                            {"phonemes", std::move(phonemes)}});
    }
    return elements;
}

} // namespace

void WriteReport(const std::string& path, const Score& score, const ReportFacts& facts) {
    CArray<tagSequenceTimeMap> map;
    score.song->GetMasterTrack()->GetSequenceTimeMap(map);
    int hint = 0;
    const auto seconds = [&](DWORD tick) {
        hint = hint > 0 ? hint - 1 : 0;
        const DWORD time = CMasterTrack::SearchTimePosition(tick, map, hint);
        return (static_cast<double>(time) - score.leadMilliseconds) / 1000;
    };
    Json notes = Json::array();
    for (const ScoredNote& note : score.parts.front().notes) {
        const int sung = note.key + facts.transpose;
        const double start = seconds(note.tick);
        notes.push_back({{"start", start},
                         {"end", seconds(note.tick + note.length)},
                         {"tick", note.tick - score.leadTicks},
                         {"length", note.length},
                         {"key", sung},
                         {"name", sung >= 0 ? NameOfKey(sung) : std::to_string(sung)},
                         {"velocity", note.velocity},
                         {"joined", note.joined},
                         {"lyric", LyricOf(*note.lyric)}});
    }
    const Json report = {{"input", facts.input},     {"output", facts.output},   {"voice", facts.voice},
                         {"rate", facts.rate},       {"seconds", facts.seconds}, {"transpose", facts.transpose},
                         {"notes", std::move(notes)}};
    OutputFile file(path);
    file.Write(report.dump(2, ' ', false, Json::error_handler_t::replace) + '\n');
    file.Commit();
}
