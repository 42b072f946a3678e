#pragma once

#include "torv/typed_file/section_map.h"

/// The library's keyed text file: named sections of key/value texts, in order.
///
///     [Section]
///     key = value ; comment
///
/// Lines that make no sense are passed over, so any bytes load. Bytes above 0x7F are text. Values have no escapes: one
/// that holds ";" or begins with a blank is written as it stands and reads back changed. Results are 1 and 0, memory
/// that cannot be had included, and nothing is shown; only what hands out or takes a text without a result throws
/// std::bad_alloc.
class TORV_API CxTypedFile {
public:
    CxTypedFile() = default;
    virtual ~CxTypedFile();
    CxTypedFile(const CxTypedFile&) = delete;
    CxTypedFile& operator=(const CxTypedFile&) = delete;

    /// Each discards what was held. 0, and the object holds nothing, when the file cannot be read or memory runs out.
    int Load(const char* path);
    /// The whole file from its beginning; the path name becomes the file's.
    int Load(CFile* file);
    /// `length` bytes of memory; the path name stays.
    int Load(const unsigned char* text, DWORD length);

    /// To the path name, in the spaced form. The file is replaced when the new one is whole: a save that answers 0 has
    /// left the old one as it was.
    int Save();
    /// As Save, to another path, which is the path name from then on.
    int SaveAs(const char* path);
    /// Into an open file at its position, "key = value" with CR LF and an empty line after each section; 0 for a file
    /// error.
    int Save(CFile* file);
    /// The compact form: "key=value" with LF and no empty lines.
    int Save2(CFile* file);

    /// The section of this name, made at the end when it is missing.
    int AddSection(const char* name);
    /// Sets a key, making the section when it is missing. A key that is there keeps its place.
    int WriteAt(const char* section, const char* key, const char* value);
    /// `defaultValue` (may be null) only when the section is missing; a missing key of a section that exists reads as
    /// an empty text. Throws std::bad_alloc.
    CString ReadAt(const char* section, const char* key, const char* defaultValue) const;
    /// 0 when there is nothing of that name.
    /// @{
    int RemoveSection(const char* name);
    int RemoveEntry(const char* section, const char* key);
    /// @}

    /// Null when there is no such section; valid until it is removed or another file is loaded.
    CxEntryMap* GetEntryMap(const char* name) const;
    /// The sections in order, and how many there are. They stay the file's.
    /// @{
    CxSectionMap* GetSectionMap() { return &m_sections; }
    int GetSectionCount() const { return m_sections.GetCount(); }
    /// @}
    /// Empties the path name as well.
    void RemoveAll();

    /// Throws std::bad_alloc.
    void SetPathName(const char* path);
    /// Of the file loaded last, or as set; empty at first.
    CString GetPathName() const { return m_path; }

    /// Copies the first field of a list separated by `separator` (which never matches half of a double-byte character)
    /// into `dst`, without the blanks around it, at most `dstSize` - 1 bytes. Returns where the next field starts, or
    /// the terminating NUL.
    static char* ExtractString(char* dst, int dstSize, const char* src, int separator);
    /// The first eight hexadecimal digits of the text, whatever stands between them.
    static LONG ahextol(const char* text);
    /// The first sixteen hexadecimal digits as the bits of a double.
    static double ahextodouble(const char* text);
    /// 32.32 fixed point: the integer part toward zero, and the rest in units of 2^-32, low 32 bits of each.
    static void ftofix(DWORD* whole, DWORD* fraction, double value);
    /// Forward copy; overlap is the caller's affair.
    static void BuffCopy(void* dst, const void* src, DWORD count);
    /// Finds the first match of `pattern` that has one of the attributes asked for, never "." or "..". `found` may be
    /// null.
    static int Dir(const char* pattern, WIN32_FIND_DATAA* found, int archive, int directory, int hidden, int readOnly,
                   int system, int temporary);

protected:
    int ProfileToMap(const unsigned char* text, DWORD length);
    int MapToProfile(CFile* file) const;
    int MapToProfile2(CFile* file) const;
    /// The next line without the control bytes and blanks before it; `position` moves past it.
    static std::string_view ReadLine(std::string_view text, size_t& position);

private:
    int ReadWhole(CFile* file);
    int Parse(std::unique_ptr<char[]> text, size_t size);
    bool ParseLine(std::string_view line, CxEntryMap*& section);
    int Write(CFile* file, std::string_view lineEnd, std::string_view equals, std::string_view sectionEnd) const;

    CString m_path;
    CxSectionMap m_sections;
};
