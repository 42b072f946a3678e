#pragma once

#include "handles.h"
#include "texts.h"

#include <torv/songs/databases.h>
#include <torv/songs/message_catcher.h>

#include <memory>
#include <mutex>

namespace torv::c {

/// The databases that the process has once, while anybody holds them. Who uses them locks the mutex: the databases
/// themselves have no locks, and a score may be made while another thread lists voices.
class OpenDatabases {
public:
    /// Throws Failure: TORV_BUSY or TORV_NO_COMPANION.
    OpenDatabases();

private:
    struct Turn {
        Turn();
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
    };
    Turn m_turn;

public:
    std::mutex mutex;
    const songs::MessageCatcher messages;
    std::unique_ptr<songs::Databases> databases;
};

class DatabasesObject final : public Object {
public:
    static constexpr Kind kKind = Kind::Databases;

    const std::shared_ptr<OpenDatabases> open = std::make_shared<OpenDatabases>();
    std::string told; ///< messages that nobody has taken
};

int32_t LanguageOfVoice(uint32_t id);

} // namespace torv::c
