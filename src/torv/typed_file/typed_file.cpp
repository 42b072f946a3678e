#include "torv/typed_file/typed_file.h"

#include "torv/platform/new_file.h"
#include "torv/platform/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace {

constexpr size_t kMaxLine = 65535;
constexpr ULONGLONG kMaxFile = 0x7FFFFFFF; // what a 32-bit process could hold at the very most

bool EndsLine(char c) { return static_cast<unsigned char>(c) < ' ' && c != '\t'; }

/// The first character that ends a line, eight at a time: a borrow runs through a byte's highest bit where the byte is
/// less than a blank, and of several the lowest is right (both targets have the first character lowest).
const char* FindLineEnd(const char* at, const char* end) {
    constexpr std::uint64_t kEach = 0x0101010101010101;
    std::uint64_t word;
    while (static_cast<size_t>(end - at) >= sizeof word) {
        std::memcpy(&word, at, sizeof word);
        const std::uint64_t less = (word - kEach * ' ') & ~word & kEach * 0x80;
        at += less ? std::countr_zero(less) / 8 : static_cast<int>(sizeof word);
        if (less && EndsLine(*at))
            return at;
        at += less ? 1 : 0;
    }
    return std::find_if(at, end, EndsLine);
}

std::string_view TrimLeft(std::string_view text) {
    while (!text.empty() && torv::IsBlank(text.front()))
        text.remove_prefix(1);
    return text;
}

std::string_view TrimRight(std::string_view text) {
    while (!text.empty() && torv::IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Lines on their way to a file that has no buffer of its own.
class LineWriter {
public:
    explicit LineWriter(CFile* file) : m_file(file) {}
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    void Put(std::string_view text) {
        if (text.size() > m_gathered.size() - m_count) {
            Flush();
            if (text.size() > m_gathered.size()) {
                m_file->Write(text.data(), static_cast<UINT>(text.size()));
                return;
            }
        }
        text.copy(m_gathered.data() + m_count, text.size());
        m_count += text.size();
    }
    void Flush() {
        if (const size_t count = std::exchange(m_count, 0))
            m_file->Write(m_gathered.data(), static_cast<UINT>(count));
    }

private:
    CFile* m_file;
    size_t m_count = 0;
    std::array<char, 16384> m_gathered;
};

/// What a file or the memory refuses is a failure like any other.
template <class Operation>
int Attempt(Operation operation) {
    try {
        return operation();
    } catch (const CFileException&) {
        return 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

} // namespace

CxTypedFile::~CxTypedFile() = default;

int CxTypedFile::Load(const char* path) {
    RemoveAll();
    return Attempt([&] {
        SetPathName(path);
        CFile file;
        return path && file.Open(path, CFile::modeRead | CFile::shareDenyWrite) && ReadWhole(&file);
    });
}

int CxTypedFile::Load(CFile* file) {
    RemoveAll();
    return file && Attempt([&] {
               m_path = file->GetFilePath();
               return ReadWhole(file);
           });
}

int CxTypedFile::Load(const unsigned char* text, DWORD length) { return ProfileToMap(text, text ? length : 0); }

int CxTypedFile::ReadWhole(CFile* file) {
    const ULONGLONG length = file->GetLength();
    if (length > kMaxFile)
        return 0;
    auto text = std::make_unique_for_overwrite<char[]>(static_cast<size_t>(length));
    file->SeekToBegin();
    const size_t read = file->Read(text.get(), static_cast<UINT>(length));
    return Parse(std::move(text), read);
}

int CxTypedFile::Save() {
    return !m_path.IsEmpty() && Attempt([&] {
        torv::ReplacedFile whole(torv::NewFilePath(m_path));
        CFile file;
        if (!whole.IsOpen() || !file.Open(whole.Path(), CFile::modeWrite | CFile::shareExclusive))
            return false;
        MapToProfile(&file);
        file.Close();
        return whole.Commit();
    });
}

int CxTypedFile::SaveAs(const char* path) {
    return Attempt([&] {
        SetPathName(path);
        return Save();
    });
}

int CxTypedFile::Save(CFile* file) {
    return file && Attempt([&] { return MapToProfile(file); });
}

int CxTypedFile::Save2(CFile* file) {
    return file && Attempt([&] { return MapToProfile2(file); });
}

int CxTypedFile::AddSection(const char* name) { return m_sections.AddNew(name) != nullptr; }

int CxTypedFile::WriteAt(const char* section, const char* key, const char* value) {
    return m_sections.WriteEntry(section, key, value);
}

CString CxTypedFile::ReadAt(const char* section, const char* key, const char* defaultValue) const {
    const CxEntryMap* const map = GetEntryMap(section);
    return map ? map->ValueAt(key) : CString(defaultValue);
}

int CxTypedFile::RemoveSection(const char* name) { return m_sections.RemoveSection(name); }

int CxTypedFile::RemoveEntry(const char* section, const char* key) { return m_sections.RemoveEntry(section, key); }

CxEntryMap* CxTypedFile::GetEntryMap(const char* name) const {
    CxEntryMap* map = nullptr;
    m_sections.Lookup(name, map);
    return map;
}

void CxTypedFile::RemoveAll() {
    m_sections.RemoveAll();
    m_path.Empty();
}

void CxTypedFile::SetPathName(const char* path) { m_path = path; }

int CxTypedFile::ProfileToMap(const unsigned char* text, DWORD length) {
    return Attempt([&] {
        auto copy = std::make_unique_for_overwrite<char[]>(length);
        std::copy_n(text, length, copy.get());
        return Parse(std::move(copy), length);
    });
}

int CxTypedFile::Parse(std::unique_ptr<char[]> text, size_t size) {
    m_sections.RemoveAll();
    const int parsed = Attempt([&] {
        const std::string_view whole = m_sections.Pool().Keep(std::move(text), size);
        CxEntryMap* section = nullptr;
        for (size_t position = 0; position < whole.size();)
            if (!ParseLine(TrimRight(ReadLine(whole, position)), section))
                return false;
        return true;
    });
    if (!parsed)
        m_sections.RemoveAll();
    return parsed;
}

/// A line that makes no sense counts as parsed.
bool CxTypedFile::ParseLine(std::string_view line, CxEntryMap*& section) {
    if (line.starts_with('[')) {
        const size_t end = line.find(']');
        if (end != std::string_view::npos)
            section = m_sections.AddNew(torv::Text(line.substr(1, end - 1)));
        return end == std::string_view::npos || section;
    }
    const size_t equals = line.find('=');
    if (line.starts_with(';') || equals == std::string_view::npos || equals == 0 || !section)
        return true;
    const std::string_view key = TrimRight(line.substr(0, equals));
    const std::string_view value = line.substr(equals + 1);
    section->Set(key, TrimRight(TrimLeft(value.substr(0, value.find(';')))), true);
    return true;
}

std::string_view CxTypedFile::ReadLine(std::string_view text, size_t& position) {
    const char* const all = text.data() + text.size();
    const char* const start = std::find_if_not(text.data() + position, all, torv::IsBlank);
    const char* const end = FindLineEnd(start, all);
    position = static_cast<size_t>(end - text.data());
    return {start, std::min(static_cast<size_t>(end - start), kMaxLine)};
}

int CxTypedFile::MapToProfile(CFile* file) const { return Write(file, "\r\n", " = ", "\r\n"); }

int CxTypedFile::MapToProfile2(CFile* file) const { return Write(file, "\n", "=", ""); }

int CxTypedFile::Write(CFile* file, std::string_view lineEnd, std::string_view equals,
                       std::string_view sectionEnd) const {
    LineWriter lines(file);
    m_sections.ForEach([&](const CxEntryMap& section) {
        lines.Put("[");
        lines.Put(section.GetSectionName());
        lines.Put("]");
        lines.Put(lineEnd);
        section.ForEach([&](std::string_view key, std::string_view value) {
            lines.Put(key);
            lines.Put(equals);
            lines.Put(value);
            lines.Put(lineEnd);
        });
        lines.Put(sectionEnd);
    });
    lines.Flush();
    return 1;
}
