#include "objects/imodCorrection.h"

#include "foundation/EStringTable.h"
#include "foundation/qvrSplitWork.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "objects/ObjectText.h"

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <vector>

iFactoryProducerOf<imodCorrection> imodCorrection::Producer(iModifier::ClassType, "Image Correction");

namespace {

// Pictures of this many rows and more are corrected in two halves at once.
constexpr long SplitFromRows = 256;

enum : EStringId { textImageCorrection = 47600 };

// The settings in fixed point with 12 fractional bits, as the pixel loop uses them.
struct FixedCorrection {
    std::int32_t brightness;   // added to each colour: 255.0 at 100
    std::int32_t transparency; // added to the alpha: 255.0 at 100
    std::int32_t saturation;   // percent: 0 grey, 100 unchanged, 300 at most
    std::int32_t contrast;     // percent around the value 128: 0 to 200

    explicit FixedCorrection(const hCorrectionSettings& settings)
        : brightness(static_cast<std::int32_t>(settings.Brightness * 0xFF000 / 100)),
          transparency(static_cast<std::int32_t>(settings.Transparency * 0xFF000 / 100)),
          saturation(static_cast<std::int32_t>(
              (settings.Saturation > 0 ? 2 * settings.Saturation : settings.Saturation) + 100)),
          contrast(static_cast<std::int32_t>(settings.Contrast + 100)) {}

    bool operator==(const FixedCorrection&) const = default;
};

constexpr std::int32_t half = 0x800;      // one half in 12 fractional bits
constexpr std::int32_t pivot = 128 << 12; // contrast turns around this value
constexpr std::int32_t fractionBits = 12;

std::uint32_t clampedByte(std::int32_t value) {
    return static_cast<std::uint32_t>(std::clamp(value, 0, 255));
}

std::int32_t fixedChannel(std::uint32_t pixel, int shift) {
    return static_cast<std::int32_t>((pixel >> shift) & 0xFF) << fractionBits;
}

// One colour channel `x` in fixed point, in a pixel whose colours have the mean `mean`.
std::uint32_t correctedChannel(std::int32_t x, std::int32_t mean, const FixedCorrection& fixed) {
    if (fixed.saturation != 100) x = ((x - mean) * fixed.saturation + mean * 100) / 100;
    if (fixed.contrast != 100) x = (x - pivot) * fixed.contrast / 100 + pivot;
    return clampedByte((x + fixed.brightness + half) >> fractionBits);
}

std::uint32_t correctedAlpha(std::uint32_t alpha, const FixedCorrection& fixed) {
    return clampedByte((static_cast<std::int32_t>(alpha) * 4096 + fixed.transparency + half) >> fractionBits);
}

std::uint32_t correctPixel(std::uint32_t pixel, const FixedCorrection& fixed) {
    const std::int32_t red = fixedChannel(pixel, 16);
    const std::int32_t green = fixedChannel(pixel, 8);
    const std::int32_t blue = fixedChannel(pixel, 0);
    const std::int32_t mean = (red + green + blue) / 3;
    return correctedAlpha(pixel >> 24, fixed) << 24 | correctedChannel(red, mean, fixed) << 16 |
           correctedChannel(green, mean, fixed) << 8 | correctedChannel(blue, mean, fixed);
}

// The corrected byte of every channel value, in rows of 256 for each sum of
// the three colour bytes; without saturation the mean has no part and one row serves all.
class CorrectionTables {
public:
    explicit CorrectionTables(const FixedCorrection& fixed)
        : settings(fixed), rowStride(fixed.saturation != 100 ? 256 : 0),
          colour(fixed.saturation != 100 ? 766 * 256 : 256) {
        for (size_t sum = 0; sum * 256 < colour.size(); ++sum) {
            const std::int32_t mean = static_cast<std::int32_t>(sum << fractionBits) / 3;
            for (std::uint32_t value = 0; value < 256; ++value)
                colour[sum * 256 + value] = static_cast<std::uint8_t>(
                    correctedChannel(static_cast<std::int32_t>(value << fractionBits), mean, fixed));
        }
        for (std::uint32_t value = 0; value < 256; ++value)
            alpha[value] = static_cast<std::uint8_t>(correctedAlpha(value, fixed));
    }

    std::uint32_t Correct(std::uint32_t pixel) const {
        const std::uint32_t red = (pixel >> 16) & 0xFF;
        const std::uint32_t green = (pixel >> 8) & 0xFF;
        const std::uint32_t blue = pixel & 0xFF;
        const std::uint8_t* row = colour.data() + (red + green + blue) * rowStride;
        return std::uint32_t{alpha[pixel >> 24]} << 24 | std::uint32_t{row[red]} << 16 |
               std::uint32_t{row[green]} << 8 | row[blue];
    }

    const FixedCorrection& Settings() const { return settings; }

private:
    const FixedCorrection settings;
    const size_t rowStride;
    std::vector<std::uint8_t> colour;
    std::array<std::uint8_t, 256> alpha;
};

// The tables of the settings. The last ones made are kept, as the settings
// mostly stay the same from frame to frame.
std::shared_ptr<const CorrectionTables> tablesFor(const FixedCorrection& fixed) {
    static std::mutex guard;
    static std::shared_ptr<const CorrectionTables> last;
    const std::lock_guard lock(guard);
    if (!last || last->Settings() != fixed) last = std::make_shared<const CorrectionTables>(fixed);
    return last;
}

// Corrects the rows from `first` up to `last`.
template <class Correction>
void correctRows(EImageData& picture, const Correction& correct, long first, long last) {
    for (long y = first; y < last; ++y) {
        std::uint32_t* row = picture.GetRow(y);
        for (long x = 0; x < picture.GetWidth(); ++x)
            row[x] = correct(row[x]);
    }
}

} // namespace

long RoundValue(double value) {
    return value > 0.0 ? static_cast<long>(value + 0.5) : static_cast<long>(value - 0.5);
}

void CorrectPixelsReference(EImageData& picture, const hCorrectionSettings& settings) {
    const FixedCorrection fixed(settings);
    correctRows(
        picture, [&fixed](std::uint32_t pixel) { return correctPixel(pixel, fixed); }, 0,
        picture.GetHeight());
}

void CorrectPixels(EImageData& picture, const hCorrectionSettings& settings) {
    const std::shared_ptr<const CorrectionTables> tables = tablesFor(FixedCorrection(settings));
    const auto correct = [&tables](std::uint32_t pixel) { return tables->Correct(pixel); };
    qvrSplitInTwo(picture.GetHeight(), SplitFromRows,
                  [&](long first, long last) { correctRows(picture, correct, first, last); });
}

const iParameterEntry<imodCorrection> imodCorrection::parameterEntries[] = {
    {{"Brightness", iParameterKind::Animated, ObjectText::LabelBrightness, 0.0, {-100.0, 100.0}}},
    {{"Contrast", iParameterKind::Animated, ObjectText::LabelContrast, 0.0, {-100.0, 100.0}}},
    {{"Saturation", iParameterKind::Animated, ObjectText::LabelSaturation, 0.0, {-100.0, 100.0}}},
    {{"Transparency", iParameterKind::Animated, ObjectText::LabelTransparency, 0.0, {-100.0, 100.0}}},
};
const iParameterTable<imodCorrection> imodCorrection::Parameters{parameterEntries};

imodCorrection::imodCorrection(std::string name)
    : iInplaceModifier(std::move(name)), brightness(this, Parameters.Get("Brightness")),
      contrast(this, Parameters.Get("Contrast")), saturation(this, Parameters.Get("Saturation")),
      transparency(this, Parameters.Get("Transparency")) {}

std::string imodCorrection::GetStateText() const {
    return EStringTable::Load(textImageCorrection);
}

hCorrectionSettings imodCorrection::GetSettings(long frame) const {
    return {RoundValue(brightness.GetValue(frame)), RoundValue(contrast.GetValue(frame)),
            RoundValue(saturation.GetValue(frame)), RoundValue(transparency.GetValue(frame))};
}

bool imodCorrection::doProcessImage(EImage& image, iRenderResult& result, iRenderRequest& request) {
    if (result.Code != render_ok) return false;
    EImageLock lock(image);
    if (!lock.Lock(-1) || !lock.GetData()) return true;
    const hCorrectionSettings settings = GetSettings(request.Frame);
    if (!settings.IsNeutral()) CorrectPixels(*lock.GetData(), settings);
    return true;
}
