#include "batch/EFarmSlurm.h"

#include "foundation/qvrString.h"

#include <cstdio>
#include <sstream>
#include <sys/wait.h>

namespace {

// Runs a shell command line; its exit status, with standard output and error in `output`.
int runCommand(const std::string& commandLine, std::string& output) {
    output.clear();
    std::FILE* pipe = ::popen(("(" + commandLine + ") 2>&1").c_str(), "r");
    if (!pipe) return -1;
    char buffer[4096];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        output.append(buffer, got);
    const int status = ::pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string trimmed(const std::string& text) {
    return std::string(qvrTrim(text));
}

} // namespace

std::string EFarmSlurm::Quoted(const std::string& text) {
    std::string result = "'";
    for (char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::string EFarmSlurm::SubmitCommand(const std::vector<std::string>& options, const std::string& script) {
    std::string line = "sbatch --parsable";
    for (const std::string& option : options)
        line += " " + Quoted(option);
    return line + " " + Quoted(script);
}

bool EFarmSlurm::Submit(const std::vector<std::string>& options, const std::string& script,
                        std::string& jobId, std::string& error) {
    std::string output;
    const int status = runCommand(SubmitCommand(options, script), output);
    output = trimmed(output);
    // "--parsable" prints "<job>" or "<job>;<cluster>".
    const std::string id = output.substr(0, output.find(';'));
    long number = 0;
    if (status == 0 && qvrParseLong(id, number)) {
        jobId = id;
        return true;
    }
    error = output.empty() ? qvrFormat("sbatch ended with status %d", status) : output;
    return false;
}

bool EFarmSlurm::Queue(std::map<std::string, std::string>& states, std::string& error) {
    std::string output;
    const int status = runCommand("squeue --noheader --array --format='%i %T'", output);
    if (status != 0) {
        error = output.empty() ? qvrFormat("squeue ended with status %d", status) : trimmed(output);
        return false;
    }
    std::istringstream lines(output);
    std::string id;
    std::string state;
    while (lines >> id >> state)
        states[id] = state;
    return true;
}
