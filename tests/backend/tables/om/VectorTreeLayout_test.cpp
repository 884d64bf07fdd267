// The shape that ships, whatever this build is: no epochs in nodes or handles.
#ifdef OMTREE_CHECK_HANDLES
#undef OMTREE_CHECK_HANDLES
#endif
#define OMTREE_CHECK_HANDLES 0

#include "backend/tables/om/VectorTree.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace {

struct Category {
    long value;
};

using Tree = OmVectorTree<Category>;

} // namespace

TEST(VectorTreeLayout, HandlesAreTwoWordsThatAreCopiedFreely) {
    static_assert(sizeof(Tree::Node) == 2 * sizeof(void*));
    static_assert(sizeof(Tree::ConstNode) == 2 * sizeof(void*));
    static_assert(std::is_trivially_copyable_v<Tree::Node> && std::is_trivially_copyable_v<Tree::ConstNode>);
    static_assert(std::is_convertible_v<Tree::Node, Tree::ConstNode>);
    static_assert(!std::is_convertible_v<Tree::ConstNode, Tree::Node>, "read-only stays read-only");
    Tree tree(nullptr, Category{0});
    Tree::Node const child = tree.AddChild(tree.Root(), Category{1});
    void const* node = nullptr;
    unsigned int depth = 0;
    std::memcpy(&node, &child, sizeof(node));
    std::memcpy(&depth, reinterpret_cast<char const*>(&child) + sizeof(node), sizeof(depth));
    EXPECT_EQ(node, child.Ptr());
    EXPECT_EQ(depth, 1U);
}

TEST(VectorTreeLayout, NodeIsValueChildrenParent) {
    Tree tree(nullptr, Category{0});
    Tree::TreeNode const* const root = tree.Root().Ptr();
    char const* const start = reinterpret_cast<char const*>(root);
    EXPECT_EQ(reinterpret_cast<char const*>(&root->value), start);
    EXPECT_EQ(reinterpret_cast<char const*>(&root->children), start + sizeof(long));
    EXPECT_EQ(reinterpret_cast<char const*>(&root->parent), start + sizeof(long) + 4 * sizeof(void*));
    EXPECT_EQ(sizeof(Tree::TreeNode), sizeof(long) + 5 * sizeof(void*));
    EXPECT_EQ(sizeof(Tree), sizeof(Tree::TreeNode));
}

TEST(VectorTreeLayout, ParentOfTheRootIsNullWithADepthBelowZero) {
    Tree tree(nullptr, Category{0});
    EXPECT_TRUE(tree.Root().Parent().IsNull());
    EXPECT_EQ(tree.Root().Parent().Depth(), static_cast<unsigned int>(-1));
}
