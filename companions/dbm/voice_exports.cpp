// The entry points about installed and virtual voices.
#include "session.h"
#include "text_rules.h"

using namespace dbm;

namespace {

std::unique_ptr<ParametersOut> DescribeParameters(const std::string& name, const Parameters& parameters) {
    std::vector<std::pair<std::string, std::string>> pairs{{DBM_VOICE_NAME, name}};
    for (size_t i = 0; i < kParameters; ++i)
        pairs.emplace_back(kParameterNames[i], std::to_string(parameters[i]));
    return std::make_unique<ParametersOut>(std::move(pairs), [](const auto& pair) {
        return DBMTextPair{pair.first.c_str(), pair.second.c_str()};
    });
}

} // namespace

COMPANION_EXPORT int32_t DBM_CALL DBM_AddVoice(const char* file) {
    return WithSession([&](Session& session) { session.voices.Install(TakenPath(file)); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_DeleteVoice(int32_t voice) {
    return WithSession([&](Session& session) { session.voices.Uninstall(voice); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_CreateVirtualVoice(int32_t language, int32_t voice, const char* name,
                                                         int32_t* program) {
    return WithSession([&](Session& session) {
        Require(program, DBM_BAD_ARGUMENT);
        *program = session.voices.Create(language, voice, TakenName(name));
    });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_GetVirtualVoiceName(int32_t language, int32_t program, char* buffer,
                                                          int32_t size) {
    return WithSession(
        [&](Session& session) { CopyText(session.voices.All().At(language, program).name, buffer, size); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_DeleteVirtualVoice(int32_t language, int32_t program) {
    return WithSession([&](Session& session) { session.voices.Delete(language, program); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_CopyVirtualVoice(int32_t language, int32_t program, const char* name,
                                                       int32_t* newProgram) {
    return WithSession([&](Session& session) {
        Require(newProgram, DBM_BAD_ARGUMENT);
        *newProgram = session.voices.Copy(language, program, TakenName(name));
    });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_GetVirtualVoiceParameters(int32_t language, int32_t program,
                                                                const DBMVoiceParameters** result) {
    return WithSession([&](Session& session) {
        Require(result, DBM_BAD_ARGUMENT);
        const VirtualVoice& singer = session.voices.All().At(language, program);
        session.singerParameters = DescribeParameters(singer.name, singer.parameters);
        *result = session.singerParameters->Get();
    });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_SetVirtualVoiceParameters(int32_t language, int32_t program,
                                                                const DBMTextPair* pairs) {
    return WithSession([&](Session& session) { session.voices.SetParameters(language, program, pairs); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_MoveVirtualVoice(int32_t language, int32_t program, int32_t toLanguage,
                                                       int32_t toProgram) {
    return WithSession([&](Session& session) { session.voices.Move(language, program, toLanguage, toProgram); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_SetVirtualVoiceName(int32_t language, int32_t program, const char* name) {
    return WithSession([&](Session& session) { session.voices.Rename(language, program, TakenName(name)); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_GetVoice(int32_t voice, const DBMInstalledVoice** result) {
    return WithSession([&](Session& session) {
        Require(result, DBM_BAD_ARGUMENT);
        session.voice = std::make_unique<InstalledOut>(
            std::vector{session.voices.All().Installed(voice)}, [](const InstalledVoice& each) {
                return DBMInstalledVoice{each.number, each.engineProgram, each.user, each.name.c_str(),
                                         each.description.c_str()};
            });
        *result = &session.voice->First();
    });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_GetVoiceParameters(int32_t voice, const DBMVoiceParameters** result) {
    return WithSession([&](Session& session) {
        Require(result, DBM_BAD_ARGUMENT);
        const InstalledVoice& installed = session.voices.All().Installed(voice);
        session.voiceParameters = DescribeParameters(installed.name, installed.parameters);
        *result = session.voiceParameters->Get();
    });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_GetAllVoice(const DBMVoiceList** result) {
    return WithSession([&](Session& session) {
        Require(result, DBM_BAD_ARGUMENT);
        session.allVoices = std::make_unique<VoicesOut>(session.voices.All().singers, [](const VirtualVoice& each) {
            return DBMVoice{each.language, each.program, each.voice, each.user, each.name.c_str()};
        });
        *result = session.allVoices->Get();
    });
}
