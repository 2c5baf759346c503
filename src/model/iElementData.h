#pragma once
// The block an element occupies in a project file: its common settings, its
// links inside the project, its grid, its values, the class's own data and
// its open views. Links are restored from both ends, and elements named by a
// link are created empty and filled when their own block comes, so a file
// loads the same in any order of blocks. Main thread only.

#include <string>

class hReport;
class iElement;
class iProject;
class qvrCTreeData;

// The store that an element hands to its views when it is saved: each view
// adds a block "Window.#nn" and fills it.
class iElementFrameStore {
public:
    iElementFrameStore(qvrCTreeData& block, iElement& element) : Block(block), Element(element) {}
    qvrCTreeData& CreateWindowBlock();
    long GetCount() const { return Counter; }
    iElement& GetElement() const { return Element; }

private:
    qvrCTreeData& Block;
    long Counter = 0;
    iElement& Element;
};

namespace iElementData {
// Writes the element's whole block.
void SaveData(iElement& element, qvrCTreeData& block, hReport& report);
// Reads the element's block.
void LoadData(iElement& element, const qvrCTreeData& block, hReport& report);
// The reader of "Elements": creates the element named by the block, or takes
// the one created earlier by a link, then loads it. Null when it can't.
iElement* Create(const qvrCTreeData& block, hReport& report, iProject* project);
// Resolves "class/type/name" in the project, creating the element if need be.
iElement* GetByDescriptor(const std::string& text, hReport& report, iProject* project);
// Writes only what a property page edits: the values and the class's own data.
void SaveSettings(iElement& element, qvrCTreeData& block, hReport& report);
// Reads what SaveSettings wrote.
void LoadSettings(iElement& element, const qvrCTreeData& block, hReport& report);
// Loads the element's block from the parent block that holds it under its name.
bool LoadByName(iElement& element, const qvrCTreeData& parentBlock, hReport& report);
// "class/type/name".
std::string Descriptor(const iElement& element);
} // namespace iElementData
