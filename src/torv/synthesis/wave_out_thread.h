#pragma once

#include "torv/audio/double_buffered_output.h"
#include "torv/synthesis/play_state.h"
#include "torv/synthesis/synth_ring.h"

#include <array>
#include <memory>

namespace torv {

/// Who plays, as far as the output must know.
class PlayHost {
public:
    /// Tells the window a code, with the milliseconds of a sample.
    virtual void Notify(WORD code, LONGLONG sample) = 0;
    /// Asked before every mix.
    virtual MixGains MasterGains() = 0;
    /// Has the synthesis begin anew.
    virtual void RestartSynthesis() = 0;

protected:
    ~PlayHost() = default;
};

struct OutputSettings {
    CString device;        ///< product name
    WORD positionCode = 0; ///< the host's notification of positions
    DWORD delay = 0;       ///< milliseconds before the device is opened
    int patience = 0;      ///< turns, of a millisecond at least, that the device may give nothing back
};

/// What the wave-output thread does: opens the device, waits until enough is buffered, keeps two buffers of 100 ms at
/// the device and tells the host how far they have been heard. Sent elsewhere it gives the device up, lets the
/// synthesis begin anew and opens it again.
class WaveOutThread {
public:
    /// Throws std::bad_alloc.
    WaveOutThread(std::shared_ptr<SynthRing> ring, PlayState& state, PlayHost& host, OutputSettings settings);

    /// Returns when all was heard, a stop is asked for, or the device fails.
    void Run();

private:
    enum class Outcome { Restart, Ended };
    enum class Place { Here, Filled, Queued }; // of a buffer: free, waiting to be taken by the device, there

    struct Buffer {
        Place place = Place::Here;
        DWORD blocks = 0;
        bool endsPass = false; ///< of the loop
    };
    /// What the device reads.
    struct Output : DoubleBufferedOutput {
        explicit Output(DWORD size) : bytes(std::make_unique<BYTE[]>(size_t{size} * kHeaders)), bufferBytes(size) {}

        BYTE* Bytes(int index) const { return bytes.get() + static_cast<size_t>(index) * bufferBytes; }

        const std::unique_ptr<BYTE[]> bytes;
        const DWORD bufferBytes;
    };

    void AwaitStart() const;
    Outcome PlayFromHere();
    bool OpenDevice();
    void CloseDevice();
    bool AwaitData();
    void Prime();
    Outcome Feed();
    bool TakeMessages();
    bool TakeBack(const WAVEHDR* header);
    bool Refill();
    SynthRing::Content Fill(int index);
    void FillWithSilence(int index);
    void EndPass();
    void SetContent(int index, DWORD blocks, bool endsPass);
    void Queue(int index);

    bool AreBothBack() const;
    LONGLONG SampleAt(DWORD position) const;
    void PostPosition(LONGLONG sample) const { m_host.Notify(m_settings.positionCode, sample); }

    const std::shared_ptr<SynthRing> m_ring;
    PlayState& m_state;
    PlayHost& m_host;
    const OutputSettings m_settings;
    const DWORD m_bufferBlocks;
    std::unique_ptr<Output> m_output;
    std::array<Buffer, DoubleBufferedOutput::kHeaders> m_buffers;
    size_t m_lastFilled = 0;
    LONGLONG m_position = 0; ///< heard so far, in samples at the output rate
    bool m_isReseeking = false;
    bool m_isFinished = false; ///< nothing more comes: over when both buffers are back
    bool m_hasDeviceFailed = false;
    MMRESULT m_deviceError = MMSYSERR_ERROR; ///< what it last answered
    int m_idleTurns = 0;                     ///< since it last took or gave back a buffer
};

} // namespace torv
