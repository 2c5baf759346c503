#include "objects/hSequenceProperties.h"

#include "foundation/EEnvironment.h"
#include "foundation/qvrString.h"
#include "imaging/EImageStorage.h"
#include "model/iProject.h"
#include "objects/isrcSequence.h"

#include <algorithm>
#include <array>

hSequenceProperties::hSequenceProperties(isrcSequence& sequence)
    : hPropertyPage(sequence), Sequence(sequence) {}

bool hSequenceProperties::readNumber(const std::string& text, long& value) {
    return parseWhole(text, value) || complain("Invalid value; you must enter a number.");
}

bool hSequenceProperties::CommitRange(const std::string& text) {
    std::array<long, 2> range{};
    if (!readWholes(text, iParameterLimits{}, range,
                    "Invalid range; first and last image must be divided by a comma..."))
        return false;
    const auto [first, last] = range;
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

// --------------------------------------------------------------- change footage

bool hSequenceProperties::ChangeFootage(std::vector<EFileGroupSetup> groups) {
    auto* project = dynamic_cast<iProject*>(Sequence.GetProject());
    const bool hasEmpty = std::any_of(groups.begin(), groups.end(),
                                      [](const EFileGroupSetup& group) { return group.IsEmpty(); });
    if (groups.empty() || hasEmpty || (groups.size() > 1 && !project))
        return complain(ObjectText::TextBadFileSelection);
    if (!std::all_of(groups.begin(), groups.end(), examineFiles)) return false;
    Sequence.SetFile(groups.front(), true);
    for (size_t i = 1; i < groups.size(); ++i)
        addCopy(*project, groups[i], static_cast<long>(i));
    return true;
}

bool hSequenceProperties::examineFiles(EFileGroupSetup& group) {
    const std::string file = group.GetFileForNumber(group.GetFirstNumber());
    const std::string path = EEnvironment::PathPlusFile(group.GetDirectory(), file);
    EImageStorage& storage = EImageStorage::Get();
    CSize size;
    EImageFileResult result;
    if (!storage.QueryImageInfo(group.GetDirectory(), file, EProxyCreation::No, size, result))
        return complain(
            qvrFormatMessage(EStringTable::Get(ObjectText::TextNoFileInformation), {path, result.text}));
    if (group.UseProxies &&
        !storage.QueryImageInfo(group.GetDirectory(), file, EProxyCreation::Yes, size, result))
        return complain(
            qvrFormatMessage(EStringTable::Get(ObjectText::TextProxyFailed), {path, result.text}));
    group.ImageSize = size;
    return true;
}

// The copy takes the files before it joins the project, so that a name made
// from the files is the one it joins under.
void hSequenceProperties::addCopy(iProject& project, const EFileGroupSetup& group, long place) {
    std::unique_ptr<isrcSequence> made = Sequence.Clone();
    made->SetFile(group, false);
    const CPoint grid = project.GetPaneGrid();
    const CPoint at = Sequence.GetPanePosition();
    made->SetPanePosition({at.x + grid.x * place, at.y + grid.y * place}, false);
    iElement* copy = project.Adopt(std::move(made));
    if (!copy) return;
    for (iElementLink* link = Sequence.GetFirstChildLink(); link; link = link->GetNextOfParent())
        if (link->GetChild()->CheckLinkParent(copy) == link_done) link->GetChild()->LinkParent(copy);
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
