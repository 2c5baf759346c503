#include "ProbeSource.h"

#include "imaging/EImage.h"
#include "imaging/EImageData.h"

#include <algorithm>

iFactoryProducerOf<ProbeSource> ProbeSource::Producer(iSource::ClassType, "Probe");

bool ProbeSource::doQueryImageSize(iImageSizeResult& result, long) {
    if (FailSize) {
        result.SetError(render_failed, this, text_invalid_size);
        return false;
    }
    result.Size = Size;
    return true;
}

bool ProbeSource::doRender(EImage& image, iRenderResult& result, iRenderRequest& request) {
    ++Renders;
    LastRect = request.Rect;
    LastDisplaySize = request.DisplaySize;
    if (FailRender) {
        result.SetError(render_failed, this, "Probe failure");
        return false;
    }
    CRect rect = request.Rect;
    if (Deliverable)
        rect = {std::max(rect.left, Deliverable->left), std::max(rect.top, Deliverable->top),
                std::min(rect.right, Deliverable->right), std::min(rect.bottom, Deliverable->bottom)};
    if (rect.IsRectEmpty()) rect = {rect.left, rect.top, rect.left, rect.top};
    const CSize size = request.FullSize ? CSize{rect.Width(), rect.Height()} : request.DisplaySize.ToSize();
    std::unique_ptr<EImageData> picture = EImageData::New(size, EImageMemory::NoFreeing);
    if (!picture) {
        result.SetError(render_out_of_memory, this, text_out_of_memory);
        return false;
    }
    for (long y = 0; y < size.cy; ++y)
        for (long x = 0; x < size.cx; ++x)
            picture->GetRow(y)[x] = Colour ? Colour : PatternAt(rect.left + x, rect.top + y);
    EImageLock lock(image);
    lock.Lock(-1);
    lock.SetData(std::move(picture));
    result.Rect = rect;
    return true;
}

Rendered RenderElement(iElement& element, const CRect& rect, EImageSize display, bool fullSize, long frame) {
    iImageSizeResult size;
    element.QueryImageSize(size, frame);
    iRenderRequest request;
    request.ImageSize = size.Size;
    request.Rect = rect;
    request.DisplaySize = display;
    request.FullSize = fullSize;
    request.Frame = frame;
    EImage image(0);
    Rendered rendered;
    rendered.Done = element.Render(image, rendered.Result, request);
    EImageLock lock(image);
    if (lock.Lock(-1) && lock.GetData()) {
        const EImageData& picture = *lock.GetData();
        rendered.Size = picture.GetSize();
        for (long y = 0; y < picture.GetHeight(); ++y)
            rendered.Pixels.insert(rendered.Pixels.end(), picture.GetRow(y),
                                   picture.GetRow(y) + picture.GetWidth());
    }
    return rendered;
}

Rendered RenderWhole(iElement& element, long frame) {
    iImageSizeResult size;
    element.QueryImageSize(size, frame);
    return RenderElement(element, {0, 0, size.Size.Width, size.Size.Height}, size.Size, true, frame);
}

iActiveValue* FindValue(const iElement& element, const std::string& name) {
    for (iActiveValue* value = element.GetFirstValue(); value; value = value->GetNextValue())
        if (value->GetName() == name) return value;
    return nullptr;
}
