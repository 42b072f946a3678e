#include "torv/files/quill_midi_file.h"

#include "torv/platform/new_file.h"
#include "torv/platform/replaced_file.h"
#include "torv/score/sequence.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace {

constexpr DWORD kHeaderChunk = torv::ChunkId("MThd");
constexpr DWORD kTrackChunk = torv::ChunkId("MTrk");
constexpr WORD kManyTracks = 1;
constexpr int kMaxSongTracks = 0xFFFF - 1; // and the master track
constexpr DWORD kMaxDelta = 0x0FFFFFFF;    // what four bytes of seven bits hold

/// A file that is created takes the place of an older one when it is closed; aborted, or when a write has failed, it
/// goes and leaves no trace.
class ReplacingFile : public CFile {
public:
    ReplacingFile() = default;
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;
    ~ReplacingFile() override { CFile::Abort(); } // before what it is written into goes

    BOOL Open(LPCSTR path, UINT flags, CFileException* error) override {
        Abort();
        if (!(flags & modeCreate))
            return CFile::Open(path, flags, error);
        try {
            m_replaced.emplace(torv::NewFilePath(path));
            if (m_replaced->IsOpen() && CFile::Open(m_replaced->Path(), flags & ~static_cast<UINT>(modeCreate), error))
                return TRUE;
            if (error && !m_replaced->IsOpen())
                *error = torv::NewFileError(*m_replaced, path);
        } catch (const std::bad_alloc&) {
            Abort();
            throw;
        }
        Abort();
        return FALSE;
    }

    void Write(const void* buffer, UINT bytes) override {
        try {
            CFile::Write(buffer, bytes);
        } catch (const CFileException& failure) {
            m_failure = failure.m_cause;
            throw;
        } catch (const std::bad_alloc&) {
            m_failure = CFileException::generic;
            throw;
        }
    }

    void Close() override {
        if (const int failure = m_failure) {
            Abort();
            throw CFileException(failure);
        }
        CFile::Close();
        if (!m_replaced)
            return;
        if (!m_replaced->Commit())
            throw torv::NewFileError(*m_replaced, nullptr);
        m_replaced.reset();
    }

    void Abort() override {
        CFile::Abort();
        m_failure = CFileException::none;
        m_replaced.reset();
    }

private:
    std::optional<torv::ReplacedFile> m_replaced; ///< while what is open is a new file
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
    try {
        return SaveSong(path, song, qsb);
    } catch (const std::bad_alloc&) {
        m_pFile->Abort();
        Close();
        return 0;
    }
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
    return EncodeMultiTrackSequence(buffers, song, qsb) && WriteFile(path, buffers);
}

int CxQuillMidiFile::WriteFile(const char* path, std::span<CQuillMidiBuffer> buffers) {
    if (!Open(path, CFile::modeCreate | CFile::modeReadWrite))
        return 0;
    int written = RiffWriteMidiHeader(kManyTracks, static_cast<WORD>(buffers.size()), torv::kTicksPerQuarter);
    for (CQuillMidiBuffer& buffer : buffers) {
        const TrackRun run(*this, buffer, nullptr);
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
    for (DWORD done = 0; done < entry.length;) {
        BYTE* const to = RiffRoom(1);
        const DWORD room = static_cast<DWORD>(m_gathered.size()) - m_dwGathered;
        const DWORD count = to ? m_pBuffer->ReadEvent(entry.offset + done, to, std::min(entry.length - done, room)) : 0;
        if (!count)
            return 0;
        m_dwGathered += count;
        done += count;
    }
    return 1;
}

int CxQuillMidiFile::RiffWriteDelta(DWORD delta) {
    const DWORD count = 1u + (delta >= 1u << 7) + (delta >= 1u << 14) + (delta >= 1u << 21);
    BYTE* const first = delta <= kMaxDelta ? RiffRoom(count) : nullptr;
    if (!first)
        return 0;
    first[count - 1] = delta & 0x7F;
    for (DWORD i = count - 1; i; --i)
        first[i - 1] = static_cast<BYTE>(0x80 | (delta >>= 7));
    m_dwGathered += count;
    return 1;
}

int CxQuillMidiFile::RiffWriteDummyEvent() {
    constexpr BYTE kEmptyText[] = {0xFF, 0x01, 0x00};
    return RiffGather(kEmptyText, sizeof kEmptyText);
}

int CxQuillMidiFile::RiffGather(const void* bytes, DWORD count) {
    BYTE* const to = RiffRoom(count);
    if (!to)
        return 0;
    std::memcpy(to, bytes, count);
    m_dwGathered += count;
    return 1;
}

/// Room for so many bytes behind what is gathered. Events are a few bytes each and the file has no buffer of its own,
/// so they go to it some thousand bytes at a time.
BYTE* CxQuillMidiFile::RiffRoom(DWORD count) {
    if (count > m_gathered.size() - m_dwGathered && !RiffFlush())
        return nullptr;
    return m_gathered.data() + m_dwGathered;
}

int CxQuillMidiFile::RiffFlush() {
    const DWORD count = std::exchange(m_dwGathered, 0);
    return !count || AddData(m_gathered.data(), count);
}
