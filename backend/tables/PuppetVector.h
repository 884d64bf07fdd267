#ifndef OMTREE_BACKEND_TABLES_PUPPETVECTOR_H
#define OMTREE_BACKEND_TABLES_PUPPETVECTOR_H

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

/// Sequence container with a fill value: it follows wherever it is pulled.
///
///  - `operator[]` on a modifiable vector grows to the position, filling the gap (the position included) with the fill
///    value. The largest position is `max_size() - 1`.
///  - `operator[]` on a const vector gives the fill value for a position past the end. Nothing grows.
///  - Everything else but construction is the interface of a standard sequence container over a contiguous block, `at`
///    included, which never grows; `resize` without a value fills with the fill value too. Values and ranges that are
///    handed in may be the vector's own.
///
/// Construction names the fill value, in round brackets:
///
///     PuppetVector<short> axis(-1);            empty
///     PuppetVector<short> axis({4, 2}, -1);    two elements
///     PuppetVector<short> axis(3, 4, -1);      three elements, each 4
///     axis = {4, 2, 3};                        three elements; the fill value stays
///
/// A list of elements in braces and nothing else does not compile: it says nothing of the fill value, and {4, 2, 3}
/// could be three elements or four of 2.
///
/// A copy takes the fill value along, so does an assignment from another PuppetVector; assignment from a list of
/// elements keeps it. A vector that was moved from is empty and keeps its fill value. Comparison looks at the elements
/// alone. Iterators and references are invalidated as those of std::vector are; a growing `operator[]` counts as an
/// insertion at the end.
///
/// The axes of a pivot table are PuppetVector<short> with fill value -1.
template <typename T>
class PuppetVector {
    static_assert(!std::is_same_v<T, bool>, "elements are handed out by reference");
    using Sequence = std::vector<T>;

    // Keeps (count, value) calls with two integers away from the range forms.
    template <typename Input>
    using IfIterator = typename std::iterator_traits<Input>::iterator_category;

public:
    using value_type = T;
    using size_type = typename Sequence::size_type;
    using difference_type = typename Sequence::difference_type;
    using reference = T&;
    using const_reference = T const&;
    using pointer = T*;
    using const_pointer = T const*;
    using iterator = typename Sequence::iterator;
    using const_iterator = typename Sequence::const_iterator;
    using reverse_iterator = typename Sequence::reverse_iterator;
    using const_reverse_iterator = typename Sequence::const_reverse_iterator;

    /// Empty, with the value that fills gaps (T's default value when none is given).
    explicit PuppetVector(T fill = T()) : _fill(std::move(fill)) {}
    /// Chosen for every list in braces whose entries could be elements.
    PuppetVector(std::initializer_list<T> elements) = delete;
    PuppetVector(std::initializer_list<T> elements, T fill) : _elements(elements), _fill(std::move(fill)) {}
    PuppetVector(size_type count, T const& value, T fill) : _elements(count, value), _fill(std::move(fill)) {}
    template <typename Input, typename = IfIterator<Input>>
    PuppetVector(Input first, Input last, T fill) : _elements(first, last), _fill(std::move(fill)) {}

    PuppetVector(PuppetVector const&) = default;
    PuppetVector(PuppetVector&& other) noexcept(std::is_nothrow_copy_constructible_v<T>)
        : _elements(), _fill(other._fill) {
        _elements.swap(other._elements);
    }
    ~PuppetVector() = default;

    /// Nothing has changed when a copy throws.
    PuppetVector& operator=(PuppetVector const& other) {
        PuppetVector(other).swap(*this);
        return *this;
    }
    PuppetVector& operator=(PuppetVector&& other) noexcept(std::is_nothrow_copy_constructible_v<T>) {
        if (this != &other) {
            PuppetVector(std::move(other)).swap(*this);
        }
        return *this;
    }
    PuppetVector& operator=(std::initializer_list<T> elements) {
        _elements = elements;
        return *this;
    }

    /// The value that stands for every position never written.
    T const& Fill() const { return _fill; }

    reference operator[](size_type position) {
        if (position >= _elements.size()) {
            if (position >= _elements.max_size()) {
                throw std::length_error("PuppetVector::operator[] -- position >= max_size()");
            }
            _elements.resize(position + 1, _fill);
        }
        return _elements[position];
    }
    const_reference operator[](size_type position) const {
        return position < _elements.size() ? _elements[position] : _fill;
    }

    /// Element at a position that exists; throws std::out_of_range otherwise. Never grows.
    reference at(size_type position) { return _elements.at(position); }
    const_reference at(size_type position) const { return _elements.at(position); }

    reference front() { return _elements.front(); }
    const_reference front() const { return _elements.front(); }
    reference back() { return _elements.back(); }
    const_reference back() const { return _elements.back(); }
    pointer data() noexcept { return _elements.data(); }
    const_pointer data() const noexcept { return _elements.data(); }

    iterator begin() noexcept { return _elements.begin(); }
    iterator end() noexcept { return _elements.end(); }
    const_iterator begin() const noexcept { return _elements.begin(); }
    const_iterator end() const noexcept { return _elements.end(); }
    const_iterator cbegin() const noexcept { return _elements.cbegin(); }
    const_iterator cend() const noexcept { return _elements.cend(); }
    reverse_iterator rbegin() noexcept { return _elements.rbegin(); }
    reverse_iterator rend() noexcept { return _elements.rend(); }
    const_reverse_iterator rbegin() const noexcept { return _elements.rbegin(); }
    const_reverse_iterator rend() const noexcept { return _elements.rend(); }
    const_reverse_iterator crbegin() const noexcept { return _elements.crbegin(); }
    const_reverse_iterator crend() const noexcept { return _elements.crend(); }

    bool empty() const noexcept { return _elements.empty(); }
    size_type size() const noexcept { return _elements.size(); }
    size_type max_size() const noexcept { return _elements.max_size(); }
    size_type capacity() const noexcept { return _elements.capacity(); }
    void reserve(size_type count) { _elements.reserve(count); }
    void shrink_to_fit() { _elements.shrink_to_fit(); }

    void resize(size_type count) { _elements.resize(count, _fill); }
    void resize(size_type count, T const& value) { _elements.resize(count, value); }
    void clear() noexcept { _elements.clear(); }

    void assign(size_type count, T const& value) { _elements.assign(count, value); }
    void assign(std::initializer_list<T> elements) { _elements.assign(elements); }
    template <typename Input, typename = IfIterator<Input>>
    void assign(Input first, Input last) {
        Sequence(first, last).swap(_elements);
    }

    void push_back(T const& value) { _elements.push_back(value); }
    void push_back(T&& value) { _elements.push_back(std::move(value)); }
    template <typename... Arguments>
    reference emplace_back(Arguments&&... arguments) {
        return _elements.emplace_back(std::forward<Arguments>(arguments)...);
    }
    void pop_back() { _elements.pop_back(); }

    iterator insert(const_iterator place, T const& value) { return _elements.insert(place, value); }
    iterator insert(const_iterator place, T&& value) { return _elements.insert(place, std::move(value)); }
    iterator insert(const_iterator place, size_type count, T const& value) {
        return _elements.insert(place, count, value);
    }
    iterator insert(const_iterator place, std::initializer_list<T> elements) {
        return _elements.insert(place, elements);
    }
    template <typename Input, typename = IfIterator<Input>>
    iterator insert(const_iterator place, Input first, Input last) {
        Sequence apart(first, last);
        return _elements.insert(place, std::make_move_iterator(apart.begin()), std::make_move_iterator(apart.end()));
    }
    template <typename... Arguments>
    iterator emplace(const_iterator place, Arguments&&... arguments) {
        return _elements.emplace(place, std::forward<Arguments>(arguments)...);
    }
    iterator erase(const_iterator place) { return _elements.erase(place); }
    iterator erase(const_iterator first, const_iterator last) { return _elements.erase(first, last); }

    void swap(PuppetVector& other) noexcept {
        using std::swap;
        swap(_elements, other._elements);
        swap(_fill, other._fill);
    }
    friend void swap(PuppetVector& a, PuppetVector& b) noexcept { a.swap(b); }

    friend bool operator==(PuppetVector const& a, PuppetVector const& b) { return a._elements == b._elements; }
    friend bool operator!=(PuppetVector const& a, PuppetVector const& b) { return a._elements != b._elements; }
    friend bool operator<(PuppetVector const& a, PuppetVector const& b) { return a._elements < b._elements; }
    friend bool operator>(PuppetVector const& a, PuppetVector const& b) { return b < a; }
    friend bool operator<=(PuppetVector const& a, PuppetVector const& b) { return !(b < a); }
    friend bool operator>=(PuppetVector const& a, PuppetVector const& b) { return !(a < b); }

private:
    Sequence _elements;
    T _fill;
};

#endif
