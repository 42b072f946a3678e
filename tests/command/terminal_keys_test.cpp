// Keys of a terminal, typed into one of the test's own.
#if !defined(_WIN32)
#include "terminal_keys.h"

#include <doctest/doctest.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

/// A terminal that is standard input while this lives.
class Terminal {
public:
    Terminal() {
        REQUIRE((grantpt(m_user) == 0 && unlockpt(m_user) == 0));
        const int side = open(ptsname(m_user), O_RDWR | O_NOCTTY);
        REQUIRE(dup2(side, STDIN_FILENO) == STDIN_FILENO);
        close(side);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        dup2(m_before, STDIN_FILENO);
        close(m_before);
        HangUp();
    }
    void Type(const std::string& bytes) const {
        REQUIRE(write(m_user, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    }
    bool ShowsSomething() const {
        pollfd shown{m_user, POLLIN, 0};
        return poll(&shown, 1, 0) > 0;
    }
    /// Whether it echoes, waits for Enter and takes Ctrl+C for a signal; mixed states are none.
    bool IsAsUsual() const {
        termios state{};
        tcgetattr(m_user, &state);
        const bool echoes = (state.c_lflag & ECHO) != 0;
        CHECK(((state.c_lflag & ICANON) != 0) == echoes);
        CHECK((state.c_cc[VINTR] == 3) == echoes);
        return echoes;
    }
    void HangUp() {
        if (m_user >= 0)
            close(m_user);
        m_user = -1;
    }

private:
    const int m_before = dup(STDIN_FILENO);
    int m_user = posix_openpt(O_RDWR | O_NOCTTY);
};

using Keys = std::vector<Key>;

/// So many keys; ten seconds at most.
Keys Take(TerminalKeys& keys, size_t count) {
    Keys taken;
    for (int i = 0; i < 10000 && taken.size() < count; ++i) {
        if (const Key key = keys.Poll(); key != Key::None)
            taken.push_back(key);
        else
            usleep(1000);
    }
    return taken;
}

} // namespace

TEST_CASE("terminal keys: what each key sends") {
    const struct {
        const char* bytes;
        Keys keys;
    } rows[] = {
        {" ", {Key::Pause}},
        {"\x1b[C\x1bOC\x1b[1;5C", {Key::Forward, Key::Forward, Key::Forward}}, // plain, keypad mode, with Ctrl
        {"\x1b[D\x1bOD", {Key::Back, Key::Back}},
        {"\x1b[A+=", {Key::Louder, Key::Louder, Key::Louder}},
        {"\x1b[B-", {Key::Quieter, Key::Quieter}},
        {"0\x1b[H\x1bOH\x1b[1~\x1b[7~", {Key::Start, Key::Start, Key::Start, Key::Start, Key::Start}},
        {"qQ\x03", {Key::Quit, Key::Quit, Key::Quit}},
        {"xA[~\xC3\xA9\r\x1b[3~\x1b[15~\x1b[F\x1bq\x1b\x03", {}}, // letters, Enter, Delete, F5, End, Alt with a key
    };
    const Terminal terminal;
    TerminalKeys keys;
    REQUIRE(keys.IsTerminal());
    CHECK(keys.Poll() == Key::None);
    for (const auto& row : rows) {
        CAPTURE(row.bytes);
        terminal.Type(row.bytes);
        terminal.Type(" ");
        Keys expected = row.keys;
        expected.push_back(Key::Pause);
        CHECK((Take(keys, expected.size()) == expected));
    }
    terminal.Type("\x1b"); // with nothing behind it
    CHECK((Take(keys, 1) == Keys{Key::Quit}));
    terminal.Type("\x1b\x1b[C");
    CHECK((Take(keys, 2) == Keys{Key::Quit, Key::Forward}));
    CHECK(keys.Poll() == Key::None);
    CHECK_FALSE(terminal.ShowsSomething());
}

TEST_CASE("terminal keys: the terminal is as before afterwards, and may go; what is none has no keys") {
    Terminal terminal;
    {
        CHECK(terminal.IsAsUsual());
        TerminalKeys keys;
        CHECK_FALSE(terminal.IsAsUsual());
    }
    CHECK(terminal.IsAsUsual());
    {
        TerminalKeys keys;
        terminal.HangUp();
        CHECK((Take(keys, 2) == Keys{Key::Quit, Key::Quit}));
    }
    const int none = open("/dev/null", O_RDONLY);
    dup2(none, STDIN_FILENO);
    close(none);
    TerminalKeys keys;
    CHECK_FALSE(keys.IsTerminal());
    CHECK(keys.Poll() == Key::None);
}

TEST_CASE("terminal keys: a stop and an end give the terminal back") {
    const Terminal terminal;
    const pid_t child = fork();
    if (child == 0) {
        setpgid(0, 0);                 // a group with a parent in its session can be stopped
        std::signal(SIGTERM, SIG_DFL); // the test program has a handler
        const TerminalKeys keys;
        raise(SIGTSTP);
        raise(SIGSTOP); // looked at with the keys in force again
        raise(SIGTERM);
        _exit(1);
    }
    REQUIRE(child > 0);
    int status = 0;
    for (const bool isAsUsual : {true, false}) {
        REQUIRE(waitpid(child, &status, WUNTRACED) == child);
        REQUIRE(WIFSTOPPED(status));
        CHECK(WSTOPSIG(status) == (isAsUsual ? SIGTSTP : SIGSTOP));
        CHECK(terminal.IsAsUsual() == isAsUsual);
        kill(child, SIGCONT);
    }
    REQUIRE(waitpid(child, &status, 0) == child);
    CHECK((WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM));
    CHECK(terminal.IsAsUsual());
}
#endif
