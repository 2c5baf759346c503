#pragma once
// The document: connects new, open, save, close and autosave to the standard
// project and to the database files. After every file operation the working
// directory returns to the program directory. Main thread only.

#include "model/iProject.h"

#include <string>

class hReport;

class CTessarineDoc : public iProjectDocument {
public:
    CTessarineDoc() = default;
    ~CTessarineDoc() override;

    bool OnNewDocument();
    // Loads a project file; with a report, problems go there and nothing is asked.
    bool OnOpenDocument(const std::string& path, hReport* report = nullptr);
    bool OnSaveDocument(const std::string& path);
    void OnCloseDocument();
    void AutoSave(const std::string& path) override;

    void SetModifiedFlag(bool modified) override { Modified = modified; }
    bool IsModified() const { return Modified; }
    const std::string& GetPathName() const { return PathName; }

    // Returns the working directory to the program directory.
    static void RestoreCurrentDirectory();

private:
    bool Modified = false;
    std::string PathName;
};
