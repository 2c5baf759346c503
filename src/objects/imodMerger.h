#pragma once
// The composer: lays the pictures of several elements over one background.
// The first parent link leads to the background, which decides the composer's
// size; every further link is a layer with an animated position, opacity and
// on/off switch, drawn in link order, so the last link is the top layer. Only
// the visible part of a layer is rendered, at the size at which it shows.
//
// The links are imodMergerLinks, which carry the layer's values. A link
// registers its values with the composer only while it is a layer: the
// background's values are kept but neither saved nor shown, and come back
// when the link becomes a layer again.
//
// Threads: renders may run on several threads at once; each layer's last
// place (layerRect) has its own lock so that a view can read it during a
// render. Links, values and flags are edited on the main thread.

#include "foundation/qvrCSyncObjects.h"
#include "model/iElementLink.h"
#include "model/iModifier.h"
#include "model/iParameter.h"
#include "objects/iLimitedValue.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

class imodMerger;

// One link of a composer to a parent: the background or a layer.
class imodMergerLink : public iElementLink {
public:
    imodMergerLink(iElement* parent, imodMerger* composer);
    // Unlinks while the values still exist.
    ~imodMergerLink() override;

    // Links as the base does; then the background's values leave the
    // composer and a layer's values join it.
    void Link(bool notify, iElementLink* before) override;
    // Takes the values out; a link that becomes the background loses its values too.
    void Unlink(bool notify) override;

    // Linked, and no link before it in the composer's chain.
    bool IsBackground() const;
    // Registers the values of a layer and unregisters those of the background or an unlinked link.
    void UpdateValues();
    // Names the values after the parent's present name: "parent: key".
    void RenameValues();

    // Where the layer lies at the frame, in the coordinates of a composer of
    // the given size, for a layer of `layerSize`; the place is remembered as layerRect.
    CRect PlaceLayer(EImageSize layerSize, long frame, EImageSize composerSize);
    bool IsActive(long frame) const { return active.GetValue(frame) >= 0.0; }
    // The opacity as a blend factor of 0 to 255.
    long GetOpacityByte(long frame) const;
    // Where the layer lay in the last render; left and right are 0 while a render looks at it.
    CRect GetLayerRect() const;
    void ClearLayerRectWidth();

    iActiveValue& GetXPosition() { return xPos; }
    iActiveValue& GetYPosition() { return yPos; }
    iActiveValue& GetOpacity() { return opacity; }
    iActiveValue& GetActive() { return active; }
    bool GetShowFrame() const { return showFrame; }
    void SetShowFrame(bool show) { showFrame = show; }
    // The next link in the composer's chain, or null.
    imodMergerLink* GetNextLink() const;

    // The layer's values; each is named "<parent>: <key>".
    static const iParameterTable<imodMergerLink> Parameters;

private:
    imodMerger* GetComposer() const;
    std::array<iActiveValue*, 4> allValues();
    void linkValues();
    void unlinkValues();

    static const iParameterEntry<imodMergerLink> parameterEntries[];

    iLimitedValue xPos;
    iLimitedValue yPos;
    iLimitedValue opacity;
    iLimitedValue active;
    CRect layerRect;
    mutable qvrCCriticalSection rectLock;
    bool showFrame = true;
};

class imodMerger : public iModifier {
public:
    explicit imodMerger(std::string name);

    iFactoryProducer* GetProducer() const override { return &Producer; }
    int GetMaxParents() const override { return 2; }
    bool AcceptsGrid() const override { return true; }
    bool HasObjectBlock() const override { return true; }
    std::string_view GetViewClass() const override { return "CObjectMergerView"; }
    // "Background: "name"", or "<no background>".
    std::string GetStateText() const override;

    iElementLink* CreateLink(iElement* parent) override;
    void OnParentLinked(iElement* parent) override;
    // A renamed parent renames its link's values.
    void OnParentModified(iElement* sender, const EFrameRange* stamp) override;

    void doSaveData(qvrCTreeData& block, hReport& report) override;
    void doLoadData(const qvrCTreeData& block, hReport& report) override;

    // A new composer under the same name with the same error policy.
    std::unique_ptr<imodMerger> Clone() const;

    imodMergerLink* GetFirstLink() const;
    // The link to the parent, or null.
    imodMergerLink* GetLinkOf(const iElement* parent) const;
    // The link to the parent of that name, without regard to case, or null.
    imodMergerLink* GetLinkOfName(std::string_view name) const;

    // True: a layer that fails is left out with a note; false: the whole render fails.
    bool GetIgnoreSourceErrors() const { return ignoreSourceErrors; }
    void SetIgnoreSourceErrors(bool ignore) { ignoreSourceErrors = ignore; }

    static iFactoryProducerOf<imodMerger> Producer;
    static const iParameterTable<imodMerger> Parameters;

protected:
    bool doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) override;
    bool doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                          iRenderRequest& request) override;

private:
    struct RenderPass;
    struct LayerTarget;

    // Draws one layer; false when its failure ends the whole render.
    bool renderLayer(imodMergerLink& link, RenderPass& pass) const;
    // The layer's part on the background and where it goes in the picture; false when nothing shows.
    static bool placeOnPicture(const CRect& place, EImageSize layerSize, const RenderPass& pass,
                               LayerTarget& layer);
    void blendLayer(const iElement& source, const LayerTarget& target, std::uint8_t opacity,
                    RenderPass& pass) const;
    bool sizeQueryFailed(const iElement& source, const iImageSizeResult& failure, RenderPass& pass) const;
    bool layerRenderFailed(const iElement& source, RenderPass& pass) const;
    void logFailure(EStringId text, const iElement& source, long frame, const std::string& message) const;
    void addNote(RenderPass& pass, EStringId text, const iElement& source,
                 const std::string& message = {}) const;

    static const iParameterEntry<imodMerger> parameterEntries[];

    bool ignoreSourceErrors = true;
};
