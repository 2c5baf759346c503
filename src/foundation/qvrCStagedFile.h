#pragma once
// A file written under a temporary name in the folder of its final name and
// renamed to that name only once it is complete, so that a full disk, a
// failed write or a killed process never leaves a partial file under the
// final name; the file that stood there before stays whole until the rename.
// A name that is a link to a file keeps its link: the file it points to is
// replaced. A name of something that is no file (a device, a pipe) is written
// directly, since it can't be replaced. Failures throw qvrCFileException with
// the system's error code. One object belongs to one thread.

#include <cstdio>
#include <string>

class qvrCStagedFile {
public:
    // Creates the temporary file beside `finalPath`.
    explicit qvrCStagedFile(std::string finalPath);
    // Without Commit the temporary file is closed and removed.
    ~qvrCStagedFile();
    qvrCStagedFile(const qvrCStagedFile&) = delete;
    qvrCStagedFile& operator=(const qvrCStagedFile&) = delete;

    std::FILE* Stream() const { return File; }
    const std::string& GetFinalName() const { return FinalPath; }
    // Flushes and closes the file and renames it to its final name.
    void Commit();

private:
    void discard();

    std::string FinalPath;     // the name given, for messages
    std::string ReplacedPath;  // the file that the rename replaces
    std::string TemporaryPath; // empty when the final name is written directly
    std::FILE* File = nullptr;
};
