#include "backend/tables/om/OmOutputTree.h"

#include "backend/tables/om/OmHeading.h"
#include "backend/tables/om/OmTextBlock.h"
#include "omcell/OmStringCell.h"
#include "omcell/detail/Belonging.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

template class ListTree<OmOutputPart*>;

namespace {

using om_detail::Belonging;
using Parts = ListTree<OmOutputPart*>;
using Position = Parts::Records::iterator;

[[maybe_unused]] constexpr char Source[] = "backend/tables/om/OmOutputTree"; // by hardened checks alone

[[maybe_unused]] bool IsAtEnd(Parts::Node const& node) { return node.Position() == node.Tree()->List().end(); }

bool IsLiveIn([[maybe_unused]] Parts const& tree, [[maybe_unused]] Parts::Node const& node, [[maybe_unused]] int line) {
    return OM_HARDENED(node.Tree() == &tree, "node._tree == this", Source, line) &&
           OM_HARDENED(!IsAtEnd(node), "node.position != end", Source, line);
}

// --- destructions under way ------------------------------------------------------------------------------------------

/// A call that destroys parts, known to those that the parts' destructors make. What these remove of the same tree,
/// this one no longer touches; a part that is being destroyed is not destroyed again.
class Destruction {
public:
    Destruction(Parts& tree, Position node) : _tree(&tree), _node(node), _current(node), _outer(innermost) {
        innermost = this;
    }
    Destruction(Destruction const&) = delete;
    Destruction& operator=(Destruction const&) = delete;

    /// Every call removes its records through this one.
    void Remove(Position position) {
        Forget(_outer, *_tree, position);
        _tree->List().erase(position);
    }

    /// Tells the calls under way that the record goes.
    static void Forget(Destruction* first, Parts const& tree, Position position) {
        for (Destruction* call = first; call != nullptr; call = call->_outer) {
            if (call->_tree == &tree) {
                call->Lose(position);
            }
        }
    }

    /// Tells them that all records go.
    static void ForgetAll(Parts const& tree) {
        for (Destruction* call = innermost; call != nullptr; call = call->_outer) {
            if (call->_tree == &tree) {
                call->LoseAll();
            }
        }
    }

    /// Tells them that the tree ends.
    static void ForgetTree(Parts const& tree) {
        for (Destruction* call = innermost; call != nullptr; call = call->_outer) {
            if (call->_tree == &tree) {
                call->LoseAll();
                call->_tree = nullptr;
            }
        }
    }

protected:
    ~Destruction() { innermost = _outer; }

    /// Whether there is nothing left for this call to do.
    bool IsOver() const { return _isOver; }

    /// Where a part was that is gone.
    using Address = std::uintptr_t;

    /// Destroys the record's part, which the record still holds meanwhile. Gives what it held, for `Empty`; 0 for none.
    Address Destroy(Position position) {
        OmOutputPart* const part = position->value;
        Address const address = AddressOf(part);
        if (part != nullptr && !IsDying(part)) {
            _dying = part;
            delete part;
            _dying = nullptr;
        }
        return address; // NOLINT(clang-analyzer-cplusplus.NewDelete): a number, not what was there
    }

    /// Puts null in the place of a part that is gone. Gives whether nobody has put another one there.
    static bool Empty(Position position, Address gone) {
        if (AddressOf(position->value) != gone) {
            return false;
        }
        position->value = nullptr;
        return true;
    }

    static Address AddressOf(OmOutputPart const* part) { return reinterpret_cast<Address>(part); }

    Parts* _tree;      ///< null once it has ended
    Position _node;    ///< the record that the call was made for
    Position _current; ///< the record whose part is destroyed
    bool _isOver = false;

private:
    virtual void Lose(Position position) = 0;
    virtual void LoseAll() = 0;

    bool IsDying(OmOutputPart const* part) const {
        for (Destruction const* call = _outer; call != nullptr; call = call->_outer) {
            if (call->_dying == part) {
                return true;
            }
        }
        return false;
    }

    inline static constinit thread_local Destruction* innermost = nullptr;

    OmOutputPart const* _dying = nullptr;
    Destruction* _outer;
};

/// Destroys the part of one record, and follows the record while others are destroyed.
class NodeDestruction final : public Destruction {
public:
    using Destruction::Destruction;

    bool HasNode() const { return !IsOver(); }

    /// The record's part goes and leaves null behind. Gives whether the record is still there.
    bool DestroyPart() {
        while (HasNode() && _node->value != nullptr) {
            Address const gone = Destroy(_node);
            if (HasNode()) {
                Empty(_node, gone);
            }
        }
        return HasNode();
    }

    /// Lifts what is below the record and removes it.
    void EraseRecord() {
        Parts::Node node(*_tree, _node);
        _tree->Flatten(node);
        Remove(_node);
    }

    /// A handle on the end; on nothing when the tree has ended.
    Parts::Node End() const { return _tree != nullptr ? Parts::Node(*_tree, _tree->List().end()) : Parts::Node(); }

private:
    void Lose(Position position) override { _isOver = _isOver || position == _node; }
    void LoseAll() override { _isOver = true; }
};

/// Destroys a record's subtree in post-order, reading relations from the list as it is after each destructor.
class SubtreeDestruction final : public Destruction {
public:
    SubtreeDestruction(Parts& tree, Position node, int level)
        : Destruction(tree, node), _size(tree.List().size()), _level(node->level), _bounds{level} {}

    void Run() {
        while (!IsOver()) {
            int const bound = Bound();
            Position const next = std::next(_current);
            if (!IsBelow(next, bound)) {
                DestroyCurrent(bound);
                continue;
            }
            if (!_isChanged) {
                _bounds.push_back(next->level);
            }
            Enter(next);
        }
    }

private:
    static constexpr int Distance = 8;
    static constexpr std::uintptr_t Line = 64;

    bool IsBelow(Position position, int bound) const {
        return position != _tree->List().end() && position->level > bound;
    }

    /// What is deeper behind the current record is below it. A child is bounded by the level of its parent's first
    /// child, which in a tree that keeps its invariants is every child's own.
    int Bound() const {
        if (!_isChanged) {
            return _bounds.back();
        }
        // What lifts the node lifts what is below it.
        int const level = _current->level;
        return _current == _node ? std::min(_bounds.front(), level + std::max(0, _bounds.front() - _level)) : level;
    }

    void Enter(Position next) {
        _current = next;
        LookAhead();
    }

    /// Calls for the record some places ahead, and for its part; they lie wherever the program made them. The way there
    /// is walked anew from the current record, because one kept from before might be gone; it is in the nearest cache.
    /// Parts are not read.
    void LookAhead() const {
        Position ahead = _current;
        for (int k = 0; k < Distance; ++k) {
            if (++ahead == _tree->List().end()) {
                return;
            }
        }
        // Two lines: the destructor of a text block needs its strings.
        auto const part = reinterpret_cast<std::uintptr_t>(ahead->value);
        __builtin_prefetch(reinterpret_cast<void const*>(part));
        __builtin_prefetch(reinterpret_cast<void const*>(part + Line));
        if (Position const next = std::next(ahead); next != _tree->List().end()) {
            __builtin_prefetch(std::to_address(next));
        }
    }

    void DestroyCurrent(int bound) {
        Position const current = _current;
        int const level = current->level;
        Address const gone = Destroy(current);
        if (_isDisturbed || _tree->List().size() != _size || current->level != level ||
            AddressOf(current->value) != gone || IsBelow(std::next(current), bound)) {
            LookAnew(gone);
        } else {
            RemoveCurrent();
        }
    }

    /// The destructor has changed the tree: the record may be gone, hold another part or have others below it.
    void LookAnew(Address gone) {
        if (IsOver()) {
            return;
        }
        if (!_hasLost) {
            Empty(_current, gone);
        }
        _isDisturbed = _hasLost = false;
        _isChanged = true;
        _size = _tree->List().size();
    }

    /// Then on to the next child of the same parent, else to what stands before: everything between the parent and its
    /// child is gone.
    void RemoveCurrent() {
        Position const removed = _current;
        if (removed == _node) {
            _isOver = true;
        } else if (!_isChanged && IsBelow(std::next(removed), _bounds[_bounds.size() - 2])) {
            Enter(std::next(removed));
        } else {
            _bounds.resize(_isChanged ? 1 : _bounds.size() - 1);
            --_current;
        }
        Remove(removed);
        --_size;
    }

    // Without its node the call finishes the record that it is at.
    void Lose(Position position) override {
        if (position != _current && position != _node) {
            return;
        }
        _isChanged = _isDisturbed = true;
        if (position == _current && position != _node && !_hasLostNode) {
            _hasLost = true;
            --_current;
        } else if (position == _node && position != _current && !_hasLost) {
            _hasLostNode = true;
            _node = _current;
            _level = _bounds.front() = _current->level;
        } else {
            _isOver = true;
        }
    }

    void LoseAll() override { _isOver = _isDisturbed = true; }

    std::size_t _size;         ///< of the list, as long as nobody else changes it
    int _level;                ///< of the node when the call was made; its handle may have said another
    bool _isChanged = false;   ///< by a destructor; relations are read from the records' levels then
    bool _isDisturbed = false; ///< by the destructor that runs
    bool _hasLost = false;     ///< the record whose part is being destroyed
    bool _hasLostNode = false;
    std::vector<int> _bounds; ///< of the records from the node down to the current one, as long as nothing changed
};

/// Destroys every part of a tree from the first record to the last.
class TreeDestruction final : public Destruction {
public:
    explicit TreeDestruction(Parts& tree) : Destruction(tree, tree.List().end()) {}

    /// Again, until there is no part that a destructor put in front of where the walk stood.
    void Run() {
        while (Walk()) {
        }
        ForgetTree(*_tree);
    }

private:
    bool Walk() {
        bool hasDestroyed = false;
        _current = _tree->List().begin();
        while (_current != _node) {
            Address const gone = Destroy(_current);
            hasDestroyed = hasDestroyed || gone != 0;
            if (!std::exchange(_hasLost, false) && Empty(_current, gone)) {
                ++_current;
            }
        }
        return hasDestroyed;
    }

    void Lose(Position position) override {
        if (position == _current) {
            _hasLost = true;
            ++_current;
        }
    }

    void LoseAll() override {
        _hasLost = true;
        _current = _node;
    }

    bool _hasLost = false; ///< the record whose part is being destroyed
};

void PruneParts(Parts& tree, Parts::Node const& node) { SubtreeDestruction(tree, node.Position(), node.Level()).Run(); }

} // namespace

OmOutputTree::OmOutputTree() {
    OmStringCell const title("Output", nullptr, true);
    auto root = std::make_unique<OmHeading>(title);
    List().push_back(Record{nullptr, 0});
    List().front().value = root.release();
}

OmOutputTree& OmOutputTree::operator=(OmOutputTree const& other) {
    if (this != &other) {
        Destruction::ForgetAll(*this);
        ListTree::operator=(other);
    }
    return *this;
}

OmOutputTree::~OmOutputTree() { TreeDestruction(*this).Run(); }

void OmOutputTree::Prune(Node& node) {
    if (IsLiveIn(*this, node, __LINE__)) {
        PruneParts(*this, node);
    }
}

void OmOutputTree::Erase(Node& node) {
    if (!IsLiveIn(*this, node, __LINE__)) {
        return;
    }
    NodeDestruction call(*this, node.Position());
    if (call.DestroyPart()) {
        call.EraseRecord();
    }
}

// --- amputation ------------------------------------------------------------------------------------------------------

namespace {

Parts::Node Append(Parts& tree, Parts::Node const& node, std::unique_ptr<OmTextBlock> block) {
    Parts::Node const added = tree.AppendChild(node, nullptr);
    added.Position()->value = block.release();
    return added;
}

/// The node's part goes, and its children with a text block behind them take its place.
Parts::Node ReplaceByChildren(Parts& tree, Parts::Node const& node, std::string const& codePage) {
    OmOutputPart const* const part = node.Value();
    if (!OM_HARDENED(part != nullptr && part->Title() != nullptr, "part != 0", Source, __LINE__)) {
        return node;
    }
    NodeDestruction call(tree, node.Position());
    auto block = std::make_unique<OmTextBlock>(*part->Title(), codePage);
    if (!call.DestroyPart()) {
        return call.End();
    }
    Append(tree, node, std::move(block));
    Parts::Node lifted = node;
    tree.Flatten(lifted);
    Parts::Node const first(tree, std::next(node.Position()), node.Level());
    call.EraseRecord();
    return first;
}

/// Whether the text is a title below the node, or in one.
[[maybe_unused]] bool IsTitleBelow(Parts& tree, Parts::Node const& node, OmCellText const& text) {
    for (Position next = std::next(node.Position()); next != tree.List().end() && next->level > node.Level(); ++next) {
        if (next->value != nullptr && next->value->Title() != nullptr &&
            Belonging::BelongsTo(text, *next->value->Title())) {
            return true;
        }
    }
    return false;
}

/// Everything below the node goes, and a text block takes its place.
Parts::Node ReplaceChildren(Parts& tree, Parts::Node const& node, OmCellText const* text, std::string const& codePage) {
    if (!OM_HARDENED(text != nullptr, "text != 0", Source, __LINE__)) {
        return node;
    }
    // A text of ours may belong to a part that goes, and cannot tell when it is cloned; another one is cloned after the
    // pruning, as it can see.
    std::unique_ptr<OmTextBlock> block;
    if (Belonging::IsOurs(*text)) {
        block = std::make_unique<OmTextBlock>(*text, codePage);
    } else if (!OM_HARDENED(!IsTitleBelow(tree, node, *text), "text != held", Source, __LINE__)) {
        return node;
    }
    NodeDestruction call(tree, node.Position());
    while (call.HasNode() && !tree.IsLeaf(node)) {
        PruneParts(tree, Parts::Node(tree, std::next(node.Position())));
    }
    if (call.HasNode() && block == nullptr) {
        block = std::make_unique<OmTextBlock>(*text, codePage);
    }
    return call.HasNode() ? Append(tree, node, std::move(block)) : call.End();
}

} // namespace

OmOutputTree::Node Amputate(OmOutputTree::Node node, OmCellText const* text, std::string const& codePage) {
    if (!OM_HARDENED(node.Tree() != nullptr, "node._tree != 0", Source, __LINE__)) {
        return node;
    }
    Parts& tree = *node.Tree();
    if (!IsLiveIn(tree, node, __LINE__) ||
        !OM_HARDENED(node.Level() < std::numeric_limits<int>::max(), "node.Level() < max", Source, __LINE__)) {
        return node;
    }
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): its owner may be among the parts that go
    std::string const page = codePage;
    return node.Level() > 1 ? ReplaceByChildren(tree, node, page) : ReplaceChildren(tree, node, text, page);
}
