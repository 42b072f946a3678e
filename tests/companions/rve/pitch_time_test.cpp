#include "stage.h"

#include <doctest/doctest.h>

TEST_CASE("pitch: within three cents of the note, at every rate") {
    for (const uint32_t rate : {44100U, 48000U, 96000U})
        for (const int note : {36, 45, 57, 69, 81, 90}) {
            CAPTURE(rate);
            CAPTURE(note);
            Stream stream;
            stream.Note({.note = note, .phonemes = "a"});
            const auto steady = Part(Sing(stream, 0.7, rate), 300, 600, rate);
            CHECK(std::abs(Cents(PitchOf(steady, HzOf(note), rate), HzOf(note))) < 3);
        }
}

TEST_CASE("pitch: bend times sensitivity, two semitones at first") {
    struct Row {
        int bend;
        int sensitivity; // -1: not sent
        double semitones;
    };
    for (const Row& row :
         {Row{8191, -1, 2.0}, Row{-8192, -1, -2.0}, Row{4096, 12, 6.0}, Row{-4096, 1, -0.5}, Row{0, 24, 0.0}}) {
        CAPTURE(row.bend);
        Stream stream;
        if (row.sensitivity >= 0)
            stream.Open(0x67, 0).Parameter(0x67, 2, row.sensitivity, 0);
        stream.Bend(row.bend).Note({.note = 60});
        const double hz = HzOf(60 + row.semitones);
        CHECK(std::abs(Cents(PitchOf(Part(Sing(stream), 300, 600), hz), hz)) < 3);
    }
}

TEST_CASE("time: a vowel begins within a step of its time, its consonants ahead of it by their advancement") {
    // A step is 5.8 ms. 48 ticks at 120 beats a minute are 50 ms.
    Stream vowel;
    vowel.Note({.startMs = 250, .phonemes = "a"});
    CHECK(std::abs(OnsetOf(Sing(vowel), 0.004) - 250) < 5.8);

    Stream hiss;
    hiss.Note({.startMs = 250, .phonemes = "s a", .advancement = 48});
    CHECK(std::abs(OnsetOf(Sing(hiss), 0.004) - 200) < 5.8);

    Stream together; // two sounds with one start share its advancement
    together.Note({.startMs = 250, .phonemes = "sS a", .advancement = 48});
    CHECK(std::abs(OnsetOf(Sing(together), 0.004) - 200) < 5.8);

    Stream cluster;
    cluster.Value(0x60, 1).Note({.startMs = 250, .phonemes = "s t r eI", .advancement = 48}); // 3 x 50 ms
    CHECK(std::abs(OnsetOf(Sing(cluster), 0.004) - 100) < 5.8);

    // 64 is what everybody gets who did not choose: each sound as long as it naturally is, and never most of a note.
    const auto unchosen = [](const char* phonemes, int lengthMs) {
        Stream stream;
        stream.Value(0x60, 1).Note({.startMs = 500, .lengthMs = lengthMs, .phonemes = phonemes});
        return 500 - OnsetOf(Sing(stream, 0.7), 0.002);
    };
    CHECK(unchosen("s @", 600) > unchosen("f @", 600) + 10);
    CHECK(unchosen("f @", 600) > unchosen("v @", 600) + 20);
    CHECK(unchosen("s @", 600) == doctest::Approx(125).epsilon(0.05));
    CHECK(unchosen("h @", 600) == doctest::Approx(75).epsilon(0.1));
    CHECK(unchosen("s @", 150) == doctest::Approx(90).epsilon(0.07)); // three fifths of the note

    Stream two; // vowels of one note share it, here up to 400 ms
    two.Value(0x53, 1).Note({.note = 45, .phonemes = "a i"});
    const auto halves = Sing(two);
    CHECK(Band(Part(halves, 320, 380), 1900, 2400) < Band(Part(halves, 320, 380), 1000, 1400));
    CHECK(Band(Part(halves, 430, 500), 1900, 2400) > Band(Part(halves, 430, 500), 1000, 1400));

    // Voicing after a voiceless plosive: nothing at the fundamental before the vowel, all of it soon after.
    Stream plosive;
    plosive.Note({.note = 69, .startMs = 250, .phonemes = "t a"});
    const auto sound = Sing(plosive);
    CHECK(Tone(Part(sound, 200, 246), 440) < 0.05 * Tone(Part(sound, 300, 346), 440));
    CHECK(Tone(Part(sound, 256, 276), 440) > 0.3 * Tone(Part(sound, 300, 320), 440));
}

TEST_CASE("time: a bend applies its delay after it arrives") {
    Stream stream;
    stream.Note({.note = 60, .startMs = 0, .lengthMs = 900}).Bend(8191, 500);
    const auto sound = Sing(stream, 0.9);
    CHECK(std::abs(Cents(PitchOf(Part(sound, 300, 490), HzOf(60)), HzOf(60))) < 4);
    CHECK(std::abs(Cents(PitchOf(Part(sound, 520, 800), HzOf(62)), HzOf(62))) < 4);
    // Of one more than there is room for the earliest applies at once, the next one in its time.
    Stream crowded;
    crowded.Bend(-8192, 500).Bend(8191, 400); // in whatever order they come
    for (int i = 0; i < 4095; ++i)
        crowded.Value(0x66, 0, 600);
    crowded.Note({.note = 60, .startMs = 0});
    const auto early = Sing(crowded);
    CHECK(std::abs(Cents(PitchOf(Part(early, 100, 390), HzOf(62)), HzOf(62))) < 4);
    CHECK(std::abs(Cents(PitchOf(Part(early, 520, 590), HzOf(58)), HzOf(58))) < 12);
}

TEST_CASE("joined notes: no break in the sound, and a glide centred on the join as long as the way out says") {
    const auto pitchesAround = [](int duration, int otherDuration) {
        Stream stream;
        stream.Note({.note = 64, .startMs = 600, .lengthMs = 500, .type = 2, .transitionDuration = otherDuration});
        stream.Note({.note = 57, .startMs = 100, .lengthMs = 500, .type = 1, .transitionDuration = duration});
        const auto sound = Sing(stream, 1.1);
        double quietest = 1;
        for (double t = 300; t < 1000; t += 10)
            quietest = std::min(quietest, Rms(Part(sound, t, t + 20)));
        CHECK(quietest > 0.4 * Rms(Part(sound, 300, 500)));
        std::vector<double> semitones; // over the first note, from 500 ms on, every 20 ms
        for (double t = 500; t <= 700; t += 20)
            semitones.push_back(Cents(PitchOf(Part(sound, t - 12, t + 12), HzOf(60.5)), HzOf(57)) / 100);
        return semitones;
    };
    // 127 is a glide of 200 ms from 500 ms on, 3.5 semitones at its middle; 0 is one of ten; without a transition 70.
    const auto slow = pitchesAround(127, -1);
    CHECK(slow[5] == doctest::Approx(3.5).epsilon(0.1));
    CHECK(slow[2] == doctest::Approx(7 * (3 * 0.04 - 2 * 0.008)).epsilon(0.3)); // a fifth of the way
    CHECK(slow[8] == doctest::Approx(7 - 7 * (3 * 0.04 - 2 * 0.008)).epsilon(0.1));
    for (size_t i = 1; i < slow.size(); ++i)
        CHECK(slow[i] - slow[i - 1] < 1.3); // its steepest fifth is 1.05: no jump anywhere
    const auto quick = pitchesAround(0, 127);
    CHECK(std::abs(quick[4]) < 0.2);
    CHECK(quick[6] > 6.8);
    const auto plain = pitchesAround(-1, -1);
    CHECK(std::abs(plain[3]) < 0.2);
    CHECK(plain[5] == doctest::Approx(3.5).epsilon(0.15));
    CHECK(plain[7] > 6.8);
    Stream apart; // without a join it is as good as there when the note begins
    apart.Note({.note = 57, .lengthMs = 500}).Note({.note = 64, .startMs = 600});
    CHECK(std::abs(Cents(PitchOf(Part(Sing(apart), 614, 638), HzOf(64)), HzOf(64))) < 15);

    const auto middle = [](const char* second) { // of the second note
        Stream stream;
        stream.Note({.note = 57, .lengthMs = 300, .phonemes = "i", .type = 1});
        stream.Note({.note = 57, .startMs = 400, .lengthMs = 300, .phonemes = second, .type = 2});
        const auto sound = Part(Sing(stream), 500, 650);
        return Band(sound, 600, 1500) / Rms(sound);
    };
    CHECK(middle("") == doctest::Approx(middle("i")).epsilon(0.02)); // no text goes on with its vowel
}

TEST_CASE("drift: a steady note is never quite still, nor ever out of tune") {
    Stream stream;
    stream.Note({.note = 69, .startMs = 100, .lengthMs = 3000});
    const auto sound = Sing(stream, 3.0);
    double sum = 0, lowest = 0, highest = 0;
    int count = 0;
    for (double t = 300; t < 2900; t += 30, ++count) {
        const double cents = Cents(PitchOf(Part(sound, t, t + 30), 440), 440);
        sum += cents;
        lowest = std::min(lowest, cents);
        highest = std::max(highest, cents);
    }
    CHECK(std::abs(sum / count) < 1);
    CHECK(highest - lowest > 8);
    CHECK(highest - lowest < 30);
}

TEST_CASE("silence: exact zeros within a second of the last note, and before the first") {
    for (const int type : {3, 1}) { // ended, or promised to go on and never did
        Stream stream;
        stream.Note({.startMs = 200,
                     .lengthMs = 300,
                     .phonemes = "s a s",
                     .type = type,
                     .releaseCode = 0,
                     .releaseDuration = 127});
        const auto sound = Sing(stream, 1.7);
        CHECK(Rms(Part(sound, 0, 50)) == 0.0);
        CHECK(Rms(Part(sound, 1500, 1700)) == 0.0);
        CHECK(Rms(Part(sound, 300, 450)) > 0.02);
        CHECK(Rms(Part(sound, 800, 900)) < 0.001);
    }
}

TEST_CASE("silence: what was sung before it is not heard after it") {
    for (const int program : {1, 97}) {
        CAPTURE(program);
        Stream alone, second;
        alone.Value(0x53, program).Note({.startMs = 700, .lengthMs = 200, .phonemes = "s a"});
        second.Value(0x53, program)
            .Note({.note = 64, .startMs = 50, .lengthMs = 200, .phonemes = "i s", .velocity = 127});
        second.Note({.startMs = 700, .lengthMs = 200, .phonemes = "s a"});
        CHECK(Part(Sing(alone, 1.0), 500, 1000) == Part(Sing(second, 1.0), 500, 1000));
    }
}

TEST_CASE("steps: their samples add up at every rate, and capacity only cuts") {
    for (const uint32_t rate : {44100U, 48000U, 96000U}) {
        const auto singer = std::make_unique<rve::Singer>();
        REQUIRE(singer->Configure(rate));
        uint64_t total = 0;
        int16_t samples[558];
        for (int i = 0; i < 1000; ++i)
            total += singer->Step(0, nullptr, samples, 558);
        CHECK(total == 1000ULL * 256 * rate / 44100);
        CHECK(singer->Step(0, nullptr, samples, 10) == 10);
    }
}
