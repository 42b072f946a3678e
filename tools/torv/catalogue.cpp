#include "catalogue.h"

#include "engine_voices.h"
#include "errors.h"
#include "messages.h"
#include "table.h"
#include <torv/songs/databases.h>
#include <torv/songs/nearest_names.h>
#include <torv/songs/text_encoding.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>

using namespace torv::songs;

namespace {

using Json = nlohmann::ordered_json;

std::string Utf8(const char* text) { return ToUtf8(text, kShiftJis); }

std::string Hex(DWORD id) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(id));
    return text;
}

void Print(const Json& json) { std::printf("%s\n", json.dump(2, ' ', false, Json::error_handler_t::replace).c_str()); }

void TellMessages(const MessageCatcher& messages) {
    for (const std::string& message : messages.Take())
        Remark(false, message);
}

Json ParametersOf(Databases& databases, DWORD id) {
    tagVoiceParameters voice{};
    const int variation = torv::VariationFromID(id);
    if (!databases.Voices().GetVoiceParameters(variation >> 8, variation & 0xFF, &voice))
        return nullptr;
    Json parameters = voice.parameters.values;
    torv::ReleaseVoiceParameters(&voice);
    return parameters;
}

} // namespace

void ListVoices(bool json) {
    const MessageCatcher messages;
    Databases databases(messages);
    Json list = Json::array();
    std::vector<std::vector<std::string>> rows{{"NAME", "LANGUAGE", "KIND", "RANGE", "VOICE"}};
    std::vector<Databases::Entry> voices = databases.List(kVoices);
    std::stable_partition(voices.begin(), voices.end(),
                          [](const Databases::Entry& voice) { return EngineVoiceOf(voice.id).isPerson; });
    for (const Databases::Entry& voice : voices) {
        const EngineVoice engine = EngineVoiceOf(voice.id);
        const std::string kind = engine.isPerson ? "person" : "synthetic";
        const std::string range = KeyName(engine.lowest) + "-" + KeyName(engine.highest);
        const int program = torv::VariationFromID(voice.id) & 0xFF;
        const std::string installed =
            Utf8(databases.Voices().GetInstalledVoiceName(LanguageOfSinger(voice.id), program));
        rows.push_back({voice.name, LanguageName(LanguageOfSinger(voice.id)), kind, range, installed});
        list.push_back({{"name", voice.name},
                        {"language", LanguageName(LanguageOfSinger(voice.id))},
                        {"kind", kind},
                        {"range", range},
                        {"voice", installed},
                        {"program", program},
                        {"id", Hex(voice.id)},
                        {"parameters", ParametersOf(databases, voice.id)}});
    }
    TellMessages(messages);
    if (json)
        Print(list);
    else
        PrintTable(rows);
}

void ListIcons(const std::string& kindName, bool json) {
    std::vector<std::string> names;
    for (const IconKind& kind : kIconKinds)
        names.emplace_back(kind.name);
    if (!kindName.empty() && !FindName(names, kindName))
        throw WrongUse{"there is no kind of icons \"" + kindName + "\": " + SuggestNames(names, kindName)};
    const MessageCatcher messages;
    const Databases databases(messages);
    Json list = Json::array();
    std::vector<std::vector<std::string>> rows{{"KIND", "NAME", "CAPTION", "BEATS"}};
    for (const IconKind& kind : kIconKinds) {
        if (!kindName.empty() && FindName({kind.name}, kindName) == std::nullopt)
            continue;
        for (const Databases::Entry& icon : databases.List(kind)) {
            tagQuillIconOverview about{};
            databases.Manager().LookupIconOverview(icon.id, &about);
            char beats[32];
            std::snprintf(beats, sizeof beats, "%.2f", about.length / 480.0);
            const bool isLevel = kind.status == torv::kStatusDynamics && torv::ArticulationFromID(icon.id) == 1;
            rows.push_back({kind.name, icon.name, Utf8(about.caption), isLevel ? "-" : beats});
            list.push_back({{"kind", kind.name},
                            {"name", icon.name},
                            {"caption", Utf8(about.caption)},
                            {"id", Hex(icon.id)},
                            {"length", about.length},
                            {"user", about.isUserIcon != 0}});
        }
    }
    TellMessages(messages);
    if (json)
        Print(list);
    else
        PrintTable(rows);
}

std::string IconKindNames() {
    std::string names;
    for (const IconKind& kind : kIconKinds)
        names += (names.empty() ? "" : ", ") + std::string(kind.name);
    return names;
}
