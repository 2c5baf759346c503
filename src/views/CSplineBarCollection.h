#pragma once
// The collections of the spline bar: named selections of objects, each with
// the check state of every value and whether its entry is open. The collection
// that is shown lives in the tree's entries; one that isn't lives in its
// ElementInfos, which a switch fills from the tree and PopulateTree turns back
// into entries. CSplineBarCollectionAll, the default collection, holds every
// element of the project, follows the project's events and is never saved.
// Main thread only, like every window.

#include "foundation/qvrString.h"
#include "model/iBase.h"

#include <map>
#include <string>
#include <vector>

class CSplineBarTree;
class hReport;
class qvrCTreeData;

class CSplineBarCollection {
public:
    // The stored state of one object of a collection that isn't shown.
    struct ElementInfo {
        std::string Name;
        bool Expanded = false;
        // A value's name and its check state, 0 or 1.
        std::map<std::string, int, qvrNoCaseLess> Checks;
    };

    CSplineBarCollection(CSplineBarTree& tree, std::string name);
    virtual ~CSplineBarCollection() = default;
    CSplineBarCollection(const CSplineBarCollection&) = delete;
    CSplineBarCollection& operator=(const CSplineBarCollection&) = delete;

    virtual bool IsDefault() const { return false; }
    bool IsShown() const;

    // Reads the collection's block: "TopVisible" and the objects of "Entries".
    void Load(const qvrCTreeData& block, hReport& report);
    // Writes the collection's block; a shown collection writes the tree as it is.
    void Save(qvrCTreeData& block) const;
    // Makes the tree's entries from the stored objects and forgets them.
    virtual void PopulateTree();

    std::string Name;
    // In the order of the tree's entries.
    std::vector<ElementInfo> ElementInfos;
    std::string TopVisible;

protected:
    CSplineBarTree& Tree;

private:
    void populateEntry(const ElementInfo& info);
    static void saveInfos(qvrCTreeData& block, const std::vector<ElementInfo>& infos);
};

class CSplineBarCollectionAll : public CSplineBarCollection, private iNotifier {
public:
    explicit CSplineBarCollectionAll(CSplineBarTree& tree);

    bool IsDefault() const override { return true; }
    // The stored objects, then every other element of the project.
    void PopulateTree() override;

private:
    iNotifyAnswer OnEvent(long code, const iEventArgument& argument) override;
    void onElementRemoved(const iBase* element);
    // Brings the shown entries in line with the project after a complex event.
    void synchronize();

    long ComplexDepth = 0;
};
