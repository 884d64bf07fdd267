#ifndef OMTREE_OMCELL_OMCOMPOSITE_H
#define OMTREE_OMCELL_OMCOMPOSITE_H

#include "backend/tables/om/HandleLayout.h"
#include "backend/tables/om/VectorTree.h"
#include "omcell/Export.h"
#include "omcell/OmPartedText.h"

#include <vector>

/// A text that is put together from a tree of other texts.
///
///     root (value null, unused)
///      +-- "Sum of "
///      +-- squares            a component, and below it its own list of components
///      |    +-- " ("
///      |    +-- 12.5
///      +-- ")"                reads "Sum of squares (12.5)"
///
/// The components are the nodes below the root of a tree in the composite's region. The string forms join them in
/// pre-order, with nothing between them. A component may be a composite again.
///
/// The composite owns the texts that its tree points at. A program that edits the tree through `Components()` keeps to
/// that: a text that it puts in lies in the composite's region (made by `Clone` or `new (region)`) and occurs once; a
/// text whose node it erases is its own to destroy. Null values are allowed and stand for nothing.
///
/// Two composites are compared component by component in pre-order, a lower depth first and then by text, fewer
/// components before more.
class OMCELL_API OmComposite final : public OmPartedText {
public:
    using Tree = OmVectorTree<OmCellText*>;

    /// What `OrderCode` gives.
    static constexpr short Order = 0;

    /// A composite without components, for `region` (the default heap when null): `new (region) OmComposite(region)`.
    explicit OmComposite(OmMemoryRegion* region = nullptr);

    ~OmComposite() override;

    void Accept(Visitor& visitor) override;
    short OrderCode() const override;

    /// The tree of components. Its handles stay valid as VectorTree.h says.
    Tree& Components() {
        NoteEdit();
        return _components;
    }
    Tree const& Components() const { return _components; }

    /// Adds a clone of `text` as the last component below `parent`, a handle into this composite's tree, and returns
    /// its handle. Handles to the other components below the same parent are stale afterwards. Amortised O(1), plus
    /// what `OmVectorTree::AddChild` costs when it moves the siblings. A foreign text may append to this composite
    /// while it is cloned; what it appends below the same parent comes first.
    Tree::Node Append(Tree::Node const& parent, OmCellText const& text);
    /// The same below the root.
    Tree::Node Append(OmCellText const& text);

private:
    using TreeNode = Tree::TreeNode;

    OmComposite(OmComposite const& source, OmMemoryRegion* region);

    OmPartedText* Shell(OmMemoryRegion* region) const override;
    void ListParts(std::vector<Part>& parts) const override;
    void GiveUpParts(Bin& bin) override;
    void Expand(Form form, Pieces& pieces) const override;

    void CopyShape(Tree const& source);
    Tree::Node AddComponent(Tree::Node const& parent, OmCellText* text);

    /// A call of `Append` that waits for a clone, and follows the node that it appends to.
    struct Waiting {
        TreeNode* parent = nullptr;
        Waiting* outer = nullptr;
    };

    Tree _components;
    Waiting* _waiting = nullptr; ///< the innermost
};

#endif
