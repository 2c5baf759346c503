#pragma once
// Footage: one still image or a numbered series of image files. For each
// frame the object decides which file is to show, loads it through the image
// storage (as proxy in previews, if the files use proxies), stretches it by
// the pixel aspect, and gives a fully transparent picture for frames at
// which no file is to show. Frames map to files in one of two ways: the
// standard mode of a start frame, a number of frames per image and a
// direction, or the custom mode in which the animated value "Flow control"
// gives the file number at each frame.
//
// Size queries and renders of one object take its own lock for the whole
// load, as they share the stored image size; different footage objects
// render in parallel. Edits of files, ranges and modes belong to the main thread.

#include "foundation/qvrCSyncObjects.h"
#include "imaging/EFileGroupSetup.h"
#include "model/iActiveValue.h"
#include "model/iParameter.h"
#include "model/iSource.h"

#include <array>
#include <memory>
#include <string>
#include <utility>

class isrcSequence : public iSource, public EFileGroupSetup {
public:
    // Whether a file name comes with its directory.
    enum class WithDirectory { No, Yes };

    explicit isrcSequence(std::string name);
    ~isrcSequence() override;

    iFactoryProducer* GetProducer() const override { return &Producer; }
    bool HasObjectBlock() const override { return true; }
    std::string_view GetViewClass() const override { return "CObjectSequenceView"; }
    // "Image: <file>; Aspect <a>" or "Images: <first> - <last>; Aspect <a>".
    std::string GetStateText() const override;

    void doSaveData(qvrCTreeData& block, hReport& report) override;
    void doLoadData(const qvrCTreeData& block, hReport& report) override;

    // The element menu's additions: "Change footage...", "Update proxies", the
    // "Flow control" choice and, for a sequence, "Playback...". The two that
    // open dialogs are the front end's to answer.
    bool HasMenuAdditions() const override { return true; }
    void AddMenuItems(hMenu& menu, unsigned firstId) override;
    bool OnMenuCommand(unsigned id) override;

    // A new footage object under the same name (the caller renames it) with
    // the same files, range, modes and flow-control keys.
    std::unique_ptr<isrcSequence> Clone();

    // The file to show at the frame; empty when there is none.
    std::string GetFileForFrame(long frame, WithDirectory withDirectory);
    long GetImageCount() const { return lastUsedFile - firstUsedFile + 1; }
    // Whether the files and the range are usable; with `needSize` the image size must be known too.
    bool IsValid(bool needSize) const;
    // Reads the image size from the first file of the group. On failure the
    // reason goes to `reason`, or to the user when `reason` is null.
    bool CheckImageSize(std::string* reason);

    // Takes new files. A name derived from the old files' name follows them.
    void SetFile(const EFileGroupSetup& group, bool notify);
    // Keeps the used range inside the available numbers and, with
    // `resetKeys`, gives a flow control of fewer than two keys the keys of one
    // playback; registers the flow control in custom mode only.
    void UpdateFlowControl(bool notify, bool resetKeys);

    long GetFirstUsedFile() const { return firstUsedFile; }
    long GetLastUsedFile() const { return lastUsedFile; }
    void SetUsedRange(long first, long last);
    bool IsCustomFlowControl() const { return customFlowControl; }
    void SetCustomFlowControl(bool custom);
    long GetStdStartFrame() const { return stdStartFrame; }
    long GetStdFramesPerImg() const { return stdFramesPerImg; }
    bool IsStdBackward() const { return stdBackward; }
    void SetStandardFlow(long startFrame, long framesPerImage, bool backward);
    iActiveValue& GetFlowControl() { return flowControl; }

    static iFactoryProducerOf<isrcSequence> Producer;
    static const iParameterTable<isrcSequence> Parameters;

protected:
    bool doQueryImageSize(iImageSizeResult& result, long frame) override;
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override;

private:
    // The file number at each frame in custom mode, kept between one below the
    // first and one above the last used file: those show nothing.
    class FlowControlValue : public iActiveValue {
    public:
        explicit FlowControlValue(isrcSequence& owner);
        double Clamp(double value, long frame) const override;
        const double* GetMaxLimit() const override;
        const double* GetMinLimit() const override;

    private:
        // One above the last and one below the first used file, as they are now.
        double Highest() const;
        double Lowest() const;

        const isrcSequence& Sequence;
        // What the limits were when last asked; the curve display reads them.
        mutable double Max = 0.0;
        mutable double Min = 0.0;
    };

    // The file number at the frame, which may lie outside the used range.
    long GetFileNumberForFrame(long frame);
    // The stored size with the aspect applied to the width.
    CSize GetAspectSize() const;
    // Reads the block of old project files, which name the files by `displayName`;
    // the used range becomes all numbers.
    void loadLegacyData(const qvrCTreeData& block, const std::string& displayName);
    void loadCurrentData(const qvrCTreeData& block, hReport& report);
    void checkLoadedRange(hReport& report);
    bool renderEmptyFrame(EImage& image, iRenderResult& result, const iRenderRequest& request);
    bool renderFile(EImage& image, iRenderResult& result, const iRenderRequest& request,
                    const std::string& file);
    void registerFlowControl(bool registered);

    static const iParameterEntry<isrcSequence> parameterEntries[];

    long firstUsedFile = 0;
    long lastUsedFile = 0;
    bool customFlowControl = true;
    FlowControlValue flowControl;
    long stdStartFrame = 0;
    long stdFramesPerImg = 1;
    bool stdBackward = false;
    qvrCCriticalSection lock;
};
