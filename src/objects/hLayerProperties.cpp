#include "objects/hLayerProperties.h"

#include "foundation/hMessageBox.h"
#include "foundation/qvrString.h"
#include "model/iElementContainer.h"
#include "objects/isrcLayer.h"

namespace {

constexpr long MinSide = 10;
constexpr long MaxSide = 35000;

bool parseWhole(std::string_view text, long& value) {
    return qvrParseLong(qvrTrim(text), value);
}

} // namespace

bool hLayerProperties::complain(const char* text) {
    hMessageBox::Show(text, hMessageBox::OK | hMessageBox::IconExclamation, "");
    return false;
}

bool hLayerProperties::readWhole(const std::string& text, long low, long high, long& value,
                                 const char* complaint) const {
    if (!parseWhole(text, value) || value < low || value > high) return complain(complaint);
    return true;
}

bool hLayerProperties::CommitName(const std::string& text) {
    if (text.empty()) return complain("The name cannot be empty !");
    iElementContainer* project = Layer.GetProject();
    iElement* holder = project ? project->FindElement(text) : nullptr;
    if (holder && holder != &Layer) return complain("There is already an object with that name !");
    return Layer.SetName(text, true);
}

bool hLayerProperties::CommitWidth(const std::string& text) {
    long width = 0;
    if (!readWhole(text, MinSide, MaxSide, width, "Invalid width !")) return false;
    Layer.SetSize({width, Layer.GetSize(Frame).Height});
    return true;
}

bool hLayerProperties::CommitHeight(const std::string& text) {
    long height = 0;
    if (!readWhole(text, MinSide, MaxSide, height, "Invalid height !")) return false;
    Layer.SetSize({Layer.GetSize(Frame).Width, height});
    return true;
}

bool hLayerProperties::CommitColor(const std::string& text) {
    const std::vector<std::string> parts = qvrSplit(text, ',');
    long channels[3] = {};
    if (parts.size() != 3) return complain("Invalid color !");
    for (size_t i = 0; i < 3; ++i)
        if (!parseWhole(parts[i], channels[i])) return complain("Invalid color !");
    Layer.GetRedValue().SetKeyAuto(Frame, static_cast<double>(channels[0]), true, false);
    Layer.GetGreenValue().SetKeyAuto(Frame, static_cast<double>(channels[1]), true, false);
    Layer.GetBlueValue().SetKeyAuto(Frame, static_cast<double>(channels[2]), true, false);
    return true;
}

bool hLayerProperties::CommitAlpha(const std::string& text) {
    long alpha = 0;
    if (!readWhole(text, 0, 255, alpha, "Invalid alpha value !")) return false;
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
