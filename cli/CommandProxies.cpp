// qvr proxies info|filter|empty: the proxy settings and the proxy directory.

#include "QvrCommand.h"
#include "QvrSession.h"

#include "imaging/EImageStorage.h"

#include <cstdio>
#include <string>

namespace {

constexpr const char* Help =
    "usage: qvr proxies info|filter|empty\n\n"
    "  info    prints the proxy settings (one per line, the registry name and the\n"
    "          value separated by a tab) and what the proxy directory holds:\n"
    "          \"Files\", \"Bytes used\" and \"Bytes free\"\n"
    "  filter  deletes the proxies that the clean-up rules of the settings name\n"
    "  empty   deletes every proxy\n\n"
    "The settings are those of the program directory; this command never changes them.\n"
    "Exit 1 when the directory could not be read or not every file could be deleted.\n";

int printInfo() {
    for (const auto& [name, text] : EImageStorage::Get().GetSettings().GetEntries())
        std::printf("%s\t%s\n", name.c_str(), text.c_str());
    EProxyDirectoryUsage usage;
    const bool complete = EImageStorage::Get().QueryProxyDirSize(usage);
    std::printf("Files\t%ld\nBytes used\t%llu\nBytes free\t%llu\n", usage.fileCount,
                static_cast<unsigned long long>(usage.bytes),
                static_cast<unsigned long long>(usage.freeBytes));
    if (!complete) std::fprintf(stderr, "qvr proxies: the proxy directory could not be read completely\n");
    return complete ? ExitSuccess : ExitFailures;
}

int report(bool done, const char* what) {
    if (done) return ExitSuccess;
    std::fprintf(stderr, "qvr proxies: %s: not every proxy file could be deleted (see the log file)\n", what);
    return ExitFailures;
}

int runProxies(const QvrCommand::Arguments& arguments) {
    if (arguments.size() != 1) {
        std::fputs(Help, stderr);
        return ExitUsage;
    }
    const std::string& action = arguments[0];
    if (action != "info" && action != "filter" && action != "empty") {
        std::fprintf(stderr, "qvr proxies: unknown subcommand \"%s\"\n%s", action.c_str(), Help);
        return ExitUsage;
    }
    QvrSession session;
    if (!session.Started()) return ExitUsage;
    EImageStorage& storage = EImageStorage::Get();
    if (action == "filter") return report(storage.FilterProxyDir(EProxyConfirmation::No), "filter");
    if (action == "empty") return report(storage.EmptyProxyDir(EProxyConfirmation::No), "empty");
    return printInfo();
}

QvrCommand proxies("proxies", "show the proxy settings and clean up the proxy directory", Help, runProxies);

} // namespace
