#include "objects/isrcSequence.h"

#include "foundation/EEnvironment.h"
#include "foundation/ELog.h"
#include "foundation/EStringTable.h"
#include "foundation/hMessageBox.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrGeometry.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "imaging/EImageStorage.h"
#include "model/hMenu.h"
#include "model/iProject.h"
#include "objects/ObjectText.h"

#include <algorithm>
#include <array>

iFactoryProducerOf<isrcSequence> isrcSequence::Producer(iSource::ClassType, "Footage");

namespace {

// The element menu's additions, counted from the first id the element gets.
enum MenuCommand : unsigned {
    commandChangeFootage = 0,
    commandUpdateProxies = 1,
    commandNormalFlow = 2,
    commandCustomFlow = 3,
    commandPlayback = 4
};

// How long a new still image shows in the standard mode when it belongs to no project.
constexpr long FramesPerStillWithoutProject = 100;

bool hasZero(CSize size) {
    return size.cx == 0 || size.cy == 0;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

void deliver(EImage& image, std::unique_ptr<EImageData> picture) {
    EImageLock lock(image);
    lock.Lock(-1);
    lock.SetData(std::move(picture));
    lock.Unlock(false);
}

} // namespace

// ---------------------------------------------------------------- flow control

isrcSequence::FlowControlValue::FlowControlValue(isrcSequence& owner)
    : iActiveValue(std::string(isrcSequence::Parameters.Get("Flow control").Key),
                   isrcSequence::Parameters.Get("Flow control")),
      Sequence(owner) {}

double isrcSequence::FlowControlValue::Highest() const {
    return static_cast<double>(Sequence.lastUsedFile + 1);
}

double isrcSequence::FlowControlValue::Lowest() const {
    return static_cast<double>(Sequence.firstUsedFile - 1);
}

double isrcSequence::FlowControlValue::Clamp(double value, long) const {
    // Computed here rather than through the limits' members, which only the main thread may write.
    return std::max(std::min(value, Highest()), Lowest());
}

const double* isrcSequence::FlowControlValue::GetMaxLimit() const {
    Max = Highest();
    return &Max;
}

const double* isrcSequence::FlowControlValue::GetMinLimit() const {
    Min = Lowest();
    return &Min;
}

// ------------------------------------------------------------------- element

isrcSequence::isrcSequence(std::string name) : iSource(std::move(name)), flowControl(*this) {
    registerFlowControl(customFlowControl);
}

isrcSequence::~isrcSequence() {
    flowControl.Unlink();
}

void isrcSequence::registerFlowControl(bool registered) {
    if (registered)
        flowControl.Link(this);
    else
        flowControl.Unlink();
}

std::string isrcSequence::GetStateText() const {
    const std::string aspect = qvrFormat("%g", Aspect);
    if (!IsSequence()) return qvrFormatMessage("Image: %1; Aspect %2", {GetDisplayFileName(), aspect});
    return qvrFormatMessage("Images: %1 - %2; Aspect %3",
                            {GetFileForNumber(firstUsedFile), GetFileForNumber(lastUsedFile), aspect});
}

std::unique_ptr<isrcSequence> isrcSequence::Clone() {
    auto copy = std::make_unique<isrcSequence>(GetName());
    // The files first: taking files into an empty object would reset the range copied here.
    copy->SetFile(*this, false);
    Parameters.CopyTo(*this, *copy);
    copy->flowControl.AssignKeys(flowControl);
    copy->UpdateFlowControl(false, false);
    return copy;
}

// ------------------------------------------------------------ frames to files

long isrcSequence::GetFileNumberForFrame(long frame) {
    if (!customFlowControl) {
        if (stdFramesPerImg == 0) stdFramesPerImg = 1;
        // A frame before the start frame wraps round to a huge step, which lies out of range.
        const std::uint32_t step =
            static_cast<std::uint32_t>(frame - stdStartFrame) / static_cast<std::uint32_t>(stdFramesPerImg);
        return stdBackward ? lastUsedFile - static_cast<long>(step) : firstUsedFile + static_cast<long>(step);
    }
    if (flowControl.GetOwner() != this) registerFlowControl(true);
    return static_cast<long>(flowControl.GetValue(frame));
}

std::string isrcSequence::GetFileForFrame(long frame, WithDirectory withDirectory) {
    if (!IsValid(false)) return {};
    const long number = GetFileNumberForFrame(frame);
    if (number < firstUsedFile || number > lastUsedFile) return {};
    const std::string name = GetFileForNumber(number);
    if (withDirectory == WithDirectory::No || name.empty()) return name;
    return EEnvironment::PathPlusFile(GetDirectory(), name);
}

bool isrcSequence::IsValid(bool needSize) const {
    if (!IsSequence() && GetDisplayFileName().empty()) return false;
    if (needSize && hasZero(ImageSize)) return false;
    if (IsSequence())
        return firstUsedFile >= GetFirstNumber() && firstUsedFile <= lastUsedFile &&
               lastUsedFile <= GetLastNumber();
    return firstUsedFile == 0 && lastUsedFile == 0;
}

bool isrcSequence::CheckImageSize(std::string* reason) {
    std::string failure;
    if (!IsValid(false)) {
        failure = "Invalid setup.";
    } else {
        const std::string file = GetFileForNumber(GetFirstNumber());
        CSize size;
        EImageFileResult fileResult;
        if (!EImageStorage::Get().QueryImageInfo(GetDirectory(), file, EProxyCreation::No, size, fileResult))
            failure = fileResult.text;
        else if (hasZero(size))
            failure = qvrFormat("Image %s has a zero size ?!", file.c_str());
        else
            ImageSize = size;
    }
    if (failure.empty()) return true;
    if (reason) {
        *reason = failure;
    } else {
        hMessageBox::Show(qvrFormat("Unable to retrieve file size(s):\n%s.", failure.c_str()),
                          hMessageBox::OK | hMessageBox::IconExclamation, {});
    }
    return false;
}

CSize isrcSequence::GetAspectSize() const {
    return {static_cast<long>(static_cast<double>(ImageSize.cx) * Aspect), ImageSize.cy};
}

// -------------------------------------------------------------------- render

bool isrcSequence::doQueryImageSize(iImageSizeResult& result, long) {
    qvrCSingleLock guard(lock);
    guard.Lock();
    if (!IsValid(false)) {
        qvrTraceVerbose("*** ERROR[isrcSequence::doQueryImageSize()]: No file name for sequence \"%s\" !\n",
                        GetName().c_str());
        result.SetError(render_failed, this, text_no_source_files);
        return false;
    }
    std::string reason;
    if (hasZero(ImageSize) && !CheckImageSize(&reason)) {
        result.SetError(render_failed, this,
                        qvrFormatMessage("Sequence %1: Can't read image size: %2", {GetName(), reason}));
        return false;
    }
    const CSize size = GetAspectSize();
    result.Size = {size.cx, size.cy};
    return true;
}

bool isrcSequence::doRender(EImage& image, iRenderResult& result, iRenderRequest& request) {
    qvrCSingleLock guard(lock);
    guard.Lock();
    image.Clear();
    if (!IsValid(true)) {
        qvrTraceVerbose(
            "*** WARNING[isrcSequence::doRender()]: Tried to render empty sequence \"%s\" (no file "
            "name).\n",
            GetName().c_str());
        result.SetError(render_failed, this, text_no_source_files);
        return false;
    }
    if (hasZero(GetAspectSize())) {
        qvrTraceVerbose("*** WARNING[isrcSequence::doRender()]: Bad image size.\n");
        result.SetError(render_bad_size, this, std::string());
        return false;
    }
    const std::string file = GetFileForFrame(request.Frame, WithDirectory::No);
    return file.empty() ? renderEmptyFrame(image, result, request) : renderFile(image, result, request, file);
}

bool isrcSequence::renderEmptyFrame(EImage& image, iRenderResult& result, const iRenderRequest& request) {
    // A new picture is all words 0: black and fully transparent.
    std::unique_ptr<EImageData> picture =
        EImageData::New(request.DisplaySize.ToSize(), EImageMemory::MayFree);
    if (!picture) {
        result.SetError(render_out_of_memory, this, text_out_of_memory);
        return false;
    }
    result.Rect = request.Rect;
    deliver(image, std::move(picture));
    return true;
}

bool isrcSequence::renderFile(EImage& image, iRenderResult& result, const iRenderRequest& request,
                              const std::string& file) {
    const CSize aspectSize = GetAspectSize();
    const CRect stored{0, 0, ImageSize.cx, ImageSize.cy};
    iRenderRequest part = request;
    if (Aspect != 1.0) {
        part.ImageSize = {ImageSize.cx, ImageSize.cy};
        part.Rect.left = static_cast<long>(static_cast<double>(request.Rect.left) / Aspect);
        part.Rect.right = static_cast<long>(static_cast<double>(request.Rect.right) / Aspect) + 1;
        part.Rect = IntersectRectClamped(part.Rect, stored);
        if (request.FullSize) part.DisplaySize.Width = part.Rect.Width();
    }
    if (!request.FullSize && !UseProxies) {
        qvrTraceVerbose("*** NOTE[isrcSequence::doRender()]: Loading image \"%s\" without proxies.\n",
                        file.c_str());
        part.FullSize = true;
        part.DisplaySize = {request.Rect.Width(), request.Rect.Height()};
    }
    const EImageLoadRequest load{part.Rect, part.FullSize ? EImageSource::Original : EImageSource::Proxy,
                                 part.FullSize ? CSize{} : part.DisplaySize.ToSize()};
    CRect delivered;
    EImageFileResult fileResult;
    std::unique_ptr<EImageData> picture =
        EImageStorage::Get().LoadImage(GetDirectory(), file, load, delivered, fileResult);
    if (!picture) {
        qvrTraceVerbose(
            "*** ERROR[isrcSequence::doRender()]: Can't load image \"%s\" for sequence \"%s\": %s.\n",
            file.c_str(), GetName().c_str(), fileResult.text.c_str());
        result.SetError(render_failed, this,
                        qvrFormatMessage(EStringTable::Get(text_unable_to_load), {file, fileResult.text}));
        return false;
    }
    CRect shown = request.Rect;
    if (delivered != part.Rect) {
        shown = {static_cast<long>(static_cast<double>(delivered.left) * Aspect), delivered.top,
                 static_cast<long>(static_cast<double>(delivered.right) * Aspect) + 1, delivered.bottom};
        shown.left = std::min(shown.left, request.Rect.left);
        shown.right = std::max(shown.right, request.Rect.right);
        shown = IntersectRectClamped(shown, WholeRect(aspectSize));
    }
    const CSize shownSize{shown.Width(), shown.Height()};
    // The aspect becomes pixels here. A picture that has the size already is
    // kept instead of copied, with what a copy would have: the default
    // position and opacity.
    if (part.FullSize && !hasZero(picture->GetSize()) && picture->GetSize() == shownSize) {
        picture->ResetPlacement();
    } else if (part.FullSize && !hasZero(picture->GetSize())) {
        picture = picture->Resized(shownSize, EImageFilter::Fast);
        if (!picture) {
            qvrTraceVerbose(
                "*** ERROR[isrcSequence::doRender()]: Can't stretch image \"%s\" for sequence \"%s\": Out of "
                "memory.\n",
                file.c_str(), GetName().c_str());
            result.SetError(render_out_of_memory, this, text_out_of_memory);
            return false;
        }
    }
    result.Rect = shown;
    deliver(image, std::move(picture));
    return true;
}

// --------------------------------------------------------------- files, range

void isrcSequence::SetFile(const EFileGroupSetup& group, bool notify) {
    const bool changed = !IsSameFiles(group);
    std::string newName = GetName();
    const std::string oldDisplayName = GetDisplayFileName();
    if (changed && !oldDisplayName.empty()) {
        replaceAll(newName, oldDisplayName, group.GetDisplayFileName());
        if (newName != GetName())
            qvrTraceVerbose("*** NOTE[isrcSequence::SetFile()]: Renaming %s into %s.\n", GetName().c_str(),
                            newName.c_str());
    }
    const bool wasEmpty = EFileGroupSetup::IsEmpty();
    static_cast<EFileGroupSetup&>(*this) = group;
    if (wasEmpty && IsSequence()) {
        firstUsedFile = GetFirstNumber();
        lastUsedFile = GetLastNumber();
    } else if (wasEmpty && !EFileGroupSetup::IsEmpty()) {
        const auto* project = dynamic_cast<const iProject*>(GetProject());
        stdStartFrame = 0;
        stdFramesPerImg = project ? project->GetFrameLength() + 1 : FramesPerStillWithoutProject;
    }
    UpdateFlowControl(notify, changed);
    if (!GetDisplayFileName().empty()) SetName(newName, notify);
}

void isrcSequence::UpdateFlowControl(bool notify, bool resetKeys) {
    const bool fewKeys = flowControl.GetKeyCount() < 2;
    if (!IsSequence()) {
        firstUsedFile = lastUsedFile = 0;
        if (resetKeys && fewKeys) flowControl.SetSingleKey(0, 0.0, notify);
    } else {
        firstUsedFile = std::clamp(firstUsedFile, GetFirstNumber(), GetLastNumber());
        lastUsedFile = std::clamp(lastUsedFile, GetFirstNumber(), GetLastNumber());
        if (lastUsedFile < firstUsedFile) firstUsedFile = lastUsedFile;
        if (resetKeys && fewKeys) {
            // The key after the last image makes the footage end in an empty picture once it has played.
            const long count = GetImageCount();
            flowControl.SetKeyAuto(0, static_cast<double>(firstUsedFile), false, false);
            flowControl.SetKeyAuto(count - 1, static_cast<double>(lastUsedFile), false, false);
            flowControl.SetKeyAuto(count, static_cast<double>(lastUsedFile + 1), notify, false);
        }
    }
    registerFlowControl(customFlowControl);
    if (notify) NotifyChanged(nullptr, true);
}

void isrcSequence::SetUsedRange(long first, long last) {
    firstUsedFile = first;
    lastUsedFile = last;
    UpdateFlowControl(true, false);
}

void isrcSequence::SetCustomFlowControl(bool custom) {
    customFlowControl = custom;
    UpdateFlowControl(true, false);
}

void isrcSequence::SetStandardFlow(long startFrame, long framesPerImage, bool backward) {
    stdStartFrame = startFrame;
    stdFramesPerImg = framesPerImage;
    stdBackward = backward;
    NotifyChanged(nullptr, true);
}

// ---------------------------------------------------------------------- menu

void isrcSequence::AddMenuItems(hMenu& menu, unsigned firstId) {
    menu.AppendItem(firstId + commandChangeFootage, "Change footage...");
    menu.AppendItem(firstId + commandUpdateProxies, "Update proxies");
    hMenu& flow = menu.AppendSubMenu("Flow control");
    flow.AppendItem(firstId + commandNormalFlow, "Normal").Checked = !customFlowControl;
    flow.AppendItem(firstId + commandCustomFlow, "Control by").Checked = customFlowControl;
    if (IsSequence()) menu.AppendItem(firstId + commandPlayback, "Playback...");
}

bool isrcSequence::OnMenuCommand(unsigned id) {
    switch (id - command_first_addition) {
    case commandUpdateProxies:
        EImageStorage::Get().EmptyInfoCache();
        ELog::Notice(
            "Proxy information is been cleared - re-checking proxies when images will be accessed...",
            GetName());
        return true;
    case commandNormalFlow:
    case commandCustomFlow:
        SetCustomFlowControl(id - command_first_addition == commandCustomFlow);
        return true;
    default:
        return false;
    }
}

// ------------------------------------------------------------- project files

// The files are written in the block "Source" by the file group's own rules.
// The flow control is a value only in custom mode; Clone copies its keys itself.
const iParameterEntry<isrcSequence> isrcSequence::parameterEntries[] = {
    {{"FirstUsedFile", iParameterKind::Number, ObjectText::LabelFirstUsedFile}, &isrcSequence::firstUsedFile},
    {{"LastUsedFile", iParameterKind::Number, ObjectText::LabelLastUsedFile}, &isrcSequence::lastUsedFile},
    {{"StdStartFrame", iParameterKind::Number, ObjectText::LabelStartFrame}, &isrcSequence::stdStartFrame},
    {{"StdFramesPerImg", iParameterKind::Number, ObjectText::LabelFramesPerImage},
     &isrcSequence::stdFramesPerImg},
    {{"CustomFlowControl", iParameterKind::Flag, ObjectText::LabelCustomFlowControl},
     &isrcSequence::customFlowControl},
    {{"StdBackward", iParameterKind::Flag, ObjectText::LabelBackward}, &isrcSequence::stdBackward},
    {{.Key = "Flow control",
      .Kind = iParameterKind::Animated,
      .Label = ObjectText::LabelFlowControl,
      .Copy = iParameterCopy::NotCopied}},
};
const iParameterTable<isrcSequence> isrcSequence::Parameters{parameterEntries};

void isrcSequence::doSaveData(qvrCTreeData& block, hReport&) {
    SaveSetup(*block.CreateChild("Source"));
    Parameters.SaveBlock(*this, block);
}

void isrcSequence::doLoadData(const qvrCTreeData& block, hReport& report) {
    if (const std::string* legacyName = block.GetText("FileName(display)"))
        loadLegacyData(block, *legacyName);
    else
        loadCurrentData(block, report);
    checkLoadedRange(report);
    std::string reason;
    if (!EFileGroupSetup::IsEmpty() && hasZero(ImageSize) && !CheckImageSize(&reason)) {
        qvrTrace("*** ERROR[isrcSequence::doLoadData()]: Can't get size of images !\n");
        report.Report(
            qvrFormat("Cannot open image \"%s\": %s",
                      EEnvironment::PathPlusFile(GetDirectory(), GetFileForNumber(GetFirstNumber())).c_str(),
                      reason.c_str()),
            hReportWarning);
    }
    if (stdFramesPerImg == 0) {
        stdFramesPerImg = 1;
        if (!customFlowControl)
            report.Report("\"Frames per image\" must be greater than zero (is been set to 1).",
                          hReportWarning);
    }
    UpdateFlowControl(true, false);
}

void isrcSequence::loadLegacyData(const qvrCTreeData& block, const std::string& displayName) {
    ELog::Message(
        qvrFormat("Loading footage saved using a previous version of qvrTessarine:\nName of object: %s.",
                  GetName().c_str()),
        GetName());
    std::string directory;
    if (const std::string* text = block.GetText("Directory")) directory = *text;
    long count = 1;
    long firstNumber = 0;
    block.GetLong("Count", count);
    block.GetLong("FirstNum", firstNumber);
    EFileGroupSetup files =
        FromDisplayName(std::move(directory), displayName, std::max(count, 1L), std::max(firstNumber, 0L));
    block.GetBool("UseProxies", files.UseProxies);
    double aspect = 1.0;
    if (const std::string* text = block.GetText("Aspect")) qvrParseDouble(*text, aspect);
    files.Aspect = ValidAspect(aspect);
    block.GetSize("ImageSize", files.ImageSize);
    static_cast<EFileGroupSetup&>(*this) = files;
    stdStartFrame = 0;
    stdFramesPerImg = 1;
    stdBackward = false;
    firstUsedFile = IsSequence() ? GetFirstNumber() : 0;
    lastUsedFile = IsSequence() ? GetLastNumber() : 0;
    customFlowControl = true;
}

void isrcSequence::loadCurrentData(const qvrCTreeData& block, hReport& report) {
    const qvrCTreeData* source = block.Find("Source");
    if (!source || !LoadSetup(*source, report)) {
        report.Report("NO source data - setting source file(s) to none.", hReportError);
        static_cast<EFileGroupSetup&>(*this) = EFileGroupSetup();
    }
    Parameters.LoadBlock(*this, block);
}

void isrcSequence::checkLoadedRange(hReport& report) {
    if (!IsSequence()) {
        firstUsedFile = lastUsedFile = 0;
        return;
    }
    if (firstUsedFile < GetFirstNumber() || firstUsedFile > GetLastNumber()) {
        report.Report("Invalid first image number (has been set to first image of sequence).",
                      hReportWarning);
        firstUsedFile = GetFirstNumber();
    }
    if (lastUsedFile < GetFirstNumber() || lastUsedFile > GetLastNumber()) {
        report.Report("Invalid last image number (has been set to last image of sequence).", hReportWarning);
        lastUsedFile = GetLastNumber();
    }
    if (lastUsedFile < firstUsedFile) {
        report.Report("Invalid image range (is been set to entire sequence).", hReportWarning);
        firstUsedFile = GetFirstNumber();
        lastUsedFile = GetLastNumber();
    }
}
