#ifndef OMTREE_BACKEND_TABLES_OM_OMVECTOR_H
#define OMTREE_BACKEND_TABLES_OM_OMVECTOR_H

#include "omcell/OmMemoryRegion.h"

#include <cstddef>
#include <cstring>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>

namespace om_detail {

/// Whether a vector makes elements of this type beside itself.
template <typename T, typename = void>
struct IsMadeAside : std::false_type {};
template <typename T>
struct IsMadeAside<T, std::enable_if_t<T::MadeAside>> : std::true_type {};

} // namespace om_detail

/// Growable array in a memory region.
///
///     +--------+-------+------+-----+        first            last          end
///     | region | first | last | end |  --->  | e0 | e1 | ... | (free) ... |
///     +--------+-------+------+-----+
///
/// Invariants
///  1. The region is never null: a null region given at construction is replaced by the default heap.
///  2. first <= last <= end; all three are null until the first element is added or room is reserved.
///  3. Storage comes from `Allocate` of the region and goes back with `OmMemoryRegion::Release`.
///
/// Growth. An insertion that finds the storage full takes the smallest power of two that is at least 4 and greater than
/// the element count: 4, 8, 16, 32 and so on. `reserve` takes just what it is asked for.
///
/// REQUIRES of T: it may be relocated by copying its bytes (no pointer into itself, no address registered elsewhere
/// that is not repaired afterwards). Elements move to a new block byte for byte; no copy or move constructor runs.
///
/// References and iterators stay valid until the storage is reallocated (any growth past `capacity()`), or the element
/// is erased or shifted. Copying takes time in the element count and may throw what T's copy constructor throws, or
/// std::bad_alloc; the target is empty then.
template <typename T>
class OmVector {
public:
    using value_type = T;
    using size_type = std::size_t;
    using iterator = T*;
    using const_iterator = T const*;

    explicit OmVector(OmMemoryRegion* region = nullptr) : _region(OmMemoryRegion::OrDefault(region)) {}

    /// A copy in the source's own region.
    OmVector(OmVector const& other) : OmVector(other, other._region) {}

    /// A copy in `region` (the default heap when null): reserves the source's element count, then appends one by one.
    OmVector(OmVector const& other, OmMemoryRegion* region) : OmVector(region) { Append(other); }

    /// Takes over the other's storage and region; the other is left empty in the same region.
    OmVector(OmVector&& other) noexcept
        : _region(other._region), _first(std::exchange(other._first, nullptr)),
          _last(std::exchange(other._last, nullptr)), _end(std::exchange(other._end, nullptr)) {}

    /// Frees the own storage, then copies the elements; the own region stays. Self-assignment does nothing.
    OmVector& operator=(OmVector const& other) {
        if (this != &other) {
            Free();
            Append(other);
        }
        return *this;
    }

    /// Destroys every element, those too that the destructors of others add meanwhile.
    ~OmVector() {
        while (_first != nullptr) {
            Free();
        }
    }

    OmMemoryRegion* Region() const { return _region; }

    size_type size() const { return static_cast<size_type>(_last - _first); }
    size_type capacity() const { return static_cast<size_type>(_end - _first); }
    bool empty() const { return _first == _last; }

    T* data() { return _first; }
    T const* data() const { return _first; }
    iterator begin() { return _first; }
    iterator end() { return _last; }
    const_iterator begin() const { return _first; }
    const_iterator end() const { return _last; }

    /// REQUIRES: position < size().
    T& operator[](size_type position) { return _first[position]; }
    T const& operator[](size_type position) const { return _first[position]; }
    T& back() { return _last[-1]; }
    T const& back() const { return _last[-1]; }

    /// Makes room for one more element, as an insertion would. Throws std::bad_alloc; nothing has changed then.
    void MakeRoom() {
        if (_last == _end) {
            Relocate(NextCapacity());
        }
    }

    /// Does nothing when the capacity is at least `count` already; otherwise takes exactly `count` elements' room.
    void reserve(size_type count) {
        if (count > capacity()) {
            Relocate(count);
        }
    }

    /// Appends an element made from the arguments, which may refer to elements of this vector. Amortised O(1).
    ///
    /// Where T says so (`static constexpr bool MadeAside = true`), the element is made beside the vector and moved in:
    /// what its constructor adds to this vector comes before it. REQUIRES: what the arguments refer to stays in its
    /// place until the element is made.
    template <typename... Arguments>
    T& emplace_back(Arguments&&... arguments) {
        if constexpr (om_detail::IsMadeAside<T>::value) {
            Aside made(std::forward<Arguments>(arguments)...);
            MakeRoom();
            made.MoveTo(_last);
        } else if (_last != _end) {
            ::new (static_cast<void*>(_last)) T(std::forward<Arguments>(arguments)...);
        } else {
            EmplaceInNewBlock(std::forward<Arguments>(arguments)...);
        }
        return *_last++;
    }

    void push_back(T const& value) { emplace_back(value); }

    /// Inserts a copy of `value`, which may be an element of this vector, before `position` (0 to size()). O(size).
    void insert(size_type position, T const& value) {
        emplace_back(value);
        RotateLastTo(position < size() ? position : size() - 1);
    }

    /// Moves the element given by `source`'s bytes in before `position`. The source's storage is raw afterwards: its
    /// destructor must not run. O(size).
    void RelocateIn(size_type position, T* source) {
        MakeRoom();
        std::memcpy(static_cast<void*>(_last), static_cast<void const*>(source), sizeof(T));
        ++_last;
        RotateLastTo(position);
    }

    /// Takes the element out, moves every later one down one place, byte for byte, and destroys it. So whatever its
    /// destructor does to this vector meets one that does not hold the element any more. O(elements behind it).
    /// REQUIRES: position < size().
    void erase(size_type position) { Taken(*this, position); }

    /// An element that was taken out, to be destroyed with this object.
    class Taken {
    public:
        /// Moves the later elements down as `erase` does.
        Taken(OmVector& vector, size_type position) {
            std::memcpy(_bytes, static_cast<void const*>(vector._first + position), sizeof(T));
            vector.CloseGap(position);
        }
        ~Taken() { std::launder(reinterpret_cast<T*>(_bytes))->~T(); }

        Taken(Taken const&) = delete;
        Taken& operator=(Taken const&) = delete;

    private:
        alignas(T) unsigned char _bytes[sizeof(T)];
    };

    /// Closes the gap that an element left whose bytes went elsewhere or which was destroyed.
    void CloseGap(size_type position) {
        T* const gap = _first + position;
        std::memmove(static_cast<void*>(gap), static_cast<void const*>(gap + 1),
                     static_cast<size_type>(_last - gap - 1) * sizeof(T));
        --_last;
    }

    /// Destroys every element, first to last; the storage is kept. What a destructor adds meanwhile stays, in other
    /// storage.
    void clear() {
        OmVector gone(_region);
        gone.SwapStorage(*this);
        gone.DestroyAll();
        if (_first == nullptr) {
            gone.SwapStorage(*this);
        }
    }

    /// Destroys every element, first to last, and gives the storage back. What a destructor adds meanwhile stays.
    void Free() {
        T* const first = std::exchange(_first, nullptr);
        T* const last = std::exchange(_last, nullptr);
        _end = nullptr;
        for (T* element = first; element != last; ++element) {
            element->~T();
        }
        OmMemoryRegion::Release(first);
    }

    /// Gives the storage back without running a destructor, for elements that were destroyed already.
    void FreeRaw() {
        OmMemoryRegion::Release(_first);
        _first = _last = _end = nullptr;
    }

    /// Exchanges storage and region.
    void swap(OmVector& other) noexcept {
        std::swap(_region, other._region);
        SwapStorage(other);
    }

    friend bool operator==(OmVector const& a, OmVector const& b) {
        if (a.size() != b.size()) {
            return false;
        }
        for (size_type i = 0; i < a.size(); ++i) {
            if (!(a[i] == b[i])) {
                return false;
            }
        }
        return true;
    }
    friend bool operator!=(OmVector const& a, OmVector const& b) { return !(a == b); }

private:
    /// An element that stands in no vector yet.
    class Aside {
    public:
        template <typename... Arguments>
        explicit Aside(Arguments&&... arguments) {
            ::new (static_cast<void*>(_bytes)) T(std::forward<Arguments>(arguments)...);
        }
        ~Aside() {
            if (!_isMoved) {
                std::launder(reinterpret_cast<T*>(_bytes))->~T();
            }
        }
        Aside(Aside const&) = delete;
        Aside& operator=(Aside const&) = delete;

        void MoveTo(T* place) {
            std::memcpy(static_cast<void*>(place), _bytes, sizeof(T));
            _isMoved = true;
        }

    private:
        alignas(T) unsigned char _bytes[sizeof(T)];
        bool _isMoved = false;
    };

    void SwapStorage(OmVector& other) noexcept {
        std::swap(_first, other._first);
        std::swap(_last, other._last);
        std::swap(_end, other._end);
    }

    size_type NextCapacity() const {
        size_type capacity = 4;
        while (capacity <= size()) {
            capacity *= 2;
        }
        return capacity;
    }

    T* AllocateFor(size_type count) {
        static_assert(alignof(T) <= alignof(std::max_align_t), "regions align for standard types");
        if (count > static_cast<size_type>(-1) / sizeof(T)) {
            throw std::bad_alloc();
        }
        return static_cast<T*>(_region->Allocate(count * sizeof(T)));
    }

    void MoveTo(T* block, size_type count) {
        size_type const used = size();
        if (used != 0) {
            std::memcpy(static_cast<void*>(block), static_cast<void const*>(_first), used * sizeof(T));
        }
        OmMemoryRegion::Release(_first);
        _first = block;
        _last = block + used;
        _end = block + count;
    }

    void Relocate(size_type count) { MoveTo(AllocateFor(count), count); }

    // The new element is made before the old block goes: its arguments may lie in there.
    template <typename... Arguments>
    void EmplaceInNewBlock(Arguments&&... arguments) {
        size_type const count = NextCapacity();
        T* const block = AllocateFor(count);
        try {
            ::new (static_cast<void*>(block + size())) T(std::forward<Arguments>(arguments)...);
        } catch (...) {
            OmMemoryRegion::Release(block);
            throw;
        }
        MoveTo(block, count);
    }

    void RotateLastTo(size_type position) {
        T* const place = _first + position;
        T* const moved = _last - 1;
        if (place == moved) {
            return;
        }
        alignas(T) unsigned char held[sizeof(T)];
        std::memcpy(held, static_cast<void const*>(moved), sizeof(T));
        std::memmove(static_cast<void*>(place + 1), static_cast<void const*>(place),
                     static_cast<size_type>(moved - place) * sizeof(T));
        std::memcpy(static_cast<void*>(place), held, sizeof(T));
    }

    void Append(OmVector const& other) {
        reserve(other.size());
        try {
            size_type const count = other.size();
            for (size_type k = 0; k < count && k < other.size(); ++k) {
                emplace_back(other[k]);
            }
        } catch (...) {
            Free();
            throw;
        }
    }

    void DestroyAll() {
        T* const last = _last;
        for (T* element = _first; element != last; ++element) {
            element->~T();
        }
        _last = _first;
    }

    OmMemoryRegion* _region;
    T* _first = nullptr;
    T* _last = nullptr;
    T* _end = nullptr;
};

#endif
