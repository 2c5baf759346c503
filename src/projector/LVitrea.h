#pragma once
// The common base of the projector array's definitions: the calibration, the
// metrics and the output files of the 18 projectors, and the configuration
// that holds all three. Each is stored in the project as a block of its own
// inside the saver's block; the three parts can also be exchanged as small
// text files of "key = value" lines, whose reading and writing rules are
// shared here.
//
// Failures: loads go on past bad entries and collect them in the report;
// the file operations return false with a text for the user. File calls may
// throw inside and are caught here. An object belongs to one thread; a render
// run only reads it.

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

class hReport;
class qvrCTreeData;

class LVitrea {
public:
    // The array is built of 5 windows in a column and 13 in a row.
    static constexpr std::size_t ProjectorCount = 18;

    virtual ~LVitrea() = default;

    // Reads the object's own block from `section`, the block that holds it,
    // and reports what it can't read.
    virtual void Load(const qvrCTreeData& section, hReport& report) = 0;
    // Writes the object's own block into `section`.
    virtual void Save(qvrCTreeData& section) const = 0;

    // Reads exactly `count` numbers separated by `separator`, blanks allowed
    // around each; false when any of them doesn't parse.
    static bool ParseNumbers(std::string_view text, char separator, long* values, std::size_t count);

protected:
    // Called with trimmed key and value of every line that holds a "=".
    using EntryReader = std::function<void(std::string_view key, std::string_view value)>;

    // Reads a definition file line by line; false, with the platform's error
    // in `problem`, only when it can't be opened.
    static bool readDefinitionFile(const std::string& name, const EntryReader& take, std::string& problem);
    // Writes the whole text to the file; false with the platform's error.
    static bool writeDefinitionFile(const std::string& name, const std::string& text, std::string& problem);

    // " KEY = VALUE\n"
    static std::string keyLine(const char* key, const std::string& value);
    // " KEY = NN: DATA\n", the index written with two digits.
    static std::string indexedLine(const char* key, std::size_t index, const std::string& data);
    // Splits "NN: DATA" at the first ":"; false unless the index is a number below ProjectorCount.
    static bool splitIndexed(std::string_view value, std::size_t& index, std::string_view& data);

    // Doubles in project blocks: the shortest text that reads back the same.
    static std::string formatDouble(double value);
    static bool readDouble(const qvrCTreeData& block, std::string_view key, double& value);
};
