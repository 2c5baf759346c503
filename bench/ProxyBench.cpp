// A preview of one frame of a 3840 by 2160 JPEG sequence at 720 by 576, as
// a view asks for it: through the frame's proxy once it exists (warm), and
// straight from the original when the footage doesn't use proxies.

#include "../tests/imaging/EncodedTestFiles.h"

#include "imaging/EImage.h"
#include "imaging/EImageStorage.h"
#include "objects/isrcSequence.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <random>

namespace {

namespace fs = std::filesystem;

const fs::path& benchDirectory() {
    static const fs::path directory = fs::temp_directory_path() / "qvrbench_proxies";
    return directory;
}

// Two frames of graded colour with a little noise, written once.
void writeFootage() {
    static const bool written = [] {
        constexpr long Width = 3840, Height = 2160;
        std::mt19937 random(11);
        std::uniform_int_distribution<int> noise(-6, 6);
        auto channel = [&](long value) {
            return static_cast<std::uint32_t>(std::clamp(value + noise(random), 0L, 255L));
        };
        std::vector<std::uint32_t> words;
        words.reserve(static_cast<size_t>(Width * Height));
        for (long y = 0; y < Height; ++y)
            for (long x = 0; x < Width; ++x)
                words.push_back(0xFF000000u | channel(x * 255 / Width) << 16 |
                                channel(y * 255 / Height) << 8 | channel((x + y) * 255 / (Width + Height)));
        const qvrTest::Bytes bytes =
            qvrTest::EncodeJpeg(Width, Height, words, qvrTest::JpegColours::Subsampled, 90);
        fs::create_directories(benchDirectory() / "footage");
        for (const char* name : {"uhd_0001.jpg", "uhd_0002.jpg"})
            std::ofstream(benchDirectory() / "footage" / name, std::ios::binary)
                .write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<std::streamsize>(bytes.size()));
        return true;
    }();
    static_cast<void>(written);
}

void previewFrame(benchmark::State& state, bool useProxies) {
    writeFootage();
    EProxySettings settings;
    settings.proxyDirectory = (benchDirectory() / "proxies").string();
    EImageStorage::Get().SetSettings(settings);
    EImageStorage::Get().EmptyInfoCache();

    isrcSequence footage("Footage");
    EFileGroupSetup files((benchDirectory() / "footage").string(), EFileGroup("uhd_", ".jpg", 4, 1, 2));
    files.UseProxies = useProxies;
    footage.SetFile(files, false);
    iImageSizeResult size;
    if (!footage.QueryImageSize(size, 0)) state.SkipWithError(size.Message.c_str());
    iRenderRequest request;
    request.ImageSize = size.Size;
    request.Rect = {0, 0, size.Size.Width, size.Size.Height};
    request.DisplaySize = {720, 576};
    EImage image(0);
    iRenderResult result;
    // The first render makes the proxy; the loop measures the warm case.
    if (!footage.Render(image, result, request)) state.SkipWithError(result.Message.c_str());
    for (auto _ : state) {
        if (!footage.Render(image, result, request)) state.SkipWithError(result.Message.c_str());
        benchmark::ClobberMemory();
    }
}

void BM_PreviewUhdJpegThroughProxy(benchmark::State& state) {
    previewFrame(state, true);
}
BENCHMARK(BM_PreviewUhdJpegThroughProxy)->Unit(benchmark::kMillisecond);

void BM_PreviewUhdJpegFromOriginal(benchmark::State& state) {
    previewFrame(state, false);
}
BENCHMARK(BM_PreviewUhdJpegFromOriginal)->Unit(benchmark::kMillisecond);

} // namespace
