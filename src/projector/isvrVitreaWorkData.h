#pragma once
// One render run of a projector array saver. The work is divided by
// projector, not by frame: a thread takes a whole projector, builds its pixel
// map once, renders all frames of the range for it in order into the
// projector's own stream, and then takes the next projector. So every stream,
// a movie too, gets its frames in order from one thread, and any number of
// threads may run, up to the number of projectors switched on.
//
// The run talks to its window only through isvrSaverRunWindow; its lines are
// about projectors (the index of a line is the projector's), and a projector
// that starts, ends or gets on by four good frames posts MessageProjector.
//
// Threads: as iSaverWorkData; NextProjector, ProjectorStarted,
// ProjectorFinished, FrameDone and GetProjectorState are safe from any
// thread. The saver and its configuration must outlive the run and stay
// unchanged while it goes on.

#include "foundation/qvrCSyncObjects.h"
#include "output/iSaverWorkData.h"
#include "projector/LVitrea.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

class EImageOutputSetup;
class EImageOutputStream;
class LConfiguration;
class isvrVitrea;

class isvrVitreaWorkData : public iSaverWorkData {
public:
    // Where a projector is in the run.
    enum ProjectorState : int { StateOff = -1, StateWaiting = 0, StateWorking = 1, StateFinished = 2 };

    static std::shared_ptr<isvrVitreaWorkData> Create(isvrVitrea& saver,
                                                      std::shared_ptr<isvrSaverRunWindow> window);
    // Ends a run that is still going (Kill(5)).
    ~isvrVitreaWorkData() override;

    // Starts at most `threadCount` threads, no more than projectors are on,
    // for the frames first to last (inclusive) at the step. False, with the
    // reason in `errorText`, when the run could not start.
    using iSaverWorkData::Start;
    bool Start(std::uint32_t threadCount, std::uint32_t first, std::uint32_t last, std::uint32_t step,
               std::uint32_t rate, std::uint32_t rateStep, bool stopOnError, bool replaceBadFrames,
               std::string& errorText) override;

    // The next projector that is on and not yet taken; false when none is left.
    bool NextProjector(std::size_t& projector);
    // The projector is being worked on, from its first frame.
    void ProjectorStarted(std::size_t projector);
    // The thread has left the projector.
    void ProjectorFinished(std::size_t projector);
    void FrameDone(std::size_t projector, std::uint32_t frame, bool success);
    // The projector's state and its frames done well so far.
    ProjectorState GetProjectorState(std::size_t projector, std::uint32_t& framesDone);

    // What the threads share, fixed by Start.
    isvrVitrea& GetSaver() const { return Saver; }
    const LConfiguration& GetConfiguration() const;
    const EImageOutputStream* GetStream() const { return Stream; }
    std::uint32_t GetFirst() const { return First; }
    std::uint32_t GetLast() const { return Last; }
    std::uint32_t GetStep() const { return Step; }
    std::uint32_t GetRate() const { return Rate; }
    std::uint32_t GetRateStep() const { return RateStep; }
    bool GetStopOnError() const { return StopOnError; }
    bool GetReplaceBadFrames() const { return ReplaceBadFrames; }
    // The frames of the range, which each projector renders.
    std::uint32_t GetFramesPerProjector() const { return (Last - First + Step) / Step; }

protected:
    void releaseOutput() override { Setup.reset(); }

private:
    isvrVitreaWorkData(isvrVitrea& saver, std::shared_ptr<isvrSaverRunWindow> window);

    // Sets the projectors' states from the switches; the number switched on.
    std::uint32_t resetProjectors();
    bool launchThreads(std::uint32_t threadCount, std::uint32_t cores);

    isvrVitrea& Saver;
    std::uint32_t First = 0;
    std::uint32_t Last = 0;
    std::uint32_t Step = 1;
    std::uint32_t Rate = 25;
    std::uint32_t RateStep = 1;
    bool StopOnError = false;
    bool ReplaceBadFrames = false;
    const EImageOutputStream* Stream = nullptr;
    // Shared with the threads, which keep it while they run.
    std::shared_ptr<EImageOutputSetup> Setup;

    qvrCCriticalSection NextProjectorLock;
    std::size_t Next = LVitrea::ProjectorCount;

    // Under the progress lock.
    std::array<std::uint32_t, LVitrea::ProjectorCount> FramesDone{};
    std::array<ProjectorState, LVitrea::ProjectorCount> States{};
    std::uint32_t ActiveProjectors = 0;
};
