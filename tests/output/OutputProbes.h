#pragma once
// Test support for savers and their runs: a source whose pictures tell the
// frame or the pixel they came from, which can fail chosen frames or hold
// renders at a gate, and output streams that keep what is written in memory.
// Both are safe from several render threads; tests set them up before a run.

#include "foundation/qvrCSyncObjects.h"
#include "model/iSource.h"
#include "output/EImageOutputStream.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

class FrameSource : public iSource {
public:
    using iSource::iSource;

    iFactoryProducer* GetProducer() const override { return &Producer; }

    // The colour of a whole frame: opaque, the frame number in the low bits.
    static std::uint32_t ColourOf(long frame) { return 0xFF000000u | static_cast<std::uint32_t>(frame); }
    // The pattern pixel of full-size coordinates x, y: opaque, y in bits 12 up, x below.
    static std::uint32_t PatternAt(long x, long y) {
        return 0xFF000000u | std::uint32_t(y) << 12 | std::uint32_t(x);
    }

    EImageSize Size{16, 12};
    // Draws the pattern instead of the frame's colour.
    bool Pattern = false;
    // Delivers the rectangle one to one even in a preview, as a source without proxies does.
    bool AlwaysFullSize = false;
    // Frames that fail, with this code.
    std::set<long> FailingFrames;
    long FailCode = render_failed;
    // A note that every render adds to its result.
    std::string Note;
    // Renders wait here while it is reset.
    qvrCEvent Gate{qvrCEvent::ResetMode::Manual, qvrCEvent::InitialState::Signalled};
    std::atomic<int> RendersStarted{0};
    std::atomic<int> RendersFinished{0};

    CRect GetLastRect() const;
    EImageSize GetLastDisplaySize() const;

    static iFactoryProducerOf<FrameSource> Producer;

protected:
    bool doQueryImageSize(iImageSizeResult& result, long frame) override;
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override;

private:
    mutable std::mutex LastGuard;
    CRect LastRect;
    EImageSize LastDisplaySize;
};

// A stream that keeps the first pixel of every frame written, by frame index.
class MemoryStream : public EImageOutputStream {
public:
    MemoryStream(const char* streamName, bool sequence)
        : EImageOutputStream(streamName, "mem"), Sequence(sequence) {}

    bool IsMovie() const override { return !Sequence; }
    bool IsSequence() const override { return Sequence; }
    std::unique_ptr<EImageOutputWriter> Open(const std::string& fileName, CSize frameSize,
                                             EImageOutputError& error, const EImageOutputSetup* setup,
                                             unsigned long rate, unsigned long rateStep) const override;

    // Forgets what was written and what was to fail.
    void Reset();
    void FailWriteOf(long frame);
    void FailOpens();
    // Frame index and first pixel, in the order of writing.
    std::vector<std::pair<long, std::uint32_t>> GetWrites() const;
    std::set<long> GetFramesWritten() const;
    int GetOpens() const;

    static MemoryStream& TheSequence();
    static MemoryStream& TheMovie();

private:
    class Writer;
    bool record(const EImageData& image, long frame, EImageOutputError& error) const;

    const bool Sequence;
    mutable std::mutex Guard;
    mutable std::vector<std::pair<long, std::uint32_t>> Writes;
    mutable int Opens = 0;
    std::set<long> FailingWrites;
    bool OpensFail = false;
};
