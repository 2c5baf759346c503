#pragma once
// An animated value with fixed limits, either of which may be absent: the
// parameters of render objects whose range the user can't leave (a scale of
// at least 10 pixels, an opacity of 0 to 100 percent, an on/off switch of
// -1 to 1). Reading folds the curve into the limits; the keys themselves stay
// as entered. Threads as iActiveValue.

#include "model/iActiveValue.h"

#include <optional>

class iLimitedValue : public iActiveValue {
public:
    struct Limits {
        std::optional<double> Min;
        std::optional<double> Max;
    };

    // Linked into `owner` at once.
    iLimitedValue(iActiveValueOwner* owner, std::string name, double initialValue, bool constantWanted,
                  Limits limits)
        : iActiveValue(owner, std::move(name), initialValue, constantWanted), Range(limits) {}
    // Belongs to no element until it is linked.
    iLimitedValue(std::string name, double initialValue, bool constantWanted, Limits limits)
        : iActiveValue(std::move(name), initialValue, constantWanted), Range(limits) {}

    const double* GetMinLimit() const override { return Range.Min ? &*Range.Min : nullptr; }
    const double* GetMaxLimit() const override { return Range.Max ? &*Range.Max : nullptr; }

    // An on/off switch: 1.0 on, -1.0 off.
    static constexpr Limits Switch{-1.0, 1.0};

private:
    const Limits Range;
};
