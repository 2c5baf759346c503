#pragma once
// The decoder layer under the JPEG, TGA and PNG formats. A decoder reads a
// whole file into memory as a CDataSource and turns it into a new picture of
// 32 bits per pixel; how the file's alpha is used is the format's business.
// Decoders report failures by throwing CPicDecoderException, which the
// format's load catches; a read past the end of the data is the failure
// EndOfFile. Decoders keep no state between calls, so one decoder object may
// decode on several threads at once.

#include "foundation/qvrGeometry.h"

#include <csetjmp>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

class EBinaryFile;
class EImageData;

class CPicDecoderException : public std::runtime_error {
public:
    enum Number : int { FormatUnknown = 2, NoMemory = 10, EndOfFile = 11 };

    CPicDecoderException(Number errorNumber, const std::string& text)
        : std::runtime_error(text), number(errorNumber) {}
    Number GetNumber() const { return number; }

    // The failure of a read past the end of the data.
    static CPicDecoderException EndOfData() { return {EndOfFile, "End of file reached while decoding.\n"}; }

private:
    Number number;
};

// The bytes of a whole file with a read cursor.
class CDataSource {
public:
    explicit CDataSource(std::vector<std::uint8_t> contents) : bytes(std::move(contents)) {}

    // The next `count` bytes, which stay valid as long as the source; the
    // cursor moves past them. Throws EndOfFile when fewer are left.
    const std::uint8_t* ReadNBytes(size_t count);
    void Skip(size_t count) { ReadNBytes(count); }
    // The byte at the cursor.
    const std::uint8_t* GetBufferPtr() const { return bytes.data() + position; }
    size_t GetBytesLeft() const { return bytes.size() - position; }

private:
    std::vector<std::uint8_t> bytes;
    size_t position = 0;
};

class CPicDecoder {
public:
    virtual ~CPicDecoder() = default;

    // Reads the file from its start and decodes it. The picture's alpha flag
    // says whether the file carried alpha.
    std::unique_ptr<EImageData> MakeBmpFromFile(EBinaryFile& file) const;

protected:
    CPicDecoder() = default;

    virtual std::unique_ptr<EImageData> DoDecode(CDataSource& source) const = 0;

    // The picture a decoder fills, every pixel 0. Throws NoMemory when memory
    // is short: the load decides whether to free memory and try again.
    static std::unique_ptr<EImageData> CreateBmp(CSize size, bool hasAlpha);
};

// Runs a step of a C library whose fatal errors leave by longjmp to `jump`;
// false when the step was left that way. Nothing in the step may own an
// object with a destructor, since longjmp skips destructors.
template <typename Step> bool RunGuarded(std::jmp_buf& jump, Step&& step) {
    if (setjmp(jump) != 0) return false;
    step();
    return true;
}
