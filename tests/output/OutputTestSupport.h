#pragma once
// Helpers shared by the output stream tests: the registered BMP sequence and
// fresh directories in the tests' scratch area.

#include "imaging/ImagingTestSupport.h"
#include "output/EImageOutputSequence.h"

#include <filesystem>
#include <string>

namespace qvrTest {

inline const EImageOutputSequence& BmpSequence() {
    return dynamic_cast<const EImageOutputSequence&>(*EImageOutputStream::Find("BMP Image stream"));
}

// A directory of the name in the scratch area, emptied.
inline std::string EmptyDirectory(const std::string& name) {
    const std::string directory = ScratchFile(name);
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);
    return directory;
}

} // namespace qvrTest
