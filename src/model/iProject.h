#pragma once
// The container of all elements of a document: the name index, the
// selection, the groups, the pane's geometry and the project's length. The
// program has one standard project, the one the open document uses; other
// projects are temporary containers (the clipboard's, the tests') whose
// changes never mark a document modified. Project structure changes on the
// main thread only.

#include "foundation/qvrGeometry.h"
#include "foundation/qvrString.h"
#include "model/iElementContainer.h"
#include "model/iRenderRequest.h"
#include "model/qvrCActionManager.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

class hReport;
class iElementGroup;
class qvrCTreeData;

// The document a standard project belongs to; it keeps the modified flag and
// writes the autosave copy.
class iProjectDocument {
public:
    virtual ~iProjectDocument() = default;
    virtual void SetModifiedFlag(bool modified) = 0;
    // Writes the project to `path` (relative to the working directory; empty:
    // "autosave.tsp") without touching the document's state. Nothing is written
    // when there are no changes.
    virtual void AutoSave(const std::string& path) = 0;
};

class iProject : public iElementContainer {
public:
    // Events of a project, beside those of every object.
    static constexpr long event_pane_changed = 4;
    static constexpr long event_length_changed = 5;
    static constexpr long event_document_changed = 7;
    static constexpr long event_complex_begin = 8;
    static constexpr long event_complex_end = 9;
    static constexpr long event_element_changed = 10;

    // Defaults and bounds of the settings, kept in the profile "Project\Defaults".
    static constexpr long DefaultPaneSize = 1000;
    static constexpr long MinPaneSize = 100;
    static constexpr long DefaultPaneGrid = 16;
    static constexpr long DefaultFrameLength = 250;
    static constexpr long MinFrameLength = 10;

    iProject();
    ~iProject() override;

    // The project of the open document.
    static iProject& GetStandard();
    bool IsStandard() const { return this == &GetStandard(); }

    // --- The name index, in name order.
    iElement* FindElement(const std::string& name) const override;
    iProjectEntry* AddElement(iElement& element) override;
    void RemoveElement(iProjectEntry* entry) override;
    // Every element in name order.
    std::vector<iElement*> GetElements() const;
    size_t GetElementCount() const { return Entries.size(); }
    // Takes ownership of an element made outside: enters it under its name (a
    // taken name gets a number) and keeps it until Clear. Null when it can't be entered.
    iElement* Adopt(std::unique_ptr<iElement> element);
    // Deletes one element of the project.
    void DeleteElement(iElement* element);

    // --- Changes and notices.
    void SetChanged(bool changed) override;
    void OnNameChanged(iElement& element) override;
    void OnPositionChanged(iElement& element) override;
    void LeaveGroup(iElement& element) override;
    long GetCurrentFrame() const override { return CurrentFrame; }
    void SetCurrentFrame(long frame) { CurrentFrame = frame; }
    void BeginComplex();
    void EndComplex();

    // The undo history of the project's edits.
    qvrCActionManager& GetActionManager() { return ActionManager; }

    // Deletes every element and group and loads the defaults.
    void Clear();
    void SetDocument(iProjectDocument* document);
    iProjectDocument* GetDocument() const { return Document; }

    // --- Settings.
    void SetPaneSize(EImageSize size, bool notify);
    void SetPaneGrid(CPoint grid, bool enabled, bool notify);
    void SetFrameLength(long length, bool notify);
    EImageSize GetPaneSize() const { return PaneSize; }
    CPoint GetPaneGrid() const { return PaneGrid; }
    bool IsPaneGridEnabled() const { return PaneGridEnabled; }
    long GetFrameLength() const { return FrameLength; }
    // Writes the present settings to the profile as the defaults of new projects.
    void SaveDefaults() const;

    // --- Groups, in order of creation.
    iElementGroup* FindGroup(const std::string& name) const;
    // Creates a group; null when `checkName` is set and the name is taken.
    iElementGroup* AddGrp(const std::string& name, bool checkName);
    void DeleteGroup(iElementGroup* group);
    const std::vector<std::unique_ptr<iElementGroup>>& GetGroups() const { return Groups; }
    iElementGroup* GetFirstSelectedGroup() const;
    iElementGroup* GetNextSelectedGroup(iElementGroup* group) const;
    void ClearGroupSelection();
    void ClearSelection();

    // --- The project's block in a project file.
    void Load(qvrCTreeData& block, hReport& report);
    void Save(qvrCTreeData& block, hReport& report);

private:
    void loadDefaults();
    void loadSettings(const qvrCTreeData& block, hReport& report);
    void loadElements(qvrCTreeData& block, hReport& report);
    void loadGroups(qvrCTreeData& block, hReport& report);

    qvrCActionManager ActionManager;
    std::map<std::string, std::unique_ptr<iProjectEntry>, qvrNoCaseLess> Entries;
    bool Busy = false;
    EImageSize PaneSize{DefaultPaneSize, DefaultPaneSize};
    CPoint PaneGrid{DefaultPaneGrid, DefaultPaneGrid};
    bool PaneGridEnabled = true;
    long FrameLength = DefaultFrameLength;
    long CurrentFrame = 0;
    std::vector<std::unique_ptr<iElementGroup>> Groups;
    iProjectDocument* Document = nullptr;
};
