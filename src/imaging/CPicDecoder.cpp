#include "imaging/CPicDecoder.h"

#include "imaging/EBinaryFile.h"
#include "imaging/EImageData.h"

const std::uint8_t* CDataSource::ReadNBytes(size_t count) {
    if (count > GetBytesLeft()) throw CPicDecoderException::EndOfData();
    const std::uint8_t* start = GetBufferPtr();
    position += count;
    return start;
}

std::unique_ptr<EImageData> CPicDecoder::MakeBmpFromFile(EBinaryFile& file) const {
    const std::int64_t length = file.GetLength();
    std::vector<std::uint8_t> contents(static_cast<size_t>(length));
    file.Seek(0);
    file.Read(contents.data(), contents.size());
    CDataSource source(std::move(contents));
    return DoDecode(source);
}

std::unique_ptr<EImageData> CPicDecoder::CreateBmp(CSize size, bool hasAlpha) {
    std::unique_ptr<EImageData> picture = EImageData::New(size, EImageMemory::NoFreeing);
    if (!picture) throw CPicDecoderException(CPicDecoderException::NoMemory, "Out of memory for the bitmap.");
    picture->SetHasAlpha(hasAlpha);
    return picture;
}
