#include "voices.h"

#include "failure.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace dbm {

size_t ParameterIndex(const std::string& name) {
    return static_cast<size_t>(std::find(kParameterNames.begin(), kParameterNames.end(), name) -
                               kParameterNames.begin());
}

const VirtualVoice* Voices::Find(int32_t language, int32_t program) const {
    const auto found = std::find_if(singers.begin(), singers.end(), [&](const VirtualVoice& each) {
        return each.language == language && each.program == program;
    });
    return found == singers.end() ? nullptr : &*found;
}

const VirtualVoice* Voices::FindName(int32_t language, const std::string& name) const {
    const auto found = std::find_if(singers.begin(), singers.end(), [&](const VirtualVoice& each) {
        return each.language == language && each.name == name;
    });
    return found == singers.end() ? nullptr : &*found;
}

const InstalledVoice& Voices::Installed(int32_t number) const {
    const auto found = std::find_if(installed.begin(), installed.end(),
                                    [&](const InstalledVoice& each) { return each.number == number; });
    Require(found != installed.end(), DBM_NO_SUCH);
    return *found;
}

const VirtualVoice& Voices::At(int32_t language, int32_t program) const {
    const VirtualVoice* const found = Find(language, program);
    Require(found, DBM_NO_SUCH);
    return *found;
}

VirtualVoice& Voices::At(int32_t language, int32_t program) {
    return const_cast<VirtualVoice&>(std::as_const(*this).At(language, program));
}

void Voices::Add(const VirtualVoice& singer) {
    Require(singer.language >= 0 && singer.language < DBM_LANGUAGES, DBM_BAD_ARGUMENT);
    Require(singer.program >= 0 && singer.program < DBM_PROGRAMS, DBM_BAD_ARGUMENT);
    Require(EngineProgramOf(singer.program) == Installed(singer.voice).engineProgram, DBM_BAD_ARGUMENT);
    Require(!Find(singer.language, singer.program) && !FindName(singer.language, singer.name), DBM_EXISTS);
    // What came with the library keeps its order, at the front.
    const auto before = [](const VirtualVoice& left, const VirtualVoice& right) {
        const auto rank = [](const VirtualVoice& each) {
            return each.user ? std::tuple(1, each.language, each.program) : std::tuple(0, 0, 0);
        };
        return rank(left) < rank(right);
    };
    singers.insert(std::upper_bound(singers.begin(), singers.end(), singer, before), singer);
}

void Voices::Rename(VirtualVoice& singer, const std::string& name) const {
    const VirtualVoice* const other = FindName(singer.language, name);
    Require(!other || other == &singer, DBM_EXISTS);
    singer.name = name;
}

int32_t Voices::FreeProgram(int32_t language, int32_t engineProgram) const {
    for (int32_t program = engineProgram; program < DBM_PROGRAMS; program += DBM_ENGINE_PROGRAMS)
        if (EngineProgramOf(program) == engineProgram && !Find(language, program))
            return program;
    Fail(DBM_FULL);
}

} // namespace dbm
