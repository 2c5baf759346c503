#pragma once
// The editing rules of the rendering page that every saver's setup dialog
// shares, apart from the window: the hint beside the frame range, the line
// that tells the range's length and running time, the log file's browser and
// the checks before the page is left. The page edits a copy of the saver's
// render settings and gives it back when it may be left. Main thread only.

#include "output/iSaverSetup.h"

#include <string>

class iSaver;

class hSaverRenderingPage {
public:
    explicit hSaverRenderingPage(iSaver& saver);

    // The hint for the range as typed: the number of frames, or what is wrong.
    static std::string GetRangeHint(const std::string& first, const std::string& last,
                                    const std::string& step);
    // " Frames: <count>, Time: hh:mm:ss" for the settings' range and rate.
    std::string GetRangeLine() const;
    // Lets the user choose the log file ("rlog"); false when cancelled.
    bool BrowseLogFile();
    // Checks the settings and gives them to the saver. A log without a name
    // asks whether logging should go: yes turns it off, no keeps the page.
    bool Leave();

    iSaverSetup Setup;

private:
    iSaver& Saver;
};
