#pragma once
// An AVI file written through FFmpeg's AVI muxer: one file, one video stream
// of uncompressed 32-bit frames (rows bottom-up, as pictures store them) or of
// one encoder's output. A subclass may add streams when the file opens and
// write into them after each frame. Failures set a status number of the AVI
// error list and an error text, and come back as false; nothing throws out.
// One object belongs to one thread; the compressor list is built and freed by
// the start-up component and only read in between.

#include "foundation/qvrGeometry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class EImageData;
struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct AVRational;
struct AVStream;
struct SwsContext;

// A video encoder that the AVI muxer takes.
struct qvrCAVICompressor {
    long Handler = 0;        // its four-character code, as the AVI header stores it
    std::string Name;        // the encoder's name, such as "mjpeg"
    std::string Description; // what the user is shown, such as "MJPEG (Motion JPEG)"
};

class qvrCAVIStream {
public:
    // The compression choice of a movie, as text "%ld|%ld|%ld|%ld|%ld|%ld".
    struct Options {
        enum : long { FlagDataRate = 2, FlagKeyFrames = 4 };

        long Handler = 0; // four-character code of the compressor; 0 keeps the frames uncompressed
        long KeyFrameInterval = 0;
        long Quality = -1; // 0 to 10000, -1 the compressor's own choice
        long BytesPerSecond = 0;
        long Flags = 0;
        long InterleaveInterval = 0;

        bool IsUncompressed() const { return Handler == 0; }
        std::string ToString() const;
        // False, leaving the values as they were, when the text isn't six numbers.
        bool FromString(std::string_view text);

        // Builds the compressor list from FFmpeg's encoders, newest first; logs
        // a warning when there is none.
        static void LoadCompressors();
        static void FreeCompressors();
        static const std::vector<qvrCAVICompressor>& GetCompressors();
        // The compressor of a four-character code among FFmpeg's encoders, listed or not.
        static std::optional<qvrCAVICompressor> FindCompressor(long handler);
    };

    // Status numbers of the AVI error list.
    enum Status : long {
        StatusOK = 0,
        StatusUnsupported = 0x80044065,
        StatusBadFormat = 0x80044066,
        StatusMemory = 0x80044067,
        StatusInternal = 0x80044068,
        StatusBadParam = 0x8004406A,
        StatusBadSize = 0x8004406B,
        StatusBadHandle = 0x8004406C,
        StatusFileWrite = 0x8004406E,
        StatusFileOpen = 0x8004406F,
        StatusCompressor = 0x80044070,
        StatusNoCompressor = 0x80044071,
        StatusCantCompress = 0x80044075,
        StatusUserAbort = 0x800440C6,
        StatusError = 0x800440C7,
    };

    qvrCAVIStream() = default;
    // Closes the file.
    virtual ~qvrCAVIStream();
    qvrCAVIStream(const qvrCAVIStream&) = delete;
    qvrCAVIStream& operator=(const qvrCAVIStream&) = delete;

    // Creates the file for frames of the size, `rate` / `rateStep` per second.
    // Options absent or uncompressed give uncompressed frames.
    bool Open(const std::string& fileName, const Options* options, CSize frameSize, unsigned long rate,
              unsigned long rateStep);
    // Appends one picture of the frame size.
    bool Write(const EImageData& image);
    // Finishes and closes the file; false, with status and error text, when
    // finishing failed. Closing a closed stream does nothing.
    bool Close();

    bool IsOpen() const { return open; }
    long GetStatus() const { return status; }
    const std::string& GetErrorText() const { return errorText; }
    const std::string& GetFileName() const { return fileName; }
    unsigned long GetFrameCount() const { return frameCount; }
    // The text of a status number.
    static std::string StatusText(long status);

protected:
    // Called once the video stream exists, before anything is written; a
    // subclass adds its streams here.
    virtual bool OnOpen() { return true; }
    // Called after each frame with its position and length in rate steps.
    virtual bool OnFrameWritten(long /*firstSample*/, long /*sampleCount*/) { return true; }

    AVFormatContext* GetContainer() const { return container; }
    unsigned long GetRate() const { return rate; }
    // Writes one key packet of `size` bytes into the stream, the bytes of
    // `data` or, with null, zeros; its time and length count in `timeBase`
    // units. The bytes go to the file as they are, without a copy. False with
    // the status set on failure.
    bool WriteData(const AVStream& stream, const void* data, size_t size, int64_t time, int64_t duration,
                   const AVRational& timeBase);
    // Sets status and error text; an empty text takes the status's text. Returns false.
    bool Fail(long newStatus, std::string text = {});

private:
    bool TestPath();
    bool CreateContainer();
    bool CreateVideoStream(const Options* options);
    bool WriteHeader();
    bool OpenEncoder(const qvrCAVICompressor& compressor, const Options& options);
    // Writes a packet whose times count in `timeBase` units into its stream.
    // Packets come in the order of their times, so they are written as they
    // come, with no interleaving queue that would have to copy them.
    bool WritePacket(AVPacket& packet, const AVRational& timeBase);
    bool WriteEncoded(const EImageData* image);
    bool DrainEncoder();
    // Flushes what is written; false, with the status set, when the file refuses it.
    bool FlushWholeFrames();
    // After a failed write: drops what the file holds of the failed frame, so
    // that the index can follow the frames before it.
    void CutToWholeFrames();
    void Release();

    long status = StatusOK;
    std::string fileName;
    std::string errorText;
    unsigned long rateStep = 1;
    unsigned long rate = 25;
    CSize frameSize;
    AVFormatContext* container = nullptr;
    AVStream* videoStream = nullptr;
    AVCodecContext* encoder = nullptr;
    SwsContext* converter = nullptr;
    AVFrame* encoderFrame = nullptr;
    unsigned long frameCount = 0;
    bool open = false;
    bool writeFailed = false;        // a frame could not be written: the movie ends before it
    std::int64_t wholeFramesEnd = 0; // where the last frame written whole ends in the file
    std::vector<std::uint8_t> zeros;
};
