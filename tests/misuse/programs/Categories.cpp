// What programs do wrong with categories and their handles.

#include "tests/misuse/programs/Misuse.h"

#include <memory>
#include <vector>

using misuse::LongText;
using misuse::Text;
using misuse::Use;

namespace {

using Node = OmDimension::Node;
using ConstNode = OmDimension::ConstNode;

/// Groups A to E, each with leaves 1 and 2 below; the fifth one has moved the others.
struct Groups {
    Groups() : Groups(5) {}
    explicit Groups(int count) : table(Text("Passengers"), Text("Cross tabulation"), false) {
        for (int i = 0; i < count; ++i) {
            Node const group = dimension.Child(dimension.Root(), LongText(std::string(1, char('A' + i)).c_str()),
                                               OmDimensionNode::NoSubscript, true);
            dimension.Child(group, Text("1"), static_cast<unsigned long long>(2 * i), false);
            dimension.Child(group, Text("2"), static_cast<unsigned long long>(2 * i + 1), false);
        }
    }
    Node Group(std::size_t k) { return dimension.Root().Child(k); }
    Node Add(char const* label) {
        return dimension.Child(dimension.Root(), Text(label), OmDimensionNode::NoSubscript, true);
    }

    OmPivotTable table;
    OmDimension& dimension = table.AddDimension(Text("Age"));
};

} // namespace

MISUSE(handle_kept_over_growth) {
    OmPivotTable table(Text("Passengers"), Text("Cross tabulation"), false);
    OmDimension& age = table.AddDimension(Text("Age"));
    Node const first = age.Child(age.Root(), Text("Child"), 0, true);
    for (char const* name : {"Youth", "Adult", "Middle", "Old"}) {
        age.Child(age.Root(), Text(name), 0, true);
    }
    age.Child(first, Text("Under 5"), 0, false);
}

MISUSE(handle_kept_over_one_more_sibling) {
    Groups groups(1);
    Node const first = groups.Group(0);
    groups.Add("B");
    first.Value().Hide(true);
}

MISUSE(handle_kept_over_AddNewChild) {
    Groups groups(1);
    ConstNode const first = groups.Group(0);
    groups.dimension.AddNewChild(groups.dimension.Root(), Text("B"), 9, false);
    Use(first.ChildCount());
}

MISUSE(range_kept_over_growth) {
    Groups groups(4);
    Node const group = groups.Group(0);
    auto const begin = group.begin();
    groups.Add("E");
    Use(*(*begin).Value().Text());
}

MISUSE(deleted_handle_used) {
    Groups groups;
    Node last = groups.Group(4);
    groups.dimension.Delete(last);
    Use(*last.Value().Text());
}

MISUSE(later_sibling_used_after_Delete) {
    Groups groups;
    Node first = groups.Group(0);
    Node const second = groups.Group(1);
    groups.dimension.Delete(first);
    second.Value().HideLabels(true);
}

MISUSE(deleted_twice) {
    Groups groups;
    Node first = groups.Group(0);
    groups.dimension.Delete(first);
    groups.dimension.Delete(first);
}

MISUSE(leaf_of_deleted_group_used) {
    Groups groups;
    Node group = groups.Group(4);
    Node const leaf = group.Child(0);
    groups.dimension.Delete(group);
    Use(static_cast<std::size_t>(leaf.Value().Subscript()));
}

MISUSE(dissolved_handle_used) {
    Groups groups;
    Node group = groups.Group(0);
    groups.dimension.removeChild(group);
    Use(group.ChildCount());
}

MISUSE(leaf_of_dissolved_group_used) {
    Groups groups;
    Node group = groups.Group(0);
    Node const leaf = group.Child(1);
    groups.dimension.removeChild(group);
    Use(static_cast<std::size_t>(leaf.Value().Subscript()));
}

MISUSE(moved_handle_used) {
    Groups groups;
    Node node = groups.Group(0);
    Node target = groups.Group(3);
    groups.dimension.moveChild(node, &target, false);
    Use(node.ChildCount());
}

MISUSE(swapped_target_used) {
    Groups groups;
    Node node = groups.Group(0);
    Node target = groups.Group(3);
    groups.dimension.moveChild(node, &target, true);
    Use(target.ChildCount());
}

MISUSE(gathered_handle_used) {
    Groups groups;
    Node one = groups.Group(0);
    Node two = groups.Group(2);
    groups.dimension.insertChild(Text("both"), {&one, &two});
    Use(two.ChildCount());
}

MISUSE(sibling_used_after_insertCategory) {
    Groups groups;
    Node const reference = groups.Group(0);
    groups.dimension.insertCategory(Text("new"), reference, groups.dimension.Root(), true);
    Use(reference.ChildCount());
}

MISUSE(handle_used_after_EraseChild) {
    OmVectorTree<int> tree(nullptr, 0);
    tree.AddChild(tree.Root(), 1);
    OmVectorTree<int>::Node const two = tree.AddChild(tree.Root(), 2);
    OmVectorTree<int>::EraseChild(tree.Root(), 0);
    Use(static_cast<std::size_t>(two.Value()));
}

MISUSE(component_used_after_Append) {
    OmComposite composite;
    OmComposite::Tree::Node const first = composite.Append(Text("Sum of "));
    composite.Append(Text("squares"));
    Use(*first.Value());
}

MISUSE(handle_of_the_copied_dimension) {
    Groups groups;
    OmDimension& copy = groups.table.AddDimension(groups.dimension);
    groups.dimension.Child(copy.Root().Child(0), Text("3"), 20, false);
}

MISUSE(root_of_the_copied_dimension) {
    Groups groups;
    OmDimension& copy = groups.table.AddDimension(groups.dimension);
    groups.dimension.AddNewChild(copy.Root(), Text("F"), 20, false);
}

MISUSE(counterpart_in_another_shape) {
    Groups five;
    Groups four(4);
    Node fifth = five.Group(4);
    Use(static_cast<std::size_t>(four.dimension.Counterpart(fifth).Value().Subscript()));
}

MISUSE(counterpart_after_Delete) {
    Groups groups;
    Groups same;
    Node first = groups.Group(0);
    groups.dimension.Delete(first);
    Node leaf = groups.Group(3).Child(0);
    Use(same.dimension.Counterpart(leaf).ChildCount());
}

MISUSE(label_kept_after_its_replacement) {
    Groups groups;
    OmCellText const* const label = groups.Group(0).Value().Text();
    groups.Group(0).Value().Text(Text("another"));
    Use(*label);
}

MISUSE(label_kept_after_Delete) {
    Groups groups;
    Node group = groups.Group(4);
    OmCellText const* const label = group.Value().Text();
    groups.dimension.Delete(group);
    Use(*label);
}

MISUSE(label_of_an_assigned_node) {
    Groups groups;
    OmDimensionNode const source(Text("source"), 0, false, nullptr);
    groups.Group(0).Child(0).Value() = OmDimensionNode(Text("target"), 0, false, nullptr);
    OmDimensionNode target(nullptr);
    target = source;
    Use(*source.Text());
}

MISUSE(new_category_outlives_its_table) {
    auto groups = std::make_unique<Groups>();
    OmDimensionNode const value =
        groups->dimension.insertCategory(Text("new"), groups->Group(0), groups->dimension.Root(), true);
    groups.reset();
    Use(*value.Text());
}

MISUSE(handle_used_after_the_table) {
    auto groups = std::make_unique<Groups>();
    Node const leaf = groups->Group(0).Child(0);
    groups.reset();
    Use(static_cast<std::size_t>(leaf.Value().Subscript()));
}

MISUSE(dimension_used_after_the_table) {
    auto groups = std::make_unique<Groups>();
    OmDimension const& dimension = groups->dimension;
    groups.reset();
    Use(static_cast<std::size_t>(dimension.NumCategories()));
}

// --- what must not be reported ---------------------------------------------------------------------------------------

MISUSE(well_handles_fetched_again) {
    Groups groups;
    for (std::size_t k = 0; k < 5; ++k) {
        groups.dimension.Child(groups.Group(k), Text("3"), 10 + k, false);
    }
    Node group = groups.Group(1);
    groups.dimension.removeChild(group);
    group = groups.Group(0);
    groups.dimension.Delete(group);
    Use(groups.Group(0).ChildCount());
}

MISUSE(well_stale_handle_only_compared) {
    Groups groups;
    Node const first = groups.Group(0);
    groups.Add("F");
    Node const copy = first;
    Use(copy == first && !copy.IsNull() ? copy.Depth() : 0U);
}

MISUSE(well_deeper_handle_kept_while_the_level_above_grows) {
    Groups groups(1);
    Node const leaf = groups.Group(0).Child(0);
    groups.Add("B");
    Use(static_cast<std::size_t>(leaf.Value().Subscript()));
}

MISUSE(well_foreign_handle_deletes_nothing) {
    Groups groups;
    OmDimension& copy = groups.table.AddDimension(groups.dimension);
    Node foreign = copy.Root().Child(0);
    groups.dimension.Delete(foreign);
    Use(foreign.ChildCount());
}

MISUSE(well_counterpart_of_the_same_shape) {
    Groups groups;
    OmDimension& copy = groups.table.AddDimension(groups.dimension);
    Node leaf = groups.Group(4).Child(1);
    Use(static_cast<std::size_t>(copy.Counterpart(leaf).Value().Subscript()));
}
