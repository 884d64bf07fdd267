#ifndef OMTREE_BACKEND_TABLES_LISTTREE_H
#define OMTREE_BACKEND_TABLES_LISTTREE_H

#include "backend/tables/Assert.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <list>
#include <utility>

/// One record of a ListTree: a value and the depth at which it stands.
template <typename T>
struct ListTreeData {
    T value;
    int level; ///< 0 for the root, the parent's level + 1 for every child

    friend bool operator==(ListTreeData const& a, ListTreeData const& b) {
        return a.level == b.level && a.value == b.value;
    }
    friend bool operator!=(ListTreeData const& a, ListTreeData const& b) { return !(a == b); }

    /// By depth first, then by value. std::less, because `<` promises no order for pointers to unrelated objects.
    friend bool operator<(ListTreeData const& a, ListTreeData const& b) {
        return a.level < b.level || (a.level == b.level && std::less<T>()(a.value, b.value));
    }
};

/// Ordered tree that is stored flat: one list of records in pre-order, each with its depth.
///
///     Output          0        list:  Output  By class  Table  Log  By age  Table
///     |-- By class    1        level:   0        1        2     2     1       2
///     |   |-- Table   2
///     |   `-- Log     2        Relations are not stored: a node's subtree is the records behind it up to the first
///     `-- By age      1        one that is not deeper, its parent the nearest record before it that is shallower.
///         `-- Table   2
///
/// Invariants kept by the operations here; who edits `List()` keeps them too.
///  1. The first record is the root and has level 0; every other one has level 1 or more.
///  2. A record's level is at most the previous record's level + 1.
///  3. The descendants of a record are the records behind it, up to the first whose level is not greater.
///
/// The tree owns its records, never what a value points at.
///
/// Handles (`Node`, `ConstNode`) hold the tree, the position and the level that the record had when the handle was
/// made. That cached level is not refreshed (`Flatten` and `Erase` change levels): `AppendChild`, `IsLeaf`, `Prune` and
/// the levels that `Move` compares read the cached one, `Flatten` and `Erase` the record's. A handle's position stays
/// valid until its record is removed, whatever happens to other records.
///
/// Every call expects a handle of the same tree (hardened check "node._tree == this"). `Flatten` and `Erase` do nothing
/// with one on the end; the others expect a live one ("node.position != end"). When such a check's handler returns, the
/// call does nothing. A handle whose record is gone cannot be told from a live one.
///
/// Costs are steps from record to record. A subtree is found by walking over it, so a child appended below the root
/// costs the whole tree, and a million of them a million times that; below a parent with few descendants it costs few
/// steps, wherever the parent stands.
template <typename T>
class ListTree {
public:
    using Record = ListTreeData<T>;
    using Records = std::list<Record>;

    class ConstNode;
    class Node;

    ListTree() = default;
    explicit ListTree(T const& root) { _records.push_back(Record{root, 0}); }
    explicit ListTree(T& root) : ListTree(static_cast<T const&>(root)) {}
    /// Copies every record in order; values are copied as they are.
    ListTree(ListTree const&) = default;
    /// Removes all records, then copies the source's; none are left when a copy throws. Self-assignment does nothing.
    ListTree& operator=(ListTree const& other) {
        if (this != &other) {
            _records.clear();
            _records.insert(_records.end(), other._records.begin(), other._records.end());
        }
        return *this;
    }
    ~ListTree() = default;

    /// Number of nodes, root included. O(1).
    int Size() const { return static_cast<int>(_records.size()); }

    /// Handle on the first record; on the end, with level 0, when the tree is empty.
    Node Root() { return Node(*this, _records.begin()); }
    ConstNode Root() const { return ConstNode(*this, _records.begin()); }

    Records& List() { return _records; }
    Records const& List() const { return _records; }

    /// Adds a node as parent's last child: at the end of the subtree that parent's cached level bounds, one level below
    /// that level. O(records in that subtree). A pointer is stored as it is: one that stands in a record already stands
    /// in two afterwards.
    /// REQUIRES: a live handle, and a cached level that has one below it ("parent.Level() < max"); else nothing is
    /// added and the handle given back.
    Node AppendChild(Node const& parent, T value) {
        if (!IsLive(parent, __LINE__) || !OM_HARDENED(parent.Level() < std::numeric_limits<int>::max(),
                                                      "parent.Level() < max", TreeSource, __LINE__)) {
            return parent;
        }
        auto const place = SearchForward(parent.Position(), parent.Level());
        return Node(*this, _records.insert(place, Record{std::move(value), parent.Level() + 1}));
    }

    /// Whether the record behind the node is the end or not deeper than the handle's cached level. O(1).
    /// REQUIRES: a live handle; any other counts as a leaf.
    bool IsLeaf(ConstNode const& node) const {
        if (!IsLive(node, __LINE__)) {
            return true;
        }
        auto next = node.Position();
        ++next;
        return next == _records.end() || next->level <= node.Level();
    }

    /// Removes the node and the descendants that its cached level bounds. O(records removed).
    /// REQUIRES: a live handle; else nothing is removed.
    void Prune(Node const& node) {
        if (IsLive(node, __LINE__)) {
            _records.erase(node.Position(), SearchForward(node.Position(), node.Level()));
        }
    }

    /// Removes the node alone; its descendants move up one level into its place. The handle is invalid afterwards. Does
    /// nothing at the end. O(descendants).
    void Erase(Node& node) {
        if (IsOwn(node, __LINE__) && node.Position() != _records.end()) {
            LiftDescendants(node.Position());
            _records.erase(node.Position());
        }
    }

    /// Moves the node's descendants (by the level in its record) up one level, so that its children become the siblings
    /// behind it. The node keeps its level. Does nothing at the end. O(descendants).
    void Flatten(Node& node) {
        if (IsOwn(node, __LINE__) && node.Position() != _records.end()) {
            LiftDescendants(node.Position());
        }
    }

    /// Moves the records [begin, end) of another tree into this one, before `target`, levels unchanged. When a copy
    /// throws, this tree is as before and the other untouched. O(records moved).
    ///
    /// Assertions, in this order, source `backend/tables/ListTree`, by the handles' cached levels:
    ///
    ///     503  target._tree == this             505  target._tree != begin._tree
    ///     504  begin._tree == end._tree         506  begin.Level() == target.Level()
    ///
    /// With a handler that returns, the call carries on: the records go before `target` in whichever tree that stands.
    /// Only a run that ends in another tree than it begins in (504) has no end to go to, and stays where it is.
    ///
    /// REQUIRES: `begin` is not behind `end`. Handles of no tree move nothing (hardened check "begin._tree != 0"; a
    /// target of none is reported as 503).
    void Move(Node const& target, Node const& begin, Node const& end) {
        OM_ASSERT(target._tree == this, "target._tree == this", TreeSource, 503);
        bool const endsThere = OM_ASSERT(begin._tree == end._tree, "begin._tree == end._tree", TreeSource, 504);
        OM_ASSERT(target._tree != begin._tree, "target._tree != begin._tree", TreeSource, 505);
        OM_ASSERT(begin.Level() == target.Level(), "begin.Level() == target.Level()", TreeSource, 506);
        bool const isRun = OM_HARDENED(begin._tree != nullptr, "begin._tree != 0", TreeSource, __LINE__);
        if (!endsThere || !isRun || target._tree == nullptr) {
            return;
        }
        target._tree->_records.insert(target.Position(), begin.Position(), end.Position());
        begin._tree->_records.erase(begin.Position(), end.Position());
    }

    /// Same records, by level and value, in the same order.
    friend bool operator==(ListTree const& a, ListTree const& b) { return a._records == b._records; }
    friend bool operator!=(ListTree const& a, ListTree const& b) { return !(a == b); }
    /// Lexicographic over the records; a proper prefix is less.
    friend bool operator<(ListTree const& a, ListTree const& b) {
        return std::lexicographical_compare(a._records.begin(), a._records.end(), b._records.begin(), b._records.end());
    }

protected:
    using Position = typename Records::iterator;
    using ConstPosition = typename Records::const_iterator;

    /// First record behind `position` whose level is not greater than `level`, or the end.
    Position SearchForward(Position position, int level) { return Forward(position, _records.end(), level); }
    ConstPosition SearchForward(ConstPosition position, int level) const {
        return Forward(position, _records.end(), level);
    }

    /// Nearest record before `position` whose level is not greater than `level`. With the own level less one, the
    /// parent. REQUIRES: position is not the root, level >= 0. The root ends every search.
    Position SearchBackward(Position position, int level) { return Backward(position, level); }
    ConstPosition SearchBackward(ConstPosition position, int level) const { return Backward(position, level); }

private:
    static constexpr char TreeSource[] = "backend/tables/ListTree";

    bool IsOwn([[maybe_unused]] ConstNode const& node, [[maybe_unused]] int line) const {
        return OM_HARDENED(node.Tree() == this, "node._tree == this", TreeSource, line);
    }

    bool IsLive(ConstNode const& node, int line) const {
        return IsOwn(node, line) &&
               OM_HARDENED(node.Position() != _records.end(), "node.position != end", TreeSource, line);
    }

    void LiftDescendants(Position position) {
        int const level = position->level;
        for (++position; position != _records.end() && position->level > level; ++position) {
            --position->level;
        }
    }

    template <typename Iterator>
    static Iterator Forward(Iterator position, Iterator end, int level) {
        if (position == end) {
            return end;
        }
        do {
            ++position;
        } while (position != end && position->level > level);
        return position;
    }

    template <typename Iterator>
    static Iterator Backward(Iterator position, int level) {
        do {
            --position;
        } while (position->level > level);
        return position;
    }

    Records _records;
};

/// Handle to a node of a tree that may be changed.
template <typename T>
class ListTree<T>::Node {
public:
    Node() = default;
    Node(ListTree& tree, typename Records::iterator position)
        : _tree(&tree), _level(position != tree._records.end() ? position->level : 0), _position(position) {}
    /// A handle that carries a level of its own, which need not be the record's.
    Node(ListTree& tree, typename Records::iterator position, int level)
        : _tree(&tree), _level(level), _position(position) {}

    ListTree* Tree() const { return _tree; }
    /// The level cached when the handle was made.
    int Level() const { return _level; }
    typename Records::iterator Position() const { return _position; }
    /// REQUIRES: the position is not the end.
    T& Value() const { return _position->value; }

    /// Same tree and same record.
    friend bool operator==(Node const& a, Node const& b) { return a._tree == b._tree && a._position == b._position; }
    friend bool operator!=(Node const& a, Node const& b) { return !(a == b); }

private:
    friend class ListTree;

    ListTree* _tree = nullptr;
    int _level = 0;
    typename Records::iterator _position;
};

/// The same over a const tree.
template <typename T>
class ListTree<T>::ConstNode {
public:
    ConstNode() = default;
    ConstNode(ListTree const& tree, typename Records::const_iterator position)
        : _tree(&tree), _level(position != tree._records.end() ? position->level : 0), _position(position) {}
    ConstNode(Node const& node) : _tree(node.Tree()), _level(node.Level()), _position(node.Position()) {}

    ListTree const* Tree() const { return _tree; }
    int Level() const { return _level; }
    typename Records::const_iterator Position() const { return _position; }
    T const& Value() const { return _position->value; }

    friend bool operator==(ConstNode const& a, ConstNode const& b) {
        return a._tree == b._tree && a._position == b._position;
    }
    friend bool operator!=(ConstNode const& a, ConstNode const& b) { return !(a == b); }

private:
    ListTree const* _tree = nullptr;
    int _level = 0;
    typename Records::const_iterator _position;
};

#endif
