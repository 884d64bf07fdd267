#ifndef OMTREE_BACKEND_TABLES_OM_OMDIMENSION_H
#define OMTREE_BACKEND_TABLES_OM_OMDIMENSION_H

#include "backend/tables/Export.h"
#include "backend/tables/om/HandleLayout.h"
#include "backend/tables/om/OmDimensionNode.h"
#include "backend/tables/om/VectorTree.h"

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

class OmCellText;
class OmPivotTable;
class OmStringCell;

namespace om_detail {
class LabelKey;
}

/// One dimension of a pivot table: a tree of categories.
///
///     Sex                      the root carries the dimension's name
///     |-- Adults               inner nodes are groups
///     |   |-- Male      0      leaves are the categories; each has a subscript, by which cells address it
///     |   `-- Female    1
///     `-- Unknown       2
///
/// Children stand in display order. Beside them each node keeps a child index, the positions of its children sorted by
/// label, which makes find-or-create by label (`Child`) a bisection. Only `Child` keeps the index sorted: `AddNewChild`
/// appends to it, `Delete` edits it, and the other operations leave it as it is. A search over an index that is out of
/// step gives what the bisection gives; it never reads outside the children.
///
/// While the index of a parent with some children names all of them in strict order, and all their labels are string
/// cells that live in the table, `Child` and `FindChild` ask a hash over the labels instead (om_detail::ChildIndex). It
/// gives the same answers. An edit of a string cell or a node of the table, or a change of the children that is not
/// made by `Child`, drops it; after as many searches by bisection as a quarter of the children, `Child` looks whether
/// there may be one again. `FindChild` and other operations of the constant form change nothing, so any number of
/// threads may use them at once.
///
/// A table makes its dimensions, owns them, and keeps everything in them in its memory region. Handles (`Node`) go
/// stale when the children vector that holds their node changes; re-fetch them from `Root()` after every change.
/// `Delete`, `moveChild` and `insertChild` change nothing when they are given the root where a child is needed, a node
/// of another dimension or a null handle; for `removeChild` and `insertCategory` a node of another dimension is a
/// hardened check. `Child` and `AddNewChild` trust that `parent` stands in this dimension.
///
/// An operation that throws, for want of memory or because a text threw, leaves the dimension as it was. Labels of a
/// program's own kinds are cloned, given the tracker and compared before anything changes, and destroyed when all is
/// done, so a label may use the dimension while that is done to it.
/// REQUIRES: a label that is cloned or given the tracker leaves the nodes that the running operation was given, and
/// those that are copied, where they are: handles go stale for the operation as for anybody. (The root never moves.) A
/// label that is asked something (its order, length, comparison, string) changes nothing in the dimension; it may
/// search it.
///
/// Costs: n is the number of nodes; the depth of an operand comes on top. Where a cost says "repair", every parent
/// pointer below the named node is set anew. Parent pointers below the later siblings of a node that `Delete` removed
/// stay stale until one of the other operations repairs them. They lead to another node of the dimension, or to an
/// empty one behind the last sibling, never outside; the operations here notice and search the tree for the parent,
/// O(n).
class OMTREE_API OmDimension {
public:
    using Tree = OmVectorTree<OmDimensionNode>;
    using Node = Tree::Node;
    using ConstNode = Tree::ConstNode;

    OmDimension(OmDimension const&) = delete;
    OmDimension& operator=(OmDimension const&) = delete;

    /// Destroys the whole tree, children before parents, then the root value. The table has forgotten the dimension by
    /// then; a label that goes with it uses the table, not the dimension.
    ~OmDimension();

    /// Handle of depth 0.
    Node Root() { return _tree.Root(); }
    ConstNode Root() const { return _tree.Root(); }

    /// The root's text: the dimension's name.
    /// REQUIRES: the root has one. An assignment from its value takes it away; ask the value's `Text()` then.
    OmCellText& Name() { return *_tree.Root().Value().Text(); }
    OmCellText const& Name() const { return *_tree.Root().Value().Text(); }

    /// The region of the root's children.
    OmMemoryRegion& Region() const { return *_tree.Region(); }

    /// Number of categories: the extent of the dimension for axes and look-ups. `Child`, `AddNewChild` and
    /// `insertCategory` count a leaf up, `Delete` sets it from the largest subscript left, nothing else touches it.
    /// Past the largest `int` it goes on from the smallest.
    int NumCategories() const { return _categories; }

    bool DisplayLastCategory() const { return _displayLastCategory; }
    void DisplayLastCategory(bool display) { _displayLastCategory = display; }

    /// The dimension's number in the table that it was added to; a copied dimension keeps its source's until it is
    /// added.
    int Index() const { return _index; }

    /// Find-or-create: the child of `parent` with the group flag and label of `value`, whatever its subscript, or a new
    /// last child copied from it. The label of a new child takes the tracker of parent's label; its child index is
    /// empty. O(1) on average where there is a hash, else O(log children) comparisons and, for a new child, O(children)
    /// bytes moved; creating invalidates handles to parent's children. Throws OMSException "OmDimension::Child --
    /// parent is not group", values 0 and 0; nothing has changed then.
    Node Child(Node const& parent, OmDimensionNode const& value);
    Node Child(Node const& parent, OmCellText const& text, unsigned long long subscript, bool isGroup);

    /// Appends a child without searching. Its entry goes to the end of parent's child index, unsorted, so a later
    /// `Child` may miss it and its neighbours. `parent` need not be a group. Amortised O(1).
    Node AddNewChild(Node const& parent, OmCellText const& text, unsigned long long subscript, bool isGroup);

    /// Position of the child of `parent` with this label and group flag, by parent's child index, or -1. O(1) on
    /// average where there is a hash, else O(log children); a text of a program's own kind among hashed labels has
    /// those sorted in first that were added since one was looked for, and takes memory for that.
    static int FindChild(ConstNode parent, OmCellText const& text, bool isGroup);

    /// The node of this dimension at the path that `node` has in a dimension of the same shape. O(depth).
    /// Assertion "0 <= offset && offset < vec.size()", source `backend/tables/om/VectorTree`, when node's parent
    /// pointers are stale.
    Node Counterpart(Node& node);

    /// Destroys a node with its subtree, edits its parent's child index, and sets the number of categories to the
    /// largest leaf subscript left plus one (1 when no leaf is left). The entry removed from the child index is the one
    /// AT the deleted position, not the one that names it. Parent pointers are not repaired. O(n).
    void Delete(Node& node);

    /// Dissolves a group: its children take its place among its siblings. Sets the node's subscript to 2^64 - 2 first;
    /// a node without children, and the root, stay in place with it. The place is found by equality, the first of equal
    /// siblings; a node whose label does not even equal itself stays. Number of categories and child indexes stay.
    /// O(subtree), and repair below the parent. A node of another dimension fails the hardened check "node stands in
    /// this dimension"; nothing changes when its handler returns.
    void removeChild(Node& node);

    /// Moves a node with its subtree. Number of categories and child indexes stay. Siblings are found by equality, the
    /// first of equal ones.
    ///  - target, swap: the two siblings exchange places. Nodes under different parents are not exchanged: each goes
    ///  back
    ///    under its own parent, as the last child unless a sibling there equals the other's follower.
    ///  - target, no swap: the node goes before the first child of target's parent that equals target.
    ///  - no target: the node becomes the last child of its nearest ancestor that is not hidden (the root at the
    ///  latest).
    /// Nothing changes when one operand lies below the other (without `swap`: target below node), when a swap names one
    /// node twice, or when removing the equal of target would remove node's parent. O(subtrees), and repair below the
    /// parents.
    void moveChild(Node& node, Node* target, bool swap);

    /// Gathers the listed nodes, copied in list order, under a new group with this label, which takes the place of the
    /// first listed node: right after the nearest sibling before it that is not listed, to the front where there is
    /// none. The group's subscript is all ones; its label takes the tracker of the first node's label. Number of
    /// categories and child indexes stay.
    /// An empty list changes nothing, and neither does one whose first node lies below another of its nodes.
    /// O(n + nodes log nodes), and repair of the whole tree.
    void insertChild(OmCellText const& text, std::vector<Node*> nodes);

    /// Adds a leaf before or after `reference` under `parent` and returns a copy of its value, which lives in this
    /// dimension's region and must be gone before that. Its subscript is the largest leaf subscript plus one; its label
    /// takes the tracker of reference's label. Places are found by equality, the first of equal siblings. The child
    /// index stays. O(n). Nodes of another dimension fail the hardened check "reference and parent stand in this
    /// dimension"; when its handler returns, nothing changes and the value that comes back has subscript all ones.
    OmDimensionNode insertCategory(OmCellText const& text, Node reference, Node parent, bool before);

    /// Largest depth of a node plus one: 1 without categories, 2 for a flat list. O(n).
    unsigned int getMaximumDepth() const;

    /// The largest number of visible groups on one level, where the childless children of one parent count as one
    /// together. O(n).
    unsigned long long getMaxVisibleGroupCount() const;

private:
    friend class OmPivotTable;

    using TreeNode = Tree::TreeNode;
    /// Child positions from the root down to a node. Unlike handles and pointers, paths can be followed through
    /// changes.
    using Path = std::vector<std::size_t>;

    /// A dimension named by a root value that is copied into its own region; children live in `region`.
    OmDimension(OmDimensionNode const& root, OmMemoryRegion* region);
    /// A deep copy in `region`. The display last category flag starts false.
    OmDimension(OmDimension const& other, OmMemoryRegion* region);

    void Index(int index) { _index = index; }
    void CountLeaf() { _categories = static_cast<int>(static_cast<unsigned int>(_categories) + 1U); }

    struct Found {
        std::size_t place; ///< lower bound in the child index
        int position;      ///< the child's position, or -1
    };
    /// What the bisection of the child index comes to. With a label: nothing when it met a child whose label is no
    /// plain string cell, which may see what it is compared with.
    static Found Search(ConstNode const& parent, OmDimensionNode const& probe);
    static std::optional<Found> Search(ConstNode const& parent, om_detail::LabelKey const& label, bool isGroup);

    /// What a new child gets besides its label.
    struct Fields {
        unsigned long long subscript;
        bool isGroup;
        OmSort::Order sort;
        bool hide;
        bool hideLabels;
    };
    Node FindOrCreate(Node const& parent, OmDimensionNode const& value);
    Node FindOrCreate(Node const& parent, OmStringCell const& text, Fields const& fields);
    Node FindOrCreate(Node const& parent, OmCellText const& text, unsigned long long subscript, bool isGroup);
    Node FindOrCreateByBisection(Node const& parent, OmStringCell const& text, om_detail::LabelKey const& label,
                                 Fields const& fields);
    bool TryToHash(TreeNode& parent) const;

    Tree::Subtree Cloned(OmDimensionNode const& value) const;
    /// Puts the child behind the others, and its entry at `place` of parent's child index.
    Node Append(Node const& parent, Tree::Subtree child, std::size_t place);
    /// The same at the end, of a copy whose label is a string cell.
    Node AppendString(Node const& parent, OmDimensionNode const& value);
    Node Append(Node const& parent, OmStringCell const& text, Fields const& fields);

    bool PathOf(ConstNode const& node, Path& path) const;
    bool SearchPath(TreeNode const* node, Path& path) const;
    Node At(Path const& path);
    void RepairBelow(Path const& path) { Tree::Reparent(At(path), true); }

    OmDimensionNode InsertLeaf(OmCellText const& text, Node const& reference, Node const& parent, bool before);
    void Dissolve(Path const& path);
    void SwapSiblings(Path node, Path target);
    void MoveBefore(Path node, Path target);
    void MoveToVisibleAncestor(Path node);

    /// In the whole dimension, or in what is left of it without a node and its subtree.
    unsigned long long LargestLeafSubscript(TreeNode const* without = nullptr) const;
    static unsigned int getDepth(ConstNode node);
    static void getGroupCountsByLevel(ConstNode node, std::vector<unsigned long long>& counts);

    Tree _tree;
    int _categories = 0;
    bool _displayLastCategory = false;
    int _index = -1;
};

#endif
