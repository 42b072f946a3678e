#include "stage.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <utility>

namespace {

/// The formant near a place: of the peaks of the harmonics' envelope the nearest one, at the top of a parabola (in dB)
/// through its harmonic and the two beside it.
double FormantNear(const std::vector<double>& sound, double f0, double expected) {
    const auto level = [&](int k) { return Db(Tone(sound, k * f0) * k + 1e-9); }; // without the source's 6 dB an octave
    double nearest = 0;
    double l = 0, m = level(1), r = level(2);
    for (int k = 2; k * f0 < 2 * expected; ++k) {
        l = std::exchange(m, std::exchange(r, level(k + 1)));
        if (m < l || m < r)
            continue;
        const double hz = (k + (l - r) / (2 * (l - 2 * m + r))) * f0;
        if (std::abs(hz - expected) < std::abs(nearest - expected))
            nearest = hz;
    }
    return nearest;
}

std::vector<double> Steady(const char* phonemes, int language, int program, int note) {
    Stream stream;
    stream.Value(0x60, language).Value(0x53, program).Note({.note = note, .phonemes = phonemes});
    return Part(Sing(stream), 300, 600);
}

/// The consonant of "X a", sung from 132 ms to the vowel at 200 ms.
std::vector<double> ConsonantSound(const std::string& symbol, int language = 0, const std::string& vowel = "a") {
    Stream stream;
    stream.Value(0x60, language).Note({.startMs = 200, .phonemes = symbol + " " + vowel, .advancement = 65});
    return Sing(stream);
}

} // namespace

TEST_CASE("vowels: the first two formants of men's averages, within 15 %") {
    struct Row {
        int language;
        const char* symbol;
        double f1, f2;
    };
    // English after Peterson and Barney (1952), but for u:, which is said further forward by now; Japanese after Nishi
    // et al. (2008).
    for (const Row& row :
         {Row{1, "i:", 270, 2290}, Row{1, "I", 390, 1990}, Row{1, "e", 530, 1840}, Row{1, "{", 660, 1720},
          Row{1, "Q", 730, 1090}, Row{1, "O:", 570, 840}, Row{1, "U", 440, 1020}, Row{1, "u:", 320, 1100},
          Row{1, "V", 640, 1190}, Row{1, "@r", 490, 1350}, Row{1, "@", 500, 1500}, Row{0, "a", 615, 1182},
          Row{0, "i", 317, 2077}, Row{0, "M", 349, 1171}, Row{0, "e", 437, 1785}, Row{0, "o", 424, 751}}) {
        CAPTURE(std::string(row.symbol));
        const auto sound = Steady(row.symbol, row.language, 1, 33); // A1, 55 Hz: harmonics close enough to tell
        CHECK(std::abs(FormantNear(sound, 55, row.f1) / row.f1 - 1) < 0.15);
        CHECK(std::abs(FormantNear(sound, 55, row.f2) / row.f2 - 1) < 0.15);
    }
    const auto front = Steady("t u:", 1, 1, 33); // and further forward still behind the tongue's tip
    CHECK(Band(front, 1250, 1450) > Band(front, 1000, 1200));
}

TEST_CASE("diphthongs glide from one vowel to the other in their last fifth of a second") {
    Stream stream;
    stream.Value(0x60, 1).Value(0x53, 1).Note({.note = 33, .phonemes = "aI"});
    const auto sound = Sing(stream);
    CHECK(FormantNear(Part(sound, 150, 450), 55, 1270) < 1450);
    CHECK(FormantNear(Part(sound, 640, 700), 55, 2100) > 1800);
}

TEST_CASE("consonants: each manner has its own mark") {
    const auto hiss = [](const std::string& symbol, double from, double to) {
        return Band(Part(ConsonantSound(symbol), 145, 190), from, to);
    };
    CHECK(hiss("s", 5500, 8000) > 3 * hiss("s", 1500, 4000)); // high
    CHECK(hiss("S", 2500, 4000) > 2 * hiss("S", 6000, 9000)); // lower
    CHECK(hiss("C", 3300, 4500) > 2 * hiss("C", 600, 1800));
    CHECK(hiss("h", 200, 5000) > hiss("h", 6000, 9000)); // through the tract

    CHECK(hiss("s", 5000, 7500) > 2 * hiss("s", 8000, 12000));
    const auto high = Part(ConsonantSound("h", 0, "i"), 140, 195); // its vowel's
    CHECK(Band(high, 2000, 2900) > 4 * Band(high, 900, 1500));
    const auto besideVowel = [](const char* symbol) {
        const auto sound = ConsonantSound(symbol);
        return Db(Rms(Part(sound, 145, 190)) / Rms(Part(sound, 260, 300)));
    };
    CHECK(besideVowel("s") == doctest::Approx(-11.5).epsilon(0.15));
    CHECK(besideVowel("h") == doctest::Approx(-16).epsilon(0.2));
    CHECK(besideVowel("m") == doctest::Approx(-5.5).epsilon(0.3));
    CHECK(Band(Part(ConsonantSound("s"), 225, 240), 5000, 8000) < 0.1 * hiss("s", 5000, 8000));

    // Plosives: a closure, then a burst where their place has it.
    struct Burst {
        const char* symbol;
        double from, to;
    };
    for (const Burst& row : {Burst{"t", 3500, 5500}, Burst{"k", 1500, 2400}, Burst{"p", 500, 1400}}) {
        CAPTURE(row.symbol);
        const auto sound = ConsonantSound(row.symbol);
        CHECK(Rms(Part(sound, 138, 170)) < 0.001);
        CHECK(Rms(Part(sound, 182, 196)) > 0.004);
        const auto burst = Part(sound, 180, 198);
        for (const Burst& other : {Burst{"t", 3500, 5500}, Burst{"k", 1500, 2400}, Burst{"p", 500, 1400}})
            if (std::string(other.symbol) != row.symbol)
                CHECK(Band(burst, row.from, row.to) > Band(burst, other.from, other.to));
    }
    const auto ko =
        Part(ConsonantSound("k", 0, "o"), 180, 198); // the velum's lies where the vowel has its second formant
    CHECK(Band(ko, 900, 1300) > Band(ko, 1900, 2300));
    const auto z = ConsonantSound("z"); // voice behind the hiss is muffled
    CHECK(Db(Band(Part(z, 145, 190), 900, 2500) / Band(Part(z, 240, 290), 900, 2500)) < -27);
    // Affricates: a closure, then a longer hiss. Nasals: a low murmur. Taps: a dip. Voiced plosives: a voice bar.
    const auto ts = ConsonantSound("ts");
    CHECK(Rms(Part(ts, 138, 155)) < 0.001);
    CHECK(Band(Part(ts, 170, 195), 5500, 8000) > 0.004);
    const auto m = Part(ConsonantSound("m"), 150, 190);
    CHECK(Band(m, 60, 500) > 3 * Band(m, 700, 3000));
    const auto tap = ConsonantSound("4");
    CHECK(Rms(Part(tap, 166, 180)) < 0.2 * Rms(Part(tap, 240, 270)));
    const auto b = ConsonantSound("b");
    CHECK(Rms(Part(b, 145, 165)) > 0.002);
    CHECK(Rms(Part(b, 145, 165)) < 0.4 * Rms(Part(b, 260, 300)));
    // Glides move: the second formant of "j a" comes down.
    Stream glide;
    glide.Value(0x53, 1).Note({.note = 33, .startMs = 250, .phonemes = "j a", .advancement = 100});
    const auto ja = Sing(glide);
    const auto slant = [&](double from, double to) {
        return Band(Part(ja, from, to), 1900, 2500) / Band(Part(ja, from, to), 900, 1500);
    };
    CHECK(slant(170, 230) > 4 * slant(400, 460));
}

TEST_CASE(
    "sounds lean on their neighbours: breath after a burst, muffled closures, vowels that move to what ends them") {
    const auto english = [](const char* phonemes) {
        Stream stream;
        stream.Value(0x60, 1).Value(0x53, 1).Note({.note = 45, .startMs = 300, .phonemes = phonemes});
        return Sing(stream, 1.0);
    };
    // th: 53 ms of closure, 22 of burst, 55 of breath without a tone, then the vowel at 300 ms.
    const auto aspirated = Part(english("th Q"), 250, 296), plain = english("t Q");
    CHECK(Rms(aspirated) > 0.003);
    CHECK(Band(aspirated, 400, 1200) > 4 * Band(aspirated, 2000, 2800)); // through the mouth that opens for the vowel
    CHECK(Tone(aspirated, 110) < 0.1 * Tone(Part(english("th Q"), 340, 386), 110));
    CHECK(Rms(Part(plain, 225, 270)) < 0.001);

    const auto closure = Part(english("b Q"), 235, 275);
    CHECK(Band(closure, 60, 400) > 30 * Band(closure, 900, 3000));

    // Before d the second formant of Q rises towards 1500 Hz in the vowel's last 50 ms, which end at 770 ms.
    const auto ended = english("Q d"), open = english("Q");
    const auto slant = [](const std::vector<double>& sound, double from, double to) {
        return Band(Part(sound, from, to), 1250, 1700) / Band(Part(sound, from, to), 800, 1150);
    };
    CHECK(slant(ended, 745, 770) > 4 * slant(open, 745, 770));
    CHECK(slant(ended, 650, 700) == doctest::Approx(slant(open, 650, 700)).epsilon(0.2));

    Stream joined; // the vowel ends where the next one's first sound begins, at 625 ms
    joined.Value(0x60, 1).Value(0x53, 1).Note({.note = 45, .lengthMs = 600, .phonemes = "Q", .type = 1});
    joined.Note({.note = 45, .startMs = 700, .lengthMs = 200, .phonemes = "d Q", .type = 2});
    CHECK(slant(Sing(joined, 0.8), 600, 624) > 4 * slant(open, 745, 770));

    // Beside an m the nose takes some of a vowel.
    const auto nasal = [&](const char* phonemes, double from, double to) {
        const auto part = Part(english(phonemes), from, to);
        return Db(Tone(part, 440) / Tone(part, 220));
    };
    CHECK(nasal("m Q", 310, 340) < nasal("b Q", 310, 340) - 6);
    CHECK(nasal("Q m", 700, 725) < nasal("Q m", 500, 550) - 4);
    CHECK(nasal("m Q", 310, 340) > -17); // and soon less

    // An r at the end of "I@" brings the third formant down from 2550 to 1690 Hz.
    const auto ear = english("I@");
    const auto low = [&](double from, double to) {
        return Band(Part(ear, from, to), 1550, 1850) / Band(Part(ear, from, to), 2300, 2700);
    };
    CHECK(low(850, 895) > 4 * low(500, 700));
}

TEST_CASE("noise: as strong at every rate") {
    for (const char* sound : {"s a", "h a"}) {
        Stream stream;
        stream.Note({.startMs = 200, .phonemes = sound, .advancement = 127}); // 132 ms
        const auto hiss = [&](uint32_t rate) { return Db(Rms(Part(Sing(stream, 0.8, rate), 90, 190, rate))); };
        CHECK(std::abs(hiss(96000) - hiss(44100)) < 1.5);
        CHECK(std::abs(hiss(48000) - hiss(44100)) < 1.5);
    }
}

TEST_CASE("loudness: dynamics and velocity by their decibels, monotonic, and never at full scale") {
    const auto level = [](int dynamics, int velocity) {
        Stream stream;
        stream.Value(0x63, dynamics).Note({.note = 57, .velocity = velocity});
        return Db(Rms(Part(Sing(stream), 300, 600)));
    };
    double previous = -200;
    CHECK(level(12, 64) - level(6, 64) == doctest::Approx(7.2).epsilon(0.1)); // and below 12 to silence
    CHECK(level(40, 64) - level(12, 64) == doctest::Approx(5.6).epsilon(0.1));
    CHECK(level(0, 64) < -120);
    for (const int dynamics : {1, 20, 40, 60, 72, 90, 110, 127}) {
        const double now = level(dynamics, 64);
        CHECK(now > previous + 1);
        previous = now;
    }
    CHECK(level(92, 64) - level(72, 64) == doctest::Approx(4.0).epsilon(0.1));  // 0.2 dB a unit
    CHECK(level(72, 114) - level(72, 64) == doctest::Approx(4.0).epsilon(0.1)); // 0.08 dB a unit
    double peak = 0;
    for (const int program : {0, 1, 2, 3})
        for (const char* vowel : {"a", "i", "u:", "O:"})
            for (const int note : {36, 55, 72, 96}) {
                Stream stream;
                stream.Value(0x53, program).Value(0x63, 127).Note({.note = note, .phonemes = vowel, .velocity = 127});
                for (const double x : Sing(stream, 0.4))
                    peak = std::max(peak, std::abs(x));
            }
    CHECK(peak < 0.9999);
    CHECK(peak > 0.5);
}

TEST_CASE("loud is bright: half a decibel at 3 kHz more for each of loudness") {
    const auto highs = [](int dynamics) {
        Stream stream;
        stream.Value(0x53, 1).Value(0x63, dynamics).Note({.note = 45, .phonemes = "a"});
        const auto sound = Part(Sing(stream), 300, 600);
        return Db(Band(sound, 2500, 3500));
    };
    const double quiet = highs(22), usual = highs(72), loud = highs(122); // 10 dB apart
    for (const double step : {usual - quiet, loud - usual})
        CHECK(step == doctest::Approx(15).epsilon(0.12));
}

TEST_CASE("vibrato: rate and depth as told, where told; tremolo") {
    // 64 is 5.56 Hz; 60 is 60 cents either way.
    Stream stream;
    stream.Value(0x64, 64).Value(0x65, 60);
    stream.Note({.note = 69, .startMs = 100, .lengthMs = 2000, .vibratoStart = 32, .vibratoExtent = 0});
    const auto sound = Sing(stream, 2.0);
    CHECK(std::abs(Cents(PitchOf(Part(sound, 250, 500), 440), 440)) < 3);
    double lowest = 0, highest = 0;
    int crossings = 0;
    double last = 0;
    for (double t = 1000; t < 1900; t += 5) {
        const auto window = Part(sound, t, t + 25);
        const double cents = Cents(PitchOf(window, 440), 440);
        lowest = std::min(lowest, cents);
        highest = std::max(highest, cents);
        crossings += last < 0 && cents >= 0;
        last = cents;
    }
    CHECK(highest == doctest::Approx(60).epsilon(0.15));
    CHECK(lowest == doctest::Approx(-60).epsilon(0.15));
    CHECK(crossings == 5); // turns in 900 ms
    Stream brief;          // from 226 to 541 ms
    brief.Value(0x65, 60).Note({.note = 69, .lengthMs = 1000, .vibratoStart = 16, .vibratoExtent = 40});
    const auto ended = Sing(brief, 1.1);
    highest = 0;
    for (double t = 250; t < 500; t += 5)
        highest = std::max(highest, std::abs(Cents(PitchOf(Part(ended, t, t + 25), 440), 440)));
    CHECK(highest > 50);
    for (double t = 850; t < 1050; t += 20)
        CHECK(std::abs(Cents(PitchOf(Part(ended, t, t + 25), 440), 440)) < 15);

    const auto swing = [](int depth) {
        Stream tremolo;
        tremolo.VoiceControl(13, 0).Value(0x66, depth).Note({.note = 57, .lengthMs = 1000});
        const auto sung = Sing(tremolo, 1.0);
        double low = 1, high = 0;
        for (double t = 300; t < 900; t += 10) {
            const double rms = Rms(Part(sung, t, t + 20));
            low = std::min(low, rms);
            high = std::max(high, rms);
        }
        return Db(high / low);
    };
    CHECK(swing(0) < 1);
    CHECK(swing(0) > 0.7);                                  // a singer's own
    CHECK(swing(64) == doctest::Approx(5.4).epsilon(0.08)); // 1 +- 0.3
    CHECK(swing(127) > 8);
}

TEST_CASE("shapes: attacks and releases take the time they are told, styles stretch and tighten") {
    const auto rise = [](int code, int duration, const char* phonemes = "a") {
        Stream stream;
        stream.Note({.note = 69,
                     .startMs = 100,
                     .phonemes = phonemes,
                     .attackCode = code,
                     .attackDepth = 0,
                     .attackDuration = duration});
        const auto sound = Sing(stream);
        return OnsetOf(Part(sound, 100, 700), 0.9 * Rms(Part(sound, 400, 600)));
    };
    CHECK(rise(0, 0) < 20);
    CHECK(rise(0, 127) > rise(0, 20) + 30);
    CHECK(rise(0, 127, "m a") < rise(0, 127) - 30); // it begins with the m
    CHECK(rise(1, 64) > 1.5 * rise(0, 64));
    CHECK(rise(2, 64) < rise(0, 64));
    Stream strong, scooped;
    strong.Note({.attackCode = 2, .attackDepth = 127, .attackDuration = 20});
    const auto struck = Sing(strong);
    CHECK(Db(Rms(Part(struck, 112, 132)) / Rms(Part(struck, 450, 600))) == doctest::Approx(4.8).epsilon(0.2));
    scooped.Note({.note = 69, .attackCode = 0, .attackDepth = 127});
    CHECK(Cents(PitchOf(Part(Sing(scooped), 110, 140), 440), 440) < -30);
    CHECK(Cents(PitchOf(Part(Sing(scooped), 180, 210), 440), 440) > -10);
    Stream faded; // its tract stays as it was
    faded.VoiceControl(16, 127);
    faded.Note({.note = 45, .lengthMs = 400, .phonemes = "a i", .releaseCode = 0, .releaseDuration = 90});
    const auto colour = [tail = Sing(faded)](double from, double to) {
        return Db(Band(Part(tail, from, to), 1500, 3500) / Band(Part(tail, from, to), 200, 1200));
    };
    CHECK(std::abs(colour(550, 590) - colour(450, 490)) < 2);
    Stream follows; // and what comes next has its own from its beginning
    follows.Value(0x60, 1);
    follows.Note({.note = 64, .lengthMs = 400, .phonemes = "m i:", .releaseCode = 0, .releaseDuration = 60});
    follows.Note({.note = 64, .startMs = 700, .phonemes = "Asp"});
    const auto breath = Sing(follows, 1.2);
    CHECK(Rms(Part(breath, 700, 760)) < 1.2 * Rms(Part(breath, 850, 950)));
    const auto rings = [](int code, int duration) {
        Stream stream;
        stream.Note({.startMs = 100, .lengthMs = 300, .releaseCode = code, .releaseDuration = duration});
        return Rms(Part(Sing(stream), 415, 435));
    };
    CHECK(rings(0, 127) > 2 * rings(0, 10));
    Stream released; // 26 dB in 129 ms
    released.Note({.lengthMs = 300, .releaseCode = 0, .releaseDuration = 127});
    const auto falls = Sing(released);
    CHECK(Db(Rms(Part(falls, 515, 530)) / Rms(Part(falls, 300, 380))) == doctest::Approx(-24.5).epsilon(0.15));
    CHECK(rings(1, 64) > rings(0, 64));
    CHECK(rings(2, 64) < rings(0, 64));
}

TEST_CASE("voices and voice controls: each changes what it is said to change") {
    std::vector<double> centres;
    for (const int program : {0, 1, 2, 3}) {
        const auto sound = Steady("a", 0, program, 45);
        double weighted = 0, sum = 0;
        for (int k = 1; k < 40; ++k) {
            const double tone = Tone(sound, 110.0 * k);
            weighted += tone * k;
            sum += tone;
        }
        centres.push_back(weighted / sum);
        const double breath = Tone(sound, 1815) + Tone(sound, 2255) + Tone(sound, 2695) + Tone(sound, 3465);
        CHECK(Db(breath / Rms(sound)) == doctest::Approx(-45).epsilon(0.1));
    }
    CHECK(centres[2] > centres[0]); // child, woman, man, bass
    CHECK(centres[0] > centres[1]);
    CHECK(centres[1] > centres[3]);

    Stream plain; // the first voice sings where none is named
    plain.Note({.note = 45, .phonemes = "a"});
    CHECK(Part(Sing(plain), 300, 600) == Steady("a", 0, 0, 45));

    const auto with = [](int control, int value) {
        Stream stream;
        stream.Value(0x53, 1).VoiceControl(control, value).Note({.note = 33, .phonemes = "a"});
        return Part(Sing(stream), 300, 600);
    };
    const auto neutral = with(0, 64);
    const double places[] = {615, 1182, 2440};
    for (int r = 0; r < 3; ++r) {
        CAPTURE(r);
        const double place = places[r];
        if (r < 2) { // a quarter octave up and down
            CHECK(FormantNear(with(r * 3, 127), 55, place * 1.19) > place * 1.08);
            CHECK(FormantNear(with(r * 3, 0), 55, place / 1.19) < place / 1.08);
        }
        const auto peak = [place](const std::vector<double>& sound) { return Band(sound, place - 100, place + 100); };
        const double before = peak(neutral) / Rms(neutral);
        const auto wide = with(r * 3 + 1, 127);
        CHECK(peak(wide) / Rms(wide) < before); // a wider band is a lower peak
        const auto strong = with(r * 3 + 2, 127);
        const auto low = [](const std::vector<double>& sound) { return Band(sound, 40, 250); };
        CHECK(Db(peak(strong) / low(strong) * low(neutral) / peak(neutral)) > 7);
    }
    const auto fourth = with(9, 127);
    CHECK(Band(fourth, 3900, 4500) / Rms(fourth) > Band(neutral, 3900, 4500) / Rms(neutral));
    const auto high = [](const std::vector<double>& sound) { return Band(sound, 2000, 6000) / Rms(sound); };
    CHECK(high(with(12, 127)) > 1.1 * high(with(12, 0)));                     // harmonics
    CHECK(Db(high(with(14, 127)) / high(with(14, 0))) > 6);                   // brightness
    CHECK(FormantNear(with(16, 127), 55, 615 * 1.19) > 615 * 1.08);           // gender: the whole tract shorter
    CHECK(Band(with(16, 127), 5200, 5500) > Band(with(16, 127), 4650, 4900)); // and its upper resonances
    CHECK(Band(with(15, 127), 560, 670) / Rms(with(15, 127)) >
          1.1 * Band(neutral, 560, 670) / Rms(neutral)); // clearness
    const auto between = [](const std::vector<double>& sound) {
        return Tone(sound, 55 * 20.5) + Tone(sound, 55 * 24.5);
    };
    CHECK(Db(between(with(13, 127)) / between(neutral)) == doctest::Approx(18).epsilon(0.2)); // noise between harmonics
    CHECK(Db(between(with(13, 0)) / Rms(neutral)) < -60);
    const auto breath = [](int note, const char* vowel, double from, double to) { // no harmonic of an A lies there
        const auto sound = Steady(vowel, 0, 0, note);
        return Db(Band(sound, from, to) / Rms(sound));
    };
    const double still = breath(57, "a", 2010, 2170); // as strong as the pitch is high, and no whisper
    CHECK(breath(69, "a", 2010, 2170) - still == doctest::Approx(6).epsilon(0.4));
    CHECK(breath(81, "a", 2010, 2170) - still < 12);
    CHECK(breath(81, "i", 560, 680) > breath(81, "i", 300, 400) + 6); // the first formant goes with a high pitch
    Stream clear;
    clear.VoiceControl(15, 127).Note({.startMs = 200, .phonemes = "s a", .advancement = 65});
    CHECK(Db(Rms(Part(Sing(clear), 150, 190)) / Rms(Part(ConsonantSound("s"), 150, 190))) ==
          doctest::Approx(6).epsilon(0.2));
}

TEST_CASE("no clicks: joins, steps and controllers that jump are as smooth as the tone") {
    Stream steady;
    steady.Note({.note = 57, .startMs = 0, .lengthMs = 900});
    constexpr uint32_t kRate = 96000; // where a step stands out most
    const double tone = Roughness(Part(Sing(steady, 0.8, kRate), 300, 700, kRate));
    const auto check = [tone](const char* what, const Stream& stream, double louder) {
        CAPTURE(std::string(what));
        CHECK(Roughness(Part(Sing(stream, 0.8, kRate), 300, 700, kRate)) < tone * louder * 1.6);
    };
    Stream joined;
    joined.Note({.note = 57, .startMs = 0, .lengthMs = 500, .type = 1})
        .Note({.note = 59, .startMs = 500, .lengthMs = 400, .type = 2});
    check("joined notes", joined, 1.2);
    Stream again;
    again.Note({.note = 57, .startMs = 0, .lengthMs = 500}).Note({.note = 57, .startMs = 500, .lengthMs = 400});
    check("a new note at once", again, 1.2);
    Stream louder = steady;
    louder.Value(0x63, 127, 500).Value(0x63, 0, 600);
    check("dynamics", louder, 5.5); // 11 dB louder and brighter
    Stream loudest;
    loudest.Value(0x63, 127).Note({.note = 57, .startMs = 0, .lengthMs = 900, .velocity = 127});
    check("as loud as can be", loudest, 15); // 16 dB louder, brighter and bent
    Stream voice = steady;
    voice.Value(0x53, 3, 500).Bend(8191, 550);
    check("program and bend", voice, 1.6);
    for (int control = 0; control < 17; ++control) {
        Stream jump = steady;
        jump.VoiceControl(control, 127, 450).VoiceControl(control, 0, 550);
        check("voice control", jump, 4);
    }
}
