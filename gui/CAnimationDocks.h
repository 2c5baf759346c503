#pragma once
// The docks of animating in the main window: the spline bar along the bottom
// and the time control above it, each with its switch in the View menu.

class QMainWindow;

void AddAnimationDocks(QMainWindow& window);
