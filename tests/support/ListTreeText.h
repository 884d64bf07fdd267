#ifndef OMTREE_TESTS_SUPPORT_LISTTREETEXT_H
#define OMTREE_TESTS_SUPPORT_LISTTREETEXT_H

#include "backend/tables/ListTree.h"

#include <sstream>
#include <string>

/// List trees said in text: each record as its value and its level, in order.
///
///     a0 b1 c2 d1        a root with two children, the first of which has one
namespace omtest {

/// The records of any tree whose values a stream can write.
template <typename T>
std::string RecordsOf(ListTree<T> const& tree) {
    std::ostringstream text;
    char const* before = "";
    for (ListTreeData<T> const& record : tree.List()) {
        text << before << record.value << record.level;
        before = " ";
    }
    return text.str();
}

/// Replaces the tree's records by those of the text, whatever levels it names.
inline void Fill(ListTree<char>& tree, std::string const& text) {
    tree.List().clear();
    std::istringstream from(text);
    ListTreeData<char> record{};
    while (from >> record.value >> record.level) {
        tree.List().push_back(record);
    }
}

inline ListTree<char> ListTreeOf(std::string const& text) {
    ListTree<char> tree;
    Fill(tree, text);
    return tree;
}

/// A handle on the first record with that value; on the end when there is none.
inline ListTree<char>::Node NodeOf(ListTree<char>& tree, char value) {
    auto position = tree.List().begin();
    while (position != tree.List().end() && position->value != value) {
        ++position;
    }
    return ListTree<char>::Node(tree, position);
}

inline ListTree<char>::Node EndOf(ListTree<char>& tree) { return ListTree<char>::Node(tree, tree.List().end()); }

} // namespace omtest

#endif
