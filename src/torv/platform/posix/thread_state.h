#pragma once

#include "torv/platform/posix/message_queue.h"

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace torv {

class ThreadState;

/// A message that its sender waits on; it lives on the sender's stack.
struct SentMessage {
    MSG message;
    ThreadState& sender;
    SentMessage* next = nullptr;
    LRESULT result = 0;
    bool answered = false; // guarded by the sender
};

/// What the platform knows of one thread: its messages, whether it is suspended, and whether it is over. It outlives
/// the thread while anybody holds it.
class ThreadState : public std::enable_shared_from_this<ThreadState> {
public:
    enum class Next { Posted, Sent, None };
    static constexpr DWORD kFailed = 0xFFFFFFFF;

    /// Of the calling thread, whoever began it. When a thread's own is gone already (its thread-local objects are being
    /// destroyed), or there is no memory for it, it is one that has no queue and is over.
    static ThreadState& Current();
    /// Null when there is no such thread.
    static std::shared_ptr<ThreadState> Find(DWORD id);
    /// For a thread that is about to begin, which then calls Begin.
    static std::shared_ptr<ThreadState> New(bool suspended);
    /// Forgets a thread that could not be had.
    void Discard();

    explicit ThreadState(DWORD id) : m_id(id) {}
    DWORD Id() const { return m_id; }

    // From any thread. Results are error numbers, or as of the calls of the same name.
    DWORD Post(const MSG& message);
    DWORD Send(SentMessage& sent);
    /// Of a window that goes: those that were sent to it are answered with 0.
    void RemoveMessagesOf(HWND window);
    DWORD Suspend();
    DWORD Resume();
    void SetPriority(int priority);
    /// False when the time is over first.
    bool AwaitEnd(DWORD milliseconds);
    DWORD ExitCode();

    // From the thread itself.
    static void Adopt(std::shared_ptr<ThreadState> state);
    void Begin();
    void SetExitCode(DWORD code);
    void MakeQueue();
    bool IsOver();
    void SafePoint();
    void EnterRest();
    void LeaveRest();
    Next NextMessage(const MessageFilter& filter, bool remove, bool wait, MSG& message, SentMessage*& sent);
    /// Waits for the answer; returns a message that was sent to this thread in the meantime, or null when it is there.
    SentMessage* AwaitAnswer(const SentMessage& sent);
    static void Answer(SentMessage& sent);

private:
    struct Holder;
    struct Table;
    static Table& TheTable();
    static ThreadState& Over();

    template <class Ready>
    void RestUntil(std::unique_lock<std::mutex>& lock, Ready ready) {
        ++m_resting;
        m_changed.notify_all();
        m_wake.wait(lock, [&] { return m_suspended == 0 && ready(); });
        --m_resting;
    }
    bool HasQueue();
    SentMessage* TakeSent();
    static void AnswerAll(SentMessage* first);
    void ApplyPriority();
    void End();

    const DWORD m_id;
    std::mutex m_mutex;                // guards what follows; no other lock is taken while it is held
    std::condition_variable m_wake;    // what the thread itself waits for
    std::condition_variable m_changed; // what others wait for: it rests, it is over
    std::unique_ptr<MessageQueue> m_queue;
    ULONGLONG m_posted = 0;
    SentMessage* m_firstSent = nullptr;
    SentMessage* m_lastSent = nullptr;
    std::atomic<DWORD> m_suspended = 0; // how often; read without the lock only to see that it is not
    int m_resting = 0;                  // more than 0 while it waits: it will go no further when suspended
    int m_priority = 0;
    bool m_begun = false;
    pthread_t m_thread{}; // once begun, until over
    DWORD m_exitCode = 0;
    bool m_over = false;
};

} // namespace torv
