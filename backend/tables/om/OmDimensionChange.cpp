// The operations of OmDimension that rearrange a tree. Nodes shift while a tree changes, so operands are named by their
// paths, and each path is corrected after each step.

#include "backend/tables/om/OmDimension.h"
#include "omcell/OmCellText.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

namespace {

using Tree = OmDimension::Tree;
using TreeNode = Tree::TreeNode;
using Path = std::vector<std::size_t>;

/// A value that is looked for by equality; null for none. Shared, because assigning a node value would move its label.
using Noted = std::shared_ptr<OmDimensionNode const>;

Path ParentOf(Path const& path) { return Path(path.begin(), path.end() - 1); }

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

Noted NoteValue(OmDimension::ConstNode const& parent, std::size_t position) {
    if (position >= parent.ChildCount()) {
        return nullptr;
    }
    return std::make_shared<OmDimensionNode const>(parent.Child(position).Value());
}

/// Inserts before the first child equal to `reference`, at the end when there is none; returns the position.
std::size_t InsertBefore(OmDimension::Node const& parent, Tree::Subtree subtree, OmDimensionNode const* reference) {
    std::size_t position = parent.ChildCount();
    if (reference != nullptr) {
        unsigned int const found = Tree::ChildPosition(parent, *reference);
        if (found != Tree::NoPosition) {
            position = found;
        }
    }
    Tree::InsertAt(parent, std::move(subtree), position);
    return position;
}

} // namespace

// --- paths
// -------------------------------------------------------------------------------------------------------------

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
        if (path.back() == children.size()) {
            above.pop_back();
            path.pop_back();
            continue;
        }
        above.push_back(&children[path.back()++]);
        path.push_back(0);
    }
    return false;
}

// --- delete and dissolve
// -----------------------------------------------------------------------------------------------

void OmDimension::Delete(Node& node) {
    Path path;
    if (!PathOf(node, path) || path.empty()) {
        return;
    }
    std::size_t const removed = path.back();
    Node const parent = At(ParentOf(path));
    Tree::EraseChild(parent, removed);

    OmVector<int>& index = parent.Value().ChildIndex();
    std::size_t i = 0;
    while (i < index.size()) {
        std::size_t const entry = static_cast<unsigned int>(index[i]);
        if (entry == removed) {
            // The entry at the removed position goes, not the one that names it.
            index.erase(removed < index.size() ? removed : i);
            continue;
        }
        if (entry > removed) {
            --index[i];
        }
        ++i;
    }
    _categories = static_cast<int>(LargestLeafSubscript() + 1);
}

void OmDimension::removeChild(Node& node) {
    node.Value().Subscript(OmDimensionNode::DissolvedSubscript);
    Path path;
    if (!PathOf(node, path) || path.empty()) {
        return;
    }
    Path const above = ParentOf(path);
    Node const parent = At(above);
    std::size_t const count = parent.Child(path.back()).ChildCount();
    if (count == 0) {
        return;
    }
    for (std::size_t k = 0; k < count; ++k) {
        Node const dissolved = parent.Child(path.back());
        Tree::Subtree copy = Tree::CopySubtree(dissolved.Child(k), parent.Ptr(), &Region());
        FollowInsert(above, InsertBefore(parent, std::move(copy), &dissolved.Value()), path);
    }
    Tree::EraseChild(parent, path.back());
    Tree::Reparent(parent, true);
}

// --- move
// --------------------------------------------------------------------------------------------------------------

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

    // 1. the followers
    Noted afterNode = NoteValue(At(nodeParent), node.back() + 1);
    Noted afterTarget = NoteValue(At(targetParent), target.back() + 1);
    if (targetFollows) {
        afterNode = afterTarget;
    } else if (siblings && node.back() == target.back() + 1) {
        afterTarget = afterNode;
    }

    // 2. the copies
    Tree::Subtree nodeCopy = Tree::CopySubtree(At(node), nullptr, &Region());
    Tree::Subtree targetCopy = Tree::CopySubtree(At(target), nullptr, &Region());

    // 3. the first child equal to target goes; when node's parent would go with it, there is no way to carry on
    Path doomed = target;
    ConstNode const parent = At(targetParent);
    for (std::size_t k = 0; k < target.back(); ++k) {
        bool const isNode = siblings && k == node.back();
        if (!isNode && parent.Child(k).Value() == targetCopy.Ptr()->value) {
            doomed.back() = k;
            break;
        }
    }
    if (IsAtOrBelow(doomed, nodeParent)) {
        return;
    }
    Tree::EraseChild(At(nodeParent), node.back());
    FollowErase(nodeParent, node.back(), doomed);
    FollowErase(nodeParent, node.back(), targetParent);
    Tree::EraseChild(At(targetParent), doomed.back());
    FollowErase(targetParent, doomed.back(), nodeParent);

    // 4. each copy under its own former parent
    auto const insertNode = [&] {
        FollowInsert(nodeParent, InsertBefore(At(nodeParent), std::move(nodeCopy), afterTarget.get()), targetParent);
    };
    auto const insertTarget = [&] {
        FollowInsert(targetParent, InsertBefore(At(targetParent), std::move(targetCopy), afterNode.get()), nodeParent);
    };
    if (targetFollows) {
        insertTarget();
        insertNode();
    } else {
        insertNode();
        insertTarget();
    }

    // 5. the repair
    RepairBelow(nodeParent);
    if (!siblings) {
        RepairBelow(targetParent);
    }
}

void OmDimension::MoveBefore(Path node, Path target) {
    if (node != target && IsAtOrBelow(node, target)) {
        return;
    }
    Path from = ParentOf(node);
    Path to = ParentOf(target);
    Tree::Subtree copy = Tree::CopySubtree(At(node), nullptr, &Region());
    Noted const reference = NoteValue(At(to), target.back());
    Tree::EraseChild(At(from), node.back());
    FollowErase(from, node.back(), to);
    FollowInsert(to, InsertBefore(At(to), std::move(copy), reference.get()), from);
    RepairBelow(to);
    if (from != to) {
        RepairBelow(from);
    }
}

void OmDimension::MoveToVisibleAncestor(Path node) {
    Path const from = ParentOf(node);
    Path to = from;
    while (!to.empty() && At(to).Value().Hide()) {
        to.pop_back();
    }
    Tree::Subtree copy = Tree::CopySubtree(At(node), nullptr, &Region());
    Tree::EraseChild(At(from), node.back());
    InsertBefore(At(to), std::move(copy), nullptr);
    RepairBelow(to);
}

// --- insert
// ------------------------------------------------------------------------------------------------------------

void OmDimension::insertChild(OmCellText const& text, std::vector<Node*> nodes) {
    Tree::Subtree group(&Region(), nullptr, text, OmDimensionNode::NoSubscript, true, &Region());
    if (nodes.empty()) {
        return;
    }
    std::vector<Path> listed(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (!PathOf(*nodes[i], listed[i]) || listed[i].empty()) {
            return;
        }
    }
    Path home = ParentOf(listed.front());
    std::size_t const place = listed.front().back();
    for (Path const& path : listed) {
        if (IsAtOrBelow(path, home)) {
            return;
        }
    }
    OmCellText* const first = nodes.front()->Value().Text();
    group.Ptr()->value.Text()->SetTracker(first != nullptr ? first->Tracker() : nullptr);
    for (Path const& path : listed) {
        Tree::InsertAt(Node(group.Ptr(), 1), Tree::CopySubtree(At(path), group.Ptr(), &Region()),
                       group.Ptr()->children.size());
    }

    // A node below one that was erased already is gone with it. Parents of erased nodes are followed for the repair.
    std::vector<Path> changed;
    for (std::size_t i = listed.size(); i > 0; --i) {
        Path const path = listed[i - 1];
        if (path.empty()) {
            continue;
        }
        Path const parent = ParentOf(path);
        Tree::EraseChild(At(parent), path.back());
        auto const isGone = [&](Path const& other) { return IsAtOrBelow(path, other); };
        changed.erase(std::remove_if(changed.begin(), changed.end(), isGone), changed.end());
        for (Path& other : changed) {
            FollowErase(parent, path.back(), other);
        }
        for (std::size_t j = 0; j < listed.size(); ++j) {
            if (isGone(listed[j])) {
                listed[j].clear();
            } else {
                FollowErase(parent, path.back(), listed[j]);
            }
        }
        FollowErase(parent, path.back(), home);
        changed.push_back(parent);
    }

    std::size_t const position = std::min(place, At(home).ChildCount());
    Tree::InsertAt(At(home), std::move(group), position);
    for (Path& other : changed) {
        FollowInsert(home, position, other);
        RepairBelow(other);
    }
    RepairBelow(home);
}

OmDimensionNode OmDimension::insertCategory(OmCellText const& text, Node reference, Node parent, bool before) {
    unsigned long long const subscript = LargestLeafSubscript() + 1;
    Tree::Subtree leaf(&Region(), parent.Ptr(), text, subscript, false, &Region());
    OmCellText const* const label = reference.Value().Text();
    leaf.Ptr()->value.Text()->SetTracker(label != nullptr ? label->Tracker() : nullptr);

    OmDimensionNode const* followed = before ? &reference.Value() : nullptr;
    Path path;
    if (!before && PathOf(reference, path) && !path.empty()) {
        Node const above = At(ParentOf(path));
        if (path.back() + 1 < above.ChildCount()) {
            followed = &above.Child(path.back() + 1).Value();
        }
    }
    std::size_t const position = InsertBefore(parent, std::move(leaf), followed);
    Tree::Reparent(parent, true);
    ++_categories;
    return OmDimensionNode(parent.Child(position).Value());
}
