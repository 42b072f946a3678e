#include "torv/songs/text_encoding.h"

#include "torv/songs/song_error.h"

#include <torv/platform/text.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <iconv.h>
#endif

namespace torv::songs {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// The next character of a UTF-8 text, which is cut off its front; kReplacement and one byte when it is not UTF-8.
char32_t TakeCharacter(std::string_view& text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    const size_t length = first < 0x80 ? 1 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    char32_t value = length == 1 ? first : first & (0x7F >> length);
    bool good = (first < 0x80 || (first >= 0xC2 && first <= 0xF4)) && text.size() >= length;
    for (size_t i = 1; good && i < length; ++i) {
        good = (byte(i) & 0xC0) == 0x80;
        value = value << 6 | (byte(i) & 0x3F);
    }
    if (!good || value < kSmallest[length] || value > 0x10FFFF || (value >= 0xD800 && value < 0xE000)) {
        text.remove_prefix(1);
        return kReplacement;
    }
    text.remove_prefix(length);
    return value;
}

void AppendUtf8(std::string& out, char32_t c) {
    const auto put = [&](char32_t bits) { out += static_cast<char>(bits); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | c >> 6);
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | c >> 12);
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

bool IsKana(char32_t c) { return (c >= 0x3041 && c <= 0x30FF) || (c >= 0xFF66 && c <= 0xFF9F); }

#ifdef _WIN32

/// The code page of an encoding; 0 for none.
UINT CodePageOf(std::string_view name) {
    std::string plain;
    for (const char c : name)
        if (std::isalnum(static_cast<unsigned char>(c)))
            plain += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    constexpr struct {
        std::string_view name;
        UINT page;
    } kNames[] = {{"UTF8", CP_UTF8}, {"EUCJP", 20932}, {"BIG5", 950},    {"GBK", 936},        {"GB2312", 936},
                  {"EUCKR", 949},    {"KOI8R", 20866}, {"KOI8U", 21866}, {"MACINTOSH", 10000}};
    for (const auto& known : kNames)
        if (known.name == plain)
            return known.page;
    for (const auto& [prefix, base] : {std::pair<std::string_view, UINT>{"ISO8859", 28590}, {"WINDOWS", 0}, {"CP", 0}})
        if (plain.starts_with(prefix) && plain.size() > prefix.size() && plain.size() < prefix.size() + 6)
            return base + static_cast<UINT>(std::atoi(plain.c_str() + prefix.size()));
    return 0;
}

bool IsKnownEncoding(const std::string& name) { return CodePageOf(name) != 0 && IsValidCodePage(CodePageOf(name)); }

/// UTF-8 of one character; empty when it is none. The system would put a substitute, and in Japanese it is kana.
std::string CharacterToUtf8(std::string_view character, UINT page) {
    wchar_t wide[4];
    const int units =
        MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, character.data(), static_cast<int>(character.size()), wide, 4);
    char utf8[16];
    const int bytes = units > 0 ? WideCharToMultiByte(CP_UTF8, 0, wide, units, utf8, sizeof utf8, nullptr, nullptr) : 0;
    return {utf8, static_cast<size_t>(std::max(bytes, 0))};
}

std::string Decode(std::string_view bytes, const TextEncoding& encoding) {
    const UINT page = CodePageOf(encoding);
    std::string utf8;
    while (!bytes.empty()) {
        const size_t length = IsDBCSLeadByteEx(page, static_cast<BYTE>(bytes[0])) && bytes.size() > 1 ? 2 : 1;
        const std::string character = CharacterToUtf8(bytes.substr(0, length), page);
        utf8 += character.empty() ? "\xEF\xBF\xBD" : character;
        bytes.remove_prefix(character.empty() ? 1 : length);
    }
    return utf8;
}

void AppendCodePage932(std::string& out, const std::string& character) {
    wchar_t wide[4];
    const int units = MultiByteToWideChar(CP_UTF8, 0, character.data(), static_cast<int>(character.size()), wide, 4);
    char bytes[8];
    BOOL substituted = FALSE;
    const int count =
        WideCharToMultiByte(932, WC_NO_BEST_FIT_CHARS, wide, units, bytes, sizeof bytes, nullptr, &substituted);
    if (count > 0 && !substituted)
        out.append(bytes, static_cast<size_t>(count));
}

#else

bool IsKnownEncoding(const std::string& name) {
    const iconv_t converter = iconv_open("UTF-8", name.c_str());
    if (converter == reinterpret_cast<iconv_t>(-1))
        return false;
    iconv_close(converter);
    return true;
}

/// One conversion; what cannot be converted is passed over, and marked with `mark` when that is not empty.
std::string Convert(std::string_view from, const char* fromName, const char* toName, std::string_view mark) {
    const iconv_t converter = iconv_open(toName, fromName);
    if (converter == reinterpret_cast<iconv_t>(-1))
        return {};
    std::string to;
    char* in = const_cast<char*>(from.data());
    size_t left = from.size();
    while (left > 0) {
        char buffer[256];
        char* out = buffer;
        size_t room = sizeof buffer;
        const size_t before = left;
        const size_t result = iconv(converter, &in, &left, &out, &room);
        to.append(buffer, out);
        if (result == static_cast<size_t>(-1) && (room == sizeof buffer || left == before || room > 8) && left > 0) {
            to += mark;
            ++in;
            --left;
        }
    }
    iconv_close(converter);
    return to;
}

std::string Decode(std::string_view bytes, const TextEncoding& encoding) {
    return Convert(bytes, encoding.c_str(), "UTF-8", "\xEF\xBF\xBD");
}

void AppendCodePage932(std::string& out, const std::string& character) {
    out += Convert(character, "UTF-8", "CP932", {});
}

#endif

/// Letters that code page 932 lacks, by the plain letters they are sung as: U+00C0..U+00FF, and U+0100..U+017F below.
constexpr const char* kPlainLatin[64] = {
    "A", "A", "A", "A", "A", "A", "AE", "C", "E",  "E",  "E", "E", "I", "I", "I", "I", "D",  "N", "O",  "O", "O", "O",
    "O", "x", "O", "U", "U", "U", "U",  "Y", "Th", "ss", "a", "a", "a", "a", "a", "a", "ae", "c", "e",  "e", "e", "e",
    "i", "i", "i", "i", "d", "n", "o",  "o", "o",  "o",  "o", "",  "o", "u", "u", "u", "u",  "y", "th", "y"};

constexpr const char* kExtendedLatin = "AaAaAaCcCcCcCcDdDdEeEeEeEeEeGgGgGgGgHhHhIiIiIiIiIi??"
                                       "JjKkkLlLlLlLlLlNnNnNnnNnOoOoOo??RrRrRrSsSsSsSsTtTtTtUuUuUuUuUuUu"
                                       "WwYyYZzZzZzs";
static_assert(std::char_traits<char>::length(kExtendedLatin) == 0x80);

/// Whole alphabets that are written with the plain letters: each row's letters up to its last, in pairs of both cases.
constexpr struct {
    char32_t first;
    char32_t last;
    const char* letters;
} kLatinRows[] = {{0x1A0, 0x1A1, "Oo"},   {0x1AF, 0x1B0, "Uu"},   {0x1CD, 0x1CE, "Aa"},   {0x1CF, 0x1D0, "Ii"},
                  {0x1D1, 0x1D2, "Oo"},   {0x1D3, 0x1DC, "Uu"},   {0x218, 0x219, "Ss"},   {0x21A, 0x21B, "Tt"},
                  {0x1EA0, 0x1EB7, "Aa"}, {0x1EB8, 0x1EC7, "Ee"}, {0x1EC8, 0x1ECB, "Ii"}, {0x1ECC, 0x1EE3, "Oo"},
                  {0x1EE4, 0x1EF1, "Uu"}, {0x1EF2, 0x1EF9, "Yy"}};

/// From U+FB00 on.
constexpr const char* kLigatures[] = {"ff", "fi", "fl", "ffi", "ffl", "st", "st"};

/// Empty for what is no Latin letter.
std::string PlainLatin(char32_t c) {
    for (const auto& row : kLatinRows)
        if (c >= row.first && c <= row.last)
            return std::string(1, row.letters[(c - row.first) % 2]);
    if (c >= 0xFB00 && c - 0xFB00 < std::size(kLigatures))
        return kLigatures[c - 0xFB00];
    switch (c) {
    case 0x132:
    case 0x133:
        return c == 0x132 ? "IJ" : "ij";
    case 0x1FC:
    case 0x1FD:
        return c == 0x1FC ? "AE" : "ae";
    case 0x152:
    case 0x153:
        return c == 0x152 ? "OE" : "oe";
    default:
        break;
    }
    if (c >= 0xC0 && c <= 0xFF)
        return kPlainLatin[c - 0xC0];
    return c >= 0x100 && c <= 0x17F ? std::string(1, kExtendedLatin[c - 0x100]) : std::string();
}

} // namespace

std::optional<TextEncoding> TextEncodingNamed(std::string_view name) {
    std::string plain;
    for (const char c : name)
        if (std::isalnum(static_cast<unsigned char>(c)))
            plain += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    constexpr struct {
        std::string_view name;
        const char* encoding;
    } kNames[] = {{"utf8", kUtf8},        {"shiftjis", kShiftJis}, {"sjis", kShiftJis},
                  {"cp932", kShiftJis},   {"eucjp", kEucJp},       {"latin1", kWestern},
                  {"iso88591", kWestern}, {"cp1252", kWestern},    {"windows1252", kWestern}};
    for (const auto& known : kNames)
        if (known.name == plain)
            return known.encoding;
    const std::string other(name);
    return !plain.empty() && IsKnownEncoding(other) ? std::optional(other) : std::nullopt;
}

std::optional<TextEncoding> EncodingAskedFor(std::string_view name) {
    if (name.empty())
        return std::nullopt;
    if (auto encoding = TextEncodingNamed(name))
        return encoding;
    throw NameError("there is no encoding \"" + std::string(name.substr(0, 40)) +
                    "\": choose utf-8, shift-jis, euc-jp, latin-1 or another that iconv -l lists");
}

namespace {

/// How many characters of a text in a Japanese encoding are kana rather than others that are no ASCII; nothing when it
/// is not in that encoding.
std::optional<int> KanaOverOthers(std::string_view bytes, const TextEncoding& encoding) {
    const std::string decoded = Decode(bytes, encoding);
    int kana = 0;
    int other = 0;
    int halfWidth = 0;
    for (std::string_view rest = decoded; !rest.empty();) {
        const char32_t c = TakeCharacter(rest);
        if (c == kReplacement)
            return std::nullopt;
        if (c >= 0xFF61 && c <= 0xFF9F)
            ++halfWidth;
        else if (c >= 0x80)
            ++(c >= 0x3041 && c <= 0x30FF ? kana : other);
    }
    // One accent in Western text is one half-width kana: those count only where they stand side by side.
    static constexpr auto isHalfByte = [](char c) {
        return static_cast<unsigned char>(c) >= 0xA1 && static_cast<unsigned char>(c) <= 0xDF;
    };
    const auto pair =
        std::adjacent_find(bytes.begin(), bytes.end(), [](char a, char b) { return isHalfByte(a) && isHalfByte(b); });
    if (pair != bytes.end())
        kana += halfWidth;
    return kana > 0 && kana * 2 >= other ? std::optional(kana * 2 - other) : std::nullopt;
}

} // namespace

TextEncoding DetectEncoding(std::string_view bytes) {
    bool utf8 = true;
    for (std::string_view rest = bytes; utf8 && !rest.empty();)
        utf8 = TakeCharacter(rest) != kReplacement;
    if (utf8)
        return kUtf8;
    // Kana in EUC-JP are pairs of half-width kana in Shift-JIS, where no file has so many of them and nothing else.
    const std::optional<int> shiftJis = KanaOverOthers(bytes, kShiftJis);
    const std::optional<int> eucJp = KanaOverOthers(bytes, kEucJp);
    if (eucJp && *eucJp * 2 >= shiftJis.value_or(0))
        return kEucJp;
    return shiftJis ? kShiftJis : kWestern;
}

std::string ToUtf8(std::string_view bytes, const TextEncoding& encoding) {
    if (encoding != kUtf8)
        return Decode(bytes, encoding);
    std::string out;
    for (std::string_view rest = bytes; !rest.empty();)
        AppendUtf8(out, TakeCharacter(rest));
    return out;
}

std::string Utf16ToUtf8(std::string_view bytes) {
    const size_t low = bytes.starts_with("\xFF\xFE") ? 0 : 1; // of a pair's bytes
    const auto unit = [&](size_t at) {
        const auto byte = [&](size_t which) {
            return static_cast<char32_t>(static_cast<unsigned char>(bytes[at + which]));
        };
        return byte(low) | byte(1 - low) << 8;
    };
    std::string text;
    for (size_t at = 2; at + 1 < bytes.size(); at += 2) {
        char32_t c = unit(at);
        if (c >= 0xD800 && c < 0xDC00 && at + 3 < bytes.size() && unit(at + 2) >= 0xDC00 && unit(at + 2) < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (unit(at + 2) - 0xDC00);
            at += 2;
        }
        AppendUtf8(text, c >= 0xD800 && c < 0xE000 ? kReplacement : c);
    }
    return text;
}

std::string Utf8ToCodePage932(std::string_view utf8) {
    std::string out;
    for (std::string_view rest = utf8; !rest.empty();) {
        const char32_t c = TakeCharacter(rest);
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if ((c >= 0xFF10 && c <= 0xFF19) || (c >= 0xFF21 && c <= 0xFF3A) || (c >= 0xFF41 && c <= 0xFF5A)) {
            out += static_cast<char>(c - 0xFEE0); // wide digits and letters
        } else if (const std::string plain = PlainLatin(c); !plain.empty()) {
            out += plain;
        } else if (c == 0x2018 || c == 0x2019 || c == 0x2BC || c == 0x2032 || c == 0xB4 || c == 0x201B) {
            out += '\'';
        } else if (c == 0x2010 || c == 0x2011 || c == 0x2013) {
            out += '-';
        } else if (c == 0xA0 || c == 0x202F) { // hard blanks
            out += ' ';
        } else if (c != kReplacement) {
            std::string character;
            AppendUtf8(character, c);
            AppendCodePage932(out, character);
        }
    }
    return out;
}

std::string CutAtCharacter(std::string_view bytes, size_t most) {
    if (bytes.size() <= most)
        return std::string(bytes);
    const TextEncoding encoding = DetectEncoding(bytes);
    const auto isLead = [&encoding](unsigned char c) {
        return encoding == kShiftJis ? torv::IsLeadByte932(c) : encoding == kEucJp && c >= 0x8E;
    };
    size_t end = 0;
    for (std::string_view rest = bytes; !rest.empty(); end = bytes.size() - rest.size()) {
        if (encoding == kUtf8)
            TakeCharacter(rest);
        else
            rest.remove_prefix(isLead(static_cast<unsigned char>(rest[0])) && rest.size() > 1 ? 2 : 1);
        if (bytes.size() - rest.size() > most)
            break;
    }
    return std::string(bytes.substr(0, end));
}

bool HasKana(std::string_view utf8) {
    while (!utf8.empty())
        if (IsKana(TakeCharacter(utf8)))
            return true;
    return false;
}

bool HasKanji(std::string_view utf8) {
    while (!utf8.empty()) {
        const char32_t c = TakeCharacter(utf8);
        if (c >= 0x4E00 && c <= 0x9FFF)
            return true;
    }
    return false;
}

} // namespace torv::songs
