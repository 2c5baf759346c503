#pragma once
// Helpers shared by the imaging tests: small pictures made inline, scratch
// files, captured debug lines and a cache that pages into its own memory.

#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageCache.h"
#include "imaging/EImageData.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include <unistd.h>

namespace qvrTest {

struct TraceCapture {
    TraceCapture() {
        qvrSetTraceSink([this](const std::string& line) { lines.push_back(line); });
    }
    ~TraceCapture() { qvrSetTraceSink({}); }
    std::vector<std::string> lines;
};

// A picture whose pixels are given row by row from the top.
inline std::unique_ptr<EImageData> MakePicture(long width, long height,
                                               const std::vector<std::uint32_t>& pixels) {
    auto picture = EImageData::New({width, height}, EImageMemory::NoFreeing);
    for (long y = 0; y < height; ++y)
        std::copy_n(pixels.begin() + y * width, width, picture->GetRow(y));
    return picture;
}

// A picture of pseudo-random words, alpha included.
inline std::unique_ptr<EImageData> MakeNoise(long width, long height, std::uint32_t seed) {
    std::vector<std::uint32_t> pixels(static_cast<size_t>(width * height));
    for (std::uint32_t& pixel : pixels)
        pixel = seed = seed * 1664525u + 1013904223u;
    return MakePicture(width, height, pixels);
}

inline std::vector<std::uint32_t> PixelsOf(const EImageData& picture) {
    std::vector<std::uint32_t> pixels;
    for (long y = 0; y < picture.GetHeight(); ++y)
        pixels.insert(pixels.end(), picture.GetRow(y), picture.GetRow(y) + picture.GetWidth());
    return pixels;
}

// A file name in this test process's own scratch directory. The directory
// lies below $QVR_HOME, which the test processes that run at once share, or
// below the system's temporary directory; it goes when the process ends.
inline std::string ScratchFile(const std::string& name) {
    struct ProcessDirectory {
        std::filesystem::path Path;
        ~ProcessDirectory() {
            std::error_code ignored;
            std::filesystem::remove_all(Path, ignored);
        }
    };
    static const ProcessDirectory directory{[] {
        const char* home = std::getenv("QVR_HOME");
        const std::filesystem::path base =
            home && *home ? std::filesystem::path(home) : std::filesystem::temp_directory_path();
        return base / ("scratch_" + std::to_string(::getpid()));
    }()};
    std::filesystem::create_directories(directory.Path);
    return (directory.Path / name).string();
}

inline std::vector<std::uint8_t> ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Writes a new file; the old one goes first, as rewriting a truncated file
// makes some file systems wait for the disk.
inline void WriteBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    std::filesystem::remove(path);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// Pages released holders out to its own memory when asked to free memory and
// counts the calls. Installed for its lifetime.
class FakeImageCache : public EImageCache {
public:
    FakeImageCache() { Install(this); }
    ~FakeImageCache() override { Install(nullptr); }

    bool FreeMemory(long bytes) override {
        freeRequests.push_back(bytes);
        bool freed = answerFreed;
        for (auto& [holder, pagedOut] : released) {
            if (!pagedOut) pagedOut = TakeData(*holder);
            freed = freed || pagedOut;
        }
        return freed;
    }
    bool Restore(EImage& holder) override {
        ++restores;
        if (failRestore) return false;
        if (auto entry = released.find(&holder); entry != released.end()) {
            if (entry->second) PutData(holder, std::move(entry->second));
            released.erase(entry);
        }
        return true;
    }
    void Release(EImage& holder) override { released.emplace(&holder, nullptr); }
    void Forget(EImage& holder) override { released.erase(&holder); }

    bool answerFreed = false;
    bool failRestore = false;
    std::vector<long> freeRequests;
    int restores = 0;
    std::map<EImage*, std::unique_ptr<EImageData>> released; // with what was paged out of them
};

} // namespace qvrTest
