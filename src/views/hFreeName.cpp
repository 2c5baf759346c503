#include "views/hFreeName.h"

#include "foundation/qvrString.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace {

bool isDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(),
                                        [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
}

} // namespace

std::string hFreeName(const std::string& name, const std::function<bool(const std::string&)>& isTaken) {
    if (!isTaken(name)) return name;
    std::string stem = name;
    long next = 1;
    const size_t dot = stem.rfind('.');
    if (dot != std::string::npos && dot + 1 == stem.size()) {
        stem.erase(dot);
    } else if (dot != std::string::npos && isDigits(std::string_view(stem).substr(dot + 1))) {
        next = std::strtol(stem.c_str() + dot + 1, nullptr, 10) + 1;
        stem.erase(dot);
    }
    for (;; ++next) {
        std::string candidate = qvrFormat("%s.%ld", stem.c_str(), next);
        if (!isTaken(candidate)) return candidate;
    }
}
