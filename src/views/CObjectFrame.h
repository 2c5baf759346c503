#pragma once
// The frame around an object view: it holds the element, listens to its
// events and makes the view that the element's class asks for. A change whose
// frames don't hold the view's frame leaves the view as it is; the close
// event closes the frame; when the element's windows are collected for a
// save, the frame writes its block. The rectangle of the frame is kept under
// "Window", the view's state beside it. Main thread only.

#include "foundation/qvrGeometry.h"
#include "model/iBase.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

class CObjectView;
class CViewHost;
class iElement;
class iProject;
class qvrCTreeData;

class CObjectFrame {
public:
    using ViewMaker = std::function<std::unique_ptr<CObjectView>(CViewHost&)>;

    // The makers of the view classes by name; the core knows "CObjectView",
    // "CObjectMergerView" and "CObjectSequenceView". A maker replaces an earlier one of the name.
    static void RegisterViewClass(const std::string& name, ViewMaker maker);

    // An empty frame with a plain view; `project` resolves dropped objects.
    CObjectFrame(iProject& project, CViewHost& host);
    ~CObjectFrame();
    CObjectFrame(const CObjectFrame&) = delete;
    CObjectFrame& operator=(const CObjectFrame&) = delete;

    // Shows the element (null empties the frame), in a new view when its class
    // asks for another one. False, with a message, when that view can't be made.
    bool DoSetElement(iElement* element);
    iElement* GetElement() const { return Element.Get(); }
    CObjectView& GetView() const { return *View; }

    // "document: name (type), frame n", with the element's state after a colon when it has one.
    std::string GetTitle(const std::string& document) const;
    void SetFrame(long frame);

    // Data dropped on the view: the first element it names is shown.
    bool DropData(std::string_view format, const std::string& data);

    // An event of the element.
    void OnObjectEvent(long code, const iEventArgument& argument);

    void SetWindowRect(const CRect& rect) { WindowRect = rect; }
    const CRect& GetWindowRect() const { return WindowRect; }
    void SaveWindow(qvrCTreeData& block) const;
    void LoadWindow(const qvrCTreeData& block);

private:
    class ElementListener : public iNotifier {
    public:
        explicit ElementListener(CObjectFrame& frame) : Frame(frame) {}
        iNotifyAnswer OnEvent(long code, const iEventArgument& argument) override;
        iTargetGoneAnswer OnTargetDestroyed() override;

    private:
        CObjectFrame& Frame;
    };

    bool timeStampOutOfScope(long code, const iEventArgument& argument) const;

    iProject& Project;
    CViewHost& Host;
    std::unique_ptr<CObjectView> View;
    iReference<iElement> Element;
    ElementListener Listener{*this};
    CRect WindowRect;
    // The host has been asked to close the window.
    bool Closing = false;
};
