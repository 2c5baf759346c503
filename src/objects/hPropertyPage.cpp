#include "objects/hPropertyPage.h"

#include "foundation/hMessageBox.h"
#include "foundation/qvrString.h"
#include "model/iElement.h"
#include "model/iElementContainer.h"

bool hPropertyPage::CommitName(const std::string& text) {
    return checkName(text) && Element.SetName(text, true);
}

bool hPropertyPage::checkName(const std::string& name) const {
    if (name.empty()) return complain(EmptyName);
    iElementContainer* project = Element.GetProject();
    const iElement* holder = project ? project->FindElement(name) : nullptr;
    if (holder && holder != &Element) return complain(ObjectText::TextNameTaken);
    return true;
}

bool hPropertyPage::queryParentSize(long frame, EImageSize& size) const {
    iElement* parent = Element.GetFirstParent();
    iImageSizeResult answer;
    if (!parent || !parent->QueryImageSize(answer, frame)) return false;
    size = answer.Size;
    return true;
}

std::string hPropertyPage::getParentLine(long frame) const {
    EImageSize size;
    if (!queryParentSize(frame, size)) return EStringTable::Load(ObjectText::TextNoValidSource);
    return qvrFormat(EStringTable::Load(ObjectText::TextParentLine).c_str(),
                     Element.GetFirstParent()->GetName().c_str(), size.Width, size.Height);
}

bool hPropertyPage::complain(std::string_view text) {
    hMessageBox::Show(std::string(text), hMessageBox::OK | hMessageBox::IconExclamation, "");
    return false;
}

bool hPropertyPage::parseWhole(std::string_view text, long& value) {
    return qvrParseLong(qvrTrim(text), value);
}

bool hPropertyPage::readWhole(std::string_view text, const iParameterLimits& limits, long& value,
                              std::string_view complaint) {
    if (!parseWhole(text, value) || !limits.Allows(static_cast<double>(value))) return complain(complaint);
    return true;
}

bool hPropertyPage::readWholes(std::string_view text, const iParameterLimits& limits, std::span<long> values,
                               std::string_view complaint) {
    const std::vector<std::string> parts = qvrSplit(text, ',');
    if (parts.size() != values.size()) return complain(complaint);
    for (size_t i = 0; i < values.size(); ++i)
        if (!readWhole(parts[i], limits, values[i], complaint)) return false;
    return true;
}
