#ifndef OMTREE_TESTS_SUPPORT_COUNTEDRECORDS_H
#define OMTREE_TESTS_SUPPORT_COUNTEDRECORDS_H

#include "backend/tables/ListTree.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <list>
#include <memory>
#include <type_traits>

/// A list tree whose steps from record to record are counted, for costs that a clock cannot prove.
///
///     ListTree<omtest::Counted> tree(omtest::Counted{1});
///     omtest::StepBooks().Forget();
///     tree.AppendChild(tree.Root(), omtest::Counted{2});
///     EXPECT_EQ(omtest::StepBooks().forward, 1);
///
/// The tree is the template itself. Only its record list differs: std::list is specialised for this value's records
/// (allowed for a type of our own) by one that hands on to a plain list and counts what the tree's iterators do. Steps
/// inside the list, as in the erasing of a range, are not counted.
namespace omtest {

struct Counted {
    int value = 0;
    friend bool operator==(Counted const& a, Counted const& b) { return a.value == b.value; }
    friend bool operator<(Counted const& a, Counted const& b) { return a.value < b.value; }
};

struct Steps {
    long forward = 0;
    long backward = 0;
    void Forget() { forward = backward = 0; }
};

inline Steps& StepBooks() {
    static Steps books;
    return books;
}

/// A plain list's iterator that counts; `Seen` is what it shows of an element.
template <typename Plain, typename Seen>
class CountingIterator {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = std::remove_const_t<Seen>;
    using difference_type = std::ptrdiff_t;
    using pointer = Seen*;
    using reference = Seen&;

    CountingIterator() = default;
    explicit CountingIterator(Plain at) : _at(at) {}
    template <typename Other, typename OtherSeen, typename = std::enable_if_t<std::is_convertible_v<Other, Plain>>>
    CountingIterator(CountingIterator<Other, OtherSeen> const& other) : _at(other.Uncounted()) {}

    reference operator*() const { return *_at; }
    pointer operator->() const { return std::addressof(**this); }
    CountingIterator& operator++() {
        ++StepBooks().forward;
        ++_at;
        return *this;
    }
    CountingIterator& operator--() {
        ++StepBooks().backward;
        --_at;
        return *this;
    }
    Plain Uncounted() const { return _at; }

    friend bool operator==(CountingIterator const& a, CountingIterator const& b) { return a._at == b._at; }
    friend bool operator!=(CountingIterator const& a, CountingIterator const& b) { return a._at != b._at; }

private:
    Plain _at{};
};

} // namespace omtest

/// As much of a list as a tree uses.
template <>
class std::list<ListTreeData<omtest::Counted>> {
    using Record = ListTreeData<omtest::Counted>;
    struct Element : Record {
        Element(Record const& record) : Record(record) {}
    };
    using Plain = std::list<Element>;

public:
    using iterator = omtest::CountingIterator<Plain::iterator, Record>;
    using const_iterator = omtest::CountingIterator<Plain::const_iterator, Record const>;

    std::size_t size() const { return _plain.size(); }
    iterator begin() { return iterator(_plain.begin()); }
    iterator end() { return iterator(_plain.end()); }
    const_iterator begin() const { return const_iterator(_plain.begin()); }
    const_iterator end() const { return const_iterator(_plain.end()); }

    void clear() { _plain.clear(); }
    void push_back(Record const& record) { _plain.push_back(record); }
    iterator insert(const_iterator before, Record const& record) {
        return iterator(_plain.insert(before.Uncounted(), record));
    }
    template <typename Iterator>
    iterator insert(const_iterator before, Iterator first, Iterator last) {
        return iterator(_plain.insert(before.Uncounted(), first.Uncounted(), last.Uncounted()));
    }
    iterator erase(const_iterator position) { return iterator(_plain.erase(position.Uncounted())); }
    iterator erase(const_iterator first, const_iterator last) {
        return iterator(_plain.erase(first.Uncounted(), last.Uncounted()));
    }

    friend bool operator==(list const& a, list const& b) {
        return std::equal(a._plain.begin(), a._plain.end(), b._plain.begin(), b._plain.end());
    }

private:
    Plain _plain;
};

#endif
