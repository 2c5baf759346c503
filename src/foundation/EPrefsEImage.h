#pragma once
// "Imaging" of the preferences: whether image memory is watched and how much
// of it is kept free, and whether pictures may be paged to disk and where.
// Safe from any thread: readers take the section's lock with a time-out and
// fall back to the defaults, so the image cache never blocks on a setting.

#include "foundation/EPrefs.h"

#include <cstdint>

class EPrefsEImage : public EPrefsSection {
public:
    static constexpr bool DefaultMemoryControl = true;
    static constexpr long DefaultMinFreeMem = 4;
    static constexpr bool DefaultPhysicalOnly = true;
    static constexpr bool DefaultCacheData = true;
    static constexpr bool DefaultUseDisk = true;
    static constexpr const char* DefaultCacheDirectory = "virtual";

    EPrefsEImage();
    static EPrefsEImage& Get();

    // Whether memory is watched, with the reserve kept free and whether only
    // physical memory counts.
    static bool cacheOn(uint32_t& reserve, bool& physicalOnly);
    // Whether pictures may be paged to disk: both "CacheData" and "Cache/UseDisk".
    static bool cacheVirtual();
    // The directory of the paged pictures, relative to the program directory unless absolute.
    static std::string GetCacheDirectory();

    static void SetMemoryControl(bool memoryControl, uint32_t reserve, bool physicalOnly);
    static void SetCaching(bool cacheData, bool useDisk);
    static void SetCacheDirectory(const std::string& directory);

private:
    bool MemoryControl = DefaultMemoryControl;
    long MinFreeMem = DefaultMinFreeMem;
    bool PhysicalOnly = DefaultPhysicalOnly;
    bool CacheData = DefaultCacheData;
    bool UseDisk = DefaultUseDisk;
    std::string CacheDirectory;
};
