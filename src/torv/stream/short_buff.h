#pragma once

#include "torv/stream/block_tree.h"

/// One block of a CExtendBuffer's chain: up to `capacity` bytes, the used ones packed at the start. Where
/// it stands in the whole is known to the buffer that chains it.
class TORV_API CxShortBuff {
public:
    CxShortBuff() = default;
    virtual ~CxShortBuff();
    CxShortBuff(const CxShortBuff&) = delete;
    CxShortBuff& operator=(const CxShortBuff&) = delete;

    /// Gets `capacity` bytes: from the heap for flags -1, else by GlobalAlloc with these flags. False when there is no
    /// memory, or when the block already has some.
    bool Allocate(DWORD capacity, LONG flags);

    /// The primitives take an offset of at most `m_dwUsed` and answer how many bytes they moved.
    DWORD Read(DWORD offset, char* destination, DWORD count) const;
    /// Overwrites, and grows the used bytes up to the capacity.
    DWORD Write(DWORD offset, const char* source, DWORD count);
    /// Writes behind the used bytes, as many as have room.
    DWORD Append(const char* source, DWORD count);
    /// All or nothing: 0 when the free room is too small.
    DWORD Insert(DWORD offset, const char* source, DWORD count);
    /// Room for so many bytes, which must be free; they are the caller's to write.
    BYTE* InsertRoom(DWORD offset, DWORD count);
    /// The same where what is remembered about the bytes still holds when the room is filled.
    BYTE* InsertRoomWithin(DWORD offset, DWORD count);
    /// Takes bytes out; those behind them move up. Fewer where the used ones end.
    DWORD Delete(DWORD offset, DWORD count);

    /// The bytes or their number have changed by another way than these.
    void Touch() {
        m_dwDigest = kNoDigest;
        if (m_pLeaf && !m_isOldInTree)
            torv::BlockTree::Touch(*this);
    }

    HGLOBAL m_hMemory = nullptr;    ///< null when the bytes come from the heap
    BYTE* m_pData = nullptr;        ///< null before Allocate
    CxShortBuff* m_pPrev = nullptr; ///< the chain's; null for the first
    CxShortBuff* m_pNext = nullptr; ///< null for the last
    DWORD m_dwCapacity = 0;         ///< bytes
    DWORD m_dwUsed = 0;             ///< bytes, at most the capacity

    /// What a derived buffer remembers about the block's bytes (a stream: the ticks that its entries span). Every
    /// change of the bytes forgets it.
    static constexpr DWORD kNoDigest = 0xFFFFFFFF;
    DWORD m_dwDigest = kNoDigest; ///< kNoDigest: nothing is remembered

    /// Of the tree over the chain, where there is one.
    /// @{
    torv::BlockTree::Node* m_pLeaf = nullptr;
    bool m_isOldInTree = false;
    /// @}
};
