#include "terminal_keys.h"

namespace {

constexpr char kCtrlC = 3;
constexpr char kEsc = 27;

Key KeyOf(char character) {
    switch (character) {
    case ' ':
        return Key::Pause;
    case '+':
    case '=': // plus without Shift
        return Key::Louder;
    case '-':
        return Key::Quieter;
    case '0':
        return Key::Start;
    case 'q':
    case 'Q':
    case kEsc:
    case kCtrlC:
        return Key::Quit;
    default:
        return Key::None;
    }
}

} // namespace

#if defined(_WIN32)
#include "torv/platform/system.h"

#include <conio.h>

namespace {

DWORD g_before;

/// By the number of a key without a character.
Key KeyOfNumber(int number) {
    switch (number) {
    case 71:
        return Key::Start;
    case 72:
        return Key::Louder;
    case 75:
        return Key::Back;
    case 77:
        return Key::Forward;
    case 80:
        return Key::Quieter;
    default:
        return Key::None;
    }
}

} // namespace

TerminalKeys::TerminalKeys() {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    m_isTerminal = GetConsoleMode(input, &g_before) != 0;
    if (m_isTerminal)
        SetConsoleMode(input, g_before & ~static_cast<DWORD>(ENABLE_PROCESSED_INPUT)); // Ctrl+C is a key
}

TerminalKeys::~TerminalKeys() {
    if (m_isTerminal)
        SetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), g_before);
}

Key TerminalKeys::Poll() {
    while (m_isTerminal && _kbhit()) {
        const int character = _getch();
        const bool hasNumber = character == 0 || character == 0xE0;
        const Key key = hasNumber ? KeyOfNumber(_getch()) : KeyOf(static_cast<char>(character));
        if (key != Key::None)
            return key;
    }
    return Key::None;
}

#else
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace {

/// What a terminal sends for one key comes together: an Esc with nothing behind it after this time is the key.
constexpr std::chrono::milliseconds kEscapeTime(50);

struct Handled {
    int signal;
    struct sigaction before;
};

// Set before the handlers are, and left alone while they are there.
termios g_before;
termios g_keys;
std::array<Handled, 6> g_handled{
    {{SIGINT, {}}, {SIGTERM, {}}, {SIGHUP, {}}, {SIGQUIT, {}}, {SIGTSTP, {}}, {SIGCONT, {}}}};

/// In the background the terminal is somebody else's: changing it would stop the program.
void SetTerminal(const termios& state) {
    const pid_t group = tcgetpgrp(STDIN_FILENO);
    if (group == -1 || group == getpgrp())
        tcsetattr(STDIN_FILENO, TCSANOW, &state);
}

/// Does what the signal would have done without us, with the terminal as it was; goes on after a stop, or when a
/// handler of the program's own returned. Calls nothing that a signal handler may not.
void OnSignal(int signal) {
    const int error = errno;
    for (const Handled& handled : g_handled)
        if (handled.signal == signal && signal != SIGCONT) {
            SetTerminal(g_before);
            struct sigaction ours {};
            sigaction(signal, &handled.before, &ours);
            raise(signal);
            sigset_t only, mask;
            sigemptyset(&only);
            sigaddset(&only, signal);
            pthread_sigmask(SIG_UNBLOCK, &only, &mask); // here it takes effect
            pthread_sigmask(SIG_SETMASK, &mask, nullptr);
            sigaction(signal, &ours, nullptr);
        }
    SetTerminal(g_keys);
    errno = error;
}

} // namespace

TerminalKeys::TerminalKeys() {
    m_isTerminal = tcgetattr(STDIN_FILENO, &g_before) == 0;
    if (!m_isTerminal)
        return;
    g_keys = g_before;
    g_keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    g_keys.c_cc[VINTR] = _POSIX_VDISABLE; // Ctrl+C is a key
    g_keys.c_cc[VMIN] = 1;
    g_keys.c_cc[VTIME] = 0;
    struct sigaction action {};
    action.sa_handler = OnSignal;
    action.sa_flags = SA_RESTART;
    for (Handled& handled : g_handled) {
        sigaction(handled.signal, nullptr, &handled.before);
        if (handled.before.sa_handler != SIG_IGN)
            sigaction(handled.signal, &action, nullptr);
    }
    SetTerminal(g_keys);
}

TerminalKeys::~TerminalKeys() {
    if (!m_isTerminal)
        return;
    for (const Handled& handled : g_handled)
        sigaction(handled.signal, &handled.before, nullptr);
    SetTerminal(g_before);
}

void TerminalKeys::Read() {
    const pid_t group = tcgetpgrp(STDIN_FILENO);
    if (group != -1 && group != getpgrp())
        return; // reading from the background would stop the program
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (!m_isGone && poll(&input, 1, 0) > 0) {
        char bytes[64];
        const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
        m_isGone = count == 0 || (count < 0 && errno != EINTR);
        if (count > 0)
            m_pressed.append(bytes, static_cast<size_t>(count));
        m_readAt = std::chrono::steady_clock::now();
    }
}

/// The key of the sequence that the bytes begin with; None, and the bytes stay, when it is not whole yet.
Key TerminalKeys::TakeEscape() {
    size_t end = 1;
    if (m_pressed.size() > end && (m_pressed[1] == '[' || m_pressed[1] == 'O'))
        for (++end; end < m_pressed.size() && m_pressed[end] >= ' ' && m_pressed[end] < '@';)
            ++end; // numbers, before the character that tells the kind
    if (end >= m_pressed.size()) {
        if (std::chrono::steady_clock::now() - m_readAt < kEscapeTime)
            return Key::None;
        const Key key = m_pressed.size() == 1 ? Key::Quit : Key::None;
        m_pressed.clear();
        return key;
    }
    if (m_pressed[1] == kEsc) {
        m_pressed.erase(0, 1);
        return Key::Quit;
    }
    const std::string sequence = m_pressed.substr(1, end);
    m_pressed.erase(0, end + 1);
    if (sequence == "[1~" || sequence == "[7~")
        return Key::Start;
    switch (sequence.size() > 1 ? sequence.back() : 0) { // else another key with Alt
    case 'A':
        return Key::Louder;
    case 'B':
        return Key::Quieter;
    case 'C':
        return Key::Forward;
    case 'D':
        return Key::Back;
    case 'H':
        return Key::Start;
    default:
        return Key::None;
    }
}

Key TerminalKeys::Poll() {
    if (!m_isTerminal)
        return Key::None;
    Read();
    while (!m_pressed.empty()) {
        const size_t before = m_pressed.size();
        Key key = Key::None;
        if (m_pressed.front() == kEsc) {
            key = TakeEscape();
            if (key == Key::None && m_pressed.size() == before)
                return m_isGone ? Key::Quit : Key::None;
        } else {
            key = KeyOf(m_pressed.front());
            m_pressed.erase(0, 1);
        }
        if (key != Key::None)
            return key;
    }
    return m_isGone ? Key::Quit : Key::None;
}
#endif
