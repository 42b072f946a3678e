/// A file with what the user made, which other processes may change as well.
#pragma once

#include "json_text.h"

#include "torv/platform/save_turn.h"

#include <initializer_list>
#include <optional>
#include <string>

namespace dbm {

class UserFile {
public:
    explicit UserFile(std::string path) : m_path(std::move(path)) {}

    /// To be held from LoadChanged to Save, so that nothing that another process saves between the two is lost.
    torv::SaveTurn TakeTurn() const { return torv::SaveTurn(m_path.c_str()); }
    /// What is in the file when that is not what was loaded or saved last: an object whose named members are lists
    /// where they are there. Nothing when it is, or without a file: what was loaded holds then. A file that is nothing
    /// of the kind is put aside under another name: what the user made may still be in it.
    std::optional<Json> LoadChanged(std::initializer_list<const char*> lists);
    /// Not everything in the file could be used. The next Save keeps a copy of it.
    void KeepCopy() { m_keepCopy = true; }
    /// Fails with DBM_FILE_ERROR and leaves the file as it was.
    void Save(const Json& content);

private:
    std::string FreeName() const;

    std::string m_path;
    std::optional<std::string> m_known; ///< the content as it was loaded or saved last
    bool m_keepCopy = false;
};

} // namespace dbm
