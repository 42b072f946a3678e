#include "torv/audio/wave_buffer.h"

#include "torv/audio/sample.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int kGlobalMemory = 0; ///< blocks of data are fixed global memory
constexpr int kWidestField = 0xFFFF;
constexpr DWORD kMost = 0xFFFFFFFF;

DWORD Clamped(ULONGLONG value) { return static_cast<DWORD>(std::min<ULONGLONG>(value, kMost)); }

DWORD FieldOr(int value, DWORD standard) {
    return value > 0 && value <= kWidestField ? static_cast<DWORD>(value) : standard;
}

} // namespace

CWaveBuffer::CWaveBuffer() : CExtendBuffer(0, kGlobalMemory) {}

CWaveBuffer::~CWaveBuffer() = default;

int CWaveBuffer::Create(DWORD blockSize) {
    if (!blockSize)
        return 0;
    m_nModify = m_nLoaded = m_nLoop = m_nPlaySource = 0;
    RemoveAll();
    return CExtendBuffer::Create(blockSize, kGlobalMemory);
}

void CWaveBuffer::Delete() {
    RemoveAll();
    InitBuffer();
}

void CWaveBuffer::InitBuffer() {
    ReleaseDataCue();
    m_nModify = m_nLoaded = m_nLoop = m_nPlaySource = 0;
    m_dwBlockBytes = m_dwPlayStart = m_dwPlayEnd = m_dwPlayCursor = 0;
    SetRiffInfo(nullptr, 0, 0);
    SetWaveInfo(0, 0, 0);
}

void CWaveBuffer::SetWaveInfo(int channels, int bits, DWORD rate) {
    m_dwChannels = FieldOr(channels, 1);
    m_dwBits = FieldOr(bits, 16);
    m_dwRate = rate ? rate : torv::kDefaultSampleRate;
    m_dwUnitSize = (m_dwBits + 7) / 8 * m_dwChannels;
    m_dwSamples = m_dwDataLength / m_dwUnitSize;
}

void CWaveBuffer::MakeWaveFormat(WAVEFORMATEX& format) const {
    format = {WAVE_FORMAT_PCM,
              static_cast<WORD>(m_dwChannels),
              m_dwRate,
              GetAverageBytesPerSec(),
              static_cast<WORD>(m_dwUnitSize),
              static_cast<WORD>(m_dwBits),
              0};
}

DWORD CWaveBuffer::FrameBytes(DWORD frames) const { return Clamped(static_cast<ULONGLONG>(frames) * m_dwUnitSize); }

DWORD CWaveBuffer::GetWaveSize() const { return FrameBytes(m_dwSamples); }

DWORD CWaveBuffer::GetAverageBytesPerSec() const { return FrameBytes(m_dwRate); }

DWORD CWaveBuffer::CalcBuffSize(DWORD seconds) const {
    return Clamped(static_cast<ULONGLONG>(GetAverageBytesPerSec()) * seconds);
}

void CWaveBuffer::GetSmapleTime(SAMPLE_TIME& time) const {
    const DWORD seconds = m_dwSamples / m_dwRate;
    const ULONGLONG rest = m_dwSamples % m_dwRate;
    time = {m_dwSamples, seconds / 60, seconds % 60, static_cast<DWORD>(rest * 1000 / m_dwRate)};
}

DWORD CWaveBuffer::MoveTo(DWORD sample) {
    SeekTo(FrameBytes(std::min(sample, m_dwSamples)));
    return GetSamplePosition();
}

DWORD CWaveBuffer::MoveTo(short minutes, short seconds, short milliseconds) {
    // Hosts that edit stereo data pass times halved because of the channels here.
    const LONGLONG perSecond = std::min<LONGLONG>(static_cast<LONGLONG>(m_dwRate) * m_dwChannels, kMost);
    const LONGLONG frames = (seconds + minutes * 60) * perSecond + milliseconds * perSecond / 1000;
    return MoveTo(Clamped(static_cast<ULONGLONG>(std::max<LONGLONG>(frames, 0))));
}

int CWaveBuffer::ReadSample(void* frame) { return Read(static_cast<char*>(frame), m_dwUnitSize) == m_dwUnitSize; }

DWORD CWaveBuffer::ReadSample(void* frames, DWORD count) {
    return Read(static_cast<char*>(frames), FrameBytes(count)) / m_dwUnitSize;
}

int CWaveBuffer::WriteSample(const void* frame) {
    const DWORD moved = Overwrite(frame, m_dwUnitSize);
    if (moved)
        m_nModify = 1;
    if (moved < m_dwUnitSize)
        return 0;
    m_dwSamples = FramesIn(m_dwSize);
    return 1;
}

DWORD CWaveBuffer::WriteSample(const void* frames, DWORD count) {
    const DWORD moved = Overwrite(frames, FrameBytes(count));
    if (moved) {
        m_nModify = 1;
        m_dwSamples = FramesIn(m_dwSize);
    }
    return moved / m_dwUnitSize;
}

/// A frame put in by itself counts as its bytes. Hosts that put frame after frame in know the count as bytes.
int CWaveBuffer::CountOneFrame(DWORD bytesMoved) {
    if (bytesMoved)
        m_nModify = 1;
    if (bytesMoved < m_dwUnitSize)
        return 0;
    m_dwSamples = Clamped(static_cast<ULONGLONG>(m_dwSamples) + m_dwUnitSize);
    return 1;
}

DWORD CWaveBuffer::CountFrames(DWORD bytesMoved) {
    const DWORD frames = bytesMoved / m_dwUnitSize;
    if (bytesMoved)
        m_nModify = 1;
    m_dwSamples = Clamped(static_cast<ULONGLONG>(m_dwSamples) + frames);
    return frames;
}

int CWaveBuffer::InsertSample(const void* frame) { return CountOneFrame(InsertInOrder(frame, m_dwUnitSize, 1)); }

DWORD CWaveBuffer::InsertSample(const void* frames, DWORD count) {
    return CountFrames(InsertInOrder(frames, FrameBytes(count), 1));
}

int CWaveBuffer::AddSample(const void* frame) {
    return CountOneFrame(Append(static_cast<const char*>(frame), m_dwUnitSize));
}

DWORD CWaveBuffer::AddSample(const void* frames, DWORD count) {
    return CountFrames(Append(static_cast<const char*>(frames), FrameBytes(count)));
}

DWORD CWaveBuffer::RemoveSample(DWORD count) {
    const bool isAll = count == torv::kAllFrames;
    if (isAll)
        SeekTo(0);
    const DWORD removed = Remove(isAll ? m_dwSize : FrameBytes(count));
    const DWORD frames = removed / m_dwUnitSize;
    if (removed)
        m_nModify = 1;
    m_dwSamples = isAll ? 0 : m_dwSamples - std::min(m_dwSamples, frames);
    return frames;
}

void CWaveBuffer::SetRiffInfo(const char* path, DWORD dataOffset, DWORD dataLength) {
    SetRiffInfo(CString(path), dataOffset, dataLength);
}

void CWaveBuffer::SetRiffInfo(CString&& path, DWORD dataOffset, DWORD dataLength) noexcept {
    m_strPath = std::move(path);
    m_dwDataOffset = dataOffset;
    m_dwDataLength = dataLength;
}
