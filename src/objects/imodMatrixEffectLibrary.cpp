#include "objects/imodMatrixEffectLibrary.h"

#include "foundation/EStringTable.h"
#include "foundation/qvrString.h"
#include "objects/imodMatrixEffect.h"

namespace {

enum : EStringId { textCannotAddEffect = 47627 };

constexpr std::string_view blockPrefix = "EffectMatrix \"";
constexpr std::string_view blockSuffix = "\"";

std::string blockName(const std::string& effectName) {
    return std::string(blockPrefix) + effectName + std::string(blockSuffix);
}

// The effect's name from its block name; empty when the block isn't an effect's.
std::string effectName(const std::string& block) {
    const std::string_view name = block;
    if (name.size() <= blockPrefix.size() + blockSuffix.size() || !name.starts_with(blockPrefix) ||
        !name.ends_with(blockSuffix))
        return {};
    return std::string(
        name.substr(blockPrefix.size(), name.size() - blockPrefix.size() - blockSuffix.size()));
}

} // namespace

imodMatrixEffectLibrary::imodMatrixEffectLibrary() : EPrefsSection("MatrixFilterEffects") {}

imodMatrixEffectLibrary::~imodMatrixEffectLibrary() = default;

imodMatrixEffectLibrary& imodMatrixEffectLibrary::Get() {
    static imodMatrixEffectLibrary instance;
    return instance;
}

namespace {
[[maybe_unused]] imodMatrixEffectLibrary& librarySection = imodMatrixEffectLibrary::Get();
}

imodMatrixEffect* imodMatrixEffectLibrary::Find(std::string_view name) const {
    Lock lock = TryLock();
    if (!lock) return nullptr;
    const auto found = Effects.find(name);
    return found != Effects.end() ? found->second.get() : nullptr;
}

imodMatrixEffect* imodMatrixEffectLibrary::Add(const std::string& name, const hMatrix& matrix) {
    Lock lock = TryLock();
    if (!lock || name.empty() || Effects.contains(name)) return nullptr;
    auto effect = std::make_unique<imodMatrixEffect>(name, matrix);
    imodMatrixEffect* added = effect.get();
    Effects.emplace(name, std::move(effect));
    return added;
}

bool imodMatrixEffectLibrary::Rename(imodMatrixEffect& effect, const std::string& name) {
    Lock lock = TryLock();
    if (!lock || name.empty()) return false;
    const auto taken = Effects.find(name);
    if (taken != Effects.end() && taken->second.get() != &effect) return false;
    auto entry = Effects.extract(effect.GetName());
    if (entry.empty()) return false;
    entry.key() = name;
    Effects.insert(std::move(entry));
    effect.SetName(name);
    return true;
}

void imodMatrixEffectLibrary::Delete(imodMatrixEffect* effect) {
    Lock lock = TryLock();
    if (!lock || !effect) return;
    // The effect goes after it has left the list, as its users are told of it.
    auto gone = Effects.extract(effect->GetName());
}

void imodMatrixEffectLibrary::DeleteAll() {
    Lock lock = TryLock();
    if (!lock) return;
    const auto gone = std::move(Effects);
    Effects.clear();
}

std::vector<imodMatrixEffect*> imodMatrixEffectLibrary::GetEffects() const {
    Lock lock = TryLock();
    std::vector<imodMatrixEffect*> effects;
    if (!lock) return effects;
    for (const auto& [name, effect] : Effects)
        effects.push_back(effect.get());
    return effects;
}

bool imodMatrixEffectLibrary::loadEffect(const qvrCTreeData& block, hReport& report) {
    const std::string name = effectName(block.GetName());
    hMatrix matrix;
    if (name.empty() || !matrix.Load(block, report)) return false;
    if (imodMatrixEffect* known = Find(name)) {
        known->SetMatrix(matrix);
        return true;
    }
    return Add(name, matrix) != nullptr;
}

void imodMatrixEffectLibrary::LoadExtra(qvrCTreeData& block, hReport& report) {
    for (const auto& [key, child] : block.GetChildren()) {
        if (loadEffect(*child, report)) continue;
        const std::string name = effectName(child->GetName());
        report.Report(qvrFormat(EStringTable::Load(textCannotAddEffect).c_str(),
                                (name.empty() ? child->GetName() : name).c_str()),
                      hReportError);
    }
}

void imodMatrixEffectLibrary::SaveExtra(qvrCTreeData& block, hReport&) {
    for (const auto& [name, effect] : Effects)
        effect->GetMatrix().Save(*block.CreateChild(blockName(name)));
}
