#include "views/ioleConnector.h"

#include "foundation/qvrCTextFile.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"

namespace {

constexpr const char* RootName = "ioleConnector";

void writeNames(qvrCTreeData& root, const char* blockName, const char* keyFormat,
                const std::vector<std::string>& names) {
    if (names.empty()) return;
    qvrCTreeData* block = root.CreateChild(blockName);
    long number = 0;
    for (const std::string& name : names)
        block->SetText(qvrFormat(keyFormat, ++number), name);
}

// The keys of a block in the order they were written (their names sort so).
std::vector<std::string> readNames(const qvrCTreeData& root, const char* blockName) {
    std::vector<std::string> names;
    const qvrCTreeData* block = root.Find(blockName);
    if (!block) return names;
    for (const auto& [key, entry] : block->GetChildren())
        if (!entry->Value.empty()) names.push_back(entry->Value);
    return names;
}

} // namespace

bool ioleConnector::IsConnectorFormat(std::string_view format) {
    return format == Format;
}

std::string ioleConnector::Serialize() const {
    qvrCTreeData root(RootName);
    root.SetText("Marker", Marker);
    writeNames(root, "Elements", "Element#%05ld", Elements);
    writeNames(root, "Groups", "Group#%05ld", Groups);
    if (HasNewObject()) root.SetClassId("New", NewClass, NewType);
    qvrCMemoryTextFile file;
    root.Save(file, "", nullptr);
    return file.GetText();
}

std::optional<ioleConnector> ioleConnector::Parse(std::string_view format, const std::string& data) {
    if (!IsConnectorFormat(format)) return std::nullopt;
    qvrCMemoryTextFile file(data);
    qvrCTreeData root;
    long lines = 0;
    root.Load(file, lines, false, nullptr);
    if (root.GetName() != RootName) return std::nullopt;
    ioleConnector connector;
    if (const std::string* marker = root.GetText("Marker")) connector.Marker = *marker;
    connector.Elements = readNames(root, "Elements");
    connector.Groups = readNames(root, "Groups");
    if (root.Find("New") && !root.GetClassId("New", connector.NewClass, connector.NewType))
        return std::nullopt;
    if (!connector.HasObjects() && !connector.HasNewObject()) return std::nullopt;
    return connector;
}
