#include "output/EImageOutputSequence.h"

#include "foundation/EStringTable.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"

#include <algorithm>

namespace {

constexpr EStringId textFramesNumbered = 45102;
constexpr EStringId textOwnNumbering = 45103;

// Takes the text up to the next '|' off the front of `rest`; false without one.
bool takeField(std::string_view& rest, std::string_view& field) {
    const size_t bar = rest.find('|');
    if (bar == std::string_view::npos) return false;
    field = rest.substr(0, bar);
    rest.remove_prefix(bar + 1);
    return true;
}

// What may stand between a conversion's '%' and its letter, and the length letters among it.
constexpr const char* conversionBody = "-+ #0123456789.hlqjzt";
constexpr const char* lengthLetters = "hlqjzt";

// Formats a file name pattern with one number. Every integer conversion takes
// the number, "%%" is a percent sign; any other conversion, which a percent
// sign in the user's name can make, stays as it stands in the text.
std::string formatPattern(std::string_view pattern, long number) {
    std::string result;
    size_t pos = 0;
    while (pos < pattern.size()) {
        const size_t percent = pattern.find('%', pos);
        result.append(pattern.substr(pos, percent - pos));
        if (percent == std::string_view::npos) break;
        const size_t letter = pattern.find_first_not_of(conversionBody, percent + 1);
        if (letter == std::string_view::npos) {
            result.append(pattern.substr(percent));
            break;
        }
        const std::string_view body = pattern.substr(percent + 1, letter - percent - 1);
        const char conversion = pattern[letter];
        if (conversion == '%' && body.empty()) {
            result += '%';
        } else if (std::string_view("diouxX").find(conversion) != std::string_view::npos) {
            const std::string spec =
                "%" + std::string(body.substr(0, body.find_first_of(lengthLetters))) + "l";
            result += qvrFormat((spec + conversion).c_str(), number);
        } else {
            result.append(pattern.substr(percent, letter + 1 - percent));
        }
        pos = letter + 1;
    }
    return result;
}

} // namespace

bool EImageOutputSequenceSetup::IsValid() const {
    return !(ownNumbering && step == 0) && digits >= 0 && digits <= MaxDigits;
}

void EImageOutputSequenceSetup::Repair() {
    if (ownNumbering && step == 0) step = 1;
    digits = std::clamp(digits, 0L, MaxDigits);
}

void EImageOutputSequenceSetup::Reset() {
    digits = 4;
    ownNumbering = false;
    start = 0;
    step = 1;
}

std::string EImageOutputSequenceSetup::GetSetupString() const {
    return qvrFormat("SQ%ld|%c|%ld|%ld", digits, ownNumbering ? 'y' : 'n', start, step);
}

bool EImageOutputSequenceSetup::SetSetupString(std::string_view text) {
    std::string_view rest =
        text.size() > 2 && text.substr(0, 2) == "SQ" ? text.substr(2) : std::string_view{};
    std::string_view digitsField, ownField, startField;
    long newDigits = 0, newStart = 0, newStep = 0;
    if (rest.empty() || !takeField(rest, digitsField) || !qvrParseLong32(digitsField, newDigits) ||
        !takeField(rest, ownField) || !takeField(rest, startField) || !qvrParseLong32(startField, newStart) ||
        !qvrParseLong32(rest, newStep)) {
        Reset();
        return false;
    }
    digits = newDigits;
    ownNumbering = !qvrEqualNoCase(ownField, "n");
    start = newStart;
    step = newStep;
    if (!IsValid()) Reset();
    return true;
}

std::string EImageOutputSequenceSetup::GetDescription() const {
    const std::string example =
        digits == 0 ? std::string("name%ld.%s") : qvrFormat("name%%0%ldld.%%s", digits);
    const char* extension = stream->GetExtension();
    if (!ownNumbering) {
        return qvrFormat(EStringTable::Load(textFramesNumbered).c_str(),
                         qvrFormat(example.c_str(), 0L, extension).c_str(),
                         qvrFormat(example.c_str(), 1L, extension).c_str());
    }
    return qvrFormat(EStringTable::Load(textOwnNumbering).c_str(),
                     qvrFormat(example.c_str(), start, extension).c_str(),
                     qvrFormat(example.c_str(), start + step, extension).c_str(), start, step);
}

std::unique_ptr<EImageOutputSetup> EImageOutputSequence::CreateSetup() const {
    return std::make_unique<EImageOutputSequenceSetup>(*this);
}

std::unique_ptr<EImageOutputWriter> EImageOutputSequence::Open(const std::string& fileName, CSize,
                                                               EImageOutputError& error,
                                                               const EImageOutputSetup* setup, unsigned long,
                                                               unsigned long) const {
    if (!TestFile(fileName, EOutputDirectory::AsIs, &error)) {
        qvrTraceVerbose("*** ERROR[EImageOutputSequence::Open()]: Can't create test file \"%s\" !\n",
                        fileName.c_str());
        return nullptr;
    }
    return std::make_unique<EImageOutputSequenceWriter>(*this, fileName, setup);
}

EImageOutputSequenceWriter::EImageOutputSequenceWriter(const EImageOutputSequence& streamClass,
                                                       const std::string& fileName,
                                                       const EImageOutputSetup* setupGiven)
    : EImageOutputWriter(streamClass, dynamic_cast<const EImageOutputSequenceSetup*>(setupGiven)) {
    if (!setup) ownSetup = std::make_unique<EImageOutputSequenceSetup>(streamClass);
    const size_t dot = fileName.rfind('.');
    const std::string stem = dot == std::string::npos ? fileName : fileName.substr(0, dot);
    const std::string extension = dot == std::string::npos ? std::string() : fileName.substr(dot);
    const long digits = Numbering().digits;
    pattern = stem + (digits < 2 ? std::string("%ld") : qvrFormat("%%0%ldld", digits)) + extension;
}

bool EImageOutputSequenceWriter::Write(const EImageData& image, long frameIndex, EImageOutputError& error) {
    const std::string fileName = formatPattern(pattern, Numbering().FileNumber(frameIndex));
    return static_cast<const EImageOutputSequence*>(stream)->WriteImageFile(fileName, image, error);
}

const EImageOutputSequenceSetup& EImageOutputSequenceWriter::Numbering() const {
    return ownSetup ? *ownSetup : *static_cast<const EImageOutputSequenceSetup*>(setup);
}
