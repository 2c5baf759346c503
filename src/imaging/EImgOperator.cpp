#include "imaging/EImgOperator.h"

#include "imaging/EImageData.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <vector>

namespace {

// Angles closer to 0 than this are no turn at all.
constexpr double NoTurn = 0.00001;

bool isNoTurn(double angle) {
    return angle > -NoTurn && angle < NoTurn;
}

std::unique_ptr<EImageData> newPicture(long width, long height) {
    return EImageData::New({width, height}, EImageMemory::MayFree);
}

// The four channels of a pixel word, blue first.
struct Channels {
    int value[4];
};

Channels split(std::uint32_t word) {
    return {{static_cast<int>(word & 0xFF), static_cast<int>(word >> 8 & 0xFF),
             static_cast<int>(word >> 16 & 0xFF), static_cast<int>(word >> 24)}};
}

std::uint32_t join(const Channels& channels) {
    std::uint32_t word = 0;
    for (int c = 3; c >= 0; --c)
        word = word << 8 | static_cast<std::uint32_t>(std::clamp(channels.value[c], 0, 255));
    return word;
}

// The part of a channel that moves one cell on: truncate(p times weight) in double.
int carryOf(int channel, double weight) {
    return static_cast<int>(channel * weight);
}

// One pixel of a shear: the pixel keeps what it doesn't pass on, gains the
// carry `left` of the pixel before it, and leaves its own carry in `left`.
// `carry(p)` is the carry of a channel value p.
template <class Carry> std::uint32_t shearPixel(std::uint32_t word, Channels& left, const Carry& carry) {
    const Channels pixel = split(word);
    Channels output;
    for (int c = 0; c < 4; ++c) {
        const int moved = carry(pixel.value[c]);
        output.value[c] = pixel.value[c] - moved + left.value[c];
        left.value[c] = moved;
    }
    return join(output);
}

// The cells of a shear's target line before the offset get the background.
template <class Target>
void shearLead(Target target, long targetLength, long offset, std::uint32_t background) {
    for (long i = 0; i < std::clamp(offset, 0L, targetLength); ++i)
        target(i) = background;
}

// After the last pixel, which left the target at `pos`: the last carry at
// pos, the background after it.
template <class Target>
void shearTail(Target target, long targetLength, long pos, std::uint32_t carry, std::uint32_t background) {
    if (pos >= 0 && pos < targetLength) target(pos) = carry;
    for (long i = std::max(pos + 1, 0L); i < targetLength; ++i)
        target(i) = background;
}

// One line of a shear, a row or a column: `source(i)` reads pixel i of the
// source line and `target(i)` gives cell i of the target line.
template <class Source, class Target, class Carry>
void shearLine(Source source, long sourceLength, Target target, long targetLength, long offset,
               const Carry& carry, std::uint32_t background) {
    shearLead(target, targetLength, offset, background);
    Channels left = split(background);
    long pos = offset;
    for (long i = 0; i < sourceLength; ++i, ++pos) {
        const std::uint32_t output = shearPixel(source(i), left, carry);
        if (pos >= 0 && pos < targetLength) target(pos) = output;
    }
    shearTail(target, targetLength, pos, join(left), background);
}

// Per byte: a + b, clamped at 255.
std::uint32_t addSaturated(std::uint32_t a, std::uint32_t b) {
    const std::uint32_t sum = ((a & 0x7F7F7F7F) + (b & 0x7F7F7F7F)) ^ ((a ^ b) & 0x80808080);
    const std::uint32_t overflow = ((a & b) | ((a | b) & ~sum)) & 0x80808080;
    return sum | (overflow >> 7) * 0xFF;
}

// The carries of all channel values at one weight from 0 to 1, worked out
// once per line by carryOf, and the shear step on whole words. As no carry
// exceeds its channel, the pixel less its carry is one subtraction, and the
// clamp of the sum with the carry before it a saturating addition: the
// bytes of shearPixel.
class CarryTable {
public:
    void Fill(double weight) {
        for (int p = 0; p < 256; ++p)
            values[p] = static_cast<std::uint8_t>(carryOf(p, weight));
    }
    std::uint32_t Carry(std::uint32_t word) const {
        return values[word & 0xFF] | values[word >> 8 & 0xFF] << 8 | values[word >> 16 & 0xFF] << 16 |
               static_cast<std::uint32_t>(values[word >> 24]) << 24;
    }
    std::uint32_t Step(std::uint32_t word, std::uint32_t& left) const {
        const std::uint32_t moved = Carry(word);
        const std::uint32_t output = addSaturated(word - moved, left);
        left = moved;
        return output;
    }

private:
    std::uint8_t values[256];
};

// Offset and weight of one line of a shear pass.
struct LineShift {
    long offset;
    double weight;
};

LineShift lineShift(double shift) {
    const double whole = std::floor(shift);
    return {static_cast<long>(whole), shift - whole};
}

// A side of a shear picture, or nothing when it can't be a picture's side.
std::optional<long> side(double extent) {
    if (!(extent >= 0.0 && extent < 2147483648.0)) return std::nullopt;
    return static_cast<long>(extent);
}

// The sizes of the three shear pictures and the shift of every line of each pass.
struct ShearPlan {
    long width = 0, height = 0;      // the source
    long width1 = 0;                 // the first picture: width1 by height
    long height2 = 0, width3 = 0;    // the second: width1 by height2; the third: width3 by height2
    std::vector<LineShift> rows1;    // horizontal shear of the source's rows
    std::vector<LineShift> columns2; // vertical shear of the first picture's columns
    std::vector<LineShift> rows3;    // horizontal shear of the second picture's rows
};

std::optional<ShearPlan> planShear(const EImageData& source, double angle) {
    const double r = angle * std::numbers::pi / 180.0;
    const double s = std::sin(r), t = std::tan(r / 2.0), c = std::cos(r);
    ShearPlan plan;
    plan.width = source.GetWidth();
    plan.height = source.GetHeight();
    const long W = plan.width, H = plan.height;
    const std::optional<long> lean1 = side(static_cast<double>(H) * std::fabs(t));
    const std::optional<long> box2 = side(static_cast<double>(W) * std::fabs(s) + static_cast<double>(H) * c);
    const std::optional<long> box3 = side(static_cast<double>(H) * std::fabs(s) + static_cast<double>(W) * c);
    if (!lean1 || !box2 || !box3 || *lean1 > INT32_MAX - W) return std::nullopt;
    plan.width1 = W + *lean1;
    plan.height2 = *box2 + 1;
    plan.width3 = *box3 + 1;

    for (long y = 0; y < H; ++y) {
        const long leaning = t >= 0.0 ? y : y - H;
        plan.rows1.push_back(lineShift((static_cast<double>(leaning) + 0.5) * t));
    }
    double shift = s > 0.0 ? static_cast<double>(W - 1) * s : static_cast<double>(W - plan.width1) * -s;
    for (long x = 0; x < plan.width1; ++x, shift -= s)
        plan.columns2.push_back(lineShift(shift));
    shift = s >= 0.0 ? -t * static_cast<double>(W - 1) * s
                     : (static_cast<double>(1 - plan.height2) + -s * static_cast<double>(W - 1)) * t;
    for (long y = 0; y < plan.height2; ++y, shift += t)
        plan.rows3.push_back(lineShift(shift));
    return plan;
}

// A turn by shears: the angle 0 is a copy; otherwise `shears`(plan) makes
// the picture, or null when the shears can't be planned.
template <class Shears>
std::unique_ptr<EImageData> rotateByShears(const EImageData& source, double angle, Shears shears) {
    if (angle == 0.0) return source.Clone();
    const std::optional<ShearPlan> plan = planShear(source, angle);
    if (!plan) return nullptr;
    return shears(*plan);
}

// The three shears one after the other through ShearRow and ShearColumn, on
// three whole pictures. Each picture is deleted as soon as the next shear is
// done with it.
std::unique_ptr<EImageData> shearPictures(const EImageData& source, const ShearPlan& plan,
                                          std::uint32_t background) {
    const auto rows = [background](const EImageData& from, EImageData& to,
                                   const std::vector<LineShift>& shifts) {
        for (long y = 0; y < to.GetHeight(); ++y)
            EImgOperator::ShearRow({from.GetRow(y), static_cast<size_t>(from.GetWidth())},
                                   {to.GetRow(y), static_cast<size_t>(to.GetWidth())}, shifts[y].offset,
                                   shifts[y].weight, background);
    };
    std::unique_ptr<EImageData> first = newPicture(plan.width1, plan.height);
    if (!first) return nullptr;
    rows(source, *first, plan.rows1);
    std::unique_ptr<EImageData> second = newPicture(plan.width1, plan.height2);
    if (!second) return nullptr;
    for (long x = 0; x < plan.width1; ++x)
        EImgOperator::ShearColumn(x, *first, *second, plan.columns2[x].offset, plan.columns2[x].weight,
                                  background);
    first.reset();
    std::unique_ptr<EImageData> third = newPicture(plan.width3, plan.height2);
    if (!third) return nullptr;
    rows(*second, *third, plan.rows3);
    return third;
}

// The three shears in one sweep down the result, with the carries from a
// table per line. Each row of the first picture is made once, into a ring of
// the rows that the vertical shear may still need; the vertical shear runs
// across all columns a row at a time, each column keeping its carry; and each
// row that it completes is sheared into the result at once. Only the result
// is a whole picture, so that little fresh memory is touched.
class ShearSweep {
public:
    ShearSweep(const EImageData& source, const ShearPlan& plan, std::uint32_t background)
        : Source(source), Plan(plan), Background(background), ColumnCarries(plan.width1),
          Left(plan.width1, background), Second(plan.width1) {
        long lowest = 0, highest = 0;
        for (const LineShift& column : plan.columns2) {
            lowest = std::min(lowest, column.offset);
            highest = std::max(highest, column.offset);
        }
        Lowest = lowest;
        RingRows = std::min(highest - lowest + 2, plan.height);
        for (long x = 0; x < plan.width1; ++x)
            ColumnCarries[x].Fill(plan.columns2[x].weight);
    }

    std::unique_ptr<EImageData> Run() {
        std::unique_ptr<EImageData> result = newPicture(Plan.width3, Plan.height2);
        Ring = newPicture(Plan.width1, RingRows);
        if (!result || !Ring) return nullptr;
        for (long i = 0; i < Plan.height; ++i)
            FirstRows.push_back(Ring->GetRow(i % RingRows));
        carryPast();
        for (long y = 0; y < Plan.height2; ++y) {
            makeFirstRows(y);
            shearColumnsAt(y);
            RowCarry.Fill(Plan.rows3[y].weight);
            Row(Second.data(), Plan.width1, result->GetRow(y), Plan.width3, Plan.rows3[y].offset, RowCarry,
                Background);
        }
        return result;
    }

private:
    // One row: the pixels before cell 0 only carry, and those past the end are of no account.
    static void Row(const std::uint32_t* from, long count, std::uint32_t* to, long length, long offset,
                    const CarryTable& carry, std::uint32_t background) {
        const auto cells = [to](long i) -> std::uint32_t& { return to[i]; };
        shearLead(cells, length, offset, background);
        std::uint32_t left = background;
        long i = 0;
        for (; i < count && offset + i < 0; ++i)
            left = carry.Carry(from[i]);
        for (const long end = std::min(count, length - offset); i < end; ++i)
            to[offset + i] = carry.Step(from[i], left);
        shearTail(cells, length, offset + count, left, background);
    }

    // The first picture's rows up to the last one that row y of the second needs.
    void makeFirstRows(long y) {
        for (const long needed = std::min(Plan.height, y - Lowest + 1); Made < needed; ++Made) {
            RowCarry.Fill(Plan.rows1[Made].weight);
            Row(Source.GetRow(Made), Plan.width, FirstRows[Made], Plan.width1, Plan.rows1[Made].offset,
                RowCarry, Background);
        }
    }

    // A column that starts above the second picture carries its last pixel above it into row 0.
    void carryPast() {
        makeFirstRows(0);
        for (long x = 0; x < Plan.width1; ++x) {
            const long skipped = -Plan.columns2[x].offset;
            if (skipped > 0 && skipped <= Plan.height)
                Left[x] = ColumnCarries[x].Carry(FirstRows[skipped - 1][x]);
        }
    }

    // Row y of the second picture: pixel y - offset of each column of the first.
    // The pixels lie on a slant through rows made long ago: they are asked
    // from memory a little ahead of their use.
    void shearColumnsAt(long y) {
        constexpr long Ahead = 64;
        for (long x = 0; x < Plan.width1; ++x) {
            if (x + Ahead < Plan.width1) {
                const long ahead = y - Plan.columns2[x + Ahead].offset;
                if (ahead >= 0 && ahead < Plan.height) __builtin_prefetch(FirstRows[ahead] + x + Ahead);
            }
            const long i = y - Plan.columns2[x].offset;
            if (i >= 0 && i < Plan.height)
                Second[x] = ColumnCarries[x].Step(FirstRows[i][x], Left[x]);
            else
                Second[x] = i == Plan.height ? Left[x] : Background;
        }
    }

    const EImageData& Source;
    const ShearPlan& Plan;
    const std::uint32_t Background;
    std::vector<CarryTable> ColumnCarries;
    std::vector<std::uint32_t> Left;   // each column's carry
    std::vector<std::uint32_t> Second; // the row of the second picture being made
    CarryTable RowCarry;
    long Lowest = 0;   // the smallest column offset, 0 at most
    long RingRows = 0; // the first picture's rows that the ring holds
    std::unique_ptr<EImageData> Ring;
    std::vector<std::uint32_t*> FirstRows; // row i of the first picture in the ring
    long Made = 0;                         // the first picture's rows made so far
};

// Pixel (x, y) of the source goes to the point `place`(x, y) of a target of `size`.
template <class Place>
std::unique_ptr<EImageData> quarterTurn(const EImageData& source, CSize size, Place place) {
    std::unique_ptr<EImageData> target = newPicture(size.cx, size.cy);
    if (!target) return nullptr;
    for (long y = 0; y < source.GetHeight(); ++y) {
        const std::uint32_t* row = source.GetRow(y);
        for (long x = 0; x < source.GetWidth(); ++x) {
            const CPoint to = place(x, y);
            target->GetRow(to.y)[to.x] = row[x];
        }
    }
    return target;
}

} // namespace

std::unique_ptr<EImageData> EImgOperator::Apply(std::unique_ptr<EImageData> source) {
    if (!source) return nullptr;
    EImageData* result = Operate(*source);
    if (result == source.get()) return source;
    return std::unique_ptr<EImageData>(result);
}

double EImgOperator::NormalizeAngle(double angle) {
    const double tenths = angle * 10.0;
    if (!std::isfinite(tenths)) return 0.0;
    long n = static_cast<long>(std::fmod(std::trunc(tenths), 3600.0));
    if (n < 0) n += 3600;
    return static_cast<double>(n / 10);
}

std::unique_ptr<EImageData> EImgOperator::RotateImage(const EImageData& source, double angle,
                                                      std::uint32_t background, ERotateQuality quality) {
    double a = NormalizeAngle(angle);
    if (quality == ERotateQuality::Fast) return FastRotate(source, a, background);
    std::unique_ptr<EImageData> (*quarter)(const EImageData&) = nullptr;
    if (a > 45.0 && a <= 135.0) {
        quarter = Rotate90;
        a -= 90.0;
    } else if (a > 135.0 && a <= 225.0) {
        quarter = Rotate180;
        a -= 180.0;
    } else if (a > 225.0 && a <= 315.0) {
        quarter = Rotate270;
        a -= 270.0;
    }
    std::unique_ptr<EImageData> turned = quarter ? quarter(source) : nullptr;
    if (quarter && !turned) return nullptr;
    if (isNoTurn(a)) return turned ? std::move(turned) : source.Clone();
    return ShearRotate(turned ? *turned : source, a, background);
}

std::unique_ptr<EImageData> EImgOperator::FastRotate(const EImageData& source, double angle,
                                                     std::uint32_t background) {
    if (isNoTurn(angle) || !std::isfinite(angle)) return source.Clone();
    const float r = static_cast<float>(angle) * std::numbers::pi_v<float> * 2.0f / 360.0f;
    const float c = std::cos(r), s = std::sin(r);
    const float W = static_cast<float>(source.GetWidth()), H = static_cast<float>(source.GetHeight());
    const long xs[] = {0, static_cast<long>(H * s), static_cast<long>(W * c + H * s),
                       static_cast<long>(W * c)};
    const long ys[] = {0, static_cast<long>(H * c), static_cast<long>(H * c - W * s),
                       static_cast<long>(-W * s)};
    const auto [minX, maxX] = std::minmax_element(std::begin(xs), std::end(xs));
    const auto [minY, maxY] = std::minmax_element(std::begin(ys), std::end(ys));
    std::unique_ptr<EImageData> target = newPicture(*maxX - *minX, *maxY - *minY);
    if (!target) return nullptr;
    target->Fill(background);
    // Each target pixel's centre goes back through the inverse of the
    // transform c, -s, s, c and takes the source pixel it falls on.
    for (long j = 0; j < target->GetHeight(); ++j) {
        std::uint32_t* row = target->GetRow(j);
        const double v = static_cast<double>(j + *minY) + 0.5;
        for (long i = 0; i < target->GetWidth(); ++i) {
            const double u = static_cast<double>(i + *minX) + 0.5;
            const double x = std::floor(c * u - s * v), y = std::floor(s * u + c * v);
            if (x >= 0.0 && x < W && y >= 0.0 && y < H)
                row[i] = source.GetRow(static_cast<long>(y))[static_cast<long>(x)];
        }
    }
    return target;
}

std::unique_ptr<EImageData> EImgOperator::ShearRotate(const EImageData& source, double angle,
                                                      std::uint32_t background) {
    return rotateByShears(source, angle,
                          [&](const ShearPlan& plan) { return ShearSweep(source, plan, background).Run(); });
}

std::unique_ptr<EImageData> EImgOperator::ShearRotateReference(const EImageData& source, double angle,
                                                               std::uint32_t background) {
    return rotateByShears(source, angle,
                          [&](const ShearPlan& plan) { return shearPictures(source, plan, background); });
}

std::unique_ptr<EImageData> EImgOperator::Rotate90(const EImageData& source) {
    const long W = source.GetWidth();
    return quarterTurn(source, {source.GetHeight(), W}, [W](long x, long y) { return CPoint{y, W - 1 - x}; });
}

std::unique_ptr<EImageData> EImgOperator::Rotate180(const EImageData& source) {
    const long W = source.GetWidth(), H = source.GetHeight();
    return quarterTurn(source, {W, H}, [W, H](long x, long y) { return CPoint{W - 1 - x, H - 1 - y}; });
}

std::unique_ptr<EImageData> EImgOperator::Rotate270(const EImageData& source) {
    const long H = source.GetHeight();
    return quarterTurn(source, {H, source.GetWidth()}, [H](long x, long y) { return CPoint{H - 1 - y, x}; });
}

void EImgOperator::ShearRow(std::span<const std::uint32_t> source, std::span<std::uint32_t> target,
                            long offset, double weight, std::uint32_t background) {
    shearLine([source](long i) { return source[i]; }, static_cast<long>(source.size()),
              [target](long i) -> std::uint32_t& { return target[i]; }, static_cast<long>(target.size()),
              offset, [weight](int p) { return carryOf(p, weight); }, background);
}

void EImgOperator::ShearColumn(long x, const EImageData& source, EImageData& target, long offset,
                               double weight, std::uint32_t background) {
    if (x < 0 || x >= source.GetWidth() || x >= target.GetWidth()) return;
    shearLine([&source, x](long i) { return source.GetRow(i)[x]; }, source.GetHeight(),
              [&target, x](long i) -> std::uint32_t& { return target.GetRow(i)[x]; }, target.GetHeight(),
              offset, [weight](int p) { return carryOf(p, weight); }, background);
}
