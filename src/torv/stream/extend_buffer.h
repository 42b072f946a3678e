#pragma once

#include "torv/stream/short_buff.h"

/// A growable byte sequence with one read/write position, kept as a chain of blocks of one capacity, so that an insert
/// or remove moves at most one block's bytes. Sizes and positions are bytes from the start; counts returned are what
/// was done, which is less than asked when memory, the data, or 32 bits of size run out. Nothing is thrown. A buffer
/// that was never created has no block: every operation on it gives 0. One thread at a time.
class TORV_API CExtendBuffer : public CObject {
public:
    CExtendBuffer() = default;
    /// As Create; a block size of 0 only stores the flags.
    CExtendBuffer(DWORD blockSize, int flags);
    ~CExtendBuffer() override;
    CExtendBuffer(const CExtendBuffer&) = delete;
    CExtendBuffer& operator=(const CExtendBuffer&) = delete;

    /// Flags -1 take blocks from the heap, any others are GlobalAlloc's. Non-zero when a first block now exists; 0,
    /// and nothing has changed, when there was one already.
    virtual int Create(DWORD blockSize, int flags);

    /// The data's size and the position, in bytes.
    /// @{
    DWORD GetSize() const { return m_dwSize; }
    DWORD GetIndex() const { return m_dwPosition; }
    /// @}
    /// Non-zero when the position is at the start, at the end.
    /// @{
    int IsTop() const { return m_dwPosition == 0; }
    int IsBottom() const { return m_dwPosition == m_dwSize; }
    /// @}

    /// From 0 the start, 1 the position, 2 the end; any other origin moves nothing. The target is clamped to the data.
    /// Returns the position.
    DWORD Seek(LONG offset, int from);
    /// Clamped to the data; returns the position. A block's free room stays behind it: see Write.
    DWORD SeekTo(DWORD position);

    /// Copies out from the position on and moves it; the count that was read.
    DWORD Read(char* destination, DWORD count);
    /// Overwrites from the position on, adding blocks at the end. At the end of a block that has free room (where a
    /// Read stops) it grows that block, so it inserts there; after SeekTo of the same position it overwrites.
    DWORD Write(const char* source, DWORD count);
    /// Writes at the end, wherever the position was; it is at the new end then.
    DWORD Append(const char* source, DWORD count);
    /// Moves what follows the position back and puts the bytes there; the position is behind them. Give it no more at
    /// once than a block holds: a longer piece repeats its first bytes where it goes on in a further block.
    DWORD Insert(const char* source, DWORD count);
    /// The position stays. The count is clamped to the size, and what lies after the position ends it.
    DWORD Remove(DWORD count);

    /// Reads `count` bytes of the file into the buffer at the position, above 0x7FFFFFFF the rest of the file; meant to
    /// fill an empty buffer or extend it. `error` (may be null) receives 0, or the cause of a file exception.
    DWORD Load(CFile* file, DWORD count, int* error);
    /// Writes the whole content.
    DWORD Save(CFile* file, int* error);

protected:
    CxShortBuff* CreateBlock();
    CxShortBuff* AddBlock(CxShortBuff* block);
    CxShortBuff* InsertBlock(CxShortBuff* at, CxShortBuff* block, int after);
    /// Frees the block and returns the following one, or null; the only block of a chain stays.
    CxShortBuff* RemoveBlock(CxShortBuff* block);
    void ChainBlock(CxShortBuff* a, CxShortBuff* b);
    /// Frees every block; the buffer is uncreated again and keeps its flags.
    void RemoveAll();
    void TraceBuffChain(CString& text);

    /// Beside the public operations, for derived buffers that rely on where their bytes stand. Both answer what was
    /// done. Overwrites from the position on and only adds behind the end: no block before it grows.
    DWORD Overwrite(const void* source, DWORD count);
    /// Inserts at the position, every byte once and in order, in pieces of `unit` bytes that are never cut: where all
    /// blocks were whole units they still are. A full block gives its later half away, so that ascending insertions
    /// leave no trail of almost empty blocks.
    DWORD InsertInOrder(const void* source, DWORD count, DWORD unit);

    /// Inserts so many bytes, all in one block and yet to be written, with the position behind them. Null, and nothing
    /// has changed, when 32 bits of size, a block's size or the memory run out.
    BYTE* InsertRoom(DWORD count);

    /// The same in the current block alone, where what is remembered about its bytes still holds when the room is
    /// filled.
    BYTE* InsertRoomWithin(DWORD count);

    /// Makes room at the end of the last block, which becomes the current one, with the position at the new end. Null,
    /// and nothing has changed, where that block has none left.
    BYTE* GrowLastBlock(DWORD count);

    /// The tree over the blocks, for a way of more than kNearBlocks; it is empty without memory.
    torv::BlockTree& Tree();
    static constexpr DWORD kNearBlocks = 4; ///< so far a walk costs less than a search
    /// Makes another block the current one; the position does not move.
    void EnterBlock(CxShortBuff* block, DWORD start);

    /// The offset of the position in the current block.
    DWORD OffsetInBlock() const { return m_dwPosition - m_dwCurrentStart; }
    /// Moves the current block, not the position, to the next or previous one, which must exist.
    void EnterNextBlock();
    void EnterPrevBlock();
    /// From a block's end onto the block that holds the byte at the position, if there is one.
    void LeaveBlockEnd();

    LONG m_nAllocFlags = 0;
    DWORD m_dwBlockSize = 0;
    DWORD m_dwPosition = 0;
    CxShortBuff* m_pFirst = nullptr;
    CxShortBuff* m_pCurrent = nullptr;
    CxShortBuff* m_pLast = nullptr;
    DWORD m_dwCurrentStart = 0; ///< bytes before the current block
    DWORD m_dwSize = 0;         ///< used bytes of all blocks

private:
    bool EnterNextOrNewBlock();
    DWORD RoomForGrowth() const { return 0xFFFFFFFF - m_dwSize; }
    bool SplitCurrentBlock(DWORD keep);
    bool MakeRoom(DWORD unit);

    torv::BlockTree m_tree; ///< made when it is first asked for
};
