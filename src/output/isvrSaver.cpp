#include "output/isvrSaver.h"

#include "foundation/ELog.h"
#include "foundation/hReport.h"
#include "foundation/hTruncate.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrGeometry.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "output/EImageOutputStream.h"
#include "output/OutputText.h"

#include <algorithm>

iFactoryProducerOf<isvrSaver> isvrSaver::Producer(iSaver::ClassType, "Saver");

// The part of the source that a request of the saver needs, in the source's
// full-size coordinates, and the factors from saver to source.
struct isvrSaver::SourceSection {
    CRect Rect;
    double ScaleX = 1.0;
    double ScaleY = 1.0;
};

namespace {

constexpr const char* LogContext = "Saver";

long scaled(long coordinate, double factor) {
    return hTruncate(static_cast<double>(coordinate) * factor);
}

long divided(long coordinate, double factor) {
    return hTruncate(static_cast<double>(coordinate) / factor);
}

// The pixel size in which a request wants its rectangle.
CSize outputSize(const iRenderRequest& request) {
    return request.FullSize ? SizeOfRect(request.Rect) : request.DisplaySize.ToSize();
}

// Gives the holder a new picture, dropping the one it had; false when the
// holder can't be locked.
bool givePicture(EImage& image, std::unique_ptr<EImageData> picture) {
    EImageLock lock(image);
    if (!lock.Lock(-1)) return false;
    lock.SetData(std::move(picture));
    return true;
}

EImageFilter filterFor(bool filtered) {
    return filtered ? EImageFilter::Filtered : EImageFilter::Fast;
}

// The part of a picture that shows `wanted`, when the picture shows
// `position` at its own scale: cut to the picture's position, then scaled to
// its pixels, the far edges rounded up. Empty when nothing of it is shown.
CRect pictureSection(const CRect& wanted, const CRect& position, CSize pixels) {
    const long left = std::max(0L, wanted.left - position.left);
    const long top = std::max(0L, wanted.top - position.top);
    const long right = std::min(left + wanted.Width(), position.Width());
    const long bottom = std::min(top + wanted.Height(), position.Height());
    if (right <= left || bottom <= top) return {};
    const long w = pixels.cx;
    const long h = pixels.cy;
    const long W = position.Width();
    const long H = position.Height();
    return {left * w / W, top * h / H, (right * w + W - 1) / W, (bottom * h + H - 1) / H};
}

} // namespace

isvrSaver::isvrSaver(std::string name) : iSaver(std::move(name)), Stream(EImageOutputStream::GetFirst()) {}

std::string isvrSaver::GetStateText() const {
    const iElement* source = GetFirstParent();
    if (!source) return "<no source>";
    return qvrFormat("Saves %s at size %ldx%ld", source->GetName().c_str(), Size.Width, Size.Height);
}

bool isvrSaver::CanExecute() const {
    return GetFirstParent() && Stream && Size.Width >= MinSide && Size.Height >= MinSide;
}

// ---------------------------------------------------------------- the project file

// Besides these, the block holds the render settings and the stream's name
// ("Stream"), which the saver's own rules write and read with the stream's setup
// and the size.
const iParameterEntry<isvrSaver> isvrSaver::parameterEntries[] = {
    {{.Key = "StreamSetup",
      .Kind = iParameterKind::Text,
      .Label = OutputText::LabelStreamSetup,
      .Load = iParameterLoad::ByClass},
     &isvrSaver::StreamSetup},
    {{"File(s)", iParameterKind::Text, OutputText::LabelFiles}, &isvrSaver::FileName},
    {{.Key = "Size",
      .Kind = iParameterKind::Size,
      .Label = OutputText::LabelOutputSize,
      .Limits = {MinSide, std::nullopt},
      .Load = iParameterLoad::ByClass},
     &isvrSaver::Size},
    {{"RenderLoQuality", iParameterKind::Flag, OutputText::LabelLowQuality}, &isvrSaver::RenderLoQuality},
    {{"RenderLoScaleQuality", iParameterKind::Flag, OutputText::LabelLowQualityScaling},
     &isvrSaver::RenderLoScaleQuality},
};
const iParameterTable<isvrSaver> isvrSaver::Parameters{parameterEntries};

void isvrSaver::doSaveData(qvrCTreeData& block, hReport&) {
    Setup.Save(block);
    block.SetText("Stream", Stream ? Stream->GetName() : "");
    Parameters.SaveBlock(*this, block);
}

void isvrSaver::doLoadData(const qvrCTreeData& block, hReport& report) {
    Setup.Load(block, report);
    loadStream(block, report);
    loadSize(block, report);
    Parameters.LoadBlock(*this, block);
}

void isvrSaver::loadStream(const qvrCTreeData& block, hReport& report) {
    const std::string* name = block.GetText("Stream");
    const EImageOutputStream* named = name ? EImageOutputStream::Find(*name) : nullptr;
    if (named) {
        Stream = named;
        const std::string* setup = block.GetText("StreamSetup");
        StreamSetup = setup ? *setup : std::string();
        return;
    }
    Stream = EImageOutputStream::GetFirst();
    StreamSetup.clear();
    const char* fallback = Stream ? Stream->GetName() : "";
    if (name) {
        ELog::Log(ELog::LevelError, LogContext,
                  qvrFormat("Failed to load saver \"%s\": The stream \"%s\" does not exists.\nUsing default "
                            "stream: %s.",
                            GetName().c_str(), name->c_str(), fallback));
        report.Report(
            qvrFormat("Unknown output stream format \"%s\" - using \"%s\"", name->c_str(), fallback),
            hReportError);
    } else {
        ELog::Log(
            ELog::LevelWarning, LogContext,
            qvrFormat("Problems loading saver \"%s\": No output stream defined.\nUsing default stream: "
                      "%s.\nThis situation is expected if you load a project saved by a\nversion before "
                      "1.00.381r.",
                      GetName().c_str(), fallback));
        report.Report(qvrFormat("No output stream format specified - using \"%s\"", fallback), hReportNote);
    }
}

void isvrSaver::loadSize(const qvrCTreeData& block, hReport& report) {
    CSize read;
    if (block.GetSize("Size", read)) Size = {read.cx, read.cy};
    if (Size.Width < MinSide) {
        Size.Width = MinSide;
        report.Report("Width for the output image too small - will be set to 10", hReportWarning);
    }
    if (Size.Height < MinSide) {
        Size.Height = MinSide;
        report.Report("Height for the output image too small - will be set to 10", hReportWarning);
    }
}

std::unique_ptr<isvrSaver> isvrSaver::Clone() {
    if (!Stream) Stream = EImageOutputStream::GetFirst();
    auto copy = std::make_unique<isvrSaver>(GetName());
    copy->Setup = Setup;
    copy->Stream = Stream;
    Parameters.CopyTo(*this, *copy);
    return copy;
}

// ---------------------------------------------------------------- rendering

bool isvrSaver::doQueryImageSize(iImageSizeResult& result, long frame) {
    if (!iSaver::doQueryImageSize(result, frame)) return false;
    result.Size = Size;
    return true;
}

bool isvrSaver::doRender(EImage& image, iRenderResult& result, iRenderRequest& request) {
    iElement* source = GetSource(result);
    iImageSizeResult sourceSize;
    if (source && !source->QueryImageSize(sourceSize, request.Frame))
        result.SetError(sourceSize.Code, sourceSize.Element.Get(), sourceSize.Message);
    if (!source || !sourceSize.IsOk()) {
        result.Rect = {};
        return false;
    }
    switch (renderPureData(*source, sourceSize.Size, image, result, request)) {
    case PureResult::Done:
        return true;
    case PureResult::Failed:
        return false;
    case PureResult::NothingVisible:
        break;
    }
    std::unique_ptr<EImageData> empty = EImageData::New(outputSize(request), EImageMemory::MayFree);
    if (!empty) {
        result.SetError(render_out_of_memory, this, text_out_of_memory);
        return false;
    }
    if (!givePicture(image, std::move(empty))) {
        result.SetError(render_failed, this, text_virtual_memory_low);
        return false;
    }
    result.Rect = request.Rect;
    return true;
}

isvrSaver::PureResult isvrSaver::renderPureData(iElement& source, EImageSize sourceSize, EImage& image,
                                                iRenderResult& result, iRenderRequest& request) {
    if (Size == sourceSize) {
        qvrTraceVerbose("*** NOTE[isvrSaver::renderPureData()]: Input and output size are equal - performing "
                        "normal rendering !\n");
        return source.Render(image, result, request) ? PureResult::Done : PureResult::Failed;
    }
    SourceSection section;
    section.ScaleX = static_cast<double>(sourceSize.Width) / static_cast<double>(Size.Width);
    section.ScaleY = static_cast<double>(sourceSize.Height) / static_cast<double>(Size.Height);
    const CRect& wanted = request.Rect;
    section.Rect =
        IntersectRect({scaled(wanted.left, section.ScaleX), scaled(wanted.top, section.ScaleY),
                       scaled(wanted.right, section.ScaleX) + 1, scaled(wanted.bottom, section.ScaleY) + 1},
                      WholeRect(sourceSize.ToSize()));
    if (section.Rect.IsRectEmpty()) return PureResult::NothingVisible;

    iRenderRequest asked(request);
    asked.ImageSize = sourceSize;
    asked.Rect = section.Rect;
    if (request.FullSize) asked.DisplaySize = {section.Rect.Width(), section.Rect.Height()};
    if (!source.Render(image, result, asked)) return PureResult::Failed;

    const CRect& delivered = result.Rect;
    const CRect mapped{divided(delivered.left, section.ScaleX), divided(delivered.top, section.ScaleY),
                       divided(delivered.right, section.ScaleX), divided(delivered.bottom, section.ScaleY)};
    if (mapped.IsRectEmpty()) return PureResult::NothingVisible;
    if (request.FullSize) return scaleSection(section, image, result, request);
    EImageLock lock(image);
    if (!lock.Lock(-1) || !lock.GetData()) {
        result.SetError(render_failed, this, text_virtual_memory_low);
        return PureResult::Failed;
    }
    result.Rect = mapped;
    return PureResult::Done;
}

isvrSaver::PureResult isvrSaver::scaleSection(const SourceSection& section, EImage& image,
                                              iRenderResult& result, const iRenderRequest& request) {
    EImageLock lock(image);
    const EImageData* rendered = lock.Lock(-1) ? lock.GetData() : nullptr;
    if (!rendered) {
        result.SetError(render_failed, this, text_virtual_memory_low);
        return PureResult::Failed;
    }
    std::unique_ptr<EImageData> picture = EImageData::New(outputSize(request), EImageMemory::MayFree);
    if (!picture) {
        result.SetError(render_out_of_memory, this, text_out_of_memory);
        return PureResult::Failed;
    }
    CRect part = WholeRect(rendered->GetSize());
    const CRect& position = result.Rect;
    if (!position.IsRectEmpty()) {
        part.left = std::max(0L, section.Rect.left - position.left);
        part.top = std::max(0L, section.Rect.top - position.top);
        part.right = std::min(part.left + section.Rect.Width(), rendered->GetWidth());
        part.bottom = std::min(part.top + section.Rect.Height(), rendered->GetHeight());
    }
    if (part.IsRectEmpty()) {
        lock.SetData(nullptr);
        return PureResult::NothingVisible;
    }
    picture->Stretch(*rendered, part, WholeRect(picture->GetSize()), EImageBlend::Copy,
                     filterFor(!RenderLoScaleQuality));
    lock.SetData(std::move(picture));
    result.Rect = request.Rect;
    return PureResult::Done;
}

bool isvrSaver::RenderFrame(EImage& image, iRenderResult& result, iRenderRequest& request) {
    if (!RenderLoQuality) return Render(image, result, request);
    iRenderRequest asked(request);
    asked.FullSize = false;
    asked.DisplaySize = {request.Rect.Width(), request.Rect.Height()};
    if (!Render(image, result, asked)) return false;

    EImageLock lock(image);
    const EImageData* rendered = lock.Lock(-1) ? lock.GetData() : nullptr;
    if (!rendered) {
        result.SetError(render_failed, this, text_virtual_memory_low);
        return false;
    }
    CRect part = WholeRect(rendered->GetSize());
    if (!request.Rect.IsRectEmpty() && !result.Rect.IsRectEmpty()) {
        part = pictureSection(request.Rect, result.Rect, rendered->GetSize());
        if (part.IsRectEmpty()) {
            result.SetError(render_failed, this, text_invalid_size);
            return false;
        }
    }
    std::unique_ptr<EImageData> picture = EImageData::New(Size.ToSize(), EImageMemory::MayFree);
    if (!picture) {
        result.SetError(render_out_of_memory, this, text_out_of_memory);
        return false;
    }
    picture->Stretch(*rendered, part, WholeRect(picture->GetSize()), EImageBlend::Copy,
                     EImageFilter::Filtered);
    lock.SetData(std::move(picture));
    result.Rect = request.Rect;
    return true;
}
