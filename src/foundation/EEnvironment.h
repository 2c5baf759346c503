#pragma once
// The program's directories and the machine's user, and helpers for paths.
// Gather() fills the values once during start-up on the main thread; after
// that they are only read, which is safe from any thread. Every value is kept
// without a trailing separator. The path helpers are safe from any thread and
// report failures by result: no exception leaves them.

#include <string>

class EEnvironment {
public:
    // The program's one environment.
    static EEnvironment& Get();

    // Reads the values and creates the program directory: $QVR_HOME, else
    // $XDG_DATA_HOME/qvrTessarine, else ~/.local/share/qvrTessarine. False when
    // that directory could not be created.
    bool Gather();

    std::string CurrentDir; // the program directory, where its own files live
    std::string WindowsDir;
    std::string SystemDir;
    std::string TempDir;
    std::string ComputerName;
    std::string UserName;

    // Joins a directory and a file name; an absolute file name stands as it is.
    static std::string PathPlusFile(const std::string& path, const std::string& file);
    // Creates every missing directory of `path`; true when it exists afterwards.
    static bool EnsureDirectoryPath(const std::string& path);
    // Tests that the file can be written. A file that was not there before is
    // created and deleted again; an existing one is left as it is.
    static bool EnsureFileCreation(const std::string& path);
    // Removes a directory with all its contents; a missing one counts as removed.
    static bool RemoveDir(const std::string& path);
};
