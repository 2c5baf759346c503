#pragma once
// One edge of the project graph, from a parent to a child. The child creates
// it; deleting it unlinks it, which is how an edge is broken. Linking and
// unlinking tell both ends once each way (parent first). A link sits in two
// lists at once: the parent's child links and the child's parent links.
// Main thread only, like every graph edit.

class iElement;

class iElementLink {
public:
    iElementLink(iElement* parent, iElement* child) : Parent(parent), Child(child) {}
    // Unlinks with notice.
    virtual ~iElementLink();
    iElementLink(const iElementLink&) = delete;
    iElementLink& operator=(const iElementLink&) = delete;

    // Enters the parent's child list at its end and the child's parent list at
    // its end or before `before`; with `notify` both ends hear of it, once.
    virtual void Link(bool notify, iElementLink* before);
    // Leaves both lists; with `notify` both ends hear of it if they heard of the link.
    virtual void Unlink(bool notify);

    iElement* GetParent() const { return Parent; }
    iElement* GetChild() const { return Child; }
    bool IsLinked() const { return Linked; }
    iElementLink* GetNextOfParent() const { return NextOfParent; }
    iElementLink* GetPrevOfParent() const { return PrevOfParent; }
    iElementLink* GetNextOfChild() const { return NextOfChild; }
    iElementLink* GetPrevOfChild() const { return PrevOfChild; }

private:
    void enterParentList();
    void enterChildList(iElementLink* before);
    void leaveParentList();
    void leaveChildList();

    iElementLink* NextOfParent = nullptr;
    iElementLink* PrevOfParent = nullptr;
    iElementLink* NextOfChild = nullptr;
    iElementLink* PrevOfChild = nullptr;
    bool Linked = false;
    // The two ends have been told that the link is in place.
    bool EventSent = false;
    iElement* const Parent;
    iElement* const Child;
};
