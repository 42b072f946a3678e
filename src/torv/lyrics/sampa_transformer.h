#pragma once

#include "torv/platform/platform.h"

#include <list>
#include <vector>

class CLyricElement;
class CLyricObject;
class CSequenceObject;
struct G2paOutput;

namespace torv {
class PhonemeConverter;
}

/// One singer change of a track.
struct TSingerInfo {
    DWORD position; ///< tick
    int language;   ///< whose symbols are sung from there on: torv::kJapanese or torv::kEnglish
};
static_assert(sizeof(TSingerInfo) == 8);

/// Turns the lyrics of a track into phonemes by streaming every syllable, in song order, through the external phoneme
/// converters that are loaded. Runs on the caller's thread. When it fails, for want of memory too, no lyric is changed.
/// What the user is told is shown at the very end: at a message the host may use the transformer again, change or
/// delete the track and free the converters.
class TORV_API CxSampaTransformer {
public:
    /// Any number may live side by side; the converters that they use are the process's.
    CxSampaTransformer();
    virtual ~CxSampaTransformer();

    /// Converts the whole track as one language. `value` is passed on, divided by 480. 1, or 0 when the converter is
    /// missing or fails.
    int DoTransform(CSequenceObject* track, DWORD value, int language);
    /// Each note in the language of the singer in force there; needs both converters.
    int DoTransform(CSequenceObject* track, DWORD value);
    /// A converter's version text; empty for any other language or when it is not loaded. Throws std::bad_alloc.
    static CString GetG2PAVersionString(int language);
    /// Where a loaded converter has a word's sounds from, a value of G2PA_WORD_... (torv/abi/g2pa.h); below 0 when it
    /// does not tell. The word is code page 932, with hyphens between its syllables or without.
    static int FindWord(const char* word, int language);

    /// The last error code of a converter, 0 for none.
    int GetLastReturnCode() const { return m_nReturnCode; }

protected:
    using Converters = std::list<torv::PhonemeConverter>;
    /// The phonemes that a syllable is to have.
    struct Change;

    static int LoadFunction(Converters& converters, int language); ///< the converter of one language
    static int LoadFunction(Converters& converters);               ///< both, Japanese first
    int BeginTransform(torv::PhonemeConverter& converter, DWORD value);
    /// Puts every syllable of a lyric and takes what comes back. `position` is the note's, relative to the previous
    /// note with a lyric.
    int TransformLyricObject(torv::PhonemeConverter& converter, CLyricObject* lyric, DWORD position, DWORD noteLength);
    int SweepOut(torv::PhonemeConverter& converter);
    int EndTransform(torv::PhonemeConverter& converter);
    /// Notes what a lyric's syllables become; those edited by hand use their results up and stay as they are. Answers
    /// how many results are missing.
    static int UpdateLyricObject(torv::PhonemeConverter& converter, CLyricObject* lyric, std::vector<Change>& changes);
    /// The phonemes of an output as one text of at most `size` - 1 bytes: joined as they are, or with a blank between
    /// them. The length; 0 and an empty text when there are none.
    static int GetJPhoneme(const G2paOutput& output, char* buffer, int size);
    static int GetEPhoneme(const G2paOutput& output, char* buffer, int size);
    /// Shows an error code of a converter.
    static void TranErrorProcess(int code);

    static int GetSingerCount(CSequenceObject* track);
    int CreateSingerInfo(CSequenceObject* track);
    /// Of the last singer at or before a tick; -1 before the first.
    int GetLanguage(DWORD position) const;

private:
    /// How a conversion has ended, and what the user is to be told of it.
    struct Outcome {
        int result = 0;
        bool hasFailed = false; ///< a converter, with `code`
        int code = 0;
        int missingResults = 0;
    };

    template <class Load>
    int Transform(CSequenceObject* track, DWORD value, Load load);
    Outcome Convert(CSequenceObject* track, DWORD value, Converters& converters);
    int PutLyrics(CSequenceObject* track, Converters& converters, Outcome& outcome);
    void StoreResults(CSequenceObject* track, Converters& converters, Outcome& outcome) const;
    torv::PhonemeConverter& ConverterAt(DWORD position, Converters& converters) const;
    int Keep(int code);

    int m_nReturnCode = 0;
    std::vector<TSingerInfo> m_singers; ///< none while one language is converted
};
