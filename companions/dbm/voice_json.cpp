#include "voice_json.h"

#include "failure.h"

#include <algorithm>

namespace dbm {

namespace {

constexpr std::array<const char*, DBM_LANGUAGES> kLanguages{"ja", "en"};

std::optional<int32_t> Language(const Json& text) {
    for (size_t i = 0; i < kLanguages.size(); ++i)
        if (text == kLanguages[i])
            return static_cast<int32_t>(i);
    return std::nullopt;
}

/// Those that are not told are neutral.
std::optional<Parameters> ReadParameters(const Json& entry) {
    Parameters parameters;
    parameters.fill(kNeutral);
    if (!entry.contains("parameters"))
        return parameters;
    const Json& told = entry["parameters"];
    if (!told.is_object())
        return std::nullopt;
    for (const auto& [name, ignored] : told.items()) {
        const size_t index = ParameterIndex(name);
        const auto value = Integer(told, name.c_str(), 0, kMostParameter);
        if (index == kParameters || !value)
            return std::nullopt;
        parameters[index] = static_cast<uint8_t>(*value);
    }
    return parameters;
}

/// `number` is not in a definition.
std::optional<InstalledVoice> ReadInstalled(const Json& entry, int32_t number) {
    const auto engineProgram = Integer(entry, "engineProgram", 0, DBM_PROGRAMS - 1);
    const auto name = Text(entry, "name");
    const auto description = OptionalText(entry, "description");
    if (!engineProgram || EngineProgramOf(static_cast<int32_t>(*engineProgram)) != *engineProgram || !name ||
        name->empty() || !description)
        return std::nullopt;
    const auto parameters = ReadParameters(entry);
    if (!parameters)
        return std::nullopt;
    return InstalledVoice{number, static_cast<int32_t>(*engineProgram), false, *name, *description, *parameters};
}

std::optional<VirtualVoice> ReadSinger(const Json& entry) {
    const auto program = Integer(entry, "program", 0, DBM_PROGRAMS - 1);
    const auto name = Text(entry, "name");
    const auto language = program ? Language(entry.value("language", Json())) : std::nullopt;
    if (!language || !name || name->empty())
        return std::nullopt;
    const auto voice = entry.contains("voice") ? Integer(entry, "voice", 0, kLastUserVoice) : 0;
    const auto parameters = ReadParameters(entry);
    if (!voice || !parameters)
        return std::nullopt;
    return VirtualVoice{*language,  static_cast<int32_t>(*program), static_cast<int32_t>(*voice), false, *name,
                        *parameters};
}

bool TryAdd(Voices& voices, VirtualVoice singer, bool user) {
    singer.user = user;
    try {
        voices.Add(singer);
        return true;
    } catch (const Failure&) {
        return false;
    }
}

bool TryInstall(Voices& voices, const Json& entry, int32_t least, int32_t most) {
    const auto number = Integer(entry, "number", least, most);
    auto voice = number ? ReadInstalled(entry, static_cast<int32_t>(*number)) : std::nullopt;
    if (!voice || std::any_of(voices.installed.begin(), voices.installed.end(),
                              [&](const InstalledVoice& each) { return each.number == voice->number; }))
        return false;
    voice->user = least == kFirstUserVoice;
    voices.installed.push_back(std::move(*voice));
    return true;
}

/// Names are looked at when all are there: two singers may have swapped theirs.
bool Change(Voices& voices, const Json& changes) {
    bool good = true;
    const std::vector<VirtualVoice> before = voices.singers;
    for (const Json& entry : changes) {
        const auto change = ReadSinger(entry);
        const VirtualVoice* const found = change ? voices.Find(change->language, change->program) : nullptr;
        good = good && found;
        if (!found)
            continue;
        auto& singer = voices.At(change->language, change->program);
        singer.name = change->name;
        singer.parameters = change->parameters;
    }
    for (const VirtualVoice& singer : voices.singers)
        if (voices.FindName(singer.language, singer.name) != &singer) {
            for (size_t i = 0; i < before.size(); ++i)
                voices.singers[i].name = before[i].name;
            return false;
        }
    return good;
}

Json ParametersToJson(const Parameters& parameters) {
    Json object = Json::object();
    for (size_t i = 0; i < kParameters; ++i)
        object[kParameterNames[i]] = parameters[i];
    return object;
}

} // namespace

Voices ReadOwnVoices(const Json& file) {
    Voices voices;
    bool good = true;
    for (const Json& entry : List(file, "installed"))
        good = TryInstall(voices, entry, 0, kFirstUserVoice - 1) && good;
    for (const Json& entry : List(file, "virtual")) {
        const auto singer = ReadSinger(entry);
        good = singer && TryAdd(voices, *singer, false) && good;
    }
    Require(good && !voices.singers.empty(), DBM_FILE_ERROR);
    return voices;
}

bool ReadUserVoices(const Json& file, Voices& voices) {
    bool good = Change(voices, List(file, "changed"));
    for (const Json& entry : List(file, "installed"))
        good = TryInstall(voices, entry, kFirstUserVoice, kLastUserVoice) && good;
    for (const Json& entry : List(file, "virtual")) {
        const auto singer = ReadSinger(entry);
        good = singer && TryAdd(voices, *singer, true) && good;
    }
    return good;
}

Json UserVoicesToJson(const Voices& voices, const Voices& own) {
    Json file = {{"installed", Json::array()}, {"virtual", Json::array()}, {"changed", Json::array()}};
    for (const InstalledVoice& voice : voices.installed)
        if (voice.user)
            file["installed"].push_back({{"number", voice.number},
                                         {"engineProgram", voice.engineProgram},
                                         {"name", ToJsonText(voice.name)},
                                         {"description", ToJsonText(voice.description)},
                                         {"parameters", ParametersToJson(voice.parameters)}});
    for (const VirtualVoice& singer : voices.singers) {
        const VirtualVoice* const original = singer.user ? nullptr : own.Find(singer.language, singer.program);
        if (original && *original == singer)
            continue;
        file[original ? "changed" : "virtual"].push_back(
            {{"language", kLanguages[static_cast<size_t>(singer.language)]},
             {"program", singer.program},
             {"voice", singer.voice},
             {"name", ToJsonText(singer.name)},
             {"parameters", ParametersToJson(singer.parameters)}});
    }
    return file;
}

VoiceDefinition ReadVoiceDefinition(const Json& file) {
    const auto voice = ReadInstalled(file, 0);
    Require(voice.has_value(), DBM_FILE_ERROR);
    VoiceDefinition definition{*voice, {}};
    definition.voice.user = true;
    for (const Json& entry : List(file, "languages")) {
        const auto language = Language(entry);
        Require(language && std::count(definition.languages.begin(), definition.languages.end(), *language) == 0,
                DBM_FILE_ERROR);
        definition.languages.push_back(*language);
    }
    Require(!definition.languages.empty(), DBM_FILE_ERROR);
    return definition;
}

} // namespace dbm
