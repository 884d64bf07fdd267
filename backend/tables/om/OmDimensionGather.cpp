// The operation of OmDimension that takes any number of nodes from anywhere in the tree at once.

#include "backend/tables/om/OmDimension.h"
#include "omcell/OmCellText.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

namespace {

using Tree = OmDimension::Tree;
using TreeNode = Tree::TreeNode;

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

    /// The parent of `first`, and the position that `first` had there.
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
            _position = static_cast<std::size_t>(first - parent->children.begin());
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
    std::for_each(listed.rbegin(), listed.rend(), [&](TreeNode* node) { leaving.Destroy(node); });
    // The home has lost a child, so there is room for the group.
    Node const home = leaving.Home();
    Tree::InsertAt(home, std::move(group), std::min(leaving.Position(), home.ChildCount()));
    Tree::Reparent(Root(), true);
}
