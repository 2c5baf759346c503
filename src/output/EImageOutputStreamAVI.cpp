#include "output/EImageOutputStreamAVI.h"

#include "foundation/EStringTable.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"

namespace {

constexpr EStringId textCantOpen = 45200;
constexpr EStringId textUnknownFile = 45201;
constexpr EStringId textUncompressed = 45202;
constexpr EStringId textCompression = 45203;
constexpr EStringId textQuality = 45204;
constexpr EStringId textKeyFrames = 45205;
constexpr EStringId textDataRate = 45206;

constexpr std::string_view setupPrefix = "AVI";

// The four characters of a code, for a compressor that this system doesn't have.
std::string handlerText(long handler) {
    std::string text;
    for (int shift = 0; shift < 32; shift += 8)
        text += static_cast<char>((handler >> shift) & 0xFF);
    return text;
}

} // namespace

std::string EImageOutputStreamAVISetup::GetSetupString() const {
    return std::string(setupPrefix) + options.ToString();
}

bool EImageOutputStreamAVISetup::SetSetupString(std::string_view text) {
    qvrCAVIStream::Options parsed;
    if (text.size() <= 2 || text.substr(0, setupPrefix.size()) != setupPrefix ||
        !parsed.FromString(text.substr(setupPrefix.size()))) {
        Reset();
        return false;
    }
    SetOptions(parsed);
    return true;
}

std::string EImageOutputStreamAVISetup::GetDescription() const {
    if (options.IsUncompressed()) return EStringTable::Load(textUncompressed);
    std::string text = qvrFormat(EStringTable::Load(textCompression).c_str(), compressorName.c_str());
    if (options.Quality != -1)
        text += qvrFormat(EStringTable::Load(textQuality).c_str(), options.Quality / 100);
    if (options.Flags & qvrCAVIStream::Options::FlagKeyFrames)
        text += qvrFormat(EStringTable::Load(textKeyFrames).c_str(), options.KeyFrameInterval);
    if (options.Flags & qvrCAVIStream::Options::FlagDataRate)
        text += qvrFormat(EStringTable::Load(textDataRate).c_str(), options.BytesPerSecond / 1024);
    return text;
}

void EImageOutputStreamAVISetup::SetOptions(const qvrCAVIStream::Options& chosen) {
    options = chosen;
    compressorName.clear();
    if (options.IsUncompressed()) return;
    const std::optional<qvrCAVICompressor> compressor =
        qvrCAVIStream::Options::FindCompressor(options.Handler);
    compressorName = compressor ? compressor->Description : handlerText(options.Handler);
}

std::unique_ptr<EImageOutputWriter> EImageOutputStreamAVI::Open(const std::string& fileName, CSize frameSize,
                                                                EImageOutputError& error,
                                                                const EImageOutputSetup* setup,
                                                                unsigned long rate,
                                                                unsigned long rateStep) const {
    const auto* aviSetup = dynamic_cast<const EImageOutputStreamAVISetup*>(setup);
    std::unique_ptr<qvrCAVIStream> avi = CreateAVIStream();
    if (!avi->Open(fileName, aviSetup ? &aviSetup->GetOptions() : nullptr, frameSize, rate, rateStep)) {
        error.Set(FileErrorAccessDenied, OutputErrorBadFormat,
                  qvrFormat(EStringTable::Load(textCantOpen).c_str(), fileName.c_str(),
                            avi->GetErrorText().c_str()));
        qvrTraceVerbose("*** ERROR[EImageOutputStreamAVI::Open()]: %s.\n", error.Text.c_str());
        return nullptr;
    }
    return std::make_unique<EImageOutputMovieWriter>(*this, aviSetup, std::move(avi));
}

std::unique_ptr<EImageOutputSetup> EImageOutputStreamAVI::CreateSetup() const {
    return std::make_unique<EImageOutputStreamAVISetup>();
}

std::unique_ptr<qvrCAVIStream> EImageOutputStreamAVI::CreateAVIStream() const {
    return std::make_unique<qvrCAVIStream>();
}

bool EImageOutputMovieWriter::Write(const EImageData& image, long, EImageOutputError& error) {
    if (!avi) {
        error.SetOsError(OutputErrorInvalidHandle, EStringTable::Load(textUnknownFile));
        return false;
    }
    if (avi->Write(image)) return true;
    error.SetOsError(OutputErrorCannotMake, avi->GetFileName() + ": " + avi->GetErrorText());
    return false;
}

bool EImageOutputMovieWriter::Close(EImageOutputError& error) {
    if (!avi || (avi->Close() && avi->GetErrorText().empty())) return true;
    error.SetOsError(OutputErrorCannotMake, avi->GetFileName());
    return false;
}
