#include "torv/typed_file/typed_file.h"

#include <array>
#include <new>
#include <utility>

#include "torv/stream/global_buffer.h"

namespace {

constexpr size_t kMaxLine = 65535;

bool IsBlank(char c) { return static_cast<unsigned char>(c) <= 32; }

std::string_view TrimLeft(std::string_view text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    return text;
}

std::string_view TrimRight(std::string_view text) {
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

CString Text(std::string_view text) { return {text.data(), static_cast<int>(text.size())}; }

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

struct Form {
    std::string_view lineEnd;
    std::string_view equals;
    std::string_view sectionEnd;
};

int WriteSections(const CxSectionMap& sections, CFile* file, const Form& form) {
    LineWriter lines(file);
    CString name;
    CString key;
    CString value;
    CxEntryMap* map = nullptr;
    for (POSITION section = sections.GetStartPosition(); section;) {
        sections.GetNextAssoc(section, name, map);
        lines.Put("[");
        lines.Put(name.GetStdString());
        lines.Put("]");
        lines.Put(form.lineEnd);
        for (POSITION entry = map->GetStartPosition(); entry;) {
            map->GetNextAssoc(entry, key, value);
            lines.Put(key.GetStdString());
            lines.Put(form.equals);
            lines.Put(value.GetStdString());
            lines.Put(form.lineEnd);
        }
        lines.Put(form.sectionEnd);
    }
    lines.Flush();
    return 1;
}

} // namespace

CxTypedFile::~CxTypedFile() = default;

int CxTypedFile::Load(const char* path) {
    RemoveAll();
    SetPathName(path);
    CFile file;
    if (!path || !file.Open(path, CFile::modeRead | CFile::shareDenyWrite))
        return 0;
    return ReadWhole(&file);
}

int CxTypedFile::Load(CFile* file) {
    RemoveAll();
    if (!file)
        return 0;
    m_path = file->GetFilePath();
    return ReadWhole(file);
}

int CxTypedFile::Load(const unsigned char* text, DWORD length) {
    m_sections.RemoveAll();
    return ProfileToMap(text, text ? length : 0);
}

int CxTypedFile::ReadWhole(CFile* file) {
    CxGlobalBuffer whole;
    whole.Create(file, 1);
    try {
        if (!whole.GetBuffer() && file->GetLength())
            return 0;
    } catch (const CFileException&) {
        return 0;
    }
    return ProfileToMap(static_cast<const unsigned char*>(whole.GetBuffer()), whole.GetSize());
}

int CxTypedFile::Save() {
    if (m_path.IsEmpty())
        return 0;
    CFile file;
    if (!file.Open(m_path + ".saving", CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive))
        return 0;
    const CString beside = file.GetFilePath();
    try {
        MapToProfile(&file);
        file.Close();
        if (torv::RenameOver(beside, m_path))
            return 1;
    } catch (const CFileException&) {
        file.Abort();
    }
    torv::RemoveFile(beside);
    return 0;
}

int CxTypedFile::SaveAs(const char* path) {
    SetPathName(path);
    return Save();
}

int CxTypedFile::Save(CFile* file) {
    try {
        return file ? MapToProfile(file) : 0;
    } catch (const CFileException&) {
        return 0;
    }
}

int CxTypedFile::Save2(CFile* file) {
    try {
        return file ? MapToProfile2(file) : 0;
    } catch (const CFileException&) {
        return 0;
    }
}

int CxTypedFile::AddSection(const char* name) { return m_sections.AddNew(name) != nullptr; }

int CxTypedFile::WriteAt(const char* section, const char* key, const char* value) {
    return m_sections.WriteEntry(section, key, value);
}

CString CxTypedFile::ReadAt(const char* section, const char* key, const char* defaultValue) const {
    CString value;
    if (!m_sections.ReadEntry(value, section, key))
        value = defaultValue;
    return value;
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
    m_sections.RemoveAll();
    const std::string_view whole(reinterpret_cast<const char*>(text), length);
    CxEntryMap* section = nullptr;
    for (size_t position = 0; position < whole.size();) {
        const std::string_view line = TrimRight(ReadLine(whole, position));
        if (line.starts_with('[')) {
            const size_t end = line.find(']');
            if (end == std::string_view::npos)
                continue;
            section = m_sections.AddNew(Text(line.substr(1, end - 1)));
            if (!section)
                return 0;
            continue;
        }
        const size_t equals = line.find('=');
        if (line.starts_with(';') || equals == std::string_view::npos || equals == 0 || !section)
            continue;
        const std::string_view key = TrimRight(line.substr(0, equals));
        const std::string_view value = line.substr(equals + 1);
        section->Set(key, TrimRight(TrimLeft(value.substr(0, value.find(';')))));
    }
    return 1;
}

std::string_view CxTypedFile::ReadLine(std::string_view text, size_t& position) {
    while (position < text.size() && IsBlank(text[position]))
        ++position;
    const size_t start = position;
    while (position < text.size() && (static_cast<unsigned char>(text[position]) >= 32 || text[position] == '\t'))
        ++position;
    return text.substr(start, position - start).substr(0, kMaxLine);
}

int CxTypedFile::MapToProfile(CFile* file) const { return WriteSections(m_sections, file, {"\r\n", " = ", "\r\n"}); }

int CxTypedFile::MapToProfile2(CFile* file) const { return WriteSections(m_sections, file, {"\n", "=", ""}); }
