#include "projector/LVitrea.h"

#include "foundation/qvrCException.h"
#include "foundation/qvrCTextFile.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"

#include <array>
#include <charconv>

bool LVitrea::readDefinitionFile(const std::string& name, const EntryReader& take, std::string& problem) {
    try {
        qvrCDiskTextFile file(name, qvrCDiskTextFile::Mode::Read);
        std::string line;
        while (file.ReadLine(line)) {
            if (line.empty() || line.front() == '#') continue;
            const size_t equals = line.find('=');
            if (equals == std::string::npos) continue;
            const std::string_view text(line);
            take(qvrTrim(text.substr(0, equals)), qvrTrim(text.substr(equals + 1)));
        }
    } catch (const std::exception& error) {
        problem = qvrErrorText::FromException(error);
        return false;
    }
    return true;
}

bool LVitrea::writeDefinitionFile(const std::string& name, const std::string& text, std::string& problem) {
    try {
        qvrCDiskTextFile file(name, qvrCDiskTextFile::Mode::Write);
        file.WriteText(text);
        file.Close();
    } catch (const std::exception& error) {
        problem = qvrErrorText::FromException(error);
        return false;
    }
    return true;
}

std::string LVitrea::keyLine(const char* key, const std::string& value) {
    return qvrFormatMessage(" %1 = %2\n", {std::string(key), value});
}

std::string LVitrea::indexedLine(const char* key, std::size_t index, const std::string& data) {
    return qvrFormatMessage(" %1 = %2!02ld!: %3\n", {std::string(key), static_cast<long>(index), data});
}

bool LVitrea::splitIndexed(std::string_view value, std::size_t& index, std::string_view& data) {
    const size_t colon = value.find(':');
    if (colon == std::string_view::npos) return false;
    long number = 0;
    if (!qvrParseLong(qvrTrim(value.substr(0, colon)), number)) return false;
    if (number < 0 || number >= static_cast<long>(ProjectorCount)) return false;
    index = static_cast<std::size_t>(number);
    data = qvrTrim(value.substr(colon + 1));
    return true;
}

bool LVitrea::ParseNumbers(std::string_view text, char separator, long* values, std::size_t count) {
    const std::vector<std::string> parts = qvrSplit(text, separator);
    if (parts.size() != count) return false;
    for (std::size_t i = 0; i < count; ++i)
        if (!qvrParseLong32(qvrTrim(parts[i]), values[i])) return false;
    return true;
}

std::string LVitrea::formatDouble(double value) {
    std::array<char, 32> buffer;
    char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return std::string(buffer.data(), end);
}

bool LVitrea::readDouble(const qvrCTreeData& block, std::string_view key, double& value) {
    const std::string* text = block.GetText(key);
    double read = 0.0;
    if (!text || !qvrParseDouble(*text, read)) return false;
    value = read;
    return true;
}
