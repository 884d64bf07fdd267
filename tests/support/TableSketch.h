#ifndef OMTREE_TESTS_SUPPORT_TABLESKETCH_H
#define OMTREE_TESTS_SUPPORT_TABLESKETCH_H

#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"

#include <cstddef>
#include <string>
#include <vector>

/// Pivot tables said in text, and headings read back as text.
///
///     TableSketch sketch;
///     sketch.Dimension("Sex", "Adults(Male Female) -Unknown=7");
///     sketch.Rows({0}).Put({1});
///
/// A dimension's categories are words. A word with brackets behind is a group (`Empty()` one without children), every
/// other one a leaf. Before the name, in this order: `-` hides the node, `~` hides its labels. Behind a leaf, `=` and
/// its subscript; otherwise leaves are numbered 0, 1, 2 ... within the dimension. The dimension's own name takes the
/// two flags as well.
namespace omtest {

class TableSketch {
public:
    using Node = OmDimension::Node;
    using Path = std::vector<std::size_t>; ///< child positions from the root

    TableSketch() : table(OmStringCell("title"), OmStringCell("template"), false) {}

    OmDimension& Dimension(std::string const& name, std::string const& categories = "") {
        _at = 0;
        _text = name;
        Flags const root = ReadFlags();
        OmDimension& dimension = table.AddDimension(OmStringCell(ReadName()));
        SetFlags(dimension.Root(), root);
        _text = categories;
        _at = 0;
        ReadCategories(dimension);
        return dimension;
    }

    /// Leaves c0, c1 ... with subscripts 0 to `count` - 1.
    OmDimension& FlatDimension(std::string const& name, int count) {
        OmDimension& dimension = table.AddDimension(OmStringCell(name));
        for (int k = 0; k < count; ++k) {
            dimension.AddNewChild(dimension.Root(), OmStringCell("c" + std::to_string(k)),
                                  static_cast<unsigned long long>(k), false);
        }
        return dimension;
    }

    TableSketch& Rows(std::vector<short> const& dimensions) { return Place(table.Rows(), dimensions); }
    TableSketch& Columns(std::vector<short> const& dimensions) { return Place(table.Columns(), dimensions); }
    TableSketch& Layers(std::vector<short> const& dimensions) { return Place(table.Layers(), dimensions); }

    TableSketch& Put(std::vector<int> const& index, std::string const& text = "x") {
        table.Cell(index, OmStringCell(text));
        return *this;
    }

    static Node At(OmDimension& dimension, Path const& path) {
        Node node = dimension.Root();
        for (std::size_t const position : path) {
            node = node.Child(position);
        }
        return node;
    }

    OmPivotTable table;

private:
    struct Flags {
        bool hide;
        bool hideLabels;
    };

    static void SetFlags(Node const& node, Flags const& flags) {
        node.Value().Hide(flags.hide);
        node.Value().HideLabels(flags.hideLabels);
    }

    TableSketch& Place(PuppetVector<short>& axis, std::vector<short> const& dimensions) {
        axis.assign(dimensions.begin(), dimensions.end());
        return *this;
    }

    void ReadCategories(OmDimension& dimension) {
        Path open; // the groups that are being read; handles would go stale
        unsigned long long next = 0;
        while (_at < _text.size()) {
            if (Skip(' ')) {
                continue;
            }
            if (Skip(')')) {
                open.pop_back();
                continue;
            }
            Flags const flags = ReadFlags();
            std::string const name = ReadName();
            unsigned long long const subscript = Skip('=') ? std::stoull(ReadName()) : next;
            bool const isGroup = Skip('(');
            Node const parent = At(dimension, open);
            Node const child = dimension.AddNewChild(parent, OmStringCell(name), subscript, isGroup);
            SetFlags(child, flags);
            if (isGroup) {
                open.push_back(parent.ChildCount() - 1);
            } else {
                ++next;
            }
        }
    }

    Flags ReadFlags() {
        bool const hide = Skip('-');
        return {hide, Skip('~')};
    }

    std::string ReadName() {
        std::size_t const start = _at;
        while (_at < _text.size() && std::string(" ()=").find(_text[_at]) == std::string::npos) {
            ++_at;
        }
        return _text.substr(start, _at - start);
    }

    bool Skip(char sign) {
        bool const there = _at < _text.size() && _text[_at] == sign;
        _at += there ? 1 : 0;
        return there;
    }

    std::string _text; ///< being read
    std::size_t _at = 0;
};

/// The labels of a list of nodes, separated by blanks; a point for a null pointer.
template <typename Nodes>
std::string Labels(Nodes const& nodes) {
    std::string text;
    for (auto const* const node : nodes) {
        text += text.empty() ? "" : " ";
        text += node != nullptr ? node->Value().Text()->AsString() : ".";
    }
    return text;
}

/// The same for a list of texts.
inline std::string Texts(std::vector<OmCellText const*> const& texts) {
    std::string text;
    for (OmCellText const* const entry : texts) {
        text += text.empty() ? "" : " ";
        text += entry != nullptr ? entry->AsString() : ".";
    }
    return text;
}

} // namespace omtest

#endif
