#pragma once
// The pixel map of one projector: for every target pixel inside the patch the
// source pixel and its neighbours' weights, computed once per run by
// LProjection::MapPixel. A row holds the run of columns from the first to the
// last pixel inside the patch; a pixel between them that falls outside (a
// patch that folds) takes its left neighbour's map and is logged as unsure.
// Resample then turns each frame through the table with nothing but
// multiplications by the weights.
//
// A table belongs to one render thread; nothing here takes a lock. A long
// build or resampling stops when the given event is set. Nothing throws.

#include "projector/LProjection.h"

#include <memory>
#include <vector>

class EImageData;
class qvrCEvent;

// The forms of the resampling loop. Plain is the definition, readable and
// portable; the others use the vector units of newer processors and give the
// same bytes.
enum class LResampleLoop { Plain, Avx2, Avx512 };

class LQuickRow {
public:
    // Maps the target row `row` of `width` pixels. False, with the row left
    // empty, when the projection isn't ready, the width is 0, no pixel of the
    // row lies inside the patch, or memory is short.
    bool Build(const LProjection& projection, long width, long row);
    void Clear();

    bool IsEmpty() const { return FirstColumn > LastColumn; }
    long GetFirstColumn() const { return FirstColumn; }
    long GetLastColumn() const { return LastColumn; }
    long GetRow() const { return Row; }
    // The map of a column from the first to the last.
    const LQuickPixel& GetPixel(long column) const { return Pixels[column - FirstColumn]; }

private:
    std::vector<LQuickPixel> Pixels;
    long FirstColumn = 1;
    long LastColumn = 0;
    long Row = -1;
};

class LQuickTable {
public:
    // Answers of Build.
    enum BuildResult : int { BuildDone = 0, BuildEmpty = 1, BuildOutOfMemory = 2, BuildStopped = 3 };

    // Maps every pixel of a target picture of `targetSize`. The stop event,
    // which may be null, is tested without waiting at every row.
    BuildResult Build(const LProjection& projection, CSize targetSize, const qvrCEvent* stop);
    void Clear();

    bool IsEmpty() const { return FirstRow > LastRow; }
    long GetFirstRow() const { return FirstRow; }
    long GetLastRow() const { return LastRow; }
    // The map of a row from the first to the last; a row may be empty.
    const LQuickRow& GetRow(long row) const { return Rows[row - FirstRow]; }
    // The size of the source pictures that the table was built for.
    CSize GetSourceSize() const { return SourceSize; }

    // Writes the warped source into the target's pixels inside the table, and
    // leaves the rest of the target as it is. The source must have the size
    // the table was built for. False when the stop event was found set (the
    // target is then partly written) or the source has another size (nothing
    // is written).
    // The fastest loop of the processor does the work.
    bool Resample(const EImageData& source, EImageData& target, const qvrCEvent* stop) const;
    // The same with a loop of choice; false for a loop the processor lacks.
    bool Resample(const EImageData& source, EImageData& target, const qvrCEvent* stop,
                  LResampleLoop loop) const;
    static bool IsAvailable(LResampleLoop loop);

private:
    // Scans the rows from `from` toward `to` (inclusive) for the first that
    // maps into `found`; its number, or NoRowFound or ScanStopped.
    static long findRow(const LProjection& projection, CSize targetSize, long from, long to, LQuickRow& found,
                        const qvrCEvent* stop);

    long FirstRow = 1;
    long LastRow = 0;
    std::vector<LQuickRow> Rows;
    CSize SourceSize;
};
