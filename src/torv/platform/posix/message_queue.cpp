#include "torv/platform/posix/message_queue.h"

namespace torv {

bool MessageFilter::Matches(const MSG& message) const {
    if (window && message.hwnd != (IsForThread() ? nullptr : window))
        return false;
    return (first == 0 && last == 0) || (message.message >= first && message.message <= last);
}

// Left untouched, the memory of messages that never come is never taken from the system.
MessageQueue::MessageQueue() : m_nodes(std::make_unique_for_overwrite<Node[]>(kCapacity)) {}

bool MessageQueue::Push(const MSG& message) {
    Index at = m_free;
    if (at != kCapacity)
        m_free = m_nodes[at].next;
    else if (m_fresh < kCapacity)
        at = m_fresh++;
    else
        return false;
    m_nodes[at] = {message, m_last, kCapacity};
    (m_last != kCapacity ? m_nodes[m_last].next : m_first) = at;
    m_last = at;
    return true;
}

bool MessageQueue::Take(const MessageFilter& filter, bool remove, MSG& message) {
    for (Index at = m_first; at != kCapacity; at = m_nodes[at].next) {
        if (!filter.Matches(m_nodes[at].message))
            continue;
        message = m_nodes[at].message;
        if (remove)
            Unlink(at);
        return true;
    }
    return false;
}

void MessageQueue::RemoveOf(HWND window) {
    for (Index at = m_first; at != kCapacity;) {
        const Index next = m_nodes[at].next;
        if (m_nodes[at].message.hwnd == window)
            Unlink(at);
        at = next;
    }
}

void MessageQueue::Unlink(Index at) {
    Node& node = m_nodes[at];
    (node.previous != kCapacity ? m_nodes[node.previous].next : m_first) = node.next;
    (node.next != kCapacity ? m_nodes[node.next].previous : m_last) = node.previous;
    node.next = m_free;
    m_free = at;
}

} // namespace torv
