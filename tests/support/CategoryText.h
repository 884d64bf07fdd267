#ifndef OMTREE_TESTS_SUPPORT_CATEGORYTEXT_H
#define OMTREE_TESTS_SUPPORT_CATEGORYTEXT_H

#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CapturedOutput.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// Category trees said in text.
///
///     X A(p q) ~B() c        a leaf, a group of two leaves, a hidden group without children, a leaf
///
/// Recursion goes as deep as the text, which tests of this kind keep small.
namespace omtest {

inline OmStringCell Label(std::string text) { return OmStringCell(std::move(text), nullptr, false); }

/// A table with one empty dimension named "D".
struct CategoryWorld {
    OmPivotTable table{Label("title"), Label("template"), false};
    OmDimension& dimension{table.AddDimension(Label("D"))};

    OmDimension::Node Root() { return dimension.Root(); }
};

/// What stands below `node`.
inline std::string CategoriesBelow(OmDimension::ConstNode const& node) {
    std::string text;
    for (std::size_t k = 0; k < node.ChildCount(); ++k) {
        OmDimension::ConstNode const child = node.Child(k);
        text += text.empty() ? "" : " ";
        text += child.Value().Hide() ? "~" : "";
        text += child.Value().Text() != nullptr ? child.Value().Text()->AsString() : "?";
        if (child.Value().IsGroup() || child.ChildCount() != 0) {
            text += "(" + CategoriesBelow(child) + ")";
        }
    }
    return text;
}

inline std::string Categories(OmDimension const& dimension) { return CategoriesBelow(dimension.Root()); }

/// The entries of the node's child index, as `Print` shows them: "1, 0"; empty when there are none.
inline std::string ChildIndexOf(OmDimension::ConstNode const& node) {
    std::string const line = PrintedBy(node.Value(), 0);
    std::string const title = ", Children: ";
    std::size_t const start = line.find(title);
    if (start == std::string::npos) {
        return "";
    }
    std::size_t const first = start + title.size();
    return line.substr(first, line.find(", Text: ") - first);
}

/// Adds categories below a node, leaves numbered upwards from `nextSubscript`, groups with subscript 7.
class CategoryReader {
public:
    explicit CategoryReader(OmDimension& dimension, unsigned long long nextSubscript = 0)
        : _dimension(dimension), _subscript(nextSubscript) {}

    /// By `AddNewChild`, so equal siblings may be said. Child indexes are then in step, but not sorted.
    void AddBelow(OmDimension::Node const& parent, std::string const& text) {
        _at = text.c_str();
        AddLevel(parent);
    }

private:
    void AddLevel(OmDimension::Node const& parent) {
        while (*_at != '\0' && *_at != ')') {
            bool const hidden = Skip('~');
            std::string label;
            while (*_at != '\0' && *_at != '(' && *_at != ')' && *_at != ' ') {
                label += *_at++;
            }
            bool const isGroup = Skip('(');
            OmDimension::Node const child =
                _dimension.AddNewChild(parent, Label(label), isGroup ? 7 : _subscript++, isGroup);
            child.Value().Hide(hidden);
            if (isGroup) {
                AddLevel(child);
                Skip(')');
            }
            Skip(' ');
        }
    }

    bool Skip(char sign) {
        bool const there = *_at == sign;
        _at += there ? 1 : 0;
        return there;
    }

    OmDimension& _dimension;
    unsigned long long _subscript;
    char const* _at = nullptr;
};

/// The node reached from the root by child positions.
template <typename... Steps>
OmDimension::Node NodeAt(OmDimension& dimension, Steps... steps) {
    OmDimension::Node node = dimension.Root();
    ((node = node.Child(static_cast<std::size_t>(steps))), ...);
    return node;
}

/// The first node below the root with this label, in pre-order. Throws when there is none.
inline OmDimension::Node NodeNamed(OmDimension& dimension, std::string const& label) {
    std::vector<OmDimension::Node> waiting{dimension.Root()};
    while (!waiting.empty()) {
        OmDimension::Node const node = waiting.back();
        waiting.pop_back();
        if (node.Depth() != 0 && node.Value().Text()->AsString() == label) {
            return node;
        }
        for (std::size_t k = node.ChildCount(); k > 0; --k) {
            waiting.push_back(node.Child(k - 1));
        }
    }
    throw std::out_of_range("no category " + label);
}

/// Whether every node's parent pointer names the node whose children hold it.
inline bool ParentPointersHold(OmDimension const& dimension) {
    bool hold = true;
    OmDimension::Tree::WalkPreOrder(dimension.Root(), [&](OmDimension::ConstNode const& node) {
        for (OmDimension::Tree::TreeNode const& child : node.Ptr()->children) {
            hold = hold && child.parent == node.Ptr();
        }
        return true;
    });
    return hold;
}

/// A dimension "D" with the categories that the text says.
struct GrownWorld : CategoryWorld {
    explicit GrownWorld(std::string const& categories, unsigned long long firstSubscript = 0) {
        CategoryReader(dimension, firstSubscript).AddBelow(Root(), categories);
    }

    OmDimension::Node Named(std::string const& label) { return NodeNamed(dimension, label); }
};

} // namespace omtest

#endif
