#include "torv/platform/afx/afx.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "values.h"

namespace {

using Numbers = std::vector<int>;

/// Walked both ways: the links of each direction must tell the same.
void CheckList(const CList<int>& list, const Numbers& expected) {
    Numbers forward, backward;
    for (POSITION at = list.GetHeadPosition(); at;)
        forward.push_back(list.GetNext(at));
    for (POSITION at = list.GetTailPosition(); at;)
        backward.insert(backward.begin(), list.GetPrev(at));
    CHECK(forward == expected);
    CHECK(backward == expected);
    CHECK(list.GetCount() == static_cast<int>(expected.size()));
}

Numbers NumbersOf(const CArray<int>& array) {
    Numbers numbers;
    for (int n = 0; n < array.GetSize(); ++n)
        numbers.push_back(array[n]);
    return numbers;
}

} // namespace

TEST_CASE("list: does what a vector does, and positions live through every change around them") {
    std::mt19937 random(1);
    CList<int> list;
    Numbers model;
    std::vector<POSITION> places; // of the model's elements
    for (int n = 0; n < 2000; ++n) {
        const std::size_t at = model.empty() ? 0 : random() % model.size();
        const auto add = [&](std::size_t index, POSITION place) {
            model.insert(std::next(model.begin(), static_cast<int>(index)), n);
            places.insert(std::next(places.begin(), static_cast<int>(index)), place);
        };
        const auto remove = [&](std::size_t index) {
            model.erase(std::next(model.begin(), static_cast<int>(index)));
            places.erase(std::next(places.begin(), static_cast<int>(index)));
        };
        const auto operation = random() % (model.size() < 8 ? 4 : 8); // it stays short, and is empty now and then
        if (operation == 0)
            add(0, list.AddHead(n));
        else if (operation == 1)
            add(model.size(), list.AddTail(n));
        else if (operation == 2)
            add(at, list.InsertBefore(model.empty() ? nullptr : places[at], n));
        else if (operation == 3)
            add(model.empty() ? 0 : at + 1, list.InsertAfter(model.empty() ? nullptr : places[at], n));
        else if (operation == 4) {
            CHECK(list.RemoveHead() == model.front());
            remove(0);
        } else if (operation == 5) {
            CHECK(list.RemoveTail() == model.back());
            remove(model.size() - 1);
        } else {
            for (; model.size() > 1 && random() % 4; remove(0))
                list.RemoveAt(places.front());
            list.SetAt(places.back(), model.back() = -n);
        }
        CheckList(list, model);
        for (std::size_t index = 0; index < model.size(); ++index) {
            CHECK(list.GetAt(places[index]) == model[index]);
            CHECK(list.FindIndex(static_cast<int>(index)) == places[index]);
            CHECK(list.Find(model[index]) == places[index]);
        }
    }
    CHECK(list.Find(list.GetHead(), list.GetHeadPosition()) == nullptr); // only after it
}

TEST_CASE("list: null positions and empty lists are harmless") {
    CList<int> list;
    POSITION none = nullptr;
    list.GetTail() = 9; // written nowhere
    CHECK(Values(list.GetHead(), list.GetTail(), list.GetNext(none), list.RemoveHead(), list.RemoveTail()) ==
          "0 0 0 0 0");
    list.RemoveAt(nullptr);
    list.SetAt(nullptr, 1);
    CheckList(list, {});
    for (const int number : {2, 1})
        list.InsertBefore(nullptr, number); // at the head
    list.InsertAfter(nullptr, 3);           // at the tail
    CheckList(list, {1, 2, 3});
    CHECK(list.FindIndex(-1) == nullptr);
    CHECK(list.FindIndex(3) == nullptr);
}

TEST_CASE("list: a copy has its own elements; a list may be appended to itself") {
    CList<int> list;
    for (int n : {1, 2, 3})
        list.AddTail(n);
    CList<int> copy(list);
    list.GetHead() = 10;
    CheckList(copy, {1, 2, 3});
    copy = list;
    list.RemoveAll();
    copy.AddTail(&copy);
    CheckList(copy, {10, 2, 3, 10, 2, 3});
    list.AddTail(7);
    list.AddTail(8);
    copy.AddHead(&list);
    CheckList(copy, {7, 8, 10, 2, 3, 10, 2, 3});
    CheckList(list, {7, 8});
}

TEST_CASE("array: growth, gaps and removal; out of range it reads an empty element and writes nothing") {
    CArray<int> array;
    CHECK(array.GetData() == nullptr);
    CHECK(array.GetUpperBound() == -1);
    CHECK(array.Add(1) == 0);
    CHECK(array.Add(array[0]) == 1); // an element of itself
    for (const int index : {-1, 2}) {
        array.SetAt(index, 5);
        array.RemoveAt(index);
        array[index] = 5;
        CHECK(array[index] == 0);
    }
    array.SetAtGrow(-1, 5);
    array.InsertAt(-1, 5);
    array.RemoveAt(0, 0);
    array.SetAtGrow(4, 5);
    CHECK(NumbersOf(array) == Numbers{1, 1, 0, 0, 5});
    array.InsertAt(1, array[4], 2);
    CHECK(NumbersOf(array) == Numbers{1, 5, 5, 1, 0, 0, 5});
    array.RemoveAt(3, 3);
    array.RemoveAt(2, 100); // as many as there are
    array.InsertAt(4, 9);
    CHECK(NumbersOf(array) == Numbers{1, 5, 0, 0, 9});
    CArray<int> other;
    other.Copy(array);
    CHECK(other.Append(array) == 5);
    array.SetSize(1);
    array.InsertAt(2, &other);
    CHECK(NumbersOf(array) == Numbers{1, 0, 1, 5, 0, 0, 9, 1, 5, 0, 0, 9});
    array.SetSize(-5);
    CHECK(array.IsEmpty());
}

TEST_CASE("map: finds by key and walks in the order in which the keys came, what was just walked removed or not") {
    std::mt19937 random(2);
    CMapWordToOb map;
    std::vector<CObject> objects(9);
    std::vector<WORD> order; // the model: keys as they came; each has the object of its number
    for (int n = 0; n < 3000; ++n) {
        const auto key = static_cast<WORD>(random() % objects.size());
        const auto found = std::find(order.begin(), order.end(), key);
        const bool isThere = found != order.end();
        CObject* value = &objects[0];
        CHECK(map.Lookup(key, value) == isThere);
        CHECK(value == &objects[isThere ? key : 0]);
        if (random() % 2) {
            map.SetAt(key, &objects[key]); // an old key keeps its place
            if (!isThere)
                order.push_back(key);
        } else {
            CHECK(map.RemoveKey(key) == isThere);
            if (isThere)
                order.erase(found);
        }
        std::vector<WORD> walked;
        CMapWordToOb copy(map);
        if (n % 2)
            copy = CMapWordToOb(copy);
        for (POSITION at = copy.GetStartPosition(); at;) {
            copy.GetNextAssoc(at, walked.emplace_back(), value);
            CHECK(value == &objects[walked.back()]);
            CHECK(copy.RemoveKey(walked.back()));
        }
        CHECK(walked == order);
        CHECK(map.GetCount() == static_cast<int>(order.size()));
    }
    map.RemoveAll();
    CHECK(map.GetStartPosition() == nullptr);
    CHECK(map[3] == nullptr); // put there, empty
    CHECK(map.GetCount() == 1);
}
