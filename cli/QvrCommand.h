#pragma once
// One subcommand of `qvr`: its name, a line for the overview, its help text
// and what it runs. Each command lives in a file of its own and registers
// itself with a static QvrCommand object.

#include <string>
#include <vector>

class QvrCommand {
public:
    using Arguments = std::vector<std::string>;
    using Runner = int (*)(const Arguments& arguments);

    QvrCommand(const char* name, const char* summary, const char* help, Runner run);

    static const QvrCommand* Find(const std::string& name);
    static std::vector<const QvrCommand*> All();

    const char* Name;
    const char* Summary;
    const char* Help;
    Runner Run;
};

// Exit codes of every command.
enum QvrExit : int { ExitSuccess = 0, ExitFailures = 1, ExitUsage = 2 };
