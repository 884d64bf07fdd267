#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_LABELTRAIL_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_LABELTRAIL_H

#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

namespace om_detail {

/// Follows label paths one after the other and knows the labels of the one it is on.
///
///     path before    Age  Young  Child  Boys           the new path is climbed from its leaf up to the first node that
///     path now       Age  Young  Youth                 stands on the trail already: here Youth, then Young is known
///
/// Paths in the order of the tree cost its nodes all together, however deep it is: O(1) each where the paths are short,
/// and not their lengths' sum where they are long and share their upper parts.
///
/// `Path` is as `DisplayRecord::Path`. `Ends` tells whether a node ends the labels of all paths through it, itself
/// included, and `Shows` whether it has a label.
template <typename Path, typename Ends, typename Shows>
class LabelTrail {
public:
    using Node = std::remove_reference_t<decltype(std::declval<Path const&>().Node())>;

    LabelTrail(Ends ends, Shows shows) : _ends(std::move(ends)), _shows(std::move(shows)) {}

    /// Goes over to another path of the same tree.
    void Follow(Path leaf) {
        _new.clear();
        Path step = leaf;
        while (step && !IsOn(step.Node())) {
            _new.push_back(&step.Node());
            step = step.Above();
        }
        _levels.resize(step ? step.Node().Depth() + std::size_t{1} : 0);
        _labels.resize(_levels.empty() ? 0 : _levels.back().labels);
        for (; !_new.empty(); _new.pop_back()) {
            Append(*_new.back());
        }
    }

    /// Entry `line` of the path's labels, outermost first, or null past the last.
    Node* At(std::size_t line) const { return line < _labels.size() ? _labels[line] : nullptr; }

private:
    struct Level {
        Node* node;
        std::size_t labels; ///< down to here
        bool ended;
    };

    bool IsOn(Node& node) const { return node.Depth() < _levels.size() && _levels[node.Depth()].node == &node; }

    void Append(Node& node) {
        bool const ended = (!_levels.empty() && _levels.back().ended) || _ends(node);
        if (!ended && _shows(node)) {
            _labels.push_back(&node);
        }
        _levels.push_back({&node, _labels.size(), ended});
    }

    Ends _ends;
    Shows _shows;
    std::vector<Level> _levels; ///< of the path, from the root down
    std::vector<Node*> _labels;
    std::vector<Node*> _new; ///< to be appended, innermost first
};

} // namespace om_detail

#endif
