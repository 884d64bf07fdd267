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
/// Copying and assignment share the parts; nothing is cloned, and assignment drops the old records without destroying
/// their parts. Of a document and its copy only one may be destroyed with its parts.
class OMTREE_API OmOutputTree : public ListTree<OmOutputPart*> {
public:
    /// One record: an OmHeading titled "Output", level 0.
    OmOutputTree();
    OmOutputTree(OmOutputTree const&) = default;
    OmOutputTree& operator=(OmOutputTree const&) = default;

    /// Destroys every part, first record to last, then the records.
    ~OmOutputTree();

    /// Removes a node with the subtree that its cached level bounds, destroying every part in it: children before their
    /// parent, first child first, deepest first. The handle is invalid afterwards. O(records removed), whatever the
    /// depth. REQUIRES: the handle is not at the end (hardened check "node.position != end").
    void Prune(Node& node);

    /// Destroys the node's part and removes the node alone; its children move up into its place. The handle is invalid
    /// afterwards. O(descendants).
    /// REQUIRES: the handle is not at the end (hardened check "node.position != end").
    void Erase(Node& node);
};

/// Reshapes a branch of the document into a text block.
///
/// Below the top-level headings (the handle's cached level is greater than 1) the node goes: its children, and behind
/// them a new text block that carries the node's own title, take its place. `text` is not used. Returns a handle on the
/// first of them.
///
/// At level 0 or 1 the node stays: everything below it is pruned, first child first, and a new text block titled by
/// `text` becomes its only child. Returns a handle on that. `text` is read after the pruning, so it is no title of a
/// part below the node.
///
/// The block's lines are to be in `codePage`. O(records below the node).
/// REQUIRES: the handle is not at the end (hardened check "node.position != end"); on the first path, a part to take
/// the title from ("part != 0"); on the second, a text ("text != 0"). When such a check's handler returns, nothing
/// changes and `node` is given back.
OMTREE_API OmOutputTree::Node Amputate(OmOutputTree::Node node, OmCellText const* text, std::string const& codePage);

#endif
