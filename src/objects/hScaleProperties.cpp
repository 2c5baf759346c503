#include "objects/hScaleProperties.h"

#include "foundation/hTruncate.h"
#include "foundation/qvrString.h"
#include "objects/imodScale.h"

#include <algorithm>

namespace {

// An old width, height or factor below this keeps no aspect; an entered factor is raised to it.
constexpr double smallestMeasure = 0.00001;

const iParameterLimits& limitsOf(const iActiveValue& value) {
    return imodScale::Parameters.Get(value.GetName()).Limits;
}

} // namespace

hScaleProperties::hScaleProperties(imodScale& scale, long frame)
    : hPropertyPage(scale), Scale(scale), Frame(frame) {}

hScaleProperties::Axis hScaleProperties::horizontal() const {
    return {Scale.GetWidthValue(), &EImageSize::Width, Scale.GetHeightValue(), &EImageSize::Height};
}

hScaleProperties::Axis hScaleProperties::vertical() const {
    return {Scale.GetHeightValue(), &EImageSize::Height, Scale.GetWidthValue(), &EImageSize::Width};
}

bool hScaleProperties::CommitWidth(const std::string& text) {
    return commitSide(text, horizontal());
}

bool hScaleProperties::CommitHeight(const std::string& text) {
    return commitSide(text, vertical());
}

bool hScaleProperties::CommitFactorX(const std::string& text) {
    return commitFactor(text, horizontal());
}

bool hScaleProperties::CommitFactorY(const std::string& text) {
    return commitFactor(text, vertical());
}

// With the aspect locked the other side follows by the ratio of new to old.
bool hScaleProperties::commitSide(const std::string& text, const Axis& axis) {
    if (qvrTrim(text).empty()) return complain(ObjectText::TextNothingEntered);
    long side = 0;
    if (!readWhole(text, limitsOf(axis.Value), side, EStringTable::Get(ObjectText::TextSideTooSmall)))
        return false;
    const double entered = static_cast<double>(side);
    const double old = axis.Value.GetValue(Frame);
    if (Scale.GetLockAspect() && old > smallestMeasure)
        setKey(axis.Other, std::max(axis.Other.GetValue(Frame) * entered / old, *limitsOf(axis.Other).Min));
    setKey(axis.Value, entered);
    return true;
}

// With the aspect locked the other factor changes by as much as this one.
bool hScaleProperties::commitFactor(const std::string& text, const Axis& axis) {
    EImageSize parent;
    if (!needParentSize(parent)) return false;
    const std::string_view entered = qvrTrim(text);
    if (entered.empty()) return complain(ObjectText::TextNothingEntered);
    double factor = 0.0;
    if (!qvrParseDouble(entered, factor)) return complain(ObjectText::TextNotANumber);
    factor = std::max(factor, smallestMeasure);
    const double oldFactor = axis.Value.GetValue(Frame) / static_cast<double>(parent.*axis.Extent);
    if (Scale.GetLockAspect() && oldFactor >= smallestMeasure) {
        const double otherOld = axis.Other.GetValue(Frame) / static_cast<double>(parent.*axis.OtherExtent);
        setKey(axis.Other, sideOf(parent.*axis.OtherExtent, factor / oldFactor * otherOld, axis.Other));
    }
    setKey(axis.Value, sideOf(parent.*axis.Extent, factor, axis.Value));
    return true;
}

bool hScaleProperties::needParentSize(EImageSize& size) const {
    if (!Scale.GetFirstParent()) return complain(ObjectText::TextFactorNeedsParent);
    if (!queryParentSize(Frame, size) || size.IsEmpty()) return complain(ObjectText::TextParentWithoutSize);
    return true;
}

double hScaleProperties::sideOf(long parentExtent, double factor, const iActiveValue& value) {
    const double side = static_cast<double>(hTruncate(static_cast<double>(parentExtent) * factor));
    return std::max(side, *limitsOf(value).Min);
}

void hScaleProperties::setKey(iActiveValue& value, double side) const {
    value.SetKeyAuto(Frame, side, true, false);
}

std::string hScaleProperties::GetWidthText() const {
    return qvrFormat("%ld", Scale.GetTargetSize(Frame).Width);
}

std::string hScaleProperties::GetHeightText() const {
    return qvrFormat("%ld", Scale.GetTargetSize(Frame).Height);
}

std::string hScaleProperties::GetFactorXText() const {
    return factorText(horizontal());
}

std::string hScaleProperties::GetFactorYText() const {
    return factorText(vertical());
}

std::string hScaleProperties::factorText(const Axis& axis) const {
    EImageSize parent;
    if (!queryParentSize(Frame, parent) || parent.IsEmpty()) return {};
    return qvrFormat("%.2f", axis.Value.GetValue(Frame) / static_cast<double>(parent.*axis.Extent));
}

std::string hScaleProperties::GetParentText() const {
    return getParentLine(Frame);
}
