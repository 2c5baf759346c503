#pragma once
// The docks of animating in the main window: the spline bar along the bottom
// and the time control above it, each with its switch in the View menu. They
// start hidden until the user shows them; the window's kept state remembers.

class QMainWindow;

void AddAnimationDocks(QMainWindow& window);
