#include "model/iElementLink.h"

#include "model/iElement.h"

iElementLink::~iElementLink() {
    Unlink(true);
}

void iElementLink::Link(bool notify, iElementLink* before) {
    if (Linked) return;
    enterParentList();
    enterChildList(before);
    Linked = true;
    if (notify && !EventSent) {
        EventSent = true;
        Parent->OnChildLinked(Child);
        Child->OnParentLinked(Parent);
    }
}

void iElementLink::Unlink(bool notify) {
    if (!Linked) return;
    leaveParentList();
    leaveChildList();
    Linked = false;
    if (notify && EventSent) {
        EventSent = false;
        Parent->OnChildUnlinked(Child);
        Child->OnParentUnlinked(Parent);
    }
}

void iElementLink::enterParentList() {
    PrevOfParent = Parent->LastChildLink;
    NextOfParent = nullptr;
    (PrevOfParent ? PrevOfParent->NextOfParent : Parent->FirstChildLink) = this;
    Parent->LastChildLink = this;
    ++Parent->ChildCount;
}

void iElementLink::enterChildList(iElementLink* before) {
    NextOfChild = before;
    PrevOfChild = before ? before->PrevOfChild : Child->LastParentLink;
    (PrevOfChild ? PrevOfChild->NextOfChild : Child->FirstParentLink) = this;
    (NextOfChild ? NextOfChild->PrevOfChild : Child->LastParentLink) = this;
    ++Child->ParentCount;
}

void iElementLink::leaveParentList() {
    (PrevOfParent ? PrevOfParent->NextOfParent : Parent->FirstChildLink) = NextOfParent;
    (NextOfParent ? NextOfParent->PrevOfParent : Parent->LastChildLink) = PrevOfParent;
    PrevOfParent = NextOfParent = nullptr;
    --Parent->ChildCount;
}

void iElementLink::leaveChildList() {
    (PrevOfChild ? PrevOfChild->NextOfChild : Child->FirstParentLink) = NextOfChild;
    (NextOfChild ? NextOfChild->PrevOfChild : Child->LastParentLink) = PrevOfChild;
    PrevOfChild = NextOfChild = nullptr;
    --Child->ParentCount;
}
