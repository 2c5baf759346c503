#pragma once
// What the desktop program's command line asks for: a project file to open,
// or to run embedded or automated, which shows no window and reads no
// preferences. The switches may start with "/" or "-"; other words starting with "-"
// are ignored, and any other word is the file.

#include <string>
#include <vector>

class CCommandLineInfo {
public:
    enum class Command { FileNew, FileOpen };

    static CCommandLineInfo Parse(const std::vector<std::string>& arguments);

    Command ShellCommand = Command::FileNew;
    std::string FileName;
    bool RunEmbedded = false;
    bool RunAutomated = false;
};
