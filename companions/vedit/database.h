/// The database manager's library beside ours. A host that has loaded it too shares its state with us.
#pragma once

#include "torv/abi/dbm.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vedit {

/// Names and values of a virtual voice, in the database's order.
using Settings = std::vector<std::pair<std::string, std::string>>;

class Database {
public:
    /// Null without a library that is complete and can be made ready.
    static std::unique_ptr<Database> Open();
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Fails with VEDIT_NO_SUCH.
    Settings Read(int32_t language, int32_t program) const;
    /// All of them or none.
    void Change(int32_t language, int32_t program, const Settings& changes) const;

private:
    Database() = default;
    bool Load();

    void* m_module = nullptr;
    DBMDeleteProc m_delete = nullptr;
    DBMGetVirtualVoiceParametersProc m_get = nullptr;
    DBMSetVirtualVoiceParametersProc m_set = nullptr;
    bool m_ready = false;
};

} // namespace vedit
