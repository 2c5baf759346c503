#include "imaging/EAspect.h"

#include <utility>

const EAspect* EAspect::first = nullptr;
long EAspect::count = 0;

EAspect::EAspect(double aspectValue, std::string aspectName)
    : value(aspectValue), name(std::move(aspectName)), next(first) {
    first = this;
    ++count;
}

namespace {
// In this order, so that the list runs from "HDTV" back to "normal".
const EAspect normal(1.0, "normal");
const EAspect pal(1.06667, "PAL");
const EAspect ntsc(0.9, "NTSC");
const EAspect hdtv(1.0, "HDTV");
} // namespace
