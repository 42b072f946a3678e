#include "torv/audio/quill_audio.h"

#include "torv/audio/sample.h"
#include "torv/platform/or_zero.h"
#include "torv/platform/path.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr size_t kMostChunks = 4096;
constexpr UINT kReadFlags = CFile::modeRead | CFile::shareDenyWrite;
constexpr WORD kExtensible = 0xFFFE;     ///< the tag of a format whose kind stands behind the usual fields
constexpr DWORD kStatedFormatBytes = 16; ///< a format of fewer bytes leaves the frame size to be worked out
constexpr DWORD kKindOffset = 24;
constexpr DWORD kLeastBlock = 0x10000;
constexpr DWORD kPieceBytes = 0x40000000; ///< a read of more than 2 GiB would not stop at the chunk's end

DWORD UnitSize(const WAVEFORMATEX& format) {
    return (static_cast<DWORD>(format.wBitsPerSample) + 7) / 8 * format.nChannels;
}

/// Identifiers are made of printable characters: anything else where one should begin is a pad byte or rubbish.
bool BeginsName(BYTE byte) { return byte >= ' ' && byte <= '~'; }

torv::ChunkList::const_iterator FindChunk(const torv::ChunkList& chunks, DWORD id, int index) {
    return std::find_if(chunks.begin(), chunks.end(),
                        [&](const CHUNK_INFO& chunk) { return chunk.id == id && index-- == 0; });
}

} // namespace

CxQuillAudio::CxQuillAudio() : CxRiff(&m_file), m_Format(torv::PcmFormat(2, 16, torv::kDefaultSampleRate)) {}

CxQuillAudio::~CxQuillAudio() { Close(); }

int CxQuillAudio::Load(const char* path) {
    const int isLoaded = torv::OrZero([&] {
        CString name(path);
        if (!Open(name, kReadFlags))
            return 0;
        torv::ChunkList chunks;
        bool isPadded = false;
        WAVEFORMATEX format;
        const bool isWave = ScanChunkInfo(chunks, isPadded) && LoadHeader(chunks, format);
        Close();
        if (!isWave)
            return 0;
        m_strPath = std::move(name);
        m_chunks.swap(chunks);
        m_Format = format;
        m_bPadded = isPadded;
        return 1;
    });
    if (!isLoaded) {
        Close();
        m_file.Abort(); // open, though its opening was cut off
    }
    return isLoaded;
}

int CxQuillAudio::ScanChunkInfo(torv::ChunkList& chunks, bool& isPadded) {
    chunks.clear();
    isPadded = false;
    CHUNK_INFO info;
    // Only the first chunk is asked: a search through a large file that is no wave would take long.
    if (!FindFirstChunk(info) || info.id != torv::kRiffChunk || info.form != torv::kWaveForm ||
        !Descend(info, torv::kRiffChunk, torv::kWaveForm))
        return 0;
    const ULONGLONG end = static_cast<ULONGLONG>(info.offset) + info.size;
    int has = FindFirstChunk(info);
    while (has && BeginsName(info.id & 0xFF)) {
        if (!AddNewChunkInfo(chunks, info))
            return 0;
        const ULONGLONG behind = static_cast<ULONGLONG>(info.offset) + info.size;
        BYTE byte;
        if (info.size % 2 && behind < end && Seek(static_cast<LONGLONG>(behind), CFile::begin) == behind &&
            Read(&byte, 1) == 1 && !BeginsName(byte)) {
            isPadded = true;
            ++info.size; // only here: the next chunk is behind the pad
        }
        has = FindNextChunk(info);
    }
    Ascend();
    return 1;
}

int CxQuillAudio::LoadHeader(const torv::ChunkList& chunks, WAVEFORMATEX& format) {
    // 16-bit stereo at 44100 Hz, over which comes what the chunk has.
    BYTE bytes[kKindOffset + 2] = {WAVE_FORMAT_PCM, 0, 2, 0, 0x44, 0xAC, 0, 0, 0x10, 0xB1, 2, 0, 4, 0, 16, 0};
    const CHUNK_INFO* chunk = GetChunkInfo(chunks, torv::kFormatChunk, 0);
    const auto count = chunk ? std::min<DWORD>(chunk->size, sizeof bytes) : 0;
    if (chunk && (Seek(chunk->offset, CFile::begin) != chunk->offset || Read(bytes, count) != count))
        return 0;
    const auto word = [&bytes](DWORD at) { return static_cast<WORD>(torv::LoadValue(bytes + at, 2)); };
    format = {word(0),  word(2), torv::LoadValue(bytes + 4, 4), torv::LoadValue(bytes + 8, 4), word(12),
              word(14), word(16)};
    const WORD kind = format.wFormatTag == kExtensible ? word(kKindOffset) : format.wFormatTag;
    return kind == WAVE_FORMAT_PCM && format.nChannels && format.wBitsPerSample &&
           (count < kStatedFormatBytes || format.nBlockAlign == UnitSize(format));
}

DWORD CxQuillAudio::GetNumSamples() const {
    const CHUNK_INFO* data = GetChunkInfo(m_chunks, torv::kDataChunk, 0);
    return data ? data->size / UnitSize(m_Format) : 0;
}

int CxQuillAudio::ReadProperty(CWaveBuffer* buffer) const {
    const CHUNK_INFO* data = GetChunkInfo(m_chunks, torv::kDataChunk, 0);
    if (!buffer || !data)
        return 0;
    return torv::OrZero([&] {
        buffer->SetRiffInfo(m_strPath, data->offset, data->size);
        buffer->SetWaveInfo(m_Format.nChannels, m_Format.wBitsPerSample, m_Format.nSamplesPerSec);
        return 1;
    });
}

int CxQuillAudio::ReadWave(CWaveBuffer* buffer, int /*reserved*/, BYTE flags) {
    if (!ReadProperty(buffer))
        return 0;
    const DWORD bytes = GetChunkInfo(m_chunks, torv::kDataChunk, 0)->size;
    // A second of a rate that the file made up may be gigabytes.
    const DWORD second = std::min(buffer->CalcBuffSize(1), std::max(bytes, kLeastBlock));
    return buffer->Create(flags & torv::kOneBlock && bytes ? bytes : second) && QuickLoad(buffer);
}

int CxQuillAudio::QuickLoad(CWaveBuffer* buffer) {
    const CHUNK_INFO* data = GetChunkInfo(m_chunks, torv::kDataChunk, 0);
    if (!buffer || !data || !torv::OrZero([&] { return Open(m_strPath, kReadFlags); }))
        return 0;
    DWORD done = 0;
    if (Seek(data->offset, CFile::begin) == data->offset)
        while (done < data->size) {
            const DWORD piece = std::min(data->size - done, kPieceBytes);
            const DWORD moved = Read(buffer, piece);
            done += moved;
            if (moved < piece)
                break;
        }
    Close();
    const bool isWhole = done == data->size;
    if (!isWhole) {
        buffer->RemoveSample(torv::kAllFrames);
        ReadProperty(buffer);
    }
    buffer->SeekTo(0);
    buffer->SetLoadMark(isWhole);
    buffer->SetModify(0);
    return isWhole;
}

CString CxQuillAudio::SwapFileExt(const char* path, const char* ext) {
    const char* name = torv::FileNamePart(path);
    const char* dot = std::strrchr(name, '.');
    const size_t kept = !path ? 0 : dot ? static_cast<size_t>(dot - path) : std::strlen(path);
    CString swapped(path, static_cast<int>(kept));
    if (ext && *ext) {
        if (*ext != '.')
            swapped += ".";
        swapped += ext;
    }
    return swapped;
}

int CxQuillAudio::AddNewChunkInfo(torv::ChunkList& chunks, const CHUNK_INFO& info) {
    if (chunks.size() >= kMostChunks)
        return 0;
    return torv::OrZero([&] {
        chunks.push_back(info);
        return 1;
    });
}

const CHUNK_INFO* CxQuillAudio::GetChunkInfo(const torv::ChunkList& chunks, DWORD id, int index) {
    const auto at = FindChunk(chunks, id, index);
    return at != chunks.end() ? &*at : nullptr;
}

int CxQuillAudio::DeleteChunkInfo(torv::ChunkList& chunks, DWORD id, int index) {
    const auto at = FindChunk(chunks, id, index);
    if (at == chunks.end())
        return 0;
    chunks.erase(at);
    return 1;
}
