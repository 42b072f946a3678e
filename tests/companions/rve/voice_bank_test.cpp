#include "bank/colours.h"
#include "bank_file.h"
#include "voice_bank.h"

#include <doctest/doctest.h>

#include <sstream>

using rve::VoiceBank;

namespace {

VoiceBank::Fault FaultOf(const std::vector<unsigned char>& bytes) {
    VoiceBank bank;
    const VoiceBank::Fault fault = bank.Open(bytes.data(), bytes.size());
    CHECK(bank.IsOpen() == (fault == VoiceBank::Fault::None));
    return fault;
}

/// With a check sum that is right again.
std::vector<unsigned char> Signed(std::vector<unsigned char> bytes) {
    const uint32_t check =
        rve::bank::CheckSum(bytes.data() + sizeof(rve::bank::Header), bytes.size() - sizeof(rve::bank::Header));
    std::memcpy(bytes.data() + offsetof(rve::bank::Header, check), &check, sizeof check);
    return bytes;
}

} // namespace

TEST_CASE("a bank: what it says of a phone between others") {
    const auto bytes = SmallBank();
    VoiceBank bank;
    REQUIRE(bank.Open(bytes.data(), bytes.size()) == VoiceBank::Fault::None);
    CHECK(bank.PhoneNamed("aa") == 1);
    for (const char* nobody : {"a", "aaa", "", "pau", "much too long"})
        CHECK(bank.PhoneNamed(nobody) == VoiceBank::kSilence);
    const VoiceBank::Sequence alone = bank.SequenceOf(1, 1, 1), last = bank.SequenceOf(1, 1, 0);
    CHECK(alone.frameCount == 3);
    CHECK(alone.frames[2] == 2);
    CHECK(bank.FrameAt(alone.frames[2]).cepstrum[0] == 2000);
    CHECK(last.frameCount == 2);
    CHECK(last.stateFrames[0] == 0);
    CHECK(last.stateFrames[1] == 2);
    CHECK(last.frames[0] == 2);
    for (const int nobody : {-1, 2, 64})
        CHECK(bank.SequenceOf(nobody, 1, nobody).frameCount == 0);
    CHECK(bank.SequenceOf(1, 0, 1).frameCount == 0);
}

TEST_CASE("a bank that is none, of another version, cut or changed is told apart and not opened") {
    const auto bytes = SmallBank();
    for (size_t size = 0; size < bytes.size(); ++size) {
        CAPTURE(size);
        const auto expected = size < 8 ? VoiceBank::Fault::NoBank : VoiceBank::Fault::Cut;
        CHECK(FaultOf({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)}) == expected);
    }
    auto longer = bytes;
    longer.push_back(0);
    CHECK(FaultOf(longer) == VoiceBank::Fault::Damaged);
    for (size_t bit = 0; bit < bytes.size() * 8; ++bit) {
        auto changed = bytes;
        changed[bit / 8] = static_cast<unsigned char>(changed[bit / 8] ^ 1 << bit % 8);
        CHECK(FaultOf(changed) != VoiceBank::Fault::None);
    }
    auto newer = bytes;
    newer[8] = 2;
    CHECK(FaultOf(newer) == VoiceBank::Fault::WrongVersion);
}

TEST_CASE("a bank whose check sum is right is still not believed: places and frames lie inside it") {
    const auto bytes = SmallBank();
    const size_t places = sizeof(rve::bank::Header) + 2 * 8 + 3 * 64, sequences = places + 8 * 4;
    struct Row {
        const char* what;
        size_t at;
        unsigned char value;
    };
    for (const Row& row :
         {Row{"a place behind the end", places + 4 * 4, 7}, Row{"a sequence that runs out", places + 4 * 4, 5},
          Row{"a frame that is none", sequences + 2, 3}, Row{"more frames than there are", sequences, 31}}) {
        CAPTURE(row.what);
        auto changed = bytes;
        changed[row.at] = row.value;
        const auto fault = FaultOf(Signed(changed));
        CHECK(fault == VoiceBank::Fault::Damaged);
    }
    CHECK(FaultOf(Signed(bytes)) == VoiceBank::Fault::None);
}

TEST_CASE("a bank's colours: what each state of a phone gains, and which line is wrong") {
    const auto read = [](const std::string& text) {
        std::istringstream stream(text);
        return ReadColours(stream, {"pau", "aa", "s"});
    };
    const Colours colours = read("# hundredths\n\naa 2 -25 3\n s 0 100\n aa 0\n");
    REQUIRE(colours.size() == 3);
    const Cepstrum& aa = colours.at({"aa", 2});
    CHECK(aa[0] == 0); // the level
    CHECK(aa[1] == doctest::Approx(-0.25));
    CHECK(aa[2] == doctest::Approx(0.03));
    CHECK(aa[3] == 0);
    std::string full = "aa 1";
    for (int i = 1; i < rve::bank::kCoefficients; ++i)
        full += " 1";
    CHECK(read(full).at({"aa", 1}).back() == doctest::Approx(0.01));
    for (const std::string& wrong : {std::string("x 0 1"), std::string("aa 1 4\naa 1 5"), std::string("aa 1 5 b"),
                                     std::string("aa 3"), std::string("aa -1"), std::string("aa"), full + " 1"}) {
        CAPTURE(wrong);
        const std::string line = wrong.find('\n') == std::string::npos ? "line 2" : "line 3";
        try {
            read("s 0 1\n" + wrong);
            FAIL("nothing was told");
        } catch (const std::runtime_error& error) {
            CHECK(std::string(error.what()).find(line) != std::string::npos);
        }
    }
}
