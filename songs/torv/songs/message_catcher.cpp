#include "torv/songs/message_catcher.h"

#include <torv/platform/message_box.h>

#include <algorithm>
#include <mutex>
#include <utility>

namespace torv::songs {

namespace {

std::mutex g_mutex; // a play tells from a thread of its own
std::vector<std::string> g_messages;
torv::MessageBoxHandler g_previous;
torv::BeepHandler g_previousBeep;

std::string OneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    const auto isDouble = [](char a, char b) { return a == ' ' && b == ' '; };
    text.erase(std::unique(text.begin(), text.end(), isDouble), text.end());
    return text;
}

} // namespace

MessageCatcher::MessageCatcher() {
    Take();
    g_previous = torv::SetMessageBoxHandler([](HWND, const char* text, const char*, UINT type) {
        const std::lock_guard lock(g_mutex);
        g_messages.push_back(OneLine(text));
        return (type & MB_YESNO) == MB_YESNO ? IDNO : IDOK;
    });
    g_previousBeep = torv::SetBeepHandler([](UINT) {});
}

MessageCatcher::~MessageCatcher() {
    torv::SetMessageBoxHandler(std::move(g_previous));
    torv::SetBeepHandler(std::move(g_previousBeep));
}

std::string MessageCatcher::Last() const {
    const std::lock_guard lock(g_mutex);
    return g_messages.empty() ? std::string() : g_messages.back();
}

std::vector<std::string> MessageCatcher::Take() const {
    const std::lock_guard lock(g_mutex);
    return std::exchange(g_messages, {});
}

} // namespace torv::songs
