#pragma once
// The string-table ids of the project view's and the object views' texts.

#include "foundation/EStringTable.h"

enum CViewText : EStringId {
    // Project view.
    text_help_move_mode = 53100,
    text_help_link_mode = 53101,
    text_help_copy_mode = 53102,
    text_add_object_over = 53103,
    text_new_object_name = 53104,
    text_object_added = 53105,
    text_zoomed_in = 53106,  // "%.2fx%.2f"
    text_zoomed_out = 53107, // "%.2fx%.2f"
    text_zoom_reset = 53108, // "%.2fx%.2f"
    text_select_for_group = 53109,
    text_group_name = 53110, // "%ld"
    text_delete_link = 53111,
    text_select_for_cut = 53112,
    text_objects_copied = 53113,
    text_trash_tip = 53114,
    text_own_data_marker = 53115,
    text_add_to_group_over = 53116, // "%s" group
    text_link_refused = 53117,      // "%1" dragged, "%2" target
    text_link_replaces = 53118,
    text_link_adds = 53119,
    text_link_exists = 53120,
    text_link_loops = 53121,
    text_reposition_over = 53122,
    text_cancelled = 53123,
    text_added_to_group = 53124, // "%s" group
    text_objects_moved = 53125,
    text_link_done = 53126, // "%1" dragged, "%2" target
    text_rename_group_title = 53130,
    text_rename_group_prompt = 53131, // "%s" group
    text_new_group_prompt = 53132,
    text_group_name_taken = 53133,
    // Object views.
    text_view_not_created = 53200, // "%s" name, "%s" type
    text_no_element = 53201,
    text_frame_title = 53202,            // "%s" document, "%s" name, "%s" type, "%ld" frame
    text_frame_title_with_state = 53203, // as above, then "%s" state
    text_empty_frame_title = 53204,
    text_zoom_status = 53205, // "%.2f" percent
    text_size_status = 53206, // "%ldx%ld"
    text_drag_hint = 53207,
    text_select_object = 53208,
    text_displaying = 53209,
    text_no_image = 53210,
    text_access_conflict = 53211,
    text_layer_status = 53212,
    text_layer_select_status = 53213,
    text_point_status = 53214,
    text_layer_line = 53215,
    text_no_layer_selected = 53216,
    text_select_layer = 53217,
};
