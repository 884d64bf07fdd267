#ifndef OMTREE_TESTS_SUPPORT_TREETEXT_H
#define OMTREE_TESTS_SUPPORT_TREETEXT_H

#include "backend/tables/om/VectorTree.h"
#include "tests/support/InstanceTracker.h"

#include <cstddef>
#include <cstdlib>
#include <string>

/// Vector trees of tracked values said in text.
///
///     1 2(3 4#7) 5       three nodes side by side; the second has two children, the last of which has mark 7
///
/// Recursion goes as deep as the tree, which tests of this kind keep small.
namespace omtest {

/// The children of `node` and everything below them.
template <typename Handle>
std::string TextBelow(Handle const& node) {
    std::string text;
    for (std::size_t k = 0; k < node.ChildCount(); ++k) {
        Handle const child = node.Child(k);
        text += k == 0 ? "" : " ";
        text += std::to_string(child.Value().value);
        if (child.Value().mark != 0) {
            text += '#';
            text += std::to_string(child.Value().mark);
        }
        if (child.ChildCount() != 0) {
            text += '(';
            text += TextBelow(child);
            text += ')';
        }
    }
    return text;
}

/// Whether every node below `node` has its parent pointer at the node whose children vector holds it.
template <typename TreeNode>
bool ParentsHold(TreeNode const* node) {
    for (TreeNode const& child : node->children) {
        if (child.parent != node || !ParentsHold(&child)) {
            return false;
        }
    }
    return true;
}

/// Adds what `text` says below `parent`.
template <typename T>
class TreeReader {
    using Tree = OmVectorTree<T>;

public:
    TreeReader(Tree& tree, InstanceBooks& books) : _tree(tree), _books(books) {}

    void AddBelow(typename Tree::Node const& parent, std::string const& text) {
        _at = text.c_str();
        AddLevel(parent);
    }

private:
    void AddLevel(typename Tree::Node const& parent) {
        while (*_at != '\0' && *_at != ')') {
            int const value = Number();
            int const mark = Skip('#') ? Number() : 0;
            typename Tree::Node const child = _tree.AddChild(parent, T(_books, value, mark));
            if (Skip('(')) {
                AddLevel(child);
                Skip(')');
            }
            Skip(' ');
        }
    }

    int Number() {
        char* end = nullptr;
        long const number = std::strtol(_at, &end, 10);
        _at = end;
        return static_cast<int>(number);
    }

    bool Skip(char sign) {
        bool const there = *_at == sign;
        _at += there ? 1 : 0;
        return there;
    }

    Tree& _tree;
    InstanceBooks& _books;
    char const* _at = nullptr;
};

} // namespace omtest

#endif
