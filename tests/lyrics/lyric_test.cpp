#include "torv/lyrics/lyric_object.h"
#include "torv/lyrics/phonetic_dic.h"
#include "torv/typed_file/typed_file.h"

#include <doctest/doctest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

TEST_CASE("dictionary: symbols by index") {
    CHECK((CxPhoneticDic::GetDicSize(0) == 42 && CxPhoneticDic::GetDicSize(1) == 54 &&
           CxPhoneticDic::GetDicSize(2) == 54));
    CHECK(std::string(CxPhoneticDic::GetSAMPAString(11, 0)) == "N\\"); // one backslash
    CHECK(std::string(CxPhoneticDic::GetSAMPAString(41, 0)) == "*in");
    CHECK(std::string(CxPhoneticDic::GetSAMPAString(53, 1)) == "Asp");
    for (const auto& [index, language] :
         std::vector<std::pair<unsigned, int>>{{42, 0}, {54, 1}, {0, 2}, {static_cast<unsigned>(-1), 0}})
        CHECK(CxPhoneticDic::GetSAMPAString(index, language) == nullptr);
}

TEST_CASE("dictionary: kinds") {
    struct Row {
        const char* symbol;
        int vowel, nasal, consonant, mark;
    };
    for (const Row& row : {Row{"a", 1, 0, 0, 0}, Row{"o", 1, 0, 0, 0}, Row{"n", 0, 1, 1, 0}, Row{"N\\", 0, 1, 1, 0},
                           Row{"g", 0, 0, 1, 0}, Row{"tS", 0, 0, 1, 0}, Row{"*in", 0, 0, 0, 1}, Row{"@", 0, 0, 0, 1},
                           Row{"e", 1, 0, 0, 1}, Row{"I", 0, 0, 0, 1}, Row{"i:", 0, 0, 0, 0}, Row{"A", 0, 0, 0, 0},
                           Row{"a ", 0, 0, 0, 0}, Row{"", 0, 0, 0, 0}, Row{nullptr, 0, 0, 0, 0}}) {
        CAPTURE(std::string(row.symbol ? row.symbol : "null"));
        CHECK(CxPhoneticDic::IsVowelJpn(row.symbol) == row.vowel);
        CHECK(CxPhoneticDic::IsSyllabicNasalJpn(row.symbol) == row.nasal);
        CHECK(CxPhoneticDic::IsConsonantJpn(row.symbol) == row.consonant);
        CHECK(CxPhoneticDic::IsSymbolJpn(row.symbol) == row.mark);
    }
    struct Pair {
        const char* phoneme;
        const char* next;
        int english;
    };
    for (const Pair& row :
         {Pair{"m", "@", 1}, Pair{"m", "t", 0}, Pair{"m", nullptr, 0}, Pair{"l0", "Asp", 1}, Pair{"t", nullptr, 1},
          Pair{nullptr, "@", 0}, Pair{"Asp", "@", 0}, Pair{"Q@", nullptr, 0}, Pair{"bh", nullptr, 1}})
        CHECK(CxPhoneticDic::IsConsonantEng(row.phoneme, row.next) == row.english);
    CHECK((CxPhoneticDic::IsConsonant("k", nullptr, 2) == 0 && CxPhoneticDic::Verify("k", 0) == 1 &&
           CxPhoneticDic::Verify("m", 1) == 0));
}

TEST_CASE("dictionary: a syllable's consonant") {
    CString consonant = "old";
    const char* const ka = "ka";
    CHECK((CxPhoneticDic::ExtractConsonantJpn(consonant, ka) == ka + 1 && consonant == "k"));
    CHECK((CxPhoneticDic::ExtractConsonantJpn(consonant, "kya") == nullptr && consonant.IsEmpty()));
    consonant = "old";
    CHECK((CxPhoneticDic::ExtractConsonantJpn(consonant, "k") == nullptr && consonant == "old"));
    CHECK((CxPhoneticDic::ExtractConsonantJpn(consonant, "") == nullptr && consonant == "old"));
    CHECK((CxPhoneticDic::ExtractConsonantJpn(consonant, "a") == nullptr && consonant.IsEmpty()));
}

TEST_CASE("element: rates, phonemes and who counts as a consonant") {
    CLyricElement element;
    CHECK((element.SetDeltaRate(1.0F) == 1 && element.SetDeltaRate(1.5F) == 0 && element.GetDeltaRate() == 1.0F));
    CHECK(element.SetDeltaRate(std::numeric_limits<float>::quiet_NaN()) == 0);
    CHECK((element.SetDeltaRate(3, 2) == 0 && element.SetDeltaRate(1, 4) == 1 && element.GetDeltaRate() == 0.25F));
    CHECK((element.SetDeltaRate(0, 0) == 1 && element.GetDeltaRate() == 0.0F));
    element.SetPhonemeString("  s  t   V m", 1);
    CHECK(element.GetPhonemeString() == "s t V m");
    const int advancements[] = {64, 64, 0, 64, 0}; // the m counts: a vowel stands beside it
    for (int i = 0; i < 5; ++i)
        CHECK(element.GetConsonantAdvancement(i) == advancements[i]);
    element.SetPhonemeString("m t", 1);
    CHECK(element.GetConsonantAdvancement(0) == 0);
    element.SetConsonantAdvancement(0, 300);
    CHECK(element.GetConsonantAdvancement(0) == 44); // a byte
    CHECK(element.SetConsonantAdvancement(9, 1) == 0);
    element.AddPhonemeChara("0123456789abcdefghij");
    CHECK(std::string(element.GetPhonemeChara(2)) == "0123456789abcdef");
    CHECK(std::string(element.GetPhonemeChara(-1)).empty());
    element.SetPhonemeString(nullptr, 0);
    CHECK(element.GetPhonemeCharaCount() == 0);
    element.AddPhonemeChara("a b");
    element.SetPhonemeString(element.GetPhonemeChara(0), 0); // its own text
    CHECK(element.GetPhonemeCharaCount() == 2);
    CHECK(torv::ShareOf(100, 1.0F / 3) == 33);
    CHECK((torv::ShareOf(100, -1) == 0 && torv::ShareOf(100, 2) == 100 &&
           torv::ShareOf(100, std::numeric_limits<float>::quiet_NaN()) == 0));
}

TEST_CASE("lyric: shares given back, marks") {
    CLyricObject lyric;
    for (const float rate : {0.5F, 0.25F, 0.25F})
        lyric.AddNewElement()->SetDeltaRate(rate);
    CHECK(lyric.RemoveElementAt(0, 1) == 1);
    CHECK((lyric.GetElementAt(0)->GetDeltaRate() == 0.5F && lyric.GetElementAt(1)->GetDeltaRate() == 0.5F));
    CHECK((lyric.RemoveElementAt(5, 1) == 0 && lyric.RemoveElementAt(-1, 0) == 0 && lyric.GetElementAt(2) == nullptr));
    lyric.AddNewElement()->SetDeltaRate(1.0F);
    CHECK(lyric.RemoveElementAt(2, 1) == 0); // it was the whole: the others keep theirs, it is gone
    CHECK((lyric.GetElementCount() == 2 && lyric.GetElementAt(0)->GetDeltaRate() == 0.5F));
    lyric.SetPhonemeEditMark(3);
    CLyricObject copy(&lyric);
    CHECK((copy.GetPhonemeEditMark() == 3 && copy.GetElementCount() == 2));
    CHECK((copy.InsertElementAt(99, new CLyricElement) == 1 && copy.GetElementCount() == 3));
    CHECK(CLyricObject().GetPhonemeEditMark() == 0);

    struct Marks : CLyricObject {
        using CLyricObject::VerifyPhonemeEditMark;
    } marks;
    CHECK(marks.VerifyPhonemeEditMark() == 1);
    marks.AddNewElement()->SetPhonemeEditMark(3);
    marks.AddNewElement()->SetPhonemeEditMark(1);
    CHECK(marks.VerifyPhonemeEditMark() == 1); // both edited
    marks.AddNewElement();
    CHECK(marks.VerifyPhonemeEditMark() == 0);
}

TEST_CASE("lyric: as a section") {
    CLyricObject lyric;
    CLyricElement* const first = lyric.AddNewElement();
    first->SetLyricString("hel-");
    first->SetPhonemeString("h E", 1);
    first->SetDeltaRate(0.5F);
    lyric.AddNewElement()->SetLyricString("lo");
    CxTypedFile file;
    CHECK(lyric.DescribeParameter(&file, "S") == 1);
    CHECK(file.ReadAt("S", "L0", "") == "hel-,h E,0.500000,64,64"); // E is no English vowel: a consonant
    CHECK(file.ReadAt("S", "L1", "") == "lo,,0.000000,");

    const char text[] = "[S]\nL0 = a , k  a ,0.25,7\nL1=,,1e99\nL3=x,y,1,2\n";
    file.Load(reinterpret_cast<const unsigned char*>(text), sizeof text - 1);
    CLyricObject read;
    CHECK(read.ConstructParameter(&file, "S") == 1);
    REQUIRE(read.GetElementCount() == 2); // stops where "L2" is missing
    CLyricElement& element = *read.GetElementAt(0);
    CHECK((element.GetLyricString() == "a" && element.GetPhonemeString() == "k a" && element.GetDeltaRate() == 0.25F));
    CHECK(
        (element.GetConsonantAdvancement(0) == 7 && element.GetConsonantAdvancement(1) == 0)); // no defaults when read
    CHECK(read.GetElementAt(1)->GetDeltaRate() == std::numeric_limits<float>::max());
}

TEST_CASE("lyric: host records") {
    CLyricObject lyric;
    CLyricElement* const element = lyric.AddNewElement();
    element->SetLyricString(std::string(40, 'x').c_str());
    element->SetPhonemeString("s a s", 0);
    lyric.AddNewElement();
    tagLyricObject record{};
    CHECK(lyric.DescribeParameter(&record) == 1);
    REQUIRE(record.count == 2);
    CHECK(std::string(record.syllables[0].text).size() == 32);
    CHECK(std::string(record.syllables[0].firstPhoneme.next->text) == "a");
    CHECK((record.syllables[1].firstPhoneme.text[0] == '\0' && record.syllables[1].firstPhoneme.next == nullptr));
    std::memset(record.syllables[1].text, 'z', sizeof record.syllables[1].text); // unterminated
    CLyricObject back;
    back.AddNewElement();
    CHECK(back.ConstructParameter(&record) == 1);
    CHECK((back.GetElementCount() == 2 && back.GetElementAt(0)->GetPhonemeString() == "s a s"));
    CHECK((back.GetElementAt(1)->GetPhonemeCharaCount() == 0 && back.GetElementAt(1)->GetLyricStringLength() == 32));
    tagPhonemeCharaEx circle{};
    circle.text[0] = 'a';
    circle.next = &circle;
    tagLyricSyllable endless{};
    endless.firstPhoneme = circle;
    endless.firstPhoneme.next = &circle;
    CLyricElement survivor;
    CHECK(survivor.ConstructParameter(&endless) == 1);
    torv::ReleaseLyricRecord(&record);
    CHECK(record.syllables == nullptr);
    torv::ReleaseLyricRecord(nullptr);

    tagLyricSyllable empty; // every byte of an empty one is 0, whatever stood there before
    std::memset(&empty, 0xCC, sizeof empty);
    CHECK(CLyricElement().DescribeParameter(&empty) == 1);
    CHECK(std::string(reinterpret_cast<const char*>(&empty), sizeof empty) == std::string(sizeof empty, '\0'));
}

TEST_CASE("syllables: Japanese, English and the rest") {
    struct Row {
        int language;
        std::string text;
        std::string first;
        size_t taken;
    };
    const std::string kya = "\x82\xAB\x82\xE1"; // ki, small ya
    const std::string ku = "\x82\xAD";
    for (const Row& row :
         {Row{0, kya + ku, kya, 4}, Row{0, ku, ku, 2},
          Row{0, "\x82\x9F", "\x82\xA0", 2}, // a small a alone is full size
          Row{0, "ka ki", "ka ", 3}, Row{0, "ka" + ku, "ka", 2}, Row{0, std::string(40, 'x'), std::string(32, 'x'), 32},
          Row{0, ku + "\x82\xC1", ku, 2}, // the small tsu is no part of the table
          Row{0, "\x82", "\x82", 1}, Row{0, ku + "\x82", ku, 2}, Row{1, "hel-lo", "hel-", 4},
          Row{1, "to the", "to the", 6}, Row{1, std::string(40, 'y'), std::string(32, 'y'), 32},
          Row{1, ku + "ab", ku, 2}, Row{0, "", "", 0}, Row{7, "abc", "", 0}}) {
        CAPTURE(row.text);
        CString first = "old";
        const char* const text = row.text.c_str();
        CHECK(CLyricObject::SyllabicateLyric(first, text, row.language) == text + row.taken);
        CHECK(std::string(first) == row.first);
    }
    CHECK((CLyricObject::IsVowel("\x82\xA0") && CLyricObject::IsVowel("\x81\x5B") &&
           CLyricObject::IsVowel("\x83\x93") && CLyricObject::IsVowel("\x82\xF1")));
    CHECK_FALSE((CLyricObject::IsVowel("\x82\xA9") || CLyricObject::IsVowel("a") || CLyricObject::IsVowel("") ||
                 CLyricObject::IsVowel("\x82")));
    CHECK_FALSE(CLyricObject::IsKanaVowel(0x815B)); // the long mark is one of the other test's
    CHECK(std::string(CLyricObject::GetDefaultLyric(2)) == "\x82\xA0");
    CHECK(std::string(CLyricObject::GetDefaultPhoneme(1)) == "u:");
    CString phoneme;
    CHECK((CLyricObject::LyricToPhoneme(phoneme, "anything", 0) == 1 && phoneme == "a"));
}
