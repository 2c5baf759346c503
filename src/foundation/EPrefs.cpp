#include "foundation/EPrefs.h"

#include <chrono>

EPrefs::EPrefs()
    : iDataBaseParentSection("Preferences", DBMaskProject | DBMaskGlobalPrefs | DBMaskUserPrefs) {}

EPrefs& EPrefs::Get() {
    static EPrefs instance;
    return instance;
}

ESettingsGUI::ESettingsGUI() : iDataBaseParentSection("UserInterface", DBMaskProject | DBMaskUserPrefs) {}

ESettingsGUI& ESettingsGUI::Get() {
    static ESettingsGUI instance;
    return instance;
}

namespace {
// The two parents exist from static construction on, whoever asks first.
[[maybe_unused]] EPrefs& prefsRoot = EPrefs::Get();
[[maybe_unused]] ESettingsGUI& settingsRoot = ESettingsGUI::Get();
} // namespace

EPrefsSection::EPrefsSection(std::string name, iDataBaseSection* parent, uint32_t mask)
    : iDataBaseSection(std::move(name), mask, parent) {}

EPrefsSection::Lock EPrefsSection::TryLock(int timeoutMs) const {
    Lock lock(Guard, std::defer_lock);
    (void)lock.try_lock_for(std::chrono::milliseconds(timeoutMs));
    return lock;
}

void EPrefsSection::AddText(const char* name, std::string* field, std::string defaultValue) {
    *field = defaultValue;
    Keys.push_back({name, field, std::move(defaultValue)});
}

void EPrefsSection::AddLong(const char* name, long* field, long defaultValue, long minimum, long maximum) {
    *field = defaultValue;
    Keys.push_back({name, field, defaultValue, minimum, maximum});
}

void EPrefsSection::AddBool(const char* name, bool* field, bool defaultValue) {
    *field = defaultValue;
    Keys.push_back({name, field, defaultValue});
}

bool EPrefsSection::loadKey(const Key& key, const std::string& text) {
    if (auto* textField = std::get_if<std::string*>(&key.Field)) {
        **textField = text;
        return true;
    }
    if (auto* longField = std::get_if<long*>(&key.Field)) {
        long value = 0;
        if (!qvrParseLong(text, value) || value < key.Minimum || value > key.Maximum) return false;
        **longField = value;
        return true;
    }
    bool value = false;
    if (!qvrTreeText::ToBool(text, value)) return false;
    *std::get<bool*>(key.Field) = value;
    return true;
}

void EPrefsSection::Load(qvrCTreeData& block, hReport& report) {
    Lock lock = TryLock();
    if (!lock) {
        report.Report("Resouce is in use", hReportError);
        return;
    }
    for (const Key& key : Keys) {
        const std::string* text = block.GetText(key.Name);
        if (text && !loadKey(key, *text))
            report.Report(
                qvrFormat("Invalid value \"%s\" for \"%s\" (the default stays)", text->c_str(), key.Name),
                hReportWarning);
    }
    LoadExtra(block, report);
}

void EPrefsSection::Save(qvrCTreeData& block, hReport& report) {
    Lock lock = TryLock();
    if (!lock) {
        report.Report("Resouce is in use", hReportError);
        return;
    }
    for (const Key& key : Keys)
        saveKey(key, block);
    SaveExtra(block, report);
}

void EPrefsSection::saveKey(const Key& key, qvrCTreeData& block) {
    if (auto* textField = std::get_if<std::string*>(&key.Field))
        block.SetText(key.Name, **textField);
    else if (auto* longField = std::get_if<long*>(&key.Field))
        block.SetLong(key.Name, **longField);
    else
        block.SetBool(key.Name, *std::get<bool*>(key.Field));
}

const EPrefsSection::Key* EPrefsSection::findKey(std::string_view name) const {
    for (const Key& key : Keys)
        if (name == key.Name) return &key;
    return nullptr;
}

std::vector<EPrefsSection::Setting> EPrefsSection::GetSettings() const {
    std::vector<Setting> settings;
    for (const Key& key : Keys) {
        Setting setting{key.Name, Setting::Kind::Text, key.Minimum, key.Maximum};
        if (std::holds_alternative<long*>(key.Field)) setting.Type = Setting::Kind::Number;
        if (std::holds_alternative<bool*>(key.Field)) setting.Type = Setting::Kind::Flag;
        settings.push_back(std::move(setting));
    }
    return settings;
}

std::string EPrefsSection::GetText(std::string_view name) const {
    const Key* key = findKey(name);
    Lock lock = TryLock();
    if (!key || !lock) return {};
    qvrCTreeData block;
    saveKey(*key, block);
    return block.Find(key->Name)->Value;
}

bool EPrefsSection::SetText(std::string_view name, const std::string& text) {
    const Key* key = findKey(name);
    Lock lock = TryLock();
    return key && lock && loadKey(*key, text);
}

void EPrefsSection::Reset() {
    Lock lock = TryLock();
    if (!lock) return;
    for (const Key& key : Keys) {
        std::visit(
            [&](auto* field) { *field = std::get<std::remove_pointer_t<decltype(field)>>(key.Default); },
            key.Field);
    }
    ResetExtra();
}
