#include "objects/hCropProperties.h"

#include "foundation/qvrString.h"
#include "objects/imodCrop.h"

namespace {

enum : EStringId {
    textFirstAbsoluteLabel = 47603, // four labels: width, height, centre x, centre y
    textFirstRelativeLabel = 47607, // four labels: left, right, top, bottom
    textNotANumber = 47611,
    textTooSmall = 47612,
};

constexpr double smallestSide = 4.0;

} // namespace

hCropProperties::hCropProperties(imodCrop& crop, long frame)
    : hPropertyPage(crop), Crop(crop), Frame(frame) {}

EImageSize hCropProperties::parentSize() const {
    EImageSize size;
    return queryParentSize(Frame, size) ? size : EImageSize{};
}

std::string hCropProperties::GetParentText() const {
    return getParentLine(Frame);
}

std::array<std::string, 4> hCropProperties::GetFieldLabels() const {
    const EStringId first = Crop.GetRelativeGUI() ? textFirstRelativeLabel : textFirstAbsoluteLabel;
    return {EStringTable::Load(first), EStringTable::Load(first + 1), EStringTable::Load(first + 2),
            EStringTable::Load(first + 3)};
}

hCropEntry hCropProperties::GetEntry() const {
    hCropEntry entry;
    entry.Name = Crop.GetName();
    const EImageSize size = Crop.GetCropSize(Frame);
    if (Crop.GetRelativeGUI()) {
        const CPoint offset = Crop.GetOffset(parentSize(), Frame);
        entry.Fields = {qvrFormat("%ld", offset.x), qvrFormat("%ld", offset.x + size.Width),
                        qvrFormat("%ld", offset.y), qvrFormat("%ld", offset.y + size.Height)};
    } else {
        const CPoint center = Crop.GetCenter(Frame);
        entry.Fields = {qvrFormat("%ld", size.Width), qvrFormat("%ld", size.Height),
                        qvrFormat("%ld", center.x), qvrFormat("%ld", center.y)};
    }
    const std::uint32_t colour = Crop.GetBackgroundColor();
    entry.Color = qvrFormat("%u,%u,%u", colour >> 16 & 0xFF, colour >> 8 & 0xFF, colour & 0xFF);
    entry.Alpha = qvrFormat("%u", colour >> 24);
    return entry;
}

// In the relative form the centre follows from the edges the way the render
// finds the edges from the centre.
bool hCropProperties::readGeometry(const hCropEntry& entry, Geometry& geometry) const {
    std::array<double, 4> numbers{};
    for (size_t i = 0; i < numbers.size(); ++i)
        if (!qvrParseDouble(qvrTrim(entry.Fields[i]), numbers[i])) return complain(textNotANumber);
    if (!Crop.GetRelativeGUI()) {
        geometry = numbers;
    } else {
        const auto [left, right, top, bottom] = numbers;
        const EImageSize parent = parentSize();
        const double width = right - left;
        const double height = bottom - top;
        geometry = {width, height,
                    static_cast<double>(parent.Width / 2 - static_cast<long>(width) / 2) - left,
                    static_cast<double>(parent.Height / 2 - static_cast<long>(height) / 2) - top};
    }
    if (geometry[0] < smallestSide || geometry[1] < smallestSide) return complain(textTooSmall);
    return true;
}

bool hCropProperties::readColor(const hCropEntry& entry, std::uint32_t& colour) const {
    std::array<long, 3> channels{};
    long alpha = 0;
    if (!readWholes(entry.Color, ByteLimits, channels, EStringTable::Get(ObjectText::TextInvalidColor)) ||
        !readWhole(entry.Alpha, ByteLimits, alpha, EStringTable::Get(ObjectText::TextInvalidAlpha)))
        return false;
    colour = static_cast<std::uint32_t>(alpha << 24 | channels[0] << 16 | channels[1] << 8 | channels[2]);
    return true;
}

bool hCropProperties::Apply(const hCropEntry& entry) {
    Geometry geometry{};
    std::uint32_t colour = 0;
    if (!readGeometry(entry, geometry) || !checkName(entry.Name) || !readColor(entry, colour)) return false;
    if (entry.Name != Crop.GetName() && !Crop.SetName(entry.Name, true)) return false;
    Crop.GetWidthValue().SetKeyAuto(Frame, geometry[0], true, false);
    Crop.GetHeightValue().SetKeyAuto(Frame, geometry[1], true, false);
    Crop.GetCenterXValue().SetKeyAuto(Frame, geometry[2], true, false);
    Crop.GetCenterYValue().SetKeyAuto(Frame, geometry[3], true, false);
    Crop.SetBackgroundColor(colour);
    return true;
}
