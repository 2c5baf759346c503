#include "foundation/qvrCTreeData.h"

#include "foundation/qvrCTextFile.h"
#include "foundation/qvrTrace.h"

namespace {

struct EscapeTable {
    std::string_view original;
    std::string_view replacement;
};

constexpr EscapeTable nameTable{"$ \t\n\r=;{}\\", "$_~NREC<>/"};
constexpr EscapeTable valueTable{"$ \t\n\r", "$_~NR"};

std::string expandString(std::string_view text, const EscapeTable& table) {
    std::string out;
    out.reserve(text.size() + 8);
    size_t start = 0;
    while (true) {
        size_t pos = text.find_first_of(table.original, start);
        if (pos == std::string_view::npos) {
            out.append(text.substr(start));
            return out;
        }
        out.append(text.substr(start, pos - start));
        out += '$';
        out += table.replacement[table.original.find(text[pos])];
        start = pos + 1;
    }
}

std::string collapseString(std::string_view text, const EscapeTable& table) {
    std::string out;
    out.reserve(text.size());
    size_t start = 0;
    while (true) {
        size_t pos = text.find('$', start);
        if (pos == std::string_view::npos || pos + 1 >= text.size()) {
            if (pos != std::string_view::npos)
                qvrTrace("*** WARNING[qvrCTreeData::CollapseString()]: Trailing '%c' found !\n", '$');
            out.append(text.substr(start));
            return out;
        }
        out.append(text.substr(start, pos - start));
        char next = text[pos + 1];
        size_t index = table.replacement.find(next);
        if (index != std::string_view::npos) {
            out += table.original[index];
        } else {
            qvrTrace("*** WARNING[qvrCTreeData::CollapseString()]: Format character '%c' found followed by "
                     "'%c' which is NOT a replacementchar\n",
                     '$', next);
            out += '$';
            out += next;
        }
        start = pos + 2;
    }
}

} // namespace

std::string qvrCTreeData::ExpandName(std::string_view text) {
    return expandString(text, nameTable);
}
std::string qvrCTreeData::ExpandValue(std::string_view text) {
    return expandString(text, valueTable);
}
std::string qvrCTreeData::CollapseName(std::string_view text) {
    return collapseString(text, nameTable);
}
std::string qvrCTreeData::CollapseValue(std::string_view text) {
    return collapseString(text, valueTable);
}

qvrCTreeData::qvrCTreeData(std::string name, std::string value)
    : Value(std::move(value)), Name(std::move(name)) {}

qvrCTreeData* qvrCTreeData::AddChild(std::unique_ptr<qvrCTreeData> node) {
    if (!node) return nullptr;
    auto [it, inserted] = Children.try_emplace(node->Name, nullptr);
    if (!inserted) return nullptr;
    node->Owner = this;
    it->second = std::move(node);
    LastFound = it->second.get();
    return LastFound;
}

qvrCTreeData* qvrCTreeData::CreateChild(const std::string& name, bool create) {
    if (qvrCTreeData* existing = Find(name)) return create ? existing : nullptr;
    return AddChild(CreateNode(name));
}

qvrCTreeData* qvrCTreeData::Find(std::string_view name) const {
    if (LastFound && qvrEqualNoCase(LastFound->Name, name)) return LastFound;
    auto it = Children.find(name);
    if (it == Children.end()) return nullptr;
    LastFound = it->second.get();
    return LastFound;
}

std::unique_ptr<qvrCTreeData> qvrCTreeData::RemoveChild(qvrCTreeData* node, bool keep) {
    if (!node || node->Owner != this) return nullptr;
    auto it = Children.find(node->Name);
    if (it == Children.end() || it->second.get() != node) return nullptr;
    std::unique_ptr<qvrCTreeData> taken = std::move(it->second);
    Children.erase(it);
    if (LastFound == node) LastFound = nullptr;
    taken->Owner = nullptr;
    if (!keep) taken.reset();
    return taken;
}

bool qvrCTreeData::Rename(const std::string& name) {
    if (!Owner) {
        Name = name;
        return true;
    }
    if (qvrEqualNoCase(name, Name)) {
        Name = name;
        return true;
    }
    if (Owner->Find(name)) return false;
    qvrCTreeData* owner = Owner;
    std::unique_ptr<qvrCTreeData> self = owner->RemoveChild(this, true);
    self->Name = name;
    owner->AddChild(std::move(self));
    return true;
}

std::unique_ptr<qvrCTreeData> qvrCTreeData::Clone() const {
    auto copy = std::make_unique<qvrCTreeData>(Name, Value);
    for (const auto& [key, child] : Children)
        copy->AddChild(child->Clone());
    return copy;
}

bool qvrCTreeData::IsEqual(const qvrCTreeData& other) const {
    if (Name != other.Name || Value != other.Value || Children.size() != other.Children.size()) return false;
    auto a = Children.begin();
    for (auto b = other.Children.begin(); b != other.Children.end(); ++a, ++b)
        if (!a->second->IsEqual(*b->second)) return false;
    return true;
}

std::unique_ptr<qvrCTreeData> qvrCTreeData::CreateNode(const std::string& name) {
    return std::make_unique<qvrCTreeData>(name);
}

const char* qvrCTreeData::BadFormatText(int code) {
    switch (code) {
    case BlockNeverOpened:
        return "Block closed that was never opened";
    case InvalidName:
        return "Invalid name for new object";
    case UnexpectedEndOfFile:
        return "Unexpected end of file (block not closed)";
    case GarbageBeforeBlock:
        return "Garbage before start of block";
    case NameExists:
        return "An Object with that name already exists";
    case NestedTooDeeply:
        return "Blocks nested too deeply";
    }
    return "";
}

void qvrCTreeData::OnLoadBadFormat(qvrCTreeDataReport* report, qvrCTextFile& file, long line, int code) {
    qvrTrace(
        "*** WARNING[qvrCTreeData::OnLoadBadFormat()]: Error while loading %s, line %ld, context %s: %s.\n",
        file.GetName().c_str(), line, Name.c_str(), BadFormatText(code));
    if (report) report->OnBadFormat(file, line, Name, code);
}

qvrCTreeData::LoadResult qvrCTreeData::Load(qvrCTextFile& file, long& lineCounter, bool inBlock,
                                            qvrCTreeDataReport* report) {
    return load(file, lineCounter, inBlock, report, 0);
}

qvrCTreeData::LoadResult qvrCTreeData::load(qvrCTextFile& file, long& lineCounter, bool inBlock,
                                            qvrCTreeDataReport* report, int depth) {
    std::string line;
    while (true) {
        if (!file.ReadLine(line)) return EndOfFile;
        ++lineCounter;
        std::string_view text = qvrTrimLeft(line);
        if (text.empty() || text.front() == ';') continue;
        text = qvrTrimRight(text);
        if (text.front() == '}') {
            if (inBlock) return BlockEnd;
            OnLoadBadFormat(report, file, lineCounter, BlockNeverOpened);
            continue;
        }
        size_t equals = text.find('=');
        if (equals == std::string_view::npos) {
            std::string name = CollapseName(text);
            if (name.empty()) {
                OnLoadBadFormat(report, file, lineCounter, InvalidName);
                continue;
            }
            Name = std::move(name);
            Value.clear();
            return NodeDone;
        }
        std::string_view valuePart = qvrTrimLeft(text.substr(equals + 1));
        std::string_view key = text.substr(0, equals);
        bool leaf = false;
        bool blockHead = false;
        if (!key.empty()) {
            // The writer sets a blank before "=", so the character before it is
            // ":" for a key and anything else for a block head: both are cut.
            leaf = key.back() == ':';
            blockHead = !leaf;
            key.remove_suffix(1);
            key = qvrTrimRight(key);
        }
        std::string name = CollapseName(key);
        if (name.empty()) {
            OnLoadBadFormat(report, file, lineCounter, InvalidName);
            continue;
        }
        Name = std::move(name);
        Value = CollapseValue(valuePart);
        if (!blockHead) return NodeDone;
        if (report) report->OnBlockStart(file, lineCounter);
        if (depth >= MaxNestingDepth) {
            OnLoadBadFormat(report, file, lineCounter, NestedTooDeeply);
            return skipBlock(file, lineCounter, report);
        }
        return loadBlock(file, lineCounter, report, depth);
    }
}

qvrCTreeData::LoadResult qvrCTreeData::loadBlock(qvrCTextFile& file, long& lineCounter,
                                                 qvrCTreeDataReport* report, int depth) {
    std::string line;
    while (true) {
        if (!file.ReadLine(line)) {
            OnLoadBadFormat(report, file, lineCounter, UnexpectedEndOfFile);
            return EndOfFile;
        }
        ++lineCounter;
        std::string_view text = qvrTrimLeft(line);
        if (text.empty() || text.front() == ';') continue;
        if (text.front() == '{') break;
        OnLoadBadFormat(report, file, lineCounter, GarbageBeforeBlock);
    }
    while (true) {
        std::unique_ptr<qvrCTreeData> child = CreateNode("<unknown>");
        long childLine = lineCounter;
        LoadResult result = child->load(file, lineCounter, true, report, depth + 1);
        if (result == EndOfFile) {
            OnLoadBadFormat(report, file, lineCounter, UnexpectedEndOfFile);
            return EndOfFile;
        }
        if (result == BlockEnd) return NodeDone;
        if (!AddChild(std::move(child))) OnLoadBadFormat(report, file, childLine, NameExists);
    }
}

// Passes over a block and everything nested in it without building nodes: the
// node keeps its name and value, its children are dropped.
qvrCTreeData::LoadResult qvrCTreeData::skipBlock(qvrCTextFile& file, long& lineCounter,
                                                 qvrCTreeDataReport* report) {
    std::string line;
    long open = 0;
    while (file.ReadLine(line)) {
        ++lineCounter;
        std::string_view text = qvrTrimLeft(line);
        if (text.empty()) continue;
        if (text.front() == '{') ++open;
        if (text.front() == '}' && open > 0 && --open == 0) return NodeDone;
    }
    OnLoadBadFormat(report, file, lineCounter, UnexpectedEndOfFile);
    return EndOfFile;
}

void qvrCTreeData::Save(qvrCTextFile& file, const std::string& indent, qvrCTreeDataReport* report) const {
    std::string name = ExpandName(Name);
    if (name.empty()) return;
    std::string value = ExpandValue(Value);
    std::string head;
    head.reserve(indent.size() + name.size() + value.size() + 8);
    head.append(indent).append(name);
    if (Children.empty()) {
        head.append(" := ").append(value).append("\n");
        file.WriteText(head);
        return;
    }
    if (value.empty())
        head.append(" =\n");
    else
        head.append(" = ").append(value).append("\n");
    head.append(indent).append(" {\n");
    file.WriteText(head);
    if (report) report->OnNodeSaved(file, *this);
    std::string childIndent = indent + "   ";
    for (const auto& [key, child] : Children)
        child->Save(file, childIndent, report);
    file.WriteText(indent + " } <" + name + ">\n");
}

// Typed values ----------------------------------------------------------------

std::string qvrTreeText::FromBool(bool value) {
    return value ? "Yes" : "No";
}

bool qvrTreeText::ToBool(std::string_view text, bool& value) {
    if (qvrEqualNoCase(text, "Yes")) {
        value = true;
        return true;
    }
    if (qvrEqualNoCase(text, "No")) {
        value = false;
        return true;
    }
    return false;
}

bool qvrTreeText::ToLongs(std::string_view text, long* values, size_t count) {
    std::vector<std::string> parts = qvrSplit(text, ',');
    if (parts.size() != count) return false;
    for (size_t i = 0; i < count; ++i)
        if (!qvrParseLong(parts[i], values[i])) return false;
    return true;
}

bool qvrTreeText::ToDescriptor(std::string_view text, std::string& className, std::string& typeName,
                               std::string& objectName) {
    size_t first = text.find('/');
    if (first == std::string_view::npos) return false;
    size_t second = text.find('/', first + 1);
    if (second == std::string_view::npos || second + 1 >= text.size()) return false;
    className = text.substr(0, first);
    typeName = text.substr(first + 1, second - first - 1);
    objectName = text.substr(second + 1);
    return true;
}

namespace {

template <typename Parse>
qvrCTreeData* getTyped(const qvrCTreeData& node, std::string_view name, qvrCTreeData** bad, Parse parse) {
    if (bad) *bad = nullptr;
    qvrCTreeData* child = node.Find(name);
    if (!child) return nullptr;
    if (parse(child->Value)) return child;
    if (bad) *bad = child;
    return nullptr;
}

} // namespace

const std::string* qvrCTreeData::GetText(std::string_view name) const {
    qvrCTreeData* child = Find(name);
    return child ? &child->Value : nullptr;
}

qvrCTreeData* qvrCTreeData::GetLong(std::string_view name, long& value, qvrCTreeData** bad) const {
    return getTyped(*this, name, bad, [&](const std::string& text) { return qvrParseLong(text, value); });
}

qvrCTreeData* qvrCTreeData::GetBool(std::string_view name, bool& value, qvrCTreeData** bad) const {
    return getTyped(*this, name, bad,
                    [&](const std::string& text) { return qvrTreeText::ToBool(text, value); });
}

qvrCTreeData* qvrCTreeData::GetPoint(std::string_view name, CPoint& value, qvrCTreeData** bad) const {
    return getTyped(*this, name, bad, [&](const std::string& text) {
        long v[2];
        if (!qvrTreeText::ToLongs(text, v, 2)) return false;
        value = {v[0], v[1]};
        return true;
    });
}

qvrCTreeData* qvrCTreeData::GetSize(std::string_view name, CSize& value, qvrCTreeData** bad) const {
    CPoint point;
    qvrCTreeData* child = GetPoint(name, point, bad);
    if (child) value = {point.x, point.y};
    return child;
}

qvrCTreeData* qvrCTreeData::GetRect(std::string_view name, CRect& value, qvrCTreeData** bad) const {
    return getTyped(*this, name, bad, [&](const std::string& text) {
        long v[4];
        if (!qvrTreeText::ToLongs(text, v, 4)) return false;
        value = {v[0], v[1], v[2], v[3]};
        return true;
    });
}

qvrCTreeData* qvrCTreeData::GetDescriptor(std::string_view name, std::string& className,
                                          std::string& typeName, std::string& objectName,
                                          qvrCTreeData** bad) const {
    return getTyped(*this, name, bad, [&](const std::string& text) {
        return qvrTreeText::ToDescriptor(text, className, typeName, objectName);
    });
}

qvrCTreeData* qvrCTreeData::GetClassId(std::string_view name, std::string& className, std::string& typeName,
                                       qvrCTreeData** bad) const {
    return getTyped(*this, name, bad, [&](const std::string& text) {
        size_t slash = text.find('/');
        if (slash == std::string::npos) return false;
        className = text.substr(0, slash);
        typeName = text.substr(slash + 1);
        return true;
    });
}

qvrCTreeData* qvrCTreeData::SetText(const std::string& name, std::string value) {
    qvrCTreeData* child = CreateChild(name, true);
    child->Value = std::move(value);
    return child;
}

qvrCTreeData* qvrCTreeData::SetLong(const std::string& name, long value) {
    return SetText(name, qvrFormat("%ld", value));
}

qvrCTreeData* qvrCTreeData::SetBool(const std::string& name, bool value) {
    return SetText(name, qvrTreeText::FromBool(value));
}

qvrCTreeData* qvrCTreeData::SetPoint(const std::string& name, CPoint value) {
    return SetText(name, qvrFormat("%ld,%ld", value.x, value.y));
}

qvrCTreeData* qvrCTreeData::SetSize(const std::string& name, CSize value) {
    return SetPoint(name, {value.cx, value.cy});
}

qvrCTreeData* qvrCTreeData::SetRect(const std::string& name, const CRect& value) {
    return SetText(name, qvrFormat("%ld,%ld,%ld,%ld", value.left, value.top, value.right, value.bottom));
}

qvrCTreeData* qvrCTreeData::SetDescriptor(const std::string& name, const std::string& className,
                                          const std::string& typeName, const std::string& objectName) {
    return SetText(name, className + "/" + typeName + "/" + objectName);
}

qvrCTreeData* qvrCTreeData::SetClassId(const std::string& name, const std::string& className,
                                       const std::string& typeName) {
    return SetText(name, className + "/" + typeName);
}
