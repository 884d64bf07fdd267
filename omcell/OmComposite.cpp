#include "omcell/OmComposite.h"

#include <memory>

namespace {

using TreeNode = OmComposite::Tree::TreeNode;

// Pre-order without memory of its own, so that a destructor can use it. The way back up is kept in the parent pointers,
// which are set on the way down: an edit of the tree may have left them behind.
template <typename Visit>
void VisitBelow(TreeNode& root, Visit visit) {
    TreeNode* node = &root;
    for (;;) {
        if (!node->children.empty()) {
            TreeNode* const below = node->children.begin();
            below->parent = node;
            node = below;
        } else {
            while (node != &root && node + 1 == node->parent->children.end()) {
                node = node->parent;
            }
            if (node == &root) {
                return;
            }
            TreeNode* const above = node->parent;
            ++node;
            node->parent = above;
        }
        visit(*node);
    }
}

} // namespace

OmComposite::OmComposite(OmMemoryRegion* region) : OmPartedText(region), _components(region, nullptr) {}

OmComposite::OmComposite(OmComposite const& source, OmMemoryRegion* region) : OmComposite(region) {
    TakeOver(source);
    CopyShape(source._components);
}

OmComposite::~OmComposite() { DestroyParts(); }

void OmComposite::Accept(Visitor& visitor) { visitor.Visit(*this); }

short OmComposite::OrderCode() const { return Order; }

OmComposite::Tree::Node OmComposite::Append(Tree::Node const& parent, OmCellText const& text) {
    std::unique_ptr<OmCellText> clone(text.Clone(Home()));
    Tree::Node const place = _components.AddChild(parent, clone.get());
    static_cast<void>(clone.release());
    return place;
}

OmComposite::Tree::Node OmComposite::Append(OmCellText const& text) { return Append(_components.Root(), text); }

OmPartedText* OmComposite::Shell(OmMemoryRegion* region) const { return new (region) OmComposite(*this, region); }

// Each parent's block is reserved once, so no node moves and the parent pointers are right at once.
void OmComposite::CopyShape(Tree const& source) {
    struct Pair {
        TreeNode const* from;
        TreeNode* to;
    };
    OmCellText* const none = nullptr;
    std::vector<Pair> pending{{source.Root().Ptr(), _components.Root().Ptr()}};
    while (!pending.empty()) {
        Pair const pair = pending.back();
        pending.pop_back();
        pair.to->children.reserve(pair.from->children.size());
        for (TreeNode const& child : pair.from->children) {
            TreeNode* const copy = _components.AddChild(Tree::Node(pair.to, 0), none).Ptr();
            if (!child.children.empty()) {
                pending.push_back({&child, copy});
            }
        }
    }
}

void OmComposite::ListParts(std::vector<Part>& parts) const {
    Tree::WalkPreOrder(_components.Root(), [&parts](Tree::ConstNode const& node) {
        if (node.Depth() > 0) {
            parts.push_back({&node.Value(), node.Depth()});
        }
        return true;
    });
}

void OmComposite::GiveUpParts(Bin& bin) {
    VisitBelow(*_components.Root().Ptr(), [&bin](TreeNode& node) { bin.Take(node.value); });
}

void OmComposite::Expand(Form, Pieces& pieces) const {
    Tree::WalkPreOrder(_components.Root(), [&pieces](Tree::ConstNode const& node) {
        if (node.Depth() > 0 && node.Value() != nullptr) {
            pieces.Add(*node.Value());
        }
        return true;
    });
}
