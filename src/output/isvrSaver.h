#pragma once
// The standard saver: writes its source's picture, scaled to one size, to one
// output stream under one name. The render loop is not here: a run
// (isvrSaverWorkData) calls RenderFrame for each frame and hands the picture
// to the stream. The saver keeps the stream's setup as text; every run builds
// a setup afresh from it.
//
// Threads: Render, QueryImageSize and RenderFrame may run on several render
// threads at once; they read the settings without changing them. Settings,
// loading and saving belong to the main thread, and are not changed while a
// run goes on.

#include "output/iSaver.h"

#include <memory>
#include <string>

class EImageOutputStream;

class isvrSaver : public iSaver {
public:
    explicit isvrSaver(std::string name);

    iFactoryProducer* GetProducer() const override { return &Producer; }
    bool HasObjectBlock() const override { return true; }
    // "<no source>", or "Saves <source> at size <width>x<height>".
    std::string GetStateText() const override;

    void doSaveData(qvrCTreeData& block, hReport& report) override;
    // Reads the render settings and the saver's own keys; an unknown or
    // missing stream is replaced by the default one, too small a size grows to 10.
    void doLoadData(const qvrCTreeData& block, hReport& report) override;

    // A copy of all settings. A saver without a stream takes the default one
    // first, so that original and copy agree.
    std::unique_ptr<isvrSaver> Clone();

    // True with a source, a stream and both sides at least MinSide.
    bool CanExecute() const override;

    // The render of one frame of a run. With RenderLoQuality the graph is asked
    // for its pictures at their own scales and the result is scaled once, filtered.
    bool RenderFrame(EImage& image, iRenderResult& result, iRenderRequest& request);

    const EImageOutputStream* GetStream() const { return Stream; }
    void SetStream(const EImageOutputStream* stream) { Stream = stream; }
    const std::string& GetStreamSetup() const { return StreamSetup; }
    void SetStreamSetup(std::string text) { StreamSetup = std::move(text); }
    EImageSize GetSize() const { return Size; }
    void SetSize(EImageSize size) { Size = size; }
    const std::string& GetFileName() const { return FileName; }
    void SetFileName(std::string name) { FileName = std::move(name); }
    bool GetRenderLoQuality() const { return RenderLoQuality; }
    void SetRenderLoQuality(bool value) { RenderLoQuality = value; }
    bool GetRenderLoScaleQuality() const { return RenderLoScaleQuality; }
    void SetRenderLoScaleQuality(bool value) { RenderLoScaleQuality = value; }

    static constexpr long MinSide = 10;
    static iFactoryProducerOf<isvrSaver> Producer;
    static const iParameterTable<isvrSaver> Parameters;

protected:
    // The source's size for the frame, with the saver's size in its place.
    bool doQueryImageSize(iImageSizeResult& result, long frame) override;
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override;

private:
    enum class PureResult { Done, NothingVisible, Failed };
    struct SourceSection;

    // The source's picture for the request, scaled to the saver's size.
    PureResult renderPureData(iElement& source, EImageSize sourceSize, EImage& image, iRenderResult& result,
                              iRenderRequest& request);
    // Scales a full-size section of the source into a picture of the request's output size.
    PureResult scaleSection(const SourceSection& section, EImage& image, iRenderResult& result,
                            const iRenderRequest& request);
    void loadStream(const qvrCTreeData& block, hReport& report);
    void loadSize(const qvrCTreeData& block, hReport& report);

    static const iParameterEntry<isvrSaver> parameterEntries[];

    const EImageOutputStream* Stream;
    std::string StreamSetup;
    EImageSize Size{720, 576};
    std::string FileName;
    bool RenderLoQuality = false;
    bool RenderLoScaleQuality = true;
};
