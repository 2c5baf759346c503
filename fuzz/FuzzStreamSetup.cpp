// The setup texts of the output streams: every stream's setup reads the
// text and describes itself.
#include "FuzzSupport.h"

#include "output/EImageOutputStream.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    qvrFuzz::StartSystem();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const EImageOutputStream* stream = EImageOutputStream::GetFirst(); stream;
         stream = stream->GetNext()) {
        const std::unique_ptr<EImageOutputSetup> setup = stream->CreateSetup();
        if (!setup) continue;
        if (setup->SetSetupString(text)) setup->GetSetupString();
        setup->IsValid();
        setup->GetDescription();
    }
    return 0;
}
