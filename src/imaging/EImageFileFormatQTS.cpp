#include "imaging/EImageFileFormatQTS.h"

#include "foundation/qvrCException.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImageData.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <vector>

// Raw rows are read and written as they lie in memory.
static_assert(std::endian::native == std::endian::little, "quick files are little-endian");

namespace {

EImageFileFormatQTS theQuickFormat;

constexpr std::uint32_t QuickMark = 0x01535451; // 'Q', 'T', 'S', 1
constexpr std::int64_t HeaderSize = 24;
constexpr std::int64_t TableEntrySize = 4;
constexpr size_t RunSize = 8;
constexpr long LongestRun = 256;
constexpr std::int64_t FlatRowSize = 5;

enum RowMode : std::uint8_t { RawRow = 0, RunRow = 1, FlatRow = 2 };

struct QuickHeader {
    std::uint32_t mark = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::uint8_t opacity = 0;
};

std::uint32_t getWord(const std::uint8_t* bytes) {
    std::uint32_t word;
    std::memcpy(&word, bytes, 4);
    return word;
}

void putWord(std::uint8_t* bytes, std::uint32_t word) {
    std::memcpy(bytes, &word, 4);
}

std::uint32_t readWord(EBinaryFile& file) {
    std::uint8_t bytes[4];
    file.Read(bytes, 4);
    return getWord(bytes);
}

// A row record that can't be right: the load fails like a failed read.
[[noreturn]] void badRow(const EBinaryFile& file) {
    throw qvrCFileException(file.GetName(), EIO);
}

void writeHeader(EBinaryFile& file, const EImageData& picture) {
    std::uint8_t bytes[HeaderSize] = {};
    putWord(bytes, QuickMark);
    putWord(bytes + 4, static_cast<std::uint32_t>(picture.GetWidth()));
    putWord(bytes + 8, static_cast<std::uint32_t>(picture.GetHeight()));
    putWord(bytes + 12, static_cast<std::uint32_t>(picture.position.x));
    putWord(bytes + 16, static_cast<std::uint32_t>(picture.position.y));
    bytes[20] = picture.opacity;
    file.Write(bytes, sizeof bytes);
}

// Reads the header; a bad mark or a negative size is reported under the method's name.
bool readHeader(EBinaryFile& file, QuickHeader& header, const char* method, EImageFileResult& result) {
    std::uint8_t bytes[HeaderSize];
    file.Read(bytes, sizeof bytes);
    header.mark = getWord(bytes);
    header.width = static_cast<std::int32_t>(getWord(bytes + 4));
    header.height = static_cast<std::int32_t>(getWord(bytes + 8));
    header.x = static_cast<std::int32_t>(getWord(bytes + 12));
    header.y = static_cast<std::int32_t>(getWord(bytes + 16));
    header.opacity = bytes[20];
    if (header.mark != QuickMark) {
        qvrTrace("*** ERROR[EImageFileFormatQTS::%s()]: Can't read quick file \"%s\": Bad file mark !.\n",
                 method, file.GetName().c_str());
    } else if (header.width < 0 || header.height < 0) {
        qvrTrace("*** ERROR[EImageFileFormatQTS::%s()]: Can't read quick file \"%s\": Bad size %ldx%ld !.\n",
                 method, file.GetName().c_str(), static_cast<long>(header.width),
                 static_cast<long>(header.height));
    } else {
        return true;
    }
    result.Set(EImageFileError::ReadError);
    return false;
}

// Writes row records and counts their bytes. Runs are used only while their
// data stay within 80% of the raw row, counted in whole pixels.
class RowWriter {
public:
    explicit RowWriter(long rowWidth)
        : width(rowWidth), runCapacity(static_cast<size_t>(rowWidth * 80 / 100) * 4),
          record(std::max<size_t>(1 + runCapacity, FlatRowSize)) {}

    // Writes the row's record and returns its size.
    std::int64_t Write(EBinaryFile& file, const std::uint32_t* row) {
        if (RunLength(row, 0, width) == width) {
            record[0] = FlatRow;
            putWord(&record[1], row[0]);
            file.Write(record.data(), FlatRowSize);
            return FlatRowSize;
        }
        if (const size_t used = CodeRuns(row)) {
            record[0] = RunRow;
            file.Write(record.data(), 1 + used);
            return static_cast<std::int64_t>(1 + used);
        }
        const std::uint8_t mode = RawRow;
        file.Write(&mode, 1);
        file.Write(row, static_cast<size_t>(width) * 4);
        return 1 + static_cast<std::int64_t>(width) * 4;
    }

private:
    static long RunLength(const std::uint32_t* row, long start, long end) {
        long x = start + 1;
        while (x < end && row[x] == row[start])
            ++x;
        return x - start;
    }

    // Codes the runs behind the mode byte; their bytes, or 0 when they don't fit.
    size_t CodeRuns(const std::uint32_t* row) {
        size_t used = 0;
        for (long x = 0; x < width;) {
            if (used + RunSize > runCapacity) return 0;
            const long run = RunLength(row, x, std::min(x + LongestRun, width));
            std::uint8_t* entry = &record[1 + used];
            entry[0] = static_cast<std::uint8_t>(run - 1);
            entry[1] = entry[2] = entry[3] = 0;
            putWord(entry + 4, row[x]);
            used += RunSize;
            x += run;
        }
        return used;
    }

    long width;
    size_t runCapacity;
    std::vector<std::uint8_t> record;
};

// Reads runs until the row is full and stores the pixels from left to right.
void readRuns(EBinaryFile& file, long width, long left, long right, std::uint32_t* target) {
    std::uint8_t entry[RunSize];
    for (long x = 0; x < width;) {
        file.Read(entry, RunSize);
        const long run = entry[0] + 1;
        if (x + run > width) badRow(file);
        const long from = std::max(x, left);
        const long to = std::min(x + run, right);
        if (from < to) std::fill(target + (from - left), target + (to - left), getWord(entry + 4));
        x += run;
    }
}

// Reads one row record and stores the pixels from left to right.
void readRow(EBinaryFile& file, long width, long left, long right, std::uint32_t* target) {
    std::uint8_t mode;
    file.Read(&mode, 1);
    switch (mode & 3) {
    case RawRow:
        file.Skip(static_cast<std::int64_t>(left) * 4);
        file.Read(target, static_cast<size_t>(right - left) * 4);
        file.Skip(static_cast<std::int64_t>(width - right) * 4);
        break;
    case RunRow:
        readRuns(file, width, left, right, target);
        break;
    case FlatRow:
        std::fill(target, target + (right - left), readWord(file));
        break;
    default:
        badRow(file);
    }
}

} // namespace

EImageFileFormatQTS::EImageFileFormatQTS() : EImageFileFormat("qvrTessarine Quick file", "qts") {}

bool EImageFileFormatQTS::doQueryFileInfo(EBinaryFile& file, EImageFileInfo& info, EImageFileResult& result) {
    QuickHeader header;
    if (!readHeader(file, header, "QuickGetFileInfo", result)) return false;
    info.size = {header.width, header.height};
    return true;
}

std::unique_ptr<EImageData> EImageFileFormatQTS::doLoad(EBinaryFile& file, const CRect& rect,
                                                        EImageFileResult& result) {
    QuickHeader header;
    if (!readHeader(file, header, "QuickLoad", result)) return nullptr;
    const std::int64_t rowsStart = HeaderSize + TableEntrySize * header.height;
    if (rowsStart + FlatRowSize * header.height > file.GetLength()) {
        qvrTrace("*** ERROR[EImageFileFormatQTS::QuickLoad()]: Can't read quick file \"%s\": Bad size "
                 "%ldx%ld !.\n",
                 file.GetName().c_str(), static_cast<long>(header.width), static_cast<long>(header.height));
        result.Set(EImageFileError::ReadError);
        return nullptr;
    }
    const CRect part = ClipLoadRect(rect, {header.width, header.height});
    std::unique_ptr<EImageData> picture =
        EImageData::New({part.Width(), part.Height()}, EImageMemory::MayFree);
    if (!picture) {
        qvrTrace(
            "*** ERROR[EImageFileFormatQTS::QuickLoad()]: Can't read quick file \"%s\": Out of memory !.\n",
            file.GetName().c_str());
        result.Set(EImageFileError::OutOfMemory);
        return nullptr;
    }
    picture->position = {header.x, header.y};
    picture->opacity = header.opacity;
    if (part.IsRectEmpty()) return picture;
    if (part.top == 0) {
        file.Seek(rowsStart);
    } else {
        file.Seek(HeaderSize + TableEntrySize * part.top);
        file.Seek(rowsStart + readWord(file));
    }
    for (long y = part.top; y < part.bottom; ++y)
        readRow(file, header.width, part.left, part.right, picture->GetRow(y - part.top));
    return picture;
}

bool EImageFileFormatQTS::doSave(const EImageData& picture, EBinaryFile& file, EImageFileResult& result) {
    if (picture.GetWidth() == 0 || picture.GetHeight() == 0) {
        result.Set(EImageFileError::BadFunctionCall);
        return false;
    }
    try {
        writeHeader(file, picture);
        const std::int64_t tablePosition = file.GetPosition();
        std::vector<std::uint8_t> table(static_cast<size_t>(picture.GetHeight()) * TableEntrySize);
        file.Write(table.data(), table.size());
        RowWriter writer(picture.GetWidth());
        std::int64_t offset = 0;
        for (long y = 0; y < picture.GetHeight(); ++y) {
            if (offset > UINT32_MAX) throw qvrCFileException(file.GetName(), EFBIG);
            putWord(&table[static_cast<size_t>(y) * TableEntrySize], static_cast<std::uint32_t>(offset));
            offset += writer.Write(file, picture.GetRow(y));
        }
        file.Seek(tablePosition);
        file.Write(table.data(), table.size());
        return true;
    } catch (const std::exception& error) {
        const std::string reason = qvrErrorText::FromException(error);
        qvrTrace("*** ERROR[EImageFileFormatQTS::doSave()]: Can't save quick file \"%s\": %s.\n",
                 file.GetName().c_str(), reason.c_str());
        result.Set(EImageFileError::ReadError, reason);
        return false;
    }
}
