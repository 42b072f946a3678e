#include "expressions.h"

#include "failure.h"

#include <algorithm>

namespace dbm {

const Expression* Database::Find(int32_t high, int32_t low) const {
    const auto found = std::find_if(expressions.begin(), expressions.end(),
                                    [&](const Expression& each) { return each.high == high && each.low == low; });
    return found == expressions.end() ? nullptr : &*found;
}

const Item* Database::FindItem(int32_t high, int32_t low, uint32_t value, bool ofUser) const {
    const auto found = std::find_if(items.begin(), items.end(), [&](const Item& each) {
        return each.high == high && each.low == low && each.value == value && each.user == ofUser;
    });
    return found == items.end() ? nullptr : &*found;
}

size_t Database::UserItem(int32_t high, int32_t low, uint32_t value) const {
    const Item* const item = FindItem(high, low, value, true);
    if (!item)
        Fail(FindItem(high, low, value, false) ? DBM_READ_ONLY : DBM_NO_SUCH);
    return static_cast<size_t>(item - items.data());
}

void Database::Add(const Expression& expression) {
    Require(!Find(expression.high, expression.low), DBM_EXISTS);
    expressions.push_back(expression);
}

void Database::Add(const Item& item) {
    const Expression* const expression = Find(item.high, item.low);
    Require(expression, DBM_NO_SUCH);
    for (const Item& each : items) {
        if (Find(each.high, each.low)->kind != expression->kind)
            continue;
        if (each.user == item.user)
            Require(each.value != item.value && (item.user || each.id != item.id), DBM_EXISTS);
    }
    // What came with the database keeps its order, at the front.
    const auto before = [](const Item& left, const Item& right) {
        return left.user == right.user ? left.user && left.value < right.value : right.user;
    };
    items.insert(std::upper_bound(items.begin(), items.end(), item, before), item);
}

const Database& DatabaseOf(const std::vector<Database>& databases, int32_t number) {
    const auto found =
        std::find_if(databases.begin(), databases.end(), [&](const Database& each) { return each.number == number; });
    Require(found != databases.end(), DBM_NO_SUCH);
    return *found;
}

} // namespace dbm
