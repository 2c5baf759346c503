#pragma once
// The program's own quick file, extension "qts": a run-length coded dump of
// an EImageData with its position and opacity, used for proxies and for the
// image cache's disk copies. A table of row offsets lets a load of a
// rectangle start at its top row without reading the rows above it.
//
// File layout, all numbers little-endian: a 24-byte header (mark 'Q','T','S',1;
// width; height; position x; position y; opacity byte; a zero byte; two
// reserved bytes), then one 32-bit offset per row counted from the end of the
// table, top row first, then the row records back to back. A record starts
// with its mode byte: 0 raw pixel words, 1 runs of 8 bytes (length - 1, three
// unused bytes, the word), 2 one word for the whole row.
//
// Stateless: safe from any thread, as long as no two threads write one file.

#include "imaging/EImageFileFormat.h"

class EImageFileFormatQTS : public EImageFileFormat {
public:
    EImageFileFormatQTS();

protected:
    std::unique_ptr<EImageData> doLoad(EBinaryFile& file, const CRect& rect,
                                       EImageFileResult& result) override;
    bool doSave(const EImageData& picture, EBinaryFile& file, EImageFileResult& result) override;
    bool doQueryFileInfo(EBinaryFile& file, EImageFileInfo& info, EImageFileResult& result) override;
};
