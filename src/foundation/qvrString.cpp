#include "foundation/qvrString.h"

#include "foundation/qvrGeometry.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>

std::string qvrFormatV(const char* format, va_list args) {
    va_list copy;
    va_copy(copy, args);
    int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length <= 0) return {};
    std::string text(static_cast<size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, args);
    return text;
}

std::string qvrFormat(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::string text = qvrFormatV(format, args);
    va_end(args);
    return text;
}

namespace {

std::string formatArgument(const qvrMessageArg& arg, std::string_view spec) {
    if (const long* number = std::get_if<long>(&arg)) {
        std::string printfSpec = "%" + std::string(spec.empty() ? "ld" : spec);
        return qvrFormat(printfSpec.c_str(), *number);
    }
    return std::get<std::string>(arg);
}

} // namespace

std::string qvrFormatMessage(std::string_view format, const std::vector<qvrMessageArg>& args) {
    std::string out;
    out.reserve(format.size() + 32);
    for (size_t i = 0; i < format.size(); ++i) {
        char c = format[i];
        if (c != '%' || i + 1 >= format.size()) {
            out += c;
            continue;
        }
        char next = format[i + 1];
        if (next == '%') {
            out += '%';
            ++i;
            continue;
        }
        if (next < '1' || next > '9' || static_cast<size_t>(next - '1') >= args.size()) {
            out += c;
            continue;
        }
        const qvrMessageArg& arg = args[static_cast<size_t>(next - '1')];
        i += 1;
        std::string_view spec;
        if (i + 1 < format.size() && format[i + 1] == '!') {
            size_t close = format.find('!', i + 2);
            if (close != std::string_view::npos) {
                spec = format.substr(i + 2, close - i - 2);
                i = close;
            }
        }
        out += formatArgument(arg, spec);
    }
    return out;
}

namespace {
inline unsigned char lowerAscii(char c) {
    auto u = static_cast<unsigned char>(c);
    return (u >= 'A' && u <= 'Z') ? static_cast<unsigned char>(u + 32) : u;
}
} // namespace

int qvrCompareNoCase(std::string_view a, std::string_view b) {
    size_t n = a.size() < b.size() ? a.size() : b.size();
    for (size_t i = 0; i < n; ++i) {
        int d = lowerAscii(a[i]) - lowerAscii(b[i]);
        if (d) return d;
    }
    return (a.size() < b.size()) ? -1 : (a.size() > b.size() ? 1 : 0);
}

bool qvrEqualNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && qvrCompareNoCase(a, b) == 0;
}

bool qvrIsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

std::string_view qvrTrimLeft(std::string_view text) {
    size_t start = 0;
    while (start < text.size() && qvrIsBlank(text[start]))
        ++start;
    return text.substr(start);
}

std::string_view qvrTrimRight(std::string_view text) {
    size_t end = text.size();
    while (end > 0 && qvrIsBlank(text[end - 1]))
        --end;
    return text.substr(0, end);
}

std::string_view qvrTrim(std::string_view text) {
    return qvrTrimRight(qvrTrimLeft(text));
}

namespace {
// The whole text must be the number, with an optional sign.
template <typename Number> bool parseWhole(std::string_view text, Number& value) {
    if (text.empty()) return false;
    const char* first = text.data();
    const char* last = first + text.size();
    if (*first == '+') ++first;
    auto [end, error] = std::from_chars(first, last, value);
    return error == std::errc() && end == last && first != last;
}
} // namespace

bool qvrParseLong(std::string_view text, long& value) {
    return parseWhole(text, value);
}

bool qvrParseLong32(std::string_view text, long& value) {
    long read = 0;
    if (!parseWhole(text, read) || !qvrFitsIn32Bits(read)) return false;
    value = read;
    return true;
}

bool qvrParseDouble(std::string_view text, double& value) {
    return parseWhole(text, value);
}

std::string qvrFormatDouble(double value) {
    char buffer[32];
    char* end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
    return std::string(buffer, end);
}

std::vector<std::string> qvrSplit(std::string_view text, char separator) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (true) {
        size_t pos = text.find(separator, start);
        if (pos == std::string_view::npos) {
            parts.emplace_back(text.substr(start));
            return parts;
        }
        parts.emplace_back(text.substr(start, pos - start));
        start = pos + 1;
    }
}
