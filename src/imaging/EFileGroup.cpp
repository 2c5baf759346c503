#include "imaging/EFileGroup.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"

#include <algorithm>
#include <filesystem>
#include <fnmatch.h>
#include <functional>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace {

// The largest number a group can hold.
constexpr std::uint64_t LargestFileNumber = std::numeric_limits<std::uint32_t>::max();

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The value of the digits at the start of `text`, and their count; a value
// too large for 64 bits stays at the largest one.
std::uint64_t parseDigits(std::string_view text, size_t& count) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t value = 0;
    for (count = 0; count < text.size() && isDigit(text[count]); ++count) {
        auto digit = static_cast<std::uint64_t>(text[count] - '0');
        value = value > (largest - digit) / 10 ? largest : value * 10 + digit;
    }
    return value;
}

// One piece of a file name: a maximal run of digits, or the text between such runs.
struct FileNameToken {
    // Numbers sort before text.
    enum class Kind { Number, Text };

    Kind kind;
    std::string text;
    std::uint64_t value = 0; // numbers only
};

using FileNameTokens = std::vector<FileNameToken>;

FileNameTokens tokenize(std::string_view name) {
    FileNameTokens tokens;
    for (size_t start = 0, end = 0; start < name.size(); start = end) {
        bool number = isDigit(name[start]);
        for (end = start; end < name.size() && isDigit(name[end]) == number; ++end) {
        }
        FileNameToken token{number ? FileNameToken::Kind::Number : FileNameToken::Kind::Text,
                            std::string(name.substr(start, end - start))};
        size_t digits = 0;
        if (number) token.value = parseDigits(token.text, digits);
        tokens.push_back(std::move(token));
    }
    return tokens;
}

int compareTokens(const FileNameToken& a, const FileNameToken& b) {
    if (a.kind != b.kind) return a.kind < b.kind ? -1 : 1;
    if (a.kind == FileNameToken::Kind::Text) return qvrCompareNoCase(a.text, b.text);
    return a.value < b.value ? -1 : (a.value > b.value ? 1 : 0);
}

// Shorter token lists first, then token by token. Names that differ only in
// case or in leading zeros are the same name here.
struct TokenOrder {
    bool operator()(const FileNameTokens& a, const FileNameTokens& b) const {
        if (a.size() != b.size()) return a.size() < b.size();
        for (size_t i = 0; i < a.size(); ++i)
            if (int order = compareTokens(a[i], b[i])) return order < 0;
        return false;
    }
};

using SortedNames = std::set<FileNameTokens, TokenOrder>;

bool sameText(const FileNameToken& a, const FileNameToken& b) {
    return a.kind == FileNameToken::Kind::Text && qvrEqualNoCase(a.text, b.text);
}

// A sequence while the sorted names are walked: the number at token `index`
// counts from `firstValue` to `lastValue`; `width` is its digit count, or 0
// once two names differ in it.
struct CountingRun {
    const FileNameTokens* first;
    size_t index;
    std::uint64_t firstValue;
    std::uint64_t lastValue;
    size_t width;
};

bool countsOn(std::uint64_t previous, const FileNameToken& token) {
    return previous < LargestFileNumber && token.value == previous + 1;
}

// Two neighbours begin a sequence when they differ in exactly one number, by one.
std::optional<CountingRun> StartGroup(const FileNameTokens& first, const FileNameTokens& next) {
    if (first.size() != next.size()) return std::nullopt;
    std::optional<size_t> counting;
    for (size_t i = 0; i < first.size(); ++i) {
        if (first[i].kind != next[i].kind) return std::nullopt;
        if (first[i].kind == FileNameToken::Kind::Text) {
            if (!sameText(first[i], next[i])) return std::nullopt;
        } else if (countsOn(first[i].value, next[i])) {
            if (counting) return std::nullopt;
            counting = i;
        }
    }
    if (!counting) return std::nullopt;
    const std::string& firstDigits = first[*counting].text;
    const std::string& nextDigits = next[*counting].text;
    size_t width = firstDigits.size() == nextDigits.size() ? firstDigits.size() : 0;
    return CountingRun{&first, *counting, first[*counting].value, next[*counting].value, width};
}

// Whether token `i` of a further name fits the run: the same text, the next
// number at the counting place, the first name's number elsewhere.
bool continuesRun(const CountingRun& run, size_t i, const FileNameToken& token) {
    const FileNameToken& first = (*run.first)[i];
    if (first.kind != token.kind) return false;
    if (first.kind == FileNameToken::Kind::Text) return sameText(first, token);
    return i == run.index ? countsOn(run.lastValue, token) : token.value == first.value;
}

// The next name continues the sequence when only the counting number moved on, by one.
bool ExtendGroup(CountingRun& run, const FileNameTokens& following) {
    const FileNameTokens& first = *run.first;
    if (first.size() != following.size()) return false;
    for (size_t i = 0; i < first.size(); ++i)
        if (!continuesRun(run, i, following[i])) return false;
    ++run.lastValue;
    if (run.width && following[run.index].text.size() != run.width) run.width = 0;
    return true;
}

std::string joinTokens(FileNameTokens::const_iterator begin, FileNameTokens::const_iterator end) {
    std::string text;
    for (auto token = begin; token != end; ++token)
        text += token->text;
    return text;
}

EFileGroup MakeGroup(const CountingRun& run) {
    auto counting = run.first->begin() + static_cast<std::ptrdiff_t>(run.index);
    return EFileGroup(joinTokens(run.first->begin(), counting), joinTokens(counting + 1, run.first->end()),
                      static_cast<std::uint32_t>(run.width), static_cast<std::uint32_t>(run.firstValue),
                      static_cast<std::uint32_t>(run.lastValue));
}

// Walks the names in order and hands over each sequence of at least two
// names; stops when `found` answers false.
void groupNames(const SortedNames& names, const std::function<bool(const EFileGroup&)>& found) {
    auto first = names.begin();
    while (first != names.end()) {
        auto next = std::next(first);
        if (next == names.end()) return;
        std::optional<CountingRun> run = StartGroup(*first, *next);
        if (!run) {
            first = next;
            continue;
        }
        auto following = std::next(next);
        while (following != names.end() && ExtendGroup(*run, *following))
            ++following;
        if (!found(MakeGroup(*run))) return;
        first = following;
    }
}

// The names of the files in `directory` that match `wildcard`, in byte order,
// so that of two names that sort as one the same is kept on every run.
bool listFiles(const std::filesystem::path& directory, const std::string& wildcard,
               std::vector<std::string>& names, std::string& reason) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored;
        if (entry->is_directory(ignored)) continue;
        std::string name = entry->path().filename().string();
        if (::fnmatch(wildcard.c_str(), name.c_str(), FNM_CASEFOLD) == 0) names.push_back(std::move(name));
    }
    if (error) {
        reason = error.message();
        return false;
    }
    std::sort(names.begin(), names.end());
    return true;
}

std::string doublePercentSigns(const std::string& text) {
    std::string doubled;
    for (char c : text)
        doubled += c == '%' ? std::string("%%") : std::string(1, c);
    return doubled;
}

void readFileNumber(const qvrCTreeData& section, const char* key, std::uint32_t& number) {
    long value = 0;
    if (section.GetLong(key, value) && value >= 0 && static_cast<std::uint64_t>(value) <= LargestFileNumber)
        number = static_cast<std::uint32_t>(value);
}

void readText(const qvrCTreeData& section, const char* key, std::string& text) {
    if (const std::string* value = section.GetText(key)) text = *value;
}

} // namespace

EFileGroup::EFileGroup(std::string head, std::string tail, std::uint32_t numLen, std::uint32_t min,
                       std::uint32_t max)
    : Head(std::move(head)), Tail(std::move(tail)), NumLen(numLen), Min(min), Max(max) {}

std::string EFileGroup::GetFileNamePattern() const {
    std::string number = NumLen > 0 ? qvrFormat("%%0%ldld", static_cast<long>(NumLen)) : "%ld";
    return doublePercentSigns(Head) + number + doublePercentSigns(Tail);
}

std::string EFileGroup::GetFileName(long number) const {
    return qvrFormat(GetFileNamePattern().c_str(), number);
}

bool EFileGroup::Matches(std::string_view fileName, long& number) const {
    number = -1;
    if (fileName.size() < Head.size() || !qvrEqualNoCase(fileName.substr(0, Head.size()), Head)) return false;
    std::string_view rest = fileName.substr(Head.size());
    size_t digits = 0;
    std::uint64_t value = parseDigits(rest, digits);
    if (NumLen > 0 ? digits != NumLen : digits == 0) return false;
    rest.remove_prefix(digits);
    if (value < Min || value > Max || !qvrEqualNoCase(rest, Tail)) return false;
    number = static_cast<long>(value);
    return true;
}

void EFileGroup::Save(qvrCTreeData& section) const {
    section.SetLong("Min", static_cast<long>(Min));
    section.SetLong("Max", static_cast<long>(Max));
    section.SetLong("NumLen", static_cast<long>(NumLen));
    section.SetText("Head", Head);
    section.SetText("Tail", Tail);
}

void EFileGroup::Load(const qvrCTreeData& section, hReport& report) {
    readFileNumber(section, "Min", Min);
    readFileNumber(section, "Max", Max);
    readFileNumber(section, "NumLen", NumLen);
    readText(section, "Head", Head);
    readText(section, "Tail", Tail);
    if (Min > Max) {
        std::swap(Min, Max);
        report.Report("Minimum file number was greater than maximum; fixed.", hReportWarning);
    }
}

bool EFileGroupScanner::ScanDirectory(const std::string& patternPath, std::string& reason) {
    std::filesystem::path path(patternPath);
    std::filesystem::path directory = path.has_parent_path() ? path.parent_path() : ".";
    std::string wildcard = path.has_filename() ? path.filename().string() : "*";
    std::vector<std::string> files;
    if (!listFiles(directory, wildcard, files, reason)) return false;
    SortedNames names;
    for (const std::string& file : files)
        if (FileNameTokens tokens = tokenize(file); tokens.size() >= 2) names.insert(std::move(tokens));
    groupNames(names, [this](const EFileGroup& group) { return OnGroupFound(group); });
    return true;
}
