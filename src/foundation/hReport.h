#pragma once
// The report tree of loads and saves. A context (hReport) names where a problem
// lies; every entry lands in its root (hReportRoot) with the context's path, in
// the order it was reported. A load or save keeps going and shows the whole
// list at the end. Not thread-safe: a report belongs to the operation's thread.

#include "foundation/EStringTable.h"

#include <string>
#include <vector>

class hReportRoot;

// Levels of an entry.
enum hReportLevel : int {
    hReportNote = 0,    // something that could be mended
    hReportWarning = 1, // something was skipped
    hReportError = 2,   // an object or block was lost
    hReportGrave = 3,   // grave error
    hReportFailure = 4  // the whole operation failed
};

struct hReportEntry {
    std::string Context;
    std::string Path;
    std::string Text;
    int Level = 0;
};

class hReport {
public:
    // A context below `parent` (which may be 0: such a context swallows reports).
    hReport(hReport* parent, std::string name);
    virtual ~hReport() = default;
    hReport(const hReport&) = delete;
    hReport& operator=(const hReport&) = delete;

    void Report(const std::string& text, int level);
    void Report(EStringId textId, int level);

    hReport* Parent;
    hReportRoot* Root;
    std::string Name;
    std::string Path;

protected:
    explicit hReport(std::string name); // for the root
};

class hReportRoot : public hReport {
public:
    explicit hReportRoot(std::string name);

    int GetCount() const { return static_cast<int>(Entries.size()); }
    int GetWorstLevel() const { return WorstLevel; }
    const std::vector<hReportEntry>& GetEntries() const { return Entries; }

    // Hands the entries to the user-interface hook under a title; an empty
    // report shows nothing.
    void ShowReport(const std::string& title, int level) const;

    void Add(hReportEntry entry);

private:
    std::vector<hReportEntry> Entries;
    int WorstLevel = -1;
};
