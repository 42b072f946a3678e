#include "lyric_text.h"

#include "code_page_932.h"
#include "torv/abi/g2pa.h"

#include <algorithm>

namespace g2pa_eng {
namespace {

constexpr std::string_view small[] = {"zero",     "one",     "two",     "three",     "four",     "five",    "six",
                                      "seven",    "eight",   "nine",    "ten",       "eleven",   "twelve",  "thirteen",
                                      "fourteen", "fifteen", "sixteen", "seventeen", "eighteen", "nineteen"};
constexpr std::string_view tens[] = {"",      "",      "twenty",  "thirty", "forty",
                                     "fifty", "sixty", "seventy", "eighty", "ninety"};

constexpr std::string_view accented[] = { // bytes 0xC0 to 0xFF; what is empty divides words
    "a", "a", "a", "a", "a", "a", "ae", "c", "e",  "e",  "e", "e", "i", "i", "i", "i", "d",  "n", "o",  "o", "o", "o",
    "o", "",  "o", "u", "u", "u", "u",  "y", "th", "ss", "a", "a", "a", "a", "a", "a", "ae", "c", "e",  "e", "e", "e",
    "i", "i", "i", "i", "d", "n", "o",  "o", "o",  "o",  "o", "",  "o", "u", "u", "u", "u",  "y", "th", "y"};

constexpr unsigned curlyApostrophe = 0x92;
constexpr unsigned acuteAccent = 0xB4;
constexpr unsigned halfWidthLongMark = 0xB0;
constexpr unsigned longMark = 0x815B;
constexpr unsigned waveDash = 0x8160;

/// Folds the bytes to small letters, digits, apostrophes, '&', '-' for a hyphen, '~' for any other mark that prolongs,
/// and blanks.
std::string Fold(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const unsigned c = g2pa::TakeCharacter(bytes);
        if (c >= 'A' && c <= 'Z')
            text.push_back(static_cast<char>(c - 'A' + 'a'));
        else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '&')
            text.push_back(static_cast<char>(c));
        else if (c == '_' || c == '~' || c == '+' || c == halfWidthLongMark || c == longMark || c == waveDash)
            text.push_back('~');
        else if (c == '\'' || c == '`' || c == curlyApostrophe || c == acuteAccent)
            text.push_back('\'');
        else if (c >= 0xC0 && c <= 0xFF && !accented[c - 0xC0].empty())
            text.append(accented[c - 0xC0]);
        else
            text.push_back(' ');
    }
    return text;
}

bool IsLetter(char c) { return c >= 'a' && c <= 'z'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

class WordReader {
public:
    WordReader(std::string_view text, std::vector<std::string>& words) : m_text(text), m_words(words) {}

    void Read() {
        while (m_at < m_text.size() && m_words.size() < G2PA_MAX_SLOTS) {
            const char c = m_text[m_at];
            if (IsLetter(c) || c == '\'')
                ReadWord();
            else if (IsDigit(c))
                ReadNumber();
            else {
                if (c == '&')
                    m_words.emplace_back("and");
                ++m_at;
            }
        }
    }

private:
    void ReadWord() {
        std::string word;
        for (; m_at < m_text.size(); ++m_at) {
            const char c = m_text[m_at];
            const bool hyphenInside = c == '-' && m_at + 1 < m_text.size() && IsLetter(m_text[m_at + 1]);
            if (IsLetter(c) || c == '\'')
                word.push_back(c);
            else if (!hyphenInside)
                break;
        }
        if (std::any_of(word.begin(), word.end(), IsLetter))
            m_words.push_back(std::move(word));
    }

    void ReadNumber() {
        const size_t end = std::min(m_text.find_first_not_of("0123456789", m_at), m_text.size());
        const std::string_view digits = m_text.substr(m_at, end - m_at);
        m_at = end;
        if (digits.size() == 2 && digits[0] != '0')
            return AddBelowHundred((digits[0] - '0') * 10 + (digits[1] - '0'));
        for (const char digit : digits.substr(0, G2PA_MAX_SLOTS))
            m_words.emplace_back(small[digit - '0']);
    }

    void AddBelowHundred(int number) {
        if (number < 20) {
            m_words.emplace_back(small[number]);
            return;
        }
        m_words.emplace_back(tens[number / 10]);
        if (number % 10)
            m_words.emplace_back(small[number % 10]);
    }

    std::string_view m_text;
    std::vector<std::string>& m_words;
    size_t m_at = 0;
};

} // namespace

LyricText ReadLyric(std::string_view bytes) {
    const std::string text = Fold(bytes);
    LyricText lyric;
    const size_t first = text.find_first_not_of(' ');
    if (first == text.npos)
        return lyric;
    const size_t last = text.find_last_not_of(' ');
    lyric.singsOn = text.find_first_not_of("-~ ") == text.npos;
    WordReader(text, lyric.words).Read();
    lyric.joinsPrevious = !lyric.words.empty() && text[first] == '-';
    lyric.joinsNext = !lyric.words.empty() && text[last] == '-';
    return lyric;
}

} // namespace g2pa_eng
