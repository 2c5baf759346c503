#pragma once
// Line-oriented text files: the two operations the tree reader and writer need
// (read a line, write a text), on disk or in memory. Disk files throw
// qvrCFileException on failure; callers catch it where their operation starts.
// A disk file opened for writing takes its name only when Close succeeds (see
// qvrCStagedFile), so that a failed or cut write leaves the old file whole.
// One object belongs to one thread.

#include <cstdio>
#include <memory>

class qvrCStagedFile;
#include <string>
#include <string_view>

class qvrCTextFile {
public:
    virtual ~qvrCTextFile() = default;
    // Reads the next line without its line end ("\n" or "\r\n"); false at end of file.
    virtual bool ReadLine(std::string& line) = 0;
    virtual void WriteText(std::string_view text) = 0;
    // The name that reports give for the file.
    virtual std::string GetName() const = 0;
};

class qvrCDiskTextFile : public qvrCTextFile {
public:
    enum class Mode { Read, Write, Append };
    // Opens the file; throws qvrCFileException when it can't.
    qvrCDiskTextFile(std::string path, Mode mode);
    ~qvrCDiskTextFile() override;

    bool ReadLine(std::string& line) override;
    void WriteText(std::string_view text) override;
    std::string GetName() const override { return Path; }
    // Flushes and closes; throws when the data could not be written.
    void Close();

private:
    bool fillBuffer();

    std::string Path;
    std::FILE* File = nullptr;
    std::unique_ptr<qvrCStagedFile> Staged; // the file being written in Write mode
    std::unique_ptr<char[]> Buffer;
    size_t BufferFill = 0;
    size_t BufferPos = 0;
    bool AtEnd = false;
};

class qvrCMemoryTextFile : public qvrCTextFile {
public:
    explicit qvrCMemoryTextFile(std::string text = {}, std::string name = "<memory>");

    bool ReadLine(std::string& line) override;
    void WriteText(std::string_view text) override { Text.append(text); }
    std::string GetName() const override { return Name; }
    const std::string& GetText() const { return Text; }

private:
    std::string Text;
    std::string Name;
    size_t ReadPos = 0;
};
