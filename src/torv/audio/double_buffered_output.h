#pragma once

#include "torv/platform/platform.h"

namespace torv {

/// A wave device that plays from two headers in turns: each is filled, queued, taken back when the device is through
/// with it, and filled anew. Who fills them chooses where they point: that memory, and this object, stay where they are
/// until both headers are back or the device is closed. One thread at a time, but for what the device itself does.
///
/// Not closed by its destruction: when Close fails, whoever holds it leaves it, and what its headers point to, to the
/// device, which may still read them.
class DoubleBufferedOutput {
public:
    static constexpr int kHeaders = 2;

    constexpr DoubleBufferedOutput() = default;
    DoubleBufferedOutput(const DoubleBufferedOutput&) = delete;
    DoubleBufferedOutput& operator=(const DoubleBufferedOutput&) = delete;
    ~DoubleBufferedOutput() = default;

    /// For an output that is closed. `kind` (CALLBACK_THREAD, ...) tells who `target` is, who hears when a header is
    /// back.
    MMRESULT Open(UINT number, const WAVEFORMATEX& format, DWORD_PTR target, DWORD kind);
    bool IsOpen() const { return device != nullptr; }
    /// Which of the two, or -1: the header of a message may be anybody's.
    int IndexOf(const WAVEHDR* header) const;
    /// Hands a header over; one that the device does not take is still here.
    MMRESULT Queue(int index);
    /// The device is through with it, or never had it.
    bool IsBack(int index) const;
    bool AreBothBack() const { return IsBack(0) && IsBack(1); }
    /// False when the time (ms) is over first.
    bool AwaitBoth(DWORD milliseconds) const;
    /// Makes a header that is back free to be filled. False while the device has it.
    bool TakeBack(int index);
    /// What is queued comes back unplayed: before this returns, or soon after when a function hears of it.
    MMRESULT Reset() { return waveOutReset(device); }
    /// Resets, waits up to a second for the headers and closes; the headers are empty then. False when the device keeps
    /// one of them: it is still open, and may be closed later. True when nothing is open.
    bool Close();

    HWAVEOUT device = nullptr; ///< for waveOutPause and waveOutRestart; null: closed
    WAVEHDR headers[kHeaders] = {};

private:
    bool m_isQueued[kHeaders] = {};
};

} // namespace torv
