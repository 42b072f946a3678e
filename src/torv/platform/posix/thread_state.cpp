#include "torv/platform/posix/thread_state.h"

#include "torv/platform/immortal.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/posix/last_error.h"
#include "torv/platform/posix/thread.h"
#include "torv/platform/posix/window_table.h"
#include "torv/platform/safe_point.h"

#include <chrono>
#include <shared_mutex>
#include <unordered_map>
#include <utility>

namespace torv {
namespace {

/// Without a destructor, so that they can still be read while the thread's other objects are destroyed.
thread_local ThreadState* t_current = nullptr;

} // namespace

struct ThreadState::Table {
    std::shared_mutex mutex;
    std::unordered_map<DWORD, std::shared_ptr<ThreadState>> threads;
    DWORD lastId = 0xFFF; // thread numbers are never used twice
};

ThreadState::Table& ThreadState::TheTable() { return Immortal<Table>(); }

/// What a thread has when its own is gone, or cannot be had; all threads share it.
ThreadState& ThreadState::Over() {
    struct Shared {
        Shared() { state.m_over = true; }
        ThreadState state{0};
    };
    return Immortal<Shared>().state;
}

/// The first thread-local object of a thread, and so the last to be destroyed: when others see that the thread is
/// over, it is.
struct ThreadState::Holder {
    Holder(std::shared_ptr<ThreadState> its, ThreadState& after) : state(std::move(its)), over(after) {}
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() {
        t_current = &over;
        state->End();
    }
    const std::shared_ptr<ThreadState> state;
    ThreadState& over;
};

void ThreadState::Adopt(std::shared_ptr<ThreadState> state) {
    t_current = state.get();
    thread_local const Holder holder(std::move(state), Over());
}

ThreadState& ThreadState::Current() {
    if (!t_current) {
        const auto state = OrFail(std::shared_ptr<ThreadState>(), [] { return New(false); });
        if (!state)
            return Over();
        Adopt(state);
        state->Begin();
    }
    return *t_current;
}

std::shared_ptr<ThreadState> ThreadState::Find(DWORD id) {
    Table& table = TheTable();
    const std::shared_lock lock(table.mutex);
    const auto found = table.threads.find(id);
    return found != table.threads.end() ? found->second : nullptr;
}

std::shared_ptr<ThreadState> ThreadState::New(bool suspended) {
    Table& table = TheTable();
    const std::unique_lock lock(table.mutex);
    auto state = std::make_shared<ThreadState>(++table.lastId);
    state->m_suspended = suspended ? 1 : 0;
    state->m_resting = 1; // until it begins
    state->m_exitCode = STILL_ACTIVE;
    table.threads.emplace(state->m_id, state);
    return state;
}

void ThreadState::Discard() {
    Table& table = TheTable();
    const std::unique_lock lock(table.mutex);
    table.threads.erase(m_id);
}

DWORD ThreadState::Post(const MSG& message) {
    const std::lock_guard lock(m_mutex);
    if (!m_queue)
        return ERROR_INVALID_THREAD_ID;
    if (!m_queue->Push(message))
        return ERROR_NOT_ENOUGH_QUOTA;
    ++m_posted;
    m_wake.notify_all();
    return NO_ERROR;
}

DWORD ThreadState::Send(SentMessage& sent) {
    const std::lock_guard lock(m_mutex);
    if (m_over)
        return ERROR_INVALID_WINDOW_HANDLE;
    (m_firstSent ? m_lastSent->next : m_firstSent) = &sent;
    m_lastSent = &sent;
    m_wake.notify_all();
    return NO_ERROR;
}

void ThreadState::RemoveMessagesOf(HWND window) {
    SentMessage* removed = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        if (m_queue)
            m_queue->RemoveOf(window);
        SentMessage** link = &m_firstSent;
        m_lastSent = nullptr;
        while (SentMessage* sent = *link) {
            if (sent->message.hwnd == window) {
                *link = sent->next;
                sent->next = removed;
                removed = sent;
            } else {
                m_lastSent = sent;
                link = &sent->next;
            }
        }
    }
    AnswerAll(removed);
}

DWORD ThreadState::Suspend() {
    const AtRest rest; // or two threads that suspend each other would both wait; and this may be the thread itself
    std::unique_lock lock(m_mutex);
    const DWORD before = m_suspended;
    if (before == MAXIMUM_SUSPEND_COUNT) {
        SetLastError(ERROR_SIGNAL_REFUSED);
        return kFailed;
    }
    ++m_suspended;
    m_changed.wait(lock, [&] { return m_resting > 0 || m_suspended == 0 || m_over; });
    if (m_over) {
        SetLastError(ERROR_ACCESS_DENIED);
        return kFailed;
    }
    return before;
}

DWORD ThreadState::Resume() {
    const std::lock_guard lock(m_mutex);
    const DWORD before = m_suspended;
    if (before > 0 && --m_suspended == 0) {
        m_wake.notify_all();
        m_changed.notify_all();
    }
    return before;
}

void ThreadState::SetPriority(int priority) {
    const std::lock_guard lock(m_mutex);
    m_priority = priority;
    if (m_begun && !m_over)
        ApplyPriority();
}

/// As far as the user's rights reach: where they do not, the thread stays as it is.
void ThreadState::ApplyPriority() {
    const int policy = m_priority >= THREAD_PRIORITY_TIME_CRITICAL ? SCHED_RR : SCHED_OTHER;
    const sched_param parameters{.sched_priority = sched_get_priority_min(policy)};
    static_cast<void>(pthread_setschedparam(m_thread, policy, &parameters));
}

bool ThreadState::AwaitEnd(DWORD milliseconds) {
    std::unique_lock lock(m_mutex);
    if (milliseconds != INFINITE)
        return m_changed.wait_for(lock, std::chrono::milliseconds(milliseconds), [&] { return m_over; });
    m_changed.wait(lock, [&] { return m_over; });
    return true;
}

DWORD ThreadState::ExitCode() {
    const std::lock_guard lock(m_mutex);
    return m_over ? m_exitCode : STILL_ACTIVE;
}

void ThreadState::Begin() {
    std::unique_lock lock(m_mutex);
    m_begun = true;
    m_thread = pthread_self();
    if (m_priority != THREAD_PRIORITY_NORMAL)
        ApplyPriority();
    m_wake.wait(lock, [&] { return m_suspended == 0; });
    --m_resting;
}

void ThreadState::SetExitCode(DWORD code) {
    const std::lock_guard lock(m_mutex);
    m_exitCode = code;
}

void ThreadState::MakeQueue() {
    const std::lock_guard lock(m_mutex);
    HasQueue();
}

/// Makes the queue when it is missing; false when the thread is over or there is no memory for it.
bool ThreadState::HasQueue() {
    return m_queue || (!m_over && OrFail(false, [&] {
               m_queue = std::make_unique<MessageQueue>();
               return true;
           }));
}

bool ThreadState::IsOver() {
    const std::lock_guard lock(m_mutex);
    return m_over;
}

void ThreadState::SafePoint() {
    if (m_suspended.load(std::memory_order_relaxed) == 0)
        return;
    std::unique_lock lock(m_mutex);
    RestUntil(lock, [] { return true; });
}

void ThreadState::EnterRest() {
    const std::lock_guard lock(m_mutex);
    ++m_resting;
    m_changed.notify_all();
}

void ThreadState::LeaveRest() {
    std::unique_lock lock(m_mutex);
    m_wake.wait(lock, [&] { return m_suspended == 0; });
    --m_resting;
}

SentMessage* ThreadState::TakeSent() {
    SentMessage* sent = m_firstSent;
    if (sent)
        m_firstSent = sent->next;
    return sent;
}

ThreadState::Next ThreadState::NextMessage(const MessageFilter& filter, bool remove, bool wait, MSG& message,
                                           SentMessage*& sent) {
    std::unique_lock lock(m_mutex);
    const bool hasQueue = HasQueue();
    for (;;) {
        if (m_suspended != 0)
            RestUntil(lock, [] { return true; });
        sent = TakeSent();
        if (sent)
            return Next::Sent;
        if (hasQueue && m_queue->Take(filter, remove, message))
            return Next::Posted;
        if (!wait || !hasQueue)
            return Next::None;
        RestUntil(lock, [&, seen = m_posted] { return m_firstSent || m_posted != seen; });
    }
}

SentMessage* ThreadState::AwaitAnswer(const SentMessage& sent) {
    std::unique_lock lock(m_mutex);
    RestUntil(lock, [&] { return sent.answered || m_firstSent; });
    return sent.answered ? nullptr : TakeSent();
}

void ThreadState::Answer(SentMessage& sent) {
    ThreadState& sender = sent.sender;
    const std::lock_guard lock(sender.m_mutex);
    sent.answered = true; // and gone, as soon as the lock is
    sender.m_wake.notify_all();
}

void ThreadState::AnswerAll(SentMessage* first) {
    while (first)
        Answer(*std::exchange(first, first->next));
}

void ThreadState::End() {
    CloseWindows(*this);
    Discard();
    SentMessage* sent = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        m_over = true;
        m_queue.reset();
        sent = std::exchange(m_firstSent, nullptr);
        m_changed.notify_all();
    }
    AnswerAll(sent);
}

void SafePoint() { ThreadState::Current().SafePoint(); }

AtRest::AtRest() : m_thread(ThreadState::Current()) { m_thread.EnterRest(); }
AtRest::~AtRest() { m_thread.LeaveRest(); }

} // namespace torv
