#pragma once

#include "torv/audio/double_buffered_output.h"
#include "torv/audio/mix_pass.h"
#include "torv/audio/seek_gate.h"
#include "torv/audio/wave_out.h"
#include "torv/platform/worker_thread.h"

#include <atomic>

/// One play: a thread that is driven by its messages, and a device whose two headers have one half of the mix block
/// each. Mixes until every file has ended, then lets the device play out what it has. Uses the output until it is over.
class CWaveOut::Player : public std::enable_shared_from_this<Player> {
public:
    /// A play that waits for OpenDevice. Null when no thread can be had; throws std::bad_alloc.
    static std::shared_ptr<Player> Begin(CWaveOut& output, UINT device, const torv::MixPass& pass);

    Player(CWaveOut& output, UINT device, const torv::MixPass& pass);
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;
    ~Player() = default;

    void OpenDevice() const { m_thread->Post(kOpenMessage); }
    bool IsOver() const { return m_isOver; }
    /// Until the output is used no more. Not until a message box about the device has been answered.
    void End();
    /// Between two blocks. False when the play is through with the files, which are the caller's then; `isPosted` tells
    /// whether it will be done otherwise.
    bool Seek(LONG position, int whence, bool& isPosted);
    /// Until the block that is being mixed, if any, is done: it may be reading a file that is no longer registered.
    void AwaitBlock() const;

private:
    static constexpr UINT kOpenMessage = 1034;

    enum class Phase { Mixing, Draining, Drained };

    /// What the device reads.
    struct Buffers {
        torv::DoubleBufferedOutput device;
        std::unique_ptr<BYTE[]> bytes;
    };

    void waveOutThread();
    bool Handle(const MSG& message);
    bool Open();
    bool TakeBack(int index);
    void Queue(int index);
    void PostStart();
    void Finish();
    void SeekFiles(const MSG& message);
    void SeekAsPosted();
    DWORD Position();
    void CloseDevice();

    CWaveOut& m_output;
    const UINT m_number;
    torv::MixPass m_pass;
    const DWORD m_bufferBytes;
    std::unique_ptr<Buffers> m_buffers;
    std::shared_ptr<torv::WorkerThread> m_thread;

    MMRESULT m_error = MMSYSERR_NOERROR;
    Phase m_phase = Phase::Mixing;
    torv::SeekGate m_seeks;
    mutable std::atomic<DWORD> m_turns = 0; ///< odd while it uses files
    std::atomic<bool> m_isShowingError = false;
    std::atomic<bool> m_isOver = false;
};
