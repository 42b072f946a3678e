#include "messages.h"

#include <torv/platform/message_box.h>

#include <algorithm>

namespace {

std::string g_last;
torv::MessageBoxHandler g_previous;
torv::BeepHandler g_previousBeep;

} // namespace

MessageCatcher::MessageCatcher() {
    g_last.clear();
    g_previous = torv::SetMessageBoxHandler([](HWND, const char* text, const char*, UINT type) {
        g_last = text;
        return (type & MB_YESNO) == MB_YESNO ? IDNO : IDOK;
    });
    g_previousBeep = torv::SetBeepHandler([](UINT) {});
}

MessageCatcher::~MessageCatcher() {
    torv::SetMessageBoxHandler(std::move(g_previous));
    torv::SetBeepHandler(std::move(g_previousBeep));
}

std::string MessageCatcher::Last() const {
    std::string line = g_last;
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}
