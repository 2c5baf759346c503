#pragma once
// Runs the qvr program for a whole-run test, with a scratch directory as its
// program directory, and collects its exit code and everything it printed.

#include <cstdio>
#include <string>
#include <sys/wait.h>

struct QvrRunResult {
    int ExitCode = -1;
    std::string Output;
};

// Runs a shell command line; its standard error joins the output.
inline QvrRunResult RunShell(const std::string& commandLine) {
    const std::string command = "(" + commandLine + ") 2>&1";
    QvrRunResult result;
    std::FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return result;
    char buffer[4096];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        result.Output.append(buffer, got);
    const int status = ::pclose(pipe);
    result.ExitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

inline QvrRunResult RunQvr(const std::string& home, const std::string& arguments) {
    return RunShell("QVR_HOME='" + home + "' '" QVR_PROGRAM "' " + arguments);
}
