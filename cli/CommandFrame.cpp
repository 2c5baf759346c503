// qvr frame PROJECT ELEMENT FRAME -o OUT [--rect L,T,R,B] [--display W,H]:
// renders one element's picture at one frame, as a view or a saver asks for it.

#include "QvrCommand.h"
#include "QvrPictureFile.h"
#include "QvrSession.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "imaging/EImage.h"
#include "model/iElement.h"
#include "model/iProject.h"

#include <cstdio>
#include <optional>

namespace {

constexpr const char* Help =
    "usage: qvr frame PROJECT ELEMENT FRAME -o OUT [--rect L,T,R,B] [--display W,H]\n\n"
    "Renders one element's picture at one frame. The size is queried first; the\n"
    "rectangle is --rect or the whole image. With --display the request is a preview\n"
    "of that display size, without it a full-size render. OUT ending in .qts is\n"
    "written as a quick file (alpha, position and opacity kept), OUT ending in .bmp\n"
    "as a 24-bit BMP file.\n"
    "Exit 1 when the render fails, 2 for bad usage or a project that can't be loaded.\n";

struct FrameOptions {
    std::string Project;
    std::string Element;
    long Frame = 0;
    std::string Output;
    std::optional<CRect> Rect;
    std::optional<EImageSize> Display;
};

int usage(const std::string& problem) {
    std::fprintf(stderr, "qvr frame: %s\n\n%s", problem.c_str(), Help);
    return ExitUsage;
}

// Reads the options; an empty text means success, otherwise it says what is wrong.
std::string parseOptions(const QvrCommand::Arguments& arguments, FrameOptions& options) {
    std::vector<std::string> positional;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        bool hasValue = i + 1 < arguments.size();
        if (argument == "-o" || argument == "--rect" || argument == "--display") {
            if (!hasValue) return "\"" + argument + "\" needs a value";
            const std::string& value = arguments[++i];
            long numbers[4];
            if (argument == "-o") {
                options.Output = QvrSession::Absolute(value);
            } else if (argument == "--rect") {
                if (!qvrTreeText::ToLongs(value, numbers, 4))
                    return "--rect wants L,T,R,B, not \"" + value + "\"";
                options.Rect = CRect{numbers[0], numbers[1], numbers[2], numbers[3]};
            } else {
                if (!qvrTreeText::ToLongs(value, numbers, 2) || numbers[0] <= 0 || numbers[1] <= 0)
                    return "--display wants W,H above 0, not \"" + value + "\"";
                options.Display = EImageSize{numbers[0], numbers[1]};
            }
        } else {
            positional.push_back(argument);
        }
    }
    if (positional.size() != 3) return "PROJECT, ELEMENT and FRAME are needed";
    if (!qvrParseLong(positional[2], options.Frame))
        return "FRAME must be a whole number, not \"" + positional[2] + "\"";
    if (options.Output.empty()) return "-o OUT is needed";
    options.Project = QvrSession::Absolute(positional[0]);
    options.Element = positional[1];
    return {};
}

void printReport(const hReportRoot& report) {
    for (const hReportEntry& entry : report.GetEntries())
        std::fprintf(stderr, "report %d %s: %s\n", entry.Level, entry.Path.c_str(), entry.Text.c_str());
}

iRenderRequest buildRequest(const FrameOptions& options, EImageSize size) {
    iRenderRequest request;
    request.ImageSize = size;
    request.Frame = options.Frame;
    request.Rect = options.Rect.value_or(CRect{0, 0, size.Width, size.Height});
    request.FullSize = !options.Display;
    request.DisplaySize = options.Display.value_or(EImageSize{request.Rect.Width(), request.Rect.Height()});
    return request;
}

int failure(const char* what, const iRenderStatus& status, const std::vector<std::string>& notes = {}) {
    std::fprintf(stderr, "qvr frame: %s failed: code %ld: %s\n", what, status.Code, status.Message.c_str());
    for (const std::string& note : notes)
        std::fprintf(stderr, "  %s\n", note.c_str());
    return ExitFailures;
}

int writePicture(EImage& image, const std::string& output) {
    EImageLock lock(image);
    EImageData* picture = lock.Lock(-1) ? lock.GetData() : nullptr;
    if (!picture) {
        std::fprintf(stderr, "qvr frame: the render delivered no picture\n");
        return ExitFailures;
    }
    std::string problem;
    if (!QvrPictureFile::Write(*picture, output, problem)) {
        std::fprintf(stderr, "qvr frame: %s: %s\n", output.c_str(), problem.c_str());
        return ExitFailures;
    }
    return ExitSuccess;
}

int runFrame(const QvrCommand::Arguments& arguments) {
    FrameOptions options;
    std::string problem = parseOptions(arguments, options);
    if (!problem.empty()) return usage(problem);
    if (!QvrPictureFile::CanWrite(options.Output))
        return usage(options.Output + ": only .qts and .bmp output is written");
    QvrSession session;
    if (!session.Started()) return ExitUsage;
    hReportRoot report("Loading");
    bool loaded = session.GetApp().GetDocument().OnOpenDocument(options.Project, &report);
    printReport(report);
    if (!loaded) {
        std::fprintf(stderr, "qvr frame: %s: the project could not be loaded\n", options.Project.c_str());
        return ExitUsage;
    }
    iElement* element = iProject::GetStandard().FindElement(options.Element);
    if (!element) {
        std::fprintf(stderr, "qvr frame: %s: there is no element \"%s\"\n", options.Project.c_str(),
                     options.Element.c_str());
        return ExitUsage;
    }
    iImageSizeResult size;
    if (!element->QueryImageSize(size, options.Frame)) return failure("the size query", size);
    iRenderRequest request = buildRequest(options, size.Size);
    iRenderResult result;
    EImage image(0);
    if (!element->Render(image, result, request)) return failure("the render", result, result.Notes);
    return writePicture(image, options.Output);
}

QvrCommand frame("frame", "render one element's picture at one frame", Help, runFrame);

} // namespace
