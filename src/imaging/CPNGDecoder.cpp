#include "imaging/CPNGDecoder.h"

#include "imaging/CPNGQuickRead.h"
#include "imaging/EImageData.h"

#include <cstring>
#include <png.h>

namespace {

// What libpng's callbacks need: the data and the last error.
struct PngContext {
    CDataSource* source;
    bool endOfData = false;
    char message[200] = "";
};

PngContext& contextOf(png_structp png) {
    return *static_cast<PngContext*>(png_get_error_ptr(png));
}

[[noreturn]] void leaveDecode(png_structp png, png_const_charp message) {
    std::strncpy(contextOf(png).message, message, sizeof contextOf(png).message - 1);
    png_longjmp(png, 1);
}

// libpng would print its warnings on standard error.
void ignoreWarning(png_structp, png_const_charp) {}

void readData(png_structp png, png_bytep target, size_t count) {
    PngContext& context = contextOf(png);
    if (count > context.source->GetBytesLeft()) {
        context.endOfData = true;
        png_error(png, "end of data");
    }
    std::memcpy(target, context.source->ReadNBytes(count), count);
}

// One read of a PNG file with its structures.
class PngRead {
public:
    explicit PngRead(CDataSource& source) {
        context.source = &source;
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &context, leaveDecode, ignoreWarning);
        if (png) info = png_create_info_struct(png);
        if (!info) {
            png_destroy_read_struct(&png, nullptr, nullptr);
            throw CPicDecoderException(CPicDecoderException::NoMemory, "Out of memory for the PNG reader.");
        }
        png_set_read_fn(png, &context, readData);
#ifdef PNG_IGNORE_ADLER32
        // Every chunk's CRC guards the picture data already; the stream's
        // checksum on top would cost a tenth of the decode.
        png_set_option(png, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
#endif
    }
    ~PngRead() { png_destroy_read_struct(&png, &info, nullptr); }
    PngRead(const PngRead&) = delete;
    PngRead& operator=(const PngRead&) = delete;

    // Reads the chunks up to the pixels and asks for blue, green, red and
    // alpha bytes, 8 bits each.
    void Start() {
        Guard([&] {
            png_read_info(png, info);
            png_set_strip_16(png);
            png_set_expand(png);
            png_set_gray_to_rgb(png);
            png_set_bgr(png);
            png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
            png_set_interlace_handling(png);
            png_read_update_info(png, info);
        });
    }

    CSize GetSize() const { return {png_get_image_width(png, info), png_get_image_height(png, info)}; }

    bool HasAlpha() const {
        return (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) != 0 ||
               png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    }

    // Decodes every row into the picture, which has the size of GetSize().
    void ReadRows(EImageData& picture) {
        std::vector<png_bytep> rows(static_cast<size_t>(picture.GetHeight()));
        for (size_t y = 0; y < rows.size(); ++y)
            rows[y] = reinterpret_cast<png_bytep>(picture.GetRow(static_cast<long>(y)));
        Guard([&] { png_read_image(png, rows.data()); });
    }

private:
    template <typename Step> void Guard(Step&& step) {
        if (RunGuarded(png_jmpbuf(png), step)) return;
        if (context.endOfData) throw CPicDecoderException::EndOfData();
        throw CPicDecoderException(CPicDecoderException::FormatUnknown, context.message);
    }

    PngContext context;
    png_structp png = nullptr;
    png_infop info = nullptr;
};

} // namespace

std::unique_ptr<EImageData> CPNGDecoder::DoDecode(CDataSource& source) const {
    const CPNGQuickRead quick(source.GetBufferPtr(), source.GetBytesLeft());
    if (quick.IsPlain()) {
        std::unique_ptr<EImageData> picture = CreateBmp(quick.GetSize(), quick.HasAlpha());
        if (quick.ReadRows(*picture)) return picture;
    }
    PngRead read(source);
    read.Start();
    std::unique_ptr<EImageData> picture = CreateBmp(read.GetSize(), read.HasAlpha());
    read.ReadRows(*picture);
    return picture;
}
