#include "torv/audio/wave_buffer.h"

#include "torv/platform/or_zero.h"

#include <algorithm>

namespace {

constexpr ULONGLONG kMostBlockBytes = 0x7FFFFFFF;

} // namespace

int CWaveBuffer::SetPlayParam(DWORD start, DWORD end, int loop, int source) {
    m_nLoop = loop;
    m_nPlaySource = source ? source : GetSize() ? torv::kPlayFromMemory : torv::kPlayFromFile;
    const ULONGLONG startByte = static_cast<ULONGLONG>(start) * m_dwUnitSize;
    const ULONGLONG endByte = static_cast<ULONGLONG>(std::min(end, m_dwSamples)) * m_dwUnitSize;
    const bool fits = std::max(startByte, endByte) <= 0xFFFFFFFF;
    m_dwPlayStart = m_dwPlayCursor = fits ? static_cast<DWORD>(startByte) : 0;
    m_dwPlayEnd = fits ? static_cast<DWORD>(endByte) : 0;
    return m_dwPlayStart < m_dwPlayEnd;
}

int CWaveBuffer::InitialLoadDataBlock(WAVEHDR* headers) {
    if (!headers)
        return 0;
    ReleaseDataCue();
    for (int i = 0; i < 2; ++i) {
        headers[i].lpData = nullptr;
        headers[i].dwBufferLength = 0;
    }
    const ULONGLONG bytes = static_cast<ULONGLONG>(m_dwRate) * m_dwUnitSize;
    if (bytes > kMostBlockBytes)
        return 0;
    m_dwBlockBytes = static_cast<DWORD>(bytes);
    for (auto& block : m_playBlocks)
        block.reset(static_cast<char*>(std::calloc(1, m_dwBlockBytes)));
    if (!m_playBlocks[0] || !m_playBlocks[1]) {
        ReleaseDataCue();
        return 0;
    }
    for (size_t i = 0; i < m_playBlocks.size(); ++i) {
        headers[i].lpData = m_playBlocks[i].get();
        headers[i].dwBufferLength = m_dwBlockBytes;
    }
    m_dwPlayCursor = m_dwPlayStart;
    if (m_nPlaySource == torv::kPlayFromFile && !OpenPlayFile())
        return 0;
    LoadDataBlock(&headers[0]);
    LoadDataBlock(&headers[1]);
    return 1;
}

bool CWaveBuffer::OpenPlayFile() {
    if (!torv::OrZero([&] { return m_file.Open(m_strPath, CFile::modeRead | CFile::shareDenyRead); }))
        return false;
    const ULONGLONG target = static_cast<ULONGLONG>(m_dwDataOffset) + m_dwPlayStart;
    try {
        if (m_file.Seek(static_cast<LONGLONG>(target), CFile::begin) == target)
            return true;
    } catch (const CFileException&) {
        // as good as a wrong place
    }
    m_file.Abort();
    return false;
}

bool CWaveBuffer::IsPlayBlock(const void* block) const {
    return block && (block == m_playBlocks[0].get() || block == m_playBlocks[1].get());
}

/// Reads at the play cursor. A source that is neither memory nor file gives nothing but counts as read.
DWORD CWaveBuffer::ReadPlayData(char* destination, DWORD count) {
    if (m_nPlaySource == torv::kPlayFromMemory)
        return SeekTo(m_dwPlayCursor) == m_dwPlayCursor ? Read(destination, count) : 0;
    if (m_nPlaySource != torv::kPlayFromFile)
        return count;
    try {
        m_file.Seek(static_cast<LONGLONG>(m_dwDataOffset) + m_dwPlayCursor, CFile::begin);
        return m_file.Read(destination, count);
    } catch (const CFileException&) {
        return 0;
    }
}

/// Returns the bytes that came; a loop fills the block or gives none.
DWORD CWaveBuffer::FillBlock(char* block) {
    DWORD done = 0;
    do {
        const DWORD count = std::min(PlayLeft(), m_dwBlockBytes - done);
        const DWORD moved = count ? ReadPlayData(block + done, count) : 0;
        if (!moved)
            return 0;
        done += moved;
        m_dwPlayCursor += moved;
        if (m_nLoop && !PlayLeft())
            m_dwPlayCursor = m_dwPlayStart;
    } while (m_nLoop && done < m_dwBlockBytes);
    return done;
}

int CWaveBuffer::LoadDataBlock(WAVEHDR* header) {
    if (!header)
        return 0;
    const DWORD position = m_dwPosition;
    header->dwBufferLength = IsPlayBlock(header->lpData) ? FillBlock(header->lpData) : 0;
    SeekTo(position); // what is edited meanwhile stays where the user left it
    return header->dwBufferLength > 0;
}

void CWaveBuffer::ReleaseDataCue() {
    for (auto& block : m_playBlocks)
        block.reset();
    m_file.Abort();
}
