#pragma once
// The common ground of the formats that are read through a decoder (JPEG,
// TGA, PNG): a load checks first that the picture fits into the available
// memory, decodes the whole file, cuts the rectangle asked for out of it and
// gives a picture without alpha, or one whose format ignores the file's
// alpha, a solid alpha channel. A partial load therefore costs a whole decode.
//
// Stateless: safe from any thread. Decoder failures are caught here and
// become the load's result; file exceptions go on to the registry's wrapper.

#include "imaging/CPicDecoder.h"
#include "imaging/EImageFileFormat.h"

class EImageFileFormatDecoded : public EImageFileFormat {
protected:
    using EImageFileFormat::EImageFileFormat;

    std::unique_ptr<EImageData> doLoad(EBinaryFile& file, const CRect& rect, EImageFileResult& result) final;
    virtual const CPicDecoder& GetDecoder() const = 0;

    std::unique_ptr<EImageData> LoadUsingPaintLib(const CPicDecoder& decoder, EBinaryFile& file,
                                                  const CRect& rect, EImageFileResult& result);

private:
    // False, with the result set and the low memory message logged, when
    // even after freeing all it can the picture won't fit into memory.
    static bool EnoughMemoryFor(EBinaryFile& file, CSize size, EImageFileResult& result);
    // Decodes the file; a lack of memory is answered once by freeing all
    // memory that can go and a second attempt.
    static std::unique_ptr<EImageData> DecodeFreeingMemory(const CPicDecoder& decoder, EBinaryFile& file,
                                                           EImageFileResult& result);
    static void MakeSolidAlpha(EImageData& picture, const std::string& fileName);
};
