#include "projector/hVitreaSetupPages.h"

#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/qvrCRegKey.h"
#include "foundation/qvrString.h"
#include "output/EImageOutputStream.h"

namespace {

constexpr EStringId textBadImageSize = 65028;
constexpr EStringId textBadCorner = 65029;
constexpr EStringId textSimilarNames = 65044;
constexpr EStringId textBadOutputName = 65046;
constexpr EStringId textBadResolution = 65047;

using Kind = hVitreaSetupPages::Field::Kind;

// Reads "A,B", blanks allowed around each number.
bool readPair(const std::string& text, long (&pair)[2]) {
    return LVitrea::ParseNumbers(text, ',', pair, 2);
}

std::string pairText(long a, long b) {
    return qvrFormat("%ld,%ld", a, b);
}

} // namespace

hVitreaSetupPages::hVitreaSetupPages(LConfiguration& configuration)
    : Outputs(configuration.OutputFiles), Configuration(configuration) {
    const LCalibration& calibration = configuration.Calibration;
    ImageSizeText = qvrFormat("%ld, %ld", static_cast<long>(calibration.ImageWidth),
                              static_cast<long>(calibration.ImageHeight));
    for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector)
        for (std::size_t corner = 0; corner < 4; ++corner) {
            const CPoint& point = calibration.Projectors[projector][corner];
            CornerTexts[projector][corner] = pairText(point.x, point.y);
        }
    const LMetrics& metrics = configuration.Metrics;
    ResolutionText = qvrFormat("%g, %g", metrics.ResolutionX, metrics.ResolutionY);
    for (std::size_t window = 0; window < LVitrea::ProjectorCount; ++window) {
        const CRect& rect = metrics.Windows[window];
        PositionTexts[window] = pairText(rect.left, rect.top);
        SizeTexts[window] = pairText(rect.Width(), rect.Height());
    }
}

bool hVitreaSetupPages::refuse(const std::string& complaint, Field field) {
    if (!complaint.empty()) hMessageBox::Show(complaint, hMessageBox::OK | hMessageBox::IconExclamation, "");
    Focus = field;
    return false;
}

// ---------------------------------------------------------------- the calibration page

bool hVitreaSetupPages::LeaveCalibrationPage() {
    LCalibration calibration = Configuration.Calibration;
    long size[2] = {};
    if (!readPair(ImageSizeText, size) || size[0] <= 0 || size[1] <= 0)
        return refuse(EStringTable::Load(textBadImageSize), {Kind::ImageSize});
    calibration.ImageWidth = static_cast<std::uint32_t>(size[0]);
    calibration.ImageHeight = static_cast<std::uint32_t>(size[1]);
    if (!readCorners(calibration)) return false;
    Configuration.Calibration = calibration;
    return true;
}

bool hVitreaSetupPages::readCorners(LCalibration& calibration) {
    for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector) {
        for (std::size_t corner = 0; corner < 4; ++corner) {
            long point[2] = {};
            if (!readPair(CornerTexts[projector][corner], point))
                return refuse(
                    qvrFormatMessage(EStringTable::Get(textBadCorner), {static_cast<long>(projector + 1)}),
                    {Kind::Corner, projector, corner});
            calibration.Projectors[projector][corner] = {point[0], point[1]};
        }
        if (!calibration.IsProjectorValid(projector))
            return refuse(LCalibration::InvalidProjectorText(projector), {Kind::Corner, projector, 0});
    }
    return true;
}

// ---------------------------------------------------------------- the metrics page

bool hVitreaSetupPages::LeaveMetricsPage() {
    LMetrics metrics = Configuration.Metrics;
    if (!readWindows(metrics)) return false;
    if (!metrics.ParseResolution(ResolutionText))
        return refuse(EStringTable::Load(textBadResolution), {Kind::Resolution});
    std::string complaint;
    if (!metrics.Verify(complaint)) return refuse(complaint, {Kind::Resolution});
    metrics.DerivePixelWindows();
    Configuration.Metrics = metrics;
    return true;
}

bool hVitreaSetupPages::readWindows(LMetrics& metrics) {
    for (std::size_t window = 0; window < LVitrea::ProjectorCount; ++window) {
        long position[2] = {};
        long size[2] = {};
        const bool positionRead = readPair(PositionTexts[window], position);
        if (positionRead && (position[0] < 0 || position[1] < 0))
            return refuse(LMetrics::NegativeWindowText(window), {Kind::Position, window});
        if (!positionRead) return refuse(LMetrics::EmptyWindowText(window), {Kind::Position, window});
        if (!readPair(SizeTexts[window], size) || size[0] <= 0 || size[1] <= 0)
            return refuse(LMetrics::EmptyWindowText(window), {Kind::Size, window});
        metrics.Windows[window] = {position[0], position[1], position[0] + size[0], position[1] + size[1]};
    }
    return true;
}

// ---------------------------------------------------------------- the output page

bool hVitreaSetupPages::LeaveOutputPage() {
    const EImageOutputStream* stream = Outputs.GetStream();
    if (!stream) return refuse(LOutputFiles::UnknownStreamText(Outputs.StreamType), {Kind::Format});
    for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector) {
        std::string& file = Outputs.ProjectorFiles[projector];
        if (file.empty()) return refuse(LOutputFiles::EmptyFileText(projector), {Kind::File, projector});
        file = stream->ForceExtension(file);
    }
    if (TestFiles && !testOutputNames(*stream)) return false;
    if (!acceptSimilarNames()) return false;
    Configuration.OutputFiles = Outputs;
    return true;
}

bool hVitreaSetupPages::testOutputNames(const EImageOutputStream& stream) {
    for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector) {
        const std::string name = Outputs.GetOutputName(projector);
        if (EImageOutputStream::TestFile(name, EOutputDirectory::Create, nullptr)) continue;
        return refuse(
            qvrFormatMessage(EStringTable::Get(textBadOutputName),
                             {static_cast<long>(projector + 1), name, std::string(stream.GetName())}),
            {Kind::File, projector});
    }
    return true;
}

bool hVitreaSetupPages::acceptSimilarNames() {
    if (GetAcceptSimilarNames()) return true;
    for (std::size_t first = 0; first < LVitrea::ProjectorCount; ++first) {
        for (std::size_t second = first + 1; second < LVitrea::ProjectorCount; ++second) {
            if (!qvrEqualNoCase(Outputs.GetOutputName(first), Outputs.GetOutputName(second))) continue;
            const std::string question =
                qvrFormatMessage(EStringTable::Get(textSimilarNames),
                                 {static_cast<long>(first + 1), static_cast<long>(second + 1)});
            if (hMessageBox::Show(question, hMessageBox::YesNo | hMessageBox::IconQuestion, "") != IDYES)
                return refuse({}, {Kind::File, second});
            SetAcceptSimilarNames(true);
            return true;
        }
    }
    return true;
}

bool hVitreaSetupPages::GetAcceptSimilarNames() {
    qvrCRegKey key;
    key.Open(qvrCRegKey::Root(), ProfileKey, qvrCRegKey::Access::OpenExisting);
    return key.GetBool(AcceptSimilarNamesEntry, false);
}

void hVitreaSetupPages::SetAcceptSimilarNames(bool accept) {
    qvrCRegKey key;
    if (key.Open(qvrCRegKey::Root(), ProfileKey)) key.SetBool(AcceptSimilarNamesEntry, accept);
}
