#include "torv/score/cross_reference_map.h"

#include "allocation_failure.h"
#include "values.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <new>
#include <string>
#include <utility>

namespace {

struct CrossReferences : CCrossReferenceMap {
    using CCrossReferenceMap::AddElementMap;
    using CCrossReferenceMap::RemoveElementMap;
};

/// "id name," of every pair, in order; walked back too.
std::string PairsOf(const CCrossReferenceMap& map) {
    std::string pairs, back;
    DWORD id = 0;
    CString name;
    for (POSITION at = map.GetHeadPosition(); map.GetNext(at, id, name);)
        pairs += Values(id, name) + ',';
    for (POSITION at = map.GetTailPosition(); map.GetPrev(at, id, name);)
        back = Values(id, name) + ',' + back;
    CHECK(back == pairs);
    CHECK(std::count(pairs.begin(), pairs.end(), ',') == map.GetCount());
    CHECK(map.IsEmpty() == pairs.empty());
    return pairs;
}

/// The pair that an id and one that a name finds, "-" for none.
std::string Found(const CCrossReferenceMap& map, DWORD id, const char* name) {
    CString nameOfId = "-";
    DWORD idOfName = 99;
    CHECK(map.Lookup(id, nameOfId) == (map.Find(id) != nullptr));
    CHECK(map.Lookup(name, idOfName) == (map.Find(name) != nullptr));
    return Values(nameOfId, idOfName);
}

} // namespace

TEST_CASE("cross references: pairs stand in order and are found from either side") {
    CrossReferences map;
    const POSITION b = map.AddTail(0x10, "b");
    const POSITION d = map.AddTail(0x120, "d"); // neighbours in a table of 17
    const POSITION a = map.AddHead(1, "A");
    map.InsertAfter(b, 2, "a");
    const POSITION z = map.InsertBefore(a, 3, nullptr);
    CHECK(PairsOf(map) == "3 ,1 A,16 b,2 a,288 d,");
    CHECK(Found(map, 0x10, "b") == "b 16");
    CHECK(Found(map, 0x120, "d") == "d 288");
    CHECK(Found(map, 2, "A") == "a 1"); // case counts
    CHECK(Found(map, 0x11, "B") == "- 99");
    CHECK(Values(map.Find(static_cast<const char*>(nullptr)), map.Find(""), map.FindIndex(4), map.FindIndex(5),
                 map.FindIndex(-1)) == Values(z, z, d, 0, 0));
    DWORD id = 77;
    CString name;
    const auto pair = [&](int isThere) { return Values(isThere, id, name); };
    CHECK(Values{pair(map.GetHead(id, name)), pair(map.GetTail(id, name)), pair(map.GetAt(a, id, name))} ==
          "1 3  1 288 d 1 1 A");
    CHECK(Values{map.RemoveHead(), map.RemoveTail(), PairsOf(map)} == "1 1 1 A,16 b,2 a,");
    CHECK(Found(map, 3, "d") == "- 99");
    map.RemoveAll();
    CHECK(PairsOf(map) == "");
    CHECK(Found(map, 0x10, "b") == "- 99");
    map.AddTail(0x10, "b again");
    CHECK(Found(map, 0x10, "b again") == "b again 16");
}

TEST_CASE("cross references: an empty map and null positions") {
    CrossReferences map;
    DWORD id = 77;
    CString name = "kept";
    POSITION none = nullptr;
    CHECK(Values(map.GetHead(id, name), map.GetTail(id, name), map.RemoveHead(), map.RemoveTail()) == "0 0 0 0");
    map.AddTail(1, "one");
    CHECK(Values(map.GetNext(none, id, name), map.GetPrev(none, id, name), map.GetAt(none, id, name)) == "0 0 0");
    CHECK(Values(id, name) == "77 kept");
    CHECK(Values(map.InsertBefore(none, 2, "two"), map.InsertAfter(none, 2, "two")) == "0 0");
    map.SetAt(none, 2, "two");
    map.RemoveAt(none);
    map.AddElementMap(none, 2, "two");
    map.RemoveElementMap(none);
    CHECK(PairsOf(map) == "1 one,");
    CHECK(Found(map, 2, "two") == "- 99");
}

TEST_CASE("cross references: of pairs with one key the last entered is found") {
    CrossReferences map;
    const POSITION first = map.AddTail(5, "first");
    const POSITION second = map.AddHead(5, "second"); // the last entered, though it stands first
    CHECK(Found(map, 5, "first") == "second 5");
    SUBCASE("removing it leaves the earlier in the list, out of reach by that key") {
        map.RemoveAt(second);
        CHECK(PairsOf(map) == "5 first,");
        CHECK(Found(map, 5, "first") == "- 5");
        map.AddElementMap(first, 5, "first"); // entered anew
        CHECK(Found(map, 5, "first") == "first 5");
    }
    SUBCASE("removing the earlier takes only the key that still finds it") {
        map.RemoveAt(first);
        CHECK(Found(map, 5, "second") == "second 5");
        CHECK(Found(map, 5, "first") == "second 99");
    }
}

TEST_CASE("cross references: an overwritten pair is found by its old keys too, until it is removed") {
    CrossReferences map;
    const POSITION other = map.AddTail(9, "other");
    const POSITION position = map.AddTail(1, "one");
    map.SetAt(position, 2, "two");
    map.SetAt(position, 2, "two");
    map.SetAt(position, 3, "three");
    map.SetAt(position, 3, "one"); // the name is an old key again
    CHECK(PairsOf(map) == "9 other,3 one,");
    for (const auto& [id, name] : {std::pair{1u, "one"}, {2u, "two"}, {3u, "three"}})
        CHECK(Found(map, id, name) == "one 3");
    SUBCASE("removed") { map.RemoveAt(position); }
    SUBCASE("its keys removed") {
        map.RemoveElementMap(position);
        CHECK(PairsOf(map) == "9 other,3 one,");
    }
    SUBCASE("an old key entered for another") {
        map.SetAt(other, 2, "two");
        map.RemoveAt(position);
        CHECK(Found(map, 2, "two") == "two 2");
        map.RemoveAt(other);
        CHECK(Found(map, 9, "other") == "- 99");
    }
    for (const auto& [id, name] : {std::pair{1u, "one"}, {2u, "two"}, {3u, "three"}})
        CHECK(Found(map, id, name) == "- 99");
}

TEST_CASE("cross references: memory that cannot be had changes nothing") {
    const std::string name(100, 'n');
    const std::string other(101, 'm');
    FailEachAllocation([&](AllocationFailure& failure) {
        CrossReferences map;
        const POSITION first = map.AddTail(1, name.c_str());
        const POSITION added = failure.During([&] { return map.AddHead(1, other.c_str()); });
        CHECK((added == nullptr) == failure.HasHappened());
        CHECK(map.Find(DWORD{1}) == (added ? added : first)); // the key was not taken from the pair that has it
        CHECK(map.Find(other.c_str()) == added);
        CHECK(map.GetCount() == (added ? 2 : 1));
    });
    FailEachAllocation([&](AllocationFailure& failure) {
        CrossReferences map;
        const POSITION first = map.AddTail(1, name.c_str());
        POSITION at = first;
        DWORD id = 77;
        CString got;
        const bool done = failure.During([&] {
            try {
                map.SetAt(at, 2, other.c_str());
            } catch (const std::bad_alloc&) {
                return false; // it has no result to say so
            }
            return map.GetNext(at, id, got) == 1;
        });
        CHECK(done == !failure.HasHappened());
        CHECK(Values(id, at) == Values(done ? 2 : 77, done ? nullptr : first));
        const bool isSet = map.Find(DWORD{2}) != nullptr;
        CHECK(PairsOf(map) == (isSet ? "2 " + other : "1 " + name) + ',');
        CHECK((map.Find(other.c_str()) != nullptr) == isSet);
    });
}
