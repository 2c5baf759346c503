#pragma once
// The preferences: the parent section "Preferences" of the database files and
// the base of its child sections. Every child guards its values with a lock of
// its own; readers on any thread take it with a time-out of 2000 ms and fall
// back to the defaults when it can't be had, so no render thread blocks on a
// setting. A section describes its keys once (name, default, limits) and that
// description drives reset, load and save.

#include "foundation/iDataBaseSection.h"

#include <climits>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

class EPrefs : public iDataBaseParentSection {
public:
    EPrefs();
    static EPrefs& Get();
};

// "UserInterface": the parent of the views' settings, in both preference files.
class ESettingsGUI : public iDataBaseParentSection {
public:
    ESettingsGUI();
    static ESettingsGUI& Get();
};

class EPrefsSection : public iDataBaseSection {
public:
    static constexpr int LockTimeoutMs = 2000;
    using Lock = std::unique_lock<std::recursive_timed_mutex>;

    explicit EPrefsSection(std::string name, iDataBaseSection* parent = &EPrefs::Get(),
                           uint32_t mask = DBMaskGlobalPrefs);

    // The section's lock, or an unowned lock when it could not be had in time.
    Lock TryLock(int timeoutMs = LockTimeoutMs) const;

    void Load(qvrCTreeData& block, hReport& report) override;
    void Save(qvrCTreeData& block, hReport& report) override;
    void Reset() override;

    // A key as a settings window edits it.
    struct Setting {
        enum class Kind { Text, Number, Flag };
        std::string Name;
        Kind Type = Kind::Text;
        long Minimum = LONG_MIN;
        long Maximum = LONG_MAX;
    };
    std::vector<Setting> GetSettings() const;
    // The key's value as the preference file writes it; empty for an unknown key.
    std::string GetText(std::string_view name) const;
    // Sets the key from text as the file would give it; false when the text
    // is no value for the key or the section is in use.
    bool SetText(std::string_view name, const std::string& text);

protected:
    void AddText(const char* name, std::string* field, std::string defaultValue);
    void AddLong(const char* name, long* field, long defaultValue, long minimum = LONG_MIN,
                 long maximum = LONG_MAX);
    void AddBool(const char* name, bool* field, bool defaultValue);

    // Hooks for keys that the table can't describe; called under the lock.
    virtual void LoadExtra(qvrCTreeData&, hReport&) {}
    virtual void SaveExtra(qvrCTreeData&, hReport&) {}
    virtual void ResetExtra() {}

private:
    struct Key {
        const char* Name;
        std::variant<std::string*, long*, bool*> Field;
        std::variant<std::string, long, bool> Default;
        long Minimum = LONG_MIN;
        long Maximum = LONG_MAX;
    };
    bool loadKey(const Key& key, const std::string& text);
    static void saveKey(const Key& key, qvrCTreeData& block);
    const Key* findKey(std::string_view name) const;

    mutable std::recursive_timed_mutex Guard;
    std::vector<Key> Keys;
};
