#pragma once
// One render run of a standard saver: a fixed pool of render threads pulls
// frame numbers from one locked counter, renders each frame through the saver
// and writes it to the output. A movie gets exactly one thread, so its frames
// arrive in order; sequence frames finish in any order, each into a file of
// its own, all threads writing through one shared handle.
//
// The run talks to its window (the execution dialog's logic) only through
// isvrSaverRunWindow: posted messages and report lines, from any thread.
//
// Threads: Start, Stop and Kill belong to the owner's thread; NextFrame,
// FrameDone, ThreadStarted, ThreadEnded, GetCounts, GetTimes and Report are
// safe from any thread. The work data is made by Create and held by shared
// pointer, so that a render thread that has to be given up keeps what it uses;
// the owner calls Kill before it lets its reference go. The saver must
// outlive the run.

#include "foundation/qvrGeometry.h"
#include "output/iSaverWorkData.h"

#include <cstdint>
#include <memory>
#include <string>

class EImageOutputHandle;
class EImageOutputSetup;
class EImageOutputStream;
class isvrSaver;

class isvrSaverWorkData : public iSaverWorkData {
public:
    static std::shared_ptr<isvrSaverWorkData> Create(isvrSaver& saver,
                                                     std::shared_ptr<isvrSaverRunWindow> window);
    // Ends a run that is still going (Kill(5)).
    ~isvrSaverWorkData() override;
    isvrSaverWorkData(const isvrSaverWorkData&) = delete;
    isvrSaverWorkData& operator=(const isvrSaverWorkData&) = delete;

    using iSaverWorkData::Start;
    bool Start(std::uint32_t threadCount, std::uint32_t first, std::uint32_t last, std::uint32_t step,
               std::uint32_t rate, std::uint32_t rateStep, bool stopOnError, bool replaceBadFrames,
               std::string& errorText) override;

    // The next frame to render; false when the range is used up.
    bool NextFrame(std::uint32_t& frame);
    void FrameDone(unsigned index, std::uint32_t frame, bool success);

    // What the threads share, fixed by Start.
    CSize GetFrameSize() const { return FrameSize; }
    const std::string& GetFileName() const { return FileName; }
    const EImageOutputStream* GetStream() const { return Stream; }
    std::uint32_t GetRate() const { return Rate; }
    std::uint32_t GetRateStep() const { return RateStep; }
    bool GetStopOnError() const { return StopOnError; }
    bool GetReplaceBadFrames() const { return ReplaceBadFrames; }
    isvrSaver& GetSaver() const { return Saver; }

protected:
    void releaseOutput() override;

private:
    isvrSaverWorkData(isvrSaver& saver, std::shared_ptr<isvrSaverRunWindow> window);

    // Steps of Start that may throw.
    void prepareRun(std::uint32_t& threadCount, std::uint32_t first, std::uint32_t last, std::uint32_t step);
    void openSharedHandle();
    bool launchThreads(std::uint32_t threadCount, std::uint32_t cores);

    CSize FrameSize;
    std::string FileName;
    const EImageOutputStream* Stream = nullptr;
    // Shared with the threads, which keep them while they run.
    std::shared_ptr<EImageOutputSetup> Setup;
    std::shared_ptr<EImageOutputHandle> SharedHandle;
    std::uint32_t Last = 0;
    std::uint32_t Step = 1;
    std::uint32_t Rate = 25;
    std::uint32_t RateStep = 1;
    bool StopOnError = false;
    bool ReplaceBadFrames = false;
    isvrSaver& Saver;

    std::uint32_t Next = 0; // the next frame, under the progress lock
};
