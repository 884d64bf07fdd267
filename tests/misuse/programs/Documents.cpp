// What programs do wrong with documents, their parts and list trees.

#include "tests/misuse/programs/Misuse.h"

#include <memory>
#include <optional>

using misuse::LongText;
using misuse::Text;
using misuse::Use;

namespace {

using Node = OmOutputTree::Node;

/// Output, and below it one heading with a heading below.
struct Document {
    OmOutputTree tree;
    Node heading = tree.AppendChild(tree.Root(), new OmHeading(LongText("By class")));
    Node below = tree.AppendChild(heading, new OmHeading(LongText("Table")));

    Node End() { return Node(tree, tree.List().end()); }
};

/// Root 0 with the children 1 and 2.
struct Numbers {
    ListTree<int> tree{0};
    ListTree<int>::Node one = tree.AppendChild(tree.Root(), 1);
    ListTree<int>::Node two = tree.AppendChild(tree.Root(), 2);

    ListTree<int>::Node End() { return {tree, tree.List().end()}; }
};

} // namespace

// --- handles at the end ----------------------------------------------------------------------------------------------

MISUSE(end_pruned) {
    Document document;
    Node end = document.End();
    document.tree.Prune(end);
}

MISUSE(end_erased) {
    Document document;
    Node end = document.End();
    document.tree.Erase(end);
}

MISUSE(end_amputated) {
    Document document;
    OmStringCell const text = Text("Log");
    Amputate(document.End(), &text, "UTF-8");
}

MISUSE(end_pruned_in_a_list_tree) {
    Numbers numbers;
    numbers.tree.Prune(numbers.End());
}

MISUSE(child_of_the_end_appended) {
    Numbers numbers;
    numbers.tree.AppendChild(numbers.End(), 3);
}

MISUSE(end_asked_whether_it_is_a_leaf) {
    Numbers numbers;
    Use(numbers.tree.IsLeaf(numbers.End()) ? 1U : 0U);
}

MISUSE(amputated_without_a_text) {
    Document document;
    Amputate(document.heading, nullptr, "UTF-8");
}

MISUSE(amputated_without_a_part) {
    Document document;
    delete document.below.Value();
    document.below.Value() = nullptr;
    Amputate(document.below, nullptr, "UTF-8");
}

// --- handles of another tree -----------------------------------------------------------------------------------------

MISUSE(node_of_another_list_tree_pruned) {
    Numbers numbers;
    Numbers others;
    numbers.tree.Prune(others.one);
}

MISUSE(child_of_another_list_trees_node_appended) {
    Numbers numbers;
    Numbers others;
    numbers.tree.AppendChild(others.one, 3);
}

MISUSE(node_of_another_list_tree_flattened) {
    Numbers numbers;
    Numbers others;
    numbers.tree.Flatten(others.one);
}

MISUSE(node_of_another_list_tree_erased) {
    Numbers numbers;
    Numbers others;
    numbers.tree.Erase(others.one);
}

MISUSE(node_of_another_list_tree_asked_whether_it_is_a_leaf) {
    Numbers numbers;
    Numbers others;
    Use(numbers.tree.IsLeaf(others.one) ? 1U : 0U);
}

MISUSE(node_of_no_list_tree_pruned) {
    Numbers numbers;
    numbers.tree.Prune(ListTree<int>::Node());
}

MISUSE(node_of_another_document_pruned) {
    Document document;
    Document other;
    document.tree.Prune(other.heading);
}

MISUSE(node_of_another_document_erased) {
    Document document;
    Document other;
    document.tree.Erase(other.heading);
}

MISUSE(node_of_no_document_amputated) {
    OmStringCell const text = Text("Log");
    Amputate(Node(), &text, "UTF-8");
}

// --- moves -----------------------------------------------------------------------------------------------------------

MISUSE(moved_before_a_node_of_another_tree) {
    Numbers numbers;
    Numbers others;
    Numbers third;
    numbers.tree.Move(third.one, others.one, others.two);
}

MISUSE(moved_up_to_the_end_of_another_tree) {
    Numbers numbers;
    Numbers others;
    numbers.tree.Move(numbers.one, others.one, numbers.two);
}

MISUSE(moved_within_one_tree) {
    Numbers numbers;
    numbers.tree.Move(numbers.one, numbers.two, numbers.End());
}

MISUSE(moved_to_another_level) {
    Numbers numbers;
    Numbers others;
    others.tree.AppendChild(others.one, 3);
    numbers.tree.Move(numbers.one, others.tree.Root(), others.one);
}

// --- parts and records that are gone ---------------------------------------------------------------------------------

MISUSE(part_used_after_Prune) {
    Document document;
    OmOutputPart const* const part = document.below.Value();
    document.tree.Prune(document.heading);
    Use(*part->Title());
}

MISUSE(part_used_after_Erase) {
    Document document;
    OmOutputPart const* const part = document.heading.Value();
    document.tree.Erase(document.heading);
    Use(*part->Title());
}

MISUSE(part_used_after_Amputate) {
    Document document;
    OmOutputPart const* const part = document.below.Value();
    OmStringCell const text = Text("Log");
    Amputate(document.heading, &text, "UTF-8");
    Use(*part->Title());
}

MISUSE(part_used_after_the_document) {
    std::optional<Document> document(std::in_place);
    OmOutputPart const* const part = document->heading.Value();
    document.reset();
    Use(*part->Title());
}

MISUSE(title_kept_after_its_replacement_by_the_outline_text) {
    OmProcedure procedure(LongText("Means"), "en", "UTF-8", "en_US.UTF-8");
    OmCellText const* const title = procedure.Title();
    procedure.setOutlineText(Text("another"));
    Use(*title);
}

MISUSE(handle_used_after_Prune) {
    Document document;
    document.tree.Prune(document.heading);
    Use(document.below.Value() != nullptr ? 1U : 0U);
}

MISUSE(node_pruned_twice) {
    Document document;
    Node const copy = document.heading;
    document.tree.Prune(document.heading);
    Node again = copy;
    document.tree.Prune(again);
}

MISUSE(part_deleted_by_the_program_too) {
    Document document;
    delete document.heading.Value();
}

MISUSE(part_on_the_stack_appended) {
    OmHeading heading(Text("By class"));
    OmOutputTree tree;
    tree.AppendChild(tree.Root(), &heading);
}

MISUSE(part_in_two_documents) {
    Document document;
    Document other;
    other.tree.AppendChild(other.tree.Root(), document.heading.Value());
}

MISUSE(part_appended_twice) {
    Document document;
    document.tree.AppendChild(document.tree.Root(), document.heading.Value());
}

MISUSE(document_and_its_copy_destroyed) {
    Document document;
    OmOutputTree const copy(document.tree);
}

MISUSE(copied_heading_destroyed_too) {
    OmHeading const heading(LongText("By class"));
    OmHeading const copy(heading);
}

MISUSE(copied_text_block_destroyed_too) {
    OmTextBlock const block(LongText("Log"), "UTF-8");
    OmTextBlock const copy(block);
}

MISUSE(copied_chart_destroyed_too) {
    auto* const chart = new OmChart(LongText("Bars"), "UTF-8", 1);
    OmChart const copy(*chart);
    delete chart;
}

MISUSE(assigned_heading_drops_its_title) {
    auto* const heading = new OmHeading(LongText("By class"));
    auto* const source = new OmHeading(LongText("By age"));
    *heading = *source;
    delete heading;
}

MISUSE(parts_left_by_the_inherited_Prune) {
    Document document;
    document.tree.ListTree<OmOutputPart*>::Prune(document.heading);
}

// --- what must not be reported ---------------------------------------------------------------------------------------

MISUSE(well_end_flattened_and_erased_in_a_list_tree) {
    Numbers numbers;
    ListTree<int>::Node end = numbers.End();
    numbers.tree.Flatten(end);
    numbers.tree.Erase(end);
    Use(static_cast<std::size_t>(numbers.tree.Size()));
}

MISUSE(well_copied_document_emptied_before_its_end) {
    Document document;
    OmOutputTree copy(document.tree);
    copy.List().clear();
}

MISUSE(well_records_moved_between_trees) {
    Numbers numbers;
    Numbers others;
    numbers.tree.Move(numbers.two, others.one, others.End());
    Use(static_cast<std::size_t>(numbers.tree.Size()));
}

MISUSE(well_root_pruned) {
    Document document;
    Node root = document.tree.Root();
    document.tree.Prune(root);
    Use(static_cast<std::size_t>(document.tree.Size()));
}
