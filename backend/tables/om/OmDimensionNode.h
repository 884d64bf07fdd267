#ifndef OMTREE_BACKEND_TABLES_OM_OMDIMENSIONNODE_H
#define OMTREE_BACKEND_TABLES_OM_OMDIMENSIONNODE_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmSort.h"
#include "backend/tables/om/OmVector.h"
#include "omcell/OmMemoryRegion.h"

class OmCellText;
template <typename T>
class OmVectorTree;

namespace om_detail {
class ChildIndex;
}

/// A category, a group of categories, or (at the root) the dimension itself: the value type of a category tree.
///
///     +------+-----------+--------+-------------+------+----------+------+-------------+
///     | text | subscript | region | child index | sort | is group | hide | hide labels |     40 bytes
///     +------+-----------+--------+-------------+------+----------+------+-------------+
///                                      `--> a record in the region, made with the first entry; null in a leaf
///
///  - The text is the label; the node owns it. Null only in a node made from a region alone, or one whose text an
///    assignment took away.
///  - The subscript is the number by which cells address a leaf. All ones in a group made by `insertChild`; 2^64 - 2
///    in a node that `removeChild` was called on.
///  - The child index lists the positions of the node's children sorted by label; `OmDimension` keeps it, and some of
///    its operations leave it out of step with the children.
///
/// The node's region is that of its child index. It outlives the node; so does the region of a label that an assignment
/// took over. Copies cost a clone of the label and the length of the child index.
class OMTREE_API OmDimensionNode {
public:
    static constexpr unsigned long long NoSubscript = ~0ULL;
    static constexpr unsigned long long DissolvedSubscript = ~0ULL - 1;

    /// No text, subscript all ones, empty child index in `region` (the default heap when null), no sort order, no
    /// flags.
    explicit OmDimensionNode(OmMemoryRegion* region = nullptr);

    /// A clone of `text` in `region`, an empty child index there, no sort order, neither hidden nor label-hiding.
    OmDimensionNode(OmCellText const& text, unsigned long long subscript, bool isGroup, OmMemoryRegion* region);

    /// A deep copy in `region`. A null source text stays null.
    OmDimensionNode(OmDimensionNode const& other, OmMemoryRegion* region);

    /// A deep copy in the source's own region.
    OmDimensionNode(OmDimensionNode const& other);

    /// Transfers the label: destroys the own text, takes over the source's and leaves the source without one, although
    /// the source is const. Then copies subscript, child index, sort order and flags; the own region stays. Texts that
    /// are one object stay where they are.
    OmDimensionNode& operator=(OmDimensionNode const& other);

    /// Frees the child index, then destroys the text.
    ~OmDimensionNode();

    /// The label; valid until it is replaced, taken by an assignment, or the node is destroyed or moved by its tree.
    OmCellText* Text() { return _text; }
    OmCellText const* Text() const { return _text; }
    /// Clones `text` into the node's region, then destroys the old label. REQUIRES: the node stays in its place until
    /// the clone is made; what the old label does when it goes may move it.
    void Text(OmCellText const& text);

    unsigned long long Subscript() const { return _subscript; }
    void Subscript(unsigned long long subscript) { _subscript = subscript; }

    OmSort::Order Sort() const { return _sort; }
    void Sort(OmSort::Order order) { _sort = order; }

    bool IsGroup() const { return _isGroup; }
    void IsGroup(bool isGroup) {
        if (isGroup != _isGroup) {
            _region->BeforeEdit();
            _isGroup = isGroup;
        }
    }

    /// A hidden node's label is left out of headings; its categories stay.
    bool Hide() const { return _hide; }
    void Hide(bool hide) { _hide = hide; }

    /// On a group: its own label and every label below are left out of headings.
    bool HideLabels() const { return _hideLabels; }
    void HideLabels(bool hideLabels) { _hideLabels = hideLabels; }

    /// The node's region; never null, not owned.
    OmMemoryRegion* Region() const { return _region; }

    /// Groups before non-groups; among either, by `Compare` of the labels (a missing label first). Subscripts take no
    /// part.
    friend OMTREE_API bool operator<(OmDimensionNode const& a, OmDimensionNode const& b);

    /// Group flags and subscripts equal, and the labels equal as texts (`TextLength` first, then `Compare`).
    friend OMTREE_API bool operator==(OmDimensionNode const& a, OmDimensionNode const& b);
    friend bool operator!=(OmDimensionNode const& a, OmDimensionNode const& b) { return !(a == b); }

    /// Writes one line to standard output: two blanks for each `indent`, then for instance
    ///
    ///     Subscript: 3, Group: no, hide: no, hideLabels: no, Sort: up, Children: 1, 0, Text: "Male"
    ///
    /// The subscript shows as a signed 32-bit integer; sort order, children and text only where there are any. What the
    /// program has set on the stream (width, fill, base, flags, locale) changes nothing and stays as it is.
    void Print(unsigned int indent) const;

private:
    friend class OmDimension;
    friend class OmVectorTree<OmDimensionNode>;

    void CopyPlainFields(OmDimensionNode const& other);

    /// Called by the tree.
    void ChildrenRearranged();

    mutable OmCellText* _text = nullptr; // an assignment takes it from its const source
    unsigned long long _subscript = NoSubscript;
    OmMemoryRegion* _region;
    om_detail::ChildIndex* _childIndex = nullptr;
    OmSort::Order _sort = OmSort::None;
    bool _isGroup = false;
    bool _hide = false;
    bool _hideLabels = false;
};

#endif
