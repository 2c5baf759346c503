#include "projector/LMetricsQuickSetup.h"

#include "foundation/qvrCRegKey.h"

#include <cstdint>

namespace {

constexpr EStringId textRowLeftOfColumn = 65036;
constexpr EStringId textRowAboveColumn = 65037;

// The numbers with their keys in the profile.
struct Entry {
    const char* key;
    long LMetricsQuickSetup::*value;
};

constexpr Entry entries[] = {{"dx", &LMetricsQuickSetup::dx}, {"dy", &LMetricsQuickSetup::dy},
                             {"hx", &LMetricsQuickSetup::hx}, {"hy", &LMetricsQuickSetup::hy},
                             {"vx", &LMetricsQuickSetup::vx}, {"vy", &LMetricsQuickSetup::vy},
                             {"w", &LMetricsQuickSetup::w},   {"h", &LMetricsQuickSetup::h}};

qvrCRegKey openProfile() {
    qvrCRegKey key;
    key.Open(qvrCRegKey::Root(), LMetricsQuickSetup::ProfileKey);
    return key;
}

bool isBelow(long a, long b) {
    return static_cast<std::uint32_t>(a) < static_cast<std::uint32_t>(b);
}

} // namespace

LMetricsQuickSetup LMetricsQuickSetup::Load() {
    const qvrCRegKey key = openProfile();
    LMetricsQuickSetup setup;
    for (const Entry& entry : entries) {
        const long value = key.GetLong(entry.key, setup.*entry.value);
        if (qvrFitsIn32Bits(value)) setup.*entry.value = value;
    }
    return setup;
}

void LMetricsQuickSetup::Save() const {
    qvrCRegKey key = openProfile();
    for (const Entry& entry : entries)
        key.SetLong(entry.key, this->*entry.value);
}

LMetricsQuickSetup::Fault LMetricsQuickSetup::Check() const {
    if (isBelow(vx, hx + w)) return Fault::RowLeftOfColumn;
    if (isBelow(hy, vy + h)) return Fault::RowAboveColumn;
    return Fault::None;
}

std::string LMetricsQuickSetup::FaultQuestion(Fault fault) {
    if (fault == Fault::RowLeftOfColumn) return EStringTable::Load(textRowLeftOfColumn);
    if (fault == Fault::RowAboveColumn) return EStringTable::Load(textRowAboveColumn);
    return {};
}

void LMetricsQuickSetup::Fix(Fault fault) {
    if (fault == Fault::RowLeftOfColumn) vx = hx + w;
    if (fault == Fault::RowAboveColumn) hy = vy + h;
}

std::array<CRect, LVitrea::ProjectorCount> LMetricsQuickSetup::Layout() const {
    std::array<CRect, LVitrea::ProjectorCount> windows;
    long y = 0;
    for (std::size_t window = 0; window < ColumnCount; ++window) {
        windows[window] = {hx, y, hx + w, y + h};
        y += dy + h;
    }
    const long rowTop = h * 5 + dy * 4 + hy - vy;
    long x = vx;
    for (std::size_t window = ColumnCount; window < ColumnCount + RowCount; ++window) {
        windows[window] = {x, rowTop, x + w, rowTop + h};
        x += w + dx;
    }
    return windows;
}
