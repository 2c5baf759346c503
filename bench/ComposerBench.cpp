// The composer at full HD: a final render of a solid background with four
// full-frame solid layers at partial opacity, each moved so that the edges
// clip it, as an edit with overlaid titles and grades renders every frame.

#include "imaging/EImage.h"
#include "objects/imodMerger.h"
#include "objects/isrcLayer.h"

#include <benchmark/benchmark.h>

#include <array>
#include <memory>

namespace {

constexpr EImageSize FullHD{1920, 1080};

struct LayerSetup {
    double x;
    double y;
    double opacity;
    double alpha;
};

constexpr std::array<LayerSetup, 4> layerSetups{{
    {-100.0, -60.0, 30.0, 255.0},
    {100.0, 60.0, 50.0, 200.0},
    {-40.0, 90.0, 70.0, 255.0},
    {60.0, -30.0, 90.0, 128.0},
}};

void ComposerFourLayersFullHDFinal(benchmark::State& state) {
    isrcLayer background("Background");
    background.SetSize(FullHD);
    imodMerger composer("Composer");
    composer.LinkParent(&background);
    std::array<std::unique_ptr<isrcLayer>, layerSetups.size()> layers;
    for (size_t i = 0; i < layers.size(); ++i) {
        layers[i] = std::make_unique<isrcLayer>("Layer " + std::to_string(i));
        layers[i]->SetSize(FullHD);
        layers[i]->GetRedValue().SetSingleKey(0, 40.0 * static_cast<double>(i + 1), false);
        layers[i]->GetAlphaValue().SetSingleKey(0, layerSetups[i].alpha, false);
        composer.LinkParent(layers[i].get());
        imodMergerLink& link = *composer.GetLinkOf(layers[i].get());
        link.GetXPosition().SetSingleKey(0, layerSetups[i].x, false);
        link.GetYPosition().SetSingleKey(0, layerSetups[i].y, false);
        link.GetOpacity().SetSingleKey(0, layerSetups[i].opacity, false);
    }
    iRenderRequest request;
    request.ImageSize = FullHD;
    request.Rect = {0, 0, FullHD.Width, FullHD.Height};
    request.DisplaySize = FullHD;
    request.FullSize = true;
    for (auto _ : state) {
        EImage image(0);
        iRenderResult result;
        if (!composer.Render(image, result, request)) state.SkipWithError(result.Message.c_str());
        benchmark::DoNotOptimize(&image);
    }
}
BENCHMARK(ComposerFourLayersFullHDFinal)->Unit(benchmark::kMillisecond);

} // namespace
