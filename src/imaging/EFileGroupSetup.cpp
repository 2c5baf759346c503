#include "imaging/EFileGroupSetup.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

// The shortest text that reads back as the same double.
std::string formatDouble(double value) {
    std::array<char, 32> buffer;
    char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return std::string(buffer.data(), end);
}

} // namespace

EFileGroupSetup::EFileGroupSetup(std::string directory, const EFileGroup& group)
    : EFileGroup(group), Directory(std::move(directory)), Sequence(true) {}

EFileGroupSetup EFileGroupSetup::SingleFile(std::string directory, std::string fileName) {
    EFileGroupSetup setup;
    setup.Directory = std::move(directory);
    setup.SingleName = std::move(fileName);
    return setup;
}

EFileGroupSetup EFileGroupSetup::FromDisplayName(std::string directory, const std::string& displayName,
                                                 long count, long firstNumber) {
    const size_t first = displayName.find('#');
    if (first == std::string::npos) return SingleFile(std::move(directory), displayName);
    const size_t last = displayName.rfind('#');
    const EFileGroup group(displayName.substr(0, first), displayName.substr(last + 1),
                           static_cast<std::uint32_t>(last - first + 1),
                           static_cast<std::uint32_t>(firstNumber),
                           static_cast<std::uint32_t>(firstNumber + count - 1));
    return EFileGroupSetup(std::move(directory), group);
}

double EFileGroupSetup::ValidAspect(double aspect) {
    return aspect < 0.0001 ? 1.0 : aspect;
}

std::string EFileGroupSetup::GetDisplayFileName() const {
    if (!Sequence) return SingleName;
    return Head + std::string(std::max<std::uint32_t>(NumLen, 1), '#') + Tail;
}

std::string EFileGroupSetup::GetFileForNumber(long number) const {
    return Sequence ? GetFileName(number) : SingleName;
}

bool EFileGroupSetup::IsSameFiles(const EFileGroupSetup& other) const {
    if (Sequence != other.Sequence || Directory != other.Directory) return false;
    if (!Sequence) return qvrEqualNoCase(SingleName, other.SingleName);
    return qvrEqualNoCase(Head, other.Head) && qvrEqualNoCase(Tail, other.Tail) && NumLen == other.NumLen &&
           Min == other.Min && Max == other.Max;
}

void EFileGroupSetup::SaveSetup(qvrCTreeData& section) const {
    qvrCTreeData* block = section.CreateChild(BlockName);
    block->SetBool("Sequence", Sequence);
    block->SetText("Directory", Directory);
    if (Sequence)
        Save(*block);
    else
        block->SetText("FileName", SingleName);
    block->SetSize("ImageSize", ImageSize);
    block->SetText("Aspect", formatDouble(Aspect));
    block->SetBool("UseProxies", UseProxies);
}

bool EFileGroupSetup::LoadSetup(const qvrCTreeData& section, hReport& report) {
    const qvrCTreeData* block = section.Find(BlockName);
    if (!block) return false;
    *this = EFileGroupSetup();
    block->GetBool("Sequence", Sequence);
    if (const std::string* directory = block->GetText("Directory")) Directory = *directory;
    if (Sequence)
        Load(*block, report);
    else if (const std::string* name = block->GetText("FileName"))
        SingleName = *name;
    block->GetSize("ImageSize", ImageSize);
    const std::string* aspect = block->GetText("Aspect");
    double readAspect = 1.0;
    if (aspect && qvrParseDouble(*aspect, readAspect)) Aspect = ValidAspect(readAspect);
    block->GetBool("UseProxies", UseProxies);
    return true;
}
