#include "imaging/CJPEGDecoder.h"

#include "imaging/EImageData.h"

// clang-format off
#include <cstdio>
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

namespace {

// libjpeg's error manager with the place its errors jump back to.
struct JpegErrors {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
    bool endOfData = false;
};

JpegErrors& errorsOf(j_common_ptr info) {
    return *reinterpret_cast<JpegErrors*>(info->err);
}

[[noreturn]] void leaveDecode(j_common_ptr info) {
    std::longjmp(errorsOf(info).jump, 1);
}

// Warnings that would let libjpeg fill the rest of the picture with made-up
// pixels end the decode; the others are let pass.
void judgeMessage(j_common_ptr info, int level) {
    if (level >= 0) return;
    switch (info->err->msg_code) {
    case JWRN_JPEG_EOF:
        errorsOf(info).endOfData = true;
        leaveDecode(info);
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_ARITH_BAD_CODE:
        leaveDecode(info);
    default:
        ++info->err->num_warnings;
    }
}

// libjpeg would print its messages on standard error.
void keepQuiet(j_common_ptr) {}

// One decompression with its error manager; libjpeg's memory goes with it.
class JpegDecompression {
public:
    JpegDecompression() {
        info.err = jpeg_std_error(&errors.manager);
        errors.manager.error_exit = leaveDecode;
        errors.manager.emit_message = judgeMessage;
        errors.manager.output_message = keepQuiet;
    }
    ~JpegDecompression() { jpeg_destroy_decompress(&info); }
    JpegDecompression(const JpegDecompression&) = delete;
    JpegDecompression& operator=(const JpegDecompression&) = delete;

    // Reads the header and starts a decompression to 32-bit pixels.
    void Start(const std::uint8_t* data, size_t size) {
        Guard([&] {
            jpeg_create_decompress(&info);
            jpeg_mem_src(&info, data, static_cast<unsigned long>(size));
            jpeg_read_header(&info, TRUE);
            info.out_color_space = JCS_EXT_BGRA;
            jpeg_start_decompress(&info);
        });
    }

    CSize GetSize() const { return {info.output_width, info.output_height}; }

    // Decodes every row into the picture, which has the size of GetSize().
    void ReadRows(EImageData& picture) {
        Guard([&] {
            JSAMPROW rows[16];
            while (info.output_scanline < info.output_height) {
                const long first = info.output_scanline;
                const long count = std::min<long>(16, info.output_height - first);
                for (long i = 0; i < count; ++i)
                    rows[i] = reinterpret_cast<JSAMPROW>(picture.GetRow(first + i));
                jpeg_read_scanlines(&info, rows, static_cast<JDIMENSION>(count));
            }
        });
    }

private:
    template <typename Step> void Guard(Step&& step) {
        if (RunGuarded(errors.jump, step)) return;
        if (errors.endOfData) throw CPicDecoderException::EndOfData();
        char message[JMSG_LENGTH_MAX];
        (*errors.manager.format_message)(reinterpret_cast<j_common_ptr>(&info), message);
        throw CPicDecoderException(errors.manager.msg_code == JERR_OUT_OF_MEMORY
                                       ? CPicDecoderException::NoMemory
                                       : CPicDecoderException::FormatUnknown,
                                   message);
    }

    JpegErrors errors;
    jpeg_decompress_struct info{};
};

} // namespace

std::unique_ptr<EImageData> CJPEGDecoder::DoDecode(CDataSource& source) const {
    JpegDecompression decompression;
    decompression.Start(source.GetBufferPtr(), source.GetBytesLeft());
    std::unique_ptr<EImageData> picture = CreateBmp(decompression.GetSize(), false);
    decompression.ReadRows(*picture);
    return picture;
}
