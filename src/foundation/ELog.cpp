#include "foundation/ELog.h"

#include "foundation/EEnvironment.h"
#include "foundation/EPrefsLog.h"
#include "foundation/qvrCException.h"
#include "foundation/qvrCTextFile.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>

namespace {

constexpr const char* Rule = "------------------------------------------------------------------";

std::string localTimeText() {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char buffer[128];
    size_t length = std::strftime(buffer, sizeof buffer, "%c", &local);
    return std::string(buffer, length);
}

} // namespace

ELog& ELog::Get() {
    static ELog instance;
    return instance;
}

ELog::Lock ELog::tryLock() {
    Lock lock(Guard, std::defer_lock);
    (void)lock.try_lock_for(std::chrono::milliseconds(LockTimeoutMs));
    return lock;
}

const char* ELog::LevelText(int level) {
    static constexpr const char* texts[] = {"Message", "Notice",  "Warning",
                                            "Error",   "Failure", "Disaster<unknown_level>"};
    return level >= LevelMessage && level <= LevelDisaster ? texts[level] : nullptr;
}

const char* ELog::VersionText() {
    return "qvrTessarine V" QVR_VERSION_TEXT;
}

std::string ELog::GetLogPath(bool& append) {
    std::filesystem::path file = EPrefsLog::GetLogFile(append);
    if (file.is_absolute()) return file.string();
    const std::string& programDir = EEnvironment::Get().CurrentDir;
    if (!programDir.empty()) return EEnvironment::PathPlusFile(programDir, file.string());
    // Before start-up has found the program directory, the working directory stands in.
    std::error_code error;
    return (std::filesystem::current_path(error) / file).string();
}

void ELog::GlobalOpen() {
    bool append = true;
    const std::string path = GetLogPath(append);
    Lock lock = Get().tryLock();
    if (!lock) {
        qvrTrace("*** ERROR[ELog::GlobalOpen()]: In use ???????????\n");
        return;
    }
    if (!append) std::remove(path.c_str());
    lock.unlock(); // the banner's write takes the preferences' lock, never both at once
    writeRaw(qvrFormat("\n\nqvrTessarine log file\n[%s]\n%s\nLogfile engine started at %s.\n\n",
                       VersionText(), Rule, localTimeText().c_str()));
}

void ELog::GlobalClose() {
    writeRaw(qvrFormat("\n%s\nLogfile engine stopped at %s.\n\n", Rule, localTimeText().c_str()));
}

std::string ELog::entryHead(std::string_view context, int level) {
    if (qvrEqualNoCase(context, LastContext)) return qvrFormat("\n    %s:", LevelText(level));
    LastContext = context;
    return qvrFormat("\n\n[%s]\n\n    %s:", LastContext.c_str(), LevelText(level));
}

void ELog::Log(int level, std::string_view context, std::string_view text) {
    if (level < EPrefsLog::GetLogLevel()) return;
    if (!LevelText(level) || text.empty()) return;
    std::string entry;
    {
        ELog& log = Get();
        Lock lock = log.tryLock();
        if (!lock) {
            qvrTrace("*** WARNING[ELog::Log()]: Locked ...\n");
            return;
        }
        entry = log.entryHead(context, level);
    }
    for (const std::string& line : qvrSplit(text, '\n')) {
        entry += "\n       ";
        entry += line;
    }
    entry += '\n';
    writeRaw(entry);
}

void ELog::writeRaw(const std::string& text) {
    if (EPrefsLog::HasErrorTxt()) return;
    bool append = true;
    const std::string path = GetLogPath(append);
    std::string failure;
    {
        Lock lock = Get().tryLock();
        if (!lock) {
            qvrTrace("*** WARNING[ELog::writeRaw()]: Log file is in use...\n");
            return;
        }
        try {
            qvrCDiskTextFile file(path, qvrCDiskTextFile::Mode::Append);
            file.WriteText(text);
            file.Close();
        } catch (const std::exception& error) {
            failure = qvrErrorText::FromException(error);
        }
    }
    if (failure.empty()) return;
    qvrTrace("*** WARNING[ELog::writeRaw()]: Failed to save log text to \"%s\": %s.\n", path.c_str(),
             failure.c_str());
    EPrefsLog::SetLastError(failure);
}
