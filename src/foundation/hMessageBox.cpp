#include "foundation/hMessageBox.h"

#include "foundation/EUserInterface.h"
#include "foundation/qvrTrace.h"
#include "foundation/FoundationText.h"

#include <array>

namespace {

hMessageBox*& firstDescriptor() {
    static hMessageBox* first = nullptr;
    return first;
}

struct ButtonSet {
    std::vector<int> Ids;
};

const std::array<ButtonSet, 6> buttonSets = {{
    {{IDOK}},
    {{IDOK, IDCANCEL}},
    {{IDABORT, IDRETRY, IDIGNORE}},
    {{IDYES, IDNO, IDCANCEL}},
    {{IDYES, IDNO}},
    {{IDRETRY, IDCANCEL}},
}};

std::string buttonLabel(int id) {
    switch (id) {
    case IDOK:
        return EStringTable::Load(FoundationText::ButtonOk);
    case IDCANCEL:
        return "Cancel";
    case IDABORT:
        return "Abort";
    case IDRETRY:
        return "Retry";
    case IDIGNORE:
        return "Ignore";
    case IDYES:
        return "Yes";
    case IDNO:
        return "No";
    }
    return {};
}

EMessageRequest buildRequest(const std::string& text, unsigned type, const std::string& title,
                             bool withMemory) {
    unsigned kind = type & hMessageBox::KindMask;
    if (kind >= buttonSets.size()) {
        qvrTrace("*** WARNING[hMessageBox::Message()]: Bad msg box type - will be changed to OK.\n");
        kind = hMessageBox::OK;
    }
    EMessageRequest request;
    request.Text = text;
    request.Title = title;
    request.Buttons = buttonSets[kind].Ids;
    for (int id : request.Buttons)
        request.Labels.push_back(buttonLabel(id));
    size_t wanted = (type & hMessageBox::DefaultMask) >> 8;
    request.DefaultIndex = wanted < request.Buttons.size() ? wanted : 0;
    unsigned icon = type & hMessageBox::IconMask;
    request.Icon = (icon >= hMessageBox::IconStop && icon <= hMessageBox::IconInformation) ? icon : 0;
    if (withMemory)
        request.AlwaysText =
            qvrFormatMessage(EStringTable::Get(FoundationText::AlwaysAnswer), {request.Labels[request.DefaultIndex]});
    return request;
}

} // namespace

hMessageBox::hMessageBox(long messageId, long titleId) : MessageId(messageId), TitleId(titleId) {
    if (!MessageId) return;
    Next = firstDescriptor();
    firstDescriptor() = this;
}

hMessageBox::~hMessageBox() {
    for (hMessageBox** link = &firstDescriptor(); *link; link = &(*link)->Next) {
        if (*link == this) {
            *link = Next;
            return;
        }
    }
}

int hMessageBox::Message(const std::string& text, unsigned type, const std::string& title) {
    Text = text;
    Title = title;
    bool withMemory = MessageId != 0;
    EMessageRequest request = buildRequest(text, type, title, withMemory);
    {
        EPrefsSection::Lock lock = EPrefs_hMsg::Get().TryLock();
        if (withMemory && Always) return request.Buttons[request.DefaultIndex];
    }
    EMessageAnswer answer = EUserInterface::Get().AskMessage(request);
    if (withMemory) {
        EPrefsSection::Lock lock = EPrefs_hMsg::Get().TryLock();
        if (lock) Always = answer.Always;
    }
    return answer.Button;
}

int hMessageBox::Message(unsigned type) {
    return Message(EStringTable::Load(static_cast<EStringId>(MessageId)), type,
                   EStringTable::Load(static_cast<EStringId>(TitleId)));
}

int hMessageBox::Show(const std::string& text, unsigned type, const std::string& title) {
    hMessageBox box(0, 0);
    return box.Message(text, type, title);
}

hMessageBox* hMessageBox::GetFirst() {
    return firstDescriptor();
}

hMessageBox* hMessageBox::FindById(long messageId) {
    for (hMessageBox* box = firstDescriptor(); box; box = box->Next)
        if (box->MessageId == messageId) return box;
    return nullptr;
}

void hMessageBox::ClearAllAlways() {
    EPrefsSection::Lock lock = EPrefs_hMsg::Get().TryLock();
    if (!lock) return;
    for (hMessageBox* box = firstDescriptor(); box; box = box->Next)
        box->Always = false;
}

EPrefs_hMsg::EPrefs_hMsg() : EPrefsSection("Messages") {}

EPrefs_hMsg& EPrefs_hMsg::Get() {
    static EPrefs_hMsg instance;
    return instance;
}

namespace {
[[maybe_unused]] EPrefs_hMsg& messagesSection = EPrefs_hMsg::Get();
}

void EPrefs_hMsg::LoadExtra(qvrCTreeData& block, hReport&) {
    for (hMessageBox* box = hMessageBox::GetFirst(); box; box = box->Next) {
        bool always = false;
        if (block.GetBool(qvrFormat("ID#%ld", box->MessageId), always)) box->Always = always;
    }
}

void EPrefs_hMsg::SaveExtra(qvrCTreeData& block, hReport&) {
    for (hMessageBox* box = hMessageBox::GetFirst(); box; box = box->Next)
        block.SetBool(qvrFormat("ID#%ld", box->MessageId), box->Always);
}

void EPrefs_hMsg::ResetExtra() {
    for (hMessageBox* box = hMessageBox::GetFirst(); box; box = box->Next)
        box->Always = false;
}
