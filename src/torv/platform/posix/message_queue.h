#pragma once

#include "torv/platform/posix/message.h"

#include <memory>

namespace torv {

/// Which messages a call asks for.
struct MessageFilter {
    HWND window; // null: any, and the thread's
    UINT first;
    UINT last; // with first 0: every number

    bool IsForThread() const { return window == reinterpret_cast<HWND>(static_cast<LONG_PTR>(-1)); }
    bool Matches(const MSG& message) const;
};

/// The posted messages of one thread, oldest first. Nothing is allocated after construction. Not guarded.
class MessageQueue {
public:
    static constexpr WORD kCapacity = 10000;

    MessageQueue();
    /// False when it is full.
    bool Push(const MSG& message);
    /// The oldest that matches; false when there is none.
    bool Take(const MessageFilter& filter, bool remove, MSG& message);
    void RemoveOf(HWND window);

private:
    using Index = WORD; // kCapacity: none
    struct Node {
        MSG message;
        Index previous;
        Index next; // in the queue, or among the free ones
    };
    void Unlink(Index at);

    const std::unique_ptr<Node[]> m_nodes;
    Index m_fresh = 0; // nodes from here on were never used
    Index m_free = kCapacity;
    Index m_first = kCapacity;
    Index m_last = kCapacity;
};

} // namespace torv
