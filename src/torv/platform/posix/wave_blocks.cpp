#include "torv/platform/posix/wave_blocks.h"

#include <algorithm>

namespace torv {

void WaveBlocks::Push(const WaveBlock& block) {
    if (m_count == m_ring.size()) {
        std::rotate(m_ring.begin(), m_ring.begin() + static_cast<std::ptrdiff_t>(m_front), m_ring.end());
        m_front = 0;
        m_ring.resize(2 * m_ring.size());
    }
    m_ring[(m_front + m_count) % m_ring.size()] = block;
    ++m_count;
}

void WaveBlocks::Pop() {
    m_front = (m_front + 1) % m_ring.size();
    --m_count;
}

} // namespace torv
