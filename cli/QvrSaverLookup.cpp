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

iSaver* QvrSaverLookup::FindSaver(const std::string& name, const std::string& saverClass,
                                  std::string& problem) {
    iSaver* saver = FindSaver(name, problem);
    if (!saver || qvrEqualNoCase(saver->GetElementType(), saverClass)) return saver;
    problem = qvrFormat("the saver \"%s\" is of class \"%s\", not \"%s\"", name.c_str(),
                        saver->GetElementType().c_str(), saverClass.c_str());
    return nullptr;
}
