#include "model/iElementData.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "model/iElement.h"
#include "model/iFactory.h"
#include "model/iObjectFrontEnd.h"
#include "model/iProject.h"

qvrCTreeData& iElementFrameStore::CreateWindowBlock() {
    ++Counter;
    return *Block.CreateChild(qvrFormat("Window.#%02ld", Counter));
}

namespace {

// Whether the element is of the class and type a file names, the type by its
// name or by the former name its producer still reads.
bool isOfType(const iElement& element, const std::string& className, const std::string& type) {
    if (!qvrEqualNoCase(element.GetElementClass(), className)) return false;
    const iFactoryProducer* producer = element.GetProducer();
    return producer ? producer->Makes(type) : qvrEqualNoCase(element.GetElementType(), type);
}

std::string contextName(const iElement& element) {
    return qvrFormatMessage("Object %1 (%2)", {element.GetName(), element.GetElementType()});
}

bool sameProject(const iElement& a, const iElement& b) {
    return a.GetProject() && a.GetProject() == b.GetProject();
}

void saveCommon(const iElement& element, qvrCTreeData& block) {
    qvrCTreeData* common = block.CreateChild("Common");
    common->SetPoint("PanePosition", element.GetPanePosition());
    common->SetBool("SetupShown", element.IsSetupShown());
    common->SetBool("Properties", element.GetPropertyDialog() != nullptr);
    common->SetRect("PropertiesPos", element.GetPropertiesPos());
}

void saveLinks(const iElement& element, qvrCTreeData& block) {
    if (element.GetFirstParentLink()) {
        qvrCTreeData* parents = block.CreateChild("Parents");
        long number = 0;
        for (iElementLink* link = element.GetFirstParentLink(); link; link = link->GetNextOfChild())
            if (link->GetChild() == &element && sameProject(element, *link->GetParent()))
                parents->SetText(qvrFormat("Parent#%03ld", ++number),
                                 iElementData::Descriptor(*link->GetParent()));
    }
    if (element.GetFirstChildLink()) {
        qvrCTreeData* childs = block.CreateChild("Childs");
        long number = 0;
        for (iElementLink* link = element.GetFirstChildLink(); link; link = link->GetNextOfParent())
            if (link->GetParent() == &element && sameProject(element, *link->GetChild()))
                childs->SetText(qvrFormat("Child#%03ld", ++number),
                                iElementData::Descriptor(*link->GetChild()));
    }
}

void saveGrid(iElement& element, qvrCTreeData& block) {
    if (!element.GetGridReference().Get()) return;
    if (!element.AcceptsGrid()) {
        element.SetGrid(nullptr);
        return;
    }
    iElement* grid = element.GetGridReference().Get();
    if (!grid->IsGrid()) {
        element.SetGrid(nullptr);
        return;
    }
    block.SetText("Grid", iElementData::Descriptor(*grid));
}

void saveValues(const iElement& element, qvrCTreeData& block, hReport& report) {
    if (!element.GetFirstValue()) return;
    qvrCTreeData* variables = block.CreateChild("Variables");
    for (iActiveValue* value = element.GetFirstValue(); value; value = value->GetNextValue())
        value->Save(*variables, report);
}

void saveWindows(iElement& element, qvrCTreeData& block) {
    qvrCTreeData* windows = block.CreateChild("Windows");
    iElementFrameStore store(*windows, element);
    element.Notify(iElement::event_collect_windows, {.Store = &store});
    if (windows->IsEmpty()) block.RemoveChild(windows);
}

bool loadCommon(iElement& element, const qvrCTreeData& block, hReport& report) {
    const qvrCTreeData* common = block.Find("Common");
    if (!common) {
        report.Report("No 'Common' block found", hReportNote);
        return false;
    }
    CPoint position;
    if (!common->GetPoint("PanePosition", position)) {
        report.Report("No pane position", hReportWarning);
        position = {16, 16};
    }
    element.SetPanePosition(position, false);
    bool setupShown = true;
    common->GetBool("SetupShown", setupShown);
    element.SetSetupShown(setupShown);
    bool propertiesOpen = false;
    common->GetBool("Properties", propertiesOpen);
    CRect propertiesPos = element.GetPropertiesPos();
    if (common->GetRect("PropertiesPos", propertiesPos)) element.SetPropertiesPos(propertiesPos);
    return propertiesOpen;
}

iProject* projectOf(const iElement& element) {
    return dynamic_cast<iProject*>(element.GetProject());
}

void loadChilds(iElement& element, const qvrCTreeData& block, hReport& report) {
    const qvrCTreeData* childs = block.Find("Childs");
    if (!childs) return;
    for (const auto& [key, entry] : childs->GetChildren()) {
        iElement* child = iElementData::GetByDescriptor(entry->Value, report, projectOf(element));
        if (!child || child->HasParent(&element)) continue;
        if (child->LinkParent(&element) != link_done)
            report.Report(
                qvrFormatMessage("Linking to child \"%1\" was not executed as expected", {child->GetName()}),
                hReportWarning);
    }
}

// Moves the parent's link to the place `index` of the element's parent list.
void placeParentLink(iElement& element, iElement& parent, long index) {
    iElementLink* link = element.GetParentLink(&parent);
    iElementLink* atIndex = element.GetFirstParentLink();
    for (long i = 0; atIndex && i < index; ++i)
        atIndex = atIndex->GetNextOfChild();
    if (!link || link == atIndex) return;
    link->Unlink(false);
    link->Link(false, atIndex);
}

void loadParents(iElement& element, const qvrCTreeData& block, hReport& report) {
    const qvrCTreeData* parents = block.Find("Parents");
    if (!parents) return;
    long index = 0;
    for (const auto& [key, entry] : parents->GetChildren()) {
        iElement* parent = iElementData::GetByDescriptor(entry->Value, report, projectOf(element));
        if (!parent) continue;
        if (!element.HasParent(parent) && element.LinkParent(parent) != link_done) {
            report.Report(qvrFormatMessage("Linking to parent \"%1\" was not executed as expected",
                                           {parent->GetName()}),
                          hReportWarning);
            continue;
        }
        placeParentLink(element, *parent, index);
        ++index;
    }
}

void loadGrid(iElement& element, const qvrCTreeData& block, hReport& report) {
    const qvrCTreeData* grid = block.Find("Grid");
    if (!grid) return;
    if (!element.AcceptsGrid()) {
        report.Report("This object does not accept grids", hReportWarning);
        return;
    }
    iElement* target = iElementData::GetByDescriptor(grid->Value, report, projectOf(element));
    if (!element.SetGrid(target))
        report.Report(qvrFormatMessage("Failed to set grid from object \"%1\"", {grid->Value}), hReportError);
}

void loadValues(iElement& element, const qvrCTreeData& block, hReport& report) {
    const qvrCTreeData* variables = block.Find("Variables");
    if (!variables) return;
    for (iActiveValue* value = element.GetFirstValue(); value; value = value->GetNextValue())
        value->Load(*variables, report);
}

void loadObject(iElement& element, const qvrCTreeData& block, hReport& report) {
    const qvrCTreeData* object = block.Find("Object");
    if (object)
        element.doLoadData(*object, report);
    else if (element.HasObjectBlock())
        report.Report("No 'Object' block found", hReportWarning);
}

// Each view that was open when the element was saved opens again.
void loadWindows(iElement& element, const qvrCTreeData& block) {
    const qvrCTreeData* windows = block.Find("Windows");
    if (!windows) return;
    for (long index = 1;; ++index) {
        const qvrCTreeData* window = windows->Find(qvrFormat("Window.#%02ld", index));
        if (!window) return;
        iObjectFrontEnd::Get().RestoreView(element, *window);
    }
}

iElement* produceInto(iProject& project, const std::string& className, const std::string& type,
                      const std::string& name) {
    return project.Adopt(iFactory::Get().Produce(className, type, name));
}

} // namespace

std::string iElementData::Descriptor(const iElement& element) {
    return element.GetElementClass() + "/" + element.GetElementType() + "/" + element.GetName();
}

void iElementData::SaveData(iElement& element, qvrCTreeData& block, hReport& report) {
    hReport context(&report, contextName(element));
    block.Value = element.GetElementClass() + "/" + element.GetElementType();
    saveCommon(element, block);
    if (element.GetProject()) {
        saveLinks(element, block);
        saveGrid(element, block);
    }
    saveValues(element, block, context);
    if (element.HasObjectBlock()) element.doSaveData(*block.CreateChild("Object"), context);
    saveWindows(element, block);
}

void iElementData::LoadData(iElement& element, const qvrCTreeData& block, hReport& report) {
    hReport context(&report, contextName(element));
    bool propertiesOpen = loadCommon(element, block, context);
    if (element.GetProject()) loadChilds(element, block, context);
    loadParents(element, block, context);
    loadGrid(element, block, context);
    loadValues(element, block, context);
    loadObject(element, block, context);
    if (propertiesOpen) iObjectFrontEnd::Get().ShowProperties(element);
    loadWindows(element, block);
}

void iElementData::SaveSettings(iElement& element, qvrCTreeData& block, hReport& report) {
    hReport context(&report, contextName(element));
    saveValues(element, block, context);
    if (element.HasObjectBlock()) element.doSaveData(*block.CreateChild("Object"), context);
}

void iElementData::LoadSettings(iElement& element, const qvrCTreeData& block, hReport& report) {
    hReport context(&report, contextName(element));
    loadValues(element, block, context);
    loadObject(element, block, context);
}

iElement* iElementData::Create(const qvrCTreeData& block, hReport& report, iProject* project) {
    const std::string& name = block.GetName();
    size_t slash = block.Value.find('/');
    if (name.empty() || slash == std::string::npos) {
        report.Report("Can't add object: Invalid class identifier (or empty name) - seems to be garbage",
                      hReportWarning);
        return nullptr;
    }
    std::string className = block.Value.substr(0, slash);
    std::string type = block.Value.substr(slash + 1);
    iElement* element = project ? project->FindElement(name) : nullptr;
    if (!element) {
        std::unique_ptr<iElement> made = iFactory::Get().Produce(className, type, name);
        if (!made) {
            report.Report(qvrFormat("Cannot add object \"%s\": Unknown type %s/%s", name.c_str(),
                                    className.c_str(), type.c_str()),
                          hReportError);
            return nullptr;
        }
        element = project ? project->Adopt(std::move(made)) : made.release();
    } else if (!isOfType(*element, className, type)) {
        report.Report(qvrFormat("Cannot add object \"%s\" (type %s/%s): Object defined twice (type %s/%s)",
                                name.c_str(), className.c_str(), type.c_str(),
                                element->GetElementClass().c_str(), element->GetElementType().c_str()),
                      hReportError);
        return nullptr;
    }
    LoadData(*element, block, report);
    return element;
}

iElement* iElementData::GetByDescriptor(const std::string& text, hReport& report, iProject* project) {
    if (!project) {
        report.Report("Object has no parent", hReportError);
        return nullptr;
    }
    std::string className, type, name;
    if (!qvrTreeText::ToDescriptor(text, className, type, name)) {
        report.Report(qvrFormatMessage("Bad object descriptor \"%1\"", {text}), hReportError);
        return nullptr;
    }
    iElement* element = project->FindElement(name);
    if (!element) {
        element = produceInto(*project, className, type, name);
        if (!element)
            report.Report(qvrFormat("Failed to create \"%s\": Unknown object type %s/%s", name.c_str(),
                                    className.c_str(), type.c_str()),
                          hReportError);
        return element;
    }
    if (!isOfType(*element, className, type)) {
        report.Report(
            qvrFormat("Failed to create \"%s\": Object with this name already exists, but has type %s/%s, "
                      "not %s/%s as expected",
                      name.c_str(), element->GetElementClass().c_str(), element->GetElementType().c_str(),
                      className.c_str(), type.c_str()),
            hReportError);
        return nullptr;
    }
    return element;
}

bool iElementData::LoadByName(iElement& element, const qvrCTreeData& parentBlock, hReport& report) {
    const qvrCTreeData* block = parentBlock.Find(element.GetName());
    if (!block) {
        report.Report("No information on this object found", hReportError);
        return false;
    }
    if (block->Value != element.GetElementClass() + "/" + element.GetElementType()) {
        report.Report("Invalid object type.", hReportError);
        return false;
    }
    LoadData(element, *block, report);
    return true;
}
