#pragma once
// The metric quick setup: lays out the 18 windows of the L-shaped array from
// eight numbers. Windows 0 to 4 stand in a column at the left, from the top
// down; windows 5 to 17 stand side by side in a row below and right of it.
// The numbers are kept in the user's profile. A value object; the profile
// is safe from any thread.

#include "foundation/EStringTable.h"
#include "foundation/qvrGeometry.h"
#include "projector/LVitrea.h"

#include <array>
#include <string>

class LMetricsQuickSetup {
public:
    static constexpr const char* ProfileKey = "Vitrea:18 saver\\Setup dialog\\Metrics\\Quick setup";
    static constexpr std::size_t ColumnCount = 5;
    static constexpr std::size_t RowCount = 13;

    // What keeps the numbers from making a layout.
    enum class Fault {
        None,
        RowLeftOfColumn, // vx is below hx + w
        RowAboveColumn   // hy is below vy + h
    };

    // The numbers as the profile holds them, each missing one at its default.
    static LMetricsQuickSetup Load();
    // Stores the numbers in the profile.
    void Save() const;

    // The first fault, comparing as the unsigned numbers of 32 bits.
    Fault Check() const;
    // The question that offers to mend a fault.
    static std::string FaultQuestion(Fault fault);
    // Mends the fault: vx becomes hx + w, or hy becomes vy + h.
    void Fix(Fault fault);
    // The windows: left, top, right, bottom.
    std::array<CRect, LVitrea::ProjectorCount> Layout() const;

    long dx = 100; // gap between the windows of the row
    long dy = 100; // gap between the windows of the column
    long hx = 0;   // left edge of the column
    long hy = 200; // bottom reference of the column, which places the row
    long vx = 200; // left edge of the first window of the row
    long vy = 0;   // offset of the row from that reference
    long w = 100;  // width of a window
    long h = 100;  // height of a window
};
