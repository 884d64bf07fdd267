// Label paths followed one after the other, by steps up that are counted.
#include "backend/tables/om/detail/LabelTrail.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <deque>
#include <string>

namespace {

struct TreeNode {
    std::string label;
    TreeNode* above;
    unsigned int depth;
    unsigned int Depth() const { return depth; }
};

long stepsUp = 0;

class Path {
public:
    Path() = default;
    explicit Path(TreeNode* at) : _at(at) {}
    explicit operator bool() const { return _at != nullptr; }
    TreeNode& Node() const { return *_at; }
    Path Above() const {
        ++stepsUp;
        return Path(_at->above);
    }

private:
    TreeNode* _at = nullptr;
};

/// A node whose label starts with `-` shows none, one with `~` ends the labels.
bool Shows(TreeNode const& node) { return node.label[0] != '-'; }
bool Ends(TreeNode const& node) { return node.label[0] == '~'; }

class LabelTrail : public ::testing::Test {
protected:
    TreeNode* Add(std::string const& label, TreeNode* above) {
        return &nodes.emplace_back(TreeNode{label, above, above != nullptr ? above->depth + 1 : 0});
    }

    std::string Labels(TreeNode* leaf) {
        trail.Follow(Path(leaf));
        std::string text;
        for (std::size_t line = 0; trail.At(line) != nullptr; ++line) {
            text += text.empty() ? "" : " ";
            text += trail.At(line)->label;
        }
        return text;
    }

    std::deque<TreeNode> nodes{};
    om_detail::LabelTrail<Path, bool (*)(TreeNode const&), bool (*)(TreeNode const&)> trail{Ends, Shows};
};

} // namespace

TEST_F(LabelTrail, TellsTheLabelsOfEveryPath) {
    TreeNode* const root = Add("Age", nullptr);
    TreeNode* const young = Add("Young", root);
    TreeNode* const hidden = Add("-Group", root);
    TreeNode* const ending = Add("~Rest", root);
    TreeNode* const child = Add("Child", young);
    TreeNode* const boys = Add("Boys", child);
    TreeNode* const youth = Add("Youth", young);
    TreeNode* const below = Add("Below", hidden);
    TreeNode* const last = Add("Last", Add("Inner", ending));
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(Labels(boys), "Age Young Child Boys");
        EXPECT_EQ(Labels(youth), "Age Young Youth");
        EXPECT_EQ(Labels(youth), "Age Young Youth");
        EXPECT_EQ(Labels(last), "Age");
        EXPECT_EQ(Labels(below), "Age Below");
        EXPECT_EQ(Labels(ending), "Age");
        EXPECT_EQ(Labels(nullptr), "");
        EXPECT_EQ(Labels(boys), "Age Young Child Boys");
        EXPECT_EQ(Labels(root), "Age");
    }
}

// Every leaf at the end of a path of its own would take half a million steps.
TEST_F(LabelTrail, StepsUpOnceFromEachNode) {
    std::deque<TreeNode*> leaves;
    TreeNode* group = Add("g", nullptr);
    for (int k = 0; k < 1000; ++k) {
        leaves.push_back(Add("leaf", group));
        group = Add("g", group);
    }
    stepsUp = 0;
    for (TreeNode* const leaf : leaves) {
        trail.Follow(Path(leaf));
    }
    EXPECT_EQ(stepsUp, 2000);
    EXPECT_EQ(trail.At(1000)->label, "leaf");
    EXPECT_EQ(trail.At(1001), nullptr);
}
