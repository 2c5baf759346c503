#include "projector/LQuickTable.h"

#include "foundation/ELog.h"
#include "foundation/qvrCSyncObjects.h"
#include "foundation/qvrString.h"
#include "imaging/EImageData.h"

#include <algorithm>
#include <new>

namespace {

constexpr const char* LogContext = "Projective Transformation Module V1.2";

// Row numbers of a scan that found nothing or was stopped.
constexpr long NoRowFound = -1;
constexpr long ScanStopped = -2;

bool stopSet(const qvrCEvent* stop) {
    return stop && stop->IsSet();
}

} // namespace

// ---------------------------------------------------------------- rows

void LQuickRow::Clear() {
    Pixels.clear();
    Pixels.shrink_to_fit();
    FirstColumn = 1;
    LastColumn = 0;
    Row = -1;
}

bool LQuickRow::Build(const LProjection& projection, long width, long row) {
    Clear();
    if (!projection.IsReady() || width <= 0) return false;
    LQuickPixel firstPixel;
    long first = 0;
    while (first < width && !projection.MapPixel(first, row, firstPixel))
        ++first;
    if (first == width) return false;
    LQuickPixel lastPixel;
    long last = width - 1;
    while (last > first && !projection.MapPixel(last, row, lastPixel))
        --last;
    try {
        Pixels.resize(static_cast<size_t>(last - first + 1));
    } catch (const std::bad_alloc&) {
        Clear();
        return false;
    }
    Pixels.front() = firstPixel;
    if (last > first) Pixels.back() = lastPixel;
    // A pixel between that misses the patch (it folds there) repeats its left neighbour.
    for (long column = first + 1; column < last; ++column) {
        LQuickPixel& pixel = Pixels[static_cast<size_t>(column - first)];
        if (projection.MapPixel(column, row, pixel)) continue;
        pixel = Pixels[static_cast<size_t>(column - first - 1)];
        ELog::Warning(qvrFormat("Unsure projection point (%ld,%ld).", column, row), LogContext);
    }
    FirstColumn = first;
    LastColumn = last;
    Row = row;
    return true;
}

// ---------------------------------------------------------------- the table

void LQuickTable::Clear() {
    Rows.clear();
    Rows.shrink_to_fit();
    FirstRow = 1;
    LastRow = 0;
    SourceSize = {};
}

long LQuickTable::findRow(const LProjection& projection, CSize targetSize, long from, long to,
                          LQuickRow& found, const qvrCEvent* stop) {
    const long step = from <= to ? 1 : -1;
    for (long row = from; row != to + step; row += step) {
        if (stopSet(stop)) return ScanStopped;
        if (found.Build(projection, targetSize.cx, row)) return row;
    }
    return NoRowFound;
}

LQuickTable::BuildResult LQuickTable::Build(const LProjection& projection, CSize targetSize,
                                            const qvrCEvent* stop) {
    Clear();
    if (!projection.IsReady() || targetSize.cy <= 0) return BuildEmpty;
    LQuickRow firstRow;
    const long first = findRow(projection, targetSize, 0, targetSize.cy - 1, firstRow, stop);
    if (first == ScanStopped) return BuildStopped;
    if (first == NoRowFound) return BuildEmpty;
    LQuickRow lastRow;
    long last = first;
    if (first < targetSize.cy - 1)
        last = findRow(projection, targetSize, targetSize.cy - 1, first + 1, lastRow, stop);
    if (last == ScanStopped) return BuildStopped;
    if (last == NoRowFound) last = first;
    try {
        Rows.resize(static_cast<size_t>(last - first + 1));
    } catch (const std::bad_alloc&) {
        Clear();
        return BuildOutOfMemory;
    }
    Rows.front() = std::move(firstRow);
    if (last > first) Rows.back() = std::move(lastRow);
    // A row between that misses the patch altogether stays empty.
    for (long row = first + 1; row < last; ++row) {
        if (stopSet(stop)) {
            Clear();
            return BuildStopped;
        }
        Rows[static_cast<size_t>(row - first)].Build(projection, targetSize.cx, row);
    }
    FirstRow = first;
    LastRow = last;
    SourceSize = projection.GetSourceSize();
    return BuildDone;
}

// ---------------------------------------------------------------- resampling

bool LQuickTable::Resample(const EImageData& source, EImageData& target, const qvrCEvent* stop) const {
    if (IsEmpty()) return true;
    if (source.GetSize() != SourceSize) return false;
    const long lastRow = std::min(LastRow, target.GetHeight() - 1);
    for (long row = FirstRow; row <= lastRow; ++row) {
        if (stopSet(stop)) return false;
        const LQuickRow& map = GetRow(row);
        std::uint32_t* out = target.GetRow(row);
        const long lastColumn = std::min(map.GetLastColumn(), target.GetWidth() - 1);
        for (long column = map.GetFirstColumn(); column <= lastColumn; ++column) {
            const LQuickPixel& pixel = map.GetPixel(column);
            double sums[4] = {0.0, 0.0, 0.0, 0.0};
            for (int i = 0; i < LQuickPixel::Count; ++i) {
                const double weight = pixel.Weights[i];
                if (weight == 0.0) continue;
                const std::uint32_t word =
                    source.GetRow(pixel.y + LNeighbours[i].y)[pixel.x + LNeighbours[i].x];
                for (int channel = 0; channel < 4; ++channel)
                    sums[channel] += static_cast<double>((word >> (8 * channel)) & 0xFF) * weight;
            }
            std::uint32_t result = 0;
            for (int channel = 0; channel < 4; ++channel) {
                const double value = std::min(sums[channel], 255.0);
                result |= static_cast<std::uint32_t>(static_cast<int>(value) & 0xFF) << (8 * channel);
            }
            out[column] = result;
        }
    }
    return true;
}
