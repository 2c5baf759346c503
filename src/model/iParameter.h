#pragma once
// The parameters of an object class, described once in a table: the key under
// which a parameter is written, its kind, default, limits, label and whether a
// copy of the object takes it over. An animated parameter is one of the
// object's values and is made from its description; every other kind is a
// member of the object written in its "Object" block. The table writes and
// reads that block, copies the parameters into a clone, and gives the values
// and the property pages their limits and labels. Rules that no table can say
// stay as code in the class beside its table, and a parameter that such a
// rule reads is marked so.
//
// Tables are constants, built before any object; using one on an object
// follows the object's threading rules.

#include "foundation/EStringTable.h"
#include "foundation/qvrCTreeData.h"
#include "model/iActiveValue.h"
#include "model/iRenderRequest.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

enum class iParameterKind {
    Animated,   // one of the object's values, written with the values
    Number,     // a whole number
    Flag,       // "Yes" or "No"
    ColourWord, // 0xAARRGGBB, written as a signed 32-bit number
    Text,
    Size, // width and height
};

// Who reads a parameter from a file: the table, or a rule of the class.
enum class iParameterLoad { ByTable, ByClass };
// Whether the copy that Clone makes takes the parameter over.
enum class iParameterCopy { Copied, NotCopied };

struct iParameterLimits {
    std::optional<double> Min;
    std::optional<double> Max;

    // Whether a number lies within the limits.
    bool Allows(double value) const { return !(Min && value < *Min) && !(Max && value > *Max); }
};

struct iParameter {
    std::string_view Key;
    iParameterKind Kind;
    EStringId Label = 0;
    double Default = 0.0;
    iParameterLimits Limits{};
    // Animated values: whether the value wants to stay constant, and its
    // curve colour when not the next one of the shared colour table.
    bool ConstantWanted = false;
    std::optional<std::uint32_t> CurveColour{};
    iParameterLoad Load = iParameterLoad::ByTable;
    iParameterCopy Copy = iParameterCopy::Copied;

    // Whether a number lies within the limits.
    bool Allows(double value) const { return Limits.Allows(value); }
};

// A parameter of `Object` and the member that holds it; animated parameters
// are found among the object's values by their key and hold no member here.
template <class Object> struct iParameterEntry {
    using Member = std::variant<std::monostate, long Object::*, std::uint32_t Object::*, bool Object::*,
                                std::string Object::*, EImageSize Object::*>;
    iParameter Parameter;
    Member Field{};
};

// The operations on one class's table.
template <class Object> class iParameterTable {
public:
    using Entry = iParameterEntry<Object>;

    constexpr explicit iParameterTable(std::span<const Entry> entries) : Entries(entries) {}

    std::span<const Entry> GetEntries() const { return Entries; }

    // The description under `key`; the table must hold it.
    const iParameter& Get(std::string_view key) const {
        for (const Entry& entry : Entries)
            if (entry.Parameter.Key == key) return entry.Parameter;
        return Entries.front().Parameter;
    }

    // Writes every parameter of the block.
    void SaveBlock(const Object& object, qvrCTreeData& block) const {
        for (const Entry& entry : Entries)
            std::visit([&](auto field) { save(entry.Parameter, object, field, block); }, entry.Field);
    }

    // Reads the parameters that the table reads; a missing or unreadable key
    // leaves the member as it is.
    void LoadBlock(Object& object, const qvrCTreeData& block) const {
        for (const Entry& entry : Entries)
            if (entry.Parameter.Load == iParameterLoad::ByTable)
                std::visit([&](auto field) { load(entry.Parameter, object, field, block); }, entry.Field);
    }

    // Gives `copy` the parameters that a clone takes over: members and the keys of values.
    void CopyTo(const Object& original, Object& copy) const {
        for (const Entry& entry : Entries) {
            if (entry.Parameter.Copy == iParameterCopy::NotCopied) continue;
            if (entry.Parameter.Kind == iParameterKind::Animated)
                copyKeys(entry.Parameter.Key, original, copy);
            else
                std::visit([&](auto field) { copyMember(original, copy, field); }, entry.Field);
        }
    }

private:
    static void save(const iParameter&, const Object&, std::monostate, qvrCTreeData&) {}
    static void save(const iParameter& p, const Object& o, long Object::*f, qvrCTreeData& b) {
        b.SetLong(std::string(p.Key), o.*f);
    }
    static void save(const iParameter& p, const Object& o, std::uint32_t Object::*f, qvrCTreeData& b) {
        const bool signedWord = p.Kind == iParameterKind::ColourWord;
        b.SetLong(std::string(p.Key), signedWord ? static_cast<std::int32_t>(o.*f) : static_cast<long>(o.*f));
    }
    static void save(const iParameter& p, const Object& o, bool Object::*f, qvrCTreeData& b) {
        b.SetBool(std::string(p.Key), o.*f);
    }
    static void save(const iParameter& p, const Object& o, std::string Object::*f, qvrCTreeData& b) {
        b.SetText(std::string(p.Key), o.*f);
    }
    static void save(const iParameter& p, const Object& o, EImageSize Object::*f, qvrCTreeData& b) {
        b.SetSize(std::string(p.Key), (o.*f).ToSize());
    }

    static void load(const iParameter&, Object&, std::monostate, const qvrCTreeData&) {}
    static void load(const iParameter& p, Object& o, long Object::*f, const qvrCTreeData& b) {
        b.GetLong(p.Key, o.*f);
    }
    // A colour word is taken only when it fits 32 bits, signed or not; a
    // number is cut to its 32 bits.
    static void load(const iParameter& p, Object& o, std::uint32_t Object::*f, const qvrCTreeData& b) {
        long read = 0;
        if (!b.GetLong(p.Key, read)) return;
        if (p.Kind == iParameterKind::ColourWord &&
            (read < INT32_MIN || read > static_cast<long>(UINT32_MAX)))
            return;
        o.*f = static_cast<std::uint32_t>(read);
    }
    static void load(const iParameter& p, Object& o, bool Object::*f, const qvrCTreeData& b) {
        b.GetBool(p.Key, o.*f);
    }
    static void load(const iParameter& p, Object& o, std::string Object::*f, const qvrCTreeData& b) {
        if (const std::string* text = b.GetText(p.Key)) o.*f = *text;
    }
    static void load(const iParameter& p, Object& o, EImageSize Object::*f, const qvrCTreeData& b) {
        CSize read;
        if (b.GetSize(p.Key, read)) o.*f = {read.cx, read.cy};
    }

    static void copyMember(const Object&, Object&, std::monostate) {}
    template <class Field> static void copyMember(const Object& original, Object& copy, Field field) {
        copy.*field = original.*field;
    }

    static iActiveValue* findValue(const Object& object, std::string_view key) {
        for (iActiveValue* value = object.GetFirstValue(); value; value = value->GetNextValue())
            if (value->GetName() == key) return value;
        return nullptr;
    }
    static void copyKeys(std::string_view key, const Object& original, Object& copy) {
        const iActiveValue* from = findValue(original, key);
        iActiveValue* to = findValue(copy, key);
        if (from && to) to->AssignKeys(*from);
    }

    std::span<const Entry> Entries;
};
