#pragma once
// A buffered binary file with seek, the file access of the image formats.
// Every failure throws qvrCFileException, a read that runs past the end of
// the file included; the format's caller catches it where the load or save
// began. One object belongs to one thread.

#include <cstdint>
#include <cstdio>
#include <string>

class EBinaryFile {
public:
    enum class Mode { Read, Write };

    // Opens the file; Write creates or truncates it.
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
    // Flushes and closes; throws when that fails.
    void Close();

private:
    [[noreturn]] void fail(int errorCode) const;

    std::string path;
    std::FILE* file = nullptr;
};
