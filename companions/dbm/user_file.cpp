#include "user_file.h"

#include "failure.h"
#include "own_files.h"

#include <algorithm>

namespace dbm {

Json UserFile::Load(std::initializer_list<const char*> lists) {
    Json parsed = Json::object();
    if (!Exists(m_path))
        return parsed;
    const auto content = ReadFile(m_path);
    if (!content) {
        KeepCopy(); // there, but not for us: saving fails rather than replacing what nobody has seen
        return parsed;
    }
    parsed = Json::parse(*content, nullptr, false);
    if (parsed.is_object() && std::all_of(lists.begin(), lists.end(), [&](const char* list) {
            return !parsed.contains(list) || parsed[list].is_array();
        }))
        return parsed;
    if (!Rename(m_path, FreeName()))
        KeepCopy();
    return Json::object();
}

void UserFile::Save(const Json& content) {
    if (m_keepCopy && Exists(m_path)) {
        const auto old = ReadFile(m_path);
        Require(old.has_value(), DBM_FILE_ERROR);
        WriteFile(FreeName(), *old);
    }
    m_keepCopy = false;
    WriteFile(m_path, content.dump(1) + "\n");
}

std::string UserFile::FreeName() const {
    std::string name = m_path + ".broken";
    for (int number = 2; Exists(name); ++number)
        name = m_path + ".broken" + std::to_string(number);
    return name;
}

} // namespace dbm
