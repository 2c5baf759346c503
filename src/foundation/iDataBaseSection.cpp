#include "foundation/iDataBaseSection.h"

namespace {

struct SectionLists {
    iDataBaseSection* topLevel = nullptr;
    iDataBaseSection* waiting = nullptr;
};

SectionLists& lists() {
    static SectionLists instance;
    return instance;
}

bool unlinkFrom(iDataBaseSection*& head, iDataBaseSection* section) {
    for (iDataBaseSection** link = &head; *link; link = &(*link)->Next) {
        if (*link == section) {
            *link = section->Next;
            return true;
        }
    }
    return false;
}

void resetTree(iDataBaseSection* section) {
    for (; section; section = section->Next) {
        section->Reset();
        resetTree(section->FirstChild);
    }
}

} // namespace

iDataBaseSection::iDataBaseSection(std::string name, uint32_t mask, iDataBaseSection* parent)
    : Name(std::move(name)), Mask(mask), Parent(parent) {
    iDataBaseSection*& head = parent ? lists().waiting : lists().topLevel;
    Next = head;
    head = this;
}

iDataBaseSection::~iDataBaseSection() {
    SectionLists& all = lists();
    if (unlinkFrom(all.topLevel, this) || unlinkFrom(all.waiting, this)) return;
    if (Parent) unlinkFrom(Parent->FirstChild, this);
}

void iDataBaseSection::Load(qvrCTreeData&, hReport&) {}
void iDataBaseSection::Save(qvrCTreeData&, hReport&) {}

iDataBaseSection* iDataBaseSection::GetFirstTopLevel() {
    return lists().topLevel;
}

iDataBaseSection* iDataBaseSection::FindTopLevel(std::string_view name) {
    for (iDataBaseSection* s = lists().topLevel; s; s = s->Next)
        if (qvrEqualNoCase(s->Name, name)) return s;
    return nullptr;
}

iDataBaseSection* iDataBaseSection::FindChild(std::string_view name) const {
    for (iDataBaseSection* s = FirstChild; s; s = s->Next)
        if (qvrEqualNoCase(s->Name, name)) return s;
    return nullptr;
}

void iDataBaseSection::LinkWaitingSections() {
    SectionLists& all = lists();
    while (iDataBaseSection* section = all.waiting) {
        all.waiting = section->Next;
        section->Next = section->Parent->FirstChild;
        section->Parent->FirstChild = section;
    }
}

void iDataBaseSection::ResetAll() {
    LinkWaitingSections();
    resetTree(lists().topLevel);
}
