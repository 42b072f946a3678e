#pragma once

#include "torv/audio/per_object.h"
#include "torv/audio/wave_file.h"
#include "torv/audio/wave_out.h"
#include "torv/encoding/quill_midi_buffer.h"
#include "torv/synthesis/offline_render.h"
#include "torv/synthesis/play_state.h"
#include "torv/synthesis/synth_ring.h"

#include <array>
#include <memory>
#include <mutex>
#include <vector>

/// What to render, and into what. Neither is owned.
struct tagQuillSynthOut {
    CQuillMidiBuffer* stream; ///< from an encoder, in real-time mode
    CWaveFile* file;          ///< open for writing
};

/// Drives the singing engine: one instance a track, fed with the track's engine stream. Offline it renders a stream
/// into a wave file. In real time a synthesis thread fills a ring of sound for every track, up to 17 seconds ahead, and
/// a wave-output thread mixes the rings and plays them. Times are milliseconds from the song's start, rates Hz.
///
/// A real-time play takes these calls in this order: RTS_SetSynthesisParam, RTS_SetQuillMidiBuffer for each track,
/// RTS_SetPlayParam, RTS_DoSynthesis, RTS_Play, then any of the changes, and RTS_StopSynthesis or
/// RTS_TerminateSynthesis. The host's window is posted (under the message of SetPlayParameters, lParam milliseconds)
/// code 4 when a play is about to begin, the position code at every step of it, and the end code when it is over; then
/// the window is forgotten. A play that ends by itself ends like one that is stopped: instances and streams are gone.
///
/// Streams, files and windows belong to the host and must outlive their use here; a stream that plays is read by the
/// synthesis thread alone. The engine library, the instances and the rings are shared by copies and go with the last of
/// them; threads belong to the object that began them and end with it. The host's thread calls everything here;
/// volumes, pans, mutes and the changes of position, region and loop may come at any time, other settings only while
/// nothing plays. Where memory is refused a function answers its failure, and a play ends with HasSynthesisFailed; what
/// only takes a text or a handler throws std::bad_alloc, as copying does.
class TORV_API CRtSynthesis : public CWaveOut {
public:
    /// 44100 Hz; no engine before OpenSynthesizer.
    CRtSynthesis();
    /// Shares the engine's library, instances and rings, which go with the last copy; threads stay with the other.
    /// @{
    CRtSynthesis(const CRtSynthesis&);
    CRtSynthesis& operator=(const CRtSynthesis&);
    /// @}
    ~CRtSynthesis() override;

    /// 44100 Hz, 16 bits.
    /// @{
    static DWORD GetDefaultSampleRate();
    static int GetDefaultSampleBit();
    /// @}
    /// The engine's rates, closed by 0xFFFFFFFF.
    static const DWORD* GetSampleRateList();
    /// Non-zero for one of the list; for 16 bits.
    /// @{
    static int IsValidSampleRate(DWORD rate);
    static int IsValidSampleBit(int bits);
    /// @}
    /// A fixed text: the driver tells no version.
    static const char* GetQSMVersionString();

    /// Another engine library than "RVE.dll", for the next OpenSynthesizer that loads one.
    void SetEngineLibrary(const CString& name) { m_strLibrary = name; }
    /// Handed unchanged to every instance made from now on; empty at first.
    void SetEngineOption(const CString& option) { m_strOption = option; }
    /// Hz; what was set last.
    DWORD GetSampleRate() const { return m_dwRate; }

    /// Sets the rate to 44100, loads the engine library unless it is loaded, and proves that an instance can be made.
    /// 1, or 0 when the library or one of its entry points is missing or no instance can be made.
    int OpenSynthesizer();
    /// Lets go of the library, which is unloaded once no instance needs it. Always 0.
    int CloseSynthesizer();
    /// A new instance at the current rate, which the caller deletes; -2 when none can be made.
    int CreateRVE();
    /// An instance that CreateRVE made; any other number does nothing.
    void DeleteRVE(int handle);

    /// Renders the stream behind the file's data: 16 bits, the current rate, the wave output's number of channels. An
    /// empty file takes this format; one with data must have it. Returns 1, or 0 when no instance can be made, the
    /// engine fails, the file cannot be written, or the progress handler cancels. The file is flushed, not closed.
    int DoSynthesis(tagQuillSynthOut* out);
    /// The same at another rate, which stays.
    int DoSynthesis(CQuillMidiBuffer* stream, CWaveFile* file, DWORD rate);
    /// The same for a host that takes the samples itself, a step at a time and as many streams at once as it likes;
    /// null when no instance can be made or memory is refused.
    std::unique_ptr<torv::StreamSinger> BeginSynthesis(CQuillMidiBuffer* stream, DWORD rate);
    /// Is told how far DoSynthesis is; empty tells nobody.
    void SetProgressHandler(torv::ProgressHandler handler) { m_progress = std::move(handler); }

    /// `mode` 1 plays while synthesizing. At most 1024 tracks; `chase` 0 restores no controllers at a start position.
    void RTS_SetSynthesisParam(int mode, int tracks, DWORD startDelayMs, DWORD rate, DWORD prerollMs, int chase);
    /// Milliseconds. Region and position as docs/playing.md has them; `loop` non-zero turns at the region's end.
    void RTS_SetPlayParam(DWORD regionStart, DWORD regionEnd, DWORD position, int loop);
    /// The track's stream, null for none. 1, or 0 for a track out of range.
    int RTS_SetQuillMidiBuffer(int track, CQuillMidiBuffer* stream);
    /// Null for a track out of range.
    CQuillMidiBuffer* RTS_GetQuillMidiBuffer(int track) const;
    /// -2 for a track out of range.
    int RTS_GetRveHandle(int track) const;
    /// Null for a track out of range; good until the instances are deleted.
    tagRtsInfo* RTS_GetOutBuffer(int track) const;

    /// Begins a play: RTS_PlayWithSynthesis in mode 1. In other modes the rendered files are played later; nothing is
    /// done and 1 returned.
    int RTS_DoSynthesis();
    /// Makes the instances and begins to synthesize. 1, or 0 with everything undone.
    int RTS_PlayWithSynthesis();
    /// Nothing is done: the rendered files are played by RTS_Play.
    int RTS_PlayAfterSynthesis();
    /// Begins the synthesis thread, after those of an earlier play have ended. One that would never end by itself,
    /// since it loops or is not heard, is stopped. Returns 1, or 0 when no thread can be had.
    int RTS_StartSynthesis();
    /// Begins to be heard: in mode 1 what is being synthesized, in others the registered files. Returns 1, or 0 when
    /// that cannot be.
    int RTS_Play();
    /// Ends loop and play, and waits until both threads are over.
    void RTS_StopSynthesis();
    /// Ends the play, deletes instances and rings, tells the window the end and forgets it. What a play does at its own
    /// end; harmless when there is none.
    void RTS_TerminateSynthesis();
    /// 1 from RTS_Play until the play's end has run and was told. Also of a mixer's play that RTS_Play began.
    int IsPlaying() const;
    /// 1 when the engine failed, or memory was refused to a thread, since synthesis was begun.
    int HasSynthesisFailed() const { return m_state.HasFailed(); }
    /// What the two threads run; called otherwise they run here, and return when the play is over.
    void RTS_SynthesisThread_2();
    /// What the wave-output thread runs.
    void RTS_WaveOutThread_2();

    /// Makes and configures an instance and a ring for every track, when the threads of an earlier play have ended. 1,
    /// or 0 with everything undone, streams included.
    int RTS_CreateRVE();
    /// Deletes instances and rings and forgets the streams; the library stays loaded. Without instances nothing
    /// changes.
    void RTS_DeleteRVE();
    /// The largest end time of all tracks' streams, which becomes the end position; 0 without a stream.
    DWORD RTS_GetEndPosition();
    /// Sample frames of a block at the current rate.
    DWORD RTS_GetFrameSize() const;
    /// A time as sample frames, truncated.
    LONGLONG RTS_MsToSample(DWORD milliseconds, DWORD rate) const;
    /// At the current rate, truncated: so a time that became a sample may come back a millisecond early.
    DWORD RTS_SampleToMs(LONGLONG sample) const;

    /// New region, position or loop flag. A position at or past the region's end, and any position of an empty region,
    /// becomes the region's start.
    void RTS_ChangePlayRegion(DWORD start, DWORD end, DWORD position);
    /// A new loop flag (non-zero turns at the region's end), heard on from a position.
    void RTS_ChangeLoop(int loop, DWORD position);
    /// Seeks, and tells the host's window at once. Past the region's end the region's start is played instead.
    void RTS_ChangeSongPosition(DWORD position);

    /// Effective with the next block mixed; without instances nothing changes. A pan outside -1.0..+1.0, and any pan
    /// with one output channel, is the centre.
    void RTS_SetTrackVolume(int track, double volume);
    /// As RTS_SetTrackVolume.
    /// @{
    void RTS_SetTrackPanpot(int track, double pan);
    void RTS_SetTrackMute(int track, int mute);
    /// For a level meter: the largest magnitude, full scale 1.0, that the track with its volume and pan has in the
    /// 100 ms that were mixed last, which are heard within 200 ms. 0 for a mute track, and without instances.
    double RTS_GetTrackPeak(int track) const;
    /// @}
    /// Takes over the wave output's master gains, pan and mute.
    void RTS_SetMasterPlayParam();

    /// Writes engine samples into the track's ring: one sample for all of a frame's channels, each taking its share of
    /// the frame low byte first. Waits, in turns of 50 ms, while the ring is full. `silent` with a count of 1 closes
    /// the block with zeros instead, with any other count nothing. 1; or 0 for no samples, a format of other than one
    /// or two channels, no such track, and when a stop or a new start cut the waiting short.
    int RTS_AppendSample(int track, const short* samples, int count, int silent);
    /// Closes the block being filled; the rest of it is silent. Waits for room. (The name is the interface's.)
    void RTS_UpdaatWriteIndex(int track);
    /// A pass of the loop ends here: what was begun of a block is dropped. With the last track the mark is set for the
    /// reader, as soon as it has taken the one before.
    void RTS_MarkWriteIndex(int track);
    /// 1 when at least so many blocks are buffered.
    int RTS_IsBlkOk(DWORD blocks) const;

    /// One frame of the output format: a single value for both sides, or two.
    void RTS_ReadSample(const BYTE* at, DWORD& left, DWORD& right) const;
    /// Scales one frame to floating point. Full scale is 1.0, but 256.0 with 24 bits.
    void RTS_AddVolume(double gainL, double gainR, DWORD left, DWORD right, float& outL, float& outR) const;
    /// Adds a frame, times the master gains taken over last, and returns where the next one is. Additions wrap.
    char* RTS_MixOut(char* out, float left, float right) const;
    /// Adds `bytes` of the track's ring from byte `offset` on to the output, unless it is muted.
    void RTS_WaveDataTrackMix(int track, BYTE* out, DWORD bytes, DWORD offset);
    /// Mixes the next blocks, `maxBlocks` and a ring's 3000 at most, into staging buffer `which` (1 or 2), and steps
    /// over them. 1: the buffer, its bytes and blocks. 2: not enough yet. 0: no more. `endFlag` 1: a pass of the loop
    /// ends with these blocks or, when there are none, with those before.
    int RTS_GetWaveOutData_2(DWORD& bytes, BYTE*& buffer, DWORD maxBlocks, int which, DWORD& blocks, int& endFlag);
    /// The same with silence.
    int RTS_GetWaveOutSilentData(DWORD& bytes, BYTE*& buffer, DWORD maxBlocks, int which, DWORD& blocks);

    /// Collects the latest value of every parameter that the track's stream sets before a play from `position`, to take
    /// effect there. How many messages; 0 also at position 0, before the preroll, and when chasing is off.
    int RTS_ChaseEvent(int track, DWORD position);
    /// 1 when RTS_ChaseEvent kept a group with this one's key: its number, and for voice controls the control.
    int RTS_ChaseEventExist(int track, const BYTE* group, DWORD length) const;
    /// Bytes of the parameter group that opens at `bytes`, three a message, up to the next one or the end.
    static DWORD RTS_GetEventLength(const BYTE* bytes, DWORD length);
    /// The messages that RTS_ChaseEvent found, null for a track out of range.
    const std::vector<RVEEvent>* RTS_GetChaseEvents(int track) const;
    /// Places the track's stream before its first entry at or after `time`. 0 when there is none.
    int RTS_MoveTo(int track, DWORD time);

    /// Posts (code, milliseconds of the sample) under the wave output's message to the host's window. The post's
    /// result, or 0 when there is no such window.
    int PostMessageToMsgDestination(UINT message, WORD code, LONGLONG sample);
    /// Format a dump for a debugger and let go of it.
    void TraceEvent(const BYTE* data, int length);
    /// As TraceEvent.
    void TraceEvent2(const BYTE* data, int length);

protected:
    /// Also the wave output's rate.
    void SetRate(DWORD rate);
    /// Null without instances; what is in it lives as long as its holder.
    std::shared_ptr<torv::SynthRing> Ring() const;

    CString m_strLibrary;
    CString m_strOption;
    std::shared_ptr<torv::EngineLibrary> m_pLibrary;
    torv::ProgressHandler m_progress;
    torv::Shared<DWORD> m_dwRate = 0;

    int m_nSynthesisMode = 0;
    int m_nTrackCount = 0;
    DWORD m_dwStartDelay = 0;
    int m_nDevicePatience = 5000; ///< turns, of a millisecond at least, that a device may give nothing back
    torv::Preroll m_preroll;
    torv::PlayState m_state;
    int m_nMixerPlaying = 0;
    torv::MixGains m_master{1.0, 1.0, 0.0, 0.0}; ///< the wave output's, as they were taken over last

private:
    class Host;
    struct FoundTrack {
        explicit operator bool() const { return ring != nullptr; }
        torv::SynthTrack& operator*() const { return ring->Tracks()[index]; }
        torv::SynthTrack* operator->() const { return &**this; }

        std::shared_ptr<torv::SynthRing> ring;
        std::size_t index;
    };
    struct Workers {
        /// Until both are over.
        void Wait() const;

        std::shared_ptr<torv::WorkerThread> synthesis;
        std::shared_ptr<torv::WorkerThread> output;
    };
    struct StagingBuffer {
        std::unique_ptr<BYTE[]> bytes;
        DWORD size = 0;
    };
    struct StagingBuffers {
        std::array<StagingBuffer, 2> buffers;
    };

    int PostTo(HWND window, WORD code, LONGLONG sample) const;
    /// Empty for a track out of range.
    FoundTrack FindTrack(int track) const;
    std::shared_ptr<torv::SynthRing> MakeRing() const;
    bool ForgetRing();
    std::vector<CQuillMidiBuffer*> Streams(std::size_t count) const;
    Workers TheWorkers() const;
    void EndWorkers();
    template <class Change>
    void ChangeWhileStopped(Change change, bool isOutputFirst);
    void AskForRestart();
    torv::MixGains CurrentMaster() const;
    BYTE* Stage(int which, DWORD bytes);

    mutable torv::PerObject<std::mutex> m_mutex; // guards what follows
    std::vector<CQuillMidiBuffer*> m_streams;
    std::shared_ptr<torv::SynthRing> m_pRing;
    torv::PerObject<Workers> m_workers;

    torv::PerObject<StagingBuffers> m_staging;
};
