#pragma once

#include "torv/synthesis/rt_synthesis.h"

#include <array>
#include <memory>

namespace torv {

/// What the wave-output thread does: opens the device, waits until enough is buffered, keeps two buffers of 100 ms at
/// the device and tells the host's window how far they have been heard. Sent elsewhere it gives the device up, lets the
/// synthesis begin anew and opens it again. At its end it ends the play.
class WaveOutThread {
public:
    explicit WaveOutThread(CRtSynthesis& driver);

    void Run();

private:
    enum class Outcome { Restart, Ended };
    enum class Content { None, Data, NotYet }; // as RTS_GetWaveOutData_2 answers
    enum class Place { Here, Filled, Queued }; // of a buffer: free, waiting to be taken by the device, there

    struct Buffer {
        WAVEHDR header{};
        Place place = Place::Here;
        DWORD blocks = 0;
        int endFlag = 0; ///< a pass of the loop ends with it
    };
    using Buffers = std::array<Buffer, 2>;

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
    Content Fill(Buffer& buffer);
    void FillWithSilence(Buffer& buffer);
    void SetContent(Buffer& buffer, BYTE* bytes) const;
    void Queue(Buffer& buffer);
    void End();

    int Number(const Buffer& buffer) const;
    bool AreBothBack() const;
    bool EndsWithSong() const;
    LONGLONG SampleAt(DWORD position) const;
    void PostPosition(LONGLONG sample) const;

    CRtSynthesis& m_driver;
    std::shared_ptr<TrackSet> m_set;
    DWORD m_bufferBlocks = 0;
    HWAVEOUT m_device = nullptr;
    std::unique_ptr<Buffers> m_buffers = std::make_unique<Buffers>();
    LONGLONG m_position = 0; ///< heard so far, in samples at the output rate
    bool m_isReseeking = false;
    bool m_isFinished = false; ///< nothing more comes: over when both buffers are back
    bool m_hasDeviceFailed = false;
    MMRESULT m_deviceError = MMSYSERR_ERROR; ///< what it last answered
    int m_idleTurns = 0;                     ///< since it last took or gave back a buffer
};

} // namespace torv
