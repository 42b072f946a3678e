#include "torv/files/riff.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace {

constexpr DWORD kRiff = torv::ChunkId("RIFF");
constexpr DWORD kList = torv::ChunkId("LIST");
constexpr DWORD kHeaderBytes = 8;
constexpr DWORD kFormBytes = 4;
constexpr ULONGLONG kLargest = 0xFFFFFFFF;
constexpr size_t kDeepest = 64;
constexpr DWORD kCopyBytes = 4096;

constexpr const char* kErrorTexts[] = {
    "CFileException::none",          "CFileException::generic",          "CFileException::fileNotFound",
    "CFileException::badPath",       "CFileException::tooManyOpenFiles", "CFileException::accessDenied",
    "CFileException::invalidFile",   "CFileException::removeCurrentDir", "CFileException::directoryFull",
    "CFileException::badSeek",       "CFileException::hardIO",           "CFileException::sharingViolation SHARE.EXE",
    "CFileException::lockViolation", "CFileException::diskFull",         "CFileException::endOfFile"};

DWORD LoadDword(const BYTE* bytes) {
    return bytes[0] | static_cast<DWORD>(bytes[1]) << 8 | static_cast<DWORD>(bytes[2]) << 16 |
           static_cast<DWORD>(bytes[3]) << 24;
}

void StoreDword(BYTE* bytes, DWORD value) {
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<BYTE>(value >> (8 * i));
}

void SeekTo(CFile& file, ULONGLONG position) { file.Seek(static_cast<LONGLONG>(position), CFile::begin); }

} // namespace

const char* torv::FileErrorText(int cause) {
    return cause >= 0 && cause < static_cast<int>(std::size(kErrorTexts)) ? kErrorTexts[cause] : "";
}

CxRiff::CxRiff(const char* name) {
    if (name)
        OpenFile(name, CFile::modeReadWrite);
}

CxRiff::CxRiff(CFile* file) : m_pFile(file) {}

CxRiff::~CxRiff() {
    CloseFile([this] { return CloseChunk(false); });
}

CFile& CxRiff::File() const {
    if (!m_pFile)
        throw CFileException(CFileException::invalidFile);
    return *m_pFile;
}

template <class Operation>
bool CxRiff::Attempt(Operation operation) {
    try {
        operation();
        return true;
    } catch (const CFileException& exception) {
        return RecordError(exception.m_cause);
    } catch (const std::bad_alloc&) {
        return RecordError(CFileException::generic);
    }
}

int CxRiff::RecordError(int cause) {
    m_nError = cause ? cause : CFileException::generic;
    return 0;
}

int CxRiff::Open(const char* name, UINT flags) {
    Close();
    return OpenFile(name, flags);
}

int CxRiff::OpenFile(const char* name, UINT flags) {
    m_path.clear();
    m_qwSearchLimit = m_qwWritten = 0;
    m_nOpened = Attempt([&] {
        if (!m_pFile) {
            m_pOwnFile = std::make_unique<CFile>();
            m_pFile = m_pOwnFile.get();
        }
        CFileException error;
        if (!m_pFile->Open(name, flags, &error))
            throw error;
    });
    return m_nOpened;
}

int CxRiff::Close() {
    return CloseFile([this] { return CloseChunk(); });
}

template <class CloseInnermost>
int CxRiff::CloseFile(CloseInnermost closeInnermost) {
    if (!m_nOpened)
        return 0;
    bool isWhole = true;
    while (!m_path.empty()) {
        const size_t depth = m_path.size();
        if (m_path.back().isWritten && !closeInnermost())
            isWhole = false;
        if (m_path.size() == depth)
            m_path.pop_back();
    }
    m_nOpened = 0;
    return Attempt([&] { File().Close(); }) && isWhole;
}

int CxRiff::Remove(const char* name) {
    return Attempt([&] { CFile::Remove(name); });
}

int CxRiff::Rename(const char* oldName, const char* newName) {
    return Attempt([&] { CFile::Rename(oldName, newName); });
}

ULONGLONG CxRiff::Seek(LONGLONG offset, UINT from) {
    ULONGLONG position = 0;
    Attempt([&] { position = File().Seek(offset, from); });
    return position;
}

ULONGLONG CxRiff::GetPosition() {
    ULONGLONG position = 0;
    Attempt([&] { position = File().GetPosition(); });
    return position;
}

DWORD CxRiff::Read(void* buffer, DWORD count) {
    DWORD done = 0;
    if (buffer)
        Attempt([&] { done = File().Read(buffer, count); });
    return done;
}

DWORD CxRiff::Read(CExtendBuffer* buffer, DWORD count) {
    DWORD done = 0;
    if (buffer)
        Attempt([&] {
            int error = 0;
            const DWORD loaded = buffer->Load(&File(), count, &error);
            if (error)
                throw CFileException(error);
            done = loaded;
        });
    return done;
}

int CxRiff::Write(const void* buffer, DWORD count) {
    if (!buffer && count)
        return 0;
    return Attempt([&] {
        File().Write(buffer, count);
        m_qwWritten = std::max(m_qwWritten, File().GetPosition());
    });
}

int CxRiff::ChunkHasForm(DWORD id) const { return id == kRiff || id == kList; }

/// Starts a search: where the innermost chunk's data begin, with the search limit at their end.
bool CxRiff::EnterLevel(ULONGLONG& position) {
    if (!m_path.empty()) {
        position = m_path.back().info.offset;
        m_qwSearchLimit = m_path.back().end;
        return true;
    }
    position = m_qwSearchLimit = 0;
    return Attempt([&] { m_qwSearchLimit = File().GetLength(); });
}

/// The chunk at this position. A header adds to the position, so a walk from chunk to chunk comes to an end.
bool CxRiff::ReadHeader(ULONGLONG position, CHUNK_INFO& info) {
    if (position >= m_qwSearchLimit)
        return false;
    BYTE header[kHeaderBytes + kFormBytes];
    DWORD headerBytes = kHeaderBytes;
    bool isWhole = false;
    Attempt([&] {
        CFile& file = File();
        SeekTo(file, position);
        if (file.Read(header, kHeaderBytes) != kHeaderBytes)
            return;
        const DWORD formBytes = ChunkHasForm(LoadDword(header)) ? kFormBytes : 0;
        isWhole = file.Read(header + kHeaderBytes, formBytes) == formBytes;
        headerBytes += formBytes;
    });
    if (!isWhole)
        return false;
    const bool hasForm = headerBytes > kHeaderBytes;
    const DWORD stated = LoadDword(header + 4);
    const DWORD size = hasForm ? std::max(stated, kFormBytes) - kFormBytes : stated;
    const ULONGLONG data = position + headerBytes;
    if (data > kLargest || data + size > m_qwSearchLimit)
        return false;
    info = {LoadDword(header), hasForm ? LoadDword(header + kHeaderBytes) : 0, static_cast<DWORD>(data), size};
    return true;
}

int CxRiff::FindFirstChunk(CHUNK_INFO& info) {
    ULONGLONG position;
    return EnterLevel(position) && ReadHeader(position, info);
}

int CxRiff::FindNextChunk(CHUNK_INFO& info) {
    return ReadHeader(static_cast<ULONGLONG>(info.offset) + info.size, info);
}

/// Room in the path for one chunk more.
bool CxRiff::CanGoDeeper() {
    return m_path.size() < kDeepest && Attempt([&] { m_path.reserve(m_path.size() + 1); });
}

int CxRiff::Descend(CHUNK_INFO& info, DWORD id, DWORD form) {
    if (!CanGoDeeper())
        return 0;
    CHUNK_INFO found;
    for (int has = FindFirstChunk(found); has; has = FindNextChunk(found)) {
        if (found.id != id || found.form != form)
            continue;
        m_path.push_back({found, kHeaderBytes + (ChunkHasForm(id) ? kFormBytes : 0),
                          static_cast<ULONGLONG>(found.offset) + found.size, false});
        info = found;
        return 1;
    }
    return 0;
}

int CxRiff::Ascend() {
    if (m_path.empty() || !Attempt([&] { SeekTo(File(), m_path.back().end); }))
        return 0;
    m_path.pop_back();
    ULONGLONG start;
    return EnterLevel(start); // a search in the level around goes on to that level's end
}

/// Whether every size of the path can grow by so much.
bool CxRiff::HasRoom(DWORD count) {
    const bool fits = std::all_of(m_path.begin(), m_path.end(), [&](const Level& level) {
        return static_cast<ULONGLONG>(level.info.size) + (level.headerBytes - kHeaderBytes) + count <= kLargest;
    });
    if (!fits)
        RecordError(CFileException::diskFull);
    return fits;
}

/// Every chunk of the path ends so much later, and those around the innermost one hold so much more.
void CxRiff::GrowPath(DWORD count) {
    for (Level& level : m_path) {
        level.end += count;
        level.isWritten = true;
        if (&level != &m_path.back())
            level.info.size += count;
    }
    m_qwWritten = std::max(m_qwWritten, m_path.back().end);
}

int CxRiff::CreateChunk(DWORD id, DWORD form) {
    if (!CanGoDeeper())
        return 0;
    const ULONGLONG start = m_path.empty() ? m_qwWritten : m_path.back().end;
    const DWORD headerBytes = kHeaderBytes + (form ? kFormBytes : 0);
    if (!HasRoom(headerBytes))
        return 0;
    if (start + headerBytes > kLargest) {
        RecordError(CFileException::diskFull);
        return 0;
    }
    BYTE header[kHeaderBytes + kFormBytes] = {};
    StoreDword(header, id);
    StoreDword(header + kHeaderBytes, form);
    if (!Attempt([&] {
            SeekTo(File(), start);
            File().Write(header, headerBytes);
        }))
        return 0;
    m_path.push_back({{id, form, static_cast<DWORD>(start + headerBytes), 0}, headerBytes, start, true});
    GrowPath(headerBytes);
    return 1;
}

int CxRiff::AddData(const void* buffer, DWORD count) {
    if (m_path.empty())
        return 0;
    if (!count)
        return 1;
    // Closing an inner chunk has left the position among its bytes, so each write seeks.
    if (!buffer || !HasRoom(count) || !Attempt([&] {
            SeekTo(File(), m_path.back().end);
            File().Write(buffer, count);
        }))
        return 0;
    m_path.back().info.size += count;
    GrowPath(count);
    return 1;
}

int CxRiff::AddData(CExtendBuffer* buffer) {
    if (m_path.empty() || !buffer)
        return 0;
    const DWORD count = buffer->GetSize();
    if (!count)
        return 1;
    if (!HasRoom(count) || !Attempt([&] {
            int error = 0;
            SeekTo(File(), m_path.back().end);
            buffer->Save(&File(), &error);
            if (error)
                throw CFileException(error);
        }))
        return 0;
    m_path.back().info.size += count;
    GrowPath(count);
    return 1;
}

int CxRiff::AddData(CFile* source, DWORD from, DWORD count) {
    if (m_path.empty() || !source)
        return 0;
    // Known beforehand, for a copy within one file would feed on its own output.
    DWORD all = 0;
    if (!Attempt([&] {
            const ULONGLONG length = source->GetLength();
            all = static_cast<DWORD>(std::min<ULONGLONG>(count, length > from ? length - from : 0));
        }) ||
        !HasRoom(all))
        return 0;
    DWORD done = 0;
    const bool isCopied = Attempt([&] {
        BYTE area[kCopyBytes];
        while (done < all) {
            SeekTo(*source, static_cast<ULONGLONG>(from) + done);
            const UINT moved = source->Read(area, std::min(all - done, kCopyBytes));
            if (!moved)
                break;
            SeekTo(File(), m_path.back().end + done);
            File().Write(area, moved);
            done += moved;
        }
    });
    // The size becomes what this copy brought, though the chunks around grow by it: a copied chunk is made of one copy.
    // One made of several pieces states its last one's size, as such files always have.
    m_path.back().info.size = done;
    GrowPath(done);
    return isCopied && done == count;
}

int CxRiff::CloseChunk() { return CloseChunk(false); }

int CxRiff::CloseChunk(bool bigEndian) {
    if (m_path.empty())
        return 0;
    const Level level = m_path.back();
    m_path.pop_back();
    BYTE size[4];
    StoreDword(size, level.info.size + (level.headerBytes - kHeaderBytes));
    if (bigEndian)
        std::reverse(std::begin(size), std::end(size));
    return Attempt([&] {
        SeekTo(File(), level.info.offset - level.headerBytes + 4);
        File().Write(size, sizeof(size));
    });
}

int CxRiff::GetError(int reset) {
    const int error = m_nError;
    if (reset)
        m_nError = 0;
    return error;
}

void CxRiff::ErrorMessageBox(CWnd* parent) {
    if (!m_nError)
        return;
    CString text = "'Riff' error !";
    if (const char* const told = GetErrorText(); *told) {
        text += " : ";
        text += told;
    }
    if (parent)
        parent->MessageBox(text, nullptr, MB_ICONEXCLAMATION);
    else
        AfxMessageBox(text, MB_ICONEXCLAMATION);
    GetError(1);
}
