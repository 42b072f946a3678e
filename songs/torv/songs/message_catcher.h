#pragma once

#include "torv/songs/export.h"

#include <string>
#include <vector>

namespace torv::songs {

/// While it lives, what the library would show in message boxes is kept instead, and nothing beeps. One at a time.
class TORV_SONGS_API MessageCatcher {
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

} // namespace torv::songs
