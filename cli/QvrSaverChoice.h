#pragma once
// Picks the saver a command works on in the loaded project: the one that
// --saver names, or, without a name, the project's only saver of the kind.

#include "model/iElement.h"
#include "model/iProject.h"

#include <cstdio>
#include <string>

// Null, with the complaint printed, when there is no such saver. `kind` is
// what people call a Saver ("saver", "projector array saver").
template <class Saver>
Saver* QvrFindSaver(const char* command, const std::string& project, const std::string& name,
                    const char* kind) {
    iElement* found = nullptr;
    if (!name.empty()) {
        found = iProject::GetStandard().FindElement(name);
        if (!found) {
            std::fprintf(stderr, "qvr %s: %s: there is no element \"%s\"\n", command, project.c_str(),
                         name.c_str());
            return nullptr;
        }
    } else {
        int savers = 0;
        for (iElement* element : iProject::GetStandard().GetElements()) {
            if (!dynamic_cast<Saver*>(element)) continue;
            found = element;
            ++savers;
        }
        if (savers != 1) {
            std::fprintf(stderr, "qvr %s: %s: the project holds %d %ss; name one with --saver\n", command,
                         project.c_str(), savers, kind);
            return nullptr;
        }
    }
    auto* saver = dynamic_cast<Saver*>(found);
    if (!saver)
        std::fprintf(stderr, "qvr %s: %s: \"%s\" is not a %s\n", command, project.c_str(),
                     found->GetName().c_str(), kind);
    return saver;
}
