#pragma once
// The icons of the element kinds, 33 by 33 pixels: a tile in the colour of
// the class (sources blue, modifiers green, savers red) with the first
// letters of the type. The project pane and the add bar draw the same.

#include <QIcon>
#include <QPainter>
#include <QString>

namespace CElementIcons {
constexpr int Size = 33;
// Paints the icon centred on `center`; a selected one gets a frame.
void Paint(QPainter& painter, const QString& className, const QString& type, QPoint center, bool selected);
QIcon Make(const QString& className, const QString& type);
} // namespace CElementIcons
