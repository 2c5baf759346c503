#pragma once
// Test support for the projector array saver: a source whose pixels tell
// where and when they come from, a small array of 18 projectors writing BMP
// sequences into a scratch directory, and the pixels of the files written.

#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "model/iSource.h"
#include "output/ESaverExecution.h"
#include "output/iSaverWorkData.h"
#include "projector/isvrVitrea.h"

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace qvrTest {

// A source of 40x20 whose pixel x, y of frame f is opaque with f in red, y in green and x in blue.
class PatternSource : public iSource {
public:
    using iSource::iSource;
    iFactoryProducer* GetProducer() const override { return &Producer; }

    static std::uint32_t PixelOf(long x, long y, long frame) {
        return 0xFF000000u | static_cast<std::uint32_t>(frame) << 16 | static_cast<std::uint32_t>(y) << 8 |
               static_cast<std::uint32_t>(x);
    }

    EImageSize Size{40, 20};
    // Frames that fail, with this code.
    std::set<long> FailingFrames;
    long FailCode = render_failed;

    inline static iFactoryProducerOf<PatternSource> Producer{iSource::ClassType, "Pattern probe"};

protected:
    bool doQueryImageSize(iImageSizeResult& result, long) override {
        result.Size = Size;
        return true;
    }
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override {
        if (FailingFrames.count(request.Frame)) {
            result.SetError(FailCode, this, "Probe failure");
            return false;
        }
        // A preview is sampled down to the display size, pixel by pixel.
        const CRect& rect = request.Rect;
        const CSize size =
            request.FullSize ? CSize{rect.Width(), rect.Height()} : request.DisplaySize.ToSize();
        auto picture = EImageData::New(size, EImageMemory::NoFreeing);
        for (long y = 0; y < size.cy; ++y)
            for (long x = 0; x < size.cx; ++x)
                picture->GetRow(y)[x] = PixelOf(rect.left + x * rect.Width() / size.cx,
                                                rect.top + y * rect.Height() / size.cy, request.Frame);
        EImageLock lock(image);
        lock.Lock(-1);
        lock.SetData(std::move(picture));
        result.Rect = rect;
        return true;
    }
};

// The array of the tests: windows of 4 by 4 pixels, nine in each of two rows
// (36 by 8, centred in the source at 2, 6), projector pictures of 8 by 6 whose
// quadrilateral is the whole picture, the nearest-pixel filter, and BMP
// sequences "p<NN>/f.bmp" below `directory`.
inline void SetUpSmallArray(isvrVitrea& saver, const std::string& directory) {
    LConfiguration& configuration = saver.GetConfiguration();
    LMetrics& metrics = configuration.Metrics;
    for (std::size_t i = 0; i < LVitrea::ProjectorCount; ++i) {
        const long column = static_cast<long>(i % 9);
        const long row = static_cast<long>(i / 9);
        metrics.Windows[i] = {column * 4, row * 4, column * 4 + 4, row * 4 + 4};
        configuration.Calibration.Projectors[i] = {CPoint{0, 0}, CPoint{7, 0}, CPoint{7, 5}, CPoint{0, 5}};
        char name[8];
        std::snprintf(name, sizeof name, "p%02zu", i + 1);
        configuration.OutputFiles.ProjectorPaths[i] = directory + "/" + name;
        configuration.OutputFiles.ProjectorFiles[i] = "f.bmp";
        std::filesystem::create_directories(directory + "/" + name);
    }
    metrics.DerivePixelWindows();
    configuration.Calibration.ImageWidth = 8;
    configuration.Calibration.ImageHeight = 6;
    configuration.OutputFiles.StreamType = "BMP Image stream";
    configuration.Filter = LProjection::FilterNearest;
    iSaverSetup& setup = saver.GetSetup();
    setup.VideoStart = 0;
    setup.VideoEnd = 2;
    setup.MiscThreadCnt = 3;
    setup.MiscMinimize = false;
    setup.LogKeep = false;
}

// The files of a projector's directory.
inline long CountFiles(const std::string& directory) {
    return std::distance(std::filesystem::directory_iterator(directory),
                         std::filesystem::directory_iterator());
}

// Red, green and blue of pixel x, y (from the top) of a 24-bit BMP file, as 0xRRGGBB.
inline std::uint32_t BmpPixel(const std::string& path, long x, long y) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(in),
                                           std::istreambuf_iterator<char>()};
    if (bytes.size() < 54) return 0xDEADBEEF;
    auto word = [&](size_t at) {
        return static_cast<long>(bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16 |
                                 static_cast<unsigned>(bytes[at + 3]) << 24);
    };
    const long width = word(18);
    const long height = word(22);
    const long rowBytes = (width * 3 + 3) / 4 * 4;
    const size_t at = static_cast<size_t>(word(10) + (height - 1 - y) * rowBytes + x * 3);
    if (at + 3 > bytes.size()) return 0xDEADBEEF;
    return static_cast<std::uint32_t>(bytes[at + 2] << 16 | bytes[at + 1] << 8 | bytes[at]);
}

// A run's window that only waits for the end of the run.
class WaitingWindow : public isvrSaverRunWindow {
public:
    void PostMessage(Message message) override {
        std::lock_guard lock(Guard);
        Finished = Finished || message == MessageFinished;
        Changed.notify_all();
    }
    void Report(unsigned, const std::string&, int) override {}
    // The limit only keeps a broken run from hanging the tests.
    bool WaitForFinish() {
        std::unique_lock lock(Guard);
        return Changed.wait_for(lock, std::chrono::seconds(60), [this] { return Finished; });
    }

private:
    std::mutex Guard;
    std::condition_variable Changed;
    bool Finished = false;
};

// The dialog's window in a test: the lines and the sounds.
class RecordingView : public ESaverExecution::View {
public:
    void AppendLine(const std::string& line) override { Lines.push_back(line); }
    void RemoveFirstLines(size_t) override {}
    void PlaySound(ESaverExecution::Sound) override {}
    void MinimizeMainWindow() override {}
    void RestoreMainWindow() override {}
    void Close() override {}

    bool HasLine(const std::string& line) const {
        for (const std::string& shown : Lines)
            if (shown == line + "\r\n") return true;
        return false;
    }

    std::vector<std::string> Lines;
};

} // namespace qvrTest
