# The misuses: name, what is done wrong, who catches it and what is said. Whoever finds a way to misuse the library adds
# a program and a line.
#
#     CHECKED     the checks of handles (OMTREE_CHECK_HANDLES): `source: condition`, and an abort
#     REPORTED    an assertion that every build has: likewise
#     HARDENED    a hardened check (OMTREE_HARDENED): likewise
#     SANITIZED   the address or undefined behaviour sanitizer: what the first line of its report has in it
#     WELL        nobody: a program that looks odd and is in order
set(stale "backend/tables/om/VectorTree: stale handle: the children around its node have changed, fetch it from the root again")
set(foreign "backend/tables/om/VectorTree: handle of another tree")

# --- handles of categories --------------------------------------------------------------------------------------------
omtree_misuse(handle_kept_over_growth
    "five groups are made, and a child is added below the handle of the first"
    CHECKED "${stale}"
    SANITIZED "use-after-poison")
omtree_misuse(handle_kept_over_one_more_sibling
    "a sibling is added, for which the children need not move"
    CHECKED "${stale}")
omtree_misuse(handle_kept_over_AddNewChild
    "the same with AddNewChild, then a question"
    CHECKED "${stale}")
omtree_misuse(range_kept_over_growth
    "a range over children is walked after their parent has moved"
    CHECKED "${stale}"
    SANITIZED "use-after-poison")
omtree_misuse(deleted_handle_used
    "the handle that was given to Delete"
    CHECKED "${stale}"
    SANITIZED "null pointer of type 'const struct OmCellText'")
omtree_misuse(later_sibling_used_after_Delete
    "the handle of a sibling that Delete has moved up"
    CHECKED "${stale}")
omtree_misuse(deleted_twice
    "one handle is given to Delete twice"
    CHECKED "${stale}")
omtree_misuse(leaf_of_deleted_group_used
    "the handle of a leaf whose group was deleted"
    CHECKED "${stale}"
    SANITIZED "use-after-poison")
omtree_misuse(dissolved_handle_used
    "the handle that was given to removeChild"
    CHECKED "${stale}")
omtree_misuse(leaf_of_dissolved_group_used
    "the handle of a leaf whose group was dissolved"
    CHECKED "${stale}"
    SANITIZED "use-after-poison")
omtree_misuse(moved_handle_used
    "the handle that was given to moveChild"
    CHECKED "${stale}")
omtree_misuse(swapped_target_used
    "the handle of the target of a swap"
    CHECKED "${stale}")
omtree_misuse(gathered_handle_used
    "a handle that was given to insertChild"
    CHECKED "${stale}")
omtree_misuse(sibling_used_after_insertCategory
    "the reference that was given to insertCategory"
    CHECKED "${stale}")
omtree_misuse(handle_used_after_EraseChild
    "a sibling of the node that EraseChild took out of a tree"
    CHECKED "${stale}")
omtree_misuse(component_used_after_Append
    "the handle of a composite's first component, once there is a second"
    CHECKED "${stale}")
omtree_misuse(handle_of_the_copied_dimension
    "a child is added below a node of the dimension's copy"
    CHECKED "${foreign}")
omtree_misuse(root_of_the_copied_dimension
    "a child is added below the root of the dimension's copy"
    CHECKED "${foreign}")
omtree_misuse(counterpart_in_another_shape
    "Counterpart leads past the children of a smaller dimension"
    SANITIZED "use-after-poison")
omtree_misuse(counterpart_after_Delete
    "Counterpart goes over parent pointers that Delete left stale"
    REPORTED "backend/tables/om/VectorTree: 0 <= offset && offset < vec.size()")
omtree_misuse(handle_used_after_the_table
    "a handle into a table that was destroyed"
    CHECKED "${stale}"
    SANITIZED "heap-use-after-free")

# --- categories -------------------------------------------------------------------------------------------------------
omtree_misuse(label_kept_after_its_replacement
    "a label's address is kept while the node gets another"
    SANITIZED "use-after-poison")
omtree_misuse(label_kept_after_Delete
    "a label's address is kept while its node is deleted"
    SANITIZED "use-after-poison")
omtree_misuse(label_of_an_assigned_node
    "the label of a node that was assigned to another, which took it"
    SANITIZED "null pointer of type 'const struct OmCellText'")
omtree_misuse(new_category_outlives_its_table
    "the copy that insertCategory gives is read after the table's end"
    SANITIZED "heap-use-after-free")
omtree_misuse(dimension_used_after_the_table
    "a dimension of a table that was destroyed"
    SANITIZED "heap-use-after-free")

# --- texts and regions ------------------------------------------------------------------------------------------------
omtree_misuse(text_used_after_its_release
    "a text in a region is read after its delete"
    SANITIZED "use-after-poison")
omtree_misuse(text_used_after_its_region
    "a text is read after the end of its region"
    SANITIZED "heap-use-after-free")
omtree_misuse(text_of_the_default_heap_used_after_its_release
    "a text in the default heap is read after its delete"
    SANITIZED "heap-use-after-free")
omtree_misuse(text_deleted_after_its_region
    "a text is deleted after the end of its region"
    SANITIZED "heap-use-after-free")
omtree_misuse(text_deleted_twice
    "a text in a region is deleted twice"
    SANITIZED "use-after-poison")
omtree_misuse(metadata_kept_after_its_replacement
    "a metadata record is read after setMeta"
    SANITIZED "heap-use-after-free")
omtree_misuse(component_used_after_the_composite
    "a component is read after its composite's end"
    SANITIZED "heap-use-after-free")
omtree_misuse(block_overrun
    "one byte behind a block is written"
    SANITIZED "use-after-poison")
omtree_misuse(block_underrun
    "one byte in front of a block is written"
    SANITIZED "use-after-poison")
omtree_misuse(block_in_page_overrun
    "one byte behind a block of a page is written"
    SANITIZED "use-after-poison")
omtree_misuse(block_in_page_underrun
    "one byte in front of a block of a page is written"
    SANITIZED "use-after-poison")
omtree_misuse(large_block_overrun
    "one byte behind a large block is written"
    SANITIZED "use-after-poison")
omtree_misuse(large_block_underrun
    "one byte in front of a large block is written"
    SANITIZED "use-after-poison")
omtree_misuse(block_of_the_default_heap_overrun
    "one byte behind a block of the default heap is written"
    SANITIZED "use-after-poison|heap-buffer-overflow")
omtree_misuse(block_of_the_default_heap_underrun
    "one byte in front of a block of the default heap is written"
    SANITIZED "use-after-poison")
omtree_misuse(block_used_after_its_release
    "a released block is written"
    SANITIZED "use-after-poison")
omtree_misuse(block_in_page_used_after_its_release
    "a released block of a page is read"
    SANITIZED "use-after-poison")
omtree_misuse(block_released_twice
    "a block is released twice in a row"
    SANITIZED "use-after-poison")
omtree_misuse(block_released_twice_with_another_between
    "a block is released twice, another one between"
    SANITIZED "use-after-poison")
omtree_misuse(block_in_page_released_twice
    "a block of a page is released twice"
    SANITIZED "use-after-poison")
omtree_misuse(large_block_released_twice
    "a large block is released twice"
    SANITIZED "heap-use-after-free")
omtree_misuse(block_of_the_default_heap_released_twice
    "a block of the default heap is released twice"
    SANITIZED "double-free")
omtree_misuse(block_freed_with_the_global_delete
    "a block is given to the global delete"
    SANITIZED "attempting free on address which was not malloc()-ed")

# --- cells ------------------------------------------------------------------------------------------------------------
omtree_misuse(cell_kept_after_its_replacement
    "a cell is read after another was stored in its place"
    SANITIZED "use-after-poison")
omtree_misuse(cell_kept_after_null_was_stored
    "a cell is read after null was stored in its place"
    SANITIZED "use-after-poison")
omtree_misuse(cell_kept_after_deleteCell
    "a cell is read after deleteCell"
    SANITIZED "use-after-poison")
omtree_misuse(cell_kept_after_the_table
    "a cell is read after its table's end"
    SANITIZED "heap-use-after-free")
omtree_misuse(iterator_cell_read_after_its_deletion
    "an iterator's cell is read after deleteCell"
    SANITIZED "use-after-poison")
omtree_misuse(iterator_stepped_after_the_table
    "an iterator goes on after its table's end"
    SANITIZED "heap-use-after-free")
omtree_misuse(iterator_cell_read_after_the_table
    "an iterator's cell is read after its table's end"
    SANITIZED "heap-use-after-free")
omtree_misuse(deleteCell_outside_of_what_was_stored
    "deleteCell is given a subscript past what was stored"
    HARDENED "backend/tables/om/OmPivotTable: subscript < node length")
omtree_misuse(deleteCell_with_too_short_an_index
    "deleteCell is given fewer subscripts than dimensions"
    HARDENED "backend/tables/om/OmPivotTable: nind == _my->_dimensions.size()")
omtree_misuse(part_of_a_held_cell_stored_in_its_place
    "a program's text in a cell is stored in the cell's place"
    HARDENED "backend/tables/om/OmPivotTable: text != held")

# --- texts and formats of a table -------------------------------------------------------------------------------------
omtree_misuse(print_without_a_title
    "a table without a title is printed"
    HARDENED "backend/tables/om/OmPivotTable: _my->_tableTitle != 0")
omtree_misuse(title_read_before_it_was_set
    "the title of a table without one is asked for"
    HARDENED "backend/tables/om/OmPivotTable: _my->_tableTitle != 0")
omtree_misuse(title_kept_after_its_replacement
    "a title is read after another was set"
    SANITIZED "use-after-poison")
omtree_misuse(held_caption_of_a_foreign_kind_set_again
    "a caption of a program's own kind is set again"
    HARDENED "backend/tables/om/OmPivotTable: text != held")
omtree_misuse(part_of_the_held_corner_text_set
    "a program's text in the corner text takes its place"
    HARDENED "backend/tables/om/OmPivotTable: text != held")
omtree_misuse(held_title_of_a_foreign_kind_set_again
    "a title of a program's own kind is set again"
    HARDENED "backend/tables/om/OmPivotTable: text != held")
omtree_misuse(footnote_kept_over_growth
    "a footnote is read after the list has moved"
    SANITIZED "use-after-poison")
omtree_misuse(held_format_set_again
    "the format that an area has is set again"
    HARDENED "backend/tables/om/OmPivotTable: format != getAreaFormat(format->getArea())")
omtree_misuse(format_kept_after_its_replacement
    "a format is read after another was set for its area"
    SANITIZED "heap-use-after-free")
omtree_misuse(format_deleted_by_the_program_too
    "a format is deleted by program and table"
    SANITIZED "heap-use-after-free")
omtree_misuse(format_given_to_two_tables
    "one format is given to two tables"
    SANITIZED "heap-use-after-free")
omtree_misuse(tracker_used_after_the_table
    "a table's tracker is asked after the table's end"
    SANITIZED "heap-use-after-free")
omtree_misuse(copied_table_destroyed_too
    "a table and its copy are destroyed"
    SANITIZED "heap-use-after-free")

# --- headings ---------------------------------------------------------------------------------------------------------
omtree_misuse(column_heading_over_a_dead_layer_heading
    "columns are asked for after the layer heading's end"
    HARDENED "backend/tables/om/detail/HeadingLayout: _layers != 0")
omtree_misuse(column_heading_over_a_dead_heap_layer_heading
    "the same, the layer heading on the heap"
    HARDENED "backend/tables/om/detail/HeadingLayout: _layers != 0")
omtree_misuse(row_heading_over_a_dead_heap_layer_heading
    "rows are asked for after the layer heading's end"
    HARDENED "backend/tables/om/detail/HeadingLayout: _layers != 0")
omtree_misuse(layer_heading_over_a_dead_table
    "the layer is restored after the table's end"
    SANITIZED "heap-use-after-free")
omtree_misuse(column_heading_made_over_a_dead_table
    "a column heading is made after the table's end"
    SANITIZED "heap-use-after-free")
omtree_misuse(heading_node_used_after_the_layer_heading
    "a node is read after the heading's end"
    SANITIZED "heap-use-after-free")
omtree_misuse(heading_node_used_after_the_table
    "a heading's node is read after the table's end"
    CHECKED "${stale}"
    SANITIZED "heap-use-after-free")
omtree_misuse(heading_node_used_after_the_tree_changed
    "a heading's node is read after categories were added"
    CHECKED "${stale}"
    SANITIZED "use-after-poison")

# --- mixed-radix index ------------------------------------------------------------------------------------------------
omtree_misuse(zero_base
    "digits are asked for over a base of 0"
    REPORTED "backend/tables/MultiBase: b>0")
omtree_misuse(too_few_digits
    "a number of fewer digits than bases"
    REPORTED "backend/tables/MultiBase: digit == end && i == size")
omtree_misuse(too_many_digits
    "a number of more digits than bases"
    REPORTED "backend/tables/MultiBase: digit == end && i == size")

# --- handles of list trees and documents ------------------------------------------------------------------------------
omtree_misuse(end_pruned
    "the end of a document is pruned"
    HARDENED "backend/tables/om/OmOutputTree: node.position != end")
omtree_misuse(end_erased
    "the end of a document is erased"
    HARDENED "backend/tables/om/OmOutputTree: node.position != end")
omtree_misuse(end_amputated
    "the end of a document is amputated"
    HARDENED "backend/tables/om/OmOutputTree: node.position != end")
omtree_misuse(end_pruned_in_a_list_tree
    "the end of a list tree is pruned"
    HARDENED "backend/tables/ListTree: node.position != end")
omtree_misuse(child_of_the_end_appended
    "a child is appended to the end of a list tree"
    HARDENED "backend/tables/ListTree: node.position != end")
omtree_misuse(end_asked_whether_it_is_a_leaf
    "the end of a list tree is asked whether it is a leaf"
    HARDENED "backend/tables/ListTree: node.position != end")
omtree_misuse(amputated_without_a_text
    "a heading below the root is amputated without a text"
    HARDENED "backend/tables/om/OmOutputTree: text != 0")
omtree_misuse(amputated_without_a_part
    "a node without a part to take the title from is amputated"
    HARDENED "backend/tables/om/OmOutputTree: part != 0")
omtree_misuse(node_of_another_list_tree_pruned
    "Prune is given a node of another list tree"
    HARDENED "backend/tables/ListTree: node._tree == this")
omtree_misuse(child_of_another_list_trees_node_appended
    "AppendChild is given a node of another list tree"
    HARDENED "backend/tables/ListTree: node._tree == this")
omtree_misuse(node_of_another_list_tree_flattened
    "Flatten is given a node of another list tree"
    HARDENED "backend/tables/ListTree: node._tree == this")
omtree_misuse(node_of_another_list_tree_erased
    "Erase is given a node of another list tree"
    HARDENED "backend/tables/ListTree: node._tree == this")
omtree_misuse(node_of_another_list_tree_asked_whether_it_is_a_leaf
    "IsLeaf is given a node of another list tree"
    HARDENED "backend/tables/ListTree: node._tree == this")
omtree_misuse(node_of_no_list_tree_pruned
    "Prune is given a node of no list tree"
    HARDENED "backend/tables/ListTree: node._tree == this")
omtree_misuse(node_of_another_document_pruned
    "a document prunes a node of another"
    HARDENED "backend/tables/om/OmOutputTree: node._tree == this")
omtree_misuse(node_of_another_document_erased
    "a document erases a node of another"
    HARDENED "backend/tables/om/OmOutputTree: node._tree == this")
omtree_misuse(node_of_no_document_amputated
    "a node of no document is amputated"
    HARDENED "backend/tables/om/OmOutputTree: node._tree != 0")
omtree_misuse(moved_before_a_node_of_another_tree
    "Move is given a target in another tree"
    REPORTED "backend/tables/ListTree: target._tree == this")
omtree_misuse(moved_up_to_the_end_of_another_tree
    "Move is given a run that ends in another tree"
    REPORTED "backend/tables/ListTree: begin._tree == end._tree")
omtree_misuse(moved_within_one_tree
    "Move is given a run of the tree itself"
    REPORTED "backend/tables/ListTree: target._tree != begin._tree")
omtree_misuse(moved_to_another_level
    "Move is given a run of another level"
    REPORTED "backend/tables/ListTree: begin.Level() == target.Level()")

# --- parts ------------------------------------------------------------------------------------------------------------
omtree_misuse(part_used_after_Prune
    "a part is read after its node was pruned"
    SANITIZED "heap-use-after-free")
omtree_misuse(part_used_after_Erase
    "a part is read after its node was erased"
    SANITIZED "heap-use-after-free")
omtree_misuse(part_used_after_Amputate
    "a part below an amputated heading is read"
    SANITIZED "heap-use-after-free")
omtree_misuse(part_used_after_the_document
    "a part is read after the document's end"
    SANITIZED "heap-use-after-free")
omtree_misuse(title_kept_after_its_replacement_by_the_outline_text
    "a procedure's title is read after setOutlineText"
    SANITIZED "heap-use-after-free")
omtree_misuse(handle_used_after_Prune
    "a handle below a pruned node"
    SANITIZED "heap-use-after-free")
omtree_misuse(node_pruned_twice
    "one node is pruned twice"
    SANITIZED "heap-use-after-free")
omtree_misuse(part_deleted_by_the_program_too
    "a part is deleted by program and document"
    SANITIZED "heap-use-after-free")
omtree_misuse(part_on_the_stack_appended
    "a part on the stack is given to a document"
    SANITIZED "attempting free on address which was not malloc()-ed")
omtree_misuse(part_in_two_documents
    "one part is given to two documents"
    SANITIZED "heap-use-after-free")
omtree_misuse(part_appended_twice
    "one part is given to a document twice"
    SANITIZED "heap-use-after-free")
omtree_misuse(document_and_its_copy_destroyed
    "a document and its copy are destroyed"
    SANITIZED "heap-use-after-free")
omtree_misuse(copied_heading_destroyed_too
    "a heading and its copy are destroyed"
    SANITIZED "heap-use-after-free")
omtree_misuse(copied_text_block_destroyed_too
    "a text block and its copy are destroyed"
    SANITIZED "heap-use-after-free")
omtree_misuse(copied_chart_destroyed_too
    "a chart and its copy are destroyed"
    SANITIZED "heap-use-after-free")
omtree_misuse(assigned_heading_drops_its_title
    "a heading is assigned to another, whose title is lost"
    SANITIZED "detected memory leaks")
omtree_misuse(parts_left_by_the_inherited_Prune
    "a list tree's Prune takes records of a document, whose parts are lost"
    SANITIZED "detected memory leaks")

# --- what must not be reported ----------------------------------------------------------------------------------------
omtree_misuse(well_handles_fetched_again
    "handles are fetched from the root after every change"
    WELL)
omtree_misuse(well_stale_handle_only_compared
    "a stale handle is copied, compared and asked for its depth"
    WELL)
omtree_misuse(well_deeper_handle_kept_while_the_level_above_grows
    "siblings are added to the parent of a node whose handle is kept"
    WELL)
omtree_misuse(well_foreign_handle_deletes_nothing
    "Delete is given a node of the dimension's copy"
    WELL)
omtree_misuse(well_counterpart_of_the_same_shape
    "Counterpart leads into the dimension's copy"
    WELL)
omtree_misuse(well_release_after_the_sweep
    "blocks are released, twice even, after WorkingRelease"
    WELL)
omtree_misuse(well_text_destroyed_after_the_sweep
    "a text that holds things elsewhere is deleted after WorkingRelease"
    WELL)
omtree_misuse(well_blocks_come_round_again
    "blocks of all kinds are released and taken again, the last byte written"
    WELL)
omtree_misuse(well_own_caption_of_our_kind_set_again
    "a caption of the library's kinds is set again"
    WELL)
omtree_misuse(well_iterator_stepped_at_the_end
    "an iterator that is over goes on"
    WELL)
omtree_misuse(well_headings_ended_in_order
    "headings are used and ended in order"
    WELL)
omtree_misuse(well_table_destroyed_before_its_headings
    "headings are destroyed after their table, unused"
    WELL)
omtree_misuse(well_end_flattened_and_erased_in_a_list_tree
    "the end of a list tree is flattened and erased"
    WELL)
omtree_misuse(well_copied_document_emptied_before_its_end
    "a document's copy gives up its records before its end"
    WELL)
omtree_misuse(well_records_moved_between_trees
    "a run is moved from one tree to another"
    WELL)
omtree_misuse(well_root_pruned
    "the root of a document is pruned"
    WELL)
