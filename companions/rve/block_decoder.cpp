#include "block_decoder.h"

#include "recorded_persons.h"

#include <algorithm>
#include <string_view>

namespace rve {

namespace {

constexpr double kTicksToMilliseconds = 500.0 / 480; // an advancement's tick is one at 120 beats a minute
/// What everybody gets who did not choose: such a consonant has its natural length.
constexpr int kUnchosenAdvancement = 64;
/// All that is ahead of a vowel and was not chosen takes at most this share of the note, lest notes swallow others.
constexpr double kMostOnset = 0.6;
/// A person's neutral vowel that is held is taken for others: consonants after it are longer, and leave it less time.
/// Synthetic voices lose by it.
constexpr double kAfterNeutral = 1.3;

/// The seventeen voice controls by their selectors, which are not evenly spaced; -1 for any other number.
int VoiceControlOf(int selector) {
    if (selector == 0x70)
        return 16;
    const int group = selector / 16 - 3;
    const int place = selector % 16;
    return group >= 0 && group < 4 && place < 4 ? group * 4 + place : -1;
}

} // namespace

void BlockDecoder::Reset() {
    m_number = m_open = m_parameter = -1;
    m_characterCount = 0;
    m_language = RVE_JAPANESE;
    m_program = 0;
    m_neutralEnd = kNever;
}

void BlockDecoder::SelectParameter(uint8_t parameter) {
    if (parameter == 0) {
        m_open = m_number;
        m_msb.fill(-1);
        m_lsb.fill(-1);
        m_characterCount = 0;
    }
    m_parameter = m_open >= 0 && m_number == m_open ? parameter : -1;
}

void BlockDecoder::StoreMsb(uint8_t value) {
    m_msb[static_cast<size_t>(m_parameter)] = value;
    if (IsCharacter() && m_characterCount < kMaxCharacters) {
        m_characters[static_cast<size_t>(m_characterCount)] = static_cast<char>(value);
        m_advancements[static_cast<size_t>(m_characterCount)] = -1;
        ++m_characterCount;
    }
}

void BlockDecoder::StoreLsb(uint8_t value) {
    m_lsb[static_cast<size_t>(m_parameter)] = value;
    if (IsCharacter() && m_characterCount > 0)
        m_advancements[static_cast<size_t>(m_characterCount - 1)] = value;
}

Time BlockDecoder::Delay() const { return FromMilliseconds(std::max(Msb(1), 0) * 128 + std::max(Lsb(1), 0)); }

Shape BlockDecoder::ShapeAt(int code) const {
    Shape shape;
    shape.present = Msb(code) >= 0;
    if (!shape.present)
        return shape;
    shape.style = static_cast<uint8_t>(std::max(Lsb(code), 0));
    shape.depth = static_cast<uint8_t>(std::max(Lsb(code + 1), 0));
    shape.duration = static_cast<uint8_t>(std::max(Msb(code + 2), 0));
    return shape;
}

bool BlockDecoder::MakeSegment(Time now, Segment& segment) {
    if (Msb(2) < 0)
        return false;
    segment.note = Msb(2);
    segment.velocity = Msb(3) < 0 ? 64 : Msb(3);
    segment.start = now + Delay();
    const double duration = std::max(Msb(4), 0) * 128 + std::max(Lsb(4), 0);
    segment.end = segment.start + std::max<Time>(FromMilliseconds(duration), 1);
    const int type = std::max(Msb(5), 0);
    segment.begins = (type & 1) != 0;
    segment.ends = (type & 2) != 0;
    segment.attack = ShapeAt(6);
    segment.release = ShapeAt(9);
    segment.transition.present = Msb(15) >= 0;
    segment.transition.style = static_cast<uint8_t>(std::max(Lsb(15), 0));
    segment.transition.duration = static_cast<uint8_t>(segment.transition.present ? std::max(Lsb(16), 0) : 64);
    segment.vibrato = Msb(12) >= 0;
    if (segment.vibrato) {
        const Time length = segment.end - segment.start;
        const int extent = std::max(Lsb(13), 0);
        segment.vibratoBegin = segment.start + length * std::max(Msb(14), 0) / 127;
        segment.vibratoEnd = extent == 0 ? Segment::kForever : segment.vibratoBegin + length * extent / 127;
    }
    PlaceUnits(segment);
    return true;
}

// Consonants before the vowel are laid back to back ahead of the note, those after it back to back before its end.
void BlockDecoder::PlaceUnits(Segment& segment) {
    struct Sound {
        const Phoneme* phoneme;
        int advancement;
    };
    std::array<Sound, Segment::kMaxUnits> sounds;
    int count = 0;
    const int characters = std::min(m_characterCount, std::max(Msb(18), 0) > 0 ? Msb(18) : m_characterCount);
    for (int i = 0; i < characters && count < Segment::kMaxUnits;) {
        // A phoneme reaches to the next character that has an advancement.
        const auto advancementAt = [this](int at) { return int{m_advancements[static_cast<size_t>(at)]}; };
        int next = i + 1;
        while (next < characters && advancementAt(next) < 0)
            ++next;
        std::string_view text(m_characters.data() + i, static_cast<size_t>(next - i));
        int advancement = std::max(advancementAt(i), 0);
        while (!text.empty() && count < Segment::kMaxUnits) {
            size_t length = 0;
            const Phoneme* const phoneme = FindLongest(text, m_language, length);
            if (phoneme)
                sounds[static_cast<size_t>(count++)] = {phoneme, advancement};
            text.remove_prefix(phoneme ? length : 1); // a symbol of no language is passed over
            advancement = 0;
        }
        i = next;
    }
    const bool followsNeutral = segment.start <= m_neutralEnd + kGap;
    if (count == 0) {
        m_neutralEnd = followsNeutral ? segment.end : kNever;
        return;
    }

    const auto begin = sounds.begin();
    const auto end = begin + count;
    auto nucleus = std::find_if(begin, end, [](const Sound& sound) { return IsVowel(*sound.phoneme); });
    auto last = nucleus;
    if (nucleus != end) {
        while (last + 1 != end && IsVowel(*(last + 1)->phoneme))
            ++last;
    } else {
        // Without a vowel the last sonorant carries the note, else the last sound.
        nucleus = end - 1;
        while (nucleus != begin && !IsSonorant(*nucleus->phoneme))
            --nucleus;
        if (!IsSonorant(*nucleus->phoneme))
            nucleus = end - 1;
        last = nucleus;
    }
    const auto isChosen = [](const Sound& sound) {
        return sound.advancement > 0 && sound.advancement != kUnchosenAdvancement;
    };
    const auto lengthOf = [&](const Sound& sound, bool afterVowel) {
        if (isChosen(sound))
            return FromMilliseconds(sound.advancement * kTicksToMilliseconds);
        const double longer = followsNeutral && !afterVowel ? kAfterNeutral : 1;
        return FromMilliseconds(double{NaturalLength(*sound.phoneme, afterVowel)} * longer);
    };
    static const Phoneme* const neutral = FindPhoneme("@", RVE_ENGLISH);
    const VoiceBank* bank = nullptr;
    m_neutralEnd = last->phoneme == neutral && PersonOf(m_program, bank) ? segment.end : kNever;
    const auto add = [&segment](const Sound& sound, Time from, Time to) {
        segment.units[static_cast<size_t>(segment.unitCount++)] = {sound.phoneme, from, to};
    };
    Time natural = 0;
    for (auto sound = begin; sound != nucleus; ++sound)
        natural += sound->advancement > 0 && !isChosen(*sound) ? lengthOf(*sound, false) : 0;
    const double onsetRoom = kMostOnset * static_cast<double>(segment.end - segment.start);
    const double hurry = std::min(1.0, onsetRoom / static_cast<double>(std::max<Time>(natural, 1)));
    const auto onsetLength = [&](const Sound& sound) {
        if (sound.advancement <= 0)
            return Time{0};
        const Time length = lengthOf(sound, false);
        return isChosen(sound) ? length : static_cast<Time>(static_cast<double>(length) * hurry);
    };
    Time at = segment.start;
    for (auto sound = begin; sound != nucleus; ++sound)
        at -= onsetLength(*sound);
    for (auto sound = begin; sound != nucleus; ++sound) {
        const Time length = onsetLength(*sound);
        add(*sound, at, at + length);
        at += length;
    }
    Time coda = 0;
    for (auto sound = last + 1; sound != end; ++sound)
        coda += lengthOf(*sound, true);
    const Time room = (segment.end - segment.start) / 2;
    const double squeeze = coda > room ? static_cast<double>(room) / static_cast<double>(coda) : 1.0;
    const Time codaBegin = segment.end - static_cast<Time>(static_cast<double>(coda) * squeeze);
    const Time vowels = (codaBegin - segment.start) / (last - nucleus + 1);
    for (auto sound = nucleus; sound != last + 1; ++sound) {
        const Time from = segment.start + (sound - nucleus) * vowels;
        add(*sound, from, sound == last ? codaBegin : from + vowels);
    }
    at = codaBegin;
    for (auto sound = last + 1; sound != end; ++sound) {
        const Time length = static_cast<Time>(static_cast<double>(lengthOf(*sound, true)) * squeeze);
        add(*sound, at, at + length);
        at += length;
    }
}

bool BlockDecoder::MakeChange(Time now, bool afterLsb, ControlChange& change) {
    const auto make = [&](Control control, int value) {
        change = {now + Delay(), static_cast<uint8_t>(control), static_cast<int16_t>(value)};
        return true;
    };
    // Bend and its sensitivity have a data LSB, which comes last; the others are whole with their data MSB.
    if (m_open == 0x54)
        return m_parameter == 2 && afterLsb && make(Control::PitchBend, Msb(2) * 128 + Lsb(2));
    if (m_open == 0x67)
        return m_parameter == 2 && !afterLsb && make(Control::BendSensitivity, m_data);
    if (afterLsb)
        return false;
    if (m_open == 0x55 && m_parameter == 3) {
        const int index = VoiceControlOf(Msb(2));
        change = {now + Delay(), static_cast<uint8_t>(static_cast<int>(Control::FirstVoiceControl) + index), m_data};
        return index >= 0;
    }
    if (m_parameter != 2)
        return false;
    switch (m_open) {
    case 0x53:
        m_program = m_data;
        return make(Control::Program, m_data);
    case 0x60:
        m_language = m_data;
        return make(Control::Language, m_data);
    case 0x63:
        return make(Control::Dynamics, m_data);
    case 0x64:
        return make(Control::VibratoRate, m_data);
    case 0x65:
        return make(Control::VibratoDepth, m_data);
    case 0x66:
        return make(Control::TremoloDepth, m_data);
    default:
        return false;
    }
}

} // namespace rve
