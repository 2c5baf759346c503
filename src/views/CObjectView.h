#pragma once
// An object view's logic, apart from the toolkit: it shows one element's
// picture at one frame and one zoom. OnDraw asks the element for the part of
// its picture that the window shows, at the size it shows, paints the ground
// around it and the element's grid and the view's overlay over it; without a
// picture it paints its text instead. The element is held by a reference
// that clears itself when the element goes. Each element class names its
// view class; a composer and footage have views of their own.
// Main thread only: views render on the main thread.

#include "model/iBase.h"
#include "model/iRenderRequest.h"
#include "views/CModifierKeys.h"
#include "views/CPaneMapping.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

class CObjectViewCanvas;
class EImage;
class CViewHost;
class iElement;
class qvrCTreeData;

class CObjectView {
public:
    // Colour words of the ground under the view's text and around the picture.
    static constexpr std::uint32_t TextGround = 0x500000;
    static constexpr std::uint32_t Ground = 0x505050;
    // The smallest display size asked of an element, on either side.
    static constexpr long MinDisplaySide = 6;
    static constexpr long PictureLockTimeoutMs = 2000;

    explicit CObjectView(CViewHost& host);
    virtual ~CObjectView() = default;
    CObjectView(const CObjectView&) = delete;
    CObjectView& operator=(const CObjectView&) = delete;

    virtual std::string_view GetViewClass() const { return "CObjectView"; }

    // --- The element; null gives the hint to drag an object here.
    void SetElement(iElement* element);
    iElement* GetElement() const { return Element.Get(); }
    // The element went away: the view says so.
    void OnElementGone();
    // What the view paints when it has no picture.
    const std::string& GetText() const { return Text; }

    // --- Frame, zoom and window.
    void SetFrame(long frame) { Frame = frame; }
    long GetFrame() const { return Frame; }
    void SetZoom(double zoom);
    double GetZoom() const { return Mapping.ZoomX; }
    // The picture point shown in the middle of the window.
    void SetCenter(CPoint center) { Mapping.Center = center; }
    CPoint GetCenter() const { return Mapping.Center; }
    void SetClientSize(CSize size) { Mapping.Client = size; }
    const CPaneMapping& GetMapping() const { return Mapping; }
    // The picture's size as last queried.
    EImageSize GetImageSize() const { return ImageSize; }
    // Takes frame, zoom, centre and window size of another view.
    void TakeViewState(const CObjectView& other);

    void OnDraw(CObjectViewCanvas& target);
    // --- Drawing on another thread: a plain view of the same element and state
    // draws the picture there (its OnDraw touches nothing of this view), and
    // this view then takes what that drawing found and paints its overlay.
    std::unique_ptr<CObjectView> MakeDrawingCopy(CViewHost& host) const;
    void TakeDrawOutcome(const CObjectView& drawn);
    void PaintOverlay(CObjectViewCanvas& target);

    // --- Status line.
    // " 125.00%": the zoom.
    std::string GetZoomStatus() const;
    // " 720x576": the picture's size.
    std::string GetSizeStatus() const;
    // What the status line says about the point under the pointer; the plain view says nothing.
    virtual std::string GetPointStatus(CPoint client) const;
    const std::string& GetStatusText() const { return StatusText; }

    // --- Commands.
    // Zooms so that the whole picture fits the window; needs an element.
    bool ZoomToFit();

    // --- Mouse, with the CModifierKeys held; the plain view does nothing with it.
    virtual void OnLButtonDown(CPoint client, unsigned keys);
    virtual void OnMouseMove(CPoint client, unsigned keys);
    virtual void OnLButtonUp(CPoint client, unsigned keys);

    // --- The view's part of the element's window block: "Center" and "Zoom".
    void SaveWindow(qvrCTreeData& block) const;
    void LoadWindow(const qvrCTreeData& block);

protected:
    // Drawn last, over the picture and the grid.
    virtual void DrawOverlay(CObjectViewCanvas& target);
    // Status line texts, kept and shown through the user-interface hook.
    void SetStatusText(std::string text);
    // False, with the status text that asks for one, when there is no element.
    bool NeedElement();

    CViewHost& Host;

private:
    void paintText(CObjectViewCanvas& target, const CRect& area) const;
    void paintAround(CObjectViewCanvas& target, const CRect& area, const CRect& picture) const;
    void renderSection(CObjectViewCanvas& target, iElement& element, const CRect& section);
    void showPicture(CObjectViewCanvas& target, EImage& image, const CRect& section);
    void drawGrid(CObjectViewCanvas& target, iElement& element, const CRect& area);

    iReference<iElement> Element;
    CPaneMapping Mapping;
    long Frame = 0;
    EImageSize ImageSize;
    std::string Text;
    std::string StatusText;
};
