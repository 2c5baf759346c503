#include "views/CObjectFrame.h"

#include "foundation/hMessageBox.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrTrace.h"
#include "model/iElement.h"
#include "model/iElementData.h"
#include "model/iProject.h"
#include "views/CObjectMergerView.h"
#include "views/CObjectSequenceView.h"
#include "views/CObjectView.h"
#include "views/CViewHost.h"
#include "views/CViewText.h"
#include "views/ioleConnector.h"

#include <map>

namespace {

template <class View> CObjectFrame::ViewMaker makerOf() {
    return [](CViewHost& host) { return std::make_unique<View>(host); };
}

std::map<std::string, CObjectFrame::ViewMaker>& viewMakers() {
    static std::map<std::string, CObjectFrame::ViewMaker> makers{
        {"CObjectView", makerOf<CObjectView>()},
        {"CObjectMergerView", makerOf<CObjectMergerView>()},
        {"CObjectSequenceView", makerOf<CObjectSequenceView>()},
    };
    return makers;
}

std::unique_ptr<CObjectView> makeView(const std::string& name, CViewHost& host) {
    auto it = viewMakers().find(name);
    return it == viewMakers().end() || !it->second ? nullptr : it->second(host);
}

} // namespace

void CObjectFrame::RegisterViewClass(const std::string& name, ViewMaker maker) {
    viewMakers()[name] = std::move(maker);
}

CObjectFrame::CObjectFrame(iProject& project, CViewHost& host)
    : Project(project), Host(host), View(std::make_unique<CObjectView>(host)) {}

CObjectFrame::~CObjectFrame() = default;

bool CObjectFrame::DoSetElement(iElement* element) {
    const std::string name = element ? element->GetName() : EStringTable::Load(text_no_element);
    const std::string wanted(element ? element->GetViewClass() : std::string_view("CObjectView"));
    if (View->GetViewClass() == wanted) {
        qvrTraceVerbose(
            "*** NOTE[CObjectFrame::DoSetElement()]: To display \"%s\", NO new view must be created.\n",
            name.c_str());
    } else {
        qvrTraceVerbose(
            "*** NOTE[CObjectFrame::DoSetElement()]: To display \"%s\", a new view must be created.\n",
            name.c_str());
        std::unique_ptr<CObjectView> made = makeView(wanted, Host);
        if (!made) {
            const std::string type = element ? element->GetElementType() : name;
            hMessageBox::Show(
                qvrFormat(EStringTable::Load(text_view_not_created).c_str(), name.c_str(), type.c_str()),
                hMessageBox::OK | hMessageBox::IconExclamation, "qvrTessarine");
            return false;
        }
        made->TakeViewState(*View);
        View = std::move(made);
    }
    Element.Set(element);
    Listener.SetTarget(element);
    View->SetElement(element);
    Host.Invalidate();
    return true;
}

std::string CObjectFrame::GetTitle(const std::string& document) const {
    const iElement* element = GetElement();
    if (!element) return EStringTable::Load(text_empty_frame_title);
    const std::string state = element->GetStateText();
    const std::string format =
        EStringTable::Load(state.empty() ? text_frame_title : text_frame_title_with_state);
    return qvrFormat(format.c_str(), document.c_str(), element->GetName().c_str(),
                     element->GetElementType().c_str(), View->GetFrame(), state.c_str());
}

void CObjectFrame::SetFrame(long frame) {
    if (frame == View->GetFrame()) return;
    View->SetFrame(frame);
    Host.Invalidate();
}

bool CObjectFrame::DropData(std::string_view format, const std::string& data) {
    const std::optional<ioleConnector> connector = ioleConnector::Parse(format, data);
    if (!connector || connector->Elements.empty()) return false;
    iElement* element = Project.FindElement(connector->Elements.front());
    return element && DoSetElement(element);
}

// ---------------------------------------------------------------- events

bool CObjectFrame::timeStampOutOfScope(long code, const iEventArgument& argument) const {
    if (!argument.Range || argument.Range->Contains(View->GetFrame())) return false;
    const char* format = code == iElement::event_modified
                             ? "*** NOTE[CObjectFrame::OnObjectEvent()]: \"%1\" has been modified, but the "
                               "time stamp is out of "
                               "scope for this view.\n"
                             : "*** NOTE[CObjectFrame::OnObjectEvent()]: \"%1\" needs to be redrawn, but the "
                               "time stamp is out of "
                               "scope for this view.\n";
    const iElement* element = GetElement();
    qvrTraceVerbose("%s", qvrFormatMessage(format, {element ? element->GetName() : std::string()}).c_str());
    return true;
}

void CObjectFrame::OnObjectEvent(long code, const iEventArgument& argument) {
    switch (code) {
    case iElement::event_close_windows:
        qvrTraceVerbose("*** NOTE[CObjectFrame::OnObjectEvent()]: Commanded to destroy window because of "
                        "iElement::event_close_windows.\n");
        if (!Closing) Host.CloseWindow();
        Closing = true;
        return;
    case iElement::event_collect_windows:
        if (argument.Store) SaveWindow(argument.Store->CreateWindowBlock());
        return;
    case iElement::event_position_changed:
        return;
    case iElement::event_modified:
    case iElement::event_changed:
        if (timeStampOutOfScope(code, argument)) return;
        break;
    default:
        break;
    }
    Host.Invalidate();
}

iNotifyAnswer CObjectFrame::ElementListener::OnEvent(long code, const iEventArgument& argument) {
    Frame.OnObjectEvent(code, argument);
    return iNotifyAnswer::Keep;
}

iTargetGoneAnswer CObjectFrame::ElementListener::OnTargetDestroyed() {
    Frame.View->OnElementGone();
    return iTargetGoneAnswer::Detach;
}

// ---------------------------------------------------------------- window block

void CObjectFrame::SaveWindow(qvrCTreeData& block) const {
    block.SetRect("Window", WindowRect);
    View->SaveWindow(block);
}

void CObjectFrame::LoadWindow(const qvrCTreeData& block) {
    block.GetRect("Window", WindowRect);
    View->LoadWindow(block);
}
