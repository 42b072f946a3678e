#include "voice_store.h"

#include "failure.h"
#include "folders.h"
#include "text_rules.h"
#include "voice_json.h"

#include <algorithm>

namespace dbm {

namespace {

uint8_t ParameterValue(const std::string& text) {
    Require(!text.empty() && text.size() <= 3 && text.find_first_not_of("0123456789") == std::string::npos,
            DBM_BAD_ARGUMENT);
    const int value = std::stoi(text);
    Require(value <= kMostParameter, DBM_BAD_ARGUMENT);
    return static_cast<uint8_t>(value);
}

void RemoveSinger(Voices& voices, int32_t language, int32_t program) {
    Require(voices.At(language, program).user, DBM_READ_ONLY);
    std::erase_if(voices.singers,
                  [&](const VirtualVoice& each) { return each.language == language && each.program == program; });
}

} // namespace

VoiceStore::VoiceStore(const std::string& ownFolder, const std::string& userFolder)
    : m_own(ReadOwnVoices(ReadJson(Join(ownFolder, "voices.json")))), m_voices(m_own),
      m_file(Join(userFolder, "voices.json")) {
    Read();
}

void VoiceStore::Read() {
    const auto file = m_file.LoadChanged({"installed", "virtual", "changed"});
    if (!file)
        return;
    Voices voices = m_own;
    if (!ReadUserVoices(*file, voices))
        m_file.KeepCopy();
    std::swap(m_voices, voices);
}

template <typename Edit>
void VoiceStore::Change(Edit edit) {
    const torv::SaveTurn turn = m_file.TakeTurn();
    Read();
    Voices changed = m_voices;
    edit(changed);
    m_file.Save(UserVoicesToJson(changed, m_own));
    std::swap(m_voices, changed);
}

void VoiceStore::Install(const std::string& definitionFile) {
    VoiceDefinition definition = ReadVoiceDefinition(ReadJson(definitionFile));
    Change([&](Voices& voices) {
        int32_t& number = definition.voice.number = kFirstUserVoice;
        while (std::any_of(voices.installed.begin(), voices.installed.end(),
                           [&](const InstalledVoice& each) { return each.number == number; }))
            ++number;
        Require(number <= kLastUserVoice, DBM_FULL);
        voices.installed.push_back(definition.voice);
        for (const int32_t language : definition.languages)
            voices.Add({language, voices.FreeProgram(language, definition.voice.engineProgram), number, true,
                        definition.voice.name, definition.voice.parameters});
    });
}

void VoiceStore::Uninstall(int32_t voice) {
    Change([&](Voices& voices) {
        Require(voices.Installed(voice).user, DBM_READ_ONLY);
        std::erase_if(voices.singers, [&](const VirtualVoice& each) { return each.voice == voice; });
        std::erase_if(voices.installed, [&](const InstalledVoice& each) { return each.number == voice; });
    });
}

template <typename Make>
int32_t VoiceStore::AddAnywhere(Make make) {
    VirtualVoice singer;
    Change([&](Voices& voices) {
        singer = make(voices);
        singer.program = voices.FreeProgram(singer.language, voices.Installed(singer.voice).engineProgram);
        voices.Add(singer);
    });
    return singer.program;
}

int32_t VoiceStore::Create(int32_t language, int32_t voice, const std::string& name) {
    return AddAnywhere([&](const Voices& voices) {
        return VirtualVoice{language, 0, voice, true, name, voices.Installed(voice).parameters};
    });
}

int32_t VoiceStore::Copy(int32_t language, int32_t program, const std::string& name) {
    return AddAnywhere([&](const Voices& voices) {
        const VirtualVoice& original = voices.At(language, program);
        return VirtualVoice{language, 0, original.voice, true, name, original.parameters};
    });
}

void VoiceStore::Delete(int32_t language, int32_t program) {
    Change([&](Voices& voices) { RemoveSinger(voices, language, program); });
}

void VoiceStore::Move(int32_t language, int32_t program, int32_t toLanguage, int32_t toProgram) {
    Change([&](Voices& voices) {
        VirtualVoice singer = voices.At(language, program);
        Require(!voices.Find(toLanguage, toProgram), DBM_EXISTS);
        RemoveSinger(voices, language, program);
        singer.language = toLanguage;
        singer.program = toProgram;
        voices.Add(singer);
    });
}

void VoiceStore::Rename(int32_t language, int32_t program, const std::string& name) {
    Change([&](Voices& voices) { voices.Rename(voices.At(language, program), name); });
}

void VoiceStore::SetParameters(int32_t language, int32_t program, const DBMTextPair* pairs) {
    Require(pairs, DBM_BAD_ARGUMENT);
    Change([&](Voices& voices) {
        VirtualVoice& singer = voices.At(language, program);
        for (; pairs->name; ++pairs) {
            const std::string name = Taken(pairs->name);
            if (name == DBM_VOICE_NAME) {
                voices.Rename(singer, TakenName(pairs->value));
                continue;
            }
            const size_t index = ParameterIndex(name);
            Require(index < kParameters, DBM_BAD_ARGUMENT);
            singer.parameters[index] = ParameterValue(Taken(pairs->value));
        }
    });
}

} // namespace dbm
