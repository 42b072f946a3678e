#pragma once

#include "torv/audio/wave_file.h"
#include "torv/audio/wave_out.h"
#include "torv/encoding/quill_midi_buffer.h"
#include "torv/synthesis/offline_render.h"
#include "torv/synthesis/synth_track.h"

#include <memory>
#include <vector>

/// What to render, and into what. Neither is owned.
struct tagQuillSynthOut {
    CQuillMidiBuffer* stream;
    CWaveFile* file;
};

/// Drives the singing engine: one instance a track, fed with the track's engine stream. Offline it renders a stream
/// into a wave file; for a real-time play it keeps the instances, a ring of sound and the place in the mix of every
/// track. Times are milliseconds from the song's start, rates Hz.
///
/// Streams, files and windows belong to the host and must outlive their use here. The engine library, the instances
/// and the rings are shared by copies and go with the last of them. The host's thread calls everything here; volumes,
/// pans and mutes may change while other threads mix.
class TORV_API CRtSynthesis : public CWaveOut {
public:
    CRtSynthesis();
    CRtSynthesis(const CRtSynthesis&);
    CRtSynthesis& operator=(const CRtSynthesis&);
    ~CRtSynthesis() override;

    static DWORD GetDefaultSampleRate();
    static int GetDefaultSampleBit();
    /// The engine's rates, closed by 0xFFFFFFFF.
    static const DWORD* GetSampleRateList();
    static int IsValidSampleRate(DWORD rate);
    static int IsValidSampleBit(int bits);
    static const char* GetQSMVersionString();

    /// Another engine library than "RVE.dll", for the next OpenSynthesizer that loads one.
    void SetEngineLibrary(const CString& name) { m_strLibrary = name; }
    /// Handed unchanged to every instance made from now on; empty at first.
    void SetEngineOption(const CString& option) { m_strOption = option; }
    DWORD GetSampleRate() const { return m_dwRate; }

    /// Sets the rate to 44100, loads the engine library unless it is loaded, and proves that an instance can be made.
    /// 1, or 0 when the library or one of its entry points is missing or no instance can be made.
    int OpenSynthesizer();
    /// Lets go of the library, which is unloaded once no instance needs it. Always 0.
    int CloseSynthesizer();
    /// A new instance at the current rate, which the caller deletes; -2 when none can be made.
    int CreateRVE();
    void DeleteRVE(int handle);

    /// Renders the stream behind the file's data: 16 bits, the current rate, the wave output's number of channels. An
    /// empty file takes this format; one with data must have it. Returns 1, or 0 when no instance can be made, the
    /// engine fails, the file cannot be written, or the progress handler cancels. The file is flushed, not closed.
    int DoSynthesis(tagQuillSynthOut* out);
    /// The same at another rate, which stays.
    int DoSynthesis(CQuillMidiBuffer* stream, CWaveFile* file, DWORD rate);
    /// Is told how far DoSynthesis is; empty tells nobody.
    void SetProgressHandler(torv::ProgressHandler handler) { m_progress = std::move(handler); }

    /// `mode` 1 plays while synthesizing. At most 1024 tracks; `chase` 0 restores no controllers at a start position.
    void RTS_SetSynthesisParam(int mode, int tracks, DWORD startDelayMs, DWORD rate, DWORD prerollMs, int chase);
    void RTS_SetPlayParam(DWORD regionStart, DWORD regionEnd, DWORD position, int loop);
    /// The track's stream, null for none. 1, or 0 for a track out of range.
    int RTS_SetQuillMidiBuffer(int track, CQuillMidiBuffer* stream);
    /// Null for a track out of range.
    CQuillMidiBuffer* RTS_GetQuillMidiBuffer(int track) const;
    /// -2 for a track out of range.
    int RTS_GetRveHandle(int track) const;
    /// Null for a track out of range; good until the instances are deleted.
    tagRtsInfo* RTS_GetOutBuffer(int track) const;

    /// Makes and configures an instance and a ring for every track. 1, or 0 with everything undone, streams included.
    int RTS_CreateRVE();
    /// Deletes instances and rings and forgets the streams; the library stays loaded. Without instances nothing
    /// changes.
    void RTS_DeleteRVE();
    /// The largest end time of all tracks' streams, which becomes the end position; 0 without a stream.
    DWORD RTS_GetEndPosition();
    /// Sample frames of a block at the current rate.
    DWORD RTS_GetFrameSize() const;
    LONGLONG RTS_MsToSample(DWORD milliseconds, DWORD rate) const;
    /// At the current rate, truncated: so a time that became a sample may come back a millisecond early.
    DWORD RTS_SampleToMs(LONGLONG sample) const;

    /// New region, position or loop flag. A position at or past the region's end, and any position of an empty region,
    /// becomes the region's start.
    void RTS_ChangePlayRegion(DWORD start, DWORD end, DWORD position);
    void RTS_ChangeLoop(int loop, DWORD position);
    /// Seeks, and tells the host's window at once. Past the region's end the region's start is played instead.
    void RTS_ChangeSongPosition(DWORD position);

    /// Effective with the next block mixed; without instances nothing changes. A pan outside -1.0..+1.0, and any pan
    /// with one output channel, is the centre.
    void RTS_SetTrackVolume(int track, double volume);
    void RTS_SetTrackPanpot(int track, double pan);
    void RTS_SetTrackMute(int track, int mute);
    /// Takes over the wave output's master gains, pan and mute.
    void RTS_SetMasterPlayParam();

    /// Posts (code, milliseconds of the sample) under the wave output's message to the host's window. The post's
    /// result, or 0 when there is no such window.
    int PostMessageToMsgDestination(UINT message, WORD code, LONGLONG sample);
    /// Format a dump for a debugger and let go of it.
    void TraceEvent(const BYTE* data, int length);
    void TraceEvent2(const BYTE* data, int length);

protected:
    /// Also the wave output's rate.
    void SetRate(DWORD rate);
    torv::SynthTrack* FindTrack(int track) const;
    void PlacePosition(DWORD position);
    void StartAtRegion();
    bool MakeTracks();

    CString m_strLibrary;
    CString m_strOption;
    std::shared_ptr<torv::EngineLibrary> m_pLibrary;
    torv::ProgressHandler m_progress;
    DWORD m_dwRate = 0;

    torv::Shared<int> m_nStopRequest = 1;
    torv::Shared<int> m_nOutputStarted = 0;
    torv::Shared<int> m_nPlaying = 0;
    torv::Shared<int> m_nSynthesisError = 0;
    torv::Shared<int> m_nSynthesizing = 0;
    torv::Shared<int> m_nPositionChanged = 0;

    int m_nSynthesisMode = 0;
    int m_nTrackCount = 0;
    DWORD m_dwStartDelay = 0;
    DWORD m_dwPreroll = 0;
    int m_nChase = 0;
    torv::Shared<DWORD> m_dwCurrentPosition = 0; ///< where synthesis starts, or starts again
    torv::Shared<DWORD> m_dwSongPosition = 0;    ///< as the host asked for it
    torv::Shared<DWORD> m_dwRegionStart = 0;     ///< equal to the end: no region
    torv::Shared<DWORD> m_dwRegionEnd = 0;
    torv::Shared<int> m_nRegionLoop = 0;
    DWORD m_dwEndPosition = 0xFFFFFFFF;

    std::vector<CQuillMidiBuffer*> m_streams;
    std::shared_ptr<std::vector<torv::SynthTrack>> m_pTracks;
    torv::RingIndexes m_ring;
    DWORD m_dwRingCapacity = 0; ///< sample frames

    torv::Shared<double> m_dMixMasterGainL = 0.0;
    torv::Shared<double> m_dMixMasterGainR = 0.0;
    torv::Shared<double> m_dMixMasterPan = 0.0;
    torv::Shared<int> m_nMixMasterMute = 0;
};
