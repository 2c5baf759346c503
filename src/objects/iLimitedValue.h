#pragma once
// An animated value with fixed limits, either of which may be absent: the
// parameters of render objects whose range the user can't leave (a scale of
// at least 10 pixels, an opacity of 0 to 100 percent, an on/off switch of
// -1 to 1). Reading folds the curve into the limits; the keys themselves stay
// as entered. Threads as iActiveValue.

#include "model/iActiveValue.h"
#include "model/iParameter.h"

class iLimitedValue : public iActiveValue {
public:
    using Limits = iParameterLimits;

    // The value that a parameter describes, with its limits, linked into `owner` at once.
    iLimitedValue(iActiveValueOwner* owner, const iParameter& parameter)
        : iActiveValue(owner, parameter), Range(parameter.Limits) {}
    // The same under another name, belonging to no element yet.
    iLimitedValue(std::string name, const iParameter& parameter)
        : iActiveValue(std::move(name), parameter), Range(parameter.Limits) {}

    const double* GetMinLimit() const override { return Range.Min ? &*Range.Min : nullptr; }
    const double* GetMaxLimit() const override { return Range.Max ? &*Range.Max : nullptr; }

    // An on/off switch: 1.0 on, -1.0 off.
    static constexpr Limits Switch{-1.0, 1.0};

private:
    const Limits Range;
};
