#pragma once

#include "torv/platform/afx/object.h"
#include "torv/platform/afx/position.h"
#include "torv/platform/afx/string.h"

#include <utility>

/// A doubly linked list that is walked by POSITION. A null position is harmless: reading there gives an empty element,
/// removing or inserting nothing or at the end as said below. A position of another list, or of an element that is
/// gone, cannot be told and must not be passed. Copying copies the elements (pointers stay what they point to). Throws
/// std::bad_alloc, and the list is then as it was.
template <class TYPE, class ARG_TYPE = const TYPE&>
class CList : public CObject {
public:
    /// The block size, in elements, is part of the interface; nodes are allocated one by one.
    explicit CList([[maybe_unused]] int blockSize = 10) {}
    /// Copies the elements; positions of the copy are its own.
    CList(const CList& other) : CList() {
        for (Node* node = other.m_head; node; node = node->next)
            AddTail(node->data);
    }
    /// As copying.
    CList& operator=(const CList& other) {
        if (this != &other)
            CList(other).Swap(*this);
        return *this;
    }
    ~CList() override { RemoveAll(); }

    /// Elements.
    int GetCount() const { return m_count; }
    int GetSize() const { return m_count; }       ///< as GetCount
    BOOL IsEmpty() const { return m_count == 0; } ///< whether GetCount is 0

    // The analyser does not follow head and tail through Unlink's conditional and takes them for nodes that are gone.
    /// Null when the list is empty.
    POSITION GetHeadPosition() const { return PositionOf(m_head); } // NOLINT(clang-analyzer-cplusplus.NewDelete)
    POSITION GetTailPosition() const { return PositionOf(m_tail); } ///< as GetHeadPosition
    /// An empty element when the list is empty.
    TYPE& GetHead() { return DataOf(m_head); }
    const TYPE& GetHead() const { return DataOf(m_head); } ///< to be read
    TYPE& GetTail() { return DataOf(m_tail); }             ///< as GetHead
    const TYPE& GetTail() const { return DataOf(m_tail); } ///< as GetHead

    /// The element at the position, which moves on to its neighbour (null after the last).
    TYPE& GetNext(POSITION& position) { return Step(position, &Node::next); }
    /// As the other GetNext, to be read.
    const TYPE& GetNext(POSITION& position) const { return Step(position, &Node::next); }
    TYPE& GetPrev(POSITION& position) { return Step(position, &Node::previous); }             ///< backwards
    const TYPE& GetPrev(POSITION& position) const { return Step(position, &Node::previous); } ///< backwards
    TYPE& GetAt(POSITION position) { return DataOf(NodeOf(position)); }                       ///< without a step
    const TYPE& GetAt(POSITION position) const { return DataOf(NodeOf(position)); }           ///< without a step
    /// Overwrites the element; nothing at a null position.
    void SetAt(POSITION position, ARG_TYPE element) {
        if (position)
            NodeOf(position)->data = element;
    }

    /// The new element's position.
    POSITION AddHead(ARG_TYPE element) { return Link(new Node{nullptr, nullptr, element}, nullptr, m_head); }
    POSITION AddTail(ARG_TYPE element) {
        return Link(new Node{nullptr, nullptr, element}, m_tail, nullptr);
    } ///< as AddHead
    /// The other list's elements, in order; itself included as it stood.
    void AddTail(CList* other) {
        if (other)
            CList(*other).MoveTo(*this, m_tail, nullptr);
    }
    /// The other list's elements in order, before what is there.
    void AddHead(CList* other) {
        if (other)
            CList(*other).MoveTo(*this, nullptr, m_head);
    }
    /// A null position inserts at the head.
    POSITION InsertBefore(POSITION position, ARG_TYPE element) {
        Node* at = position ? NodeOf(position) : m_head;
        return Link(new Node{nullptr, nullptr, element}, at ? at->previous : nullptr, at);
    }
    /// A null position inserts at the tail.
    POSITION InsertAfter(POSITION position, ARG_TYPE element) {
        Node* at = position ? NodeOf(position) : m_tail;
        return Link(new Node{nullptr, nullptr, element}, at, at ? at->next : nullptr);
    }

    /// Nothing at a null position. No other element's position changes.
    void RemoveAt(POSITION position) {
        if (position)
            Unlink(NodeOf(position));
    }
    /// The removed element; an empty one from an empty list.
    TYPE RemoveHead() { return Take(m_head); }
    /// See RemoveHead.
    TYPE RemoveTail() { return Take(m_tail); } // NOLINT(clang-analyzer-cplusplus.NewDelete)
    /// No position is good afterwards.
    void RemoveAll() {
        for (Node* node = m_head; node;)
            delete std::exchange(node, node->next);
        m_head = m_tail = nullptr;
        m_count = 0;
    }

    /// Exchanges the elements; positions go with them.
    void Swap(CList& other) noexcept {
        std::swap(m_head, other.m_head);
        std::swap(m_tail, other.m_tail);
        std::swap(m_count, other.m_count);
    }

    /// The first element equal to the value, from the head or after the given position; null when there is none.
    POSITION Find(ARG_TYPE value, POSITION startAfter = nullptr) const {
        Node* node = startAfter ? NodeOf(startAfter)->next : m_head;
        while (node && !(node->data == value))
            node = node->next;
        return PositionOf(node);
    }
    /// The position of the element with this 0-based index; null out of range. Walks from the head.
    POSITION FindIndex(int index) const {
        if (index < 0 || index >= m_count)
            return nullptr;
        Node* node = m_head;
        while (index-- > 0)
            node = node->next;
        return PositionOf(node);
    }

private:
    struct Node {
        Node* previous;
        Node* next;
        TYPE data;
    };

    static POSITION PositionOf(Node* node) { return reinterpret_cast<POSITION>(node); }
    static Node* NodeOf(POSITION position) { return reinterpret_cast<Node*>(position); }

    TYPE& DataOf(Node* node) const {
        if (node)
            return node->data;
        m_nothing = TYPE(); // whatever was written there through a null position is gone
        return m_nothing;
    }
    TYPE& Step(POSITION& position, Node* Node::*direction) const {
        Node* node = NodeOf(position);
        position = node ? PositionOf(node->*direction) : nullptr;
        return DataOf(node);
    }
    POSITION Link(Node* node, Node* previous, Node* next) {
        node->previous = previous;
        node->next = next;
        (previous ? previous->next : m_head) = node;
        (next ? next->previous : m_tail) = node;
        ++m_count;
        return PositionOf(node);
    }
    void Unlink(Node* node) {
        (node->previous ? node->previous->next : m_head) = node->next;
        (node->next ? node->next->previous : m_tail) = node->previous;
        --m_count;
        delete node;
    }
    TYPE Take(Node* node) {
        if (!node)
            return TYPE();
        TYPE data = std::move(node->data);
        Unlink(node);
        return data;
    }
    /// All nodes, between two neighbours of the other list.
    void MoveTo(CList& other, Node* previous, Node* next) {
        if (!m_head)
            return;
        m_head->previous = previous;
        m_tail->next = next;
        (previous ? previous->next : other.m_head) = std::exchange(m_head, nullptr);
        (next ? next->previous : other.m_tail) = std::exchange(m_tail, nullptr);
        other.m_count += std::exchange(m_count, 0);
    }

    Node* m_head = nullptr;
    Node* m_tail = nullptr;
    int m_count = 0;
    mutable TYPE m_nothing{};
};

/// Objects and pointers. The list does not own what its elements point to. Destructors stand in a source file: a class
/// whose virtual functions are all inline would have no table in the library that exports it.
class TORV_API CObList : public CList<CObject*, CObject*> {
public:
    using CList::CList;
    ~CObList() override;
};
/// See CObList.
class TORV_API CPtrList : public CList<void*, void*> {
public:
    using CList::CList;
    ~CPtrList() override;
};
/// A list of texts, which it holds.
class TORV_API CStringList : public CList<CString, LPCSTR> {
public:
    using CList::CList;
    ~CStringList() override;
};
