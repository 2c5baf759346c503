// qvr convert IN OUT: reads a picture through the format registry and writes
// it as a quick file.

#include "QvrCommand.h"
#include "QvrSession.h"

#include "foundation/qvrString.h"
#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <cstdio>
#include <filesystem>

namespace {

constexpr const char* Help =
    "usage: qvr convert IN OUT\n\n"
    "Reads the picture IN in any readable format (jpg, tga, png, qts) and writes it\n"
    "to OUT as a quick file (.qts), alpha, position and opacity kept. BMP output\n"
    "(.bmp) is not available yet. Exit 2 when IN can't be read or OUT has another\n"
    "extension, 1 when writing OUT fails.\n";

bool hasExtension(const std::string& path, const char* extension) {
    return qvrEqualNoCase(std::filesystem::path(path).extension().string(), extension);
}

// Why the output can't be written, or null when it can.
const char* refusedOutput(const std::string& path) {
    if (hasExtension(path, ".qts")) return nullptr;
    if (hasExtension(path, ".bmp")) return "BMP output is not available yet; write a .qts file";
    return "the output must end in .qts or .bmp";
}

int runConvert(const QvrCommand::Arguments& arguments) {
    if (arguments.size() != 2 || arguments[0].rfind("--", 0) == 0 || arguments[1].rfind("--", 0) == 0) {
        std::fputs(Help, stderr);
        return ExitUsage;
    }
    const std::string input = QvrSession::Absolute(arguments[0]);
    const std::string output = QvrSession::Absolute(arguments[1]);
    if (const char* refusal = refusedOutput(output)) {
        std::fprintf(stderr, "qvr convert: %s: %s\n", output.c_str(), refusal);
        return ExitUsage;
    }
    QvrSession session;
    if (!session.Started()) return ExitUsage;
    EImageFileResult result;
    const std::unique_ptr<EImageData> picture = EImageFileFormat::Load(input, {0, 0, 0, 0}, result);
    if (!picture) {
        std::fprintf(stderr, "qvr convert: %s: %s\n", input.c_str(), result.text.c_str());
        return ExitUsage;
    }
    if (!EImageFileFormat::Save(*picture, output, result)) {
        std::fprintf(stderr, "qvr convert: %s: %s\n", output.c_str(), result.text.c_str());
        return ExitFailures;
    }
    return ExitSuccess;
}

QvrCommand convert("convert", "convert a picture to a quick file", Help, runConvert);

} // namespace
