#pragma once
// JPEG and PNG files made in memory by the libraries' own encoders, for the
// tests and benchmarks of the image formats.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <jpeglib.h>
#include <png.h>

namespace qvrTest {

using Bytes = std::vector<std::uint8_t>;

// Full colour keeps every chroma sample; subsampled halves them both ways, as cameras do.
enum class JpegColours { FullColour, Subsampled, Grey };

// A JPEG of the words (top row first); a grey one takes their blue bytes.
inline Bytes EncodeJpeg(long width, long height, const std::vector<std::uint32_t>& words,
                        JpegColours colours = JpegColours::FullColour, int quality = 95) {
    const bool grey = colours == JpegColours::Grey;
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &buffer, &size);
    info.image_width = static_cast<JDIMENSION>(width);
    info.image_height = static_cast<JDIMENSION>(height);
    info.input_components = grey ? 1 : 4;
    info.in_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGRX;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    if (colours == JpegColours::FullColour)
        info.comp_info[0].h_samp_factor = info.comp_info[0].v_samp_factor = 1;
    jpeg_start_compress(&info, TRUE);
    std::vector<std::uint8_t> row(static_cast<size_t>(width) * 4);
    while (info.next_scanline < info.image_height) {
        const std::uint32_t* source = words.data() + static_cast<size_t>(info.next_scanline) * width;
        for (long x = 0; x < width; ++x) {
            if (grey)
                row[static_cast<size_t>(x)] = static_cast<std::uint8_t>(source[x]);
            else
                std::memcpy(&row[static_cast<size_t>(x) * 4], &source[x], 4);
        }
        JSAMPROW pointer = row.data();
        jpeg_write_scanlines(&info, &pointer, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    Bytes bytes(buffer, buffer + size);
    std::free(buffer);
    return bytes;
}

// What a PNG is made of: rows in the file's own layout, top first.
struct PngPicture {
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int colourType = PNG_COLOR_TYPE_RGB;
    int bitDepth = 8;
    bool interlaced = false;
    Bytes rows;
    std::vector<png_color> palette;
    Bytes transparency;
};

inline Bytes EncodePng(const PngPicture& picture) {
    Bytes bytes;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &bytes,
        [](png_structp writer, png_bytep data, size_t count) {
            auto* target = static_cast<Bytes*>(png_get_io_ptr(writer));
            target->insert(target->end(), data, data + count);
        },
        nullptr);
    png_set_IHDR(png, info, picture.width, picture.height, picture.bitDepth, picture.colourType,
                 picture.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (!picture.palette.empty())
        png_set_PLTE(png, info, picture.palette.data(), static_cast<int>(picture.palette.size()));
    if (!picture.transparency.empty())
        png_set_tRNS(png, info, picture.transparency.data(), static_cast<int>(picture.transparency.size()),
                     nullptr);
    png_write_info(png, info);
    const size_t rowBytes = picture.rows.size() / picture.height;
    std::vector<png_bytep> rows;
    for (size_t y = 0; y < picture.height; ++y)
        rows.push_back(const_cast<png_bytep>(picture.rows.data() + y * rowBytes));
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return bytes;
}

} // namespace qvrTest
