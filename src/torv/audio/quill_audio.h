#pragma once

#include "torv/audio/shared_value.h"
#include "torv/audio/wave_buffer.h"
#include "torv/files/riff.h"
#include "torv/platform/platform.h"

#include <vector>

/// One track of CxQuillAudio::AudioMixDown. All tracks begin together.
struct __tagMixDownTrack {
    DWORD start;         ///< first frame of the buffer that is mixed
    DWORD end;           ///< behind the last one; 0, or more than there are, means all
    float volume;        ///< dB; 0 leaves the samples as they are
    float pan;           ///< -1.0 (left) .. +1.0; what lies outside is the centre
    CWaveBuffer* buffer; ///< not owned: one or two channels, in memory or by its file
};
static_assert(offsetof(__tagMixDownTrack, volume) == 8 && offsetof(__tagMixDownTrack, buffer) == 16);
static_assert(sizeof(void*) != 4 || sizeof(__tagMixDownTrack) == 20);

namespace torv {

using ChunkList = std::vector<CHUNK_INFO>; ///< the chunks of a file in order

constexpr BYTE kOneBlock = 1; ///< for CxQuillAudio::ReadWave

/// What the player tells the window that plays, and wParam of it.
constexpr UINT kAudioMessage = 1224;
constexpr WPARAM kAudioBlockBack = 1;                    ///< posted; lParam is for CxQuillAudio::OnAudioCallback
constexpr WPARAM kAudioPlaying = 3;                      ///< sent; lParam 1: it has begun, 0: it has not, or is over
constexpr WPARAM kAudioFailed = static_cast<WPARAM>(-1); ///< sent: there is a device error

/// CxQuillAudio::m_nStatus.
constexpr int kAudioIdle = 0;
constexpr int kAudioLoading = 1;  ///< playing, with more to come
constexpr int kAudioLastData = 2; ///< playing, and all of it is at the device
constexpr int kAudioError = -1;   ///< a device error ended the play

} // namespace torv

/// Loads and saves wave files for a CWaveBuffer: PCM of any width and number of channels. The other chunks of the file
/// (texts, cue points, ...) are not interpreted but kept when it is saved.
///
/// An object stands for one file at most: the last one that was loaded or saved. Only its chunks' places are kept; it
/// is open during an operation only. Operations give 0 when they fail, and nothing has changed then; GetError tells
/// the cause of a file operation, 0 when it was the content that was no good, or memory. One thread at a time.
///
/// The static half plays a CWaveBuffer on the system's choice of wave output: one for the whole process. The window
/// that plays owns it. Its thread makes all the calls, and hands every kAudioBlockBack that it gets to OnAudioCallback,
/// which fills the block anew; without that the sound ends within two seconds. The buffer outlives its play.
class TORV_API CxQuillAudio : public CxRiff {
public:
    /// Stands for no file.
    CxQuillAudio();
    ~CxQuillAudio() override;

    /// Learns where the chunks are. Refused: what does not begin with a wave chunk that is whole, compressed and float
    /// samples, a frame size that does not fit channels and bits, and more than 4096 chunks.
    int Load(const char* path);
    /// Empty before the first Load or save.
    const CString& GetFilePath() const { return m_strPath; }
    /// As the file says.
    void GetWaveFormat(WAVEFORMATEX& format) const { format = m_Format; }
    /// Whole frames in the file.
    DWORD GetNumSamples() const;
    /// The chunks of that file, without the wave chunk around them.
    const torv::ChunkList& GetChunkList() const { return m_chunks; }

    /// Gives the buffer the format and the place of the data. 0 when the file has none.
    int ReadProperty(CWaveBuffer* buffer) const;
    /// ReadProperty, then all the data into memory: in one block with torv::kOneBlock, else in blocks of a second. The
    /// second argument is not looked at. When the data cannot be had the buffer is empty.
    int ReadWave(CWaveBuffer* buffer, int reserved, BYTE flags);
    /// ReadWave's second half, into a buffer that was just created: marks it loaded and unmodified, cursor at 0.
    int QuickLoad(CWaveBuffer* buffer);

    /// Into the file this object stands for.
    ///
    /// All saves write what the buffer holds in memory, a broken frame at its end included, or, when it only knows a
    /// file, that file's data. The new file takes the old one's place when it is whole (see torv::ReplacedFile); of
    /// two that are saved at once the last stays. Kept chunks come from the file this object stands for, in their
    /// order, with a pad byte behind odd sizes if it had them; without pads odd chunks go to the end, where other
    /// programs need not look behind them.
    int Save(CWaveBuffer* buffer);
    /// Into another file, for which object and buffer then stand.
    int SaveAs(const char* path, CWaveBuffer* buffer);
    /// As SaveAs, but without the chunks of the file so far.
    int SaveNew(const char* path, CWaveBuffer* buffer);
    /// As SaveAs, but object and buffer go on with the file they had, and what was modified still is. Onto that file it
    /// is Save.
    int SaveCopy(const char* path, CWaveBuffer* buffer);

    /// Mixes the tracks into a new wave and saves it with SaveNew: stereo at the tracks' rate, which must be the same,
    /// as wide as the widest of them but not below 16 bits. A mono track sounds on both sides. Sums are cut to whole
    /// values toward zero, and stay at the range's ends.
    int AudioMixDown(const char* path, __tagMixDownTrack* tracks, int count);

    /// The path with this extension (with or without its dot) instead of its own; null or empty takes it away.
    static CString SwapFileExt(const char* path, const char* ext);

    /// The chunks of the open file. `isPadded` tells whether odd ones are followed by a pad byte, which they are in
    /// most programs' files.
    int ScanChunkInfo(torv::ChunkList& chunks, bool& isPadded);
    /// The format that the open file states; fields that are missing are those of 16-bit stereo at 44100 Hz.
    int LoadHeader(const torv::ChunkList& chunks, WAVEFORMATEX& format);
    /// What a save writes: `kept`, with format and data of the buffer. Chunks made anew have offset 0.
    int PrepareSaveMap(const torv::ChunkList& kept, const CWaveBuffer& buffer, DWORD dataBytes,
                       torv::ChunkList& map) const;
    /// 0 when the list is full, or memory.
    static int AddNewChunkInfo(torv::ChunkList& chunks, const CHUNK_INFO& info);
    /// The index-th chunk of this identifier, or null.
    static const CHUNK_INFO* GetChunkInfo(const torv::ChunkList& chunks, DWORD id, int index);
    /// Takes the chunk of this identifier out of the list, the `index`th from 0. 0 when there is none.
    static int DeleteChunkInfo(torv::ChunkList& chunks, DWORD id, int index);

    /// Makes the player ready: 0 while a device is open, when nothing changes.
    static int OpenAudio();
    /// AudioReset.
    static int CloseAudio();
    /// Plays frames `start` up to `end` (see CWaveBuffer::SetPlayParam). 0 and no message while another play is on or
    /// has left an error, or without a window; else kAudioPlaying is sent before it returns whether it has begun.
    static int AudioPlay(HWND owner, CWaveBuffer* buffer, DWORD start, DWORD end, int loop, int source);
    /// Ends the play of this window and sends it kAudioPlaying with 0. Returns 0, and does nothing, when it does not
    /// play; after an error it is AudioAbort or AudioReset that make the player free again.
    static int AudioStop(HWND owner);
    /// Ends whatever plays, for a window that wants to. Another one that owned it is sent kAudioPlaying with 0.
    static int AudioAbort(HWND window);
    /// Ends what plays without a word, forgets errors and owner, and closes the device. 0, with an internal error, when
    /// the device does not give the blocks back within a second: then nothing is freed, the buffer must stay, nothing
    /// else is played, and the next call tries again.
    static int AudioReset();
    /// Whether this window plays; null: whether any does. Not after an error.
    static int IsAudioPlaying(HWND window);
    /// Takes lParam of a kAudioBlockBack. 1 when that went on or ended the play, -1 after a device error, 0 for what is
    /// no block that has just come back: messages may be late or forged.
    static int OnAudioCallback(HWND owner, LPARAM header);
    /// The last device error in the system's words, else the last error of the player itself. Good until the next call.
    static const char* GetAudioErrorMessage();

    /// What the device calls, on a thread of its own: posts kAudioBlockBack to the owner.
    static void CALLBACK waveOutProc(HWAVEOUT device, UINT message, DWORD_PTR instance, DWORD_PTR header, DWORD_PTR);
    /// As OnAudioCallback.
    static int WatchWaveOut(HWND owner, WAVEHDR* header);
    /// Waits until no block is at the device; 0 when the time (ms) is over first. Blocks that wait there last two
    /// seconds at most.
    static int WaitReleaseCue(DWORD milliseconds = 3000);
    /// Forgets the errors, not that the play has ended with one.
    static void ClearAudioError();
    /// Both set kAudioError, and keep what GetAudioErrorMessage tells: 1 is the internal error, and so is what has no
    /// text; a device error is told to the owner, too (kAudioFailed).
    static void SetAoudioError(int error);
    static void SetMMeError(UINT error); ///< of the device, the system's number

protected:
    static HWAVEOUT& m_hWaveOut;              ///< null: closed
    static torv::Shared<HWND> m_hWndCallback; ///< the owner; read on the device's thread
    static CWaveBuffer* m_pBuff;              ///< null: nothing of it is at the device
    static WAVEHDR (&m_stWaveHdr)[2];
    static torv::Shared<int> m_nStatus; ///< read on the device's thread
    static UINT m_nMMeError;            ///< 0: none
    static int m_nError;
    static char m_szMsg[128];

private:
    static int StartPlay(HWND owner, CWaveBuffer& buffer);

    int MixInto(const char* path, const __tagMixDownTrack* tracks, int count);
    bool OpenToRead(CFile& file, const char* path);
    bool FindData(const CWaveBuffer& buffer, CFile& file, CHUNK_INFO& place);
    bool WriteWave(const char* path, CWaveBuffer& buffer, const torv::ChunkList& kept);
    int SaveTo(const char* path, CWaveBuffer* buffer, const torv::ChunkList& kept, bool standsFor);

    CFile m_file; ///< the base's file
    CString m_strPath;
    torv::ChunkList m_chunks;
    WAVEFORMATEX m_Format;
    bool m_bPadded = false;
};
