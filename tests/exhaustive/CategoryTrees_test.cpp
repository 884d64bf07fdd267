// Every small tree, and every list of its nodes gathered under a new group.
#include "backend/tables/om/OmDimension.h"

#include "tests/support/CategoryText.h"
#include "tests/support/TreeModel.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <cstddef>
#include <string>
#include <vector>

namespace {

using omtest::CategoryWorld;
using omtest::Label;
using omtest::TreeModel;
using Node = OmDimension::Node;
using Path = TreeModel::Path;

constexpr std::size_t MostNodes = 5;

/// A tree as the number of its parent for each node: 0 for the root, k for the k-th node before it.
using Parents = std::vector<std::size_t>;

/// Adds all trees that go on from `parents`, whose nodes stand in pre-order.
void CollectTrees(Parents const& parents, std::vector<Parents>& trees) {
    trees.push_back(parents);
    if (parents.size() == MostNodes) {
        return;
    }
    // In pre-order the next node stands below the last one or below one of its ancestors.
    for (std::size_t above = parents.size();; above = parents[above - 1]) {
        Parents grown = parents;
        grown.push_back(above);
        CollectTrees(grown, trees);
        if (above == 0) {
            return;
        }
    }
}

/// Adds all lists of distinct numbers below `count` that go on from `list`.
void CollectLists(std::size_t count, std::vector<std::size_t> const& list, std::vector<std::vector<std::size_t>>& all) {
    all.push_back(list);
    for (std::size_t k = 0; k < count; ++k) {
        if (std::find(list.begin(), list.end(), k) == list.end()) {
            std::vector<std::size_t> longer = list;
            longer.push_back(k);
            CollectLists(count, longer, all);
        }
    }
}

/// One tree, of the library and of the model. All nodes are groups, named a, b, c and so on.
struct World : CategoryWorld {
    explicit World(Parents const& parents) {
        std::vector<Path> paths{{}};
        for (std::size_t k = 0; k < parents.size(); ++k) {
            std::string const name(1, static_cast<char>('a' + k));
            Path const& above = paths[parents[k]];
            dimension.AddNewChild(At(above), Label(name), k, true);
            paths.push_back(model.AddNewChild(above, name, k, true));
        }
        nodes.assign(paths.begin() + 1, paths.end());
    }

    Node At(Path const& path) {
        Node node = Root();
        for (std::size_t const step : path) {
            node = node.Child(step);
        }
        return node;
    }

    void Gather(std::vector<std::size_t> const& list) {
        std::vector<Path> listed;
        std::vector<Node> handles;
        std::vector<Node*> pointers;
        for (std::size_t const number : list) {
            listed.push_back(nodes[number]);
            handles.push_back(At(nodes[number]));
        }
        for (Node& handle : handles) {
            pointers.push_back(&handle);
        }
        model.InsertChild("N", listed);
        dimension.insertChild(Label("N"), pointers);
    }

    TreeModel model{"D"};
    std::vector<Path> nodes;
};

std::string ModelText(TreeModel::Node const& node) {
    std::string text;
    for (TreeModel::Node const& child : node.children) {
        text += (text.empty() ? "" : " ") + child.label + "(" + ModelText(child) + ")";
    }
    return text;
}

std::vector<Parents> Trees() {
    std::vector<Parents> trees;
    CollectTrees({}, trees);
    return trees;
}

} // namespace

TEST(CategoryTrees, EveryListOfNodesIsGatheredAsTheModelSays) {
    std::vector<Parents> const trees = Trees();
    ASSERT_EQ(trees.size(), 1U + 1 + 2 + 5 + 14 + 42);
    for (Parents const& parents : trees) {
        std::vector<std::vector<std::size_t>> lists;
        CollectLists(parents.size(), {}, lists);
        for (std::vector<std::size_t> const& list : lists) {
            World world(parents);
            std::string const before = omtest::Categories(world.dimension);
            world.Gather(list);
            ASSERT_EQ(omtest::Categories(world.dimension), ModelText(world.model.Root()))
                << "from " << before << ", " << ::testing::PrintToString(list);
            ASSERT_TRUE(omtest::ParentPointersHold(world.dimension));
        }
    }
}
