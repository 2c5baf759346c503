#pragma once
// The editing rules of the projector array saver's setup pages, apart from
// the windows: the calibration page (test image size and the four corners of
// every projector), the metrics page (resolution and the windows as position
// and size) and the output page (format, files and directories). Each page
// edits texts or a copy; leaving it checks everything and gives the
// configuration the values only when all are good. A bad entry shows its
// complaint in a message box and the focus goes to the field, which
// GetFocus names. Main thread only.

#include "projector/LConfiguration.h"

#include <array>
#include <string>

class hVitreaSetupPages {
public:
    // The profile key under which a yes to similar file names is remembered.
    static constexpr const char* ProfileKey = "Vitrea:18 saver\\Setup dialog\\Output files";
    static constexpr const char* AcceptSimilarNamesEntry = "AcceptSimilarNames";

    // A field of the pages: which one, in which row of the projector list,
    // and for the corners which of P0 to P3.
    struct Field {
        enum class Kind { None, ImageSize, Corner, Position, Size, Resolution, Format, File };
        Kind kind = Kind::None;
        std::size_t projector = 0;
        std::size_t corner = 0;
    };

    // Fills the texts and the copy from the configuration.
    explicit hVitreaSetupPages(LConfiguration& configuration);

    // --- The calibration page: "WIDTH, HEIGHT" and "X,Y" for each corner.
    std::string ImageSizeText;
    std::array<std::array<std::string, 4>, LVitrea::ProjectorCount> CornerTexts;
    bool LeaveCalibrationPage();

    // --- The metrics page: pixels per centimeter as "XVAL, YVAL", each
    // window as position "X,Y" and size "WIDTH,HEIGHT".
    std::string ResolutionText;
    std::array<std::string, LVitrea::ProjectorCount> PositionTexts;
    std::array<std::string, LVitrea::ProjectorCount> SizeTexts;
    bool LeaveMetricsPage();

    // --- The output page, on a copy of the output files. With TestFiles
    // every output name must be writable (its directory is made).
    LOutputFiles Outputs;
    bool TestFiles = false;
    bool LeaveOutputPage();

    // Whether similar file names of different projectors are accepted without a question.
    static bool GetAcceptSimilarNames();
    static void SetAcceptSimilarNames(bool accept);

    const Field& GetFocus() const { return Focus; }

private:
    // Shows the complaint, puts the focus on the field and returns false.
    bool refuse(const std::string& complaint, Field field);
    bool readCorners(LCalibration& calibration);
    bool readWindows(LMetrics& metrics);
    bool testOutputNames(const EImageOutputStream& stream);
    // Asks about the first two projectors whose output names are alike.
    bool acceptSimilarNames();

    LConfiguration& Configuration;
    Field Focus;
};
