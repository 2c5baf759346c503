#include "views/CSplineBarCollection.h"

#include "foundation/EStringTable.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "model/iElement.h"
#include "model/iProject.h"
#include "views/CSplineBarTree.h"

#include <algorithm>
#include <new>

namespace {

enum : EStringId { textDefaultName = 46600, textInvalidValue = 46636 };

// A stored check state: anything but 0 or 1 counts as 0.
int readCheck(const std::string& text) {
    long state = 0;
    return qvrParseLong(text, state) && state == 1 ? 1 : 0;
}

} // namespace

CSplineBarCollection::CSplineBarCollection(CSplineBarTree& tree, std::string name)
    : Name(std::move(name)), Tree(tree) {}

bool CSplineBarCollection::IsShown() const {
    return &Tree.GetCurrent() == this;
}

void CSplineBarCollection::Load(const qvrCTreeData& block, hReport& report) {
    ElementInfos.clear();
    if (const std::string* top = block.GetText("TopVisible")) TopVisible = *top;
    const qvrCTreeData* entries = block.Find("Entries");
    if (!entries) return;
    for (const auto& [key, child] : entries->GetChildren()) {
        if (child->GetName().empty()) continue;
        ElementInfo info;
        info.Name = child->GetName();
        if (!qvrTreeText::ToBool(child->Value, info.Expanded))
            report.Report(qvrFormat(EStringTable::Load(textInvalidValue).c_str(), child->Value.c_str(),
                                    child->GetName().c_str()),
                          hReportNote);
        for (const auto& [valueKey, value] : child->GetChildren())
            info.Checks[value->GetName()] = readCheck(value->Value);
        ElementInfos.push_back(std::move(info));
    }
}

void CSplineBarCollection::Save(qvrCTreeData& block) const {
    if (IsShown()) {
        block.SetText("TopVisible", Tree.TopVisible);
        saveInfos(block, Tree.Snapshot());
        return;
    }
    block.SetText("TopVisible", TopVisible);
    saveInfos(block, ElementInfos);
}

void CSplineBarCollection::saveInfos(qvrCTreeData& block, const std::vector<ElementInfo>& infos) {
    qvrCTreeData* entries = block.CreateChild("Entries");
    for (const ElementInfo& info : infos) {
        if (info.Name.empty()) continue;
        qvrCTreeData* entry = entries->CreateChild(info.Name);
        entry->Value = qvrTreeText::FromBool(info.Expanded);
        for (const auto& [valueName, state] : info.Checks)
            entry->SetLong(valueName, state);
    }
}

void CSplineBarCollection::PopulateTree() {
    for (const ElementInfo& info : ElementInfos)
        populateEntry(info);
    ElementInfos.clear();
    Tree.TopVisible = TopVisible;
}

void CSplineBarCollection::populateEntry(const ElementInfo& info) {
    iElement* element = Tree.GetProject().FindElement(info.Name);
    if (!element) {
        qvrTrace("*** ERROR[CSplineBarCollection::ElementInfo::PopulateTree()]: An element of name \"%s\" no "
                 "longer exists !\n",
                 info.Name.c_str());
        return;
    }
    try {
        CSplineBarElement* entry = Tree.AddEntry(element);
        for (const auto& value : entry->GetValues()) {
            auto state = info.Checks.find(value->GetValue()->GetName());
            if (state != info.Checks.end()) value->SetCheck(state->second == 1);
        }
        if (info.Expanded) entry->Expanded = true;
    } catch (const std::bad_alloc&) {
        qvrTrace(
            "*** WARNING[CSplineBarCollection::ElementInfo::PopulateTree()]: CMemory exception caught !\n");
    }
}

// ---------------------------------------------------------------- the default collection

CSplineBarCollectionAll::CSplineBarCollectionAll(CSplineBarTree& tree)
    : CSplineBarCollection(tree, EStringTable::Load(textDefaultName)), iNotifier(&tree.GetProject()) {}

void CSplineBarCollectionAll::PopulateTree() {
    CSplineBarCollection::PopulateTree();
    for (iElement* element : Tree.GetProject().GetElements())
        Tree.AddEntry(element);
}

iNotifyAnswer CSplineBarCollectionAll::OnEvent(long code, const iEventArgument& argument) {
    switch (code) {
    case iElement::event_child_linked:
        if (IsShown() && Tree.AddEntry(static_cast<iElement*>(argument.Object)) && ComplexDepth == 0)
            Tree.EntriesChanged();
        break;
    case iElement::event_child_unlinked:
        onElementRemoved(argument.Object);
        break;
    case iProject::event_complex_begin:
        ++ComplexDepth;
        qvrTrace("*** NOTE[CSplineBarCollectionAll::OnObjectEvent()]: Complex event started.\n");
        break;
    case iProject::event_complex_end:
        qvrTrace("*** NOTE[CSplineBarCollectionAll::OnObjectEvent()]: Complex event ended.\n");
        if (ComplexDepth > 0 && --ComplexDepth == 0) synchronize();
        break;
    default:
        break;
    }
    return iNotifyAnswer::Keep;
}

void CSplineBarCollectionAll::onElementRemoved(const iBase* element) {
    if (!element) return;
    if (IsShown()) {
        Tree.RemoveEntry(Tree.FindEntry(static_cast<const iElement*>(element)));
        if (ComplexDepth == 0) Tree.EntriesChanged();
        return;
    }
    std::erase_if(ElementInfos, [element](const ElementInfo& info) {
        return qvrEqualNoCase(info.Name, element->GetName());
    });
}

void CSplineBarCollectionAll::synchronize() {
    if (!IsShown()) return;
    for (size_t i = Tree.GetEntries().size(); i-- > 0;) {
        const CSplineBarElement* entry = Tree.GetEntries()[i].get();
        if (!entry->GetElement()) Tree.RemoveEntry(entry);
    }
    for (iElement* element : Tree.GetProject().GetElements())
        Tree.AddEntry(element);
    Tree.EntriesChanged();
}
