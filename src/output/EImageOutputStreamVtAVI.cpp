#include "output/EImageOutputStreamVtAVI.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace {

constexpr int sampleRate = 44100;
constexpr int channels = 2;
constexpr int bytesPerSample = 2;

// An AVI file with a silent sound track beside the pictures. Per step of the
// frame rate it writes (44100 - 1 + rate) / rate samples of silence.
class qvrCAVIStreamWithAudio : public qvrCAVIStream {
protected:
    bool OnOpen() override {
        audioStream = avformat_new_stream(GetContainer(), nullptr);
        if (!audioStream) return Fail(StatusMemory);
        av_dict_set(&audioStream->metadata, "title", "VitreaAudio", 0);
        AVCodecParameters* format = audioStream->codecpar;
        format->codec_type = AVMEDIA_TYPE_AUDIO;
        format->codec_id = AV_CODEC_ID_PCM_S16LE;
        format->sample_rate = sampleRate;
        av_channel_layout_default(&format->ch_layout, channels);
        format->bits_per_coded_sample = 8 * bytesPerSample;
        format->block_align = channels * bytesPerSample;
        format->bit_rate = static_cast<int64_t>(sampleRate) * format->block_align * 8;
        audioStream->time_base = AVRational{1, sampleRate};
        samplesWritten = 0;
        return true;
    }

    bool OnFrameWritten(long, long sampleCount) override {
        const auto framesPerSecond = static_cast<long>(GetRate());
        const long samples = sampleCount * ((sampleRate - 1 + framesPerSecond) / framesPerSecond);
        const auto size = static_cast<size_t>(samples * channels * bytesPerSample);
        const int64_t first = samplesWritten;
        samplesWritten += samples;
        return WriteData(*audioStream, nullptr, size, first, samples, AVRational{1, sampleRate});
    }

private:
    AVStream* audioStream = nullptr;
    int64_t samplesWritten = 0;
};

} // namespace

std::unique_ptr<qvrCAVIStream> EImageOutputStreamVtAVI::CreateAVIStream() const {
    return std::make_unique<qvrCAVIStreamWithAudio>();
}
