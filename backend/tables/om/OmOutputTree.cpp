#include "backend/tables/om/OmOutputTree.h"

#include "backend/tables/om/OmHeading.h"
#include "backend/tables/om/OmTextBlock.h"
#include "omcell/OmStringCell.h"

#include <iterator>
#include <memory>
#include <vector>

template class ListTree<OmOutputPart*>;

namespace {

[[maybe_unused]] constexpr char Source[] = "backend/tables/om/OmOutputTree"; // by hardened checks alone

} // namespace

OmOutputTree::OmOutputTree() {
    OmStringCell const title("Output", nullptr, true);
    auto root = std::make_unique<OmHeading>(title);
    List().push_back(Record{root.get(), 0});
    root.release();
}

OmOutputTree::~OmOutputTree() {
    for (Record const& record : List()) {
        delete record.value;
    }
}

void OmOutputTree::Prune(Node& node) {
    if (!OM_HARDENED(node.Position() != List().end(), "node.position != end", Source, __LINE__)) {
        return;
    }
    // Nodes whose subtree is not done yet, outermost first. A child is bounded by the level of its parent's first
    // child, which in a tree that keeps its invariants is every child's own.
    struct Open {
        Position position;
        int level;
    };
    auto const destroy = [this](Position position) {
        delete position->value;
        List().erase(position);
    };
    Position const end = SearchForward(node.Position(), node.Level());
    std::vector<Open> open{{node.Position(), node.Level()}};
    Position next = std::next(node.Position());
    while (next != end) {
        int level = next->level;
        while (open.size() > 1 && open.back().level >= next->level) {
            level = open.back().level;
            destroy(open.back().position);
            open.pop_back();
        }
        open.push_back({next, level});
        ++next;
    }
    while (!open.empty()) {
        destroy(open.back().position);
        open.pop_back();
    }
}

void OmOutputTree::Erase(Node& node) {
    if (!OM_HARDENED(node.Position() != List().end(), "node.position != end", Source, __LINE__)) {
        return;
    }
    delete node.Value();
    node.Value() = nullptr;
    ListTree::Erase(node);
}

namespace {

/// The node's part goes, and its children with a text block behind them take its place.
OmOutputTree::Node ReplaceByChildren(OmOutputTree& tree, OmOutputTree::Node node, std::string const& codePage) {
    OmOutputPart* const part = node.Value();
    if (!OM_HARDENED(part != nullptr && part->Title() != nullptr, "part != 0", Source, __LINE__)) {
        return node;
    }
    auto block = std::make_unique<OmTextBlock>(*part->Title(), codePage);
    delete part;
    node.Value() = nullptr;
    tree.AppendChild(node, block.get());
    block.release();
    tree.Flatten(node);
    OmOutputTree::Node const first(tree, std::next(node.Position()), node.Level());
    tree.ListTree::Erase(node);
    return first;
}

/// Everything below the node goes, and a text block takes its place.
OmOutputTree::Node ReplaceChildren(OmOutputTree& tree, OmOutputTree::Node node, OmCellText const* text,
                                   std::string const& codePage) {
    if (!OM_HARDENED(text != nullptr, "text != 0", Source, __LINE__)) {
        return node;
    }
    while (!tree.IsLeaf(node)) {
        OmOutputTree::Node child(tree, std::next(node.Position()));
        tree.Prune(child);
    }
    auto block = std::make_unique<OmTextBlock>(*text, codePage);
    OmOutputTree::Node const added = tree.AppendChild(node, block.get());
    block.release();
    return added;
}

} // namespace

OmOutputTree::Node Amputate(OmOutputTree::Node node, OmCellText const* text, std::string const& codePage) {
    // Every handle on a document's record comes from the document, so the tree behind it is one.
    OmOutputTree& tree = static_cast<OmOutputTree&>(*node.Tree());
    if (!OM_HARDENED(node.Position() != tree.List().end(), "node.position != end", Source, __LINE__)) {
        return node;
    }
    return node.Level() > 1 ? ReplaceByChildren(tree, node, codePage) : ReplaceChildren(tree, node, text, codePage);
}
