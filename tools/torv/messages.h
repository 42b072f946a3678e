#pragma once

#include <string>

/// While it lives, what the library would show in message boxes is kept instead: a command answers in one line.
class MessageCatcher {
public:
    MessageCatcher();
    ~MessageCatcher();
    MessageCatcher(const MessageCatcher&) = delete;
    MessageCatcher& operator=(const MessageCatcher&) = delete;

    /// The last message, on one line; empty when there was none.
    std::string Last() const;
};
