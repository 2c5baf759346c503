// The tree data reader on any text, and the writer on what it read.
#include "foundation/qvrCTextFile.h"
#include "foundation/qvrCTreeData.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    qvrCMemoryTextFile file(std::string(reinterpret_cast<const char*>(data), size));
    qvrCTreeData root;
    long lines = 0;
    root.Load(file, lines, false, nullptr);
    qvrCMemoryTextFile written;
    root.Save(written, "   ", nullptr);
    return 0;
}
