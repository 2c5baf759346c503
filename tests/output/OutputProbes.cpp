#include "OutputProbes.h"

#include "imaging/EImage.h"
#include "imaging/EImageData.h"

iFactoryProducerOf<FrameSource> FrameSource::Producer(iSource::ClassType, "Frame probe");

bool FrameSource::doQueryImageSize(iImageSizeResult& result, long) {
    result.Size = Size;
    return true;
}

bool FrameSource::doRender(EImage& image, iRenderResult& result, iRenderRequest& request) {
    ++RendersStarted;
    Gate.Lock();
    {
        std::lock_guard lock(LastGuard);
        LastRect = request.Rect;
        LastDisplaySize = request.DisplaySize;
    }
    const bool failing = FailingFrames.count(request.Frame) != 0;
    if (failing) result.SetError(FailCode, this, "Probe failure");
    std::unique_ptr<EImageData> picture;
    if (!failing) {
        const CRect& rect = request.Rect;
        const CSize size = request.FullSize || AlwaysFullSize ? CSize{rect.Width(), rect.Height()}
                                                              : request.DisplaySize.ToSize();
        picture = EImageData::New(size, EImageMemory::NoFreeing);
        for (long y = 0; y < size.cy; ++y)
            for (long x = 0; x < size.cx; ++x)
                picture->GetRow(y)[x] =
                    Pattern ? PatternAt(rect.left + x, rect.top + y) : ColourOf(request.Frame);
        EImageLock lock(image);
        lock.Lock(-1);
        lock.SetData(std::move(picture));
        result.Rect = rect;
        if (!Note.empty()) result.Notes.push_back(Note);
    }
    ++RendersFinished;
    return !failing;
}

CRect FrameSource::GetLastRect() const {
    std::lock_guard lock(LastGuard);
    return LastRect;
}

EImageSize FrameSource::GetLastDisplaySize() const {
    std::lock_guard lock(LastGuard);
    return LastDisplaySize;
}

// ---------------------------------------------------------------- the memory streams

class MemoryStream::Writer : public EImageOutputWriter {
public:
    Writer(const MemoryStream& owner, const EImageOutputSetup* given)
        : EImageOutputWriter(owner, given), Owner(owner) {}
    bool Write(const EImageData& image, long frameIndex, EImageOutputError& error) override {
        return Owner.record(image, frameIndex, error);
    }
    bool Close(EImageOutputError&) override { return true; }

private:
    const MemoryStream& Owner;
};

std::unique_ptr<EImageOutputWriter> MemoryStream::Open(const std::string& fileName, CSize,
                                                       EImageOutputError& error,
                                                       const EImageOutputSetup* setup, unsigned long,
                                                       unsigned long) const {
    std::lock_guard lock(Guard);
    ++Opens;
    if (OpensFail) {
        error.Set(FileErrorAccessDenied, 13, fileName);
        return nullptr;
    }
    return std::make_unique<Writer>(*this, setup);
}

bool MemoryStream::record(const EImageData& image, long frame, EImageOutputError& error) const {
    std::lock_guard lock(Guard);
    if (FailingWrites.count(frame)) {
        error.Set(FileErrorDiskFull, 28, "disk full");
        return false;
    }
    Writes.emplace_back(frame, image.GetRow(0)[0]);
    return true;
}

void MemoryStream::Reset() {
    std::lock_guard lock(Guard);
    Writes.clear();
    FailingWrites.clear();
    Opens = 0;
    OpensFail = false;
}

void MemoryStream::FailWriteOf(long frame) {
    std::lock_guard lock(Guard);
    FailingWrites.insert(frame);
}

void MemoryStream::FailOpens() {
    std::lock_guard lock(Guard);
    OpensFail = true;
}

std::vector<std::pair<long, std::uint32_t>> MemoryStream::GetWrites() const {
    std::lock_guard lock(Guard);
    return Writes;
}

std::set<long> MemoryStream::GetFramesWritten() const {
    std::set<long> frames;
    for (const auto& write : GetWrites())
        frames.insert(write.first);
    return frames;
}

int MemoryStream::GetOpens() const {
    std::lock_guard lock(Guard);
    return Opens;
}

MemoryStream& MemoryStream::TheSequence() {
    static MemoryStream stream("Memory sequence", true);
    return stream;
}

MemoryStream& MemoryStream::TheMovie() {
    static MemoryStream stream("Memory movie", false);
    return stream;
}
