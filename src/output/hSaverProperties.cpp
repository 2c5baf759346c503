#include "output/hSaverProperties.h"

#include "foundation/EUserInterface.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"
#include "model/iElementContainer.h"
#include "objects/hPropertyForm.h"
#include "output/EImageOutputStream.h"
#include "output/isvrSaver.h"

namespace {

// The standard saver's property page: name and output size.
bool makeSaverPage(hPropertyForm& form, iElement& element, long frame) {
    auto* saver = dynamic_cast<isvrSaver*>(&element);
    if (!saver) return false;
    auto& page = form.Keep(std::make_unique<hSaverProperties>(*saver, frame));
    form.AddText(
        "&Size:", [&page] { return page.GetSizeText(); },
        [&page](const std::string& text) { return page.CommitSize(text); });
    return true;
}

const bool SaverPageMade = hPropertyForm::AddMaker(makeSaverPage);

} // namespace

hSaverProperties::hSaverProperties(isvrSaver& saver, long frame)
    : hPropertyPage(saver), Stream(saver.GetStream()), FileName(saver.GetFileName()),
      SetupText(saver.GetStreamSetup()), Saver(saver), Frame(frame) {}

// ---------------------------------------------------------------- the property page

bool hSaverProperties::CommitSize(const std::string& text) {
    long sides[2] = {};
    if (!qvrTreeText::ToLongs(text, sides, 2))
        return complain("This is not a valid size - format is WIDTH,HEIGHT.");
    const iParameterLimits& limits = isvrSaver::Parameters.Get("Size").Limits;
    if (!limits.Allows(static_cast<double>(sides[0])) || !limits.Allows(static_cast<double>(sides[1])))
        return complain("Neither dimension should be smaller than 10.");
    return applySize({sides[0], sides[1]});
}

bool hSaverProperties::applySize(EImageSize size) {
    if (size == Saver.GetSize()) return true;
    Saver.SetSize(size);
    if (iElementContainer* project = Saver.GetProject()) project->SetChanged(true);
    Saver.NotifyChanged(nullptr, true);
    return true;
}

std::string hSaverProperties::GetSizeText() const {
    const EImageSize size = Saver.GetSize();
    return qvrFormat("%ld,%ld", size.Width, size.Height);
}

std::string hSaverProperties::GetSourceSizeText() const {
    EImageSize size;
    if (!queryParentSize(Frame, size)) return " --";
    return qvrFormat(" %ld,%ld", size.Width, size.Height);
}

bool hSaverProperties::CopySourceSize() {
    EImageSize size;
    if (!queryParentSize(Frame, size)) return complain("Cannot detect parent's size !");
    return applySize(size);
}

// ---------------------------------------------------------------- the output page

bool hSaverProperties::needStream() {
    return Stream || complain("Please select an output format first !");
}

bool hSaverProperties::LeaveOutputPage(bool silent) {
    auto refuse = [silent](const char* text) { return silent ? false : complain(text); };
    if (!Stream) return refuse("Please specify an output format !");
    if (FileName.empty()) return refuse("Please specify a file.");
    FileName = Stream->ForceExtension(FileName);
    EImageOutputError error;
    if (!EImageOutputStream::TestFile(FileName, EOutputDirectory::AsIs, &error))
        return refuse(qvrFormat("Cannot write the file \"%s\".", FileName.c_str()).c_str());
    Saver.SetStream(Stream);
    Saver.SetFileName(FileName);
    Saver.SetStreamSetup(SetupText);
    return true;
}

std::string hSaverProperties::GetBrowseFilter() {
    if (!needStream()) return {};
    return qvrFormatMessage("%1 files (*.%2)|*.%2|All files (*.*)|*.*|||",
                            {std::string(Stream->GetName()), std::string(Stream->GetExtension())});
}

bool hSaverProperties::BrowseFile() {
    const std::string filter = GetBrowseFilter();
    if (filter.empty()) return false;
    EFileDialogRequest request;
    request.ProposedPath = FileName;
    request.DefaultExtension = Stream->GetExtension();
    request.Filter = filter;
    const std::optional<std::string> chosen = EUserInterface::Get().AskFile(request);
    if (!chosen) return false;
    FileName = *chosen;
    return true;
}

bool hSaverProperties::EditSetup(void* parentWindow) {
    if (!needStream() || !Stream->UsesSetup()) return false;
    std::unique_ptr<EImageOutputSetup> setup = Stream->CreateSetup();
    if (!setup) return false;
    setup->SetSetupString(SetupText);
    std::string problem;
    if (!setup->Edit(parentWindow, problem)) {
        if (!problem.empty())
            complain(qvrFormat("Failed to open configuration dialog:\n%s.", problem.c_str()));
        return false;
    }
    SetupText = setup->GetSetupString();
    return true;
}
