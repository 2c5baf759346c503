#include "output/qvrCAVIStream.h"

#include "foundation/ELog.h"
#include "foundation/EStringTable.h"
#include "foundation/qvrCException.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EBinaryFile.h"
#include "imaging/EImageData.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <climits>
#include <memory>
#include <unistd.h>

namespace {

constexpr EStringId textCategory = 45207;
constexpr EStringId textNoCompressor = 45208;
constexpr EStringId textFirstStatus = 45220;
constexpr EStringId textUserAbort = 45237;
constexpr EStringId textGenericError = 45238;
constexpr EStringId textUnknownError = 45239;
constexpr long firstListedStatus = qvrCAVIStream::StatusUnsupported;
constexpr long lastListedStatus = qvrCAVIStream::StatusCantCompress;

std::vector<qvrCAVICompressor> compressorList;

struct PacketFree {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using PacketPointer = std::unique_ptr<AVPacket, PacketFree>;

// The codec tags of the AVI muxer.
const AVCodecTag* const* aviCodecTags() {
    static const AVOutputFormat* avi = av_guess_format("avi", nullptr, nullptr);
    return avi ? avi->codec_tag : nullptr;
}

// The encoder's input formats that a 32-bit picture can be converted to.
std::vector<AVPixelFormat> convertibleFormats(const AVCodec* codec) {
    std::vector<AVPixelFormat> formats;
    for (const AVPixelFormat* format = codec->pix_fmts; format && *format != AV_PIX_FMT_NONE; ++format)
        if (sws_isSupportedOutput(*format)) formats.push_back(*format);
    return formats;
}

// The compressor that an encoder makes, if the AVI muxer takes its output and
// it runs here without special hardware.
std::optional<qvrCAVICompressor> compressorOf(const AVCodec* codec) {
    if (!av_codec_is_encoder(codec) || codec->type != AVMEDIA_TYPE_VIDEO || codec->id == AV_CODEC_ID_RAWVIDEO)
        return std::nullopt;
    if (codec->capabilities & (AV_CODEC_CAP_EXPERIMENTAL | AV_CODEC_CAP_HARDWARE)) return std::nullopt;
    const unsigned handler = aviCodecTags() ? av_codec_get_tag(aviCodecTags(), codec->id) : 0;
    if (handler == 0 || convertibleFormats(codec).empty()) return std::nullopt;
    return qvrCAVICompressor{static_cast<long>(handler), codec->name,
                             codec->long_name ? codec->long_name : codec->name};
}

// The status of an FFmpeg error: out of memory is its own, the rest is `otherwise`.
long statusOf(int error, long otherwise) {
    return error == AVERROR(ENOMEM) ? qvrCAVIStream::StatusMemory : otherwise;
}

} // namespace

std::string qvrCAVIStream::Options::ToString() const {
    return qvrFormat("%ld|%ld|%ld|%ld|%ld|%ld", Handler, KeyFrameInterval, Quality, BytesPerSecond, Flags,
                     InterleaveInterval);
}

bool qvrCAVIStream::Options::FromString(std::string_view text) {
    const std::vector<std::string> fields = qvrSplit(text, '|');
    long values[6] = {};
    if (fields.size() != std::size(values)) return false;
    for (size_t i = 0; i < fields.size(); ++i)
        if (!qvrParseLong(fields[i], values[i])) return false;
    Handler = values[0];
    KeyFrameInterval = values[1];
    Quality = values[2];
    BytesPerSecond = values[3];
    Flags = values[4];
    InterleaveInterval = values[5];
    return true;
}

void qvrCAVIStream::Options::LoadCompressors() {
    // FFmpeg's own notes and warnings stay off the console.
    av_log_set_level(AV_LOG_ERROR);
    std::vector<qvrCAVICompressor> found;
    void* iteration = nullptr;
    while (const AVCodec* codec = av_codec_iterate(&iteration)) {
        std::optional<qvrCAVICompressor> compressor = compressorOf(codec);
        const auto sameHandler = [&](const qvrCAVICompressor& other) {
            return other.Handler == compressor->Handler;
        };
        // The first encoder of a code is the one that FindCompressor gives.
        if (compressor && std::none_of(found.begin(), found.end(), sameHandler))
            found.insert(found.begin(), std::move(*compressor));
    }
    if (found.empty()) ELog::Warning(EStringTable::Load(textNoCompressor), EStringTable::Load(textCategory));
    compressorList = std::move(found);
}

void qvrCAVIStream::Options::FreeCompressors() {
    compressorList.clear();
}

const std::vector<qvrCAVICompressor>& qvrCAVIStream::Options::GetCompressors() {
    return compressorList;
}

std::optional<qvrCAVICompressor> qvrCAVIStream::Options::FindCompressor(long handler) {
    void* iteration = nullptr;
    while (const AVCodec* codec = av_codec_iterate(&iteration)) {
        std::optional<qvrCAVICompressor> compressor = compressorOf(codec);
        if (compressor && compressor->Handler == handler) return compressor;
    }
    return std::nullopt;
}

qvrCAVIStream::~qvrCAVIStream() {
    Close();
}

bool qvrCAVIStream::Open(const std::string& name, const Options* options, CSize size, unsigned long newRate,
                         unsigned long newRateStep) {
    Close();
    status = StatusOK;
    errorText.clear();
    fileName = name;
    rate = newRate;
    rateStep = newRateStep;
    frameSize = size;
    frameCount = 0;
    writeFailed = false;
    if (!TestPath()) return false;
    if (rate == 0 || rateStep == 0 || rate > INT_MAX || rateStep > INT_MAX || size.cx <= 0 || size.cy <= 0)
        return Fail(StatusBadParam);
    if (!CreateContainer() || !CreateVideoStream(options) || !OnOpen() || !WriteHeader() ||
        !FlushWholeFrames()) {
        Release();
        return false;
    }
    open = true;
    return true;
}

bool qvrCAVIStream::Write(const EImageData& image) {
    if (!open) return Fail(StatusBadHandle);
    if (image.GetSize() != frameSize) return Fail(StatusBadSize);
    // The muxer can't go on after a failed write: the status of that failure stands.
    if (writeFailed) return false;
    const bool written = encoder ? WriteEncoded(&image)
                                 : WriteData(*videoStream, image.GetBits(),
                                             static_cast<size_t>(image.GetBytesPerLine() * image.GetHeight()),
                                             static_cast<int64_t>(frameCount), 1, videoStream->time_base);
    if (!written || !FlushWholeFrames()) {
        writeFailed = writeFailed || status == StatusFileWrite;
        return false;
    }
    const auto firstSample = static_cast<long>(frameCount * rateStep);
    if (!OnFrameWritten(firstSample, static_cast<long>(rateStep))) return false;
    ++frameCount;
    return true;
}

bool qvrCAVIStream::Close() {
    if (!container) return true;
    status = StatusOK;
    errorText.clear();
    bool finished = true;
    if (open) {
        open = false;
        if (writeFailed)
            CutToWholeFrames();
        else if (encoder)
            finished = WriteEncoded(nullptr);
        const int result = av_write_trailer(container);
        if (result < 0 && finished) finished = Fail(statusOf(result, StatusFileWrite));
    }
    Release();
    return finished;
}

std::string qvrCAVIStream::StatusText(long statusNumber) {
    if (statusNumber >= firstListedStatus && statusNumber <= lastListedStatus)
        return EStringTable::Load(textFirstStatus + static_cast<EStringId>(statusNumber - firstListedStatus));
    if (statusNumber == StatusUserAbort) return EStringTable::Load(textUserAbort);
    if (statusNumber == StatusError) return EStringTable::Load(textGenericError);
    return EStringTable::Load(textUnknownError);
}

bool qvrCAVIStream::WritePacket(AVPacket& packet, const AVRational& timeBase) {
    AVStream* stream = container->streams[packet.stream_index];
    av_packet_rescale_ts(&packet, timeBase, stream->time_base);
    const int result = av_write_frame(container, &packet);
    return result >= 0 || Fail(statusOf(result, StatusFileWrite));
}

bool qvrCAVIStream::WriteData(const AVStream& stream, const void* data, size_t size, int64_t time,
                              int64_t duration, const AVRational& timeBase) {
    if (size > INT_MAX) return Fail(StatusMemory);
    if (!data) {
        if (zeros.size() < size) zeros.resize(size);
        data = zeros.data();
    }
    PacketPointer packet(av_packet_alloc());
    if (!packet) return Fail(StatusMemory);
    // A packet without a buffer of its own: the muxer reads the bytes in place.
    packet->data = static_cast<std::uint8_t*>(const_cast<void*>(data));
    packet->size = static_cast<int>(size);
    packet->pts = packet->dts = time;
    packet->duration = duration;
    packet->flags |= AV_PKT_FLAG_KEY;
    packet->stream_index = stream.index;
    return WritePacket(*packet, timeBase);
}

bool qvrCAVIStream::Fail(long newStatus, std::string text) {
    status = newStatus;
    errorText = text.empty() ? StatusText(newStatus) : std::move(text);
    return false;
}

bool qvrCAVIStream::TestPath() {
    try {
        EBinaryFile file(fileName, EBinaryFile::Mode::Write);
        file.Close();
        return true;
    } catch (const qvrCFileException& failure) {
        return Fail(StatusFileOpen, qvrErrorText::FromFileException(failure));
    }
}

bool qvrCAVIStream::CreateContainer() {
    if (avformat_alloc_output_context2(&container, nullptr, "avi", nullptr) < 0) return Fail(StatusInternal);
    // The protocol prefix keeps a colon in the name from being read as one.
    if (avio_open(&container->pb, ("file:" + fileName).c_str(), AVIO_FLAG_WRITE) < 0)
        return Fail(StatusFileOpen);
    return true;
}

bool qvrCAVIStream::CreateVideoStream(const Options* options) {
    videoStream = avformat_new_stream(container, nullptr);
    if (!videoStream) return Fail(StatusMemory);
    videoStream->time_base = AVRational{static_cast<int>(rateStep), static_cast<int>(rate)};
    av_dict_set(&videoStream->metadata, "title", "qvrCAVIStream", 0);
    if (!options || options->IsUncompressed()) {
        AVCodecParameters* format = videoStream->codecpar;
        format->codec_type = AVMEDIA_TYPE_VIDEO;
        format->codec_id = AV_CODEC_ID_RAWVIDEO;
        format->format = AV_PIX_FMT_BGRA;
        format->bits_per_coded_sample = 32;
        format->width = static_cast<int>(frameSize.cx);
        format->height = static_cast<int>(frameSize.cy);
        return true;
    }
    const std::optional<qvrCAVICompressor> compressor = Options::FindCompressor(options->Handler);
    return compressor ? OpenEncoder(*compressor, *options) : Fail(StatusNoCompressor);
}

bool qvrCAVIStream::OpenEncoder(const qvrCAVICompressor& compressor, const Options& options) {
    const AVCodec* codec = avcodec_find_encoder_by_name(compressor.Name.c_str());
    encoder = codec ? avcodec_alloc_context3(codec) : nullptr;
    if (!encoder) return Fail(StatusNoCompressor);
    std::vector<AVPixelFormat> candidates = convertibleFormats(codec);
    candidates.push_back(AV_PIX_FMT_NONE);
    encoder->pix_fmt = avcodec_find_best_pix_fmt_of_list(candidates.data(), AV_PIX_FMT_BGRA, 1, nullptr);
    encoder->width = static_cast<int>(frameSize.cx);
    encoder->height = static_cast<int>(frameSize.cy);
    encoder->time_base = videoStream->time_base;
    encoder->framerate = AVRational{static_cast<int>(rate), static_cast<int>(rateStep)};
    encoder->max_b_frames = 0;
    if ((options.Flags & Options::FlagKeyFrames) && options.KeyFrameInterval > 0)
        encoder->gop_size = static_cast<int>(options.KeyFrameInterval);
    if (options.Quality >= 0) {
        // 10000 is the best quality, quantiser 1; 0 the worst, quantiser 31.
        encoder->flags |= AV_CODEC_FLAG_QSCALE;
        encoder->global_quality =
            static_cast<int>(FF_QP2LAMBDA * (1 + (10000 - options.Quality) * 30 / 10000));
    }
    if (options.Flags & Options::FlagDataRate) encoder->bit_rate = options.BytesPerSecond * 8;
    if (avcodec_open2(encoder, codec, nullptr) < 0) return Fail(StatusCompressor);
    if (avcodec_parameters_from_context(videoStream->codecpar, encoder) < 0) return Fail(StatusMemory);

    encoderFrame = av_frame_alloc();
    if (!encoderFrame) return Fail(StatusMemory);
    encoderFrame->format = encoder->pix_fmt;
    encoderFrame->width = encoder->width;
    encoderFrame->height = encoder->height;
    if (av_frame_get_buffer(encoderFrame, 0) < 0) return Fail(StatusMemory);
    converter = sws_getContext(encoder->width, encoder->height, AV_PIX_FMT_BGRA, encoder->width,
                               encoder->height, encoder->pix_fmt, SWS_BICUBIC, nullptr, nullptr, nullptr);
    return converter || Fail(StatusUnsupported);
}

bool qvrCAVIStream::WriteHeader() {
    AVDictionary* muxerOptions = nullptr;
    // Uncompressed frames go in as pictures store them, bottom row first.
    av_dict_set(&muxerOptions, "flipped_raw_rgb", "1", 0);
    const int result = avformat_write_header(container, &muxerOptions);
    av_dict_free(&muxerOptions);
    return result >= 0 || Fail(statusOf(result, StatusFileWrite));
}

bool qvrCAVIStream::WriteEncoded(const EImageData* image) {
    int result = 0;
    if (image) {
        if (av_frame_make_writable(encoderFrame) < 0) return Fail(StatusMemory);
        // The top row first: the picture's rows are stored bottom-up.
        const auto* top = reinterpret_cast<const uint8_t*>(image->GetRow(0));
        const int topDownStride = -static_cast<int>(image->GetBytesPerLine());
        sws_scale(converter, &top, &topDownStride, 0, encoder->height, encoderFrame->data,
                  encoderFrame->linesize);
        encoderFrame->pts = static_cast<int64_t>(frameCount);
        result = avcodec_send_frame(encoder, encoderFrame);
    } else {
        result = avcodec_send_frame(encoder, nullptr);
    }
    return result >= 0 ? DrainEncoder() : Fail(statusOf(result, StatusCantCompress));
}

bool qvrCAVIStream::DrainEncoder() {
    PacketPointer packet(av_packet_alloc());
    if (!packet) return Fail(StatusMemory);
    while (true) {
        const int result = avcodec_receive_packet(encoder, packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return true;
        if (result < 0) return Fail(statusOf(result, StatusCantCompress));
        packet->stream_index = videoStream->index;
        if (!WritePacket(*packet, encoder->time_base)) return false;
    }
}

bool qvrCAVIStream::FlushWholeFrames() {
    AVIOContext* file = container->pb;
    avio_flush(file);
    if (file->error < 0) {
        writeFailed = true;
        return Fail(StatusFileWrite,
                    StatusText(StatusFileWrite) + ": " + qvrErrorText::FromCode(AVUNERROR(file->error)));
    }
    wholeFramesEnd = avio_tell(file);
    return true;
}

void qvrCAVIStream::CutToWholeFrames() {
    AVIOContext* file = container->pb;
    // What the buffer still holds of the failed frame is dropped unwritten.
    file->buf_ptr = file->buffer;
    file->buf_ptr_max = file->buffer;
    file->error = 0;
    avio_seek(file, wholeFramesEnd, SEEK_SET);
    file->error = 0;
    if (::truncate(fileName.c_str(), wholeFramesEnd) != 0)
        qvrTrace("*** WARNING[qvrCAVIStream::CutToWholeFrames()]: Can't cut \"%s\" to its whole frames.\n",
                 fileName.c_str());
}

void qvrCAVIStream::Release() {
    open = false;
    sws_freeContext(converter);
    converter = nullptr;
    av_frame_free(&encoderFrame);
    avcodec_free_context(&encoder);
    if (container) avio_closep(&container->pb);
    avformat_free_context(container);
    container = nullptr;
    videoStream = nullptr;
}
