#pragma once
// The quick way through the PNG files that footage mostly is: 8-bit RGB or
// RGBA, not interlaced, without a transparency chunk. The whole compressed
// stream is inflated at once by libdeflate, several times faster than
// libpng's zlib, and the rows are unfiltered straight into the picture.
//
// It takes only what it can check whole: every chunk's CRC, the zlib stream
// with its checksum, exactly the bytes the rows need and a known filter on
// every row. Any other file, damaged ones included, is left to libpng, which
// decides what to make of it; a picture has the same bytes either way.
//
// One object reads one file; objects on several threads don't meet.

#include "foundation/qvrGeometry.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class EImageData;

class CPNGQuickRead {
public:
    // Walks the file's chunks; the bytes must outlive the object.
    CPNGQuickRead(const std::uint8_t* bytes, std::size_t size);

    // Whether the file is one to take the quick way.
    bool IsPlain() const { return plain; }
    CSize GetSize() const { return {width, height}; }
    bool HasAlpha() const { return channels == 4; }

    // Decodes every row into the blue, green, red and alpha bytes of the
    // picture, which has the file's size; without an alpha channel the alpha
    // bytes are 255. False when the stream or a row turns out unfit: the file
    // is then left to libpng.
    bool ReadRows(EImageData& picture) const;

private:
    bool readHeader(const std::uint8_t* data, std::uint32_t length);
    bool unfilterRows(std::uint8_t* raw, EImageData& picture) const;

    bool plain = false;
    long width = 0;
    long height = 0;
    int channels = 0;
    // The compressed stream, the data of all IDAT chunks in their order.
    std::vector<std::uint8_t> stream;
};
