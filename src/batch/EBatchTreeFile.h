#pragma once
// The batch layer's own files (batch lists, farm runs): one tree below a root
// block of their own, in the envelope of the database files. A write goes to a
// temporary file first, so a reader never sees half a file.

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"

#include <string>

namespace EBatchTreeFile {
// False, with the reason in the report, when the file could not be written.
bool Write(const std::string& path, const qvrCTreeData& root, hReport& report);
// Reads the file into `root`; false, with the lines that don't parse in the
// report, when it can't be read, doesn't parse or has another root than `rootName`.
bool Read(const std::string& path, const char* rootName, qvrCTreeData& root, hReport& report);
} // namespace EBatchTreeFile
