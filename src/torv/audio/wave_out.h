#pragma once

#include "torv/audio/level_meter.h"
#include "torv/audio/per_object.h"
#include "torv/audio/shared_value.h"
#include "torv/audio/wave_file.h"
#include "torv/platform/platform.h"

#include <array>
#include <memory>

/// One track of CWaveOut::AudioMixDown. All tracks begin together.
struct tagMixDownTrack {
    DWORD start;     ///< first frame of the file that is mixed
    DWORD end;       ///< behind the last one; 0 keeps the file's play end, 0xFFFFFFFF is the end of its data
    float volume;    ///< dB; 0 leaves the samples as they are
    float pan;       ///< -1.0 (left) .. +1.0; what lies outside is the centre
    CWaveFile* file; ///< open; not owned. What is read is taken to be mono: see CWaveFile
};
static_assert(offsetof(tagMixDownTrack, volume) == 8 && offsetof(tagMixDownTrack, file) == 16);
static_assert(sizeof(void*) != 4 || sizeof(tagMixDownTrack) == 20);

namespace torv {

struct MixPass;

constexpr int kMixerTracks = 16; ///< slots that play: 0 to 15
/// For CWaveOut::SetRouting.
/// @{
constexpr int kDeviceRoute = 0;
constexpr int kReWireRoute = 1;
/// @}
constexpr int kSilentDevice = 1;         ///< for CWaveOut::SetOutputDeviseType
constexpr DWORD kWholeFile = 0xFFFFFFFF; ///< for tagMixDownTrack::end

} // namespace torv

/// The wave output: mixes up to 16 wave files, plays them on a device and tells the host's window how far it is, or
/// renders the mix into a file.
///
/// One thread calls everything here. Playing goes on a thread of its own, which reads the registered files from Play
/// until it has stopped: meanwhile they belong to it, but for their volume, pan and mute. Those, and the settings here,
/// take effect with the next block that is mixed (of 1024 frames at most). Windows and files are the host's; a window
/// that is gone is told nothing.
///
/// A copy has the same settings, tracks and meters, but plays nothing: a play belongs to the object that began it.
class TORV_API CWaveOut {
public:
    /// 16-bit stereo at 44100 Hz, no file, master volume 1.0 in the centre.
    CWaveOut();
    /// Settings, tracks and meters of the other; it plays nothing.
    /// @{
    CWaveOut(const CWaveOut& other);
    CWaveOut& operator=(const CWaveOut& other);
    /// @}
    /// Stops.
    virtual ~CWaveOut();

    /// Decibels to a linear gain and back; 0 has no decibels and gives minus infinity.
    static double Db2Amplitude(double decibels);
    /// See Db2Amplitude.
    static double Amplitude2Db(double amplitude);
    /// The product names of the output devices in their order, in place of what the list held; returns how many, and
    /// none without memory for all of them.
    static int EnumWaveOutDevices(CStringList& names);
    /// The same as a new list, which the caller deletes; null without memory.
    static CStringList* EnumWaveOutDevices();

    /// Puts a file into a slot, 0..16, or with a slot below 0 into the first free one of 0..15. A file stands in one
    /// slot only. Slot 16 keeps its file but is neither played nor counted. Returns the slot, or -1 without a file, for
    /// any other slot, and when none is free.
    int RegisterTrack(CWaveFile* file, int slot);
    /// Clears a slot; any other number does nothing. When this returns the play no longer reads the file. To be done
    /// before a file goes, which nothing here can know.
    void UnregisterTrack(int slot);
    /// Every slot, as UnregisterTrack.
    void UnregisterTrackAll();
    /// Null for an empty slot, and for none.
    CWaveFile* GetTrack(int slot) const;
    /// Files in the slots 0 to 15.
    int GetRegisteredTrackCount() const;
    /// Moves every file on its timeline, absolute (`whence` 0) or relative (1); while it plays, between two blocks.
    /// Returns the whence value and-ed with every file's result: so 0 whenever it is 0.
    int SeekPlayPointer(LONG position, int whence);

    /// Where and how to play: the device's product name, the window that gets notifications (may be null), the message
    /// posted to it and the wParam of positions, the rate in Hz, whether files are looped. Buffers hold 100 ms.
    void SetPlayParameters(const CString& device, CWnd* window, UINT message, WORD positionCode, DWORD rate, int loop);
    /// Begins to play where the files' pointers are, in 16 bits, with `bufferFrames` frames a tenth of a second: the
    /// rate is a multiple of 10, and 11025 plays as 11020. Positions are posted in milliseconds of the rate given to
    /// SetPlayParameters, 44100 at first. A play that is on is stopped before. Returns 1, or 0 without a word when
    /// there is no such device, no file in a slot, or no memory. A device that refuses is shown in a message box, from
    /// the play's own thread.
    int Play(const CString& device, CWnd* window, UINT message, WORD positionCode, DWORD bufferFrames, int loop);
    /// As SetPlayParameters has it.
    int Play();
    /// Ends the play and forgets the score window. No end is notified.
    void Stop();
    /// 1 when nothing plays, also after the play's own end.
    int IsWaveOutStopped() const;

    /// wParam of the end notification; 0, as at first, posts none.
    void SetPlayEndNortify(WORD code) { m_wEndCode = code; }
    /// No notification is posted any more.
    void ClearScoreWndPtr() { m_hScoreWnd = nullptr; }
    /// How many of the coming notifications are not posted; below 0, none is posted from now on.
    void SetMessageWait(int count) { m_nMessageWait = count; }
    /// 1: positions and the end come from the ReWire host through the two operations below, not from the play.
    void SetPlayRewireMode(int mode) { m_nRewireMode = mode; }
    /// Posts the position in milliseconds of the message rate under this message to the score window. Not in ReWire
    /// mode.
    void PostMessageToScoreWnd(UINT message, WPARAM code, LONG samplePosition);
    /// In ReWire mode: post the position as it is, or the end with -1 (unless the end code is 0).
    void REWIRE_WaveOut(LONG position);
    /// Posts the end; see REWIRE_WaveOut.
    void REWIRE_WaveOutEnd();
    /// Peaks of the mix, times the master gains but not the mute, go to two windows; a code or an interval (frames; 50
    /// ms at first) of 0 keeps the old one.
    void SetLevelNotify(CWnd* left, CWnd* right, UINT message, WORD code, DWORD interval);

    /// torv::kSilentDevice: the files pass unheard. Any other type plays.
    void SetOutputDeviseType(int type);
    /// Where a slot of 0..15 is heard: the device, or the ReWire link, which leaves it out here.
    void SetRouting(int slot, int route);
    /// Works out, and returns, whether anything is heard from the device: 1 or 0.
    int CheckRewireOut();

    /// Linear volume, 1.0 at first. A pan outside -1.0..+1.0 becomes the centre, and so does every pan while there is
    /// one output channel.
    void SetMasterVolume(double volume, double pan);
    /// One of the two alone.
    /// @{
    void SetMasterVolume(double volume);
    void SetMasterPanpot(double pan);
    /// @}
    /// 1 or 2; any other number is passed over. Always returns 1.
    int SetMasterOutputChannels(WORD channels);
    /// Non-zero silences what is heard; the play goes on.
    void SetMute(int mute) { m_nMasterMute = mute; }
    /// Non-zero starts the files again at their ends.
    void SetLoop(int loop) { m_nLoop = loop; }

    /// Renders the mix, with the master gains and without loop, into a new wave file: 16-bit stereo at 44100 Hz. A mix
    /// is as long as its longest track, rounded up to blocks of 1024 frames; what passes full scale wraps. Notifies
    /// positions and levels as playing does. A file of this name is replaced when the mix is whole, see
    /// torv::ReplacedFile; it may be one of the tracks where the system replaces files that are open.
    ///
    /// Sets the files' play part, gains and pointers. Returns 1; or 0 when something plays or is registered, for more
    /// than 16 tracks, one without a file, and when a file cannot be read or written, or memory had: then what was
    /// there is untouched.
    int AudioMixDown(const char* path, tagMixDownTrack* tracks, int count);
    /// The same in the output's own number of channels and bits, at `rate` Hz: 0 takes the first track's. Samples are
    /// not converted to that rate.
    int AudioMixDown(const char* path, tagMixDownTrack* tracks, int count, int rate);
    /// Of the last play or mix down: the largest magnitude (full scale 1.0), and how many frames passed what a sample
    /// can hold, and wrapped.
    double GetPeakLevel() const { return m_dPeakLevel; }
    /// See GetPeakLevel.
    DWORD GetWrappedFrames() const { return m_dwWrappedFrames; }

protected:
    double ValidOutputPan(double pan) const;
    void UpdateMasterGains();
    /// The rate of the output format and of the positions in messages.
    void SetOutputRate(DWORD rate);
    /// Brings the output format to the chosen number of channels; its bits stay.
    void ApplyOutputChannels();
    /// The next frames of all files, mixed into a buffer of the pass; then the position is posted. 0 when every file
    /// had ended, and the buffer is silent.
    int MixOut(BYTE* buffer, torv::MixPass& pass);
    void LevelNotify(const double* left, const double* right, DWORD frames, const torv::StereoGain& master);

    WAVEFORMATEX m_WaveFormat;
    CString m_strDevice;
    torv::Shared<DWORD> m_dwSampleRate; ///< turns sample positions into milliseconds in messages
    DWORD m_dwBufferFrames = 4410;
    torv::Shared<int> m_nLoop = 0;
    torv::Shared<WORD> m_wOutputChannels = 2;

    torv::Shared<double> m_dMasterGainL = 1.0;
    torv::Shared<double> m_dMasterGainR = 1.0;
    torv::Shared<double> m_dMasterPan = 0.0;
    torv::Shared<double> m_dMasterVolumeL = 1.0;
    torv::Shared<double> m_dMasterVolumeR = 1.0;
    torv::Shared<int> m_nMasterMute = 0;

    /// A handle, not the window object: it can be asked about after the window has gone.
    torv::Shared<HWND> m_hScoreWnd = nullptr;
    torv::Shared<UINT> m_nMessage = 0;
    torv::Shared<WORD> m_wPositionCode = 0;
    torv::Shared<WORD> m_wEndCode = 0;
    torv::Shared<int> m_nMessageWait = 0;
    torv::Shared<int> m_nRewireMode = 0;

    std::array<torv::Shared<CWaveFile*>, torv::kMixerTracks + 1> m_tracks; ///< the last is never played
    std::array<torv::Shared<int>, torv::kMixerTracks> m_routing;
    torv::Shared<int> m_nDeviceType = 0;
    int m_nDeviceOutput = 1; ///< something is heard from the device

private:
    class Player;

    int FirstTrack() const;
    void SetTrack(int slot, CWaveFile* file);
    int SeekTracks(LONG position, int whence);
    int StartPlay(const CString& device, HWND window, UINT message, WORD positionCode, DWORD bufferFrames, int loop);
    void EndPlay();
    int MixFrames(BYTE* out, DWORD frames, torv::MixPass& pass);
    int MixIntoFile(const char* path, const WAVEFORMATEX* format, const tagMixDownTrack* tracks, int count);
    int RenderMix(const char* path, const WAVEFORMATEX* format);
    void PublishPeak(const torv::MixPass& pass);

    torv::LevelMeter m_level;
    torv::Shared<double> m_dPeakLevel = 0.0;
    torv::Shared<DWORD> m_dwWrappedFrames = 0;
    torv::PerObject<std::shared_ptr<Player>> m_player;
};
