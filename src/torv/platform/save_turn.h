#pragma once

#include "torv/platform/export.h"

#include <cstdint>

namespace torv {

/// One's turn at a file that is read again, changed and replaced: while it is held, another thread or process that asks
/// for a turn at a file of the same folder waits, so that neither's change is lost between the other's reading and
/// writing. Nothing is left in the folder.
///
/// It is a courtesy among those who ask: after ten seconds, or where the system has no such thing (a folder that is not
/// there, some network disks), the object stands without a turn and its owner goes on as if nobody else were there.
class TORV_API SaveTurn {
public:
    /// `path` is the file's; the system's own.
    explicit SaveTurn(const char* path) noexcept;
    ~SaveTurn();
    SaveTurn(const SaveTurn&) = delete;
    SaveTurn& operator=(const SaveTurn&) = delete;

    bool IsHeld() const noexcept { return m_handle != kNone; }

private:
    static constexpr std::intptr_t kNone = -1;
    std::intptr_t m_handle = kNone;
};

} // namespace torv
