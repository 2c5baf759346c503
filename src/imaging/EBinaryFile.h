#pragma once
// A buffered binary file with seek, the file access of the image formats. A
// file opened for writing is written under a temporary name beside its own
// and takes its name only when Close succeeds: a file that isn't closed, a
// full disk or a killed process leave no partial file under the name.
// Every failure throws qvrCFileException, a read that runs past the end of
// the file included; the format's caller catches it where the load or save
// began. One object belongs to one thread.

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

class qvrCStagedFile;

class EBinaryFile {
public:
    enum class Mode { Read, Write };

    // Opens the file; Write makes a new one that replaces the old on Close.
    EBinaryFile(std::string path, Mode mode);
    ~EBinaryFile();
    EBinaryFile(const EBinaryFile&) = delete;
    EBinaryFile& operator=(const EBinaryFile&) = delete;

    const std::string& GetName() const { return path; }
    // Reads exactly `bytes` bytes.
    void Read(void* buffer, size_t bytes);
    void Write(const void* buffer, size_t bytes);
    // Moves to a position counted from the start of the file.
    void Seek(std::int64_t position);
    // Moves forward from the current position.
    void Skip(std::int64_t bytes);
    std::int64_t GetPosition();
    std::int64_t GetLength();
    // Flushes and closes, and gives a written file its name; throws when that fails.
    void Close();

private:
    [[noreturn]] void fail(int errorCode) const;

    std::string path;
    std::FILE* file = nullptr;
    std::unique_ptr<qvrCStagedFile> staged; // the file being written, null when reading
};
