#pragma once
// A claim on one top-level block (or sub-block) of the program's database files.
// Sections are static objects: a section without a parent lists itself at
// once; one with a parent waits until LinkWaitingSections hangs it below its
// parent, which start-up does once and every database operation repeats for
// latecomers. The lists are built during static construction and start-up on
// the main thread; loads and saves run on the main thread too.

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"

#include <cstdint>
#include <string>

// Which store a section belongs to.
enum iDataBaseMask : uint32_t { DBMaskProject = 1, DBMaskGlobalPrefs = 2, DBMaskUserPrefs = 4 };

class iDataBaseSection {
public:
    iDataBaseSection(std::string name, uint32_t mask, iDataBaseSection* parent = nullptr);
    virtual ~iDataBaseSection();
    iDataBaseSection(const iDataBaseSection&) = delete;
    iDataBaseSection& operator=(const iDataBaseSection&) = delete;

    virtual void Load(qvrCTreeData& block, hReport& report);
    virtual void Save(qvrCTreeData& block, hReport& report);
    // Sets the defaults; runs before any load and for a new project.
    virtual void Reset() {}
    virtual bool IsParent() const { return false; }
    // A parent section with data of its own keeps it in a sub-block "Core".
    virtual bool HasCore() const { return false; }

    bool SharesMask(uint32_t mask) const { return (Mask & mask) != 0; }

    std::string Name;
    uint32_t Mask;
    iDataBaseSection* Next = nullptr;
    iDataBaseSection* FirstChild = nullptr;
    iDataBaseSection* Parent;

    static iDataBaseSection* GetFirstTopLevel();
    // Finds a top-level section, or a child of `parent`, by name without regard to case.
    static iDataBaseSection* FindTopLevel(std::string_view name);
    iDataBaseSection* FindChild(std::string_view name) const;
    // Moves every waiting section to the head of its parent's child list.
    static void LinkWaitingSections();
    // Resets every section, depth first.
    static void ResetAll();
};

class iDataBaseParentSection : public iDataBaseSection {
public:
    using iDataBaseSection::iDataBaseSection;
    bool IsParent() const override { return true; }
};
