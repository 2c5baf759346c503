#include "objects/hSequenceProperties.h"

#include "foundation/hMessageBox.h"
#include "foundation/qvrString.h"
#include "model/iElementContainer.h"
#include "objects/isrcSequence.h"

#include <algorithm>

namespace {

bool complain(const char* text) {
    hMessageBox::Show(text, hMessageBox::OK | hMessageBox::IconExclamation, "");
    return false;
}

} // namespace

bool hSequenceProperties::readNumber(const std::string& text, long& value) {
    return qvrParseLong(qvrTrim(text), value) || complain("Invalid value; you must enter a number.");
}

bool hSequenceProperties::CommitName(const std::string& text) {
    if (text.empty()) return complain("The name cannot be empty !");
    iElementContainer* project = Sequence.GetProject();
    iElement* holder = project ? project->FindElement(text) : nullptr;
    if (holder && holder != &Sequence) return complain("There is already an object with that name !");
    return Sequence.SetName(text, true);
}

bool hSequenceProperties::CommitRange(const std::string& text) {
    const std::vector<std::string> parts = qvrSplit(text, ',');
    long first = 0;
    long last = 0;
    if (parts.size() != 2 || !qvrParseLong(qvrTrim(parts[0]), first) ||
        !qvrParseLong(qvrTrim(parts[1]), last))
        return complain("Invalid range; first and last image must be divided by a comma...");
    if (first < Sequence.GetFirstNumber() || last > Sequence.GetLastNumber() || last < first) return false;
    Sequence.SetUsedRange(first, last);
    return true;
}

bool hSequenceProperties::CommitStartFrame(const std::string& text) {
    long start = 0;
    if (!readNumber(text, start)) return false;
    Sequence.SetStandardFlow(std::max(start, 0L), Sequence.GetStdFramesPerImg(), Sequence.IsStdBackward());
    return true;
}

bool hSequenceProperties::CommitFramesPerImage(const std::string& text) {
    long framesPerImage = 0;
    if (!readNumber(text, framesPerImage)) return false;
    Sequence.SetStandardFlow(Sequence.GetStdStartFrame(), framesPerImage, Sequence.IsStdBackward());
    return true;
}

bool hSequenceProperties::CommitEndFrame(const std::string& text) {
    long end = 0;
    if (!readNumber(text, end)) return false;
    // The start moves by as much as the end does: the last image starts at the frame entered.
    const long playing = Sequence.GetStdFramesPerImg() * (Sequence.GetImageCount() - 1);
    Sequence.SetStandardFlow(std::max(end - playing, 0L), Sequence.GetStdFramesPerImg(),
                             Sequence.IsStdBackward());
    return true;
}

void hSequenceProperties::UseWholeRange() {
    Sequence.SetUsedRange(Sequence.GetFirstNumber(), Sequence.GetLastNumber());
}

std::string hSequenceProperties::GetFilesText() const {
    if (!Sequence.IsValid(false)) return "No source files";
    return qvrFormat("%s - %s", Sequence.GetFileForNumber(Sequence.GetFirstUsedFile()).c_str(),
                     Sequence.GetFileForNumber(Sequence.GetLastUsedFile()).c_str());
}

std::string hSequenceProperties::GetSizeText() const {
    const CSize size = Sequence.ImageSize;
    if (size.cx == 0 || size.cy == 0) return "Size: unknown";
    return qvrFormat("Size: %ldx%ld", size.cx, size.cy);
}

std::string hSequenceProperties::GetFramesLabel() const {
    return Sequence.IsSequence() ? "F&rames/Image:" : "Du&ration:";
}
