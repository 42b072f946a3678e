#include "torv/synthesis/ring_writer.h"

namespace torv {
namespace {

constexpr DWORD kFullRingWait = 50; // milliseconds

template <class Try>
bool Await(const PlayState& state, DWORD interval, Try isDone) {
    while (!isDone()) {
        if (state.IsInterrupted())
            return false;
        Sleep(interval);
    }
    return true;
}

} // namespace

bool RingWriter::Append(size_t track, const short* samples, DWORD count) {
    DWORD written = 0;
    return Await(m_state, kFullRingWait, [&] {
        written += m_ring.Append(track, samples + written, count - written);
        return written == count;
    });
}

bool RingWriter::Close(size_t track) {
    return Await(m_state, kFullRingWait, [&] { return m_ring.Close(track); });
}

bool RingWriter::Mark(size_t track) {
    return Await(m_state, kLookInterval, [&] { return m_ring.Mark(track); });
}

} // namespace torv
