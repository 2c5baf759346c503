#pragma once
// Helpers of the tests of the projector definitions: files written by hand in
// a scratch directory, and the texts of a load report.

#include "foundation/ScratchDirectory.h"
#include "foundation/hReport.h"

#include <fstream>
#include <string>
#include <vector>

namespace qvrTest {

inline std::string WriteTextFile(const ScratchDirectory& directory, const std::string& name,
                                 const std::string& text) {
    const std::string path = directory.File(name);
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

// "level: text" of every entry, in order.
inline std::vector<std::string> ReportLines(const hReportRoot& report) {
    std::vector<std::string> lines;
    for (const hReportEntry& entry : report.GetEntries())
        lines.push_back(std::to_string(entry.Level) + ": " + entry.Text);
    return lines;
}

} // namespace qvrTest
