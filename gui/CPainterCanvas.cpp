#include "CPainterCanvas.h"

#include "imaging/EImageData.h"

#include <cstring>

void CPainterCanvas::FillRect(const CRect& rect, std::uint32_t colour) {
    Painter.fillRect(ToQRect(rect), QColor::fromRgb(colour & 0xFFFFFFu));
}

void CPainterCanvas::DrawText(const CRect& rect, const std::string& text) {
    Painter.setPen(Qt::white);
    Painter.drawText(ToQRect(rect).adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap,
                     QString::fromStdString(text));
}

QImage CPainterCanvas::ToImage(const EImageData& picture) {
    const int width = int(picture.GetWidth());
    const int height = int(picture.GetHeight());
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        std::memcpy(image.scanLine(y), picture.GetRow(y), size_t(width) * 4);
    return image;
}

void CPainterCanvas::DrawPicture(const CRect& rect, const EImageData& picture) {
    const QRect target = ToQRect(rect);
    const QImage image = ToImage(picture);
    if (image.size() == target.size())
        Painter.drawImage(target.topLeft(), image);
    else
        Painter.drawImage(target, image);
}

void CPainterCanvas::DrawOutline(const CRect& rect) {
    Painter.setPen(QPen(QColor(255, 220, 40), 1));
    Painter.setBrush(Qt::NoBrush);
    Painter.drawRect(ToQRect(rect).adjusted(0, 0, -1, -1));
}
