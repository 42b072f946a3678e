#pragma once

#include "torv/lyrics/lyric_element.h"
#include "torv/platform/language.h"

#include <memory>
#include <vector>

class CxTypedFile;

/// Host record of a lyric. When the object describes itself the array is new[], with nodes of its own: free all of it
/// with torv::ReleaseLyricRecord.
struct tagLyricObject {
    int count;                   ///< syllables
    tagLyricSyllable* syllables; ///< an array of `count`
};
static_assert(sizeof(void*) != 4 || sizeof(tagLyricObject) == 8);

namespace torv {

/// Frees a described record's array and nodes and clears it; null is left alone.
TORV_API void ReleaseLyricRecord(tagLyricObject* record);

} // namespace torv

/// A note's lyric: its syllables in order, which it owns. Texts are code page 932. Results are 1 and 0.
/// Where memory is refused, what has a result answers 0 or null and leaves the object as it was; copying throws
/// std::bad_alloc.
class TORV_API CLyricObject : public CObject {
public:
    /// Without syllables.
    CLyricObject();
    /// Copies every syllable; null gives a lyric without any. Throws std::bad_alloc.
    explicit CLyricObject(CLyricObject* other);
    CLyricObject(const CLyricObject&) = delete;
    CLyricObject& operator=(const CLyricObject&) = delete;
    ~CLyricObject() override;

    /// The new element stays the object's. Null when memory is short.
    CLyricElement* AddNewElement();
    /// The same as a copy of the model; of null an empty one.
    CLyricElement* AddNewElement(CLyricElement* model);
    /// Takes the element over, unless it answers 0; an index out of range is the nearest end. 0 for null.
    int InsertElementAt(int index, CLyricElement* element);
    /// Null out of range; syllables that are handed out stay the object's.
    /// @{
    CLyricElement* GetElementAt(int index) const;
    int GetElementCount() const { return static_cast<int>(m_elements.size()); }
    /// @}
    /// Deletes an element and, with `share`, gives its part of the note to the others. 0 when there is none, and when
    /// its part was the whole note: the others then keep theirs.
    int RemoveElementAt(int index, int share);
    /// Deletes every element.
    void RemoveAll();

    int GetPhonemeEditMark() const; ///< the first element's
    /// Marks every element.
    void SetPhonemeEditMark(int mark);

    /// From and into a section with the keys "L0", "L1", ...: text, phonemes, part and advancements parted by commas.
    /// Reading appends, and stops at the first key that is missing or empty. A comma in a lyric moves the fields: the
    /// form has no escape.
    int ConstructParameter(CxTypedFile* file, const char* section);
    /// The reverse.
    int DescribeParameter(CxTypedFile* file, const char* section) const;
    /// From and into a host's record; 0 for null. The second allocates: torv::ReleaseLyricRecord.
    /// @{
    int ConstructParameter(const tagLyricObject* record);
    int DescribeParameter(tagLyricObject* record) const;
    /// @}

    /// What is sung where nothing is given; any other language counts as Japanese.
    static const char* GetDefaultLyric(int language);
    /// The phoneme of that default.
    static const char* GetDefaultPhoneme(int language);
    /// The default phoneme, whatever the lyric: real ones come from the transformer.
    static int LyricToPhoneme(CString& phoneme, const char* lyric, int language);
    /// Puts the first syllable of `lyric` into `syllable` and returns where the next one starts. For any other language
    /// `lyric` comes back and the syllable is empty. Null for want of memory. `lyric` is no text of the syllable's own.
    static const char* SyllabicateLyric(CString& syllable, const char* lyric, int language);
    /// The same for one language.
    /// @{
    static const char* SyllabicateLyricJpn(CString& syllable, const char* lyric);
    static const char* SyllabicateLyricEng(CString& syllable, const char* lyric);
    /// @}
    /// Whether the first double-byte character is a vowel kana.
    static int IsVowel(const char* text);
    static int IsHiraVowel(unsigned int character); ///< the long mark and the nasal count
    static int IsKanaVowel(unsigned int character); ///< the nasal counts, the long mark not

protected:
    static CString FormatParameter(const CLyricElement& element);
    static void UnformatParameter(CLyricElement& element, const char* value);
    int ShareDeltaRate(float rate);
    /// Whether all elements agree in being edited or not.
    int VerifyPhonemeEditMark() const;

private:
    using Elements = std::vector<std::unique_ptr<CLyricElement>>;
    Elements m_elements;
};
