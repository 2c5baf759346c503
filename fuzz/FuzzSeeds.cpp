// Writes the seed corpora of the fuzz targets: for each target a few valid
// files made by the system's own writers (or, for formats it only reads, by
// the libraries that write them), each in the folder named after the target.
// Usage: qvr_fuzz_seeds DIRECTORY

#include "FuzzSupport.h"

#include "app/CTessarineApp.h"
#include "foundation/hReport.h"
#include "foundation/iDataBase.h"
#include "foundation/qvrCRegKey.h"
#include "foundation/qvrCTextFile.h"
#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"
#include "model/iProject.h"
#include "objects/hMatrix.h"
#include "objects/imodCrop.h"
#include "objects/imodMatrixEffect.h"
#include "objects/isrcLayer.h"
#include "output/EImageOutputStream.h"
#include "output/isvrSaver.h"
#include "projector/LMetricsQuickSetup.h"
#include "projector/isvrVitrea.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <jpeglib.h>
#include <png.h>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<std::uint8_t>;

fs::path corpus;

std::string seedPath(const std::string& target, const std::string& name) {
    fs::create_directories(corpus / target);
    return (corpus / target / name).string();
}

void writeSeed(const std::string& target, const std::string& name, const Bytes& bytes) {
    std::ofstream(seedPath(target, name), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void writeSeed(const std::string& target, const std::string& name, const std::string& text) {
    writeSeed(target, name, Bytes(text.begin(), text.end()));
}

// A small picture with runs and noise, so that run-length coders use both of their modes.
std::unique_ptr<EImageData> samplePicture(long width, long height) {
    auto picture = EImageData::New({width, height}, EImageMemory::NoFreeing);
    std::uint32_t noise = 12345;
    for (long y = 0; y < height; ++y)
        for (long x = 0; x < width; ++x) {
            noise = noise * 1103515245u + 12345u;
            picture->GetRow(y)[x] = y % 2 ? 0xFF204060u : (noise >> 8) | 0x80000000u;
        }
    picture->position = {3, -2};
    picture->opacity = 200;
    return picture;
}

// ---------------------------------------------------------------- text files

void treeDataSeeds() {
    qvrCTreeData root("Root", "V1.10");
    root.SetText("Plain", "a value with blanks, $ and\ttabs");
    qvrCTreeData* block = root.CreateChild("Block =;{}", true);
    block->SetText("Inner", "1,2,3,4");
    block->CreateChild("Deeper", true)->SetText("Leaf", "Yes");
    qvrCMemoryTextFile file;
    root.Save(file, "   ", nullptr);
    writeSeed("treedata", "tree.txt", file.GetText());
}

void projectSeeds() {
    iProject& project = iProject::GetStandard();
    project.Clear();
    auto* layer = static_cast<isrcLayer*>(project.Adopt(std::make_unique<isrcLayer>("Layer")));
    layer->SetSize({32, 24});
    auto* crop = project.Adopt(std::make_unique<imodCrop>("Crop"));
    crop->LinkParent(layer);
    auto* saver = static_cast<isvrSaver*>(project.Adopt(std::make_unique<isvrSaver>("Out")));
    saver->LinkParent(crop);
    saver->SetStream(EImageOutputStream::Find("BMP Image stream"));
    saver->SetFileName("/tmp/frame.bmp");
    auto* array = static_cast<isvrVitrea*>(project.Adopt(std::make_unique<isvrVitrea>("Array")));
    array->LinkParent(layer);
    hReportRoot report("Saving");
    iDataBase().Save(seedPath("project", "layers.tsp"), DBMaskProject, 0, &report);
    project.Clear();
    iDataBase().Save(seedPath("prefs", "preferences.tsp"), DBMaskGlobalPrefs | DBMaskUserPrefs, 0, &report);
}

void registrySeeds() {
    LMetricsQuickSetup().Save();
    qvrCRegKey key;
    key.Open(qvrCRegKey::Root(), "Engines\\ProxyManager");
    key.SetText("Directory", "/tmp/proxies");
    key.SetLong("Size", 100);
    fs::copy_file(qvrCRegKey::GetStorePath(), seedPath("registry", "Registry.tsp"),
                  fs::copy_options::overwrite_existing);
}

void definitionSeeds() {
    isvrVitrea array("Array");
    LConfiguration& configuration = array.GetConfiguration();
    for (std::size_t i = 0; i < LVitrea::ProjectorCount; ++i) {
        const long column = static_cast<long>(i % 9);
        const long row = static_cast<long>(i / 9);
        configuration.Metrics.Windows[i] = {column * 4, row * 4, column * 4 + 4, row * 4 + 4};
        configuration.Calibration.Projectors[i] = {CPoint{0, 0}, CPoint{7, 1}, CPoint{6, 5}, CPoint{1, 5}};
        configuration.OutputFiles.ProjectorPaths[i] = "/tmp/p" + std::to_string(i + 1);
        configuration.OutputFiles.ProjectorFiles[i] = "f.bmp";
    }
    configuration.Calibration.ImageWidth = 8;
    configuration.Calibration.ImageHeight = 6;
    configuration.Metrics.ResolutionX = 2.5;
    configuration.OutputFiles.StreamType = "BMP Image stream";
    std::string problem;
    configuration.Calibration.SaveToFile(seedPath("calibration", "array.vtcl"), problem);
    configuration.Metrics.SaveToFile(seedPath("metrics", "array.vtmt"), problem);
    configuration.OutputFiles.SaveToFile(seedPath("outputs", "array.vtfl"), problem);
}

void effectSeeds() {
    hMatrix matrix;
    matrix.SetEntry(2, 2, 5);
    matrix.SetEntry(1, 2, -1);
    matrix.SetEntry(3, 2, -1);
    matrix.SetDivisor(3);
    imodMatrixEffect effect("Sharpen", matrix);
    hReportRoot report("Saving");
    effect.SaveFile(seedPath("mfx", "sharpen.mfx"), report);
}

void setupSeeds() {
    int number = 0;
    for (const EImageOutputStream* stream = EImageOutputStream::GetFirst(); stream;
         stream = stream->GetNext())
        if (const std::unique_ptr<EImageOutputSetup> setup = stream->CreateSetup())
            writeSeed("setup", "setup" + std::to_string(number++) + ".txt", setup->GetSetupString());
}

// ---------------------------------------------------------------- pictures

void quickFileSeeds() {
    EImageFileResult result;
    EImageFileFormat::Save(*samplePicture(24, 9), seedPath("qts", "noise.qts"), result);
    auto solid = EImageData::NewFilled({40, 3}, EImageMemory::NoFreeing, 0xFF102030u);
    EImageFileFormat::Save(*solid, seedPath("qts", "solid.qts"), result);
}

// Uncompressed true colour and run-length coded 32-bit files.
void tgaSeeds() {
    const auto picture = samplePicture(6, 4);
    for (const std::uint8_t type : {std::uint8_t{2}, std::uint8_t{10}}) {
        const std::uint8_t depth = type == 2 ? 24 : 32;
        Bytes bytes = {0, 0, type, 0, 0, 0, 0, 0, 0, 0, 0, 0, 6, 0, 4, 0, depth, 0x20};
        for (long y = 0; y < 4; ++y)
            for (long x = 0; x < 6; ++x) {
                if (type == 10) bytes.push_back(0);
                for (int byte = 0; byte < depth / 8; ++byte)
                    bytes.push_back(static_cast<std::uint8_t>(picture->GetRow(y)[x] >> (8 * byte)));
            }
        writeSeed("tga", "type" + std::to_string(type) + ".tga", bytes);
    }
}

void jpegSeed(const std::string& name, int components, bool progressive) {
    const std::string path = seedPath("jpeg", name);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    jpeg_compress_struct compressor{};
    jpeg_error_mgr errors{};
    compressor.err = jpeg_std_error(&errors);
    jpeg_create_compress(&compressor);
    jpeg_stdio_dest(&compressor, file);
    compressor.image_width = 16;
    compressor.image_height = 8;
    compressor.input_components = components;
    compressor.in_color_space = components == 3 ? JCS_RGB : JCS_GRAYSCALE;
    jpeg_set_defaults(&compressor);
    if (progressive) jpeg_simple_progression(&compressor);
    jpeg_start_compress(&compressor, TRUE);
    std::vector<JSAMPLE> row(16 * static_cast<std::size_t>(components));
    for (std::size_t y = 0; y < 8; ++y) {
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = static_cast<JSAMPLE>(i * 13 + y * 29);
        JSAMPROW rows[] = {row.data()};
        jpeg_write_scanlines(&compressor, rows, 1);
    }
    jpeg_finish_compress(&compressor);
    jpeg_destroy_compress(&compressor);
    std::fclose(file);
}

// Plain 8-bit RGB and RGBA files take the program's quick path; palette,
// 16-bit and interlaced ones go through libpng.
void pngSeed(const std::string& name, int colourType, int depth, int interlace) {
    const std::string path = seedPath("png", name);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    png_structp writer = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(writer);
    png_init_io(writer, file);
    const png_uint_32 width = 9;
    const png_uint_32 height = 5;
    png_set_IHDR(writer, info, width, height, depth, colourType, interlace, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (colourType == PNG_COLOR_TYPE_PALETTE) {
        png_color palette[4] = {{0, 0, 0}, {255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
        png_set_PLTE(writer, info, palette, 4);
    }
    png_write_info(writer, info);
    const int channels = colourType == PNG_COLOR_TYPE_RGB ? 3 : colourType == PNG_COLOR_TYPE_RGBA ? 4 : 1;
    Bytes row(width * static_cast<png_uint_32>(channels) * static_cast<png_uint_32>(depth) / 8 + 1);
    const int passes = png_set_interlace_handling(writer);
    for (int pass = 0; pass < passes; ++pass)
        for (png_uint_32 y = 0; y < height; ++y) {
            for (std::size_t i = 0; i < row.size(); ++i)
                row[i] =
                    static_cast<std::uint8_t>(colourType == PNG_COLOR_TYPE_PALETTE ? (i + y) % 4 : i * 7 + y);
            png_write_row(writer, row.data());
        }
    png_write_end(writer, info);
    png_destroy_write_struct(&writer, &info);
    std::fclose(file);
}

void pictureSeeds() {
    quickFileSeeds();
    tgaSeeds();
    jpegSeed("colour.jpg", 3, false);
    jpegSeed("grey.jpg", 1, false);
    jpegSeed("progressive.jpg", 3, true);
    pngSeed("rgb.png", PNG_COLOR_TYPE_RGB, 8, PNG_INTERLACE_NONE);
    pngSeed("rgba.png", PNG_COLOR_TYPE_RGBA, 8, PNG_INTERLACE_NONE);
    pngSeed("palette.png", PNG_COLOR_TYPE_PALETTE, 8, PNG_INTERLACE_NONE);
    pngSeed("deep.png", PNG_COLOR_TYPE_RGB, 16, PNG_INTERLACE_NONE);
    pngSeed("interlaced.png", PNG_COLOR_TYPE_RGBA, 8, PNG_INTERLACE_ADAM7);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: qvr_fuzz_seeds DIRECTORY\n");
        return 2;
    }
    corpus = fs::absolute(argv[1]);
    qvrFuzz::StartSystem();
    treeDataSeeds();
    projectSeeds();
    registrySeeds();
    definitionSeeds();
    effectSeeds();
    setupSeeds();
    pictureSeeds();
    return 0;
}
