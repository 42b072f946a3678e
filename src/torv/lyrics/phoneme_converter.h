#pragma once

#include "torv/abi/g2pa.h"
#include "torv/platform/platform.h"

#include <deque>
#include <vector>

namespace torv {

/// The symbols of a converter's output as one text of at most `size` - 1 bytes, `separator` between them. The length; 0
/// and an empty text when there are none.
int JoinSymbols(const G2paOutput& output, const char* separator, char* buffer, int size);

/// One conversion by the converter library of one language: syllables go in, their phonemes come out in the same order,
/// some of them only when the input has ended. Results are 0, or the library's error code; only Create and Bind come
/// before the others.
class PhonemeConverter {
public:
    explicit PhonemeConverter(int language) : m_language(language) {}
    PhonemeConverter(const PhonemeConverter&) = delete;
    PhonemeConverter& operator=(const PhonemeConverter&) = delete;
    /// Ends and deletes what was created and not deleted.
    ~PhonemeConverter();

    int Language() const { return m_language; }

    /// Looks up the entry points; false when the library is not loaded or lacks one.
    bool Bind();
    int Create(DWORD beats);
    /// A syllable at a tick, relative to the previous note with a lyric, and its length in ticks.
    int Put(DWORD position, DWORD length, const CString& text);
    int EndInput();
    int Delete();

    /// The next syllable's phonemes; empty when none has come.
    CString TakeResult();

private:
    int CollectOutputs();

    int m_language;
    G2paCreateProc m_create = nullptr;
    G2paDeleteProc m_delete = nullptr;
    G2paPutProc m_put = nullptr;
    G2paGetProc m_get = nullptr;
    int m_handle = -1;
    std::vector<BYTE> m_input; ///< the record being put
    std::deque<CString> m_results;
};

} // namespace torv
