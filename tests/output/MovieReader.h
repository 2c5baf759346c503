#pragma once
// Reads a movie back through FFmpeg, for the AVI tests: what the container
// says about its streams and every video frame decoded to 32-bit words, rows
// from the top.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <cstdint>
#include <string>
#include <vector>

namespace qvrTest {

struct MovieContents {
    bool opened = false;
    int width = 0;
    int height = 0;
    AVRational frameRate{0, 1};
    long framesInHeader = 0;
    std::string videoCodec;
    std::string videoTitle;
    std::vector<std::vector<std::uint32_t>> frames;
    // The sound track, when there is one.
    int audioRate = 0;
    int audioChannels = 0;
    std::string audioCodec;
    std::string audioTitle;
    double audioSeconds = 0.0;
};

inline std::string TitleOf(const AVStream* stream) {
    const AVDictionaryEntry* title = av_dict_get(stream->metadata, "title", nullptr, 0);
    return title ? title->value : "";
}

inline void DecodeInto(MovieContents& movie, AVCodecContext* decoder, AVFrame* frame,
                       SwsContext*& converter) {
    while (avcodec_receive_frame(decoder, frame) == 0) {
        converter = sws_getCachedContext(
            converter, frame->width, frame->height, static_cast<AVPixelFormat>(frame->format), frame->width,
            frame->height, AV_PIX_FMT_BGRA, SWS_POINT, nullptr, nullptr, nullptr);
        std::vector<std::uint32_t> pixels(static_cast<size_t>(frame->width * frame->height));
        uint8_t* target = reinterpret_cast<uint8_t*>(pixels.data());
        const int stride = frame->width * 4;
        sws_scale(converter, frame->data, frame->linesize, 0, frame->height, &target, &stride);
        movie.frames.push_back(std::move(pixels));
    }
}

inline MovieContents ReadMovie(const std::string& path) {
    MovieContents movie;
    AVFormatContext* container = nullptr;
    if (avformat_open_input(&container, path.c_str(), nullptr, nullptr) < 0) return movie;
    avformat_find_stream_info(container, nullptr);
    const int video = av_find_best_stream(container, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    const int audio = av_find_best_stream(container, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (video < 0) {
        avformat_close_input(&container);
        return movie;
    }
    const AVStream* videoStream = container->streams[video];
    movie.opened = true;
    movie.width = videoStream->codecpar->width;
    movie.height = videoStream->codecpar->height;
    movie.frameRate = videoStream->r_frame_rate;
    movie.framesInHeader = static_cast<long>(videoStream->nb_frames);
    movie.videoCodec = avcodec_get_name(videoStream->codecpar->codec_id);
    movie.videoTitle = TitleOf(videoStream);
    if (audio >= 0) {
        const AVStream* audioStream = container->streams[audio];
        movie.audioRate = audioStream->codecpar->sample_rate;
        movie.audioChannels = audioStream->codecpar->ch_layout.nb_channels;
        movie.audioCodec = avcodec_get_name(audioStream->codecpar->codec_id);
        movie.audioTitle = TitleOf(audioStream);
    }

    const AVCodec* codec = avcodec_find_decoder(videoStream->codecpar->codec_id);
    AVCodecContext* decoder = avcodec_alloc_context3(codec);
    avcodec_parameters_to_context(decoder, videoStream->codecpar);
    avcodec_open2(decoder, codec, nullptr);
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    SwsContext* converter = nullptr;
    double audioBytes = 0;
    while (av_read_frame(container, packet) >= 0) {
        if (packet->stream_index == video && avcodec_send_packet(decoder, packet) == 0)
            DecodeInto(movie, decoder, frame, converter);
        if (packet->stream_index == audio) audioBytes += packet->size;
        av_packet_unref(packet);
    }
    avcodec_send_packet(decoder, nullptr);
    DecodeInto(movie, decoder, frame, converter);
    if (movie.audioRate > 0) movie.audioSeconds = audioBytes / (4.0 * movie.audioRate);

    sws_freeContext(converter);
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&decoder);
    avformat_close_input(&container);
    return movie;
}

} // namespace qvrTest
