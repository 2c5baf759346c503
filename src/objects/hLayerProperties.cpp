#include "objects/hLayerProperties.h"

#include "foundation/qvrString.h"
#include "objects/isrcLayer.h"

#include <array>

hLayerProperties::hLayerProperties(isrcLayer& layer, long frame)
    : hPropertyPage(layer), Layer(layer), Frame(frame) {}

bool hLayerProperties::CommitWidth(const std::string& text) {
    return commitSide(text, &EImageSize::Width, "Invalid width !");
}

bool hLayerProperties::CommitHeight(const std::string& text) {
    return commitSide(text, &EImageSize::Height, "Invalid height !");
}

bool hLayerProperties::commitSide(const std::string& text, long EImageSize::*side, const char* complaint) {
    long entered = 0;
    if (!readWhole(text, isrcLayer::Parameters.Get("Size").Limits, entered, complaint)) return false;
    EImageSize size = Layer.GetSize(Frame);
    size.*side = entered;
    Layer.SetSize(size);
    return true;
}

// The channels may lie outside 0 to 255: reading folds them into the values' limits.
bool hLayerProperties::CommitColor(const std::string& text) {
    std::array<long, 3> channels{};
    if (!readWholes(text, iParameterLimits{}, channels, EStringTable::Get(ObjectText::TextInvalidColor)))
        return false;
    Layer.GetRedValue().SetKeyAuto(Frame, static_cast<double>(channels[0]), true, false);
    Layer.GetGreenValue().SetKeyAuto(Frame, static_cast<double>(channels[1]), true, false);
    Layer.GetBlueValue().SetKeyAuto(Frame, static_cast<double>(channels[2]), true, false);
    return true;
}

bool hLayerProperties::CommitAlpha(const std::string& text) {
    long alpha = 0;
    if (!readWhole(text, isrcLayer::Parameters.Get("Color Alpha").Limits, alpha,
                   EStringTable::Get(ObjectText::TextInvalidAlpha)))
        return false;
    Layer.GetAlphaValue().SetKeyAuto(Frame, static_cast<double>(alpha), true, false);
    return true;
}

std::string hLayerProperties::GetWidthText() const {
    return qvrFormat("%ld", Layer.GetSize(Frame).Width);
}

std::string hLayerProperties::GetHeightText() const {
    return qvrFormat("%ld", Layer.GetSize(Frame).Height);
}

std::string hLayerProperties::GetColorText() const {
    return qvrFormat("%ld,%ld,%ld", Layer.GetRed(Frame), Layer.GetGreen(Frame), Layer.GetBlue(Frame));
}

std::string hLayerProperties::GetAlphaText() const {
    return qvrFormat("%ld", Layer.GetAlpha(Frame));
}
