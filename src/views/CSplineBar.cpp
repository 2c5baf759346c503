#include "views/CSplineBar.h"

#include "foundation/EStringTable.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "model/iElementGroup.h"
#include "model/iProject.h"
#include "views/CSplineBarSettings.h"

namespace {

enum : EStringId { textCoordsContext = 46631, textGroupsContext = 46632, textInvalidValue = 46636 };

// The events a project sends: its own and those of every object.
constexpr long FirstProjectEvent = iBase::event_modified;
constexpr long LastProjectEvent = iProject::event_element_changed;

} // namespace

CSplineBar::CSplineBar(iProject& project) : iNotifier(&project), Tree(project), View(project) {}

CSplineBar::~CSplineBar() {
    if (CSplineBarSettings::Get().GetBar() == this) CSplineBarSettings::Get().Attach(nullptr);
}

iNotifyAnswer CSplineBar::OnEvent(long code, const iEventArgument&) {
    HandleOnEvent(code);
    return iNotifyAnswer::Keep;
}

void CSplineBar::HandleOnEvent(long code) {
    if (code < FirstProjectEvent || code > LastProjectEvent) {
        qvrTrace("*** WARNING[CSplineBar::HandleOnEvent()]: Unknown project event !\n");
        return;
    }
    if (code == iProject::event_length_changed) View.UpdateWorld();
    // Names of elements and groups show in the entries' labels.
    if (code == iProject::event_element_changed || code == iElementGroup::event_group_changed)
        Tree.EntriesChanged();
}

void CSplineBar::Load(const qvrCTreeData& block, hReport& report) {
    qvrCTreeData* bad = nullptr;
    if (!block.GetLong("LeftSize", LeftSize, &bad) && bad)
        report.Report(qvrFormat(EStringTable::Load(textInvalidValue).c_str(), bad->Value.c_str(), "LeftSize"),
                      hReportWarning);
    if (const qvrCTreeData* coords = block.Find("Coords")) {
        hReport context(&report, EStringTable::Load(textCoordsContext));
        View.LoadSettings(*coords, context);
    }
    if (const qvrCTreeData* groups = block.Find("Groups")) {
        hReport context(&report, EStringTable::Load(textGroupsContext));
        Tree.Load(*groups, context);
    }
}

void CSplineBar::Save(qvrCTreeData& block) const {
    block.SetLong("LeftSize", LeftSize);
    View.SaveSettings(*block.CreateChild("Coords"));
    Tree.Save(*block.CreateChild("Groups"));
}

void CSplineBar::Reset() {
    Tree.Reset();
}
