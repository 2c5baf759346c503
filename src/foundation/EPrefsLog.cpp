#include "foundation/EPrefsLog.h"

#include "foundation/qvrTrace.h"

#include <algorithm>

EPrefsLog::EPrefsLog() : EPrefsSection("Log file") {
    AddText("File", &File, DefaultFile);
    AddBool("Append", &Append, DefaultAppend);
    AddLong("Level", &Level, DefaultLevel, 0, MaxLevel);
}

EPrefsLog& EPrefsLog::Get() {
    static EPrefsLog instance;
    return instance;
}

namespace {
[[maybe_unused]] EPrefsLog& logSection = EPrefsLog::Get();
}

void EPrefsLog::LoadExtra(qvrCTreeData&, hReport& report) {
    if (File.empty()) {
        report.Report("NO log file provided - using standard log file.", hReportWarning);
        File = DefaultFile;
    }
    LastError.clear();
}

std::string EPrefsLog::GetLogFile(bool& append) {
    EPrefsLog& prefs = Get();
    Lock lock = prefs.TryLock();
    if (!lock) {
        qvrTrace("*** WARNING[EPrefsLog::GetLogFile()]: Resource locked - returning defaults.\n");
        append = DefaultAppend;
        return DefaultFile;
    }
    append = prefs.Append;
    return prefs.File;
}

long EPrefsLog::GetLogLevel() {
    EPrefsLog& prefs = Get();
    Lock lock = prefs.TryLock();
    if (!lock) {
        qvrTrace("*** WARNING[EPrefsLog::GetLogLevel()]: Resource locked - returning defaults.\n");
        return DefaultLevel;
    }
    return prefs.Level;
}

void EPrefsLog::SetLastError(const std::string& text) {
    EPrefsLog& prefs = Get();
    Lock lock = prefs.TryLock();
    if (!lock) {
        qvrTrace("*** WARNING[EPrefsLog::SetLastError()]: Resource locked - doing nothing.\n");
        return;
    }
    prefs.LastError = text;
}

bool EPrefsLog::HasErrorTxt() {
    EPrefsLog& prefs = Get();
    Lock lock = prefs.TryLock();
    if (!lock) {
        qvrTrace("*** WARNING[EPrefsLog::HasErrorTxt()]: Resource locked - returning false.\n");
        return false;
    }
    return !prefs.LastError.empty();
}

std::string EPrefsLog::GetLastError() {
    EPrefsLog& prefs = Get();
    Lock lock = prefs.TryLock();
    return lock ? prefs.LastError : std::string();
}

void EPrefsLog::StoreSettings(const std::string& file, bool append, long level) {
    EPrefsLog& prefs = Get();
    Lock lock = prefs.TryLock();
    if (!lock) return;
    prefs.File = file.empty() ? DefaultFile : file;
    prefs.Append = append;
    prefs.Level = std::clamp(level, 0L, MaxLevel);
    prefs.LastError.clear();
}
