#include "key_names.h"

std::string NameOfKey(int key) {
    constexpr const char* kNames[] = {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};
    return kNames[key % 12] + std::to_string(key / 12 - 1);
}
