#pragma once
// The project view's three drag modes and how the modifier keys turn a drag
// into a move, a link or a copy. A mode says what a plain drag means; the
// keys named in its help line choose the other two. Pure functions.

#include "views/CModifierKeys.h"

#include <string>

enum class CDragMode { Move, Link, Copy };

// What one drag does, after the mode and the keys have been weighed.
enum class CDragGesture { Move, Link, Copy };

namespace CDragModes {
// Move mode: CTRL+SHIFT links, CTRL copies. Link mode: ALT moves, CTRL copies.
// Copy mode: ALT moves, CTRL+SHIFT links.
CDragGesture GestureFor(CDragMode mode, unsigned keys);
// The help line of the mode's command, with the status text after the line break.
std::string HelpLine(CDragMode mode);
// The mode of a command key ('M', 'L' or 'C', either case); false for any other key.
bool ModeForKey(char key, CDragMode& mode);
} // namespace CDragModes

// What a drop target tells the drag source about a drop at the pointer.
enum class CDropEffect { None, Move, Link, Copy };
