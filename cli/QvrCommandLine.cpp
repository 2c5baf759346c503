#include "QvrCommandLine.h"

#include <cstdio>
#include <string>

namespace {

constexpr const char* UsageText = "usage: qvr [--version] [--help] COMMAND [ARGS]\n"
                                  "\n"
                                  "The headless face of qvrTessarine.\n"
                                  "\n"
                                  "options:\n"
                                  "  --version   print the program's name and version\n"
                                  "  --help      print this text\n";

} // namespace

int QvrCommandLine::Run(int argc, char** argv) {
    if (argc < 2) {
        std::fputs(UsageText, stderr);
        return 2;
    }
    std::string command = argv[1];
    if (command == "--version") {
        std::printf("qvrTessarine %s\n", QVR_VERSION_TEXT);
        return 0;
    }
    if (command == "--help" || command == "-h") {
        std::fputs(UsageText, stdout);
        return 0;
    }
    std::fprintf(stderr, "qvr: unknown command \"%s\"\n\n%s", command.c_str(), UsageText);
    return 2;
}
