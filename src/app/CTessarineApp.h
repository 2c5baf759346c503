#pragma once
// The application without its windows: starts the components, reads the
// preference files, opens what the command line names, runs the program's
// loop inside the crash catcher and ends everything in reverse. The desktop
// program and the command-line program both stand on it. Main thread only.

#include "app/CCommandLineInfo.h"
#include "app/CTessarineDoc.h"

#include <functional>

class EInitializerStatus;

class CTessarineApp {
public:
    // Command-line runs read the preferences but never write them back: many
    // may share one program directory.
    enum class Preferences { ReadAndWrite, ReadOnly };

    explicit CTessarineApp(Preferences preferences) : PreferenceMode(preferences) {}

    bool InitInstance(const CCommandLineInfo& commandLine, EInitializerStatus& status);
    int Run(const std::function<int()>& loop);
    int ExitInstance();

    CTessarineDoc& GetDocument() { return Document; }

    static std::string GlobalPreferencesPath();
    static std::string UserPreferencesPath();
    // Writes both preference files now; ExitInstance does it in ReadAndWrite mode.
    static void WritePreferences();

private:
    void readPreferences();
    bool processShellCommand(const CCommandLineInfo& commandLine);

    Preferences PreferenceMode;
    bool PreferencesRead = false;
    bool Started = false;
    CTessarineDoc Document;
};
