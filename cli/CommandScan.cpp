// qvr scan DIR [PATTERN]: the numbered file sequences in a directory.

#include "QvrCommand.h"
#include "QvrSession.h"

#include "imaging/EFileGroup.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr const char* Help = "usage: qvr scan DIR [PATTERN]\n\n"
                             "Prints the numbered file sequences found among the files of DIR that match\n"
                             "PATTERN (a shell wildcard, matched without regard to case; default \"*\").\n"
                             "One line per sequence, five fields separated by tabs:\n"
                             "  head  tail  digits  first  last\n"
                             "head is the text in front of the number, tail the text behind it with the\n"
                             "extension, digits the zero-padded width (0 when the names aren't padded).\n"
                             "A tab, newline, carriage return or backslash inside a name is written as\n"
                             "\\t, \\n, \\r or \\\\.\n"
                             "Exit 2 when the directory can't be read.\n";

// Keeps a field on its line whatever the file name holds.
std::string escapeField(const std::string& text) {
    std::string escaped;
    for (char c : text) {
        switch (c) {
        case '\\':
            escaped += "\\\\";
            break;
        case '\t':
            escaped += "\\t";
            break;
        case '\n':
            escaped += "\\n";
            break;
        case '\r':
            escaped += "\\r";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

class PrintingScanner : public EFileGroupScanner {
protected:
    bool OnGroupFound(const EFileGroup& group) override {
        std::printf("%s\t%s\t%u\t%u\t%u\n", escapeField(group.Head).c_str(), escapeField(group.Tail).c_str(),
                    group.NumLen, group.Min, group.Max);
        return true;
    }
};

int usage(const char* problem, const std::string& argument) {
    std::fprintf(stderr, "qvr scan: %s \"%s\"\n%s", problem, argument.c_str(), Help);
    return ExitUsage;
}

int runScan(const QvrCommand::Arguments& arguments) {
    std::vector<std::string> operands;
    for (const std::string& argument : arguments) {
        if (argument.rfind("--", 0) == 0) return usage("unknown option", argument);
        if (operands.size() == 2) return usage("unexpected argument", argument);
        operands.push_back(argument);
    }
    if (operands.empty()) {
        std::fputs(Help, stderr);
        return ExitUsage;
    }
    std::string directory = QvrSession::Absolute(operands[0]);
    std::string pattern = operands.size() > 1 ? operands[1] : "*";
    QvrSession session;
    if (!session.Started()) return ExitUsage;
    PrintingScanner scanner;
    std::string reason;
    if (!scanner.ScanDirectory(directory + "/" + pattern, reason)) {
        std::fprintf(stderr, "qvr scan: %s: %s\n", directory.c_str(), reason.c_str());
        return ExitUsage;
    }
    return ExitSuccess;
}

QvrCommand scan("scan", "print the numbered file sequences in a directory", Help, runScan);

} // namespace
