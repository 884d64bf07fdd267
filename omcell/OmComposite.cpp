#include "omcell/OmComposite.h"

#include <cstdint>
#include <memory>

namespace {

using TreeNode = OmComposite::Tree::TreeNode;

// Pre-order without memory of its own, so that a destructor can use it. The way back up is kept in the parent pointers,
// which are set on the way down: an edit of the tree may have left them behind.
template <typename Visit>
void VisitAll(OmVector<TreeNode>& nodes, Visit visit) {
    if (nodes.empty()) {
        return;
    }
    auto const isLast = [&nodes](TreeNode const* node) {
        return node + 1 == (node->parent != nullptr ? node->parent->children : nodes).end();
    };
    TreeNode* node = nodes.begin();
    node->parent = nullptr;
    for (;;) {
        visit(*node);
        if (!node->children.empty()) {
            TreeNode* const below = node->children.begin();
            below->parent = node;
            node = below;
            continue;
        }
        while (isLast(node)) {
            node = node->parent;
            if (node == nullptr) {
                return;
            }
        }
        TreeNode* const above = node->parent;
        ++node;
        node->parent = above;
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
    // Taken off the list on every way out.
    struct Listed : Waiting {
        Listed(TreeNode* node, Waiting*& first) : innermost(first) {
            parent = node;
            outer = first;
            first = this;
        }
        ~Listed() { innermost = outer; }
        Listed(Listed const&) = delete;
        Listed& operator=(Listed const&) = delete;
        Waiting*& innermost;
    };
    Listed const listed(parent.Ptr(), _waiting);
    std::unique_ptr<OmCellText> clone(text.Clone(Home()));
    Tree::Node const place = AddComponent(Tree::Node(listed.parent, parent.Depth()), clone.get());
    static_cast<void>(clone.release());
    return place;
}

// Only children of `parent` move.
OmComposite::Tree::Node OmComposite::AddComponent(Tree::Node const& parent, OmCellText* text) {
    OmVector<TreeNode>& siblings = parent.Ptr()->children;
    std::uintptr_t const before = reinterpret_cast<std::uintptr_t>(siblings.data());
    std::uintptr_t const bytes = siblings.size() * sizeof(TreeNode);
    Tree::Node const place = _components.AddChild(parent, text);
    NoteEdit();
    for (Waiting* waiting = _waiting; waiting != nullptr; waiting = waiting->outer) {
        std::uintptr_t const distance = reinterpret_cast<std::uintptr_t>(waiting->parent) - before;
        if (distance < bytes) {
            waiting->parent = siblings.data() + distance / sizeof(TreeNode);
        }
    }
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

// A foreign part finds a tree without components, whose state is its own, while it is destroyed.
void OmComposite::GiveUpParts(Bin& bin) {
    OmVector<TreeNode>& components = _components.Root().Ptr()->children;
    while (!components.empty()) {
        OmVector<TreeNode> doomed(_components.Region());
        doomed.swap(components);
        VisitAll(doomed, [&bin](TreeNode& node) { bin.Take(node.value); });
    }
}

void OmComposite::Expand(Form, Pieces& pieces) const {
    Tree::WalkPreOrder(_components.Root(), [&pieces](Tree::ConstNode const& node) {
        if (node.Depth() > 0 && node.Value() != nullptr) {
            pieces.Add(*node.Value());
        }
        return true;
    });
}
