#include "model/iObjectBase.h"

#include "model/iObjectFrontEnd.h"

bool iObjectBase::OnContextMenu(CPoint, CWnd*) {
    return false;
}

void iObjectBase::OnProperties() {
    iObjectFrontEnd::Get().ShowProperties(*this);
}

void iObjectBase::OnNewView() {
    iObjectFrontEnd::Get().OpenView(*this);
}

void iObjectBase::OnEdit() {
    OnProperties();
}
