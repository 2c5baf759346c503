#pragma once
// The user's log file. Entries carry a level and a context; entries of the
// same context follow each other under one heading. Every entry is a full
// open, append and close of the file, so a crash loses nothing logged. A
// failed write disables the log until its settings are stored again.
// Safe from any thread: the log's lock is taken with a time-out of 1000 ms and
// a line that can't get it is lost rather than blocking the caller. Logging
// never fails from the caller's point of view.

#include <mutex>
#include <string>
#include <string_view>

class ELog {
public:
    enum Level : int {
        LevelMessage = 0,
        LevelNotice = 1,
        LevelWarning = 2,
        LevelError = 3,
        LevelFailure = 4,
        LevelDisaster = 5
    };
    static constexpr int LockTimeoutMs = 1000;

    // Writes the start banner; without `Append` the old file goes first.
    static void GlobalOpen();
    // Writes the end line.
    static void GlobalClose();

    static void Log(int level, std::string_view context, std::string_view text);
    static void Message(std::string_view text, std::string_view context) { Log(LevelMessage, context, text); }
    static void Notice(std::string_view text, std::string_view context) { Log(LevelNotice, context, text); }
    static void Warning(std::string_view text, std::string_view context) { Log(LevelWarning, context, text); }
    static void Error(std::string_view text, std::string_view context) { Log(LevelError, context, text); }
    static void Failure(std::string_view text, std::string_view context) { Log(LevelFailure, context, text); }

    // The text of a level, 0 for a number outside 0 to 5.
    static const char* LevelText(int level);
    // The version text of the banner.
    static const char* VersionText();
    // Where the log goes: the configured name, a relative one below the program directory.
    static std::string GetLogPath(bool& append);

private:
    using Lock = std::unique_lock<std::recursive_timed_mutex>;
    static ELog& Get();
    Lock tryLock();
    std::string entryHead(std::string_view context, int level);
    static void writeRaw(const std::string& text);

    std::recursive_timed_mutex Guard;
    std::string LastContext;
};
