#include "foundation/EPrefsDiskIO.h"

EPrefsDiskIO::EPrefsDiskIO() : EPrefsSection("Disk I/O") {
    AddText("AutoSaveFile", &AutoSaveFile, DefaultAutoSaveFile);
    AddLong("AutoSaveIntv", &AutoSaveIntv, DefaultAutoSaveIntv, 0);
    AddLong("BackupCnt", &BackupCnt, DefaultBackupCnt);
}

EPrefsDiskIO& EPrefsDiskIO::Get() {
    static EPrefsDiskIO instance;
    return instance;
}

namespace {
[[maybe_unused]] EPrefsDiskIO& diskIOSection = EPrefsDiskIO::Get();
}

long EPrefsDiskIO::GetBackupCnt() {
    EPrefsDiskIO& prefs = Get();
    Lock lock = prefs.TryLock();
    return lock ? prefs.BackupCnt : DefaultBackupCnt;
}

bool EPrefsDiskIO::GetAutoSave(std::string& file, long& intervalMinutes, int timeoutMs) {
    EPrefsDiskIO& prefs = Get();
    Lock lock = prefs.TryLock(timeoutMs);
    if (!lock) {
        file = DefaultAutoSaveFile;
        intervalMinutes = DefaultAutoSaveIntv;
        return false;
    }
    file = prefs.AutoSaveFile;
    intervalMinutes = prefs.AutoSaveIntv;
    return true;
}

void EPrefsDiskIO::SetAutoSave(const std::string& file, long intervalMinutes) {
    EPrefsDiskIO& prefs = Get();
    Lock lock = prefs.TryLock();
    if (!lock) return;
    prefs.AutoSaveFile = file;
    prefs.AutoSaveIntv = intervalMinutes;
}

void EPrefsDiskIO::SetBackupCnt(long count) {
    EPrefsDiskIO& prefs = Get();
    Lock lock = prefs.TryLock();
    if (lock) prefs.BackupCnt = count;
}
