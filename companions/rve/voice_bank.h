#pragma once

#include "bank/bank_format.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace rve {

/// What a recorded person's sounds are like: a view of a bank's bytes, which outlive it.
class VoiceBank {
public:
    /// Nothing is wrong, or what is: all that the bytes say is checked here, so that nothing else has to be.
    enum class Fault { None, NoBank, WrongVersion, Cut, Damaged };
    Fault Open(const unsigned char* bytes, size_t size);
    bool IsOpen() const { return m_frames != nullptr; }

    static constexpr int kSilence = 0;
    /// A phone by its name; kSilence for an unknown one.
    int PhoneNamed(std::string_view name) const;

    /// A phone as it is spoken between two others.
    struct Sequence {
        int stateFrames[bank::kStates] = {};
        int frameCount = 0;
        const uint16_t* frames = nullptr;
    };
    /// None (no frames) for silence, and for numbers that name no phone.
    Sequence SequenceOf(int before, int phone, int after) const;
    const bank::Frame& FrameAt(int number) const { return m_frames[number]; }

private:
    static bool HoldsTogether(const bank::Header& header, const uint32_t* places, const uint16_t* sequences);

    const bank::PhoneName* m_names = nullptr;
    const bank::Frame* m_frames = nullptr;
    const uint32_t* m_places = nullptr;
    const uint16_t* m_sequences = nullptr;
    int m_phones = 0;
};

} // namespace rve
