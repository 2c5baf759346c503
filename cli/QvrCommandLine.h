#pragma once
// The `qvr` program: parses the subcommand and runs it headless. Exit status 0
// for success, 1 for a run that finished with failures, 2 for bad usage.

namespace QvrCommandLine {
int Run(int argc, char** argv);
}
