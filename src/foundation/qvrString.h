#pragma once
// Text helpers shared by every subsystem: printf-style and numbered-placeholder
// formatting, comparisons without regard to case, trimming and strict number
// parsing. Pure functions, safe from any thread.

#include <cstdarg>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

std::string qvrFormat(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string qvrFormatV(const char* format, va_list args);

// An argument of the numbered style: "%1" takes it as text, "%1!ld!" as a number.
using qvrMessageArg = std::variant<std::string, long>;
// Replaces "%n" and "%n!fmt!" (n from 1 to 9) by the n-th argument; "%%" is a
// percent sign. A number without an argument stays as it is.
std::string qvrFormatMessage(std::string_view format, const std::vector<qvrMessageArg>& args);

// Compares as lower-case ASCII, byte by byte: negative, 0 or positive.
int qvrCompareNoCase(std::string_view a, std::string_view b);
bool qvrEqualNoCase(std::string_view a, std::string_view b);

struct qvrNoCaseLess {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const { return qvrCompareNoCase(a, b) < 0; }
};

bool qvrIsBlank(char c);
std::string_view qvrTrimLeft(std::string_view text);
std::string_view qvrTrimRight(std::string_view text);
std::string_view qvrTrim(std::string_view text);

// The whole text must be a decimal number with an optional sign.
bool qvrParseLong(std::string_view text, long& value);
// The same, refusing numbers outside the signed 32 bits that files of the
// platform's integers hold.
bool qvrParseLong32(std::string_view text, long& value);
// The whole text must be a number in the C locale.
bool qvrParseDouble(std::string_view text, double& value);
// The shortest text that qvrParseDouble reads back as the same double.
std::string qvrFormatDouble(double value);

// Splits at every occurrence of the separator; an empty text gives one empty part.
std::vector<std::string> qvrSplit(std::string_view text, char separator);
