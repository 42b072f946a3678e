#include "allocation_failure.h"

#include "torv/lyrics/lyric_object.h"
#include "torv/lyrics/phonetic_dic.h"
#include "typed_file/file_text.h"
#include "values.h"

#include <doctest/doctest.h>

#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

std::vector<std::string> Words(const char* text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

/// Everything that a lyric holds: text|phonemes|advancements|share|mark of each syllable.
std::string Told(const CLyricObject& lyric) {
    std::ostringstream told;
    for (int i = 0; i < lyric.GetElementCount(); ++i) {
        const CLyricElement& element = *lyric.GetElementAt(i);
        told << (i ? "\n" : "") << element.GetLyricString() << '|' << element.GetPhonemeString() << '|';
        for (int k = 0; k < element.GetPhonemeCharaCount(); ++k)
            told << (k ? "," : "") << element.GetConsonantAdvancement(k);
        told << '|' << element.GetDeltaRate() << '|' << element.GetPhonemeEditMark();
    }
    return told.str();
}

/// "hel-", which somebody has edited, and "lo".
void Fill(CLyricObject& lyric) {
    CLyricElement* const first = lyric.AddNewElement();
    first->SetLyricString("hel-");
    first->SetPhonemeString("h E", 1); // E is no English vowel: a consonant
    first->SetConsonantAdvancement(1, 300);
    first->SetDeltaRate(0.5F);
    first->SetPhonemeEditMark(7);
    lyric.AddNewElement()->SetLyricString("lo");
}
const char* const kFilled = "hel-|h E|64,44|0.5|7\nlo|||0|0"; // 300 is 44 in a byte

struct Lyric : CLyricObject {
    using CLyricObject::VerifyPhonemeEditMark;
};

} // namespace

TEST_CASE("dictionary: every symbol, and what kind each is") {
    const auto japanese = Words(
        "a i M e o n J m N m' N' N\\ g g' d d' b b' z Z h\\ dz dZ 4 4' j w k k' t t' p p' s S h C p\\ p\\' ts tS *in");
    const auto english =
        Words("@ V e I i: { O: Q U u: @r eI aI OI @U aU I@ e@ U@ O@ Q@ p t k tS f T s S h ph th kh w j b d dZ v "
              "D z Z m n N r l g bh dh gh l0 hv Asp");
    REQUIRE(Values(CxPhoneticDic::GetDicSize(0), CxPhoneticDic::GetDicSize(1), CxPhoneticDic::GetDicSize(2)) ==
            "42 54 54");
    for (unsigned i = 0; i < japanese.size(); ++i) {
        CAPTURE(i);
        const char* const symbol = CxPhoneticDic::GetSAMPAString(i, 0);
        CHECK(std::string(symbol) == japanese[i]);
        CHECK(CxPhoneticDic::IsVowelJpn(symbol) == (i < 5));
        CHECK(CxPhoneticDic::IsSyllabicNasalJpn(symbol) == (i >= 5 && i < 12));
        CHECK(CxPhoneticDic::IsConsonantJpn(symbol) == (i >= 5 && i < 41));
        CHECK(CxPhoneticDic::Verify(symbol, 0) == CxPhoneticDic::IsConsonantJpn(symbol));
        CHECK(CxPhoneticDic::IsSymbolJpn(symbol) == (i == 41 || japanese[i] == "e"));
    }
    for (unsigned i = 0; i < english.size(); ++i) {
        CAPTURE(i);
        const char* const symbol = CxPhoneticDic::GetSAMPAString(i, 1);
        CHECK(std::string(symbol) == english[i]);
        const bool isSung = i < 21 || i == 53;                            // "Asp" among them
        const bool needsVowel = i == 42 || i == 43 || i == 44 || i == 51; // m n N l0
        CHECK(CxPhoneticDic::IsNoEditCACharaEng(symbol) == isSung);
        CHECK(CxPhoneticDic::IsNoEditCACharaWoVowelEng(symbol) == needsVowel);
        CHECK(CxPhoneticDic::IsConsonantEng(symbol, "Asp") == !isSung);
        CHECK(CxPhoneticDic::IsConsonantEng(symbol, "t") == (!isSung && !needsVowel));
        CHECK(CxPhoneticDic::Verify(symbol, 1) == (!isSung && !needsVowel));
        CHECK(CxPhoneticDic::IsSymbolJpn(symbol) == (i < 4)); // hosts mark those as symbols too
        CHECK(CxPhoneticDic::IsConsonant(symbol, "@", 2) == 0);
    }
    for (const char* const none : {"A", "a ", "", static_cast<const char*>(nullptr)})
        CHECK(Values(CxPhoneticDic::IsVowelJpn(none), CxPhoneticDic::IsConsonantJpn(none)) == "0 0");
    CHECK(CxPhoneticDic::IsConsonantEng(nullptr, "@") == 0);
    for (const auto& [index, language] : {std::pair(42U, 0), {54U, 1}, {0U, 2}, {static_cast<unsigned>(-1), 0}})
        CHECK(CxPhoneticDic::GetSAMPAString(index, language) == nullptr);
}

TEST_CASE("dictionary: a syllable's consonant") {
    const struct {
        const char* syllable;
        const char* consonant;
        int vowelAt; // -1: none
    } rows[] = {{"ka", "k", 1},
                {"p\\'M", "p\\'", 3},
                {"kya", "", -1},
                {"k", "old", -1},
                {"", "old", -1},
                {"a", "", -1},
                {"kkkkkkkkkkkkkkkkkkkka", "", -1}};
    for (const auto& row : rows) {
        CAPTURE(std::string(row.syllable));
        CString consonant = "old";
        const char* const vowel = CxPhoneticDic::ExtractConsonantJpn(consonant, row.syllable);
        CHECK((vowel ? vowel - row.syllable : -1) == row.vowelAt);
        CHECK(consonant == row.consonant);
    }
}

TEST_CASE("element: shares of a note") {
    CLyricElement element;
    CHECK(element.SetDeltaRate(3, 4) == 1);
    for (const float refused : {1.5F, kNoNumber})
        CHECK(element.SetDeltaRate(refused) == 0);
    CHECK(Values{element.SetDeltaRate(3, 2), element.GetDeltaRate()} == "0 0.75");
    CHECK(Values{element.SetDeltaRate(1.0F), element.GetDeltaRate()} == "1 1");
    CHECK(Values{element.SetDeltaRate(0, 0), element.GetDeltaRate()} == "1 0");
    CHECK(Values{element.SetDeltaRate(2, 2), element.GetDeltaRate()} == "1 1");
    for (const auto& [share, ticks] : {std::pair(1.0F / 3, 33U), {-1.0F, 0U}, {2.0F, 100U}, {kNoNumber, 0U}})
        CHECK(torv::ShareOf(100, share) == ticks);
}

TEST_CASE("element: phonemes, and who counts as a consonant") {
    const struct {
        const char* phonemes;
        int language;
        const char* told;
    } rows[] = {{"  s  t   V m", 1, "|s t V m|64,64,0,64|0|0"}, // the m counts: a vowel stands beside it
                {"m t", 1, "|m t|0,64|0|0"},
                {"m", 1, "|m|0|0|0"},
                {"n a *in", 0, "|n a *in|64,0,0|0|0"},
                {"k a", 2, "|k a|0,0|0|0"},
                {"0123456789abcdefg h", 0, "|0123456789abcdef h|0,64|0|0"},
                {nullptr, 0, "|||0|0"}};
    for (const auto& row : rows) {
        CLyricObject lyric;
        CLyricElement& element = *lyric.AddNewElement();
        element.AddPhonemeChara("old");
        CHECK(element.SetPhonemeString(row.phonemes, row.language) == 1);
        CHECK(Told(lyric) == row.told);
    }
    CLyricElement element;
    element.SetPhonemeString("s a", 0);
    for (const int index : {-1, 2}) {
        CHECK(std::string(element.GetPhonemeChara(index)).empty());
        CHECK(Values{element.SetConsonantAdvancement(index, 1), element.GetConsonantAdvancement(index),
                     element.IsConsonant(index, 0)} == "0 0 0");
    }
    element.SetPhonemeString(nullptr, 0);
    CHECK(Values{element.AddPhonemeChara("0123456789abcdefg"), element.GetPhonemeChara(0)} == "1 0123456789abcdef");
    CHECK(Values{element.AddPhonemeChara("k a"), element.GetConsonantAdvancement(1)} == "1 0");
    element.SetPhonemeString(element.GetPhonemeChara(1), 0); // its own text
    CHECK(element.GetPhonemeString() == "k a");
}

TEST_CASE("lyric: elements come, go and give their share back") {
    Lyric lyric;
    CHECK(Values(lyric.GetPhonemeEditMark(), lyric.VerifyPhonemeEditMark()) == "0 1");
    for (const float rate : {0.25F, 0.5F, 0.25F})
        lyric.AddNewElement()->SetDeltaRate(rate);
    for (const int nowhere : {-1, 3})
        CHECK(lyric.RemoveElementAt(nowhere, 1) == 0);
    CHECK(Values{lyric.RemoveElementAt(1, 1), Told(lyric)} == "1 |||0.5|0\n|||0.5|0");
    lyric.AddNewElement()->SetDeltaRate(1.0F);
    // It was the whole: the others keep theirs, it is gone.
    CHECK(Values{lyric.RemoveElementAt(2, 1), Told(lyric)} == "0 |||0.5|0\n|||0.5|0");
    lyric.SetPhonemeEditMark(3);
    CLyricObject copy(&lyric);
    for (const auto& [index, place] : {std::pair(99, "last"), {-5, "first"}, {1, "middle"}}) {
        auto* const element = new CLyricElement;
        element->SetLyricString(place);
        CHECK(copy.InsertElementAt(index, element) == 1);
    }
    CHECK(Values{copy.InsertElementAt(0, nullptr), copy.RemoveElementAt(2, 0)} == "0 1");
    CHECK(Told(copy) == "first|||0|0\nmiddle|||0|0\n|||0.5|3\nlast|||0|0");
    CHECK(Values(copy.GetPhonemeEditMark(), lyric.GetPhonemeEditMark()) == "0 3"); // the first one's
    lyric.GetElementAt(1)->SetPhonemeEditMark(1);
    CHECK(lyric.VerifyPhonemeEditMark() == 1); // both edited
    lyric.AddNewElement();
    CHECK(lyric.VerifyPhonemeEditMark() == 0);
}

TEST_CASE("lyric: as a section") {
    CLyricObject lyric;
    Fill(lyric);
    CxTypedFile file;
    CHECK(lyric.DescribeParameter(&file, "S") == 1);
    CHECK(Compact(file) == "[S]\nL0=hel-,h E,0.500000,64,44\nL1=lo,,0.000000,\n");
    CHECK(lyric.DescribeParameter(nullptr, "S") == 0);

    const std::string text = "[S]\nL0 = a , k  a ,0.25,7\nL1=" + std::string(300, 'b') + ",,1e99\nL3=x,y,1,2\n";
    LoadText(file, text);
    CLyricObject read;
    read.AddNewElement();
    CHECK(read.ConstructParameter(&file, "S") == 1);
    // Appended up to where "L2" is missing; no consonants' defaults; a field of 256 bytes; the largest share.
    CHECK(Told(read) == "|||0|0\na|k a|7,0|0.25|0\n" + std::string(256, 'b') + "|||3.40282e+38|0");
    CHECK(read.ConstructParameter(static_cast<CxTypedFile*>(nullptr), "S") == 0);
}

TEST_CASE("lyric: host records") {
    CLyricObject lyric;
    Fill(lyric);
    lyric.GetElementAt(0)->AddPhonemeChara("0123456789abcdef");
    tagLyricObject record{};
    CHECK(lyric.DescribeParameter(&record) == 1);
    REQUIRE(record.count == 2);
    CHECK(std::string(record.syllables[0].firstPhoneme.next->text) == "E");
    CLyricObject back;
    back.AddNewElement();
    CHECK(Values{back.ConstructParameter(&record), Told(back)} == Values(1, Told(lyric)));
    std::memset(record.syllables[1].text, 'z', sizeof record.syllables[1].text); // unterminated
    back.ConstructParameter(&record);
    CHECK(back.GetElementAt(1)->GetLyricString() == std::string(32, 'z').c_str());
    torv::ReleaseLyricRecord(&record);
    CHECK(record.syllables == nullptr);
    torv::ReleaseLyricRecord(nullptr);
    CHECK(Values{back.ConstructParameter(static_cast<tagLyricObject*>(nullptr)), back.GetElementCount()} == "0 0");

    tagLyricSyllable syllable; // every byte that is not named is 0, whatever stood there before
    std::memset(&syllable, 0xCC, sizeof syllable);
    CHECK(CLyricElement().DescribeParameter(&syllable) == 1);
    CHECK(std::string(reinterpret_cast<const char*>(&syllable), sizeof syllable) == std::string(sizeof syllable, '\0'));
    CLyricElement element;
    element.SetLyricString(std::string(40, 'x').c_str());
    element.DescribeParameter(&syllable);
    CHECK(std::string(syllable.text) == std::string(32, 'x'));
    tagPhonemeCharaEx circle{{}, "a", 1, &circle};
    syllable.firstPhoneme = circle;
    CHECK(Values{element.ConstructParameter(&syllable), element.GetPhonemeCharaCount()} == "1 65536"); // it ends
}

TEST_CASE("syllables: Japanese, English and the rest") {
    const std::string kya = "\x82\xAB\x82\xE1"; // ki, small ya
    const std::string ku = "\x82\xAD";
    const struct {
        int language;
        std::string text;
        size_t taken;
    } rows[] = {{0, kya + ku, 4},
                {0, ku, 2},
                {0, ku + "\x82\xC1", 2}, // the small tsu is no part of the table
                {0, "\x82", 1},
                {0, ku + "\x82", 2},
                {0, "ka ki", 3},
                {0, "ka" + ku, 2},
                {0, std::string(40, 'x'), 32},
                {0, "", 0},
                {1, "hel-lo", 4},
                {1, "to the", 6},
                {1, std::string(40, 'y'), 32},
                {1, ku + "ab", 2},
                {7, "abc", 0}};
    for (const auto& row : rows) {
        CAPTURE(row.text);
        CString first = "old";
        const char* const text = row.text.c_str();
        CHECK(CLyricObject::SyllabicateLyric(first, text, row.language) == text + row.taken);
        CHECK(std::string(first) == row.text.substr(0, row.taken));
    }
    // A small kana alone becomes the full one, which the code page has right behind it.
    for (const char* small :
         {"\x82\x9F", "\x82\xA1", "\x82\xA3", "\x82\xA5", "\x82\xA7", "\x82\xE1", "\x82\xE3", "\x82\xE5", "\x83\x40",
          "\x83\x42", "\x83\x44", "\x83\x46", "\x83\x48", "\x83\x83", "\x83\x85", "\x83\x87"}) {
        CString syllable = "-";
        CHECK(CLyricObject::SyllabicateLyricJpn(syllable, small) == small + 2);
        CHECK(std::string(syllable) == std::string{'-', small[0], static_cast<char>(small[1] + 1)});
    }
}

TEST_CASE("syllables: vowels and defaults") {
    std::vector<unsigned> hiragana, katakana;
    for (unsigned character = 0x8100; character < 0x8400; ++character) {
        if (CLyricObject::IsHiraVowel(character))
            hiragana.push_back(character);
        if (CLyricObject::IsKanaVowel(character))
            katakana.push_back(character);
        const char text[] = {static_cast<char>(character >> 8), static_cast<char>(character & 0xFF), 'x', '\0'};
        CHECK(CLyricObject::IsVowel(text) ==
              (CLyricObject::IsHiraVowel(character) || CLyricObject::IsKanaVowel(character)));
    }
    CHECK(hiragana ==
          std::vector<unsigned>{0x815B, 0x82A0, 0x82A2, 0x82A4, 0x82A6, 0x82A8, 0x82F1}); // and the long mark
    CHECK(katakana == std::vector<unsigned>{0x8341, 0x8343, 0x8345, 0x8347, 0x8349, 0x8393});
    for (const char* const none : {"a", "", "\x82", static_cast<const char*>(nullptr)})
        CHECK(CLyricObject::IsVowel(none) == 0);
    for (const int language : {0, 1, 2}) {
        CString phoneme;
        CHECK(CLyricObject::LyricToPhoneme(phoneme, "anything", language) == 1);
        CHECK(phoneme == (language == 1 ? "u:" : "a"));
        CHECK(std::string(CLyricObject::GetDefaultLyric(language)) == (language == 1 ? "Ooh" : "\x82\xA0"));
    }
}

TEST_CASE("lyric: where memory is refused, the answer is 0 and nothing has changed") {
    const std::string text = "[S]\nL0=" + std::string(40, 'a') + ",k a,0.25,7\nL1=b,c d,1,2\n";
    CxTypedFile file;
    LoadText(file, text);
    CLyricObject other;
    other.ConstructParameter(&file, "S");
    tagLyricObject record{};
    other.DescribeParameter(&record);
    CString syllable;
    const std::vector<std::function<int(CLyricObject&)>> operations = {
        [&](CLyricObject& lyric) { return int{lyric.AddNewElement(other.GetElementAt(0)) != nullptr}; },
        [](CLyricObject& lyric) {
            std::unique_ptr<CLyricElement> element(new (std::nothrow) CLyricElement);
            return int{lyric.InsertElementAt(0, element.get()) && element.release()}; // else it is still the host's
        },
        [](CLyricObject& lyric) { return lyric.GetElementAt(0)->AddPhonemeChara("a"); },
        [](CLyricObject& lyric) { return lyric.GetElementAt(0)->SetPhonemeString("a b c", 0); },
        [&](CLyricObject& lyric) { return lyric.ConstructParameter(&file, "S"); },
        [&](CLyricObject& lyric) { return lyric.DescribeParameter(&file, "T"); },
        [&](CLyricObject& lyric) { return lyric.ConstructParameter(&record); },
        [](CLyricObject& lyric) {
            tagLyricObject described{};
            const bool isDescribed = lyric.DescribeParameter(&described) && described.syllables;
            torv::ReleaseLyricRecord(&described);
            return int{isDescribed};
        },
        [&](CLyricObject&) {
            return int{CLyricObject::SyllabicateLyric(syllable, "a syllable that is long enough", 1) != nullptr};
        }};
    for (const auto& operation : operations)
        FailEachAllocation([&](AllocationFailure& failure) {
            CLyricObject lyric;
            Fill(lyric);
            const bool isDone = failure.During([&] { return operation(lyric) != 0; });
            CHECK(isDone == !failure.HasHappened());
            if (!isDone)
                CHECK(Told(lyric) == kFilled);
        });
    torv::ReleaseLyricRecord(&record);
}
