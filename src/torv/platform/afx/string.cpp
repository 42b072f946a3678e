#include "torv/platform/afx/string.h"

#include "torv/platform/string_table.h"
#include "torv/platform/text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::size_t Size(int count) { return count > 0 ? static_cast<std::size_t>(count) : 0; }
int Index(std::size_t place) { return place == std::string::npos ? -1 : static_cast<int>(place); }

} // namespace

CString::CString(LPCSTR text, int length) : m_text(text ? text : "", text ? Size(length) : 0) {}
CString::CString(char c, int count) : m_text(Size(count), c) {}

int CString::Compare(LPCSTR other) const { return m_text.compare(other ? other : ""); }

int CString::CompareNoCase(LPCSTR other) const {
    const std::string_view text(other ? other : "");
    const auto [mine, its] = std::mismatch(m_text.begin(), m_text.end(), text.begin(), text.end(),
                                           [](char a, char b) { return Lower(a) == Lower(b); });
    const auto byteAt = [](auto at, auto end) { return at == end ? -1 : static_cast<unsigned char>(Lower(*at)); };
    return byteAt(mine, m_text.end()) - byteAt(its, text.end());
}

CString CString::Mid(int first) const { return CString(m_text.substr(std::min(Size(first), m_text.size()))); }
CString CString::Mid(int first, int count) const {
    return CString(m_text.substr(std::min(Size(first), m_text.size()), Size(count)));
}
CString CString::Left(int count) const { return Mid(0, count); }
CString CString::Right(int count) const {
    return CString(m_text.substr(m_text.size() - std::min(Size(count), m_text.size())));
}

int CString::Find(char c, int start) const { return Index(m_text.find(c, Size(start))); }
int CString::Find(LPCSTR part, int start) const { return Index(m_text.find(part ? part : "", Size(start))); }
int CString::ReverseFind(char c) const { return Index(m_text.rfind(c)); }
int CString::FindOneOf(LPCSTR set) const { return Index(m_text.find_first_of(set ? set : "")); }

void CString::TrimLeft() {
    m_text.erase(m_text.begin(), std::find_if_not(m_text.begin(), m_text.end(), torv::IsBlank));
}
void CString::TrimRight() {
    m_text.erase(std::find_if_not(m_text.rbegin(), m_text.rend(), torv::IsBlank).base(), m_text.end());
}
void CString::MakeUpper() { std::transform(m_text.begin(), m_text.end(), m_text.begin(), Upper); }
void CString::MakeLower() { std::transform(m_text.begin(), m_text.end(), m_text.begin(), Lower); }

int CString::Replace(LPCSTR from, LPCSTR to) {
    const std::string_view pattern(from ? from : "");
    if (pattern.empty())
        return 0;
    std::string result;
    int count = 0;
    std::size_t at = 0;
    for (std::size_t found; (found = m_text.find(pattern, at)) != std::string::npos; at = found + pattern.size()) {
        result.append(m_text, at, found - at);
        result.append(to ? to : "");
        ++count;
    }
    result.append(m_text, at);
    m_text = std::move(result);
    return count;
}

void CString::Format(LPCSTR format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = format ? std::vsnprintf(nullptr, 0, format, arguments) : 0;
    va_end(arguments);
    std::string result(Size(length) + 1, '\0');
    if (length > 0) {
        va_start(arguments, format);
        std::vsnprintf(result.data(), result.size(), format, arguments);
        va_end(arguments);
    }
    result.resize(Size(length));
    m_text = std::move(result); // only now: an argument may point into this string
}

LPSTR CString::GetBuffer(int length) {
    if (m_text.size() < Size(length))
        m_text.resize(Size(length));
    return m_text.data();
}

void CString::ReleaseBuffer(int length) {
    const std::size_t end = length < 0 ? std::strlen(m_text.c_str()) : Size(length);
    m_text.resize(std::min(end, m_text.size()));
}

BOOL CString::LoadString(UINT id) {
    const auto text = torv::FindStringResource(id);
    m_text = text.value_or("");
    return text.has_value();
}
