#pragma once
// The library of matrix effects: the preferences section "MatrixFilterEffects"
// with a block "EffectMatrix "<name>"" for each effect. Effects are looked up
// by name without regard to case; the library owns them. Reset empties it,
// and the program deletes every effect at exit through DeleteAll.
//
// Main thread only, like the effects themselves; the section's lock orders
// the preference load and save against the dialog's changes.

#include "foundation/EPrefs.h"

#include <map>
#include <memory>
#include <string_view>
#include <vector>

class hMatrix;
class imodMatrixEffect;

class imodMatrixEffectLibrary : public EPrefsSection {
public:
    imodMatrixEffectLibrary();
    ~imodMatrixEffectLibrary() override;
    static imodMatrixEffectLibrary& Get();

    imodMatrixEffect* Find(std::string_view name) const;
    // A new effect; null when the name is empty or taken.
    imodMatrixEffect* Add(const std::string& name, const hMatrix& matrix);
    // False when the name is empty or taken by another effect.
    bool Rename(imodMatrixEffect& effect, const std::string& name);
    // Deletes the effect; its users are left without one.
    void Delete(imodMatrixEffect* effect);
    void DeleteAll();
    // The effects in the order of their names.
    std::vector<imodMatrixEffect*> GetEffects() const;

protected:
    void LoadExtra(qvrCTreeData& block, hReport& report) override;
    void SaveExtra(qvrCTreeData& block, hReport& report) override;
    void ResetExtra() override { DeleteAll(); }

private:
    // Takes the kernel of one effect block into the library; false when the block is unusable.
    bool loadEffect(const qvrCTreeData& block, hReport& report);

    std::map<std::string, std::unique_ptr<imodMatrixEffect>, qvrNoCaseLess> Effects;
};
