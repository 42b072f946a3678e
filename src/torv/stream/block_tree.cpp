#include "torv/stream/block_tree.h"

#include "torv/stream/short_buff.h"

#include <algorithm>
#include <new>

namespace torv {

namespace {

constexpr int kChildren = 32;
constexpr DWORD kOld = 0xFFFFFFFF;        // bytes to be counted anew
constexpr DWORD kNotWeighed = 0xFFFFFFFE; // no weight reaches this either

} // namespace

/// What is old in a node is old in all above it.
struct BlockTree::Node {
    Node* parent = nullptr;
    bool isLeaf = true;
    int count = 0;
    void* child[kChildren] = {}; ///< nodes, or a leaf's blocks
    DWORD bytes[kChildren] = {};
    DWORD weight[kChildren] = {};

    Node* NodeAt(int slot) const { return static_cast<Node*>(child[slot]); }
    CxShortBuff* BlockAt(int slot) const { return static_cast<CxShortBuff*>(child[slot]); }
};

bool BlockTree::Build(CxShortBuff* first) {
    m_root = new (std::nothrow) Node;
    if (!m_root || !Insert(m_root, 0, first))
        return false;
    for (CxShortBuff* block = first; m_root && block->m_pNext; block = block->m_pNext)
        InsertAfter(block, block->m_pNext);
    return m_root != nullptr;
}

void BlockTree::InsertAfter(CxShortBuff* at, CxShortBuff* block) {
    if (m_root && !Insert(at->m_pLeaf, SlotOf(*at->m_pLeaf, at) + 1, block))
        Clear();
}

void BlockTree::Remove(CxShortBuff* block) {
    if (!m_root)
        return;
    Node* const leaf = block->m_pLeaf;
    block->m_pLeaf = nullptr;
    Erase(leaf, SlotOf(*leaf, block));
}

void BlockTree::Clear() {
    if (m_root)
        Free(m_root);
    m_root = nullptr;
}

void BlockTree::Free(Node* node) {
    for (int slot = 0; slot < node->count; ++slot) {
        if (node->isLeaf)
            node->BlockAt(slot)->m_pLeaf = nullptr;
        else
            Free(node->NodeAt(slot));
    }
    delete node;
}

void BlockTree::Touch(CxShortBuff& block) {
    block.m_isOldInTree = true;
    MarkOld(block.m_pLeaf, &block);
}

void BlockTree::Grow(CxShortBuff& block, DWORD bytes) {
    const void* child = &block;
    for (Node* node = block.m_pLeaf; node; child = node, node = node->parent) {
        const int slot = SlotOf(*node, child);
        if (node->bytes[slot] == kOld)
            return;
        node->bytes[slot] += bytes;
    }
}

int BlockTree::SlotOf(const Node& node, const void* child) {
    int slot = 0;
    while (node.child[slot] != child)
        ++slot;
    return slot;
}

void BlockTree::MarkOld(Node* node, const void* child) {
    for (; node; child = node, node = node->parent) {
        const int slot = SlotOf(*node, child);
        if (node->bytes[slot] == kOld)
            return;
        node->bytes[slot] = kOld;
        node->weight[slot] = kNotWeighed;
    }
}

/// A child that has come into this slot.
void BlockTree::Adopt(Node& node, int slot) {
    if (node.isLeaf) {
        node.BlockAt(slot)->m_pLeaf = &node;
        node.BlockAt(slot)->m_isOldInTree = node.bytes[slot] == kOld;
    } else {
        node.NodeAt(slot)->parent = &node;
    }
}

/// False without memory, when nothing but sums has changed.
bool BlockTree::Insert(Node* node, int slot, void* child) {
    if (node->count == kChildren) {
        Node* const later = new (std::nothrow) Node;
        if (!later)
            return false;
        // What is added at the end leaves full nodes behind it.
        const int keep = slot == kChildren ? kChildren : kChildren / 2;
        later->isLeaf = node->isLeaf;
        if (!node->parent) {
            Node* const root = new (std::nothrow) Node;
            if (!root) {
                delete later;
                return false;
            }
            root->isLeaf = false;
            m_root = root;
            Insert(root, 0, node);
        }
        if (!Insert(node->parent, SlotOf(*node->parent, node) + 1, later)) {
            delete later;
            return false;
        }
        later->count = node->count - keep;
        node->count = keep;
        for (int moved = 0; moved < later->count; ++moved) {
            later->child[moved] = node->child[keep + moved];
            later->bytes[moved] = node->bytes[keep + moved];
            later->weight[moved] = node->weight[keep + moved];
            Adopt(*later, moved);
        }
        if (node->parent)
            MarkOld(node->parent, node);
        if (slot >= keep) {
            slot -= keep;
            node = later;
        }
    }
    for (int moved = node->count++; moved > slot; --moved) {
        node->child[moved] = node->child[moved - 1];
        node->bytes[moved] = node->bytes[moved - 1];
        node->weight[moved] = node->weight[moved - 1];
    }
    node->child[slot] = child;
    node->bytes[slot] = kOld;
    node->weight[slot] = kNotWeighed;
    Adopt(*node, slot);
    if (node->parent)
        MarkOld(node->parent, node);
    return true;
}

void BlockTree::Erase(Node* node, int slot) {
    --node->count;
    for (int moved = slot; moved < node->count; ++moved) {
        node->child[moved] = node->child[moved + 1];
        node->bytes[moved] = node->bytes[moved + 1];
        node->weight[moved] = node->weight[moved + 1];
    }
    Node* const parent = node->parent;
    if (node->count || !parent) {
        if (parent)
            MarkOld(parent, node);
        return;
    }
    Erase(parent, SlotOf(*parent, node));
    delete node;
}

DWORD BlockTree::Bytes(Node& node, int slot) {
    return node.bytes[slot] != kOld ? node.bytes[slot] : CountBytes(node, slot);
}

DWORD BlockTree::CountBytes(Node& node, int slot) {
    DWORD sum = 0;
    if (node.isLeaf) {
        sum = node.BlockAt(slot)->m_dwUsed;
        node.BlockAt(slot)->m_isOldInTree = false;
    } else {
        Node& below = *node.NodeAt(slot);
        for (int each = 0; each < below.count; ++each)
            sum += Bytes(below, each);
    }
    return node.bytes[slot] = sum;
}

DWORD BlockTree::Weight(Node& node, int slot, Weigh weigh, DWORD unit) {
    return node.weight[slot] != kNotWeighed ? node.weight[slot] : SumWeight(node, slot, weigh, unit);
}

DWORD BlockTree::SumWeight(Node& node, int slot, Weigh weigh, DWORD unit) {
    Bytes(node, slot); // so that the next change of the block is marked here
    DWORD sum = 0;
    if (node.isLeaf) {
        sum = weigh(*node.BlockAt(slot), unit);
    } else {
        Node& below = *node.NodeAt(slot);
        for (int each = 0; each < below.count && sum != kNoWeight; ++each) {
            const DWORD weight = Weight(below, each, weigh, unit);
            sum = weight <= kMaxWeight - sum ? sum + weight : kNoWeight;
        }
    }
    return node.weight[slot] = sum;
}

BlockTree::Place BlockTree::FindByte(DWORD position) {
    Node* node = m_root;
    DWORD start = 0;
    int slot = 0;
    while (node && slot < node->count) {
        const DWORD bytes = Bytes(*node, slot);
        if (position - start >= bytes) {
            start += bytes;
            ++slot;
        } else if (node->isLeaf) {
            return {node->BlockAt(slot), start, 0};
        } else {
            node = node->NodeAt(slot);
            slot = 0;
        }
    }
    return {nullptr, start, 0};
}

BlockTree::Place BlockTree::FindWeight(DWORD weight, Weigh weigh, DWORD unit) {
    Node* node = m_root;
    Place place{nullptr, 0, 0};
    int slot = 0;
    while (node && slot < node->count) {
        const DWORD passed = Weight(*node, slot, weigh, unit);
        if (passed < weight - place.weight) {
            place.weight += passed;
            place.start += node->bytes[slot];
            ++slot;
        } else if (node->isLeaf) {
            place.block = node->BlockAt(slot);
            return place;
        } else {
            node = node->NodeAt(slot);
            slot = 0;
        }
    }
    return place;
}

} // namespace torv
