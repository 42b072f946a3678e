#include "torv/audio/quill_audio.h"

#include "torv/audio/sample.h"
#include "torv/platform/new_file.h"
#include "torv/platform/or_zero.h"
#include "torv/platform/replaced_file.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

constexpr DWORD kFact = torv::ChunkId("fact");
constexpr DWORD kFormatBytes = 16;
constexpr DWORD kFactBytes = 4;
constexpr DWORD kFormBytes = 4;

/// A buffer without bytes has been emptied, or it knows its file only; then it counts the frames there.
bool IsInMemory(const CWaveBuffer& buffer) {
    const bool isEmptied = buffer.IsLoaded() || (buffer.GetModify() && !buffer.GetNumSamples());
    return buffer.GetSize() || isEmptied || buffer.GetFilePath().IsEmpty();
}

bool IsSameFormat(const WAVEFORMATEX& stated, const WAVEFORMATEX& wanted) {
    const DWORD rate = stated.nSamplesPerSec ? stated.nSamplesPerSec : torv::kDefaultSampleRate;
    return stated.nChannels == wanted.nChannels && stated.wBitsPerSample == wanted.wBitsPerSample &&
           rate == wanted.nSamplesPerSec;
}

/// Where an odd chunk may stand when no pad follows it: other programs miss what is behind. The samples come first.
int UnpaddedRank(const CHUNK_INFO& chunk) {
    const bool isEven = chunk.size % 2 == 0 || chunk.id == torv::kFormatChunk;
    return isEven ? 0 : chunk.id == torv::kDataChunk ? 1 : 2;
}

int AddFormat(CxRiff& riff, const CWaveBuffer& buffer) {
    WAVEFORMATEX format;
    buffer.MakeWaveFormat(format);
    BYTE bytes[kFormatBytes];
    torv::StoreValue(bytes, 2, format.wFormatTag);
    torv::StoreValue(bytes + 2, 2, format.nChannels);
    torv::StoreValue(bytes + 4, 4, format.nSamplesPerSec);
    torv::StoreValue(bytes + 8, 4, format.nAvgBytesPerSec);
    torv::StoreValue(bytes + 12, 2, format.nBlockAlign);
    torv::StoreValue(bytes + 14, 2, format.wBitsPerSample);
    return riff.AddData(bytes, kFormatBytes);
}

/// Whether the file still holds this chunk where it was: another program may have written it since.
bool IsThere(CFile& file, const CHUNK_INFO& chunk, DWORD formBytes) {
    BYTE header[8];
    try {
        file.Seek(static_cast<LONGLONG>(chunk.offset) - formBytes - 8, CFile::begin);
        return file.Read(header, sizeof header) == sizeof header && torv::LoadValue(header, 4) == chunk.id &&
               std::max(torv::LoadValue(header + 4, 4), formBytes) == chunk.size + formBytes;
    } catch (const CFileException&) {
        return false;
    }
}

int AddKept(CxRiff& riff, CFile& file, const CHUNK_INFO& chunk) {
    const DWORD formBytes = riff.ChunkHasForm(chunk.id) ? kFormBytes : 0; // copied with the data
    return IsThere(file, chunk, formBytes) && riff.AddData(&file, chunk.offset - formBytes, chunk.size + formBytes);
}

} // namespace

/// A failure is kept as an error of this object.
bool CxQuillAudio::OpenToRead(CFile& file, const char* path) {
    CFileException error;
    return file.Open(path, CFile::modeRead | CFile::shareDenyWrite, &error) || RecordError(error.m_cause);
}

/// Where the buffer's data are: in the file, which is open then, or, with the file closed, in memory.
bool CxQuillAudio::FindData(const CWaveBuffer& buffer, CFile& file, CHUNK_INFO& place) {
    place = {torv::kDataChunk, 0, 0, buffer.GetSize()};
    if (IsInMemory(buffer))
        return true;
    CxQuillAudio reader;
    if (!OpenToRead(file, buffer.GetFilePath()) || !reader.Load(buffer.GetFilePath()))
        return false;
    const CHUNK_INFO* data = GetChunkInfo(reader.m_chunks, torv::kDataChunk, 0);
    if (data)
        place = *data;
    return data != nullptr;
}

int CxQuillAudio::PrepareSaveMap(const torv::ChunkList& kept, const CWaveBuffer& buffer, DWORD dataBytes,
                                 torv::ChunkList& map) const {
    const auto copy = [&] {
        map = kept;
        map.reserve(kept.size() + 2);
        return 1;
    };
    if (!torv::OrZero(copy))
        return 0;
    WAVEFORMATEX format;
    buffer.MakeWaveFormat(format);
    const auto find = [&map](DWORD id) {
        return std::find_if(map.begin(), map.end(), [id](const CHUNK_INFO& chunk) { return chunk.id == id; });
    };
    const CHUNK_INFO newFormat{torv::kFormatChunk, 0, 0, kFormatBytes};
    auto at = find(torv::kFormatChunk);
    if (at == map.end())
        map.insert(map.begin(), newFormat);
    else if (!IsSameFormat(m_Format, format))
        *at = newFormat; // else what it says beyond the buffer's format, speaker places perhaps, is kept
    at = find(torv::kDataChunk);
    if (at == map.end())
        at = map.insert(map.end(), CHUNK_INFO{torv::kDataChunk, 0, 0, 0});
    at->offset = 0;
    at->size = dataBytes;
    at = find(kFact);
    if (at != map.end() && at->size == kFactBytes && dataBytes / buffer.GetSampleUnitSize() != GetNumSamples())
        at->offset = 0; // it tells the number of frames
    if (!m_bPadded)
        std::stable_sort(map.begin(), map.end(),
                         [](const CHUNK_INFO& a, const CHUNK_INFO& b) { return UnpaddedRank(a) < UnpaddedRank(b); });
    return 1;
}

bool CxQuillAudio::WriteWave(const char* path, CWaveBuffer& buffer, const torv::ChunkList& kept) {
    CFile keptFile;
    CFile dataFile;
    CHUNK_INFO place;
    if (!FindData(buffer, dataFile, place) || (!kept.empty() && !OpenToRead(keptFile, m_strPath)))
        return false;
    torv::ChunkList map;
    if (!PrepareSaveMap(kept, buffer, place.size, map) || !Open(path, CFile::modeReadWrite | CFile::shareExclusive))
        return false;

    const auto addContent = [&](const CHUNK_INFO& chunk) {
        if (chunk.offset)
            return AddKept(*this, keptFile, chunk);
        if (chunk.id == torv::kFormatChunk)
            return AddFormat(*this, buffer);
        if (chunk.id == kFact) {
            BYTE frames[kFactBytes];
            torv::StoreValue(frames, kFactBytes, place.size / buffer.GetSampleUnitSize());
            return AddData(frames, kFactBytes);
        }
        return place.offset ? AddData(&dataFile, place.offset, place.size) : AddData(&buffer);
    };
    const bool pads = m_bPadded && !kept.empty();
    const bool isWritten = CreateChunk(torv::kRiffChunk, torv::kWaveForm) &&
                           std::all_of(map.begin(), map.end(),
                                       [&](const CHUNK_INFO& chunk) {
                                           return CreateChunk(chunk.id, 0) && addContent(chunk) && CloseChunk() &&
                                                  (!pads || chunk.size % 2 == 0 || AddData("", 1));
                                       }) &&
                           CloseChunk();
    return Close() && isWritten;
}

/// With `standsFor`, object and buffer stand for the new file afterwards.
int CxQuillAudio::SaveTo(const char* path, CWaveBuffer* buffer, const torv::ChunkList& kept, bool standsFor) {
    if (!path || !buffer)
        return 0;
    std::optional<torv::ReplacedFile> target; // goes when nothing has it open any more
    const int isSaved = torv::OrZero([&] {
        torv::ReplacedFile& file = target.emplace(torv::NewFilePath(path));
        if (!file.IsOpen())
            return RecordError(torv::NewFileError(file, path).m_cause);
        if (!WriteWave(file.Path(), *buffer, kept))
            return 0;
        // What could be refused comes before the file takes its place.
        CxQuillAudio made;
        CString name(path);
        CString bufferName(path);
        if (standsFor && !made.Load(file.Path()))
            return RecordError(made.GetError(0));
        if (!file.Commit())
            return RecordError(torv::NewFileError(file, path).m_cause);
        if (!standsFor)
            return 1;
        m_strPath = std::move(name);
        m_chunks.swap(made.m_chunks);
        m_Format = made.m_Format;
        m_bPadded = made.m_bPadded;
        const CHUNK_INFO* const data = GetChunkInfo(m_chunks, torv::kDataChunk, 0);
        buffer->SetRiffInfo(std::move(bufferName), data->offset, data->size);
        buffer->SetWaveInfo(m_Format.nChannels, m_Format.wBitsPerSample, m_Format.nSamplesPerSec);
        buffer->SetModify(0);
        return 1;
    });
    if (!isSaved) {
        Close();
        m_file.Abort(); // open, though its opening was cut off
    }
    return isSaved;
}

int CxQuillAudio::Save(CWaveBuffer* buffer) {
    return m_strPath.IsEmpty() ? 0 : SaveTo(m_strPath, buffer, m_chunks, true);
}

int CxQuillAudio::SaveAs(const char* path, CWaveBuffer* buffer) { return SaveTo(path, buffer, m_chunks, true); }

int CxQuillAudio::SaveNew(const char* path, CWaveBuffer* buffer) { return SaveTo(path, buffer, {}, true); }

int CxQuillAudio::SaveCopy(const char* path, CWaveBuffer* buffer) {
    return path && m_strPath == path ? Save(buffer) : SaveTo(path, buffer, m_chunks, false);
}
