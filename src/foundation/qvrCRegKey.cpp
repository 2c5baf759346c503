#include "foundation/qvrCRegKey.h"

#include "foundation/iDataBase.h"
#include "foundation/qvrCException.h"
#include "foundation/qvrCTextFile.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <mutex>

namespace {

std::unique_ptr<qvrCTreeData> emptyRoot() {
    return std::make_unique<qvrCTreeData>(iDataBase::RootName, iDataBase::CurrentVersion);
}

// The one store behind every key: its tree and its file.
struct RegistryStore {
    std::mutex Guard;
    std::unique_ptr<qvrCTreeData> Root = emptyRoot();
    std::string FilePath;
};

RegistryStore& store() {
    static RegistryStore instance;
    return instance;
}

// "%s\%s", with empty segments dropped.
std::string joinKeyPath(std::string_view parent, std::string_view name) {
    std::string path;
    for (std::string_view part : {parent, name})
        for (const std::string& segment : qvrSplit(part, '\\')) {
            if (segment.empty()) continue;
            if (!path.empty()) path += '\\';
            path += segment;
        }
    return path;
}

// The node of a key path; 0 when a segment is missing (and not to be made) or holds a value.
qvrCTreeData* findKey(qvrCTreeData& root, std::string_view path, bool create) {
    qvrCTreeData* node = &root;
    if (path.empty()) return node;
    for (const std::string& segment : qvrSplit(path, '\\')) {
        qvrCTreeData* child = node->Find(segment);
        if (!child && !create) return nullptr;
        if (!child) child = node->CreateChild(segment);
        if (child->IsEmpty() && !child->Value.empty()) return nullptr;
        node = child;
    }
    return node;
}

bool isValue(const qvrCTreeData* node) {
    return node && node->IsEmpty();
}

// Writes the whole store to a temporary file that then replaces the store's file.
bool writeStore(const RegistryStore& registry) {
    if (registry.FilePath.empty()) return true;
    const std::string temporary = registry.FilePath + ".tmp";
    try {
        qvrCDiskTextFile file(temporary, qvrCDiskTextFile::Mode::Write);
        file.WriteText(iDataBase::Header);
        registry.Root->Save(file, "   ", nullptr);
        file.WriteText(iDataBase::Trailer);
        file.Close();
        if (std::rename(temporary.c_str(), registry.FilePath.c_str()) != 0)
            throw qvrCFileException(registry.FilePath, errno);
    } catch (const std::exception& error) {
        qvrTrace("*** ERROR[qvrCRegKey::writeStore()]: Cannot write \"%s\": %s.\n", registry.FilePath.c_str(),
                 qvrErrorText::FromException(error).c_str());
        std::remove(temporary.c_str());
        return false;
    }
    return true;
}

bool readStore(RegistryStore& registry) {
    registry.Root = emptyRoot();
    std::error_code missing;
    if (!std::filesystem::exists(registry.FilePath, missing)) return true;
    try {
        qvrCDiskTextFile file(registry.FilePath, qvrCDiskTextFile::Mode::Read);
        std::unique_ptr<qvrCTreeData> root = emptyRoot();
        long lines = 0;
        root->Load(file, lines, false, nullptr);
        if (!qvrEqualNoCase(root->GetName(), iDataBase::RootName))
            throw qvrCException(qvrFormat("no \"%s\" found", iDataBase::RootName));
        registry.Root = std::move(root);
    } catch (const std::exception& error) {
        qvrTrace("*** ERROR[qvrCRegKey::OpenStore()]: Cannot read \"%s\": %s.\n", registry.FilePath.c_str(),
                 qvrErrorText::FromException(error).c_str());
        return false;
    }
    return true;
}

} // namespace

bool qvrCRegKey::OpenStore(const std::string& directory) {
    RegistryStore& registry = store();
    std::lock_guard lock(registry.Guard);
    registry.FilePath = (std::filesystem::path(directory) / StoreFileName).string();
    return readStore(registry);
}

std::string qvrCRegKey::GetStorePath() {
    RegistryStore& registry = store();
    std::lock_guard lock(registry.Guard);
    return registry.FilePath;
}

qvrCRegKey qvrCRegKey::Root(std::string_view machine) {
    if (!machine.empty())
        qvrTraceVerbose("*** NOTE[qvrCRegKey::Root()]: Machine \"%s\" - the local store stands for it.\n",
                        std::string(machine).c_str());
    qvrCRegKey key;
    key.Opened = true;
    return key;
}

bool qvrCRegKey::Open(const qvrCRegKey& parent, std::string_view name, Access access) {
    if (!parent.Opened) {
        Close();
        return false;
    }
    std::string path = joinKeyPath(parent.Path, name);
    RegistryStore& registry = store();
    std::lock_guard lock(registry.Guard);
    Opened = findKey(*registry.Root, path, access == Access::Create) != nullptr;
    Path = Opened ? std::move(path) : std::string();
    return Opened;
}

void qvrCRegKey::Close() {
    Opened = false;
    Path.clear();
}

bool qvrCRegKey::readValue(std::string_view name, std::string& text) const {
    if (!Opened) return false;
    RegistryStore& registry = store();
    std::lock_guard lock(registry.Guard);
    const qvrCTreeData* key = findKey(*registry.Root, Path, false);
    const qvrCTreeData* node = key ? key->Find(name) : nullptr;
    if (!isValue(node)) return false;
    text = node->Value;
    return true;
}

std::string qvrCRegKey::GetText(std::string_view name, std::string_view defaultValue) const {
    std::string text;
    return readValue(name, text) ? text : std::string(defaultValue);
}

long qvrCRegKey::GetLong(std::string_view name, long defaultValue) const {
    std::string text;
    long value = 0;
    return readValue(name, text) && qvrParseLong(text, value) ? value : defaultValue;
}

bool qvrCRegKey::GetBool(std::string_view name, bool defaultValue) const {
    std::string text;
    bool value = false;
    return readValue(name, text) && qvrTreeText::ToBool(text, value) ? value : defaultValue;
}

bool qvrCRegKey::writeValue(std::string_view name, const std::string& text) {
    if (!Opened || name.empty()) return false;
    RegistryStore& registry = store();
    std::lock_guard lock(registry.Guard);
    qvrCTreeData* key = findKey(*registry.Root, Path, true);
    if (!key) return false;
    const qvrCTreeData* node = key->Find(name);
    if (node && !isValue(node)) return false;
    key->SetText(std::string(name), text);
    return writeStore(registry);
}

bool qvrCRegKey::SetText(std::string_view name, const std::string& value) {
    return writeValue(name, value);
}

bool qvrCRegKey::SetLong(std::string_view name, long value) {
    return writeValue(name, std::to_string(value));
}

bool qvrCRegKey::SetBool(std::string_view name, bool value) {
    return writeValue(name, qvrTreeText::FromBool(value));
}

bool qvrCRegKey::DeleteValue(std::string_view name) {
    if (!Opened) return false;
    RegistryStore& registry = store();
    std::lock_guard lock(registry.Guard);
    qvrCTreeData* key = findKey(*registry.Root, Path, false);
    qvrCTreeData* node = key ? key->Find(name) : nullptr;
    if (!isValue(node)) return false;
    key->RemoveChild(node);
    return writeStore(registry);
}

bool qvrCRegKey::DeleteSubTree(std::string_view name) {
    const std::string path = joinKeyPath(Path, name);
    if (!Opened || path == Path) return false;
    RegistryStore& registry = store();
    std::lock_guard lock(registry.Guard);
    qvrCTreeData* node = findKey(*registry.Root, path, false);
    if (!node) return false;
    node->GetOwner()->RemoveChild(node);
    return writeStore(registry);
}
