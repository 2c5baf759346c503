#include "QvrSaverLookup.h"

#include "QvrSession.h"

#include "foundation/hReport.h"
#include "foundation/qvrString.h"
#include "model/iProject.h"
#include "output/iSaver.h"

#include <cstdio>

bool QvrSaverLookup::LoadProject(QvrSession& session, const std::string& path, std::string& problem) {
    hReportRoot report("Loading");
    const bool loaded = session.GetApp().GetDocument().OnOpenDocument(path, &report);
    for (const hReportEntry& entry : report.GetEntries())
        std::fprintf(stderr, "report %d %s: %s\n", entry.Level, entry.Path.c_str(), entry.Text.c_str());
    if (!loaded) problem = qvrFormat("%s: the project could not be loaded", path.c_str());
    return loaded;
}

iSaver* QvrSaverLookup::FindSaver(const std::string& name, std::string& problem) {
    iProject& project = iProject::GetStandard();
    if (!name.empty()) {
        iElement* element = project.FindElement(name);
        auto* saver = dynamic_cast<iSaver*>(element);
        if (!element)
            problem = qvrFormat("there is no element \"%s\"", name.c_str());
        else if (!saver)
            problem = qvrFormat("\"%s\" is not a saver", name.c_str());
        return saver;
    }
    iSaver* found = nullptr;
    int savers = 0;
    for (iElement* element : project.GetElements())
        if (auto* saver = dynamic_cast<iSaver*>(element)) {
            found = saver;
            ++savers;
        }
    if (savers == 1) return found;
    problem = qvrFormat("the project holds %d savers; name one with --saver", savers);
    return nullptr;
}

iSaver* QvrSaverLookup::FindSaver(const std::string& name, const std::string& saverClass,
                                  std::string& problem) {
    iSaver* saver = FindSaver(name, problem);
    if (!saver || qvrEqualNoCase(saver->GetElementType(), saverClass)) return saver;
    problem = qvrFormat("the saver \"%s\" is of class \"%s\", not \"%s\"", name.c_str(),
                        saver->GetElementType().c_str(), saverClass.c_str());
    return nullptr;
}
