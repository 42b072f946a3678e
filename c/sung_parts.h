#pragma once

#include "score_object.h"

#include <torv/synthesis/stream_singer.h>

#include <atomic>
#include <mutex>
#include <thread>

namespace torv::c {

/// A score's parts as the engine sings them, each once and from the song's start, by threads of its own that run ahead
/// of who listens. Memory: 2 bytes a frame and part. What is sung stays, so that every place can be heard again at
/// once.
class SungParts {
public:
    /// Begins to sing. Throws Failure without the engine.
    SungParts(ScoreObject& score, uint32_t rate);
    ~SungParts();
    SungParts(const SungParts&) = delete;
    SungParts& operator=(const SungParts&) = delete;

    size_t Count() const { return m_parts.size(); }
    uint32_t Rate() const { return m_rate; }
    /// Frames from the song's start that every part has sung; what it is when all is sung. These three neither wait nor
    /// allocate.
    uint64_t Sung() const;
    bool IsComplete() const;
    bool HasFailed() const { return m_hasFailed; }
    /// The run of a part's samples that begins at a frame: at most `most`, 0 behind its end. Frames from Sung() on are
    /// not to be asked for.
    size_t Run(size_t part, uint64_t frame, size_t most, const int16_t*& samples) const;

private:
    static constexpr uint64_t kChunk = 32768; ///< frames

    struct Part {
        std::unique_ptr<CQuillMidiBuffer> stream;
        std::unique_ptr<StreamSinger> singer;
        std::vector<std::unique_ptr<int16_t[]>> chunks; ///< room for all; made before their frames are told
        uint64_t skip = 0;                              ///< frames of the lead that are not kept
        bool isTaken = false;                           ///< by a thread
        std::atomic<uint64_t> frames{0};
        std::atomic<bool> isOver{false};
    };

    void Work();
    Part* TakeNext();
    void SingOn(Part& part);
    static void Keep(Part& part, const short* samples, size_t count);

    const uint32_t m_rate;
    CRtSynthesis m_engine;
    std::vector<std::unique_ptr<Part>> m_parts;
    std::mutex m_mutex; ///< of isTaken
    std::atomic<bool> m_isStopped = false;
    std::atomic<bool> m_hasFailed = false;
    std::vector<std::jthread> m_threads; ///< the last: they end before what they work on goes
};

} // namespace torv::c
