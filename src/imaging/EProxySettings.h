#pragma once
// The settings of the proxy engine as the registry keeps them under
// "Engines\ProxyManager": the size that proxies aim at, where they live and
// how the proxy directory is cleaned up. Reading moves every value into its
// range; writing touches only the values that differ from what the store
// gives (a missing value gives its default), so that a run that changed
// nothing writes nothing: many command-line runs may share one store. Plain data: EImageStorage guards
// its copy with its own lock.

#include "foundation/qvrGeometry.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

class qvrCRegKey;

// What happens to the proxy directory when the program ends.
enum class EProxyCleanUp : long { EmptyAtExit = 0, None = 1, FilterAtExit = 2 };

struct EProxySettings {
    static constexpr const char* RegistryKey = "Engines\\ProxyManager";

    long maxShrinkFactor = 5;
    long maxProxyImages = 1; // kept for the settings page; nothing else reads it
    CSize idealProxySize{720, 576};
    std::string proxyDirectory; // empty until LoadSettings finds the place
    EProxyCleanUp cleanUpMode = EProxyCleanUp::FilterAtExit;
    bool useMinFreeDiskSpace = false;
    bool useMaxTimeUnused = true;
    bool useMaxDiskSpaceUsed = false;
    long maxDiskSpaceUsed = 500; // in units of 1,000,000 bytes
    long minFreeDiskSpace = 10;  // in units of 1,000,000 bytes
    long maxDaysUnused = 6;
    long maxHoursUnused = 0;

    // Reads every value (a missing one keeps its default) and applies the ranges.
    void Read(const qvrCRegKey& key);
    // Writes every value that differs from what the store gives; false when a write failed.
    bool Write(qvrCRegKey& key) const;
    // Every setting as the registry keeps it: its name and its text.
    std::vector<std::pair<std::string, std::string>> GetEntries() const;
    // Moves each value to the nearest bound of its range; filtering at exit
    // without a rule to filter by is no clean-up at all.
    void ApplyRanges();

    // The proxy directory when none is set: "proxies" in the program directory.
    static std::string DefaultDirectory();

    // The size of the proxy of a picture of the original size, and its shrink factor.
    CSize GetProxySize(CSize original, std::uint32_t& factor) const;
};
