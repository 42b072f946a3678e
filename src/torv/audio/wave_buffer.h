#pragma once

#include "torv/platform/platform.h"
#include "torv/stream/extend_buffer.h"

#include <array>
#include <cstdlib>
#include <memory>

/// A length of audio; the three last are the whole of it, split.
struct SAMPLE_TIME {
    DWORD samples;      ///< frames
    DWORD minutes;      ///< whole ones
    DWORD seconds;      ///< 0..59
    DWORD milliseconds; ///< 0..999, rounded down
};
static_assert(sizeof(SAMPLE_TIME) == 16 && offsetof(SAMPLE_TIME, milliseconds) == 12);

namespace torv {

/// For CWaveBuffer::SetPlayParam and GetPlaySource.
/// @{
constexpr int kPlayFromMemory = 1;
constexpr int kPlayFromFile = 2;
/// @}
constexpr DWORD kAllFrames = 0xFFFFFFFF; ///< for CWaveBuffer::RemoveSample

} // namespace torv

/// One piece of PCM audio: held in memory, or known by its place in a wave file. A frame is one value per channel,
/// `GetSampleUnitSize()` bytes, whose content is the caller's business. The base's position in bytes is the cursor.
///
/// The count of frames is kept for both kinds: what the format makes of the file's data, corrected by edits. Sizes in
/// bytes that would pass 32 bits stay at 0xFFFFFFFF. One thread at a time.
class TORV_API CWaveBuffer : public CExtendBuffer {
public:
    /// Empty: 1 channel, 16 bits, 44100 Hz. Edits need Create first.
    CWaveBuffer();
    ~CWaveBuffer() override;

    /// Throws the data in memory away and begins anew with blocks of this many bytes. The format and the count of
    /// frames stay, so that a file's data can be loaded after SetWaveInfo. 0 for size 0 and when memory is short.
    int Create(DWORD blockSize);
    /// Back to what the constructor makes. No play block may still be at the device.
    void Delete();

    /// 0, or what no wave format can tell (below 0 or above 65535), stands for 1 channel, 16 bits, 44100 Hz.
    void SetWaveInfo(int channels, int bits, DWORD rate);
    /// Fills in the record, block alignment and bytes a second included.
    void MakeWaveFormat(WAVEFORMATEX& format) const;
    DWORD GetWaveSize() const; ///< bytes
    /// Of the format.
    DWORD GetAverageBytesPerSec() const;
    /// Bytes of so many seconds.
    DWORD CalcBuffSize(DWORD seconds) const;
    /// How long the buffer is, by its count of frames.
    void GetSmapleTime(SAMPLE_TIME& time) const;
    /// Bits of a value, Hz, bytes of a frame.
    /// @{
    DWORD GetSampleBitLength() const { return m_dwBits; }
    DWORD GetSampleRate() const { return m_dwRate; }
    DWORD GetSampleUnitSize() const { return m_dwUnitSize; }
    /// @}
    /// Frames, in memory or in the file.
    DWORD GetNumSamples() const { return m_dwSamples; }

    /// To the frame, or behind the last one. Returns the frame reached.
    DWORD MoveTo(DWORD sample);
    /// To a time; before 0 is 0. Multiplies by the channels: in stereo it goes twice as far as the time says.
    DWORD MoveTo(short minutes, short seconds, short milliseconds);
    /// The cursor in frames.
    DWORD GetSamplePosition() const { return m_dwPosition / m_dwUnitSize; }

    /// One frame: 1 when all of it was moved. Several: how many. A null pointer moves nothing.
    int ReadSample(void* frame);
    /// How many frames were read.
    DWORD ReadSample(void* frames, DWORD count);
    /// Overwrites at the cursor, and goes on behind the end.
    int WriteSample(const void* frame);
    /// How many frames were written.
    DWORD WriteSample(const void* frames, DWORD count);
    /// At the cursor, which ends behind them. One frame adds its bytes to the count of frames: see AddSample.
    int InsertSample(const void* frame);
    /// How many frames were inserted; the count grows by them.
    DWORD InsertSample(const void* frames, DWORD count);
    /// At the end. One frame adds its size in bytes, not 1, to the count of frames; WriteSample makes it true again.
    int AddSample(const void* frame);
    /// How many frames were added; the count grows by them.
    DWORD AddSample(const void* frames, DWORD count);
    /// At the cursor; kAllFrames empties the memory and sets the count to 0. Returns how many.
    DWORD RemoveSample(DWORD count);

    /// Non-zero when the data are in memory.
    /// @{
    int IsLoaded() const { return m_nLoaded; }
    void SetLoadMark(int mark) { m_nLoaded = mark; }
    /// @}
    /// Non-zero after every edit.
    int GetModify() const { return m_nModify; }
    /// Sets or clears the mark.
    void SetModify(int modify) { m_nModify = modify; }

    /// Where the data lie in a wave file; SetWaveInfo then counts the frames. Without memory for the path
    /// std::bad_alloc is thrown, and nothing has changed.
    void SetRiffInfo(const char* path, DWORD dataOffset, DWORD dataLength);
    /// The same without a copy.
    void SetRiffInfo(CString&& path, DWORD dataOffset, DWORD dataLength) noexcept;
    /// The wave file; empty for none.
    const CString& GetFilePath() const { return m_strPath; }

    /// What to play, in frames, `end` excluded and clamped to the count. Source 0 is the memory if it holds data, else
    /// the file. 1 when there is something to play; 0 also for a region beyond 4 GiB.
    int SetPlayParam(DWORD start, DWORD end, int loop, int source);
    /// What plays: kPlayFromMemory or kPlayFromFile.
    int GetPlaySource() const { return m_nPlaySource; }
    /// Begins to play: gives each of two headers a block of one second, which this buffer owns, and fills both. 0 when
    /// memory or the file cannot be had. The blocks of an earlier play are freed.
    int InitialLoadDataBlock(WAVEHDR* headers);
    /// Fills a header's block with what comes next and sets its length. 0 and length 0 when nothing comes: the region
    /// or its data have ended, a loop over missing data, or a header without one of the two blocks. Leaves the cursor.
    int LoadDataBlock(WAVEHDR* header);
    /// Frees the play blocks, which must be back from the device, and closes the file.
    void ReleaseDataCue();

private:
    struct Free {
        void operator()(void* memory) const { std::free(memory); }
    };

    using CExtendBuffer::Create;

    void InitBuffer();
    DWORD FrameBytes(DWORD frames) const;
    DWORD FramesIn(DWORD bytes) const { return m_dwUnitSize ? bytes / m_dwUnitSize : 0; }
    int CountOneFrame(DWORD bytesMoved);
    DWORD CountFrames(DWORD bytesMoved);
    bool OpenPlayFile();
    bool IsPlayBlock(const void* block) const;
    DWORD PlayLeft() const { return m_dwPlayCursor < m_dwPlayEnd ? m_dwPlayEnd - m_dwPlayCursor : 0; }
    DWORD ReadPlayData(char* destination, DWORD count);
    DWORD FillBlock(char* block);

    int m_nModify = 0;
    int m_nLoaded = 0;
    CFile m_file; ///< open while playing from it
    CString m_strPath;
    DWORD m_dwDataOffset = 0; ///< bytes
    DWORD m_dwDataLength = 0;
    DWORD m_dwChannels = 1;
    DWORD m_dwBits = 16;
    DWORD m_dwUnitSize = 2; ///< bytes of a frame, never 0
    DWORD m_dwRate = 44100;
    DWORD m_dwSamples = 0;
    std::array<std::unique_ptr<char, Free>, 2> m_playBlocks;
    int m_nPlaySource = 0;
    int m_nLoop = 0;
    DWORD m_dwBlockBytes = 0; ///< of each play block
    DWORD m_dwPlayStart = 0;  ///< bytes from the start of the data
    DWORD m_dwPlayEnd = 0;
    DWORD m_dwPlayCursor = 0;
};
