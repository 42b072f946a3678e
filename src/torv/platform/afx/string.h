#pragma once

#include "torv/platform/export.h"
#include "torv/platform/system.h"

#include <concepts>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#if defined(_WIN32)
#define TORV_PRINTF(text, first) __attribute__((format(gnu_printf, text, first)))
#else
#define TORV_PRINTF(text, first) __attribute__((format(printf, text, first)))
#endif

/// A text of bytes, whatever its character set: letters are the ASCII ones and white space is every byte up to 32, in
/// every locale. Null pointers count as empty texts; indexes out of range read as 0 and write nothing. Whatever makes a
/// text longer or hands one out throws std::bad_alloc, and the text is then as it was.
class TORV_API CString {
public:
    CString() = default;
    /// A copy of a text: up to its NUL; of `length` bytes; of one character, `count` times; taken over.
    /// @{
    CString(LPCSTR text) : m_text(text ? text : "") {} // implicit: texts pass as strings everywhere
    CString(LPCSTR text, int length);
    explicit CString(char c, int count = 1);
    explicit CString(std::string text) : m_text(std::move(text)) {}
    /// @}

    /// As the constructors; what is assigned may be a part of the text itself.
    /// @{
    CString& operator=(LPCSTR text) {
        m_text = std::string(text ? text : "");
        return *this;
    }
    CString& operator=(char c) {
        m_text.assign(1, c);
        return *this;
    }
    /// @}

    /// NUL-terminated, valid until the text changes.
    operator LPCSTR() const { return m_text.c_str(); }

    /// Bytes; whether there are none; and none from now on.
    /// @{
    int GetLength() const { return static_cast<int>(m_text.size()); }
    BOOL IsEmpty() const { return m_text.empty(); }
    void Empty() { m_text.clear(); }
    /// @}
    /// A byte by its index.
    /// @{
    char GetAt(int index) const { return Has(index) ? m_text[static_cast<std::size_t>(index)] : '\0'; }
    void SetAt(int index, char c) {
        if (Has(index))
            m_text[static_cast<std::size_t>(index)] = c;
    }
    /// @}
    template <std::integral Index>
    /// As GetAt.
    char operator[](Index index) const {
        return std::in_range<int>(index) ? GetAt(static_cast<int>(index)) : '\0';
    }

    /// Appends; the text may be its own.
    /// @{
    CString& operator+=(const CString& other) {
        m_text += other.m_text;
        return *this;
    }
    CString& operator+=(LPCSTR text) {
        if (text)
            m_text += text;
        return *this;
    }
    CString& operator+=(char c) {
        m_text += c;
        return *this;
    }
    /// @}

    /// Negative, 0 or positive, by unsigned bytes.
    int Compare(LPCSTR other) const;
    /// With ASCII letters of both cases alike.
    int CompareNoCase(LPCSTR other) const;

    /// Parts; a start or a count out of range is cut to what there is.
    CString Mid(int first) const;
    /// Parts, cut to what there is: from an index on, of the beginning, of the end.
    /// @{
    CString Mid(int first, int count) const;
    CString Left(int count) const;
    CString Right(int count) const;
    /// @}

    /// The index of the first match at or after `start`, or -1.
    int Find(char c, int start = 0) const;
    /// The same of a text; an empty one is found at `start`.
    int Find(LPCSTR part, int start = 0) const;
    /// The index of the last such character; of the first that is in the set. -1 when there is none.
    /// @{
    int ReverseFind(char c) const;
    int FindOneOf(LPCSTR set) const;
    /// @}

    /// White space at one end goes.
    /// @{
    void TrimLeft();
    void TrimRight();
    /// @}
    /// ASCII letters alone.
    /// @{
    void MakeUpper();
    void MakeLower();
    /// @}
    /// The number of matches replaced.
    int Replace(LPCSTR from, LPCSTR to);

    /// As printf. A real number follows the process's locale here: use torv::FormatReal for one.
    void Format(LPCSTR format, ...) TORV_PRINTF(2, 3);

    /// Room for at least `length` bytes, to be written directly; until ReleaseBuffer the text is what the room holds.
    LPSTR GetBuffer(int length = 0);
    /// Ends direct writing: the text is its first `length` bytes, or with -1 ends at its first NUL.
    void ReleaseBuffer(int length = -1);

    /// The text of a string resource. FALSE, and the string is empty, when there is none.
    BOOL LoadString(UINT id);

    /// The text itself.
    const std::string& GetStdString() const { return m_text; }

private:
    bool Has(int index) const { return index >= 0 && static_cast<std::size_t>(index) < m_text.size(); }

    std::string m_text;
};

/// One text behind the other; null is empty.
/// @{
inline CString operator+(const CString& a, const CString& b) { return CString(a) += b; }
inline CString operator+(const CString& a, LPCSTR b) { return CString(a) += b; }
inline CString operator+(LPCSTR a, const CString& b) { return CString(a) += b; }
inline CString operator+(const CString& a, char b) { return CString(a) += b; }
inline CString operator+(char a, const CString& b) { return CString(a) += b; }
/// @}

/// By unsigned bytes, case counts; null is empty.
/// @{
inline bool operator==(const CString& a, const CString& b) { return a.GetStdString() == b.GetStdString(); }
inline bool operator==(const CString& a, LPCSTR b) { return a.GetStdString() == std::string_view(b ? b : ""); }
inline bool operator==(LPCSTR a, const CString& b) { return b == a; }
inline bool operator!=(const CString& a, const CString& b) { return !(a == b); }
inline bool operator!=(const CString& a, LPCSTR b) { return !(a == b); }
inline bool operator!=(LPCSTR a, const CString& b) { return !(b == a); }
inline bool operator<(const CString& a, const CString& b) { return a.GetStdString() < b.GetStdString(); }
inline bool operator<(const CString& a, LPCSTR b) { return a.GetStdString() < std::string_view(b ? b : ""); }
inline bool operator<(LPCSTR a, const CString& b) { return std::string_view(a ? a : "") < b.GetStdString(); }
inline bool operator>(const CString& a, const CString& b) { return b < a; }
inline bool operator>(const CString& a, LPCSTR b) { return b < a; }
inline bool operator>(LPCSTR a, const CString& b) { return b < a; }
inline bool operator<=(const CString& a, const CString& b) { return !(b < a); }
inline bool operator<=(const CString& a, LPCSTR b) { return !(b < a); }
inline bool operator<=(LPCSTR a, const CString& b) { return !(b < a); }
inline bool operator>=(const CString& a, const CString& b) { return !(a < b); }
inline bool operator>=(const CString& a, LPCSTR b) { return !(a < b); }
inline bool operator>=(LPCSTR a, const CString& b) { return !(a < b); }
/// @}

template <>
struct std::hash<CString> {
    std::size_t operator()(const CString& text) const noexcept { return std::hash<std::string>()(text.GetStdString()); }
};
