// The operations of OmDimension that rearrange a tree. Nodes shift while a tree changes, so operands are named by their
// paths, and each path is corrected after each step; `insertChild`, which takes any number of them, goes by addresses.

#include "backend/tables/Assert.h"
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/detail/ChildIndex.h"
#include "omcell/OmCellText.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

namespace {

[[maybe_unused]] constexpr char Source[] = "backend/tables/om/OmDimension";

using Tree = OmDimension::Tree;
using TreeNode = Tree::TreeNode;
using Path = std::vector<std::size_t>;

Path ParentOf(Path const& path) { return {path.begin(), path.end() - 1}; }

/// Whether `path` names the node at `top` or one below it.
bool IsAtOrBelow(Path const& top, Path const& path) {
    return top.size() <= path.size() && std::equal(top.begin(), top.end(), path.begin());
}

/// The step of `path` that leads through the children of `parent`, or null when it does not pass there.
std::size_t* StepBelow(Path const& parent, Path& path) {
    return path.size() > parent.size() && IsAtOrBelow(parent, path) ? &path[parent.size()] : nullptr;
}

/// Corrects a path after child `position` of `parent` was erased. The path must not lead into what was erased.
void FollowErase(Path const& parent, std::size_t position, Path& path) {
    std::size_t* const step = StepBelow(parent, path);
    if (step != nullptr && *step > position) {
        --*step;
    }
}

/// Corrects a path after a node was inserted as child `position` of `parent`.
void FollowInsert(Path const& parent, std::size_t position, Path& path) {
    std::size_t* const step = StepBelow(parent, path);
    if (step != nullptr && *step >= position) {
        ++*step;
    }
}

bool Holds(OmVector<TreeNode> const& children, TreeNode const* node) {
    // The node may stand in an unrelated block, so plain addresses are compared.
    auto const address = [](TreeNode const* place) { return reinterpret_cast<std::uintptr_t>(place); };
    return address(node) >= address(children.begin()) && address(node) < address(children.end());
}

/// A child that leaves its parent, and is destroyed with this object: what its labels' destructors do to the dimension
/// meets one that is complete, if this object is made before what is still to be done and outlives it.
///
/// Empties the place that falls free at the end of the block. Until pointers are repaired, the children of a moved
/// sibling may point there: they find a node without children, which leads nowhere, instead of left-over bytes whose
/// own parent pointer names a block that may be gone.
class Leaving {
public:
    Leaving(OmDimension::Node const& parent, std::size_t position) : _child(parent, position) {
        std::memset(static_cast<void*>(parent.Ptr()->children.end()), 0, sizeof(TreeNode));
    }

private:
    Tree::TakenChild _child;
};

/// The children of a node as they will stand, for finding places while nothing has changed yet: comparing labels may
/// fail, and a program's own kind may use the dimension meanwhile.
class Siblings {
public:
    explicit Siblings(OmDimension::Node const& parent) : _nodes(parent.ChildCount()) {
        std::iota(_nodes.begin(), _nodes.end(), parent.Ptr()->children.begin());
    }

    void Erase(TreeNode const* node) { _nodes.erase(std::find(_nodes.begin(), _nodes.end(), node)); }

    /// Inserts before the first one equal to `reference`, at the end when there is none or that is null; gives the
    /// position.
    std::size_t InsertBefore(TreeNode* node, OmDimensionNode const* reference) {
        std::size_t position = _nodes.size();
        if (reference != nullptr) {
            auto const isEqual = [&](TreeNode const* sibling) { return sibling->value == *reference; };
            auto const place = std::find_if(_nodes.begin(), _nodes.end(), isEqual);
            position = static_cast<std::size_t>(place - _nodes.begin());
        }
        _nodes.insert(_nodes.begin() + static_cast<std::ptrdiff_t>(position), node);
        return position;
    }

private:
    std::vector<TreeNode*> _nodes;
};

OmDimensionNode const* ValueAt(OmDimension::ConstNode const& parent, std::size_t position) {
    return position < parent.ChildCount() ? &parent.Child(position).Value() : nullptr;
}

/// Inserts the subtrees, in their order, before child `position`; later siblings move once. When memory runs out,
/// nothing has changed.
void InsertAll(OmDimension::Node const& parent, std::vector<Tree::Subtree> subtrees, std::size_t position) {
    OmVector<TreeNode>& children = parent.Ptr()->children;
    std::size_t const before = children.size();
    std::vector<unsigned char> added(subtrees.size() * sizeof(TreeNode));
    children.reserve(std::bit_ceil(std::max<std::size_t>(4, before + subtrees.size())));
    for (Tree::Subtree& subtree : subtrees) {
        Tree::InsertAt(parent, std::move(subtree), children.size());
    }
    TreeNode* const place = children.begin() + position;
    std::memcpy(added.data(), static_cast<void const*>(children.begin() + before), added.size());
    std::memmove(static_cast<void*>(place + subtrees.size()), static_cast<void const*>(place),
                 (before - position) * sizeof(TreeNode));
    std::memcpy(static_cast<void*>(place), added.data(), added.size());
}

} // namespace

// --- paths -----------------------------------------------------------------------------------------------------------

OmDimension::Node OmDimension::At(Path const& path) {
    Node node = Root();
    for (std::size_t const position : path) {
        node = node.Child(position);
    }
    return node;
}

bool OmDimension::PathOf(ConstNode const& node, Path& path) const {
    TreeNode const* const root = Root().Ptr();
    path.clear();
    if (node.IsNull()) {
        return false;
    }
    for (TreeNode const* place = node.Ptr(); place != root; place = place->parent) {
        if (place->parent == nullptr || !Holds(place->parent->children, place)) {
            return SearchPath(node.Ptr(), path);
        }
        path.push_back(static_cast<std::size_t>(place - place->parent->children.begin()));
    }
    std::reverse(path.begin(), path.end());
    return true;
}

bool OmDimension::SearchPath(TreeNode const* node, Path& path) const {
    std::vector<TreeNode const*> above{Root().Ptr()};
    path.assign(1, 0);
    while (!above.empty()) {
        OmVector<TreeNode> const& children = above.back()->children;
        if (Holds(children, node)) {
            path.back() = static_cast<std::size_t>(node - children.begin());
            return true;
        }
        if (path.back() < children.size()) {
            above.push_back(&children[path.back()]);
            path.push_back(0);
            continue;
        }
        above.pop_back();
        path.pop_back();
        if (!path.empty()) {
            ++path.back();
        }
    }
    return false;
}

// --- delete and dissolve ---------------------------------------------------------------------------------------------

void OmDimension::Delete(Node& node) {
    Path path;
    if (!PathOf(node, path) || path.empty()) {
        return;
    }
    std::size_t const removed = path.back();
    Node const parent = At(ParentOf(path));
    int const categories = static_cast<int>(LargestLeafSubscript(parent.Child(removed).Ptr()) + 1);
    Leaving const leaving(parent, removed);
    om_detail::ChildIndex::Drop(parent.Value()._childIndex, removed);
    _categories = categories;
}

void OmDimension::removeChild(Node& node) {
    Path path;
    if (!PathOf(node, path)) {
        static_cast<void>(OM_HARDENED(false, "node stands in this dimension", Source, __LINE__));
        return;
    }
    unsigned long long const before = node.Value().Subscript();
    node.Value().Subscript(OmDimensionNode::DissolvedSubscript);
    if (path.empty()) {
        return;
    }
    try {
        Dissolve(path);
    } catch (...) {
        node.Value().Subscript(before);
        throw;
    }
}

void OmDimension::Dissolve(Path const& path) {
    Node const parent = At(ParentOf(path));
    Node const dissolved = parent.Child(path.back());
    unsigned int const place = Tree::ChildPosition(parent, dissolved.Value());
    if (dissolved.ChildCount() == 0 || place == Tree::NoPosition) {
        return;
    }
    // Each copy belongs before the first child that equals the node. A copy that equals it itself comes to stand there,
    // so that whatever is copied later goes before it.
    std::vector<Tree::Subtree> copies;
    std::vector<Tree::Subtree> equals;
    for (std::size_t k = 0; k < dissolved.ChildCount(); ++k) {
        Tree::Subtree copy = Tree::CopySubtree(dissolved.Child(k), parent.Ptr(), &Region());
        bool const isEqual = copy.Ptr()->value == dissolved.Value();
        (isEqual ? equals : copies).push_back(std::move(copy));
    }
    std::move(equals.rbegin(), equals.rend(), std::back_inserter(copies));
    std::size_t const added = copies.size();
    InsertAll(parent, std::move(copies), place);
    Leaving const leaving(parent, place <= path.back() ? path.back() + added : path.back());
    Tree::Reparent(parent, true);
}

// --- move ------------------------------------------------------------------------------------------------------------

void OmDimension::moveChild(Node& node, Node* target, bool swap) {
    Path from;
    if (!PathOf(node, from) || from.empty()) {
        return;
    }
    if (target == nullptr) {
        MoveToVisibleAncestor(std::move(from));
        return;
    }
    Path to;
    if (!PathOf(*target, to) || to.empty()) {
        return;
    }
    if (swap) {
        SwapSiblings(std::move(from), std::move(to));
    } else {
        MoveBefore(std::move(from), std::move(to));
    }
}

void OmDimension::SwapSiblings(Path node, Path target) {
    if (IsAtOrBelow(node, target) || IsAtOrBelow(target, node)) {
        return;
    }
    Path nodeParent = ParentOf(node);
    Path targetParent = ParentOf(target);
    bool const siblings = nodeParent == targetParent;
    bool const targetFollows = siblings && target.back() == node.back() + 1;

    Node const parentOfNode = At(nodeParent);
    Node const parentOfTarget = At(targetParent);

    // 1. the copies
    Tree::Subtree nodeCopy = Tree::CopySubtree(At(node), nullptr, &Region());
    Tree::Subtree targetCopy = Tree::CopySubtree(At(target), nullptr, &Region());

    // 2. the followers
    OmDimensionNode const* afterNode = ValueAt(parentOfNode, node.back() + 1);
    OmDimensionNode const* afterTarget = ValueAt(parentOfTarget, target.back() + 1);
    if (targetFollows) {
        afterNode = afterTarget;
    } else if (siblings && node.back() == target.back() + 1) {
        afterTarget = afterNode;
    }

    // 3. the first child equal to target goes; when node's parent would go with it, there is no way to carry on
    Path doomed = target;
    for (std::size_t k = 0; k < target.back(); ++k) {
        bool const isNode = siblings && k == node.back();
        if (!isNode && parentOfTarget.Child(k).Value() == targetCopy.Ptr()->value) {
            doomed.back() = k;
            break;
        }
    }
    if (IsAtOrBelow(doomed, nodeParent)) {
        return;
    }

    // 4. the places: each copy's under its own former parent
    Siblings ofNode(parentOfNode);
    Siblings ofTarget(parentOfTarget);
    Siblings& together = siblings ? ofNode : ofTarget;
    ofNode.Erase(At(node).Ptr());
    together.Erase(parentOfTarget.Child(doomed.back()).Ptr());
    std::size_t nodePlace = 0;
    std::size_t targetPlace = 0;
    if (targetFollows) {
        targetPlace = together.InsertBefore(targetCopy.Ptr(), afterNode);
        nodePlace = ofNode.InsertBefore(nodeCopy.Ptr(), afterTarget);
    } else {
        nodePlace = ofNode.InsertBefore(nodeCopy.Ptr(), afterTarget);
        targetPlace = together.InsertBefore(targetCopy.Ptr(), afterNode);
    }

    // 5. the exchange; what leaves makes room for what comes
    std::optional<Leaving> leavingNode(std::in_place, parentOfNode, node.back());
    FollowErase(nodeParent, node.back(), doomed);
    FollowErase(nodeParent, node.back(), targetParent);
    Leaving const leavingTarget(At(targetParent), doomed.back());
    FollowErase(targetParent, doomed.back(), nodeParent);
    auto const insertNode = [&] {
        Tree::InsertAt(At(nodeParent), std::move(nodeCopy), nodePlace);
        FollowInsert(nodeParent, nodePlace, targetParent);
    };
    auto const insertTarget = [&] {
        Tree::InsertAt(At(targetParent), std::move(targetCopy), targetPlace);
        FollowInsert(targetParent, targetPlace, nodeParent);
    };
    if (targetFollows) {
        insertTarget();
        insertNode();
    } else {
        insertNode();
        insertTarget();
    }

    // 6. the repair
    RepairBelow(nodeParent);
    if (!siblings) {
        RepairBelow(targetParent);
    }
    leavingNode.reset();
}

void OmDimension::MoveBefore(Path node, Path target) {
    if (node != target && IsAtOrBelow(node, target)) {
        return;
    }
    Path from = ParentOf(node);
    Path to = ParentOf(target);
    Tree::Subtree copy = Tree::CopySubtree(At(node), nullptr, &Region());
    if (from != to) {
        Tree::MakeRoom(At(to));
    }
    Siblings siblings(At(to));
    if (from == to) {
        siblings.Erase(At(node).Ptr());
    }
    std::size_t const place = siblings.InsertBefore(copy.Ptr(), &At(target).Value());
    Leaving const leaving(At(from), node.back());
    FollowErase(from, node.back(), to);
    Tree::InsertAt(At(to), std::move(copy), place);
    FollowInsert(to, place, from);
    RepairBelow(to);
    if (from != to) {
        RepairBelow(from);
    }
}

void OmDimension::MoveToVisibleAncestor(Path node) {
    Path const from = ParentOf(node);
    std::ptrdiff_t visible = 0;
    Node above = Root();
    for (std::size_t k = 0; k < from.size(); ++k) {
        above = above.Child(from[k]);
        if (!above.Value().Hide()) {
            visible = static_cast<std::ptrdiff_t>(k + 1);
        }
    }
    Path const to(from.begin(), from.begin() + visible);
    Tree::Subtree copy = Tree::CopySubtree(At(node), nullptr, &Region());
    if (from != to) {
        Tree::MakeRoom(At(to));
    }
    Leaving const leaving(At(from), node.back());
    Tree::InsertAt(At(to), std::move(copy), At(to).ChildCount());
    RepairBelow(to);
}

// --- insert ----------------------------------------------------------------------------------------------------------

namespace {

/// Nodes that leave their parents together. Nodes shift while others go, so each is known by the address that it had at
/// first. First `Find`, then `TakeOut`, then `Destroy` each.
class LeavingNodes {
public:
    LeavingNodes(std::vector<TreeNode*> nodes, OmMemoryRegion* region) : _addresses(std::move(nodes)), _taken(region) {
        std::sort(_addresses.begin(), _addresses.end(), std::less<>());
        _addresses.erase(std::unique(_addresses.begin(), _addresses.end()), _addresses.end());
        _places.resize(_addresses.size());
    }
    ~LeavingNodes() { _taken.FreeRaw(); }

    LeavingNodes(LeavingNodes const&) = delete;
    LeavingNodes& operator=(LeavingNodes const&) = delete;

    /// Whether every node stands below `root`, and `first`, which is one of them, below none of the others. Goes by
    /// child order alone.
    bool Find(OmDimension::Node const& root, TreeNode* first);

    /// Moves the nodes, as bytes, into a block of their own and closes the gaps, every sibling moving once. Throws
    /// std::bad_alloc; nothing has changed then.
    void TakeOut() {
        _taken.reserve(_addresses.size());
        // Children before parents, so that no parent has moved when its turn comes.
        std::for_each(_parents.rbegin(), _parents.rend(), [this](TreeNode* parent) { TakeFrom(*parent); });
    }

    /// Destroys a node that was taken out; does nothing the second time.
    void Destroy(TreeNode* address) {
        auto const known = std::lower_bound(_addresses.begin(), _addresses.end(), address, std::less<>());
        TreeNode*& place = _places[static_cast<std::size_t>(known - _addresses.begin())];
        if (place != nullptr) {
            place->~TreeNode();
            place = nullptr;
        }
    }

    /// The parent of `first`, and how many of its children that stay stand before `first`.
    OmDimension::Node Home() const { return {_home, _homeDepth}; }
    std::size_t Position() const { return _position; }

private:
    using Range = std::pair<std::size_t, std::size_t>;

    /// Which of the addresses lie among the children of `parent`.
    Range Among(TreeNode const& parent) const {
        auto const first =
            std::lower_bound(_addresses.begin(), _addresses.end(), parent.children.begin(), std::less<>());
        auto const last = std::lower_bound(first, _addresses.end(), parent.children.end(), std::less<>());
        return {static_cast<std::size_t>(first - _addresses.begin()),
                static_cast<std::size_t>(last - _addresses.begin())};
    }
    bool Leaves(TreeNode const* node) const {
        return std::binary_search(_addresses.begin(), _addresses.end(), node, std::less<>());
    }
    void TakeFrom(TreeNode& parent);

    std::vector<TreeNode*> _addresses; ///< ascending, so those among the children of one parent are neighbours
    std::vector<TreeNode*> _places{};  ///< where each node is since `TakeOut`; null once destroyed
    std::vector<TreeNode*> _parents{}; ///< of the nodes, in pre-order
    OmVector<TreeNode> _taken;         ///< bytes of the nodes; `_places` says which are alive
    TreeNode* _home = nullptr;
    unsigned int _homeDepth = 0;
    std::size_t _position = 0;
};

bool LeavingNodes::Find(OmDimension::Node const& root, TreeNode* first) {
    constexpr unsigned int Nowhere = std::numeric_limits<unsigned int>::max();
    unsigned int covered = Nowhere; // depth of the uppermost leaving node that the walk is at or below
    bool goesWithAnother = false;
    std::size_t found = 0;
    Tree::WalkPreOrder(root, [&](OmDimension::ConstNode const& node) {
        TreeNode* const parent = const_cast<TreeNode*>(node.Ptr());
        if (node.Depth() <= covered) {
            covered = Leaves(parent) ? node.Depth() : Nowhere;
        }
        Range const among = Among(*parent);
        if (among.first == among.second) {
            return true;
        }
        _parents.push_back(parent);
        found += among.second - among.first;
        if (!std::less<>()(first, parent->children.begin()) && std::less<>()(first, parent->children.end())) {
            _home = parent;
            _homeDepth = node.Depth();
            auto const before = _addresses.begin() + static_cast<std::ptrdiff_t>(among.first);
            auto const last = _addresses.begin() + static_cast<std::ptrdiff_t>(among.second);
            _position = static_cast<std::size_t>(first - parent->children.begin()) -
                        static_cast<std::size_t>(std::lower_bound(before, last, first, std::less<>()) - before);
            goesWithAnother = covered != Nowhere;
        }
        return true;
    });
    return found == _addresses.size() && !goesWithAnother;
}

void LeavingNodes::TakeFrom(TreeNode& parent) {
    Range const among = Among(parent);
    TreeNode* const end = parent.children.end();
    TreeNode* to = _addresses[among.first];
    for (std::size_t k = among.first; k < among.second; ++k) {
        _taken.RelocateIn(_taken.size(), _addresses[k]);
        _places[k] = &_taken.back();
        TreeNode* const from = _addresses[k] + 1;
        TreeNode* const stop = k + 1 < among.second ? _addresses[k + 1] : end;
        if (!std::less<>()(_home, from) && std::less<>()(_home, stop)) {
            _home -= from - to;
        }
        std::memmove(static_cast<void*>(to), static_cast<void const*>(from),
                     static_cast<std::size_t>(stop - from) * sizeof(TreeNode));
        to += stop - from;
    }
    while (parent.children.end() != to) {
        parent.children.CloseGap(parent.children.size() - 1);
    }
    parent.ChildrenChanged();
}

} // namespace

void OmDimension::insertChild(OmCellText const& text, std::vector<Node*> nodes) {
    Tree::Subtree group(&Region(), nullptr, text, OmDimensionNode::NoSubscript, true, &Region());
    if (nodes.empty()) {
        return;
    }
    std::vector<TreeNode*> listed;
    listed.reserve(nodes.size());
    for (Node const* const node : nodes) {
        if (node == nullptr || node->IsNull()) {
            return;
        }
        listed.push_back(node->Ptr());
    }
    LeavingNodes leaving(listed, &Region());
    if (!leaving.Find(Root(), listed.front())) {
        return;
    }
    OmCellText const* const label = nodes.front()->Value().Text();
    group.Ptr()->value.Text()->SetTracker(label != nullptr ? label->Tracker() : nullptr);
    for (Node const* const node : nodes) {
        Tree::InsertAt(Node(group.Ptr(), 1), Tree::CopySubtree(*node, group.Ptr(), &Region()),
                       group.Ptr()->children.size());
    }

    leaving.TakeOut();
    // The home has lost a child, so there is room for the group.
    Tree::InsertAt(leaving.Home(), std::move(group), leaving.Position());
    Tree::Reparent(Root(), true);
    std::for_each(listed.rbegin(), listed.rend(), [&](TreeNode* node) { leaving.Destroy(node); });
}

OmDimensionNode OmDimension::insertCategory(OmCellText const& text, Node reference, Node parent, bool before) {
    Path path;
    return OM_HARDENED(PathOf(reference, path) && PathOf(parent, path), "reference and parent stand in this dimension",
                       Source, __LINE__)
               ? InsertLeaf(text, reference, parent, before)
               : OmDimensionNode(text, OmDimensionNode::NoSubscript, false, &Region());
}

OmDimensionNode OmDimension::InsertLeaf(OmCellText const& text, Node const& reference, Node const& parent,
                                        bool before) {
    Tree::Subtree leaf(&Region(), parent.Ptr(), text, OmDimensionNode::NoSubscript, false, &Region());
    OmCellText const* const label = reference.Value().Text();
    leaf.Ptr()->value.Text()->SetTracker(label != nullptr ? label->Tracker() : nullptr);
    leaf.Ptr()->value.Subscript(LargestLeafSubscript() + 1);
    OmDimensionNode made(leaf.Ptr()->value);

    std::size_t position = parent.ChildCount();
    OmDimensionNode const* followed = before ? &reference.Value() : nullptr;
    Path path;
    if (!before && PathOf(reference, path) && !path.empty()) {
        followed = ValueAt(At(ParentOf(path)), path.back() + 1);
    }
    if (followed != nullptr) {
        position = std::min<std::size_t>(position, Tree::ChildPosition(parent, *followed));
    }
    Tree::InsertAt(parent, std::move(leaf), position);
    Tree::Reparent(parent, true);
    CountLeaf();
    return made;
}
