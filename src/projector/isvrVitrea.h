#pragma once
// The projector array saver: it cuts its source's picture into the windows of
// 18 projectors, 5 in a column and 13 in a row, and each projector's render
// thread warps its window into the projector's picture and writes it to a
// stream of its own (isvrVitreaWorkData). The whole array is centred in the
// source. In views the saver shows its source's picture, and with
// DisplayWindows everything that no window covers in the mask colour.
//
// Threads: RenderSaverImage is called by the projectors' render threads at
// once; renders of the source graph are taken one at a time under the saver's
// own guard. The configuration and the settings belong to the main thread and
// are not changed while a run goes on.

#include "foundation/qvrCSyncObjects.h"
#include "output/iSaver.h"
#include "projector/LConfiguration.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class EImageData;

class isvrVitrea : public iSaver {
public:
    // Texts of the checks before a run (65057 to 65059).
    static constexpr EStringId text_unknown_stream = 65057;
    static constexpr EStringId text_all_projectors_off = 65058;
    static constexpr EStringId text_first_past_last = 65059;

    explicit isvrVitrea(std::string name);

    iFactoryProducer* GetProducer() const override { return &Producer; }
    bool HasObjectBlock() const override { return true; }

    void doSaveData(qvrCTreeData& block, hReport& report) override;
    void doLoadData(const qvrCTreeData& block, hReport& report) override;

    // The picture of a projector's window at the frame, the size of the
    // window, black and transparent where the window leaves the source. Null
    // with the reason in `status` when it can't be had; `fatal` then says that
    // the run can't go on. The source's warnings are added to `warnings` when
    // it is given. The render gives up when `stop` is set.
    std::unique_ptr<EImageData> RenderSaverImage(long frame, std::size_t projector, const qvrCEvent* stop,
                                                 std::string& status, bool& fatal,
                                                 std::vector<std::string>* warnings);
    // The projector's pixel window in a source of the size, the whole array centred in it.
    CRect GetSourceWindow(std::size_t projector, EImageSize sourceSize) const;
    // Why a run with the settings can't start (the format, the projectors,
    // the range); empty when it can.
    std::string CheckRender(const iSaverSetup& setup) const;

    LConfiguration& GetConfiguration() { return Configuration; }
    const LConfiguration& GetConfiguration() const { return Configuration; }
    bool GetDisplayWindows() const { return DisplayWindows; }
    void SetDisplayWindows(bool display) { DisplayWindows = display; }
    std::uint32_t GetMaskColor() const { return MaskColor; }
    void SetMaskColor(std::uint32_t colour) { MaskColor = colour; }

    static iFactoryProducerOf<isvrVitrea> Producer;
    static const iParameterTable<isvrVitrea> Parameters;

protected:
    // The source's picture, masked outside the windows when DisplayWindows is on.
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override;

private:
    // Renders the part of the source for the run, under the saver's guard.
    bool renderSource(EImage& image, iRenderResult& result, long frame, EImageSize sourceSize,
                      const CRect& part, const qvrCEvent* stop);
    // Puts the parts of the picture that the windows cover on the mask colour.
    bool maskWindows(EImage& image, iRenderResult& result, const iRenderRequest& request);

    static const iParameterEntry<isvrVitrea> parameterEntries[];

    LConfiguration Configuration;
    bool DisplayWindows = true;
    std::uint32_t MaskColor = 0xFF000000;
    // One render of the source graph at a time.
    qvrCCriticalSection RenderGuard;
};
