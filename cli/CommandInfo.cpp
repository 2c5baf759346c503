// qvr info PROJECT [--json]: the load report and the elements of a project file.

#include "QvrCommand.h"
#include "QvrJson.h"
#include "QvrSession.h"

#include "foundation/hReport.h"
#include "model/iElement.h"
#include "model/iProject.h"

#include <cstdio>

namespace {

constexpr const char* Help = "usage: qvr info PROJECT [--json]\n\n"
                             "Loads a project file and prints its load report (level, context path, text)\n"
                             "and its elements: name, class/type, parents in order, values with their key\n"
                             "counts. --json prints one JSON object instead. Exit 2 when the load fails.\n";

std::vector<std::string> parentNames(const iElement& element) {
    std::vector<std::string> names;
    for (iElementLink* link = element.GetFirstParentLink(); link; link = link->GetNextOfChild())
        names.push_back(link->GetParent()->GetName());
    return names;
}

void printText(const hReportRoot& report, const iProject& project) {
    for (const hReportEntry& entry : report.GetEntries())
        std::printf("report %d %s: %s\n", entry.Level, entry.Path.c_str(), entry.Text.c_str());
    std::printf("frameLength %ld\n", project.GetFrameLength());
    for (iElement* element : project.GetElements()) {
        std::printf("element %s (%s/%s)\n", element->GetName().c_str(), element->GetElementClass().c_str(),
                    element->GetElementType().c_str());
        for (const std::string& parent : parentNames(*element))
            std::printf("  parent %s\n", parent.c_str());
        for (iActiveValue* value = element->GetFirstValue(); value; value = value->GetNextValue())
            std::printf("  value %s: %ld keys\n", value->GetName().c_str(), value->GetKeyCount());
    }
}

void printJson(const hReportRoot& report, const iProject& project) {
    QvrJson json;
    json.BeginObject().Key("report").BeginArray();
    for (const hReportEntry& entry : report.GetEntries())
        json.BeginObject()
            .Key("level")
            .Number(entry.Level)
            .Key("path")
            .String(entry.Path)
            .Key("text")
            .String(entry.Text)
            .EndObject();
    json.EndArray().Key("elements").BeginArray();
    for (iElement* element : project.GetElements()) {
        json.BeginObject().Key("name").String(element->GetName());
        json.Key("class").String(element->GetElementClass()).Key("type").String(element->GetElementType());
        json.Key("parents").BeginArray();
        for (const std::string& parent : parentNames(*element))
            json.String(parent);
        json.EndArray().Key("values").BeginObject();
        for (iActiveValue* value = element->GetFirstValue(); value; value = value->GetNextValue())
            json.Key(value->GetName()).Number(value->GetKeyCount());
        json.EndObject().EndObject();
    }
    json.EndArray().Key("frameLength").Number(project.GetFrameLength()).EndObject();
    std::printf("%s\n", json.Text().c_str());
}

int runInfo(const QvrCommand::Arguments& arguments) {
    std::string path;
    bool asJson = false;
    for (const std::string& argument : arguments) {
        if (argument == "--json")
            asJson = true;
        else if (path.empty() && argument.rfind("--", 0) != 0)
            path = QvrSession::Absolute(argument);
        else {
            std::fprintf(stderr, "qvr info: unexpected argument \"%s\"\n%s", argument.c_str(), Help);
            return ExitUsage;
        }
    }
    if (path.empty()) {
        std::fputs(Help, stderr);
        return ExitUsage;
    }
    QvrSession session;
    if (!session.Started()) return ExitUsage;
    hReportRoot report("Loading");
    bool loaded = session.GetApp().GetDocument().OnOpenDocument(path, &report);
    iProject& project = iProject::GetStandard();
    if (asJson)
        printJson(report, project);
    else
        printText(report, project);
    if (!loaded) {
        std::fprintf(stderr, "qvr info: %s: the project could not be loaded\n", path.c_str());
        return ExitUsage;
    }
    return ExitSuccess;
}

QvrCommand info("info", "print a project's load report and elements", Help, runInfo);

} // namespace
