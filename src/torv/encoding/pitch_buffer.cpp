#include "torv/encoding/pitch_buffer.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr DWORD kFrameSize = 4;
constexpr DWORD kAllFrames = 0xFFFFFFFF;

} // namespace

CPitchBuffer::~CPitchBuffer() = default;

int CPitchBuffer::Create(DWORD blockSize) {
    if (!blockSize)
        return 0;
    RemoveAll();
    m_dwFrames = 0;
    if (!CExtendBuffer::Create(blockSize, static_cast<int>(m_nAllocFlags)))
        return 0;
    m_dwFrameSize = kFrameSize;
    return 1;
}

/// Never a part of a frame: a count beyond what a buffer holds is cut to whole frames.
DWORD CPitchBuffer::BytesOf(DWORD frames) const {
    return m_dwFrameSize ? std::min(frames, 0xFFFFFFFF / m_dwFrameSize) * m_dwFrameSize : 0;
}

DWORD CPitchBuffer::MoveTo(DWORD frame) {
    SeekTo(BytesOf(std::min(frame, m_dwFrames)));
    return GetFramePosition();
}

int CPitchBuffer::ReadData(void* frame) { return ReadData(frame, 1) == 1; }

DWORD CPitchBuffer::ReadData(void* frames, DWORD count) {
    return m_dwFrameSize ? Read(static_cast<char*>(frames), BytesOf(count)) / m_dwFrameSize : 0;
}

int CPitchBuffer::WriteData(const void* frame) {
    if (!m_dwFrameSize || Write(static_cast<const char*>(frame), m_dwFrameSize) != m_dwFrameSize)
        return 0;
    m_dwFrames = GetSize() / m_dwFrameSize;
    m_nModify = 1;
    return 1;
}

DWORD CPitchBuffer::WriteData(const void* frames, DWORD count) {
    if (!m_dwFrameSize || !frames)
        return 0;
    const DWORD written = Write(static_cast<const char*>(frames), BytesOf(count)) / m_dwFrameSize;
    m_dwFrames = GetSize() / m_dwFrameSize;
    m_nModify = 1;
    return written;
}

int CPitchBuffer::PlaceFrame(Placing place, const void* frame) {
    if (!m_dwFrameSize || (this->*place)(static_cast<const char*>(frame), m_dwFrameSize) != m_dwFrameSize)
        return 0;
    m_dwFrames += m_dwFrameSize; // by its bytes: hosts that fill frame by frame divide by the frame size
    m_nModify = 1;
    return 1;
}

DWORD CPitchBuffer::PlaceFrames(Placing place, const void* frames, DWORD count) {
    if (!m_dwFrameSize || !frames)
        return 0;
    const DWORD placed = (this->*place)(static_cast<const char*>(frames), BytesOf(count)) / m_dwFrameSize;
    m_dwFrames += placed;
    m_nModify = 1;
    return placed;
}

int CPitchBuffer::InsertData(const void* frame) { return PlaceFrame(&CExtendBuffer::Insert, frame); }
int CPitchBuffer::AddData(const void* frame) { return PlaceFrame(&CExtendBuffer::Append, frame); }

DWORD CPitchBuffer::InsertData(const void* frames, DWORD count) {
    return PlaceFrames(&CExtendBuffer::Insert, frames, count);
}

DWORD CPitchBuffer::AddData(const void* frames, DWORD count) {
    return PlaceFrames(&CExtendBuffer::Append, frames, count);
}

DWORD CPitchBuffer::RemoveData(DWORD count) {
    if (!m_dwFrameSize)
        return 0;
    const DWORD removed = Remove(BytesOf(count == kAllFrames ? m_dwFrames : count)) / m_dwFrameSize;
    m_dwFrames -= std::min(removed, m_dwFrames);
    m_nModify = 1;
    return removed;
}

DWORD CPitchBuffer::Load(CFile* file, DWORD count, int* error) {
    const DWORD loaded = CExtendBuffer::Load(file, BytesOf(count), error);
    if (!m_dwFrameSize || !file)
        return 0;
    m_dwFrames = loaded / m_dwFrameSize;
    return m_dwFrames;
}
