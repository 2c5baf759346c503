#pragma once
// The registry of readable image formats, one format object per file
// extension. Every format can tell a file's picture size without decoding it
// and load the picture, or a rectangle of it, as an EImageData; a format that
// can also write says so by overriding doSave. A format is a static singleton
// in its own source file: defining that object is its registration, and the
// one made last is found first.
//
// Loads and saves report failures in an EImageFileResult and never throw:
// file errors are thrown inside a format and caught by the static operations
// here. The formats register during static construction; after that the
// registry is read-only and safe from any thread, and the operations keep no
// state of their own.

#include "foundation/qvrGeometry.h"
#include "imaging/EBinaryFile.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

class EImageData;

// What a file tells of its picture without being decoded.
struct EImageFileInfo {
    CSize size;
};

// The numbers of the failures that loads and saves report.
enum class EImageFileError : long {
    None = 0,
    UnknownFormat = 1,
    OutOfMemory = 2,
    BadFunctionCall = 3,
    ReadError = 11
};

// The outcome of a failed load, save or query: a text for people and its number.
struct EImageFileResult {
    std::string text;
    EImageFileError number = EImageFileError::None;

    // Sets one of the fixed failures with its text.
    void Set(EImageFileError error);
    void Set(EImageFileError error, std::string reason);
};

class EImageFileFormat {
public:
    virtual ~EImageFileFormat();
    EImageFileFormat(const EImageFileFormat&) = delete;
    EImageFileFormat& operator=(const EImageFileFormat&) = delete;

    // The name shown to people.
    const std::string& GetName() const { return name; }
    // The extension, without a point.
    const std::string& GetExtension() const { return extension; }
    // Whether a picture of this format gets a solid alpha channel whatever the file holds.
    virtual bool IgnoreFileAlpha() const { return false; }

    // The format registered for an extension (without point, any case), or null.
    static EImageFileFormat* Find(std::string_view extension);
    // The format of a file, by the extension of its name, or null.
    static EImageFileFormat* FindForFile(const std::string& fileName);

    // Loads a file by the format of its extension. A rectangle of all zeros
    // asks for the whole picture; any other is clipped to the picture, and
    // the picture returned is that part alone.
    static std::unique_ptr<EImageData> Load(const std::string& fileName, const CRect& rect,
                                            EImageFileResult& result);
    // Writes the picture in the format of the file's extension.
    static bool Save(const EImageData& picture, const std::string& fileName, EImageFileResult& result);
    static bool QueryFileInfo(const std::string& fileName, EImageFileInfo& info, EImageFileResult& result);

    // The part of a picture of the size that a load rectangle asks for.
    static CRect ClipLoadRect(const CRect& rect, CSize size);

protected:
    // Links the format in at the head of the registry; it stays there until destroyed.
    EImageFileFormat(std::string formatName, std::string formatExtension);

    // The file is open for reading and positioned at its start.
    virtual std::unique_ptr<EImageData> doLoad(EBinaryFile& file, const CRect& rect,
                                               EImageFileResult& result) = 0;
    // The file is open for writing. Formats that can't write keep this one, which refuses.
    virtual bool doSave(const EImageData& picture, EBinaryFile& file, EImageFileResult& result);
    virtual bool doQueryFileInfo(EBinaryFile& file, EImageFileInfo& info, EImageFileResult& result) = 0;

private:
    using FileOperation = std::function<bool(EImageFileFormat& format, EBinaryFile& file)>;
    // Opens the file of the name for the format of its extension and runs the
    // operation on it; every exception becomes the result. False on failure.
    static bool RunOnFile(const std::string& fileName, EBinaryFile::Mode mode, EImageFileResult& result,
                          const FileOperation& operation);

    std::string name;
    std::string extension;
    EImageFileFormat* next = nullptr;
};
