#include "torv/platform/message_box.h"

#include "torv/platform/afx/win_app.h"
#include "torv/platform/immortal.h"
#include "torv/platform/safe_point.h"
#include "torv/platform/system_default.h"

#include <mutex>
#include <utility>

namespace torv {
namespace {

/// The installed handlers. A call works on a copy, so that a handler may replace itself, or show another box.
struct Handlers {
    std::mutex mutex;
    MessageBoxHandler messageBox;
    BeepHandler beep;
};

Handlers& TheHandlers() { return Immortal<Handlers>(); }

template <class Handler>
Handler Exchange(Handler Handlers::*member, Handler handler) {
    Handlers& handlers = TheHandlers();
    const std::lock_guard lock(handlers.mutex);
    return std::exchange(handlers.*member, std::move(handler));
}

template <class Handler>
Handler Current(Handler Handlers::*member) {
    Handlers& handlers = TheHandlers();
    const std::lock_guard lock(handlers.mutex);
    return handlers.*member;
}

const char* ApplicationName() {
    const CWinApp* app = AfxGetApp();
    return app && app->m_pszAppName ? app->m_pszAppName : "TORV";
}

} // namespace

MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler) {
    return Exchange(&Handlers::messageBox, std::move(handler));
}

BeepHandler SetBeepHandler(BeepHandler handler) { return Exchange(&Handlers::beep, std::move(handler)); }

int ShowMessageBox(HWND owner, const char* text, const char* caption, UINT type) {
    text = text ? text : "";
    caption = caption ? caption : ApplicationName();
    const MessageBoxHandler handler = Current(&Handlers::messageBox);
    [[maybe_unused]] const AtRest rest; // the user may take his time, and the host suspend this thread meanwhile
    return handler ? handler(owner, text, caption, type) : SystemMessageBox(owner, text, caption, type);
}

BOOL Beep(UINT type) {
    if (const BeepHandler handler = Current(&Handlers::beep))
        handler(type);
    else
        SystemBeep(type);
    return TRUE;
}

} // namespace torv
