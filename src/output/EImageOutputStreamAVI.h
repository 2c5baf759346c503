#pragma once
// The AVI movie stream, registered as "AVI video stream": all frames of a run
// go into one AVI file, uncompressed or through the compressor that the setup
// names. Its setup keeps the compression options as "AVI" and the options
// text. The stream object is read-only and safe from any thread; its writer
// belongs to the one thread that opened it.

#include "output/EImageOutputStream.h"
#include "output/qvrCAVIStream.h"

#include <memory>
#include <string>
#include <string_view>

// The compression choice of a movie.
class EImageOutputStreamAVISetup : public EImageOutputSetup {
public:
    EImageOutputStreamAVISetup() = default;
    explicit EImageOutputStreamAVISetup(const qvrCAVIStream::Options& chosen) { SetOptions(chosen); }

    // Every choice can be tried; a compressor missing here fails when the movie opens.
    bool IsValid() const override { return true; }
    void Repair() override {}
    // Uncompressed frames.
    void Reset() override { SetOptions({}); }
    std::string GetSetupString() const override;
    // False, with the defaults set, unless the text is "AVI" and six numbers.
    bool SetSetupString(std::string_view text) override;
    std::string GetDescription() const override;

    const qvrCAVIStream::Options& GetOptions() const { return options; }
    // Takes the options and the name of their compressor.
    void SetOptions(const qvrCAVIStream::Options& chosen);
    // The user's name of the compressor; empty for uncompressed frames.
    const std::string& GetCompressorName() const { return compressorName; }

private:
    qvrCAVIStream::Options options;
    std::string compressorName;
};

class EImageOutputStreamAVI : public EImageOutputMovie {
public:
    EImageOutputStreamAVI() : EImageOutputMovie("AVI video stream", "avi") {}

    bool IsSequence() const override { return false; }
    // A setup that is no EImageOutputStreamAVISetup counts as none.
    std::unique_ptr<EImageOutputWriter> Open(const std::string& fileName, CSize frameSize,
                                             EImageOutputError& error, const EImageOutputSetup* setup,
                                             unsigned long rate, unsigned long rateStep) const override;
    std::unique_ptr<EImageOutputSetup> CreateSetup() const override;

protected:
    using EImageOutputMovie::EImageOutputMovie;
    // The file writer of one movie.
    virtual std::unique_ptr<qvrCAVIStream> CreateAVIStream() const;
};

// Writes the frames of one movie through its AVI file, which it owns.
class EImageOutputMovieWriter : public EImageOutputWriter {
public:
    EImageOutputMovieWriter(const EImageOutputStream& streamClass, const EImageOutputSetup* setupUsed,
                            std::unique_ptr<qvrCAVIStream> file)
        : EImageOutputWriter(streamClass, setupUsed), avi(std::move(file)) {}

    // The frame index is the file's own count; frames go in the order written.
    bool Write(const EImageData& image, long frameIndex, EImageOutputError& error) override;
    // Finishes the file; false when that failed.
    bool Close(EImageOutputError& error) override;

private:
    std::unique_ptr<qvrCAVIStream> avi;
};
