#include "foundation/hReport.h"

#include "foundation/EUserInterface.h"

hReport::hReport(hReport* parent, std::string name)
    : Parent(parent), Root(parent ? parent->Root : nullptr), Name(std::move(name)),
      Path(parent ? parent->Path + "/" + Name : Name) {}

hReport::hReport(std::string name) : Parent(nullptr), Root(nullptr), Name(std::move(name)), Path(Name) {}

void hReport::Report(const std::string& text, int level) {
    if (Root) Root->Add({Name, Path, text, level});
}

void hReport::Report(EStringId textId, int level) {
    Report(EStringTable::Load(textId), level);
}

hReportRoot::hReportRoot(std::string name) : hReport(std::move(name)) {
    Root = this;
}

void hReportRoot::Add(hReportEntry entry) {
    if (entry.Level > WorstLevel) WorstLevel = entry.Level;
    Entries.push_back(std::move(entry));
}

void hReportRoot::ShowReport(const std::string& title, int level) const {
    if (Entries.empty()) return;
    EUserInterface::Get().ShowReport(title, level, Entries);
}
