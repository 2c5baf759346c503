#pragma once
// The metrics of the projector array: for each of the 18 projectors the
// window of the array that it shows, in the length units of the building,
// and the resolution in pixels per unit. From them come the pixel windows,
// the same windows in pixels of the input picture, placed so that the
// bounding rectangle of all windows starts at 0,0. Exchanged as a metric
// file (.vtmt) and kept in the project as the block "OutputMetrics".
// Rules as for every LVitrea.

#include "foundation/EStringTable.h"
#include "foundation/qvrGeometry.h"
#include "projector/LVitrea.h"

#include <array>

class LMetrics : public LVitrea {
public:
    static constexpr const char* FileExtension = "vtmt";
    // The file dialog's filter, with "%1" for the extension.
    static constexpr EStringId text_file_filter = 65027;
    static constexpr const char* BlockName = "OutputMetrics";
    // The resolution that pixel windows need, in both directions: more than this.
    static constexpr double MinDerivableResolution = 0.1;
    // The resolution that the setup accepts, in both directions: at least this.
    static constexpr double MinResolution = 1.0;

    // Empty windows and pixel windows, a resolution of 1 by 1.
    void Clear();

    // Reads a metric file over cleared metrics and derives the pixel windows;
    // false, with the platform's error, only when the file can't be opened.
    bool LoadFromFile(const std::string& name, std::string& problem);
    // Writes a metric file; refused, with the complaint of Verify, when the
    // metrics aren't valid.
    bool SaveToFile(const std::string& name, std::string& problem) const;

    void Load(const qvrCTreeData& section, hReport& report) override;
    void Save(qvrCTreeData& section) const override;

    // Derives the pixel windows and the totals from windows and resolution.
    // False, with every pixel window empty and the totals at -1, when a
    // resolution is too small or the windows have no area at all.
    bool DerivePixelWindows();

    // True when the resolution is at least MinResolution both ways and every
    // window has an area and its top left corner isn't negative; otherwise
    // false with the complaint about the first fault. Windows may overlap:
    // neighbouring projectors blend where their windows meet.
    bool Verify(std::string& problem) const;
    // The complaint about a window with a negative left or top, or without an
    // area (numbered from 1 in the texts).
    static std::string NegativeWindowText(std::size_t window);
    static std::string EmptyWindowText(std::size_t window);

    // The rectangle as the file writes it: "left;top;right;bottom", the
    // bottom padded to four places.
    static std::string FormatWindow(const CRect& window);
    // Reads four numbers separated by ";"; false, with `window` unchanged, unless all four parse.
    static bool ParseWindow(std::string_view text, CRect& window);
    // Reads the resolution as "XVAL, YVAL"; false, with the resolution
    // unchanged, unless both parse.
    bool ParseResolution(std::string_view text);

    std::array<CRect, ProjectorCount> Windows{};
    // Derived, not stored.
    std::array<CRect, ProjectorCount> PixelWindows{};
    // Derived: the largest right and bottom of the pixel windows.
    long TotalWidth = -1;
    long TotalHeight = -1;
    // Pixels per unit of length.
    double ResolutionX = 1.0;
    double ResolutionY = 1.0;

private:
    void readFileEntry(std::string_view key, std::string_view value);
    void loadBlock(const qvrCTreeData& block, hReport& report);
    void loadResolution(const qvrCTreeData& block, hReport& report);
    void clearPixelWindows();
};
