#include "model/iRenderRequest.h"

#include "model/iElement.h"

iRenderRequest& iRenderRequest::operator=(const iRenderRequest& other) {
    ImageSize = other.ImageSize;
    Rect = other.Rect;
    DisplaySize = other.DisplaySize;
    Frame = other.Frame;
    FullSize = other.FullSize;
    AbortSource = other.AbortSource ? other.AbortSource : &other;
    return *this;
}

void iRenderStatus::SetError(long code, iElement* element, std::string message) {
    Code = code;
    Element.Set(element);
    Message = std::move(message);
}

void iRenderStatus::SetError(long code, iElement* element, EStringId text) {
    SetError(code, element, EStringTable::Load(text));
}

void iRenderResult::SetError(long code, iElement* element, std::string message) {
    iRenderStatus::SetError(code, element, std::move(message));
    Rect = {};
}

void iRenderResult::SetError(long code, iElement* element, EStringId text) {
    SetError(code, element, EStringTable::Load(text));
}
