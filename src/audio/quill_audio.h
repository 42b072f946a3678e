#pragma once

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

using ChunkList = std::vector<CHUNK_INFO>;

constexpr BYTE kOneBlock = 1; ///< for CxQuillAudio::ReadWave

} // namespace torv

/// Loads and saves wave files for a CWaveBuffer: PCM of any width and number of channels. The other chunks of the file
/// (texts, cue points, ...) are not interpreted but kept when it is saved.
///
/// An object stands for one file at most: the last one that was loaded or saved. Only its chunks' places are kept; it
/// is open during an operation only. Operations give 0 when they fail, and nothing has changed then; GetError tells
/// the cause of a file operation, 0 when it was the content that was no good. One thread at a time.
class TORV_API CxQuillAudio : public CxRiff {
public:
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
    /// file, that file's data. They write beside the file and put the new one in its place when it is whole. Kept
    /// chunks come from the file this object stands for, in their order, with a pad byte behind odd sizes if it had
    /// them; without pads odd chunks go to the end, where other programs need not look behind them.
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
    /// 0 when the list is full.
    static int AddNewChunkInfo(torv::ChunkList& chunks, const CHUNK_INFO& info);
    /// The index-th chunk of this identifier, or null.
    static const CHUNK_INFO* GetChunkInfo(const torv::ChunkList& chunks, DWORD id, int index);
    static int DeleteChunkInfo(torv::ChunkList& chunks, DWORD id, int index);

private:
    bool OpenToRead(CFile& file, const char* path);
    bool FindData(const CWaveBuffer& buffer, CFile& file, CHUNK_INFO& place);
    int WriteWave(const char* path, CWaveBuffer& buffer, const torv::ChunkList& kept);
    int StandFor(const char* path, CWaveBuffer& buffer);

    CFile m_file; ///< the base's file
    CString m_strPath;
    torv::ChunkList m_chunks;
    WAVEFORMATEX m_Format;
    bool m_bPadded = false;
};
