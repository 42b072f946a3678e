#include "torv/score/cross_reference_map.h"

#include <doctest/doctest.h>

#include <string>
#include <vector>

namespace {

struct CrossReferences : CCrossReferenceMap {
    using CCrossReferenceMap::AddElementMap;
    using CCrossReferenceMap::RemoveElementMap;
};

/// "id name" of every pair, in order; walked back too.
std::vector<std::string> PairsOf(const CCrossReferenceMap& map) {
    std::vector<std::string> pairs, back;
    DWORD id = 0;
    CString name;
    for (POSITION at = map.GetHeadPosition(); at;) {
        REQUIRE(map.GetNext(at, id, name) == 1);
        pairs.push_back(std::to_string(id) + ' ' + name.GetStdString());
    }
    for (POSITION at = map.GetTailPosition(); at;) {
        REQUIRE(map.GetPrev(at, id, name) == 1);
        back.insert(back.begin(), std::to_string(id) + ' ' + name.GetStdString());
    }
    CHECK(back == pairs);
    CHECK(map.GetCount() == static_cast<int>(pairs.size()));
    return pairs;
}

using Pairs = std::vector<std::string>;

} // namespace

TEST_CASE("cross references: pairs stand in order and are found from either side") {
    CrossReferences map;
    const POSITION b = map.AddTail(0x10, "b");
    const POSITION d = map.AddTail(0x120, "d"); // neighbours in a table of 17
    const POSITION a = map.AddHead(1, "A");
    const POSITION c = map.InsertAfter(b, 2, "a");
    const POSITION z = map.InsertBefore(a, 3, nullptr);
    CHECK(PairsOf(map) == Pairs{"3 ", "1 A", "16 b", "2 a", "288 d"});
    CHECK((map.Find(DWORD{0x10}) == b && map.Find(DWORD{0x120}) == d && !map.Find(DWORD{0x11})));
    CHECK((map.Find("A") == a && map.Find("a") == c && map.Find("") == z && !map.Find("B")));
    CHECK(map.Find(static_cast<const char*>(nullptr)) == z);
    CHECK((map.FindIndex(4) == d && !map.FindIndex(5) && !map.FindIndex(-1)));
    DWORD id = 77;
    CString name = "kept";
    CHECK((map.Lookup("nobody", id) == 0 && map.Lookup(DWORD{99}, name) == 0 && id == 77 && name == "kept"));
    CHECK((map.Lookup("d", id) == 1 && id == 0x120 && map.Lookup(DWORD{2}, name) == 1 && name == "a"));
    CHECK((map.GetHead(id, name) == 1 && id == 3 && name == "" && map.GetTail(id, name) == 1 && id == 0x120));
    CHECK((map.GetAt(a, id, name) == 1 && id == 1 && name == "A"));

    CHECK((map.RemoveHead() == 1 && map.RemoveTail() == 1 && PairsOf(map) == Pairs{"1 A", "16 b", "2 a"}));
    CHECK((!map.Find("") && !map.Find(DWORD{3}) && !map.Find("d") && !map.Find(DWORD{0x120})));
    map.RemoveAll();
    CHECK((map.IsEmpty() && !map.Find(DWORD{0x10}) && !map.Find("b")));
    map.AddTail(0x10, "b again");
    CHECK((map.Lookup("b again", id) == 1 && PairsOf(map) == Pairs{"16 b again"}));
}

TEST_CASE("cross references: an empty map and null positions") {
    CrossReferences map;
    DWORD id = 77;
    CString name = "kept";
    POSITION none = nullptr;
    CHECK((map.GetHead(id, name) == 0 && map.GetTail(id, name) == 0 && map.RemoveHead() == 0 && map.RemoveTail() == 0));
    map.AddTail(1, "one");
    CHECK((map.GetNext(none, id, name) == 0 && map.GetPrev(none, id, name) == 0 && map.GetAt(none, id, name) == 0));
    CHECK((id == 77 && name == "kept"));
    CHECK((!map.InsertBefore(none, 2, "two") && !map.InsertAfter(none, 2, "two")));
    map.SetAt(none, 2, "two");
    map.RemoveAt(none);
    map.AddElementMap(none, 2, "two");
    map.RemoveElementMap(none);
    CHECK((PairsOf(map) == Pairs{"1 one"} && !map.Find(DWORD{2}) && !map.Find("two")));
}

TEST_CASE("cross references: of pairs with one key the last entered is found") {
    CrossReferences map;
    const POSITION first = map.AddTail(5, "first");
    const POSITION second = map.AddHead(5, "second"); // the last entered, though it stands first
    CHECK((map.Find(DWORD{5}) == second && map.Find("first") == first && map.GetCount() == 2));
    SUBCASE("removing it leaves the earlier in the list, out of reach by that key") {
        map.RemoveAt(second);
        CHECK((PairsOf(map) == Pairs{"5 first"} && !map.Find(DWORD{5}) && map.Find("first") == first));
        map.AddElementMap(first, 5, "first"); // entered anew
        CHECK(map.Find(DWORD{5}) == first);
    }
    SUBCASE("removing the earlier takes only the key that still finds it") {
        map.RemoveAt(first);
        CHECK((map.Find(DWORD{5}) == second && map.Find("second") == second && !map.Find("first")));
    }
}

TEST_CASE("cross references: an overwritten pair is found by its old keys too, until it is removed") {
    CrossReferences map;
    const POSITION other = map.AddTail(9, "other");
    const POSITION position = map.AddTail(1, "one");
    map.SetAt(position, 2, "two");
    map.SetAt(position, 2, "two");
    map.SetAt(position, 3, "one"); // the name is an old key again
    CHECK(PairsOf(map) == Pairs{"9 other", "3 one"});
    DWORD id = 0;
    CString name;
    for (const DWORD key : {1u, 2u, 3u})
        CHECK((map.Find(key) == position && map.Lookup(key, name) == 1 && name == "one"));
    for (const char* const key : {"one", "two"})
        CHECK((map.Find(key) == position && map.Lookup(key, id) == 1 && id == 3));

    SUBCASE("removed") { map.RemoveAt(position); }
    SUBCASE("its keys removed") {
        map.RemoveElementMap(position);
        CHECK(PairsOf(map) == Pairs{"9 other", "3 one"});
    }
    SUBCASE("an old key entered for another") {
        map.SetAt(other, 2, "two");
        map.RemoveAt(position);
        CHECK((map.Find(DWORD{2}) == other && map.Find("two") == other));
        map.RemoveAt(other);
        CHECK((map.IsEmpty() && !map.Find(DWORD{9}) && !map.Find("other")));
    }
    for (const DWORD key : {1u, 2u, 3u})
        CHECK(!map.Find(key));
    for (const char* const key : {"one", "two"})
        CHECK(!map.Find(key));
}

TEST_CASE("cross references: keys outlive the growth of the tables") {
    CrossReferences map;
    constexpr DWORD kCount = 100'000;
    std::vector<POSITION> positions;
    for (DWORD i = 0; i < kCount; ++i)
        positions.push_back(map.AddTail(i * 16, std::to_string(i).c_str()));
    int wrong = 0;
    for (DWORD i = 0; i < kCount; ++i)
        wrong += map.Find(i * 16) != positions[i] || map.Find(std::to_string(i).c_str()) != positions[i];
    CHECK(wrong == 0);
    for (DWORD i = 0; i < kCount; i += 2)
        map.RemoveAt(positions[i]);
    for (DWORD i = 0; i < kCount; ++i) {
        const POSITION expected = i % 2 ? positions[i] : nullptr;
        wrong += map.Find(i * 16) != expected || map.Find(std::to_string(i).c_str()) != expected;
    }
    CHECK((wrong == 0 && map.GetCount() == static_cast<int>(kCount / 2)));
}
