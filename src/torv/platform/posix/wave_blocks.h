#pragma once

#include "torv/platform/wave_device.h"

#include <cstddef>
#include <vector>

namespace torv {

/// Blocks waiting at a device, oldest first. It allocates only when there are more of them than ever before. Not
/// guarded.
class WaveBlocks {
public:
    bool IsEmpty() const { return m_count == 0; }
    const WaveBlock& Front() const { return m_ring[m_front]; }
    void Push(const WaveBlock& block);
    void Pop();
    void Clear() { m_count = 0; }

private:
    std::vector<WaveBlock> m_ring = std::vector<WaveBlock>(16);
    std::size_t m_front = 0;
    std::size_t m_count = 0;
};

} // namespace torv
