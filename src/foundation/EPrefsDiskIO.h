#pragma once
// "Disk I/O" of the preferences: autosave file and interval, backups kept
// beside each saved database file. Safe from any thread.

#include "foundation/EPrefs.h"

class EPrefsDiskIO : public EPrefsSection {
public:
    static constexpr long DefaultAutoSaveIntv = 10;
    static constexpr long DefaultBackupCnt = 2;
    static constexpr const char* DefaultAutoSaveFile = "autosave.tsp";

    EPrefsDiskIO();
    static EPrefsDiskIO& Get();

    static long GetBackupCnt();
    // Copies the autosave settings; false (defaults given) when the lock can't be had.
    static bool GetAutoSave(std::string& file, long& intervalMinutes, int timeoutMs = LockTimeoutMs);
    static void SetAutoSave(const std::string& file, long intervalMinutes);
    static void SetBackupCnt(long count);

private:
    std::string AutoSaveFile;
    long AutoSaveIntv = DefaultAutoSaveIntv;
    long BackupCnt = DefaultBackupCnt;
};
