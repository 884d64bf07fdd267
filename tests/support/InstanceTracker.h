#ifndef OMTREE_TESTS_SUPPORT_INSTANCETRACKER_H
#define OMTREE_TESTS_SUPPORT_INSTANCETRACKER_H

#include "omcell/OmMemoryRegion.h"

#include <cstddef>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

/// An element type that keeps books about its instances, for containers that relocate their elements byte for byte.
///
///     omtest::InstanceBooks books;
///     {
///         OmVector<omtest::Tracked> vector;
///         vector.push_back(omtest::Tracked(books, 7));
///     }
///     EXPECT_TRUE(books.Balanced());
///
/// An instance is known by a number that travels with its bytes, not by its address. So a relocation without any
/// constructor is legal here, while an instance that is destroyed twice, or a copy that was never made, is an error.
namespace omtest {

/// Thrown by the copy that was told to fail.
class CopyFailed : public std::runtime_error {
public:
    CopyFailed() : std::runtime_error("copy failed") {}
};

/// The books of one test; must outlive its instances.
class InstanceBooks {
public:
    int made = 0; ///< instances constructed from a value
    int copies = 0;
    int moves = 0;
    int errors = 0; ///< destructions of something that was not alive
    /// How many more copies succeed; the next one throws CopyFailed. Negative: never fails.
    int copiesUntilFailure = -1;
    std::vector<int> copied;                    ///< values, in the order of copying
    std::vector<int> destroyed;                 ///< values, in the order of destruction
    std::vector<OmMemoryRegion*> copiedRegions; ///< the region of each copy that was given one

    std::size_t Alive() const { return _alive.size(); }

    /// Every instance was destroyed once, and nothing else was.
    bool Balanced() const { return _alive.empty() && errors == 0; }

    /// Starts the counters anew; the living instances stay known.
    void Forget() {
        made = copies = moves = 0;
        copied.clear();
        destroyed.clear();
        copiedRegions.clear();
    }

private:
    friend class Tracked;

    long Register() {
        _alive.insert(_next);
        return _next++;
    }
    void Unregister(long number, int value) {
        destroyed.push_back(value);
        errors += _alive.erase(number) == 1 ? 0 : 1;
    }
    long RegisterCopy(int value) {
        if (copiesUntilFailure == 0) {
            throw CopyFailed();
        }
        copiesUntilFailure -= copiesUntilFailure > 0 ? 1 : 0;
        ++copies;
        copied.push_back(value);
        return Register();
    }

    std::set<long> _alive;
    long _next = 1;
};

/// Equal when the values are equal; `mark` takes no part, so equal instances can be told apart by a test.
class Tracked {
public:
    int value;
    int mark;

    Tracked(InstanceBooks& books, int ofValue, int ofMark = 0)
        : value(ofValue), mark(ofMark), _books(&books), _number(books.Register()) {
        ++books.made;
    }
    Tracked(Tracked const& other)
        : value(other.value), mark(other.mark), _books(other._books), _number(_books->RegisterCopy(value)) {}
    Tracked(Tracked&& other) noexcept
        : value(other.value), mark(other.mark), _books(other._books), _number(_books->Register()) {
        ++_books->moves;
    }
    Tracked& operator=(Tracked const& other) {
        value = other.value;
        mark = other.mark;
        return *this;
    }
    ~Tracked() { _books->Unregister(_number, value); }

    friend bool operator==(Tracked const& a, Tracked const& b) { return a.value == b.value; }

protected:
    InstanceBooks& Books() const { return *_books; }

private:
    InstanceBooks* _books;
    long _number;
};

/// A tracked value that can be copied into a region, as the categories of a dimension can.
class RegionTracked : public Tracked {
public:
    using Tracked::Tracked;
    RegionTracked(RegionTracked const&) = default;
    RegionTracked(RegionTracked const& other, OmMemoryRegion* region) : Tracked(other) {
        Books().copiedRegions.push_back(region);
    }
};

} // namespace omtest

#endif
