#include "imaging/EProxySettings.h"

#include "foundation/EEnvironment.h"
#include "foundation/qvrCRegKey.h"
#include "foundation/qvrCTreeData.h"

#include <algorithm>
#include <array>

namespace {

// A whole-number setting: its registry name, where it lives and its range.
struct WholeSetting {
    const char* name;
    long& (*field)(EProxySettings&);
    long min;
    long max;
};

const std::array<WholeSetting, 8> wholeSettings{{
    {"Max shrink factor", [](EProxySettings& s) -> long& { return s.maxShrinkFactor; }, 1, 10},
    {"Max proxy imgs", [](EProxySettings& s) -> long& { return s.maxProxyImages; }, 1, 10},
    {"Ideal proxy wid", [](EProxySettings& s) -> long& { return s.idealProxySize.cx; }, 100, 25000},
    {"Ideal proxy hi", [](EProxySettings& s) -> long& { return s.idealProxySize.cy; }, 100, 25000},
    {"Max disk spaces used (value)", [](EProxySettings& s) -> long& { return s.maxDiskSpaceUsed; }, 1,
     1000000},
    {"Min free disk space (value)", [](EProxySettings& s) -> long& { return s.minFreeDiskSpace; }, 1,
     1000000},
    {"Max days unused (value)", [](EProxySettings& s) -> long& { return s.maxDaysUnused; }, 1, 365},
    {"Max hrs unused (value)", [](EProxySettings& s) -> long& { return s.maxHoursUnused; }, 0, 23},
}};

struct SwitchSetting {
    const char* name;
    bool& (*field)(EProxySettings&);
};

const std::array<SwitchSetting, 3> switchSettings{{
    {"Min free disk space (use)", [](EProxySettings& s) -> bool& { return s.useMinFreeDiskSpace; }},
    {"Max time unused (use)", [](EProxySettings& s) -> bool& { return s.useMaxTimeUnused; }},
    {"Max disk spaces used (use)", [](EProxySettings& s) -> bool& { return s.useMaxDiskSpaceUsed; }},
}};

constexpr const char* DirectoryName = "Proxy directory";
constexpr const char* CleanUpName = "Proxy clean-up mode";

} // namespace

void EProxySettings::Read(const qvrCRegKey& key) {
    for (const WholeSetting& setting : wholeSettings) {
        long& field = setting.field(*this);
        field = key.GetLong(setting.name, field);
    }
    for (const SwitchSetting& setting : switchSettings) {
        bool& field = setting.field(*this);
        field = key.GetBool(setting.name, field);
    }
    cleanUpMode = static_cast<EProxyCleanUp>(key.GetLong(CleanUpName, static_cast<long>(cleanUpMode)));
    proxyDirectory = key.GetText(DirectoryName, proxyDirectory);
    ApplyRanges();
}

std::vector<std::pair<std::string, std::string>> EProxySettings::GetEntries() const {
    // The field accessors serve reading and writing alike; a copy lends them a non-const object.
    EProxySettings copy = *this;
    std::vector<std::pair<std::string, std::string>> entries;
    entries.emplace_back(DirectoryName, proxyDirectory);
    entries.emplace_back(CleanUpName, std::to_string(static_cast<long>(cleanUpMode)));
    for (const WholeSetting& setting : wholeSettings)
        entries.emplace_back(setting.name, std::to_string(setting.field(copy)));
    for (const SwitchSetting& setting : switchSettings)
        entries.emplace_back(setting.name, qvrTreeText::FromBool(setting.field(copy)));
    return entries;
}

bool EProxySettings::Write(qvrCRegKey& key) const {
    EProxySettings defaults;
    defaults.proxyDirectory = DefaultDirectory();
    const auto entries = GetEntries();
    const auto standard = defaults.GetEntries();
    bool written = true;
    for (size_t i = 0; i < entries.size(); ++i) {
        // A value missing from the store reads as its default.
        const auto& [name, text] = entries[i];
        if (key.GetText(name, standard[i].second) != text) written = key.SetText(name, text) && written;
    }
    return written;
}

std::string EProxySettings::DefaultDirectory() {
    return EEnvironment::PathPlusFile(EEnvironment::Get().CurrentDir, "proxies");
}

void EProxySettings::ApplyRanges() {
    for (const WholeSetting& setting : wholeSettings) {
        long& field = setting.field(*this);
        field = std::clamp(field, setting.min, setting.max);
    }
    cleanUpMode = static_cast<EProxyCleanUp>(std::clamp(static_cast<long>(cleanUpMode), 0L, 2L));
    if (cleanUpMode == EProxyCleanUp::FilterAtExit && !useMinFreeDiskSpace && !useMaxTimeUnused &&
        !useMaxDiskSpaceUsed)
        cleanUpMode = EProxyCleanUp::None;
}

CSize EProxySettings::GetProxySize(CSize original, std::uint32_t& factor) const {
    factor = 1;
    if (original.cx * original.cy > idealProxySize.cx * idealProxySize.cy) {
        const float fx = static_cast<float>(original.cx) / static_cast<float>(idealProxySize.cx);
        const float fy = static_cast<float>(original.cy) / static_cast<float>(idealProxySize.cy);
        const float m = (fx + fy) / 2.0f + 0.5f;
        if (m > static_cast<float>(maxShrinkFactor))
            factor = static_cast<std::uint32_t>(maxShrinkFactor);
        else if (m >= 1.0f)
            factor = static_cast<std::uint32_t>(m);
    }
    if (factor == 1) return original;
    const long shrink = static_cast<long>(factor);
    return {std::max((original.cx + shrink - 1) / shrink, 1L),
            std::max((original.cy + shrink - 1) / shrink, 1L)};
}
