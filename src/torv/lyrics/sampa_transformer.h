#pragma once

#include "torv/platform/platform.h"

#include <array>
#include <vector>

#include "g2pa_abi.h"

class CLyricObject;
class CSequenceObject;

/// One singer change of a track.
struct TSingerInfo {
    DWORD position; ///< tick
    int language;
};
static_assert(sizeof(TSingerInfo) == 8);

/// Turns the lyrics of a track into phonemes by streaming every syllable, in song order, through the external phoneme
/// converters that the application object has loaded. One conversion at a time; runs on the caller's thread. When it
/// fails no lyric is changed.
class TORV_API CxSampaTransformer {
public:
    CxSampaTransformer();
    virtual ~CxSampaTransformer();

    /// Converts the whole track as one language (0 or 1). `value` is passed on, divided by 480. 1, or 0 when the
    /// converter is missing or fails.
    int DoTransform(CSequenceObject* track, DWORD value, int language);
    /// Each note in the language of the singer in force there; needs both converters.
    int DoTransform(CSequenceObject* track, DWORD value);
    /// A converter's version text; empty for any other language or when it is not loaded.
    static CString GetG2PAVersionString(int language);

    /// The last error code of a converter, 0 for none.
    int GetLastReturnCode() const { return m_nReturnCode; }

protected:
    /// One converter in use: its entry points, its handle, what it has delivered and how much of that is used up.
    struct Converter {
        int language = 0;
        G2paCreateProc create = nullptr;
        G2paDeleteProc release = nullptr;
        G2paPutProc put = nullptr;
        G2paGetProc get = nullptr;
        int handle = -1;
        std::vector<CString> results;
        size_t used = 0;
    };

    int LoadFunction(int language); ///< the converter of one language
    int LoadFunction();             ///< both
    int BeginTransform(Converter& converter, DWORD value);
    /// Puts every syllable of a lyric and takes what comes back. `position` is the note's, relative to the previous
    /// note with a lyric.
    int TransformLyricObject(Converter& converter, CLyricObject* lyric, DWORD position, DWORD noteLength);
    int SweepOut(Converter& converter);
    int EndTransform(Converter& converter);
    /// Gives a lyric's syllables their results; those edited by hand use theirs up and stay as they are.
    int UpdateLyricObject(Converter& converter, CLyricObject* lyric);
    /// The phonemes of an output as one text of at most `size` - 1 bytes: joined as they are, or with a blank between
    /// them. The length; 0 and an empty text when there are none.
    static int GetJPhoneme(const G2paOutput& output, char* buffer, int size);
    static int GetEPhoneme(const G2paOutput& output, char* buffer, int size);
    void TranErrorProcess() const;

    static int GetSingerCount(CSequenceObject* track);
    int CreateSingerInfo(CSequenceObject* track);
    /// Of the last singer at or before a tick; -1 before the first.
    int GetLanguage(DWORD position) const;

private:
    enum class Mode { OneLanguage, BySinger };

    int BindFunctions(Converter& converter, HMODULE module);
    int Transform(CSequenceObject* track, DWORD value, Mode mode);
    Converter& ConverterAt(DWORD position, Mode mode);
    /// Takes outputs until there are none for now; 0 after an error code.
    int CollectOutputs(Converter& converter);
    template <class Visit>
    int VisitLyrics(CSequenceObject* track, Visit visit);

    int m_nReturnCode = 0;
    std::vector<TSingerInfo> m_singers;
    std::vector<Converter> m_converters; ///< one, or one a language
    std::vector<BYTE> m_input;           ///< the record being put
    G2paOutput m_output;
};
