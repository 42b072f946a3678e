#include "expression_json.h"

#include "failure.h"
#include "folders.h"

#include <algorithm>

namespace dbm {

namespace {

constexpr int64_t kMostCode = 127; // as much as one data byte of a message holds

/// A file in the folder or below it.
bool StaysBelow(const std::string& file) {
    return !file.empty() && file.front() != '/' && !HasBackslash(file) && file.find(':') == std::string::npos &&
           file.find("..") == std::string::npos;
}

/// All but where it belongs and its file.
std::optional<Item> ReadItem(const Json& entry) {
    const auto value = Integer(entry, "value", 1, UINT32_MAX);
    const auto id = Text(entry, "id"), caption = Text(entry, "caption");
    const auto singer = OptionalText(entry, "singer"), developer = OptionalText(entry, "developer");
    if (!value || !id || !caption || !singer || !developer)
        return std::nullopt;
    return Item{0, 0, static_cast<uint32_t>(*value), false, *id, {}, *caption, *singer, *developer};
}

/// A whole database, its number aside. `locate(item, entry)` sets an item's file or returns false.
template <typename Locate>
bool ReadDatabase(const Json& file, Database& database, Locate locate) {
    const auto name = Text(file, "name");
    if (!name || name->empty())
        return false;
    database.name = *name;
    for (const Json& entry : List(file, "expressions")) {
        const auto kind = Integer(entry, "kind", DBM_ATTACK, DBM_VIBRATO);
        const auto high = Integer(entry, "high", 0, kMostCode), low = Integer(entry, "low", 0, kMostCode);
        const auto caption = Text(entry, "name");
        if (!kind || !high || !low || !caption)
            return false;
        database.Add(
            Expression{static_cast<int32_t>(*kind), static_cast<int32_t>(*high), static_cast<int32_t>(*low), *caption});
        for (const Json& each : List(entry, "items")) {
            auto item = ReadItem(each);
            if (!item)
                return false;
            item->high = static_cast<int32_t>(*high);
            item->low = static_cast<int32_t>(*low);
            if (!locate(*item, each))
                return false;
            database.Add(*item);
        }
    }
    return !database.expressions.empty();
}

bool ReadKeptDatabase(const Json& entry, const std::string& userFolder, std::vector<Database>& databases) {
    const auto number = Integer(entry, "number", kOwnDatabase + 1, kLastDatabase);
    if (!number ||
        std::any_of(databases.begin(), databases.end(), [&](const Database& each) { return each.number == *number; }))
        return false;
    Database database;
    database.number = static_cast<int32_t>(*number);
    database.user = true;
    if (!ReadDatabase(entry, database, [&](Item& item, const Json&) {
            item.file = KeptIconFile(userFolder, database, item);
            return true;
        }))
        return false;
    databases.push_back(std::move(database));
    return true;
}

bool ReadKeptItem(const Json& entry, const std::string& userFolder, std::vector<Database>& databases) {
    const auto number = Integer(entry, "database", kOwnDatabase, kLastDatabase);
    const auto high = Integer(entry, "high", 0, kMostCode), low = Integer(entry, "low", 0, kMostCode);
    auto item = ReadItem(entry);
    if (!number || !high || !low || !item)
        return false;
    auto& database = const_cast<Database&>(DatabaseOf(databases, static_cast<int32_t>(*number)));
    item->high = static_cast<int32_t>(*high);
    item->low = static_cast<int32_t>(*low);
    item->user = true;
    if (!database.Find(item->high, item->low))
        return false;
    item->file = KeptIconFile(userFolder, database, *item);
    database.Add(*item);
    return true;
}

Json ItemToJson(const Item& item) {
    return {{"value", item.value},
            {"id", ToJsonText(item.id)},
            {"caption", ToJsonText(item.caption)},
            {"singer", ToJsonText(item.singer)},
            {"developer", ToJsonText(item.developer)}};
}

Json DatabaseToJson(const Database& database) {
    Json expressions = Json::array();
    for (const Expression& expression : database.expressions) {
        Json items = Json::array();
        for (const Item& item : database.items)
            if (!item.user && item.high == expression.high && item.low == expression.low)
                items.push_back(ItemToJson(item));
        expressions.push_back({{"kind", expression.kind},
                               {"high", expression.high},
                               {"low", expression.low},
                               {"name", ToJsonText(expression.name)},
                               {"items", std::move(items)}});
    }
    return {{"number", database.number}, {"name", ToJsonText(database.name)}, {"expressions", std::move(expressions)}};
}

/// What breaks a rule between entries leaves one out like an entry that makes no sense by itself.
template <typename Read>
bool Tried(Read read) {
    try {
        return read();
    } catch (const Failure&) {
        return false;
    }
}

} // namespace

std::string KeptIconFile(const std::string& userFolder, const Database& database, const Item& item) {
    const Expression* const expression = database.Find(item.high, item.low);
    Require(expression, DBM_NO_SUCH);
    return Join(userFolder, std::string("expressions/") + (item.user ? "u" : "d") + std::to_string(database.number) +
                                "-" + std::to_string(expression->kind) + "-" + std::to_string(item.value) + ".aic");
}

Database ReadDefinition(const Json& file, const std::string& folder) {
    Database database;
    const auto locate = [&](Item& item, const Json& entry) {
        const auto name = Text(entry, "file");
        if (!name || !StaysBelow(*name))
            return false;
        item.file = Join(folder, *name);
        return true;
    };
    Require(Tried([&] { return ReadDatabase(file, database, locate); }), DBM_FILE_ERROR);
    return database;
}

bool ReadUserExpressions(const Json& file, const std::string& userFolder, std::vector<Database>& databases) {
    bool good = true;
    for (const Json& entry : List(file, "databases"))
        good = Tried([&] { return ReadKeptDatabase(entry, userFolder, databases); }) && good;
    for (const Json& entry : List(file, "items"))
        good = Tried([&] { return ReadKeptItem(entry, userFolder, databases); }) && good;
    return good;
}

Json UserExpressionsToJson(const std::vector<Database>& databases) {
    Json file = {{"databases", Json::array()}, {"items", Json::array()}};
    for (const Database& database : databases) {
        if (database.user)
            file["databases"].push_back(DatabaseToJson(database));
        for (const Item& item : database.items) {
            if (!item.user)
                continue;
            Json entry = ItemToJson(item);
            entry["database"] = database.number;
            entry["high"] = item.high;
            entry["low"] = item.low;
            file["items"].push_back(std::move(entry));
        }
    }
    return file;
}

} // namespace dbm
