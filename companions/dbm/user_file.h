/// A file with what the user made.
#pragma once

#include "json_text.h"

#include <initializer_list>
#include <string>

namespace dbm {

class UserFile {
public:
    explicit UserFile(std::string path) : m_path(std::move(path)) {}

    /// An object whose named members are lists where they are there; empty without a file. A file that is nothing of
    /// the kind is put aside under another name: what the user made may still be in it.
    Json Load(std::initializer_list<const char*> lists);
    /// Not everything in the file could be used. The next Save keeps a copy of it.
    void KeepCopy() { m_keepCopy = true; }
    /// Fails with DBM_FILE_ERROR and leaves the file as it was.
    void Save(const Json& content);

private:
    std::string FreeName() const;

    std::string m_path;
    bool m_keepCopy = false;
};

} // namespace dbm
