#pragma once

#include "torv/stream/extend_buffer.h"

/// A store of pitch frames of 4 bytes, one for every 256 samples at 44100 Hz. Positions and counts are frames, and data
/// pointers point to whole frames; what ran out of memory gives a smaller count. A buffer that was not created, and a
/// null pointer, give 0 and change nothing.
class TORV_API CPitchBuffer : public CExtendBuffer {
public:
    CPitchBuffer() = default;
    ~CPitchBuffer() override;

    /// Empties the buffer and makes its first block. 0 for a block size of 0 bytes, which changes nothing, and when
    /// memory is short.
    int Create(DWORD blockSize);

    /// Sets or clears the mark of a change.
    void SetModify(int modify) { m_nModify = modify; }
    int GetModify() const { return m_nModify; } ///< 1 after every change but Create and Load
    /// Frames held; see InsertData for how it counts.
    DWORD GetNumFrames() const { return m_dwFrames; }
    DWORD GetSampleRate() const { return m_dwSampleRate; } ///< Hz
    DWORD GetFrameStep() const { return m_dwFrameStep; }   ///< samples from frame to frame
    DWORD GetFrameSize() const { return m_dwFrameSize; }   ///< bytes; 0 before Create

    /// Clamped to the frames there are. The new position.
    DWORD MoveTo(DWORD frame);
    /// In frames.
    DWORD GetFramePosition() const { return m_dwFrameSize ? GetIndex() / m_dwFrameSize : 0; }
    /// One frame: 1 when the whole of it was read. A count: the frames read.
    int ReadData(void* frame);
    /// How many frames were read.
    DWORD ReadData(void* frames, DWORD count);
    /// Overwrites from the position on, as CExtendBuffer::Write does, and counts the frames anew.
    int WriteData(const void* frame);
    /// How many frames were written.
    DWORD WriteData(const void* frames, DWORD count);
    /// Inserts at the position, or appends. The count grows by 4 for a single frame, and by the frames placed for many;
    /// many at once spill into further blocks as CExtendBuffer::Insert does.
    int InsertData(const void* frame);
    /// See InsertData.
    /// @{
    int AddData(const void* frame);
    DWORD InsertData(const void* frames, DWORD count);
    DWORD AddData(const void* frames, DWORD count);
    /// @}
    /// Removes frames at the position; 0xFFFFFFFF stands for as many as are counted.
    DWORD RemoveData(DWORD count);
    /// As CExtendBuffer::Load. The count becomes the frames loaded, whatever was held before.
    DWORD Load(CFile* file, DWORD count, int* error);

private:
    using CExtendBuffer::Create;
    using Placing = DWORD (CExtendBuffer::*)(const char*, DWORD);

    DWORD BytesOf(DWORD frames) const;
    int PlaceFrame(Placing place, const void* frame);
    DWORD PlaceFrames(Placing place, const void* frames, DWORD count);

    DWORD m_dwSampleRate = 44100;
    DWORD m_dwFrameStep = 256;
    DWORD m_dwFrameSize = 0;
    DWORD m_dwFrames = 0;
    int m_nModify = 0;
};
