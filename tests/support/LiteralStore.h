#ifndef OMTREE_TESTS_SUPPORT_LITERALSTORE_H
#define OMTREE_TESTS_SUPPORT_LITERALSTORE_H

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace omtest {

/// The cell store as its steps are written down, with plain vectors of nodes and no thought of memory: what a table's
/// store has to look like from outside, lengths and null entries included.
class LiteralStore {
public:
    using Index = std::vector<int>;

    explicit LiteralStore(std::size_t dimensions) : _dimensions(dimensions) {}

    std::size_t Dimensions() const { return _dimensions; }

    void AddDimension() {
        if (_root != nullptr) {
            auto above = std::make_unique<Node>();
            above->entries.push_back(std::move(_root));
            _root = std::move(above);
        }
        ++_dimensions;
    }

    /// An empty text stores nothing in the place.
    void Store(Index const& index, std::string const& text) {
        if (_root == nullptr) {
            _root = std::make_unique<Node>();
        }
        Node* node = _root.get();
        for (std::size_t k = _dimensions; k-- > 0;) {
            std::size_t const i = static_cast<std::size_t>(index[k]);
            if (node->entries.size() <= i) {
                node->entries.resize(i + 1);
            }
            if (k == 0) {
                node->entries[i] = text.empty() ? nullptr : std::make_unique<Node>(Node{text, {}});
            } else if (node->entries[i] == nullptr) {
                node->entries[i] = std::make_unique<Node>();
            }
            node = node->entries[i].get();
        }
    }

    /// Whether a deletion stays inside what was stored, or meets a null entry before it leaves that.
    bool MayDelete(Index const& index) const {
        Node const* node = _root.get();
        for (std::size_t k = _dimensions; k-- > 0 && node != nullptr;) {
            std::size_t const i = static_cast<std::size_t>(index[k]);
            if (i >= node->entries.size()) {
                return false;
            }
            node = node->entries[i].get();
        }
        return true;
    }

    void Delete(Index const& index) {
        std::vector<Node*> path{_root.get()};
        for (std::size_t k = _dimensions; k-- > 0 && path.back() != nullptr;) {
            std::unique_ptr<Node>& entry = path.back()->entries[static_cast<std::size_t>(index[k])];
            if (k == 0) {
                entry = nullptr;
            } else {
                path.push_back(entry.get());
            }
        }
        for (std::size_t k = 1; path.size() > 1 && path.back() != nullptr && path.back()->AllNull(); ++k) {
            path.pop_back();
            path.back()->entries[static_cast<std::size_t>(index[k])] = nullptr;
        }
    }

    /// Cells in the order of an iteration: the last subscript counts most.
    std::map<Index, std::string> Cells() const {
        std::map<Index, std::string> cells;
        Index reversed;
        Collect(_root.get(), reversed, cells);
        return cells;
    }

    /// What the raw dump of the store prints, every address but null as "@".
    std::string Dump() const {
        std::string dump;
        Dump(_root.get(), 0, 0, dump);
        return dump;
    }

private:
    struct Node {
        std::string text{};
        std::vector<std::unique_ptr<Node>> entries{};

        bool AllNull() const {
            for (auto const& entry : entries) {
                if (entry != nullptr) {
                    return false;
                }
            }
            return true;
        }
    };

    void Collect(Node const* node, Index& reversed, std::map<Index, std::string>& cells) const {
        if (node == nullptr) {
            return;
        }
        if (reversed.size() == _dimensions) {
            cells[reversed] = node->text;
            return;
        }
        for (std::size_t i = 0; i < node->entries.size(); ++i) {
            reversed.push_back(static_cast<int>(i));
            Collect(node->entries[i].get(), reversed, cells);
            reversed.pop_back();
        }
    }

    void Dump(Node const* node, std::size_t level, std::size_t index, std::string& dump) const {
        for (std::size_t i = 0; i < level; ++i) {
            dump.append("    [").append(std::to_string(index)).append("] ");
        }
        dump += node != nullptr ? "@" : "0";
        if (level == _dimensions) {
            dump.append(node != nullptr ? " - " + node->text : std::string()).append("\n");
            return;
        }
        dump += "\n";
        for (std::size_t i = 0; node != nullptr && i < node->entries.size(); ++i) {
            Dump(node->entries[i].get(), level + 1, i, dump);
        }
    }

    std::size_t _dimensions;
    std::unique_ptr<Node> _root;
};

} // namespace omtest

#endif
