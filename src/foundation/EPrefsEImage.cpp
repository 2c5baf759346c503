#include "foundation/EPrefsEImage.h"

#include "foundation/qvrTrace.h"

EPrefsEImage::EPrefsEImage() : EPrefsSection("Imaging") {
    AddBool("MemoryControl", &MemoryControl, DefaultMemoryControl);
    AddLong("MemCtrl/MinFreeMem(MB)", &MinFreeMem, DefaultMinFreeMem, 0, UINT32_MAX);
    AddBool("MemCtrl/PhysicalOnly", &PhysicalOnly, DefaultPhysicalOnly);
    AddBool("CacheData", &CacheData, DefaultCacheData);
    AddBool("Cache/UseDisk", &UseDisk, DefaultUseDisk);
    AddText("Cache/Directory", &CacheDirectory, DefaultCacheDirectory);
}

EPrefsEImage& EPrefsEImage::Get() {
    static EPrefsEImage instance;
    return instance;
}

namespace {
[[maybe_unused]] EPrefsEImage& imagingSection = EPrefsEImage::Get();
}

bool EPrefsEImage::cacheOn(uint32_t& reserve, bool& physicalOnly) {
    EPrefsEImage& prefs = Get();
    Lock lock = prefs.TryLock();
    if (!lock) {
        qvrTrace("*** WARNING[EPrefsEImage::cacheOn()]: Locked; returning default directory.\n");
        reserve = DefaultMinFreeMem;
        physicalOnly = DefaultPhysicalOnly;
        return DefaultMemoryControl;
    }
    reserve = static_cast<uint32_t>(prefs.MinFreeMem);
    physicalOnly = prefs.PhysicalOnly;
    return prefs.MemoryControl;
}

bool EPrefsEImage::cacheVirtual() {
    EPrefsEImage& prefs = Get();
    Lock lock = prefs.TryLock();
    if (!lock) {
        qvrTrace("*** WARNING[EPrefsEImage::cacheVirtual()]: Locked; returning true.\n");
        return true;
    }
    return prefs.CacheData && prefs.UseDisk;
}

std::string EPrefsEImage::GetCacheDirectory() {
    EPrefsEImage& prefs = Get();
    Lock lock = prefs.TryLock();
    if (!lock) {
        qvrTrace("*** WARNING[EPrefsEImage::GetCacheDirectory()]: Locked; returning default directory.\n");
        return DefaultCacheDirectory;
    }
    return prefs.CacheDirectory.empty() ? DefaultCacheDirectory : prefs.CacheDirectory;
}

void EPrefsEImage::SetMemoryControl(bool memoryControl, uint32_t reserve, bool physicalOnly) {
    EPrefsEImage& prefs = Get();
    Lock lock = prefs.TryLock();
    if (!lock) return;
    prefs.MemoryControl = memoryControl;
    prefs.MinFreeMem = reserve;
    prefs.PhysicalOnly = physicalOnly;
}

void EPrefsEImage::SetCaching(bool cacheData, bool useDisk) {
    EPrefsEImage& prefs = Get();
    Lock lock = prefs.TryLock();
    if (!lock) return;
    prefs.CacheData = cacheData;
    prefs.UseDisk = useDisk;
}

void EPrefsEImage::SetCacheDirectory(const std::string& directory) {
    EPrefsEImage& prefs = Get();
    Lock lock = prefs.TryLock();
    if (lock) prefs.CacheDirectory = directory;
}
