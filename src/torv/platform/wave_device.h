#pragma once

#include "torv/platform/export.h"
#include "torv/platform/system.h"

#if !defined(_WIN32)
#include <memory>

/// Where sound goes on a system without wave output calls of its own. waveOutOpen and the rest address the devices of
/// one list: those that the host added, what the system's sound library offers, and last the "Null Output", which is
/// always there, keeps time and swallows everything.
namespace torv {

/// Whole frames to be played; the bytes stay the caller's, and valid, until the block is done or dropped.
struct WaveBlock {
    const BYTE* bytes = nullptr; ///< in the stream's format
    DWORD count = 0;             ///< bytes
    ULONGLONG number = 0;        ///< one more than that of the block before; the first has 1
};

/// Hears of a stream's blocks. The call may come on any thread, also within a call of the stream. It neither allocates
/// nor waits, and calls nothing of the stream.
class TORV_API WaveOutListener {
public:
    virtual ~WaveOutListener() = default;
    /// This block and all before it are through. Numbers that were told already, or that were dropped, are passed over.
    virtual void BlockDone(ULONGLONG number) = 0;
};

/// A device while it is open; destroying it closes it, after which the listener hears no more. Its calls never overlap
/// each other, and return in finite time.
class TORV_API WaveOutStream {
public:
    virtual ~WaveOutStream() = default;
    /// Queues a block, or throws std::bad_alloc and has not heard of it. Playing begins with the first one.
    virtual void Write(const WaveBlock& block) = 0;
    /// Stops where it is; blocks are still queued.
    virtual void Pause() = 0;
    /// Goes on after a pause.
    virtual void Restart() = 0;
    /// Drops all blocks: none of their bytes is touched any more. Ends a pause.
    virtual void Reset() = 0;
};

/// A device of the list. It may be asked to open several times at once; a device that can do so once only refuses.
class TORV_API WaveOutDevice {
public:
    virtual ~WaveOutDevice() = default;
    /// At most 31 bytes of it are shown.
    virtual const char* Name() const = 0;
    /// Asked only of PCM and float formats of 8, 16, 24 or 32 bits, whole bytes and 1 to 8 channels.
    virtual bool Plays(const WAVEFORMATEX& format) const = 0;
    /// Null when it refuses; may throw std::bad_alloc and std::system_error. The listener outlives the stream.
    virtual std::unique_ptr<WaveOutStream> Open(const WAVEFORMATEX& format, WaveOutListener& listener) = 0;
};

/// Puts a device behind those added before, ahead of all others, so that the first one added is the system's choice
/// too. The numbers of the devices behind it move up.
TORV_API void AddWaveOutDevice(std::shared_ptr<WaveOutDevice> device);
/// Takes a device from the list; one that is open stays so until it is closed.
TORV_API void RemoveWaveOutDevice(const WaveOutDevice* device);

} // namespace torv
#endif
