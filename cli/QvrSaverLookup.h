#pragma once
// What the commands that render share before the render: loading a project
// into the session's document with its report on standard error, and finding
// a saver in it.

#include "foundation/qvrString.h"
#include "model/iProject.h"
#include "output/iSaver.h"

#include <string>

class QvrSession;

namespace QvrSaverLookup {
// Loads the project; false, with the reason in `problem`, when it could not be loaded.
bool LoadProject(QvrSession& session, const std::string& path, std::string& problem);
// The saver of the kind under the name, or with an empty name the project's
// only saver of the kind; null, with the reason in `problem`, when there is
// none. `kind` is what people call a Saver ("saver", "projector array saver").
template <class Saver> Saver* FindSaverOf(const std::string& name, const char* kind, std::string& problem) {
    iProject& project = iProject::GetStandard();
    if (!name.empty()) {
        iElement* element = project.FindElement(name);
        auto* saver = dynamic_cast<Saver*>(element);
        if (!element)
            problem = qvrFormat("there is no element \"%s\"", name.c_str());
        else if (!saver)
            problem = qvrFormat("\"%s\" is not a %s", name.c_str(), kind);
        return saver;
    }
    Saver* found = nullptr;
    int savers = 0;
    for (iElement* element : project.GetElements())
        if (auto* saver = dynamic_cast<Saver*>(element)) {
            found = saver;
            ++savers;
        }
    if (savers == 1) return found;
    problem = qvrFormat("the project holds %d %ss; name one with --saver", savers, kind);
    return nullptr;
}
inline iSaver* FindSaver(const std::string& name, std::string& problem) {
    return FindSaverOf<iSaver>(name, "saver", problem);
}
// The saver of the name and class (the element type, without regard to case).
iSaver* FindSaver(const std::string& name, const std::string& saverClass, std::string& problem);
} // namespace QvrSaverLookup
