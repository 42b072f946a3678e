#include "voice_bank.h"

#include <cstring>

namespace rve {

namespace {

constexpr uint32_t kMostPhones = 64;
constexpr uint32_t kMostFrames = 65536;

int StateFrames(uint16_t counts, int state) { return counts >> (5 * state) & bank::kMostStateFrames; }

int FrameCount(uint16_t counts) {
    int sum = 0;
    for (int state = 0; state < bank::kStates; ++state)
        sum += StateFrames(counts, state);
    return sum;
}

} // namespace

VoiceBank::Fault VoiceBank::Open(const unsigned char* bytes, size_t size) {
    *this = {};
    bank::Header header;
    if (size < sizeof header)
        return size >= sizeof header.magic && std::memcmp(bytes, bank::kMagic, sizeof header.magic) == 0
                   ? Fault::Cut
                   : Fault::NoBank;
    std::memcpy(&header, bytes, sizeof header);
    if (std::memcmp(header.magic, bank::kMagic, sizeof header.magic) != 0)
        return Fault::NoBank;
    if (header.version != bank::kVersion)
        return Fault::WrongVersion;
    if (header.bytes > size)
        return Fault::Cut;
    if (header.phones < 2 || header.phones > kMostPhones || header.frames > kMostFrames ||
        header.sequenceWords > INT32_MAX)
        return Fault::Damaged;
    const uint64_t placeCount = uint64_t{header.phones} * header.phones * header.phones;
    const uint64_t needed = sizeof header + uint64_t{header.phones} * sizeof(bank::PhoneName) +
                            uint64_t{header.frames} * sizeof(bank::Frame) + placeCount * sizeof(uint32_t) +
                            uint64_t{header.sequenceWords} * sizeof(uint16_t);
    if (needed != size || header.bytes != size ||
        bank::CheckSum(bytes + sizeof header, size - sizeof header) != header.check)
        return Fault::Damaged;
    const auto* const names = reinterpret_cast<const bank::PhoneName*>(bytes + sizeof header);
    const auto* const frames = reinterpret_cast<const bank::Frame*>(names + header.phones);
    const auto* const places = reinterpret_cast<const uint32_t*>(frames + header.frames);
    const auto* const sequences = reinterpret_cast<const uint16_t*>(places + placeCount);
    if (!HoldsTogether(header, places, sequences))
        return Fault::Damaged;
    m_names = names;
    m_frames = frames;
    m_places = places;
    m_sequences = sequences;
    m_phones = static_cast<int>(header.phones);
    return Fault::None;
}

/// Every sequence lies inside the bank and names frames that are there.
bool VoiceBank::HoldsTogether(const bank::Header& header, const uint32_t* places, const uint16_t* sequences) {
    const uint64_t placeCount = uint64_t{header.phones} * header.phones * header.phones;
    for (uint64_t i = 0; i < placeCount; ++i) {
        if (places[i] == bank::kNoSequence)
            continue;
        if (places[i] >= header.sequenceWords)
            return false;
        const uint32_t end = places[i] + 1 + static_cast<uint32_t>(FrameCount(sequences[places[i]]));
        if (end > header.sequenceWords)
            return false;
        for (uint32_t k = places[i] + 1; k < end; ++k)
            if (sequences[k] >= header.frames)
                return false;
    }
    return true;
}

int VoiceBank::PhoneNamed(std::string_view name) const {
    for (int i = 0; i < m_phones; ++i) {
        const char* const text = m_names[i].text;
        if (name.size() < sizeof m_names[i].text && std::memcmp(text, name.data(), name.size()) == 0 &&
            text[name.size()] == '\0')
            return i;
    }
    return kSilence;
}

VoiceBank::Sequence VoiceBank::SequenceOf(int before, int phone, int after) const {
    Sequence sequence;
    if (before < 0 || phone < 0 || after < 0 || before >= m_phones || phone >= m_phones || after >= m_phones)
        return sequence;
    const uint32_t place = m_places[(phone * m_phones + before) * m_phones + after];
    if (place == bank::kNoSequence)
        return sequence;
    const uint16_t counts = m_sequences[place];
    for (int state = 0; state < bank::kStates; ++state)
        sequence.stateFrames[state] = StateFrames(counts, state);
    sequence.frameCount = FrameCount(counts);
    sequence.frames = m_sequences + place + 1;
    return sequence;
}

} // namespace rve
