#include "torv/songs/ust_reader.h"

#include "torv/songs/number_text.h"
#include "torv/songs/song_error.h"
#include "torv/songs/text_encoding.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

namespace torv::songs {

namespace {

using std::string_view;

constexpr size_t kLargestUst = 16U << 20; // bytes
constexpr double kSlowest = 4;            // quarters a minute
constexpr double kFastest = 3000;
constexpr double kUsualIntensity = 100; // of a note that names none

string_view TakeLine(string_view& text) {
    const size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

/// Some editors write the system's decimal comma.
double DecimalOf(string_view value, double otherwise) {
    std::string plain(value);
    std::replace(plain.begin(), plain.end(), ',', '.');
    return NumberOf(plain, otherwise);
}

/// The encoding that the text names, which its own bytes can be read for in any.
std::string EncodingOf(string_view text, const ReadOptions& options) {
    if (const auto asked = EncodingAskedFor(options.encoding))
        return *asked;
    for (string_view rest = text; !rest.empty();)
        if (string_view line = TakeLine(rest); line.starts_with("Charset="))
            if (const auto named = TextEncodingNamed(line.substr(line.find('=') + 1)))
                return *named;
    const std::string looksLike = DetectEncoding(text);
    return looksLike == kWestern ? kShiftJis : looksLike; // of Japanese without kana nothing else can be told
}

struct Section {
    std::string name;
    double length = 0;
    int key = -1;
    double intensity = kUsualIntensity;
    double tempo = 0;
    std::string lyric;
    bool hasCurves = false;
};

/// -1 for what is none.
int KeyOf(double number) { return number >= 0 && number < 128 ? static_cast<int>(number) : -1; }

/// The syllable itself: recordings by pairs name the vowel before it, "a ka" or "- ka", and those at several heights
/// theirs behind the kana.
std::string SyllableOf(const std::string& lyric) {
    const size_t blank = lyric.find(' ');
    const bool isPair =
        blank == 1 && (lyric[0] == '-' || std::string_view("aiueonN*").find(lyric[0]) != string_view::npos);
    std::string syllable = isPair ? lyric.substr(blank + 1) : lyric;
    syllable.erase(0, syllable.find_first_not_of("@?")); // which choose between recordings
    const auto isFirstByte = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    for (size_t at = 0; at < syllable.size();) {
        const auto next =
            std::find_if(syllable.begin() + static_cast<std::ptrdiff_t>(at) + 1, syllable.end(), isFirstByte);
        const auto end = static_cast<size_t>(next - syllable.begin());
        if (!HasKana(syllable.substr(at, end - at)))
            return at > 0 ? syllable.substr(0, at) : syllable;
        at = end;
    }
    return syllable;
}

bool IsRest(const Section& section) {
    const std::string syllable = SyllableOf(section.lyric); // "a R" ends a vowel
    constexpr std::string_view kRests[] = {
        "R",  "r",      "rest", "pau",          "sil",         "SP",
        "br", "breath", "AP",   "\xE6\x81\xAF", "\xE5\x90\xB8"}; // breaths among them
    return std::find(std::begin(kRests), std::end(kRests), syllable) != std::end(kRests) ||
           (syllable.empty() && section.key < 0);
}

/// A text in UTF-16 as UTF-8, any other as it is.
std::string WithoutUtf16(string_view text) {
    return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF") ? Utf16ToUtf8(text) : std::string(text);
}

class UstReader {
public:
    Song Read(string_view text) {
        m_song.format = "UST";
        m_song.parts.resize(1);
        m_song.parts[0].track = 1;
        while (!text.empty() && !m_isLong)
            ReadLine(TakeLine(text));
        EndSection();
        if (m_hasCurves)
            m_song.remarks.push_back("curves of pitch and loudness within notes are left out");
        if (m_hasOddTempo)
            m_song.remarks.push_back("a tempo that is not from 4 to 3000 quarters a minute is left out");
        if (m_lost > 0)
            m_song.remarks.push_back(
                (m_lost == 1 ? std::string("1 note has") : std::to_string(m_lost) + " notes have") +
                " no length or key that can be read and " + (m_lost == 1 ? "is" : "are") + " left out" +
                (m_lost == 1 ? ": [" : ", the first in [") + m_firstLost + "]");
        if (m_isLong)
            m_song.remarks.push_back("is longer than any song; the rest is left out");
        return std::move(m_song);
    }

private:
    void ReadLine(string_view line) {
        if (line.starts_with('[')) {
            EndSection();
            const string_view name = line.substr(1, std::min(line.find(']'), line.size()) - 1);
            m_section.name = name.substr(0, 20);
            m_isSetting = name == "#SETTING";
            m_isNote =
                name.size() > 1 && name[0] == '#' && name.find_first_not_of("0123456789", 1) == string_view::npos;
            return;
        }
        const size_t equal = line.find('=');
        if (equal == string_view::npos)
            return;
        const string_view key = line.substr(0, equal);
        const string_view value = line.substr(equal + 1);
        if (m_isSetting && key == "Tempo")
            AddTempo(DecimalOf(value, 0));
        else if (m_isSetting && key == "ProjectName")
            m_song.title = value;
        else if (m_isNote)
            ReadEntry(key, value);
    }

    void ReadEntry(string_view key, string_view value) {
        if (key == "Length")
            m_section.length = std::clamp(DecimalOf(value, 0), 0.0, static_cast<double>(kLastTick));
        else if (key == "NoteNum")
            m_section.key = KeyOf(DecimalOf(value, -1));
        else if (key == "Lyric")
            m_section.lyric = value;
        else if (key == "Intensity")
            m_section.intensity = DecimalOf(value, kUsualIntensity);
        else if (key == "Tempo")
            m_section.tempo = DecimalOf(value, 0);
        else if (key == "PBS" || key == "Piches" || key == "PitchBend" || key == "VBR")
            m_section.hasCurves = true;
    }

    void AddTempo(double quartersPerMinute) {
        if (quartersPerMinute >= kSlowest && quartersPerMinute <= kFastest)
            m_song.tempos.push_back(
                {m_at, static_cast<uint32_t>(std::clamp(std::round(6e7 / quartersPerMinute), 1.0, 16777215.0))});
        else if (quartersPerMinute > 0)
            m_hasOddTempo = true;
    }

    void EndSection() {
        if (m_isNote) {
            AddTempo(m_section.tempo);
            const auto length = static_cast<uint32_t>(m_section.length);
            m_isLong = length > kLastTick - m_at;
            const bool isNote = !m_isLong && !IsRest(m_section);
            if (isNote && length > 0 && m_section.key >= 0)
                AddNote(length);
            else if (isNote && m_lost++ == 0)
                m_firstLost = m_section.name;
            m_at += m_isLong ? 0 : length;
            m_song.end = m_at;
        }
        m_section = {};
        m_isNote = m_isSetting = false;
    }

    void AddNote(uint32_t length) {
        Note note;
        note.tick = m_at;
        note.length = length;
        note.key = m_section.key;
        note.velocity = static_cast<int>(std::clamp(std::round(m_section.intensity * 0.8), 1.0, 127.0));
        const std::string syllable = SyllableOf(m_section.lyric);
        if (!syllable.empty() && syllable != "+" && syllable != "-") { // which go on with the vowel before
            note.words.emplace_back();
            note.words.back().text = syllable;
        }
        m_hasCurves = m_hasCurves || m_section.hasCurves;
        m_song.parts[0].notes.push_back(std::move(note));
    }

    Song m_song;
    Section m_section;
    uint32_t m_at = 0;
    size_t m_lost = 0;       ///< notes left out
    std::string m_firstLost; ///< the section of the first
    bool m_isSetting = false;
    bool m_isNote = false;
    bool m_hasCurves = false;
    bool m_hasOddTempo = false;
    bool m_isLong = false;
};

} // namespace

bool IsUst(Bytes bytes) {
    const std::string text =
        WithoutUtf16({reinterpret_cast<const char*>(bytes.data()), std::min<size_t>(bytes.size(), 4096)});
    const size_t first = text.find('[');
    return first != string_view::npos &&
           text.substr(0, first).find_first_not_of("\xEF\xBB\xBF \t\r\n") == string_view::npos &&
           (text.compare(first, 10, "[#VERSION]") == 0 || text.compare(first, 10, "[#SETTING]") == 0 ||
            text.compare(first, 7, "[#0000]") == 0);
}

Song ReadUstSong(Bytes bytes, const ReadOptions& options) {
    if (bytes.size() > kLargestUst)
        throw SongError("is larger than 16 MB, which no UST is");
    const std::string plain = WithoutUtf16({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    string_view text = plain;
    text.remove_prefix(text.find('[')); // behind a byte order mark
    return UstReader().Read(ToUtf8(text, EncodingOf(text, options)));
}

} // namespace torv::songs
