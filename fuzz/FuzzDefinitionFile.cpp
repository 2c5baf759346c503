// A definition file of the projector array saver, read and used as a render
// run uses it. QVR_FUZZ_DEFINITION names the file's class.
#include "FuzzSupport.h"

#include "projector/LCalibration.h"
#include "projector/LMetrics.h"
#include "projector/LOutputFiles.h"
#include "projector/LProjection.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

void use(LCalibration& calibration) {
    std::string problem;
    calibration.Verify(problem);
    for (const LCorners& corners : calibration.Projectors) {
        LProjection projection;
        LProjection::VerifyFourPoints(corners);
        if (projection.Prepare(corners, {16, 12})) {
            double u = 0.0;
            double v = 0.0;
            projection.Solve(3.0, 4.0, false, u, v);
        }
    }
}

void use(LMetrics& metrics) {
    std::string problem;
    metrics.Verify(problem);
    metrics.DerivePixelWindows();
}

void use(LOutputFiles& outputs) {
    std::string problem;
    outputs.Verify(problem);
    for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector)
        outputs.GetOutputName(projector);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    qvrFuzz::StartSystem();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    QVR_FUZZ_DEFINITION definition;
    std::string problem;
    if (definition.LoadFromFile(qvrFuzz::WriteInput(data, size, "input.def"), problem)) use(definition);
    return 0;
}
