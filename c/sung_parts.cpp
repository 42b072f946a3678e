#include "sung_parts.h"

#include <algorithm>

namespace torv::c {

namespace {

constexpr uint64_t kTail = 1500; // milliseconds that an engine may sound behind its stream's end
constexpr int kStepsAtATime = 32;

} // namespace

SungParts::SungParts(ScoreObject& score, uint32_t rate) : m_rate(rate) {
    if (!CRtSynthesis::IsValidSampleRate(rate))
        throw Failure{TORV_OUT_OF_RANGE, "a rate is 44100, 48000 or 96000"};
    if (!m_engine.OpenSynthesizer())
        throw Failure{TORV_NO_COMPANION, "the voice engine RVE cannot be loaded or started: put it beside the library, "
                                         "or name its folder in TORV_LIBRARY_PATH"};
    for (const SungPart& sung : score.parts) {
        auto part = std::make_unique<Part>();
        part->stream = CopyStream(*sung.stream);
        part->singer = m_engine.BeginSynthesis(part->stream.get(), rate);
        if (!part->singer)
            throw std::bad_alloc();
        part->skip = uint64_t{score.score.leadMilliseconds} * rate / 1000;
        const uint64_t most = (part->stream->GetLastTime() + kTail) * rate / 1000;
        part->chunks.resize(static_cast<size_t>(most / kChunk + 1));
        m_parts.push_back(std::move(part));
    }
    const size_t threads = std::min<size_t>(m_parts.size(), std::max(1U, std::thread::hardware_concurrency()));
    while (m_threads.size() < threads)
        m_threads.emplace_back([this] { Work(); });
}

SungParts::~SungParts() { m_isStopped = true; }

uint64_t SungParts::Sung() const {
    uint64_t least = UINT64_MAX;
    uint64_t most = 0;
    for (const auto& part : m_parts) {
        const bool isOver = part->isOver.load(std::memory_order_acquire); // before its frames, which are all then
        const uint64_t frames = part->frames.load(std::memory_order_acquire);
        least = isOver ? least : std::min(least, frames);
        most = std::max(most, frames);
    }
    return least == UINT64_MAX ? most : least;
}

bool SungParts::IsComplete() const {
    return std::all_of(m_parts.begin(), m_parts.end(),
                       [](const auto& part) { return part->isOver.load(std::memory_order_acquire); });
}

size_t SungParts::Run(size_t part, uint64_t frame, size_t most, const int16_t*& samples) const {
    const Part& of = *m_parts[part];
    const uint64_t frames = of.frames.load(std::memory_order_acquire);
    if (frame >= frames)
        return 0;
    const uint64_t inChunk = frame % kChunk;
    samples = of.chunks[static_cast<size_t>(frame / kChunk)].get() + inChunk;
    return static_cast<size_t>(std::min({uint64_t{most}, kChunk - inChunk, frames - frame}));
}

void SungParts::Work() {
    while (Part* const part = TakeNext()) {
        try {
            SingOn(*part);
        } catch (...) { // without memory nothing more can be sung
            m_hasFailed = true;
        }
        const std::lock_guard lock(m_mutex);
        part->isTaken = false;
    }
}

/// The part that is behind the others; null when there is nothing more to do for this thread.
SungParts::Part* SungParts::TakeNext() {
    const std::lock_guard lock(m_mutex);
    Part* next = nullptr;
    for (const auto& part : m_parts)
        if (!part->isTaken && !part->isOver && (!next || part->frames < next->frames))
            next = part.get();
    if (m_isStopped || m_hasFailed || !next)
        return nullptr;
    next->isTaken = true;
    return next;
}

void SungParts::SingOn(Part& part) {
    for (int i = 0; i < kStepsAtATime && !part.singer->Finished() && !m_isStopped; ++i) {
        if (!part.singer->Sing()) {
            m_hasFailed = true;
            return;
        }
        const auto skipped = static_cast<size_t>(std::min<uint64_t>(part.skip, part.singer->Count()));
        part.skip -= skipped;
        Keep(part, part.singer->Samples() + skipped, part.singer->Count() - skipped);
    }
    if (part.singer->Finished())
        part.isOver.store(true, std::memory_order_release);
}

void SungParts::Keep(Part& part, const short* samples, size_t count) {
    uint64_t frame = part.frames.load(std::memory_order_relaxed);
    while (count > 0 && frame / kChunk < part.chunks.size()) {
        auto& chunk = part.chunks[static_cast<size_t>(frame / kChunk)];
        if (!chunk)
            chunk = std::make_unique<int16_t[]>(kChunk);
        const uint64_t inChunk = frame % kChunk;
        const auto run = static_cast<size_t>(std::min<uint64_t>(count, kChunk - inChunk));
        std::copy_n(samples, run, chunk.get() + inChunk);
        samples += run;
        count -= run;
        frame += run;
        part.frames.store(frame, std::memory_order_release);
    }
}

} // namespace torv::c
