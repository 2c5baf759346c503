#pragma once
// The tree of named blocks and keys behind every text file of the program.
// A node has a name, a text value and children kept sorted by name without
// regard to case; Save always writes the same bytes for the same tree, and Load
// reads them back, skipping bad lines with a report. A tree belongs to one
// thread at a time.

#include "foundation/qvrGeometry.h"
#include "foundation/qvrString.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>

class qvrCTextFile;
class qvrCTreeData;

// Receives progress and format problems of a load or save; may be absent.
class qvrCTreeDataReport {
public:
    virtual ~qvrCTreeDataReport() = default;
    virtual void OnBlockStart(qvrCTextFile& file, long line) = 0;
    virtual void OnBadFormat(qvrCTextFile& file, long line, const std::string& context, int code) = 0;
    virtual void OnNodeSaved(qvrCTextFile& file, const qvrCTreeData& node) = 0;
};

class qvrCTreeData {
public:
    using ChildMap = std::map<std::string, std::unique_ptr<qvrCTreeData>, qvrNoCaseLess>;

    enum LoadResult : int { NodeDone = 0, BlockEnd = 1, EndOfFile = 2 };
    enum BadFormatCode : int {
        BlockNeverOpened = 0,
        InvalidName = 1,
        UnexpectedEndOfFile = 2,
        GarbageBeforeBlock = 3,
        NameExists = 4,
        NestedTooDeeply = 5
    };
    // Blocks deeper than this are skipped whole and reported, so that a hostile
    // file cannot exhaust the reader's stack.
    static constexpr int MaxNestingDepth = 200;

    explicit qvrCTreeData(std::string name = {}, std::string value = {});
    virtual ~qvrCTreeData() = default;
    qvrCTreeData(const qvrCTreeData&) = delete;
    qvrCTreeData& operator=(const qvrCTreeData&) = delete;

    // Adds a node as child; 0 when the name is taken (the node is then deleted).
    qvrCTreeData* AddChild(std::unique_ptr<qvrCTreeData> node);
    // A new child; for a taken name the existing child when `create` is set, else 0.
    qvrCTreeData* CreateChild(const std::string& name, bool create = true);
    qvrCTreeData* Find(std::string_view name) const;
    // Takes a child out; with `keep` the caller gets it, otherwise it is deleted.
    std::unique_ptr<qvrCTreeData> RemoveChild(qvrCTreeData* node, bool keep = false);
    void RemoveAllChildren() {
        Children.clear();
        LastFound = nullptr;
    }
    bool IsEmpty() const { return Children.empty(); }
    size_t GetChildCount() const { return Children.size(); }
    qvrCTreeData* GetOwner() const { return Owner; }
    // The children in name order.
    const ChildMap& GetChildren() const { return Children; }
    // Deep copy of value and children under a new name (the own name when empty).
    std::unique_ptr<qvrCTreeData> Clone() const;
    bool IsEqual(const qvrCTreeData& other) const;

    LoadResult Load(qvrCTextFile& file, long& lineCounter, bool inBlock, qvrCTreeDataReport* report);
    void Save(qvrCTextFile& file, const std::string& indent, qvrCTreeDataReport* report) const;

    // Typed access. A get returns the child, or 0 when it is missing or its value
    // is bad; a bad child is also given back through `bad`.
    const std::string* GetText(std::string_view name) const;
    qvrCTreeData* GetLong(std::string_view name, long& value, qvrCTreeData** bad = nullptr) const;
    qvrCTreeData* GetBool(std::string_view name, bool& value, qvrCTreeData** bad = nullptr) const;
    qvrCTreeData* GetPoint(std::string_view name, CPoint& value, qvrCTreeData** bad = nullptr) const;
    qvrCTreeData* GetSize(std::string_view name, CSize& value, qvrCTreeData** bad = nullptr) const;
    qvrCTreeData* GetRect(std::string_view name, CRect& value, qvrCTreeData** bad = nullptr) const;
    // "class/type/name": split at the first two slashes; the name must not be empty.
    qvrCTreeData* GetDescriptor(std::string_view name, std::string& className, std::string& typeName,
                                std::string& objectName, qvrCTreeData** bad = nullptr) const;
    // "class/type": split at the first slash.
    qvrCTreeData* GetClassId(std::string_view name, std::string& className, std::string& typeName,
                             qvrCTreeData** bad = nullptr) const;

    // A typed set adds the child or takes the existing one, and replaces its value.
    qvrCTreeData* SetText(const std::string& name, std::string value);
    qvrCTreeData* SetLong(const std::string& name, long value);
    qvrCTreeData* SetBool(const std::string& name, bool value);
    qvrCTreeData* SetPoint(const std::string& name, CPoint value);
    qvrCTreeData* SetSize(const std::string& name, CSize value);
    qvrCTreeData* SetRect(const std::string& name, const CRect& value);
    qvrCTreeData* SetDescriptor(const std::string& name, const std::string& className,
                                const std::string& typeName, const std::string& objectName);
    qvrCTreeData* SetClassId(const std::string& name, const std::string& className,
                             const std::string& typeName);

    const std::string& GetName() const { return Name; }
    // Renames the node; false when a sibling already has the name.
    bool Rename(const std::string& name);

    std::string Value;

    // Escaping of names and values in the file.
    static std::string ExpandName(std::string_view text);
    static std::string ExpandValue(std::string_view text);
    static std::string CollapseName(std::string_view text);
    static std::string CollapseValue(std::string_view text);

    static const char* BadFormatText(int code);

protected:
    virtual void OnLoadBadFormat(qvrCTreeDataReport* report, qvrCTextFile& file, long line, int code);
    virtual std::unique_ptr<qvrCTreeData> CreateNode(const std::string& name);

private:
    LoadResult load(qvrCTextFile& file, long& lineCounter, bool inBlock, qvrCTreeDataReport* report,
                    int depth);
    LoadResult loadBlock(qvrCTextFile& file, long& lineCounter, qvrCTreeDataReport* report, int depth);
    LoadResult skipBlock(qvrCTextFile& file, long& lineCounter, qvrCTreeDataReport* report);

    std::string Name;
    ChildMap Children;
    qvrCTreeData* Owner = nullptr;
    mutable qvrCTreeData* LastFound = nullptr;
};

// Conversions between typed values and their text form, shared with every
// reader of typed values that is not a tree.
namespace qvrTreeText {
std::string FromBool(bool value);
bool ToBool(std::string_view text, bool& value);
bool ToLongs(std::string_view text, long* values, size_t count);
// "class/type/name": split at the first two slashes; the name must not be empty.
bool ToDescriptor(std::string_view text, std::string& className, std::string& typeName,
                  std::string& objectName);
} // namespace qvrTreeText
