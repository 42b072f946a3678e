#include "user_file.h"

#include "failure.h"
#include "own_files.h"

#include <algorithm>

namespace dbm {

std::optional<Json> UserFile::LoadChanged(std::initializer_list<const char*> lists) {
    if (!Exists(m_path))
        return std::nullopt;
    auto content = ReadFile(m_path);
    if (!content) {
        KeepCopy(); // there, but not for us: saving fails rather than replacing what nobody has seen
        return std::nullopt;
    }
    if (content == m_known)
        return std::nullopt;
    Json parsed = Json::parse(*content, nullptr, false);
    if (parsed.is_object() && std::all_of(lists.begin(), lists.end(), [&](const char* list) {
            return !parsed.contains(list) || parsed[list].is_array();
        })) {
        m_known = std::move(content);
        m_keepCopy = false;
        return parsed;
    }
    if (!Rename(m_path, FreeName()))
        KeepCopy();
    return std::nullopt;
}

void UserFile::Save(const Json& content) {
    if (m_keepCopy && Exists(m_path)) {
        const auto old = ReadFile(m_path);
        Require(old.has_value(), DBM_FILE_ERROR);
        WriteFile(FreeName(), *old);
    }
    m_keepCopy = false;
    std::string text = content.dump(1) + "\n";
    WriteFile(m_path, text);
    m_known = std::move(text);
}

std::string UserFile::FreeName() const {
    std::string name = m_path + ".broken";
    for (int number = 2; Exists(name); ++number)
        name = m_path + ".broken" + std::to_string(number);
    return name;
}

} // namespace dbm
