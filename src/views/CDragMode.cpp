#include "views/CDragMode.h"

#include "views/CViewText.h"

namespace {

bool holds(unsigned keys, unsigned wanted) {
    return (keys & wanted) == wanted;
}

} // namespace

CDragGesture CDragModes::GestureFor(CDragMode mode, unsigned keys) {
    const bool controlShift = holds(keys, key_control | key_shift);
    switch (mode) {
    case CDragMode::Move:
        if (controlShift) return CDragGesture::Link;
        return holds(keys, key_control) ? CDragGesture::Copy : CDragGesture::Move;
    case CDragMode::Link:
        if (holds(keys, key_alt)) return CDragGesture::Move;
        return holds(keys, key_control) ? CDragGesture::Copy : CDragGesture::Link;
    case CDragMode::Copy:
        if (holds(keys, key_alt)) return CDragGesture::Move;
        return controlShift ? CDragGesture::Link : CDragGesture::Copy;
    }
    return CDragGesture::Move;
}

std::string CDragModes::HelpLine(CDragMode mode) {
    switch (mode) {
    case CDragMode::Link:
        return EStringTable::Load(text_help_link_mode);
    case CDragMode::Copy:
        return EStringTable::Load(text_help_copy_mode);
    case CDragMode::Move:
        break;
    }
    return EStringTable::Load(text_help_move_mode);
}

bool CDragModes::ModeForKey(char key, CDragMode& mode) {
    switch (key) {
    case 'M':
    case 'm':
        mode = CDragMode::Move;
        return true;
    case 'L':
    case 'l':
        mode = CDragMode::Link;
        return true;
    case 'C':
    case 'c':
        mode = CDragMode::Copy;
        return true;
    default:
        return false;
    }
}
