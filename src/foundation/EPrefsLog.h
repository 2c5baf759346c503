#pragma once
// "Log file" of the preferences: the log file's name, whether an old log is
// kept at start, the lowest level written, and the text of the last failed
// write (kept in memory only). While that text is set the log stays silent;
// storing the settings again clears it. Safe from any thread: every accessor
// takes the section's lock with a time-out and falls back to the defaults.

#include "foundation/EPrefs.h"

#include <array>

class EPrefsLog : public EPrefsSection {
public:
    static constexpr const char* DefaultFile = "qvrTessarine.log";
    static constexpr bool DefaultAppend = true;
    static constexpr long DefaultLevel = 1;
    static constexpr long MaxLevel = 5;
    // The names of the threshold levels 0 to 4 as the preferences dialog offers them.
    static constexpr std::array<const char*, 5> LevelChoiceNames = {
        "All messages", "Notices and worse", "Warnings and worse", "Errors and worse", "Failures and worse"};

    EPrefsLog();
    static EPrefsLog& Get();

    // The file name as configured (relative names are meant below the program directory).
    static std::string GetLogFile(bool& append);
    static long GetLogLevel();
    // Remembers why the log failed; the log writes nothing more until the settings are stored.
    static void SetLastError(const std::string& text);
    static bool HasErrorTxt();
    static std::string GetLastError();
    // Takes new settings from the preferences dialog and lets a failed log try again.
    static void StoreSettings(const std::string& file, bool append, long level);

protected:
    void LoadExtra(qvrCTreeData& block, hReport& report) override;
    void ResetExtra() override { LastError.clear(); }

private:
    std::string File;
    bool Append = DefaultAppend;
    long Level = DefaultLevel;
    std::string LastError;
};
