// Lyrics from any section of any file, from any text and from their own host records.
#include "torv/lyrics/lyric_object.h"
#include "torv/typed_file/typed_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CxTypedFile file;
    file.Load(data, static_cast<DWORD>(size));
    CLyricObject lyric;
    CxSectionMap& sections = *file.GetSectionMap();
    for (POSITION at = sections.GetStartPosition(); at;) {
        CString name;
        CxEntryMap* entries = nullptr;
        sections.GetNextAssoc(at, name, entries);
        lyric.ConstructParameter(&file, name);
    }
    tagLyricObject record{};
    lyric.DescribeParameter(&record);
    CLyricObject copy;
    copy.ConstructParameter(&record);
    if (copy.GetElementCount() != lyric.GetElementCount())
        std::abort();
    torv::ReleaseLyricRecord(&record);
    while (lyric.RemoveElementAt(0, 1) || lyric.GetElementCount() > 0) {
    }

    const std::string text(reinterpret_cast<const char*>(data), size);
    for (const int language : {0, 1}) {
        CString syllable;
        for (const char* rest = text.c_str(); *rest;) {
            const char* const next = CLyricObject::SyllabicateLyric(syllable, rest, language);
            if (next <= rest)
                std::abort(); // every call takes something
            rest = next;
        }
        CLyricElement element;
        element.SetPhonemeString(text.c_str(), language);
    }
    CLyricObject::IsVowel(text.c_str());
    return 0;
}
