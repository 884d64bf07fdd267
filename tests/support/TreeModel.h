#ifndef OMTREE_TESTS_SUPPORT_TREEMODEL_H
#define OMTREE_TESTS_SUPPORT_TREEMODEL_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A naive category tree: nested vectors, every operation spelled out step by step, everything searched from the root.
///
/// Nodes are named by paths (child positions from the root; the empty path is the root), which mean the same in the
/// library's tree. Inside an operation that moves nodes about, operands are followed by a number that each node gets at
/// its start. Labels are plain strings, which is how string cells compare: by unsigned bytes, a prefix first.
///
/// Recursion goes as deep as the tree, which scripts keep small.
namespace omtest {

class TreeModel {
public:
    using Path = std::vector<std::size_t>;

    struct Node {
        std::string label;
        unsigned long long subscript = 0;
        bool isGroup = false;
        bool hide = false;
        bool hideLabels = false;
        int sort = 2;
        std::vector<int> childIndex{}; ///< as the library keeps it, in or out of step
        std::vector<Node> children{};
        /// Whether the library promises that the node's parent pointer is right; `Delete` takes the promise away.
        bool parentKnown = true;
        int number = 0; ///< who is who, within one operation
    };

    static constexpr unsigned long long AllOnes = ~0ULL;
    static constexpr unsigned long long Dissolved = ~0ULL - 1;

    explicit TreeModel(std::string name) : _root{std::move(name), AllOnes, true} {}

    Node const& Root() const { return _root; }
    int Categories() const { return _categories; }

    Node& At(Path const& path) {
        Node* node = &_root;
        for (std::size_t const step : path) {
            node = &node->children.at(step);
        }
        return *node;
    }
    Node const& At(Path const& path) const { return const_cast<TreeModel&>(*this).At(path); }

    /// All paths in pre-order, the root's first.
    std::vector<Path> Paths() const {
        std::vector<Path> paths;
        CollectPaths(_root, {}, paths);
        return paths;
    }

    // --- order and equality ------------------------------------------------------------------------------------------

    static bool Less(Node const& a, Node const& b) {
        if (a.isGroup != b.isGroup) {
            return a.isGroup;
        }
        return a.label < b.label;
    }
    static bool Equal(Node const& a, Node const& b) {
        return a.isGroup == b.isGroup && a.subscript == b.subscript && a.label == b.label;
    }

    // --- find and create ---------------------------------------------------------------------------------------------

    /// Find-or-create. The path of the child, or nothing when the parent is not a group.
    std::optional<Path> Child(Path const& parentPath, Node value) {
        Node& parent = At(parentPath);
        if (!parent.isGroup) {
            return std::nullopt;
        }
        value.childIndex.clear();
        value.children.clear();
        value.parentKnown = true;
        std::size_t const place = LowerBound(parent, value);
        if (std::optional<int> const found = FoundAt(parent, place, value)) {
            return Below(parentPath, static_cast<std::size_t>(*found));
        }
        parent.childIndex.insert(parent.childIndex.begin() + static_cast<std::ptrdiff_t>(place),
                                 static_cast<int>(parent.childIndex.size()));
        return Append(parentPath, std::move(value));
    }

    Path AddNewChild(Path const& parentPath, std::string label, unsigned long long subscript, bool isGroup) {
        Node& parent = At(parentPath);
        parent.childIndex.push_back(static_cast<int>(parent.childIndex.size()));
        return Append(parentPath, Node{std::move(label), subscript, isGroup});
    }

    /// The entry that the bisection finds, or -1.
    int FindChild(Path const& parentPath, std::string const& label, bool isGroup) const {
        Node const& parent = At(parentPath);
        Node const probe{label, 0, isGroup};
        return FoundAt(parent, LowerBound(parent, probe), probe).value_or(-1);
    }

    // --- structural changes ------------------------------------------------------------------------------------------

    /// REQUIRES: path names no root.
    void Delete(Path const& path) {
        std::size_t const position = path.back();
        Node& parent = At(Parent(path));
        parent.children.erase(parent.children.begin() + static_cast<std::ptrdiff_t>(position));
        for (std::size_t k = position; k < parent.children.size(); ++k) {
            for (Node& grandchild : parent.children[k].children) {
                grandchild.parentKnown = false;
            }
        }
        DropFromChildIndex(parent.childIndex, static_cast<int>(position));
        _categories = static_cast<int>(static_cast<std::uint32_t>(LargestLeafSubscript(_root) + 1));
    }

    void RemoveChild(Path const& path) {
        At(path).subscript = Dissolved;
        if (path.empty() || At(path).children.empty()) {
            return;
        }
        NumberNodes();
        Node const dissolved = At(path);
        Node& parent = At(Parent(path));
        for (Node const& child : dissolved.children) {
            InsertBefore(parent, Fresh(child), &dissolved);
        }
        EraseNumber(parent, dissolved.number);
        RepairBelow(parent);
    }

    void MoveChild(Path const& node, std::optional<Path> const& target, bool swap) {
        if (node.empty()) {
            return;
        }
        NumberNodes();
        if (!target) {
            MoveUp(node);
        } else if (target->empty()) {
            return;
        } else if (swap) {
            Swap(node, *target);
        } else {
            MoveBefore(node, *target);
        }
    }

    void InsertChild(std::string label, std::vector<Path> const& listed) {
        if (listed.empty() || listed.front().empty()) {
            return;
        }
        Path const home = Parent(listed.front());
        if (std::any_of(listed.begin() + 1, listed.end(), [&](Path const& other) { return IsWithin(home, other); })) {
            return;
        }
        NumberNodes();
        int const homeNumber = At(home).number;
        Node group{std::move(label), AllOnes, true};
        std::vector<int> numbers;
        std::vector<int> parents;
        for (Path const& path : listed) {
            group.children.push_back(Fresh(At(path)));
            numbers.push_back(At(path).number);
            if (!path.empty()) {
                parents.push_back(At(Parent(path)).number);
            }
        }
        int const noted = StayingBefore(listed.front(), numbers);
        for (auto number = numbers.rbegin(); number != numbers.rend(); ++number) {
            if (std::optional<Path> const path = PathOf(*number)) {
                Erase(*path);
            }
        }
        Node& parent = At(*PathOf(homeNumber));
        auto const sibling = std::find_if(parent.children.begin(), parent.children.end(),
                                          [&](Node const& child) { return child.number == noted; });
        parent.children.insert(sibling != parent.children.end() ? sibling + 1 : parent.children.begin(),
                               std::move(group));
        parents.push_back(homeNumber);
        RepairNumbers(parents);
    }

    /// The new leaf.
    Node InsertCategory(std::string label, Path const& reference, Path const& parentPath, bool before) {
        Node const leaf{std::move(label), LargestLeafSubscript(_root) + 1, false};
        std::optional<Node> sibling;
        if (before) {
            sibling = At(reference);
        } else if (!reference.empty()) {
            sibling = Follower(reference);
        }
        Node& parent = At(parentPath);
        InsertBefore(parent, leaf, sibling ? &*sibling : nullptr);
        RepairBelow(parent);
        ++_categories;
        return leaf;
    }

    /// What a client does after `Delete` to have every parent pointer right again.
    void Repair() { RepairBelow(_root); }

    bool AllParentsKnown() const { return AllParentsKnown(_root); }

    // --- queries -----------------------------------------------------------------------------------------------------

    unsigned int MaximumDepth() const { return static_cast<unsigned int>(Height(_root)) + 1; }

    unsigned long long MaxVisibleGroupCount() const {
        std::vector<unsigned long long> counts(MaximumDepth(), 0);
        CountGroups(_root, 0, counts);
        return *std::max_element(counts.begin(), counts.end());
    }

    static std::string Print(Node const& node, std::size_t indent) {
        auto const yesNo = [](bool flag) { return std::string(flag ? "yes" : "no"); };
        std::string line;
        for (std::size_t k = 0; k < indent; ++k) {
            line += "  ";
        }
        line += "Subscript: " + std::to_string(static_cast<std::int32_t>(static_cast<std::uint32_t>(node.subscript)));
        line += ", Group: " + yesNo(node.isGroup) + ", hide: " + yesNo(node.hide) +
                ", hideLabels: " + yesNo(node.hideLabels);
        line += node.sort == 0 ? ", Sort: up" : node.sort == 1 ? ", Sort: down" : "";
        for (std::size_t k = 0; k < node.childIndex.size(); ++k) {
            line.append(k == 0 ? ", Children: " : ", ").append(std::to_string(node.childIndex[k]));
        }
        return line + ", Text: \"" + node.label + "\"\n";
    }

    /// Every node's line in pre-order, indented by depth.
    std::string Dump() const {
        std::string text;
        Dump(_root, 0, text);
        return text;
    }

    static Path Parent(Path path) {
        path.pop_back();
        return path;
    }
    /// Whether `path` is `ancestor` or lies below it.
    static bool IsWithin(Path const& path, Path const& ancestor) {
        return path.size() >= ancestor.size() && std::equal(ancestor.begin(), ancestor.end(), path.begin());
    }

private:
    static Path Below(Path path, std::size_t step) {
        path.push_back(step);
        return path;
    }

    static void CollectPaths(Node const& node, Path const& path, std::vector<Path>& paths) {
        paths.push_back(path);
        for (std::size_t k = 0; k < node.children.size(); ++k) {
            CollectPaths(node.children[k], Below(path, k), paths);
        }
    }

    Path Append(Path const& parentPath, Node value) {
        _categories += value.isGroup ? 0 : 1;
        At(parentPath).children.push_back(std::move(value));
        return Below(parentPath, At(parentPath).children.size() - 1);
    }

    // An entry past the children counts as sorting after the probe.
    static bool EntryBefore(Node const& parent, int entry, Node const& probe) {
        std::size_t const position = static_cast<std::size_t>(entry);
        return position < parent.children.size() && Less(parent.children[position], probe);
    }

    static std::size_t LowerBound(Node const& parent, Node const& probe) {
        std::size_t first = 0;
        std::size_t length = parent.childIndex.size();
        while (length > 0) {
            std::size_t const half = length / 2;
            if (EntryBefore(parent, parent.childIndex[first + half], probe)) {
                first += half + 1;
                length -= half + 1;
            } else {
                length = half;
            }
        }
        return first;
    }

    static std::optional<int> FoundAt(Node const& parent, std::size_t place, Node const& probe) {
        if (place == parent.childIndex.size()) {
            return std::nullopt;
        }
        std::size_t const position = static_cast<std::size_t>(parent.childIndex[place]);
        if (position >= parent.children.size() || Less(probe, parent.children[position])) {
            return std::nullopt;
        }
        return parent.childIndex[place];
    }

    static void DropFromChildIndex(std::vector<int>& index, int removed) {
        std::size_t i = 0;
        while (i < index.size()) {
            if (index[i] == removed) {
                std::size_t const place = static_cast<std::size_t>(removed);
                index.erase(index.begin() + static_cast<std::ptrdiff_t>(place < index.size() ? place : i));
                continue;
            }
            index[i] -= index[i] > removed ? 1 : 0;
            ++i;
        }
    }

    static std::uint64_t LargestLeafSubscript(Node const& node) {
        std::uint64_t largest = 0;
        for (Node const& child : node.children) {
            std::uint64_t const here =
                child.isGroup ? LargestLeafSubscript(child) : static_cast<std::uint32_t>(child.subscript);
            largest = std::max(largest, here);
        }
        return largest;
    }

    // --- following nodes by number -----------------------------------------------------------------------------------

    void NumberNodes() {
        int next = 1;
        std::function<void(Node&)> const visit = [&](Node& node) {
            node.number = next++;
            for (Node& child : node.children) {
                visit(child);
            }
        };
        visit(_root);
    }

    /// A deep copy that is nobody yet and whose parent pointers are new.
    static Node Fresh(Node copy) {
        std::function<void(Node&)> const visit = [&](Node& node) {
            node.number = 0;
            node.parentKnown = true;
            for (Node& child : node.children) {
                visit(child);
            }
        };
        visit(copy);
        return copy;
    }

    std::optional<Path> PathOf(int number) const {
        for (Path const& path : Paths()) {
            if (At(path).number == number) {
                return path;
            }
        }
        return std::nullopt;
    }

    void Erase(Path const& path) {
        Node& parent = At(Parent(path));
        parent.children.erase(parent.children.begin() + static_cast<std::ptrdiff_t>(path.back()));
    }

    static void EraseNumber(Node& parent, int number) {
        parent.children.erase(std::find_if(parent.children.begin(), parent.children.end(),
                                           [&](Node const& child) { return child.number == number; }));
    }

    /// The number of the nearest sibling before the node that is none of the leaving ones; 0 when there is none.
    int StayingBefore(Path path, std::vector<int> const& leaving) const {
        while (path.back() > 0) {
            --path.back();
            int const number = At(path).number;
            if (std::find(leaving.begin(), leaving.end(), number) == leaving.end()) {
                return number;
            }
        }
        return 0;
    }

    static std::vector<Node>::iterator FirstEqual(Node& parent, Node const& value) {
        return std::find_if(parent.children.begin(), parent.children.end(),
                            [&](Node const& child) { return Equal(child, value); });
    }

    static void InsertBefore(Node& parent, Node node, Node const* reference) {
        auto const place = reference != nullptr ? FirstEqual(parent, *reference) : parent.children.end();
        parent.children.insert(place, std::move(node));
    }

    /// The sibling that follows, if there is one.
    std::optional<Node> Follower(Path const& path) const {
        Node const& parent = At(Parent(path));
        if (path.back() + 1 == parent.children.size()) {
            return std::nullopt;
        }
        return parent.children[path.back() + 1];
    }

    static void RepairBelow(Node& node) {
        for (Node& child : node.children) {
            child.parentKnown = true;
            RepairBelow(child);
        }
    }

    void RepairNumbers(std::vector<int> const& numbers) {
        for (int const number : numbers) {
            if (std::optional<Path> const path = PathOf(number)) {
                RepairBelow(At(*path));
            }
        }
    }

    // --- the three ways to move --------------------------------------------------------------------------------------

    void MoveUp(Path const& path) {
        Path reached = Parent(path);
        while (!reached.empty() && At(reached).hide) {
            reached.pop_back();
        }
        int const source = At(Parent(path)).number;
        int const destination = At(reached).number;
        Node copy = Fresh(At(path));
        Erase(path);
        At(*PathOf(destination)).children.push_back(std::move(copy));
        RepairNumbers({source, destination});
    }

    void MoveBefore(Path const& path, Path const& target) {
        if (target.size() > path.size() && IsWithin(target, path)) {
            return;
        }
        int const source = At(Parent(path)).number;
        int const destination = At(Parent(target)).number;
        Node const noted = At(target);
        Node copy = Fresh(At(path));
        Erase(path);
        InsertBefore(At(*PathOf(destination)), std::move(copy), &noted);
        RepairNumbers({source, destination});
    }

    void Swap(Path const& path, Path const& target) {
        if (IsWithin(path, target) || IsWithin(target, path)) {
            return;
        }
        bool const siblings = Parent(path) == Parent(target);
        bool const targetFollows = siblings && target.back() == path.back() + 1;
        bool const nodeFollows = siblings && path.back() == target.back() + 1;
        std::optional<Node> afterNode = Follower(path);
        std::optional<Node> afterTarget = Follower(target);
        if (targetFollows) {
            afterNode = afterTarget;
        }
        if (nodeFollows) {
            afterTarget = afterNode;
        }

        int const nodeHome = At(Parent(path)).number;
        int const targetHome = At(Parent(target)).number;
        Node const nodeValue = At(path);
        Node const targetValue = At(target);
        Node const before = _root;
        Erase(path);
        Node& targetParent = At(*PathOf(targetHome));
        targetParent.children.erase(FirstEqual(targetParent, targetValue));
        if (!PathOf(nodeHome)) { // it went with the equal of target: nothing may change
            _root = before;
            return;
        }

        auto const put = [&](int home, Node const& value, std::optional<Node> const& follower) {
            InsertBefore(At(*PathOf(home)), Fresh(value), follower ? &*follower : nullptr);
        };
        if (targetFollows) {
            put(targetHome, targetValue, afterNode);
            put(nodeHome, nodeValue, afterTarget);
        } else {
            put(nodeHome, nodeValue, afterTarget);
            put(targetHome, targetValue, afterNode);
        }
        RepairNumbers({nodeHome, targetHome});
    }

    // --- walks -------------------------------------------------------------------------------------------------------

    static bool AllParentsKnown(Node const& node) {
        return std::all_of(node.children.begin(), node.children.end(),
                           [](Node const& child) { return child.parentKnown && AllParentsKnown(child); });
    }

    static std::size_t Height(Node const& node) {
        std::size_t height = 0;
        for (Node const& child : node.children) {
            height = std::max(height, Height(child) + 1);
        }
        return height;
    }

    static void CountGroups(Node const& node, std::size_t depth, std::vector<unsigned long long>& counts) {
        bool counted = false;
        for (Node const& child : node.children) {
            if (child.isGroup && !child.hide) {
                ++counts[depth + 1];
            } else if (!counted && child.children.empty()) {
                counted = true;
                ++counts[depth + 1];
            }
            CountGroups(child, depth + 1, counts);
        }
    }

    static void Dump(Node const& node, std::size_t depth, std::string& text) {
        text += Print(node, depth);
        for (Node const& child : node.children) {
            Dump(child, depth + 1, text);
        }
    }

    Node _root;
    int _categories = 0;
};

} // namespace omtest

#endif
