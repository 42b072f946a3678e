/// Installed voices and the singers over them, with the rules that hold between them.
#pragma once

#include "torv/abi/dbm.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace dbm {

constexpr size_t kParameters = 17;
constexpr uint8_t kNeutral = 64;
constexpr uint8_t kMostParameter = 127;
constexpr std::array<const char*, kParameters> kParameterNames{DBM_PARAMETER_NAMES};

using Parameters = std::array<uint8_t, kParameters>;
/// The engine's program that sings this one.
constexpr int32_t EngineProgramOf(int32_t program) {
    const bool isPerson = program >= DBM_FIRST_PERSON && program <= DBM_LAST_PERSON;
    return program % DBM_ENGINE_PROGRAMS + (isPerson ? DBM_FIRST_PERSON : 0);
}

/// The parameter's index, or kParameters when there is none of this name.
size_t ParameterIndex(const std::string& name);

struct InstalledVoice {
    int32_t number = 0;
    int32_t engineProgram = 0;
    bool user = false;
    std::string name;
    std::string description;
    Parameters parameters{};
};

struct VirtualVoice {
    int32_t language = 0;
    int32_t program = 0;
    int32_t voice = 0;
    bool user = false;
    std::string name;
    Parameters parameters{};
    bool operator==(const VirtualVoice&) const = default;
};

struct Voices {
    std::vector<InstalledVoice> installed;
    std::vector<VirtualVoice> singers; ///< in the order in which they are listed

    const VirtualVoice* Find(int32_t language, int32_t program) const;
    const VirtualVoice* FindName(int32_t language, const std::string& name) const;

    // These fail with DBM_NO_SUCH.
    const InstalledVoice& Installed(int32_t number) const;
    VirtualVoice& At(int32_t language, int32_t program);
    const VirtualVoice& At(int32_t language, int32_t program) const;

    /// Fails when the place or the name is taken, or when the engine would sing the place with another program.
    void Add(const VirtualVoice& singer);
    /// Fails with DBM_EXISTS when another singer of the language has the name.
    void Rename(VirtualVoice& singer, const std::string& name) const;
    /// The lowest free program that the engine sings as this one. Fails with DBM_FULL.
    int32_t FreeProgram(int32_t language, int32_t engineProgram) const;
};

} // namespace dbm
