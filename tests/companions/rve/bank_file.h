#pragma once

#include "bank/bank_format.h"

#include <cstring>
#include <vector>

/// A small bank: silence and "aa", which is spoken one way alone and another way before silence.
inline std::vector<unsigned char> SmallBank() {
    namespace bank = rve::bank;
    std::vector<unsigned char> bytes(sizeof(bank::Header));
    const auto append = [&bytes](const auto& value) {
        const auto* const begin = reinterpret_cast<const unsigned char*>(&value);
        bytes.insert(bytes.end(), begin, begin + sizeof value);
    };
    append(bank::PhoneName{"pau"});
    append(bank::PhoneName{"aa"});
    for (int i = 0; i < 3; ++i) {
        bank::Frame frame{};
        frame.cepstrum[0] = static_cast<int16_t>(1000 * i);
        frame.formants[0] = 700;
        append(frame);
    }
    for (const uint32_t place : {~0U, ~0U, ~0U, ~0U, 0U, 0U, 4U, 0U}) // phone, before, after
        append(place);
    for (const uint16_t word : {1 | 1 << 5 | 1 << 10, 0, 1, 2, 0 | 2 << 5, 2, 1})
        append(word);
    bank::Header header{{}, bank::kVersion, static_cast<uint32_t>(bytes.size()), 0, 2, 3, 7};
    std::memcpy(header.magic, bank::kMagic, sizeof header.magic);
    header.check = bank::CheckSum(bytes.data() + sizeof header, bytes.size() - sizeof header);
    std::memcpy(bytes.data(), &header, sizeof header);
    return bytes;
}
