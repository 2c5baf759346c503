#pragma once
// A batch list kept in a file of its own, as the batch processor's "Save..."
// and "Load..." buttons write and read it: the jobs' blocks of the
// preferences below the root "qvrTessarine batch list". Main thread only.

#include "foundation/hReport.h"

#include <string>

namespace EBatchListFile {
constexpr const char* RootName = "qvrTessarine batch list";
constexpr const char* Version = "V1.10";

// Writes the whole list; false, with the reason in the report, when the file could not be written.
bool Save(const std::string& path, hReport& report);
// Replaces the list with the file's jobs. A file that can't be read or
// doesn't parse changes nothing, and the report says where it fails.
bool Load(const std::string& path, hReport& report);
} // namespace EBatchListFile
