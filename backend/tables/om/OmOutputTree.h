#ifndef OMTREE_BACKEND_TABLES_OM_OMOUTPUTTREE_H
#define OMTREE_BACKEND_TABLES_OM_OMOUTPUTTREE_H

#include "backend/tables/Export.h"
#include "backend/tables/ListTree.h"
#include "backend/tables/om/OmOutputPart.h"

#include <string>

class OmCellText;

extern template class OMTREE_API ListTree<OmOutputPart*>;

/// The output document: a tree of parts under a root heading titled "Output".
///
/// Unlike the generic tree it owns the parts that its records point at: `Prune`, `Erase` and the destructor here
/// destroy them, each through its virtual destructor; the operations inherited from ListTree do not. A null value is
/// allowed and passed over.
///
/// Reading a document: walk `List()` from first to last, call each part's `Accept`, and take the record's level as the
/// outline depth.
///
/// Who changes the tree on such a walk keeps to what std::list says: records may be added anywhere, and what is added
/// behind is reached by the walk; the record that the walk stands at must not go before the walk has left it.
///
/// A part stands in one record of one document. Where it stands in two, it is destroyed twice.
///
/// The destructor of a part may call any operation of the document that destroys it. What it does stands:
///  - What it adds below a node that is being pruned is pruned with it.
///  - What it removes is gone, and the outer call goes on with what is left. A part whose destructor runs is not
///    destroyed again, whoever removes its record.
///  - When it removes the node that the outer call was made for, that call ends, once the part at hand is done.
///  - It may destroy the document; the outer call then ends without touching it.
/// REQUIRES: the inherited operations, and edits through `List()`, which go unseen, leave three records alone that are
/// not theirs: that of a part whose destructor runs, that of the node which a call is working on, and that which the
/// destructor of the document stands at. A document is not destroyed twice.
///
/// Copying and assignment share the parts; nothing is cloned, and assignment drops the old records without destroying
/// their parts. Of a document and its copy only one may be destroyed with its parts.
class OMTREE_API OmOutputTree : public ListTree<OmOutputPart*> {
public:
    /// One record: an OmHeading titled "Output", level 0.
    OmOutputTree();
    OmOutputTree(OmOutputTree const&) = default;
    OmOutputTree& operator=(OmOutputTree const& other);

    /// Destroys every part, first record to last, then the records. A part that a destructor adds meanwhile is
    /// destroyed too. O(records).
    ~OmOutputTree();

    /// Removes a node with the subtree that its cached level bounds, destroying every part in it: children before their
    /// parent, first child first, deepest first. A record holds its part until that is destroyed, then null, and goes
    /// before the next part does. The handle is invalid afterwards. O(records removed), whatever the depth; throws
    /// std::bad_alloc when there is no memory for a level number for each level, and what is not destroyed is a tree
    /// then.
    /// REQUIRES: a handle of this tree (hardened check "node._tree == this") that is not at the end ("node.position !=
    /// end"); else nothing is done.
    void Prune(Node& node);

    /// Destroys the node's part and removes the node alone; its children move up into its place. The record holds its
    /// part until that is destroyed, then null. The handle is invalid afterwards. O(descendants).
    /// REQUIRES: as for `Prune`.
    void Erase(Node& node);
};

/// Reshapes a branch of the document into a text block.
///
/// Below the top-level headings (the handle's cached level is greater than 1) the node goes: its children, and behind
/// them a new text block that carries the node's own title, take its place. `text` is not used. Returns a handle on the
/// first of them.
///
/// At level 0 or 1 the node stays: everything below it is pruned, first child first, and a new text block titled by
/// `text` becomes its only child. Returns a handle on that. A text of the library's own kinds may belong to a part
/// below the node, as its title or a piece of it; any other is cloned after the pruning and must outlive it.
///
/// The block's lines are to be in `codePage`, which may belong to a part that goes. When a part's destructor removes
/// the node, there is no place for the block: the handle that comes back is on the end, and on nothing when the
/// document is gone.
///
/// When there is no memory for the block's record, std::bad_alloc comes after the part has gone (below the top-level
/// headings: null stands in its place) or after what was below the node has.
///
/// The node may be one of a plain list tree of parts, whose parts are then destroyed like a document's.
///
/// O(records below the node).
/// REQUIRES: a handle of a tree (hardened check "node._tree != 0") that is not at the end ("node.position != end"),
/// with a level that has one below it ("node.Level() < max"); on the first path, a part to take the title from ("part
/// != 0") that stays while its title is cloned; on the second, a text ("text != 0") that, when it is of a foreign kind,
/// is no title below the node nor in one ("text != held"). When such a check's handler returns, nothing changes and
/// `node` is given back.
OMTREE_API OmOutputTree::Node Amputate(OmOutputTree::Node node, OmCellText const* text, std::string const& codePage);

#endif
