#pragma once

#include <string>
#include <vector>

/// Tells the user something on standard error, unless all is to be quiet.
void Remark(bool isQuiet, const std::string& text);

/// While it lives, what the library would show in message boxes is kept instead: a command answers in one line.
class MessageCatcher {
public:
    MessageCatcher();
    ~MessageCatcher();
    MessageCatcher(const MessageCatcher&) = delete;
    MessageCatcher& operator=(const MessageCatcher&) = delete;

    /// The last message, on one line; empty when there was none.
    std::string Last() const;
    /// All messages since the last call, each on one line.
    std::vector<std::string> Take() const;
};
