// qvr convert IN OUT: reads a picture through the format registry and writes
// it as a quick file or a BMP file.

#include "QvrCommand.h"
#include "QvrPictureFile.h"
#include "QvrSession.h"

#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <cstdio>

namespace {

constexpr const char* Help =
    "usage: qvr convert IN OUT\n\n"
    "Reads the picture IN in any readable format (jpg, tga, png, qts) and writes it\n"
    "to OUT as a quick file (.qts), alpha, position and opacity kept, or as a 24-bit\n"
    "BMP file (.bmp). Exit 2 when IN can't be read or OUT has another extension, 1\n"
    "when writing OUT fails.\n";

int runConvert(const QvrCommand::Arguments& arguments) {
    if (arguments.size() != 2 || arguments[0].rfind("--", 0) == 0 || arguments[1].rfind("--", 0) == 0) {
        std::fputs(Help, stderr);
        return ExitUsage;
    }
    const std::string input = QvrSession::Absolute(arguments[0]);
    const std::string output = QvrSession::Absolute(arguments[1]);
    if (!QvrPictureFile::CanWrite(output)) {
        std::fprintf(stderr, "qvr convert: %s: the output must end in .qts or .bmp\n", output.c_str());
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
    std::string problem;
    if (!QvrPictureFile::Write(*picture, output, problem)) {
        std::fprintf(stderr, "qvr convert: %s: %s\n", output.c_str(), problem.c_str());
        return ExitFailures;
    }
    return ExitSuccess;
}

QvrCommand convert("convert", "convert a picture to a quick file or a BMP file", Help, runConvert);

} // namespace
