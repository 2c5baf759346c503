#pragma once
// Helpers shared by the imaging tests: small pictures made inline, scratch
// files and their bytes.

#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageCache.h"
#include "imaging/EImageData.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qvrTest {

// Collects debug lines while it lives.
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
        for (long x = 0; x < width; ++x)
            picture->GetRow(y)[x] = pixels[static_cast<size_t>(y * width + x)];
    return picture;
}

// A picture in which every pixel differs: handy to see which pixel went where.
inline std::unique_ptr<EImageData> MakeNumbered(long width, long height) {
    auto picture = EImageData::New({width, height}, EImageMemory::NoFreeing);
    for (long y = 0; y < height; ++y)
        for (long x = 0; x < width; ++x)
            picture->GetRow(y)[x] = 0xFF000000u | static_cast<std::uint32_t>(y << 12 | x);
    return picture;
}

inline std::vector<std::uint32_t> PixelsOf(const EImageData& picture) {
    std::vector<std::uint32_t> pixels;
    for (long y = 0; y < picture.GetHeight(); ++y)
        pixels.insert(pixels.end(), picture.GetRow(y), picture.GetRow(y) + picture.GetWidth());
    return pixels;
}

// A file name in the tests' scratch directory.
inline std::string ScratchFile(const std::string& name) {
    const char* home = std::getenv("QVR_HOME");
    std::filesystem::path dir = home && *home ? std::filesystem::path(home)
                                              : std::filesystem::temp_directory_path() / "qvr_imaging_tests";
    std::filesystem::create_directories(dir);
    return (dir / name).string();
}

inline std::vector<std::uint8_t> ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Writes a new file; the old one is removed first, since rewriting a truncated
// file makes some file systems wait for the disk.
inline void WriteBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    std::filesystem::remove(path);
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// A cache that pages released holders out to its own memory when asked to
// free memory, and records every call. Installed for its lifetime.
class FakeImageCache : public EImageCache {
public:
    FakeImageCache() { Install(this); }
    ~FakeImageCache() override { Install(nullptr); }

    bool FreeMemory(long bytes) override {
        freeRequests.push_back(bytes);
        bool freed = false;
        for (auto& [holder, pagedOut] : released) {
            if (!pagedOut) pagedOut = TakeData(*holder);
            freed = freed || pagedOut != nullptr;
        }
        return freed || answerFreed;
    }
    bool Restore(EImage& holder) override {
        ++restores;
        if (failRestore) return false;
        auto entry = released.find(&holder);
        if (entry == released.end()) return true;
        if (entry->second) PutData(holder, std::move(entry->second));
        released.erase(entry);
        return true;
    }
    void Release(EImage& holder) override {
        ++releases;
        released.emplace(&holder, nullptr);
    }
    void Forget(EImage& holder) override {
        ++forgets;
        released.erase(&holder);
    }

    bool answerFreed = false;
    bool failRestore = false;
    std::vector<long> freeRequests;
    int restores = 0;
    int releases = 0;
    int forgets = 0;
    // Released holders with what was paged out of them.
    std::map<EImage*, std::unique_ptr<EImageData>> released;
};

} // namespace qvrTest
