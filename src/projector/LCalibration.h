#pragma once
// The calibration of the projector array: the size of the projector test
// image, which is the size of every projector's picture, and for each of the
// 18 projectors the four corners P0 to P3 of the quadrilateral that it shows,
// in the pixels of that picture. Exchanged as a calibration file (.vtcl) and
// kept in the project as the block "Calibration". Rules as for every LVitrea.

#include "foundation/EStringTable.h"
#include "foundation/qvrGeometry.h"
#include "projector/LProjection.h"
#include "projector/LVitrea.h"

#include <array>
#include <cstdint>

class LCalibration : public LVitrea {
public:
    static constexpr const char* FileExtension = "vtcl";
    // The file dialog's filter, with "%1" for the extension.
    static constexpr EStringId text_file_filter = 65026;
    static constexpr const char* BlockName = "Calibration";

    // The test image size 0 by 0 and every corner at 0,0.
    void Clear();

    // Reads a calibration file over a cleared calibration; false, with the
    // platform's error, only when the file can't be opened.
    bool LoadFromFile(const std::string& name, std::string& problem);
    // Writes a calibration file; refused, with the complaint of Verify, when
    // the calibration isn't valid.
    bool SaveToFile(const std::string& name, std::string& problem) const;

    void Load(const qvrCTreeData& section, hReport& report) override;
    void Save(qvrCTreeData& section) const override;

    // Whether every corner of the projector lies within the test image
    // (its right and bottom edge included) and the four make a usable quadrilateral.
    bool IsProjectorValid(std::size_t projector) const;
    // The first projector that isn't valid, or -1.
    long FindInvalidProjector() const;
    // True when every projector is valid; otherwise false with the complaint for the first that isn't.
    bool Verify(std::string& problem) const;
    // The complaint about a projector whose corners fail (numbered from 1 in the text).
    static std::string InvalidProjectorText(std::size_t projector);

    // The corners as "x0;y0;x1;y1;x2;y2;x3;y3", the form of files and projects.
    static std::string FormatCorners(const LCorners& corners);
    // Reads that form; false, with `corners` unchanged, unless all eight numbers parse.
    static bool ParseCorners(std::string_view text, LCorners& corners);

    std::uint32_t ImageWidth = 0;
    std::uint32_t ImageHeight = 0;
    std::array<LCorners, ProjectorCount> Projectors{};

private:
    void readFileEntry(std::string_view key, std::string_view value);
    void loadBlock(const qvrCTreeData& block, hReport& report);
};
