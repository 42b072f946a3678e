// A converter that says each text back: a slot a letter.
#include "fake_converter.h"

#include <cstdio>
#include <cstring>
#include <deque>
#include <map>
#include <string>

#if defined(_WIN32)
#define EXPORT extern "C" __declspec(dllexport)
#else
#define EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

FakeState g_state;
/// What one handle was given and has not delivered.
struct Queue {
    std::deque<std::string> texts;
    bool ended = false;
};
std::map<int32_t, Queue> g_queues;

template <class... Values>
void Log(const char* format, Values... values) {
    const size_t length = std::strlen(g_state.log);
    std::snprintf(g_state.log + length, sizeof g_state.log - length, format, values...);
}

} // namespace

EXPORT FakeState* fakeState() { return &g_state; }

EXPORT int32_t G2PA_CALL g2paCreate(uint32_t beats) {
    const int number = g_state.creates;
    g_queues[number] = {};
    ++g_state.creates;
    Log("%d create %u|", number, beats);
    const bool isRefused = g_state.createError && number == g_state.createErrorAt;
    return isRefused ? g_state.createError : number; // 0 is a good handle
}

EXPORT int32_t G2PA_CALL g2paPut(int32_t handle, const void* input) {
    Queue& queue = g_queues[handle];
    if (!input) {
        Log("%d end|", handle);
        queue.ended = true;
        for (int i = 0; i < g_state.forgetLast && !queue.texts.empty(); ++i)
            queue.texts.pop_back();
        return 0;
    }
    if (g_state.puts++ == g_state.putErrorAt)
        return -33;
    uint32_t words[2];
    std::memcpy(words, input, sizeof words);
    const char* const text = static_cast<const char*>(input) + sizeof words;
    Log("%d %u+%u %.8s|", handle, words[0], words[1], text);
    for (size_t i = std::strlen(text); i < G2PA_MIN_TEXT_BYTES; ++i)
        g_state.padded = g_state.padded && text[i] == '\0';
    queue.texts.push_back(text);
    return 0;
}

#ifndef FAKE_NO_GET
EXPORT int32_t G2PA_CALL g2paGet(int32_t handle, void* output) {
    Queue& queue = g_queues[handle];
    if (g_state.getResult)
        return g_state.getResult;
    if (g_state.endless)
        return 0;
    if (queue.texts.empty() || (g_state.holdBack && !queue.ended))
        return 1;
    auto& told = *static_cast<G2paOutput*>(output) = g_state.odd;
    if (!told.slots[0][0] && told.count == 0)
        for (const char c : queue.texts.front().substr(0, G2PA_MAX_SLOTS))
            told.slots[told.count++][0] = c;
    queue.texts.pop_front();
    return 0;
}

EXPORT const char* G2PA_CALL g2paGetVersionString() { return "fake 1.0"; }
#endif

EXPORT int32_t G2PA_CALL g2paDelete(int32_t handle) {
    Log("%d delete|", handle);
    ++g_state.deletes;
    g_queues.erase(handle);
    return g_state.deleteResult;
}
