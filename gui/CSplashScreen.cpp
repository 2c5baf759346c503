#include "CSplashScreen.h"

#include <QApplication>
#include <QLinearGradient>
#include <QPainter>

namespace {

QPixmap splashPicture() {
    QPixmap pixmap(420, 200);
    QPainter painter(&pixmap);
    QLinearGradient gradient(0, 0, 420, 200);
    gradient.setColorAt(0, QColor(30, 40, 70));
    gradient.setColorAt(1, QColor(70, 30, 60));
    painter.fillRect(pixmap.rect(), gradient);
    QFont font = painter.font();
    font.setPixelSize(34);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QRect(0, 40, 420, 60), Qt::AlignCenter, "qvrTessarine");
    font.setPixelSize(13);
    font.setBold(false);
    painter.setFont(font);
    painter.drawText(QRect(0, 100, 420, 30), Qt::AlignCenter, "nevora works");
    return pixmap;
}

} // namespace

CSplashScreen::CSplashScreen() : Splash(splashPicture()) {
    Splash.show();
    QApplication::processEvents();
}

void CSplashScreen::SetStatus(const std::string& text, unsigned) {
    Splash.showMessage(QString::fromStdString(text), Qt::AlignBottom | Qt::AlignHCenter, Qt::white);
    QApplication::processEvents();
}
