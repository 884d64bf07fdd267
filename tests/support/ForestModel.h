#ifndef OMTREE_TESTS_SUPPORT_FORESTMODEL_H
#define OMTREE_TESTS_SUPPORT_FORESTMODEL_H

#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

/// A naive list tree: vectors of children, in which relations are stored and levels are not.
///
/// A forest and not one tree, because the nodes that an erased or flattened root leaves stand side by side at level 0.
/// Nodes are named by paths, the position at each level from the top. Recursion goes as deep as the trees, which tests
/// of this kind keep small.
namespace omtest {

using Path = std::vector<std::size_t>;

inline int LevelOf(Path const& path) { return static_cast<int>(path.size()) - 1; }

template <typename T>
class ForestModel {
public:
    struct Tree {
        T value;
        std::vector<Tree> children{};
        friend bool operator==(Tree const& a, Tree const& b) { return a.value == b.value && a.children == b.children; }
    };
    using Trees = std::vector<Tree>;
    /// A value and its level.
    using Line = std::pair<T, int>;

    Trees trees;

    friend bool operator==(ForestModel const& a, ForestModel const& b) { return a.trees == b.trees; }

    /// The paths of all nodes in pre-order.
    std::vector<Path> Paths() const {
        std::vector<Path> paths;
        Path here;
        CollectPaths(trees, here, paths);
        return paths;
    }

    /// What the list of records is to hold.
    std::vector<Line> Lines() const {
        std::vector<Line> lines;
        CollectLines(trees, 0, lines);
        return lines;
    }

    Tree& At(Path const& path) { return Siblings(path)[path.back()]; }

    /// The list in which the node stands.
    Trees& Siblings(Path const& path) {
        Trees* list = &trees;
        for (std::size_t k = 0; k + 1 < path.size(); ++k) {
            list = &(*list)[path[k]].children;
        }
        return *list;
    }

    void Append(Path const& parent, T value) { At(parent).children.push_back(Tree{std::move(value)}); }

    /// The node's children become the siblings behind it.
    void Flatten(Path const& path) {
        Trees children = std::exchange(At(path).children, {});
        Trees& siblings = Siblings(path);
        siblings.insert(PlaceOf(siblings, path.back() + 1), children.begin(), children.end());
    }

    /// The node's children take its place.
    void Erase(Path const& path) {
        Flatten(path);
        Trees& siblings = Siblings(path);
        siblings.erase(PlaceOf(siblings, path.back()));
    }

    /// The node goes with its descendants. With a level above its own, so does everything that follows it and is
    /// deeper than that: its later siblings, those of its parent, and so on.
    void Prune(Path path, int level) {
        Trees& own = Siblings(path);
        auto const place = PlaceOf(own, path.back());
        own.erase(place, LevelOf(path) > level ? own.end() : std::next(place));
        for (path.pop_back(); LevelOf(path) > level; path.pop_back()) {
            Trees& list = Siblings(path);
            list.erase(PlaceOf(list, path.back() + 1), list.end());
        }
    }

    /// Moves `count` siblings from `path` on of the other forest to the place before `target` here.
    void Move(Path const& target, ForestModel& other, Path const& path, std::size_t count) {
        Trees& from = other.Siblings(path);
        auto const first = PlaceOf(from, path.back());
        auto const last = std::next(first, static_cast<std::ptrdiff_t>(count));
        Trees& here = Siblings(target);
        here.insert(PlaceOf(here, target.back()), first, last);
        from.erase(first, last);
    }

    static void CollectLines(Trees const& trees, int level, std::vector<Line>& lines) {
        for (Tree const& tree : trees) {
            lines.emplace_back(tree.value, level);
            CollectLines(tree.children, level + 1, lines);
        }
    }

private:
    static typename Trees::iterator PlaceOf(Trees& list, std::size_t position) {
        return std::next(list.begin(), static_cast<std::ptrdiff_t>(position));
    }

    static void CollectPaths(Trees const& trees, Path& here, std::vector<Path>& paths) {
        for (std::size_t k = 0; k < trees.size(); ++k) {
            here.push_back(k);
            paths.push_back(here);
            CollectPaths(trees[k].children, here, paths);
            here.pop_back();
        }
    }
};

} // namespace omtest

#endif
