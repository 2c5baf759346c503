#include "batch/EBatchTreeFile.h"

#include "foundation/iDataBase.h"
#include "foundation/qvrCException.h"
#include "foundation/qvrCTextFile.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <vector>

namespace {

// The format problems of a read, with their lines.
class BadLines : public qvrCTreeDataReport {
public:
    void OnBlockStart(qvrCTextFile&, long) override {}
    void OnBadFormat(qvrCTextFile& file, long line, const std::string&, int code) override {
        Lines.push_back(
            qvrFormat("%s: line %ld: %s.", file.GetName().c_str(), line, qvrCTreeData::BadFormatText(code)));
    }
    void OnNodeSaved(qvrCTextFile&, const qvrCTreeData&) override {}

    std::vector<std::string> Lines;
};

void reportFileError(hReport& report, const char* verb, const std::string& path, const std::string& error) {
    report.Report(qvrFormat("Cannot %s \"%s\": %s.", verb, path.c_str(), error.c_str()), hReportFailure);
}

} // namespace

bool EBatchTreeFile::Write(const std::string& path, const qvrCTreeData& root, hReport& report) {
    const std::string temporary = path + ".tmp";
    try {
        qvrCDiskTextFile file(temporary, qvrCDiskTextFile::Mode::Write);
        file.WriteText(iDataBase::Header);
        root.Save(file, "   ", nullptr);
        file.WriteText(iDataBase::Trailer);
        file.Close();
    } catch (const std::exception& error) {
        reportFileError(report, "write", path, qvrErrorText::FromException(error));
        std::remove(temporary.c_str());
        return false;
    }
    if (std::rename(temporary.c_str(), path.c_str()) == 0) return true;
    reportFileError(report, "write", path, qvrErrorText::FromCode(errno));
    std::remove(temporary.c_str());
    return false;
}

bool EBatchTreeFile::Read(const std::string& path, const char* rootName, qvrCTreeData& root,
                          hReport& report) {
    BadLines bad;
    try {
        qvrCDiskTextFile file(path, qvrCDiskTextFile::Mode::Read);
        long lines = 0;
        root.Load(file, lines, false, &bad);
    } catch (const std::exception& error) {
        reportFileError(report, "read", path, qvrErrorText::FromException(error));
        return false;
    }
    for (const std::string& line : bad.Lines)
        report.Report(line, hReportFailure);
    if (!bad.Lines.empty()) return false;
    if (root.GetName() == rootName) return true;
    report.Report(qvrFormat("\"%s\" is not the file wanted: its first block is \"%s\", not \"%s\".",
                            path.c_str(), root.GetName().c_str(), rootName),
                  hReportFailure);
    return false;
}
