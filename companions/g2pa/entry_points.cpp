#include "converter.h"

#include "torv/abi/g2pa.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_map>

#if defined(_WIN32)
#define G2PA_EXPORT extern "C" __declspec(dllexport)
#else
#define G2PA_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

struct Session {
    std::mutex mutex; // calls on one handle take turns; different handles share nothing
    std::unique_ptr<g2pa::Converter> converter = g2pa::MakeConverter();
    bool ended = false;
};

/// Handles count up from 1 and come back only after 2^31 creations, so that a deleted one is refused.
class SessionTable {
public:
    int32_t Add(std::shared_ptr<Session> session) {
        const std::lock_guard lock(m_mutex);
        while (!m_sessions.try_emplace(m_next, session).second)
            Advance();
        const int32_t handle = m_next;
        Advance();
        return handle;
    }

    std::shared_ptr<Session> Find(int32_t handle) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_sessions.find(handle);
        return found == m_sessions.end() ? nullptr : found->second;
    }

    bool Remove(int32_t handle) {
        const std::lock_guard lock(m_mutex);
        return m_sessions.erase(handle) != 0;
    }

private:
    void Advance() { m_next = m_next == INT32_MAX ? 1 : m_next + 1; }

    std::mutex m_mutex;
    std::unordered_map<int32_t, std::shared_ptr<Session>> m_sessions;
    int32_t m_next = 1;
};

SessionTable& Sessions() {
    static SessionTable table;
    return table;
}

/// Nothing may leave an entry point but its result; what can be thrown below is a failed allocation.
template <typename Work>
int32_t Guarded(Work work) noexcept {
    try {
        return work();
    } catch (...) {
        return G2PA_NO_MEMORY;
    }
}

void Write(const g2pa::Symbols& symbols, G2paOutput& output) {
    const size_t count = std::min<size_t>(symbols.size(), G2PA_MAX_SLOTS);
    output.count = static_cast<int32_t>(count);
    std::memset(output.slots, 0, count * G2PA_SLOT_BYTES);
    for (size_t i = 0; i < count; ++i) {
        const size_t length = symbols[i].copy(output.slots[i], G2PA_SLOT_BYTES - 1);
        if (g2pa::slotsEndWithBlank && i + 1 < count)
            output.slots[i][length] = ' ';
    }
}

} // namespace

/// `beats` may be anything: these converters need no idea of the song's length.
G2PA_EXPORT int32_t G2PA_CALL g2paCreate([[maybe_unused]] uint32_t beats) {
    return Guarded([] { return Sessions().Add(std::make_shared<Session>()); });
}

G2PA_EXPORT int32_t G2PA_CALL g2paPut(int32_t handle, const void* input) {
    return Guarded([=]() -> int32_t {
        const auto session = Sessions().Find(handle);
        if (!session)
            return G2PA_BAD_HANDLE;
        const std::lock_guard lock(session->mutex);
        if (session->ended)
            return G2PA_INPUT_ENDED;
        if (input) {
            // The text may be longer than the record's declared array, so it is reached by its offset.
            session->converter->Put(static_cast<const char*>(input) + offsetof(G2paInput, text));
        } else {
            session->converter->Finish();
            session->ended = true;
        }
        return G2PA_OK;
    });
}

G2PA_EXPORT int32_t G2PA_CALL g2paGet(int32_t handle, void* output) {
    return Guarded([=]() -> int32_t {
        const auto session = Sessions().Find(handle);
        if (!session)
            return G2PA_BAD_HANDLE;
        if (!output)
            return G2PA_BAD_RECORD;
        const std::lock_guard lock(session->mutex);
        if (!session->converter->HasOutput())
            return G2PA_NO_OUTPUT_NOW;
        Write(session->converter->NextOutput(), *static_cast<G2paOutput*>(output));
        session->converter->DropOutput();
        return G2PA_OK;
    });
}

G2PA_EXPORT int32_t G2PA_CALL g2paDelete(int32_t handle) {
    return Guarded([=]() -> int32_t { return Sessions().Remove(handle) ? G2PA_OK : G2PA_BAD_HANDLE; });
}

G2PA_EXPORT int32_t G2PA_CALL g2paFindWord(const char* word) {
    return Guarded([=]() -> int32_t { return word ? g2pa::FindWord(word) : G2PA_BAD_RECORD; });
}

G2PA_EXPORT const char* G2PA_CALL g2paGetVersionString(void) { return g2pa::versionText; }
