#include "QvrCommand.h"

#include <algorithm>
#include <cstring>

namespace {
std::vector<const QvrCommand*>& registry() {
    static std::vector<const QvrCommand*> commands;
    return commands;
}
} // namespace

QvrCommand::QvrCommand(const char* name, const char* summary, const char* help, Runner run)
    : Name(name), Summary(summary), Help(help), Run(run) {
    registry().push_back(this);
}

const QvrCommand* QvrCommand::Find(const std::string& name) {
    for (const QvrCommand* command : registry())
        if (name == command->Name) return command;
    return nullptr;
}

std::vector<const QvrCommand*> QvrCommand::All() {
    std::vector<const QvrCommand*> commands = registry();
    std::sort(commands.begin(), commands.end(),
              [](const QvrCommand* a, const QvrCommand* b) { return std::strcmp(a->Name, b->Name) < 0; });
    return commands;
}
