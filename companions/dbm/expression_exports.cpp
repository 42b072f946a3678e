// The entry points about expressions and their items.
#include "session.h"
#include "text_rules.h"

#include <algorithm>

using namespace dbm;

namespace {

/// Hands out one more list, which the host gives back.
template <typename Out, typename List>
void HandOut(std::vector<std::unique_ptr<Out>>& lists, std::unique_ptr<Out> list, const List** result) {
    *result = list->Get();
    lists.push_back(std::move(list));
}

template <typename Out, typename List>
void GiveBack(std::vector<std::unique_ptr<Out>>& lists, const List* list) {
    Require(list && std::erase_if(lists, [&](const auto& each) { return each->Get() == list; }), DBM_BAD_ARGUMENT);
}

} // namespace

COMPANION_EXPORT int32_t DBM_CALL DBM_AddExp(const char* file) {
    return WithSession([&](Session& session) { session.expressions.AddDatabase(TakenPath(file)); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_DeleteExp(int32_t database) {
    return WithSession([&](Session& session) { session.expressions.DeleteDatabase(database); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_GetExpDB(const DBMExpDatabaseList** result) {
    return WithSession([&](Session& session) {
        Require(result, DBM_BAD_ARGUMENT);
        session.databases = std::make_unique<DatabasesOut>(session.expressions.All(), [](const Database& each) {
            return DBMExpDatabase{each.number, each.user, each.name.c_str()};
        });
        *result = session.databases->Get();
    });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_GetVirtualExpInfo(int32_t database, const DBMExpInfo** result) {
    return WithSession([&](Session& session) {
        Require(result, DBM_BAD_ARGUMENT);
        const auto& expressions = DatabaseOf(session.expressions.All(), database).expressions;
        HandOut(session.infos,
                std::make_unique<ExpressionsOut>(
                    expressions,
                    [](const Expression& each) {
                        return DBMExpression{each.kind, each.high, each.low, each.name.c_str()};
                    }),
                result);
    });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_DeleteVirtualExpInfo(const DBMExpInfo* info) {
    return WithSession([&](Session& session) { GiveBack(session.infos, info); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_GetVirtualExpItems(int32_t database, int32_t high, int32_t low,
                                                         const DBMExpItems** result) {
    return WithSession([&](Session& session) {
        Require(result, DBM_BAD_ARGUMENT);
        const Database& named = DatabaseOf(session.expressions.All(), database);
        Require(named.Find(high, low), DBM_NO_SUCH);
        std::vector<Item> items;
        std::copy_if(named.items.begin(), named.items.end(), std::back_inserter(items),
                     [&](const Item& each) { return each.high == high && each.low == low; });
        HandOut(session.items,
                std::make_unique<ItemsOut>(
                    std::move(items),
                    [](const Item& each) {
                        return DBMExpItem{
                            each.value,           each.user,           each.id.c_str(),       each.file.c_str(),
                            each.caption.c_str(), each.singer.c_str(), each.developer.c_str()};
                    }),
                result);
    });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_DeleteVirtualExpItems(const DBMExpItems* items) {
    return WithSession([&](Session& session) { GiveBack(session.items, items); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_SetVirtualExpItemCaption(int32_t database, int32_t high, int32_t low,
                                                               uint32_t value, const char* caption) {
    return WithSession(
        [&](Session& session) { session.expressions.SetCaption(database, high, low, value, Taken(caption)); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_CreateVirtualExpItem(int32_t database, int32_t high, int32_t low, uint32_t value,
                                                           const char* idString, const char* fileName,
                                                           const char* caption, const char* singerName,
                                                           const char* developerName) {
    return WithSession([&](Session& session) {
        Require(value > 0, DBM_BAD_ARGUMENT);
        session.expressions.Create(database, Item{high, low, value, true, Taken(idString), TakenPath(fileName),
                                                  Taken(caption), Taken(singerName), Taken(developerName)});
    });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_DeleteVirtualExpItem(int32_t database, int32_t high, int32_t low,
                                                           uint32_t value) {
    return WithSession([&](Session& session) { session.expressions.Delete(database, high, low, value); });
}
