#include "CElementIcons.h"

#include <QPixmap>

namespace {

QColor classColour(const QString& className) {
    if (className == "Loader") return {52, 110, 200};
    if (className == "Modifier") return {46, 150, 80};
    if (className == "Saver") return {190, 60, 50};
    return {120, 120, 120};
}

// "Composer" gives "Co", "Matrix filter" gives "MF".
QString abbreviation(const QString& type) {
    const QStringList words = type.split(' ', Qt::SkipEmptyParts);
    if (words.size() > 1) return QString(words[0][0]).toUpper() + QString(words[1][0]).toUpper();
    return type.left(2);
}

} // namespace

void CElementIcons::Paint(QPainter& painter, const QString& className, const QString& type, QPoint center,
                          bool selected) {
    const QRect tile(center.x() - Size / 2, center.y() - Size / 2, Size, Size);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(selected ? QColor(255, 220, 40) : QColor(20, 20, 20), selected ? 3 : 1));
    painter.setBrush(classColour(className));
    painter.drawRoundedRect(tile, 6, 6);
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(13);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(tile, Qt::AlignCenter, abbreviation(type));
    painter.restore();
}

QIcon CElementIcons::Make(const QString& className, const QString& type) {
    QPixmap pixmap(Size + 2, Size + 2);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    Paint(painter, className, type, {(Size + 2) / 2, (Size + 2) / 2}, false);
    return QIcon(pixmap);
}
