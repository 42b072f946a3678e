#pragma once

#include <chrono>
#include <string>

/// What a listener can press.
enum class Key { None, Pause, Forward, Back, Louder, Quieter, Start, Quit };

/// The keys of the terminal that is standard input, one by one: neither echoed nor kept back until Enter. While this
/// lives the terminal is changed. It is as before afterwards, while the program is stopped, and when a signal ends it.
/// One at a time.
class TerminalKeys {
public:
    TerminalKeys();
    ~TerminalKeys();
    TerminalKeys(const TerminalKeys&) = delete;
    TerminalKeys& operator=(const TerminalKeys&) = delete;

    /// Without one every Poll gives None.
    bool IsTerminal() const { return m_isTerminal; }
    /// The next key that means something; None, at once, when there is none. Space is Pause, right and left are Forward
    /// and Back, up and down or + and - are Louder and Quieter, Home and 0 are Start; q, Esc, Ctrl+C and a terminal
    /// that has gone are Quit.
    Key Poll();

private:
    void Read();
    Key TakeEscape();

    bool m_isTerminal = false;
    bool m_isGone = false;
    std::string m_pressed;                          ///< bytes that have come and are not understood yet
    std::chrono::steady_clock::time_point m_readAt; ///< when the last of them came
};
