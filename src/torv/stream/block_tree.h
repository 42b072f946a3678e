#pragma once

#include "torv/platform/platform.h"

class CxShortBuff;

namespace torv {

/// A search tree over the blocks of a chain, so that a far place is found without a walk along all blocks before it.
/// Its inner nodes hold sums: the bytes that lie under each child and a weight that the owner gives (a stream: the
/// ticks that the entries span). A change of a block only marks the way up to the root as old; sums are made anew when
/// a search comes by, so that filling a block costs nothing here.
///
/// It takes memory of its own and can be without any: then it is empty and the owner walks.
class TORV_API BlockTree {
public:
    /// What a block weighs, or kNoWeight when that cannot be told. `unit` is passed on from FindWeight.
    using Weigh = DWORD (*)(CxShortBuff& block, DWORD unit);
    static constexpr DWORD kNoWeight = 0xFFFFFFFF;
    static constexpr DWORD kMaxWeight = 0x7FFFFFFF;

    struct Place {
        CxShortBuff* block; ///< null: not in here
        DWORD start;        ///< bytes before it
        DWORD weight;       ///< of the blocks before it
    };

    BlockTree() = default;
    ~BlockTree() { Clear(); }
    BlockTree(const BlockTree&) = delete;
    BlockTree& operator=(const BlockTree&) = delete;

    bool IsEmpty() const { return !m_root; }
    /// An empty tree takes a whole chain in. False, and empty, without memory.
    bool Build(CxShortBuff* first);
    /// Takes in a block that is chained after one of its own; does nothing when it is empty.
    void InsertAfter(CxShortBuff* at, CxShortBuff* block);
    void Remove(CxShortBuff* block);
    void Clear();
    /// A block's bytes or their number have changed.
    static void Touch(CxShortBuff& block);

    /// So many bytes more, and the weight has not changed.
    static void Grow(CxShortBuff& block, DWORD bytes);

    /// The block that holds the byte at a position.
    Place FindByte(DWORD position);
    /// The first block that cannot be passed over on the way to a place before which everything weighs less than
    /// `weight`: the blocks before it weigh less together, and it would reach `weight` or has none.
    Place FindWeight(DWORD weight, Weigh weigh, DWORD unit);

private:
    struct Node;
    friend class ::CxShortBuff;

    static int SlotOf(const Node& node, const void* child);
    static DWORD Bytes(Node& node, int slot);
    static DWORD CountBytes(Node& node, int slot);
    static DWORD Weight(Node& node, int slot, Weigh weigh, DWORD unit);
    static DWORD SumWeight(Node& node, int slot, Weigh weigh, DWORD unit);
    static void Adopt(Node& node, int slot);
    static void MarkOld(Node* node, const void* child);
    bool Insert(Node* node, int slot, void* child);
    void Erase(Node* node, int slot);
    static void Free(Node* node);

    Node* m_root = nullptr;
};

} // namespace torv
