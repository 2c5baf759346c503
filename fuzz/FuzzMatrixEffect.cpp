// A matrix effect file (.mfx) read into an effect and written back.
#include "FuzzSupport.h"

#include "foundation/hReport.h"
#include "objects/hMatrix.h"
#include "objects/imodMatrixEffect.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    qvrFuzz::StartSystem();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    imodMatrixEffect effect("Fuzzed", hMatrix());
    hReportRoot report("Loading");
    if (effect.LoadFile(qvrFuzz::WriteInput(data, size, "input.mfx"), report))
        effect.SaveFile(qvrFuzz::ScratchDirectory() + "/output.mfx", report);
    return 0;
}
