#pragma once
// Writes a picture into a file that a command names: a quick file (.qts) with
// alpha, position and opacity, or a 24-bit BMP file (.bmp) through the BMP
// output stream. Safe from any thread, one file per call.

#include <string>

class EImageData;

namespace QvrPictureFile {
// Whether the name ends in an extension that Write can write.
bool CanWrite(const std::string& path);
// False, with the reason in `problem`, when the file could not be written.
bool Write(const EImageData& picture, const std::string& path, std::string& problem);
} // namespace QvrPictureFile
