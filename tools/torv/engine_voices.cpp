#include "engine_voices.h"

#include <iterator>

namespace {

constexpr int kFirstPerson = 96;
constexpr int kLastPerson = 111;

int ProgramOf(DWORD singer) { return torv::VariationFromID(singer) & 0xFF; }

} // namespace

EngineVoice EngineVoiceOf(DWORD singer) {
    // Both kinds have a woman, a tenor, a child and a low voice, in this order.
    constexpr EngineVoice kSynthetic[] = {{false, 60, 84}, {false, 48, 72}, {false, 60, 84}, {false, 40, 64}};
    constexpr EngineVoice kPersons[] = {{true, 53, 77}, {true, 46, 69}, {true, 53, 77}, {true, 41, 64}};
    const int program = ProgramOf(singer);
    const bool isPerson = program >= kFirstPerson && program <= kLastPerson;
    return (isPerson ? kPersons : kSynthetic)[program % std::size(kPersons)];
}

std::string KeyName(int key) {
    constexpr const char* kNames[] = {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};
    return kNames[key % 12] + std::to_string(key / 12 - 1);
}
