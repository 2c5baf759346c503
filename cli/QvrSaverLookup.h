#pragma once
// What the commands that render share before the render: loading a project
// into the session's document with its report on standard error, and finding
// a saver in it.

#include <string>

class QvrSession;
class iSaver;

namespace QvrSaverLookup {
// Loads the project; false, with the reason in `problem`, when it could not be loaded.
bool LoadProject(QvrSession& session, const std::string& path, std::string& problem);
// The saver of the name, or with an empty name the project's only saver;
// null, with the reason in `problem`, when there is none.
iSaver* FindSaver(const std::string& name, std::string& problem);
// The saver of the name and class (the element type, without regard to case).
iSaver* FindSaver(const std::string& name, const std::string& saverClass, std::string& problem);
} // namespace QvrSaverLookup
