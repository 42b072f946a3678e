#include "torv/platform/afx/afx.h"

#include <doctest/doctest.h>

#include <string>
#include <vector>

namespace {

using List = CList<int>;
using Numbers = std::vector<int>;

Numbers Forward(const List& list) {
    Numbers numbers;
    for (POSITION at = list.GetHeadPosition(); at;)
        numbers.push_back(list.GetNext(at));
    return numbers;
}

/// Walked from the tail and turned round: the links of both directions must tell the same.
Numbers Backward(const List& list) {
    Numbers numbers;
    for (POSITION at = list.GetTailPosition(); at;)
        numbers.insert(numbers.begin(), list.GetPrev(at));
    return numbers;
}

void CheckList(const List& list, const Numbers& expected) {
    CHECK(Forward(list) == expected);
    CHECK(Backward(list) == expected);
    CHECK(list.GetCount() == static_cast<int>(expected.size()));
}

Numbers NumbersOf(const CArray<int>& array) {
    Numbers numbers;
    for (int n = 0; n < array.GetSize(); ++n)
        numbers.push_back(array[n]);
    return numbers;
}

} // namespace

TEST_CASE("list: positions live through every change around them") {
    List list(10);
    const POSITION two = list.AddTail(2);
    const POSITION four = list.AddTail(4);
    const POSITION one = list.AddHead(1);
    list.InsertAfter(two, 3);
    list.InsertBefore(one, 0);
    list.InsertAfter(four, 5);
    CheckList(list, {0, 1, 2, 3, 4, 5});
    CHECK(list.GetAt(two) == 2);
    CHECK(list.Find(3) == list.FindIndex(3));
    CHECK(list.Find(1, one) == nullptr); // only after it
    list.SetAt(two, 20);
    list.RemoveAt(one);
    CheckList(list, {0, 20, 3, 4, 5});
    CHECK(list.GetAt(two) == 20);
    CHECK(list.GetAt(four) == 4);
    CHECK(list.RemoveHead() == 0);
    CHECK(list.RemoveTail() == 5);
    list.RemoveAt(two);
    list.RemoveAt(four);
    CheckList(list, {3});
    list.RemoveAt(list.GetHeadPosition());
    CheckList(list, {});
}

TEST_CASE("list: null positions and empty lists are harmless") {
    List list;
    POSITION none = nullptr;
    CHECK(list.GetHead() == 0);
    list.GetTail() = 9; // written nowhere
    CHECK(list.GetTail() == 0);
    CHECK(list.GetNext(none) == 0);
    CHECK(none == nullptr);
    CHECK(list.RemoveHead() == 0);
    CHECK(list.RemoveTail() == 0);
    list.RemoveAt(nullptr);
    list.SetAt(nullptr, 1);
    CheckList(list, {});
    list.InsertBefore(nullptr, 2);
    list.InsertBefore(nullptr, 1); // at the head
    list.InsertAfter(nullptr, 3);  // at the tail
    CheckList(list, {1, 2, 3});
    CHECK(list.FindIndex(-1) == nullptr);
    CHECK(list.FindIndex(3) == nullptr);
}

TEST_CASE("list: a copy has its own elements; appending a list to itself doubles it") {
    List list;
    for (int n : {1, 2, 3})
        list.AddTail(n);
    List copy(list);
    list.GetHead() = 10;
    CheckList(copy, {1, 2, 3});
    copy = list;
    list.RemoveAll();
    CheckList(copy, {10, 2, 3});
    copy.AddTail(&copy);
    CheckList(copy, {10, 2, 3, 10, 2, 3});
    List other;
    other.AddTail(7);
    other.AddTail(8);
    copy.RemoveAll();
    copy.AddTail(1);
    copy.AddHead(&other);
    CheckList(copy, {7, 8, 1});

    CStringList names;
    names.AddTail("alpha");
    names.AddTail(CString("beta"));
    CHECK(names.Find("beta") == names.GetTailPosition());
    CObList objects(10);
    CHECK(objects.GetHead() == nullptr);
}

TEST_CASE("array: growth, gaps and removal") {
    CArray<int> array;
    CHECK(array.Add(1) == 0);
    CHECK(array.Add(array[0]) == 1); // an element of itself
    array.SetAtGrow(4, 5);
    CHECK(NumbersOf(array) == Numbers{1, 1, 0, 0, 5});
    array.InsertAt(1, array[4], 2);
    CHECK(NumbersOf(array) == Numbers{1, 5, 5, 1, 0, 0, 5});
    array.RemoveAt(3, 3);
    CHECK(NumbersOf(array) == Numbers{1, 5, 5, 5});
    array.RemoveAt(2, 100); // as many as there are
    CHECK(NumbersOf(array) == Numbers{1, 5});
    array.InsertAt(4, 9);
    CHECK(NumbersOf(array) == Numbers{1, 5, 0, 0, 9});
    CArray<int> other;
    other.Copy(array);
    CHECK(other.Append(array) == 5);
    CHECK(other.GetSize() == 10);
    array.InsertAt(1, &other);
    CHECK(array.GetSize() == 15);
    array.SetSize(1);
    CHECK(NumbersOf(array) == Numbers{1});
    CHECK(other.GetAt(4) == 9);
}

TEST_CASE("array: an index out of range reads an empty element and writes nothing") {
    CArray<int> array;
    CHECK(array.GetData() == nullptr);
    CHECK(array.GetUpperBound() == -1);
    array.Add(7);
    array.SetAt(1, 5);
    array.SetAt(-1, 5);
    array[3] = 5;
    array.SetAtGrow(-1, 5);
    array.InsertAt(-1, 5);
    array.RemoveAt(-1);
    array.RemoveAt(1);
    CHECK(array[3] == 0);
    CHECK(array[-1] == 0);
    CHECK(NumbersOf(array) == Numbers{7});
    array.SetSize(-5);
    CHECK(array.IsEmpty());

    CStringArray names;
    names.Add("a");
    CHECK(names[0] == "a");
    CHECK(names[1] == "");
}

TEST_CASE("map: finds by key and walks in the order in which the keys came") {
    CMap<CString, LPCSTR, int, int> map(10);
    const auto walk = [&map] {
        std::string text;
        for (POSITION at = map.GetStartPosition(); at;) {
            CString key;
            int value = 0;
            map.GetNextAssoc(at, key, value);
            text += std::string(key) + "=" + std::to_string(value) + " ";
        }
        return text;
    };
    for (int n = 0; n < 5; ++n)
        map.SetAt(std::string(1, static_cast<char>('e' - n)).c_str(), n);
    map.SetAt("d", 10); // an old key keeps its place
    CHECK(walk() == "e=0 d=10 c=2 b=3 a=4 ");
    CHECK(map.RemoveKey("e"));
    CHECK(map.RemoveKey("c"));
    CHECK(map.RemoveKey("a"));
    CHECK_FALSE(map.RemoveKey("a"));
    CHECK(walk() == "d=10 b=3 ");
    ++map["z"];
    CHECK(walk() == "d=10 b=3 z=1 ");

    int value = 42;
    CHECK_FALSE(map.Lookup("c", value));
    CHECK(value == 42);
    CHECK(map.Lookup("b", value));
    CHECK(value == 3);
    const auto copy = map;
    map.RemoveAll();
    CHECK(map.GetStartPosition() == nullptr);
    CHECK(copy.GetCount() == 3);
    map = copy;
    CHECK(walk() == "d=10 b=3 z=1 ");
    CHECK(map.RemoveKey("b")); // between two others, then its right neighbour, which must know its new left one
    CHECK(map.RemoveKey("z"));
    CHECK(walk() == "d=10 ");
}

TEST_CASE("map: the association just walked may be removed") {
    CMapWordToOb map(10);
    CObject objects[100];
    for (WORD key = 1; key <= 100; ++key)
        map.SetAt(key, &objects[key - 1]);
    int right = 0;
    for (POSITION at = map.GetStartPosition(); at;) {
        WORD key = 0;
        CObject* object = nullptr;
        map.GetNextAssoc(at, key, object);
        right += object == &objects[key - 1];
        map.RemoveKey(key);
    }
    CHECK(right == 100);
    CHECK(map.IsEmpty());
}
