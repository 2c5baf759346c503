#pragma once
// The modifier keys held during a mouse event or a drag, as the views take
// them from the front end.

enum CModifierKeys : unsigned {
    key_none = 0,
    key_shift = 1,
    key_control = 2,
    key_alt = 4,
};
