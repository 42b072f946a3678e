#pragma once

#include "torv/encoding/quill_midi_buffer.h"
#include "torv/synthesis/engine_library.h"

#include <memory>

namespace torv {

class StepFeeder;

/// One stream as an engine sings it offline, a step at a time: the same samples that a real-time pass from the
/// beginning makes. It reads the stream, which is the caller's and must outlive it; one thread at a time.
class TORV_API StreamSinger {
public:
    /// `rate` is the engine's, `capacity` a frame at that rate. Throws std::bad_alloc.
    StreamSinger(EngineInstance engine, CQuillMidiBuffer& stream, DWORD rate, DWORD capacity);
    ~StreamSinger();
    StreamSinger(const StreamSinger&) = delete;
    StreamSinger& operator=(const StreamSinger&) = delete;

    /// Sings the coming step, 256 samples at 44100 Hz. False when the engine fails: it is of no use then.
    bool Sing();
    /// What the last step made, 16 bits mono.
    const short* Samples() const { return m_samples.get(); }
    /// How many samples that are: a step has more of them at higher rates.
    DWORD Count() const { return m_count; }
    /// Nothing more comes.
    bool Finished() const;
    /// How far it is.
    DWORD SungMilliseconds() const;
    /// Where the stream ends.
    DWORD TotalMilliseconds() const { return m_stream.GetLastTime(); }
    /// How many steps have been sung.
    LONGLONG Steps() const;

private:
    EngineInstance m_engine;
    CQuillMidiBuffer& m_stream;
    const DWORD m_rate;
    const DWORD m_capacity;
    std::unique_ptr<StepFeeder> m_feeder;
    std::unique_ptr<short[]> m_samples;
    DWORD m_count = 0;
};

} // namespace torv
