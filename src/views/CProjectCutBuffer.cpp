#include "views/CProjectCutBuffer.h"

#include "foundation/FoundationText.h"
#include "foundation/hReport.h"
#include "foundation/iDataBase.h"
#include "foundation/qvrCTextFile.h"
#include "foundation/qvrCTreeData.h"
#include "model/iElement.h"
#include "model/iElementData.h"
#include "model/iProject.h"
#include "views/hFreeName.h"

#include <set>

namespace {

using NameSet = std::set<std::string, qvrNoCaseLess>;

constexpr const char* ElementsBlock = "Elements";

std::string nameInDescriptor(const std::string& descriptor) {
    std::string className, typeName, objectName;
    qvrTreeText::ToDescriptor(descriptor, className, typeName, objectName);
    return objectName;
}

// Removes the link keys of a "Parents" or "Childs" block that lead out of the set.
void dropOutsideLinks(qvrCTreeData& block, const char* name, const NameSet& inside) {
    qvrCTreeData* links = block.Find(name);
    if (!links) return;
    std::vector<qvrCTreeData*> outside;
    for (const auto& [key, entry] : links->GetChildren())
        if (!inside.count(nameInDescriptor(entry->Value))) outside.push_back(entry.get());
    for (qvrCTreeData* entry : outside)
        links->RemoveChild(entry);
    if (links->IsEmpty()) block.RemoveChild(links);
}

// What a copy keeps of an element's block: links and grid inside the set, no windows.
void keepInside(qvrCTreeData& block, const NameSet& inside) {
    dropOutsideLinks(block, "Parents", inside);
    dropOutsideLinks(block, "Childs", inside);
    if (const std::string* grid = block.GetText("Grid"); grid && !inside.count(nameInDescriptor(*grid)))
        block.RemoveChild(block.Find("Grid"));
    block.RemoveChild(block.Find("Windows"));
    if (qvrCTreeData* common = block.Find("Common")) common->SetBool("Properties", false);
}

// The "Elements" block of a readable buffer, or null.
const qvrCTreeData* findElements(const qvrCTreeData& root) {
    if (root.GetName() != iDataBase::RootName) return nullptr;
    if (!qvrEqualNoCase(root.Value, iDataBase::CurrentVersion) &&
        !qvrEqualNoCase(root.Value, iDataBase::OldVersion))
        return nullptr;
    const qvrCTreeData* section = root.Find(CProjectCutBuffer::SectionName);
    const qvrCTreeData* elements = section ? section->Find(ElementsBlock) : nullptr;
    return elements && !elements->IsEmpty() ? elements : nullptr;
}

// Elements that a link or grid of the buffer names but that have no block of their own.
void reportStrangers(const iProject& scratch, const qvrCTreeData& elements, hReport& report) {
    for (iElement* element : scratch.GetElements())
        if (!elements.Find(element->GetName()))
            report.Report(
                qvrFormatMessage("Bad object descriptor \"%1\"", {iElementData::Descriptor(*element)}),
                hReportError);
}

// Gives each element of the scratch project a name that is free in the target.
void renameForTarget(iProject& scratch, const iProject& target) {
    NameSet chosen;
    for (iElement* element : scratch.GetElements()) {
        auto taken = [&](const std::string& name) {
            const iElement* holder = scratch.FindElement(name);
            return target.FindElement(name) || chosen.count(name) || (holder && holder != element);
        };
        const std::string name = hFreeName(element->GetName(), taken);
        chosen.insert(name);
        // Renaming tells the children, so that values named after the element follow it.
        element->SetName(name, true);
    }
}

void forward(const hReportRoot& from, hReportRoot& to) {
    for (const hReportEntry& entry : from.GetEntries())
        to.Add(entry);
}

} // namespace

std::string CProjectCutBuffer::Write(const std::vector<iElement*>& elements) {
    NameSet inside;
    for (const iElement* element : elements)
        inside.insert(element->GetName());
    qvrCTreeData root(iDataBase::RootName, iDataBase::CurrentVersion);
    qvrCTreeData* blocks = root.CreateChild(SectionName)->CreateChild(ElementsBlock);
    hReportRoot report("Copy");
    for (iElement* element : elements) {
        qvrCTreeData& block = *blocks->CreateChild(element->GetName());
        iElementData::SaveData(*element, block, report);
        keepInside(block, inside);
    }
    qvrCMemoryTextFile file;
    file.WriteText(iDataBase::Header);
    root.Save(file, "   ", nullptr);
    file.WriteText(iDataBase::Trailer);
    return file.GetText();
}

std::unique_ptr<qvrCTreeData> CProjectCutBuffer::Read(const std::string& text, iProject& project,
                                                      CPoint offset, hReportRoot& report) {
    qvrCMemoryTextFile file(text, SectionName);
    qvrCTreeData root;
    long lines = 0;
    root.Load(file, lines, false, nullptr);
    const qvrCTreeData* elements = findElements(root);
    if (!elements) {
        report.Report(FoundationText::FileHasNoData, hReportFailure);
        return nullptr;
    }
    hReportRoot reading(SectionName);
    iProject scratch;
    for (const auto& [key, block] : elements->GetChildren())
        iElementData::Create(*block, reading, &scratch);
    reportStrangers(scratch, *elements, reading);
    forward(reading, report);
    if (reading.GetWorstLevel() >= hReportError) return nullptr;

    renameForTarget(scratch, project);
    auto blocks = std::make_unique<qvrCTreeData>(ElementsBlock);
    for (iElement* element : scratch.GetElements()) {
        const CPoint place = element->GetPanePosition();
        element->SetPanePosition({place.x + offset.x, place.y + offset.y}, false);
        iElementData::SaveData(*element, *blocks->CreateChild(element->GetName()), report);
    }
    return blocks;
}
