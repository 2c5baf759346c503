#pragma once
// The program as a client of a Slurm cluster: it runs the cluster's own
// commands (sbatch, squeue) for the cluster that the environment names
// (SLURM_CONF, as for every Slurm client). No daemon of ours is involved.
// Failures come back with the command's own error text.

#include <map>
#include <string>
#include <vector>

namespace EFarmSlurm {
// Submits a batch script with the options; the job's id, or false with Slurm's error.
bool Submit(const std::vector<std::string>& options, const std::string& script, std::string& jobId,
            std::string& error);
// Every queued job and array task of the cluster by id ("<job>" or "<array>_<index>") with its state.
bool Queue(std::map<std::string, std::string>& states, std::string& error);
// A word for the shell, in single quotes.
std::string Quoted(const std::string& text);
// The command line of a submission, as the shell would take it.
std::string SubmitCommand(const std::vector<std::string>& options, const std::string& script);
} // namespace EFarmSlurm
