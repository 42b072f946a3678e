#include "interruption.h"

#include <torv/platform/replaced_file.h>

#if defined(_WIN32)
#include "torv/platform/system.h"

namespace {

// Called on a thread of its own, with the others at work.
BOOL WINAPI OnControl(DWORD event) {
    torv::ReplacedFile::RemoveAllUnfinished();
    TerminateProcess(GetCurrentProcess(), event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT ? 130 : 143);
    return TRUE;
}

} // namespace

void LeaveNothingWhenInterrupted() { SetConsoleCtrlHandler(OnControl, TRUE); }

#else
#include <csignal>

namespace {

// The signal's usual end comes when this returns: a shell then knows what ended the program, and its scripts end too.
void OnSignal(int signal) {
    torv::ReplacedFile::RemoveAllUnfinished();
    raise(signal);
}

} // namespace

void LeaveNothingWhenInterrupted() {
    struct sigaction action {};
    action.sa_handler = OnSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) {
        struct sigaction before {};
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
    std::signal(SIGXFSZ, SIG_IGN); // the write fails instead, and is told
}
#endif
