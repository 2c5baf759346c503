#include "app/CTessarineApp.h"

#include "app/AppText.h"
#include "app/CCrashCatcher.h"
#include "app/EInitializer.h"
#include "foundation/EEnvironment.h"
#include "foundation/iDataBase.h"
#include "foundation/qvrString.h"

#include <filesystem>

std::string CTessarineApp::GlobalPreferencesPath() {
    return EEnvironment::PathPlusFile(EEnvironment::Get().CurrentDir, "Preferences.tsp");
}

std::string CTessarineApp::UserPreferencesPath() {
    const EEnvironment& environment = EEnvironment::Get();
    return EEnvironment::PathPlusFile(environment.CurrentDir,
                                      qvrFormat("Preferences(%s).tsp", environment.UserName.c_str()));
}

bool CTessarineApp::InitInstance(const CCommandLineInfo& commandLine, EInitializerStatus& status) {
    status.SetStatus(EStringTable::Load(AppText::SettingUpEnvironment), 1);
    if (!EInitializer::DoInitInstance(status)) return false;
    Started = true;
    status.SetStatus(EStringTable::Load(AppText::InitializingSubsystems), 1);
    if (commandLine.RunEmbedded || commandLine.RunAutomated) return true;
    CTessarineDoc::RestoreCurrentDirectory();
    readPreferences();
    return processShellCommand(commandLine);
}

void CTessarineApp::readPreferences() {
    iDataBaseSection::ResetAll();
    // A preference file that doesn't exist yet leaves the defaults, with no word to the user.
    std::error_code ignored;
    iDataBase database;
    if (std::filesystem::exists(GlobalPreferencesPath(), ignored))
        database.Load(GlobalPreferencesPath(), DBMaskGlobalPrefs, 2, nullptr);
    if (std::filesystem::exists(UserPreferencesPath(), ignored))
        database.Load(UserPreferencesPath(), DBMaskUserPrefs, 0, nullptr);
    PreferencesRead = true;
}

void CTessarineApp::WritePreferences() {
    iDataBase database;
    database.Save(GlobalPreferencesPath(), DBMaskGlobalPrefs, 2, nullptr);
    database.Save(UserPreferencesPath(), DBMaskUserPrefs, 0, nullptr);
}

bool CTessarineApp::processShellCommand(const CCommandLineInfo& commandLine) {
    if (commandLine.ShellCommand == CCommandLineInfo::Command::FileOpen)
        return Document.OnOpenDocument(commandLine.FileName);
    return Document.OnNewDocument();
}

int CTessarineApp::Run(const std::function<int()>& loop) {
    return CCrashCatcher::Run(loop);
}

int CTessarineApp::ExitInstance() {
    iProject::GetStandard().Clear();
    if (PreferencesRead && PreferenceMode == Preferences::ReadAndWrite) WritePreferences();
    if (Started) {
        EInitializerStatus silent;
        EInitializer::DoExitInstance(silent);
        Started = false;
    }
    return 0;
}
