// Any bytes load; what was loaded and saved, in either form, loads again with as many sections.
#include "torv/typed_file/typed_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CxTypedFile file;
    if (!file.Load(data, static_cast<DWORD>(size)))
        std::abort();
    CxSectionMap& sections = *file.GetSectionMap();
    for (POSITION at = sections.GetStartPosition(); at;) {
        CString name;
        CxEntryMap* entries = nullptr;
        sections.GetNextAssoc(at, name, entries);
        for (POSITION entry = entries->GetStartPosition(); entry;) {
            CString key;
            CString value;
            entries->GetNextAssoc(entry, key, value);
            if (file.ReadAt(name, key, "missing") != value)
                std::abort();
        }
    }
    for (const bool compact : {false, true}) {
        CMemFile saved;
        if (!(compact ? file.Save2(&saved) : file.Save(&saved)))
            std::abort();
        CxTypedFile again;
        if (!again.Load(&saved) || again.GetSectionCount() > file.GetSectionCount())
            std::abort();
    }
    const std::string text(reinterpret_cast<const char*>(data), size);
    char field[8];
    for (const char* rest = text.c_str(); *rest;)
        rest = CxTypedFile::ExtractString(field, sizeof field, rest, ',');
    CxTypedFile::ahextol(text.c_str());
    CxTypedFile::ahextodouble(text.c_str());
    return 0;
}
