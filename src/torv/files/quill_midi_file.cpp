#include "torv/files/quill_midi_file.h"

#include "torv/platform/file_handle.h"
#include "torv/platform/path.h"
#include "torv/score/sequence.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

namespace {

constexpr DWORD kHeaderChunk = torv::ChunkId("MThd");
constexpr DWORD kTrackChunk = torv::ChunkId("MTrk");
constexpr WORD kManyTracks = 1;
constexpr int kMaxSongTracks = 0xFFFF - 1; // and the master track
constexpr DWORD kMaxDelta = 0x0FFFFFFF;    // what four bytes of seven bits hold

/// A file that is created beside its name and takes the name when it is closed; aborted, or when a write has failed, it
/// goes and leaves no trace.
class ReplacingFile : public CFile {
public:
    ReplacingFile() = default;
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;
    ~ReplacingFile() override { Discard(); }

    BOOL Open(LPCSTR path, UINT flags, CFileException* error) override {
        Discard();
        const bool isNew = (flags & modeCreate) && path && *path;
        if (!CFile::Open(isNew ? CString(path) + ".saving" : CString(path), flags, error))
            return FALSE;
        if (isNew)
            m_target = path;
        return TRUE;
    }

    void Write(const void* buffer, UINT bytes) override {
        try {
            CFile::Write(buffer, bytes);
        } catch (const CFileException& failure) {
            m_failure = failure.m_cause;
            throw;
        }
    }

    void Close() override {
        if (const int failure = m_failure) {
            Discard();
            throw CFileException(failure);
        }
        const CString beside = GetFilePath();
        const CString target = std::exchange(m_target, CString());
        try {
            CFile::Close();
            if (!target.IsEmpty() && !torv::RenameOver(beside, target)) {
                const LONG error = static_cast<LONG>(GetLastError());
                throw CFileException(CFileException::OsErrorToException(error), error, target);
            }
        } catch (const CFileException&) {
            if (!target.IsEmpty())
                torv::RemoveFile(beside);
            throw;
        }
    }

    void Abort() override { Discard(); }

private:
    void Discard() {
        const CString beside = GetFilePath();
        CFile::Abort();
        m_failure = CFileException::none;
        if (!std::exchange(m_target, CString()).IsEmpty())
            torv::RemoveFile(beside);
    }

    CString m_target; ///< empty when what is open is no new file
    int m_failure = CFileException::none;
};

} // namespace

CxQuillMidiFile::CxQuillMidiFile() : CxQuillMidiFile(std::make_unique<ReplacingFile>()) {}

CxQuillMidiFile::CxQuillMidiFile(std::unique_ptr<CFile> file) : CxRiff(file.get()), m_pFile(std::move(file)) {}

CxQuillMidiFile::~CxQuillMidiFile() { Close(); }

int CxQuillMidiFile::SaveAsFormat1(const char* path, CSequence* song, tagQuillMidiQSBBuffer* qsb) {
    Close();
    GetError(1);
    RepairPresendTime();
    m_nOutMode = kFileMode;
    int saved = 0;
    try {
        saved = SaveSong(path, song, qsb);
    } catch (const std::bad_alloc&) {
        m_pFile->Abort();
        Close();
    }
    m_pBuffer = nullptr;
    m_work = {};
    m_dwGathered = 0;
    return saved;
}

// A host may offer this format in its menu; it relies on getting the answer of a save that went well.
int CxQuillMidiFile::SaveAsFormat0(const char* /*path*/, CSequence* /*song*/, tagQuillMidiQSBBuffer* /*qsb*/) {
    return 1;
}

int CxQuillMidiFile::SaveSong(const char* path, CSequence* song, const tagQuillMidiQSBBuffer* qsb) {
    if (!song || !song->GetMasterTrack() || song->GetObjectCount() > kMaxSongTracks)
        return 0;
    std::vector<CQuillMidiBuffer> buffers(static_cast<size_t>(song->GetObjectCount()) + 1);
    for (CQuillMidiBuffer& buffer : buffers)
        if (!buffer.Create(kFileMode, m_dwPresend, static_cast<int>(m_dwInterval)))
            return 0;
    CreateWorkArea();
    return EncodeMultiTrackSequence(buffers, song, qsb) && WriteFile(path, buffers);
}

int CxQuillMidiFile::WriteFile(const char* path, std::span<CQuillMidiBuffer> buffers) {
    if (!Open(path, CFile::modeCreate | CFile::modeReadWrite))
        return 0;
    int written = RiffWriteMidiHeader(kManyTracks, static_cast<WORD>(buffers.size()), torv::kTicksPerQuarter);
    for (CQuillMidiBuffer& buffer : buffers) {
        m_pBuffer = &buffer;
        written &= RiffWriteMidiTrack();
    }
    if (!written)
        m_pFile->Abort(); // closing then puts nothing in place
    return Close() && written;
}

const char* CxQuillMidiFile::GetErrorMessage() { return torv::FileErrorText(GetError(0)); }

int CxQuillMidiFile::CloseChunk() {
    const int flushed = RiffFlush();
    return CxRiff::CloseChunk(true) && flushed;
}

int CxQuillMidiFile::RiffWriteMidiHeader(WORD format, WORD tracks, WORD division) {
    BYTE bytes[6];
    BYTE* at = bytes;
    for (const WORD number : {format, tracks, division}) {
        *at++ = static_cast<BYTE>(number >> 8);
        *at++ = static_cast<BYTE>(number & 0xFF);
    }
    if (!CreateChunk(kHeaderChunk, 0))
        return 0;
    const int gathered = RiffGather(bytes, sizeof bytes);
    return CloseChunk() && gathered;
}

int CxQuillMidiFile::RiffWriteMidiTrack() {
    if (!m_pBuffer || !CreateChunk(kTrackChunk, 0))
        return 0;
    int written = 1;
    tagQuillMidiEntry entry;
    m_pBuffer->SeekToBegin();
    while (written && m_pBuffer->ReadNextEntry(&entry))
        written = RiffWriteEntry(entry);
    return CloseChunk() && written;
}

int CxQuillMidiFile::RiffWriteEntry(const tagQuillMidiEntry& entry) {
    DWORD delta = entry.position;
    for (; delta > kMaxDelta; delta -= kMaxDelta)
        if (!RiffWriteDelta(kMaxDelta) || !RiffWriteDummyEvent())
            return 0;
    if (!RiffWriteDelta(delta))
        return 0;
    BYTE piece[256];
    for (DWORD done = 0; done < entry.length;) {
        const DWORD wanted = std::min<DWORD>(entry.length - done, sizeof piece);
        const DWORD count = m_pBuffer->ReadEvent(entry.offset + done, piece, wanted);
        if (!count || !RiffGather(piece, count))
            return 0;
        done += count;
    }
    return 1;
}

int CxQuillMidiFile::RiffWriteDelta(DWORD delta) {
    if (delta > kMaxDelta)
        return 0;
    BYTE bytes[4];
    BYTE* first = std::end(bytes);
    *--first = delta & 0x7F;
    while (delta >>= 7)
        *--first = 0x80 | (delta & 0x7F);
    return RiffGather(first, static_cast<DWORD>(std::end(bytes) - first));
}

int CxQuillMidiFile::RiffWriteDummyEvent() {
    constexpr BYTE kEmptyText[] = {0xFF, 0x01, 0x00};
    return RiffGather(kEmptyText, sizeof kEmptyText);
}

/// Events are a few bytes each and the file has no buffer of its own, so they go to it by the work area.
int CxQuillMidiFile::RiffGather(const void* bytes, DWORD count) {
    if (count > m_work.size() - m_dwGathered && !RiffFlush())
        return 0;
    if (count > m_work.size())
        return AddData(bytes, count);
    std::memcpy(m_work.data() + m_dwGathered, bytes, count);
    m_dwGathered += count;
    return 1;
}

int CxQuillMidiFile::RiffFlush() {
    const DWORD count = std::exchange(m_dwGathered, 0);
    return !count || AddData(m_work.data(), count);
}
