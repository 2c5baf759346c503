#pragma once
// Qt's modifier keys as the views take them.

#include "views/CModifierKeys.h"

#include <QPoint>
#include <Qt>

#include "foundation/qvrGeometry.h"

inline unsigned ToModifierKeys(Qt::KeyboardModifiers modifiers) {
    unsigned keys = key_none;
    if (modifiers & Qt::ShiftModifier) keys |= key_shift;
    if (modifiers & Qt::ControlModifier) keys |= key_control;
    if (modifiers & Qt::AltModifier) keys |= key_alt;
    return keys;
}

inline CPoint ToCPoint(QPoint point) {
    return {point.x(), point.y()};
}
