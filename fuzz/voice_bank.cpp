// Any bytes as a voice bank, as they are and with a check sum that fits: one that opens can be asked for everything.
#include "voice_bank.h"

#include <cstring>
#include <vector>

namespace {

void Ask(const unsigned char* bytes, size_t size) {
    rve::VoiceBank bank;
    if (bank.Open(bytes, size) != rve::VoiceBank::Fault::None)
        return;
    int sum = bank.PhoneNamed("aa");
    for (int phone = -1; phone < 65; ++phone)
        for (int other = -1; other < 65; ++other) {
            const auto sequence = bank.SequenceOf(other, phone, 64 - other);
            for (int i = 0; i < sequence.frameCount; ++i)
                sum += bank.FrameAt(sequence.frames[i]).voicing;
        }
    volatile int kept = sum;
    static_cast<void>(kept);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using rve::bank::Header;
    std::vector<unsigned char> bytes(data, data + size); // aligned, as a mapped file is
    Ask(bytes.data(), size);
    if (size >= sizeof(Header)) {
        const auto bytesInAll = static_cast<uint32_t>(size);
        const uint32_t check = rve::bank::CheckSum(bytes.data() + sizeof(Header), size - sizeof(Header));
        std::memcpy(bytes.data() + offsetof(Header, bytes), &bytesInAll, sizeof bytesInAll);
        std::memcpy(bytes.data() + offsetof(Header, check), &check, sizeof check);
        Ask(bytes.data(), size);
    }
    return 0;
}
