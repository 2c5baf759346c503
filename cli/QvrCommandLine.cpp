#include "QvrCommandLine.h"

#include "QvrCommand.h"

#include <cstdio>
#include <string>

namespace {

void printOverview(std::FILE* out) {
    std::fputs("usage: qvr [--version] [--help] COMMAND [ARGS]\n\n"
               "The headless face of qvrTessarine.\n\ncommands:\n",
               out);
    for (const QvrCommand* command : QvrCommand::All())
        std::fprintf(out, "  %-10s %s\n", command->Name, command->Summary);
    std::fputs("\nRun 'qvr COMMAND --help' for a command's options.\n", out);
}

bool asksForHelp(const QvrCommand::Arguments& arguments) {
    for (const std::string& argument : arguments)
        if (argument == "--help" || argument == "-h") return true;
    return false;
}

} // namespace

int QvrCommandLine::Run(int argc, char** argv) {
    if (argc < 2) {
        printOverview(stderr);
        return ExitUsage;
    }
    std::string name = argv[1];
    if (name == "--version") {
        std::printf("qvrTessarine %s\n", QVR_VERSION_TEXT);
        return ExitSuccess;
    }
    if (name == "--help" || name == "-h" || name == "help") {
        printOverview(stdout);
        return ExitSuccess;
    }
    const QvrCommand* command = QvrCommand::Find(name);
    if (!command) {
        std::fprintf(stderr, "qvr: unknown command \"%s\"\n\n", name.c_str());
        printOverview(stderr);
        return ExitUsage;
    }
    QvrCommand::Arguments arguments(argv + 2, argv + argc);
    if (asksForHelp(arguments)) {
        std::fputs(command->Help, stdout);
        return ExitSuccess;
    }
    return command->Run(arguments);
}
