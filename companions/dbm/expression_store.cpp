#include "expression_store.h"

#include "expression_json.h"
#include "failure.h"
#include "folders.h"
#include "own_files.h"

#include <algorithm>
#include <utility>

namespace dbm {

namespace {

/// Icon files of a change under way. They go again unless it succeeds.
class CopiedIcons {
public:
    CopiedIcons() = default;
    ~CopiedIcons() {
        for (const std::string& file : m_files)
            Remove(file);
    }
    CopiedIcons(const CopiedIcons&) = delete;
    CopiedIcons& operator=(const CopiedIcons&) = delete;

    void Copy(const std::string& from, const std::string& to) {
        const auto content = ReadFile(from);
        Require(content.has_value(), DBM_FILE_ERROR);
        m_files.push_back(to);
        WriteFile(to, *content);
    }
    void Keep() { m_files.clear(); }

private:
    std::vector<std::string> m_files;
};

Database& Named(std::vector<Database>& databases, int32_t number) {
    return const_cast<Database&>(DatabaseOf(databases, number));
}

} // namespace

ExpressionStore::ExpressionStore(const std::string& ownFolder, std::string userFolder)
    : m_userFolder(std::move(userFolder)),
      m_own(ReadDefinition(ReadJson(Join(ownFolder, "expressions.json")), ownFolder)),
      m_file(Join(m_userFolder, "expressions.json")) {
    m_own.number = kOwnDatabase;
    m_databases = {m_own};
    Read();
}

void ExpressionStore::Read() {
    const auto file = m_file.LoadChanged({"databases", "items"});
    if (!file)
        return;
    std::vector<Database> databases{m_own};
    if (!ReadUserExpressions(*file, m_userFolder, databases))
        m_file.KeepCopy();
    std::sort(databases.begin(), databases.end(),
              [](const Database& left, const Database& right) { return left.number < right.number; });
    m_databases.swap(databases);
}

template <typename Edit>
void ExpressionStore::Change(Edit edit) {
    const torv::SaveTurn turn = m_file.TakeTurn();
    Read();
    std::vector<Database> changed = m_databases;
    edit(changed);
    m_file.Save(UserExpressionsToJson(changed));
    m_databases.swap(changed);
}

void ExpressionStore::AddDatabase(const std::string& definitionFile) {
    Database database = ReadDefinition(ReadJson(definitionFile), FolderOf(definitionFile));
    database.user = true;
    CopiedIcons icons;
    Change([&](std::vector<Database>& databases) {
        auto place = databases.begin();
        for (database.number = kOwnDatabase; place != databases.end() && place->number == database.number; ++place)
            ++database.number;
        Require(database.number <= kLastDatabase, DBM_FULL);
        for (Item& item : database.items) {
            const std::string source = std::exchange(item.file, KeptIconFile(m_userFolder, database, item));
            icons.Copy(source, item.file);
        }
        databases.insert(place, database);
    });
    icons.Keep();
}

void ExpressionStore::DeleteDatabase(int32_t number) {
    Database deleted;
    Change([&](std::vector<Database>& databases) {
        deleted = DatabaseOf(databases, number);
        Require(deleted.user, DBM_READ_ONLY);
        std::erase_if(databases, [&](const Database& each) { return each.number == number; });
    });
    for (const Item& item : deleted.items)
        Remove(item.file);
}

void ExpressionStore::Create(int32_t database, Item item) {
    CopiedIcons icons;
    Change([&](std::vector<Database>& databases) {
        Database& changed = Named(databases, database);
        const std::string source = std::exchange(item.file, KeptIconFile(m_userFolder, changed, item));
        changed.Add(item); // refuses what exists, before its icon file is written over
        icons.Copy(source, item.file);
    });
    icons.Keep();
}

void ExpressionStore::Delete(int32_t database, int32_t high, int32_t low, uint32_t value) {
    std::string file;
    Change([&](std::vector<Database>& databases) {
        Database& changed = Named(databases, database);
        const size_t index = changed.UserItem(high, low, value);
        file = changed.items[index].file;
        changed.items.erase(changed.items.begin() + static_cast<std::ptrdiff_t>(index));
    });
    Remove(file);
}

void ExpressionStore::SetCaption(int32_t database, int32_t high, int32_t low, uint32_t value,
                                 const std::string& caption) {
    Change([&](std::vector<Database>& databases) {
        Database& changed = Named(databases, database);
        changed.items[changed.UserItem(high, low, value)].caption = caption;
    });
}

} // namespace dbm
