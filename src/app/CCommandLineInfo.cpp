#include "app/CCommandLineInfo.h"

#include "foundation/qvrString.h"

#include <filesystem>

CCommandLineInfo CCommandLineInfo::Parse(const std::vector<std::string>& arguments) {
    CCommandLineInfo info;
    for (const std::string& argument : arguments) {
        if (argument.empty()) continue;
        std::string_view name = std::string_view(argument).substr(1);
        bool switchMark = argument[0] == '/' || argument[0] == '-';
        if (switchMark && qvrEqualNoCase(name, "Embedding")) {
            info.RunEmbedded = true;
            continue;
        }
        if (switchMark && qvrEqualNoCase(name, "Automation")) {
            info.RunAutomated = true;
            continue;
        }
        if (argument[0] == '-') continue; // a switch this program doesn't know
        // The program changes its working directory later, so a file is made absolute now.
        std::error_code error;
        std::filesystem::path absolute = std::filesystem::absolute(argument, error);
        info.FileName = error ? argument : absolute.string();
        info.ShellCommand = Command::FileOpen;
    }
    return info;
}
