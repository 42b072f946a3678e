#pragma once

#include "torv/audio/gain.h"
#include "torv/audio/level_meter.h"
#include "torv/audio/shared_value.h"
#include "torv/platform/platform.h"

#include <memory>

/// A wave file on disk, written frame by frame at its end and read back for playing. Always the plain 44-byte header
/// followed by the samples; other chunks are not supported. Frames are counted from 0. One thread at a time; only
/// volume, pan and mute may be set while another one reads for playing.
///
/// Playing follows a timeline: `lead-in` silent frames, the file's frames from play start to play end, `tail` silent
/// frames. A pointer on it is lead-in + file frame; the pointers of frames before the play start are skipped.
///
/// What is read for playing is taken to be mono: render in mono and pan it (see ReadSampleForPlay).
///
/// As with its base, operations on the file throw CFileException by value.
class TORV_API CWaveFile : public CFile {
public:
    /// `bufferFrames` 0 means 1024; rounded up to a multiple of 256 when a file is opened.
    explicit CWaveFile(DWORD bufferFrames = 0);
    /// As Open.
    explicit CWaveFile(const CString& path, DWORD bufferFrames = 0);
    ~CWaveFile() override;
    CWaveFile(const CWaveFile&) = delete;
    CWaveFile& operator=(const CWaveFile&) = delete;

    /// Opens the file for reading and writing, or makes one that holds a default header: 16-bit stereo at 44100 Hz.
    /// Returns 1. Throws CFileException when it cannot be opened or is no wave file of this layout, CMemoryException
    /// when there is no room for the buffer; nothing is open then. A file that is open is closed first.
    int Open(const CString& path);
    /// The same for a file that is there, perhaps an empty one; what is not there is refused and not made.
    int OpenExisting(const CString& path);
    /// As Open, through the base, whatever the flags say; FALSE, and the error, instead of an exception.
    BOOL Open(LPCSTR path, UINT flags, CFileException* error) override;
    /// Flushes and closes; harmless when nothing is open.
    void Close() override;
    /// Writes the buffered frames and the header.
    void Flush() override;
    /// Cuts or grows (with zeros) the sample data to so many bytes; beyond what a header can tell nothing changes.
    void SetLength(ULONGLONG dataBytes) override;
    /// Bytes of sample data, buffered ones included: what SetLength sets.
    ULONGLONG GetLength() const override { return m_dwDataBytes; }
    /// Closes without writing and deletes the file. Returns 1, or 0 when nothing was open or it cannot be deleted.
    int Remove();

    /// Puts one frame behind the data, values in their low bits; a mono file takes the left one. Returns 1, or 0 when
    /// nothing is open or the data would pass what a header can tell. Writes only when the buffer is full.
    int AppendSample(DWORD left, DWORD right);
    /// The same value on both sides.
    int AppendSample(DWORD both) { return AppendSample(both, both); }
    /// As many calls of AppendSample with frames as they lie in this file's data. 0 when not all of them fit; then none
    /// is put there.
    int AppendFrames(const BYTE* frames, DWORD count);
    /// Reads the frame at the current position and steps on; a mono file's value counts for both. Returns 1, or 0 with
    /// zeros at the end of the data.
    int ReadSample(DWORD& left, DWORD& right);
    /// As many calls of ReadSample, with the frames as they lie in this file's data. Returns how many there were.
    DWORD ReadFrames(BYTE* frames, DWORD count);
    /// From the start (`whence` 0) or the current position (1), clamped to the data. Returns 1, or 0 for another
    /// whence.
    int SeekSample(LONG frame, int whence);

    /// The file's format, once it is open.
    void GetWaveFormat(WAVEFORMATEX& format) const { format = m_Format; }
    /// Only an empty file changes its format; its header is rewritten. A format whose block alignment does not fit its
    /// channels and bits is refused as well. Throws CMemoryException, and nothing has changed, without room for the
    /// buffer.
    void SetWaveFormat(const WAVEFORMATEX& format);

    /// Frames of silence before and after the data.
    void SetPrePostBlanks(DWORD leadIn, DWORD tail);
    /// The frames to play, `endFrame` excluded; an end of 0 keeps the old one. Appending moves the end to the data's.
    void SetPlayDuration(DWORD start, DWORD endFrame);
    /// In frames; the end is excluded.
    /// @{
    DWORD GetPlayStartPosition() const { return m_dwPlayStart; }
    DWORD GetPlayEndPosition() const { return m_dwPlayEnd; }
    /// @}
    /// Length of the timeline in frames.
    DWORD GetPlaySamples() const;
    /// Moves on the timeline: absolute (`whence` 0) or relative (1). Returns 1, or 0 for another whence.
    int SeekPlayPointer(LONG position, int whence);
    /// In frames of the timeline, lead-in included.
    DWORD GetCurrentPlayPointer() const { return static_cast<DWORD>(m_qwPlayPointer); }
    /// The next frame of the timeline, scaled by the gains (full scale 1.0); with `loop` the timeline starts again.
    /// Returns 1 while the file plays, 0 with silence when it has ended.
    ///
    /// A value is converted by bits per sample / channels: right for mono files. A 16-bit stereo file is read by the
    /// rule for 8 bits, and 24-bit stereo is silent: mixes of such files sound as they always did.
    int ReadSampleForPlay(float& left, float& right, int loop);
    /// As many calls of ReadSampleForPlay, with the same values in the same order. Returns how many frames were played;
    /// those behind them are silent.
    DWORD ReadFramesForPlay(float* left, float* right, DWORD count, int loop);

    /// Linear volumes (1.0 leaves the samples as they are); pans outside -1.0..+1.0 become the centre.
    void SetAmplitudes(double volumeLeft, double volumeRight, double pan);
    /// See SetAmplitudes; the volume is for both sides.
    /// @{
    void SetVolume(double volume);
    void SetPanpot(double pan);
    /// @}
    /// Non-zero plays silence.
    void SetMute(int mute) { m_nMute = mute; }
    /// Peaks of what is read for playing go to two windows; a code or an interval (frames) of 0 keeps the old one,
    /// which at first is 50 ms of the file that is open.
    void SetLevelNotify(CWnd* left, CWnd* right, UINT message, WORD code, DWORD interval);

    /// Frames and bytes of sample data, buffered ones included.
    /// @{
    DWORD GetTotalSamples() const { return m_dwFrames; }
    DWORD GetWaveDataByte() const { return m_dwDataBytes; }
    /// @}
    /// Copies up to `bytes` bytes of sample data from the beginning; returns how many.
    DWORD GetWaveData(BYTE* data, DWORD bytes);
    /// Scales raw sample data of this file's format by its gains, from `in` to `out` (which may be the same), each
    /// value by its own width. With `clip` what passes a value's range stays at its ends, else it wraps. A broken frame
    /// at the end is copied. Returns 1, or 0 for a null pointer or a format that cannot be scaled.
    int AddVolumeToWaveData(const BYTE* in, BYTE* out, DWORD bytes, int clip) const;

    /// At the file's rate.
    /// @{
    double SamplesToMilliSec(double samples) const;
    double MilliSecToSamples(double milliseconds) const;
    /// @}

private:
    bool IsReady() const { return m_hFile != hFileNull && m_pBuffer; }
    int OpenPath(const CString& path, bool mayMake);
    void OpenFile(const CString& path, bool mayMake);
    void ReadHeader(const CString& path);
    void WriteHeader();
    ULONGLONG PlaceOf(DWORD frame) const;
    void AllocateBuffer(DWORD align);
    void LoadWindow(DWORD frame);
    void LoadWindowOf(DWORD frame) {
        if (!m_bWindowLoaded || frame - m_dwWindowFrame >= m_dwBufferFrames)
            LoadWindow(frame);
    }
    void SetDataBytes(DWORD bytes);
    void CountAppended(DWORD frames);
    void UseFormat(const WAVEFORMATEX& format);
    void UpdateGains();
    torv::StereoGain Gains() const { return {m_dGainL, m_dGainR}; }
    void SkipUnplayedFrames();
    void ReadData(DWORD frame, float* left, float* right, DWORD count);
    static void Silence(float* left, float* right, DWORD count);

    DWORD m_dwAskedFrames;
    WAVEFORMATEX m_Format;
    DWORD m_dwDataBytes = 0;
    DWORD m_dwFrames = 0; ///< whole frames in the data
    DWORD m_dwCurrentSample = 0;

    double m_dVolumeL = 1.0;
    double m_dVolumeR = 1.0;
    double m_dPan = 0.0;
    torv::Shared<double> m_dGainL = 1.0;
    torv::Shared<double> m_dGainR = 1.0;
    torv::Shared<int> m_nMute = 0;

    DWORD m_dwLeadIn = 0;
    DWORD m_dwTail = 0;
    DWORD m_dwPlayStart = 0;
    DWORD m_dwPlayEnd = 0xFFFFFFFF;
    ULONGLONG m_qwPlayPointer = 0;

    // The buffer is a window of the data that begins at a multiple of its own length.
    std::unique_ptr<BYTE[]> m_pBuffer;
    DWORD m_dwBufferFrames = 0;
    DWORD m_dwWindowFrame = 0;
    bool m_bWindowLoaded = false;
    bool m_bDirty = false;       ///< the window holds frames that the file does not
    bool m_bHeaderStale = false; ///< the header in the file is not true any more

    torv::LevelMeter m_Level;
};
