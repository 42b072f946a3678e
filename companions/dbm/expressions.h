/// Expression databases: expressions and the items that set them.
#pragma once

#include "torv/abi/dbm.h"

#include <cstdint>
#include <string>
#include <vector>

namespace dbm {

struct Expression {
    int32_t kind = 0;
    int32_t high = 0;
    int32_t low = 0;
    std::string name;
};

struct Item {
    int32_t high = 0;
    int32_t low = 0;
    uint32_t value = 0;
    bool user = false;
    std::string id;
    std::string file; ///< full path of the icon file
    std::string caption;
    std::string singer;
    std::string developer;
};

struct Database {
    int32_t number = 0;
    bool user = false;
    std::string name;
    std::vector<Expression> expressions;
    std::vector<Item> items; ///< in the order in which they are listed

    /// The expression, or null.
    const Expression* Find(int32_t high, int32_t low) const;
    /// The item that `value` names in an expression, or null.
    const Item* FindItem(int32_t high, int32_t low, uint32_t value, bool user) const;
    /// The index of a user's item. Fails with DBM_READ_ONLY for one that came with the database, else DBM_NO_SUCH.
    size_t UserItem(int32_t high, int32_t low, uint32_t value) const;

    void Add(const Expression& expression);
    /// Fails with DBM_EXISTS when the value is taken among the user's or the database's own of its kind, or the name
    /// among the database's own. A user may give several items one name.
    void Add(const Item& item);
};

/// Fails with DBM_NO_SUCH.
const Database& DatabaseOf(const std::vector<Database>& databases, int32_t number);

} // namespace dbm
