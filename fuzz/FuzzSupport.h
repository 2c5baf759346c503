#pragma once
// What the fuzz targets share: the input written to a file of the name a
// reader wants, in a directory of the process's own, and the system started
// once for the readers that need its components.

class CTessarineApp;

#include <cstddef>
#include <cstdint>
#include <string>

namespace qvrFuzz {

// A directory that belongs to this process, in memory where the system has it.
const std::string& ScratchDirectory();
// Writes the input to `name` in the scratch directory; the path.
std::string WriteInput(const std::uint8_t* data, std::size_t size, const std::string& name);
// Starts the components as the qvr program does, preferences read only, with
// the scratch directory as program directory. Once per process.
CTessarineApp& StartSystem();

} // namespace qvrFuzz
