#pragma once
// A headless run of the system for one command: starts the components, reads
// the preferences (never writing them back) and ends everything in reverse
// when it goes out of scope. Paths given on the command line must be made
// absolute with Absolute() before the session starts, since the session moves
// the working directory to the program directory.

#include "app/CTessarineApp.h"

#include <string>

class QvrSession {
public:
    QvrSession();
    ~QvrSession();
    QvrSession(const QvrSession&) = delete;
    QvrSession& operator=(const QvrSession&) = delete;

    // False when the components could not start; the command then exits with 2.
    bool Started() const { return Ok; }
    CTessarineApp& GetApp() { return App; }

    static std::string Absolute(const std::string& path);

private:
    CTessarineApp App{CTessarineApp::Preferences::ReadOnly};
    bool Ok = false;
};
