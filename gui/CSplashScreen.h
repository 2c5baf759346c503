#pragma once
// The splash window of start-up: the program's name and the status text of
// each component as it starts. Qt keeps it on the main thread, which is
// where the components start; each text is shown at once, without a pause.

#include "app/EInitializer.h"

#include <QSplashScreen>

class CSplashScreen : public EInitializerStatus {
public:
    CSplashScreen();
    void SetStatus(const std::string& text, unsigned steps) override;
    void Close(QWidget* mainWindow) { Splash.finish(mainWindow); }

private:
    QSplashScreen Splash;
};
