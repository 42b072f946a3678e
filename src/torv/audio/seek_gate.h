#pragma once

#include <mutex>

namespace torv {

/// Where seeks pass from the host's thread to the thread that plays. While it is open they are posted to that thread;
/// once it is closed, whoever asks seeks the files himself. So none is lost, however late in a play it comes, and the
/// files belong to one thread at a time.
class SeekGate {
public:
    /// Calls `post` and returns true while it is open. Once false is returned the other thread is through with the
    /// files.
    template <class Post>
    bool Pass(Post post) {
        const std::lock_guard lock(m_mutex);
        if (m_isOpen)
            post();
        return m_isOpen;
    }

    /// Closes for good; `last`, which does what was posted until then, is called the first time, while nobody passes.
    template <class Last>
    void Close(Last last) {
        const std::lock_guard lock(m_mutex);
        if (m_isOpen)
            last();
        m_isOpen = false;
    }

private:
    std::mutex m_mutex;
    bool m_isOpen = true;
};

} // namespace torv
