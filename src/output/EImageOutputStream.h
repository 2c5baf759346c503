#pragma once
// Output streams: the places where a saver's finished frames go. A stream class
// (a numbered BMP sequence, an AVI movie, ...) is one static object that
// registers itself by name while the program loads; it keeps no per-file state.
// A stream's parameters live in an EImageOutputSetup, stored in projects as one
// line of text. Opening a stream gives an EImageOutputWriter, which the saver
// reaches through an EImageOutputHandle (output/EImageOutputHandle.h).
//
// Failures come back as a flag together with an EImageOutputError record; file
// calls may throw inside an operation and are caught there. The registry and
// the stream objects are read-only after start-up and safe from any thread.

#include "foundation/qvrGeometry.h"

#include <memory>
#include <string>
#include <string_view>

class EImageData;
class EImageOutputStream;

// Why a file operation failed, numbered as file exceptions number their causes.
enum EFileErrorCause : long {
    FileErrorNone = 0,
    FileErrorGeneric = 1,
    FileErrorNotFound = 2,
    FileErrorBadPath = 3,
    FileErrorTooManyOpenFiles = 4,
    FileErrorAccessDenied = 5,
    FileErrorInvalidFile = 6,
    FileErrorRemoveCurrentDir = 7,
    FileErrorDirectoryFull = 8,
    FileErrorBadSeek = 9,
    FileErrorHardIO = 10,
    FileErrorSharingViolation = 11,
    FileErrorLockViolation = 12,
    FileErrorDiskFull = 13,
    FileErrorEndOfFile = 14,
};

// The program's own error numbers for failures that no system call reported.
// They sit in the record's operating-system error beside the errno values of
// real file calls.
enum EOutputErrorCode : long {
    OutputErrorInvalidHandle = 6,
    OutputErrorOutOfMemory = 8,
    OutputErrorBadFormat = 11,
    OutputErrorCannotMake = 82,
    OutputErrorInvalidName = 123,
};

// The record that a failing output operation fills: a cause, an
// operating-system error and a text, mostly the file name.
struct EImageOutputError {
    long Cause = FileErrorNone;
    long OsError = 0;
    std::string Text;

    void Clear();
    void Set(long cause, long osError, std::string text);
    // Sets the error with the cause that follows from it.
    void SetOsError(long osError, std::string text);
    // The cause that an operating-system error (errno, or one of the codes above) stands for.
    static long CauseOfOsError(long osError);
    // The text for people: the record's text and, for an error that a system
    // call reported, the system's reason ("x.bmp: No space left on device").
    std::string Describe() const;
};

// The abstract parameter set of a stream, made by the stream's CreateSetup.
// Not safe from several threads; a run reads it without changing it.
class EImageOutputSetup {
public:
    virtual ~EImageOutputSetup() = default;

    // Whether the values can be used.
    virtual bool IsValid() const = 0;
    // Makes the values usable.
    virtual void Repair() = 0;
    // Sets the defaults.
    virtual void Reset() = 0;
    // The modal dialog of the setup, through EImageOutputSetupDialog; clears
    // `errorText` first. False when cancelled, or when the dialog could not be
    // shown, with the reason in `errorText` then.
    virtual bool Edit(void* parentWindow, std::string& errorText);
    // The one-line text kept in projects; empty by default.
    virtual std::string GetSetupString() const;
    // Parses the one-line text; the default takes any text and returns true.
    virtual bool SetSetupString(std::string_view text);
    // A line for the user interface, "(no setup required)" by default.
    virtual std::string GetDescription() const;
};

// The dialogs behind EImageOutputSetup::Edit. The desktop program installs its
// own; the headless one shows nothing and answers OK, keeping the values.
// Install before other threads start; calls come from the main thread.
class EImageOutputSetupDialog {
public:
    virtual ~EImageOutputSetupDialog() = default;
    // Shows the form of the setup; false when the user cancels.
    virtual bool Edit(EImageOutputSetup& setup, void* parentWindow);

    static EImageOutputSetupDialog& Get();
    // Installs a dialog (null restores the headless one); the caller keeps ownership.
    static void Set(EImageOutputSetupDialog* dialog);
};

// One open output of a stream, as its Open returns it. Owned by the handle
// that opened it. Sequence writers may write from several threads at once,
// each frame into a file of its own; a movie writer is used by one thread.
class EImageOutputWriter {
public:
    // The setup, if any, stays the caller's and must outlive the writer.
    EImageOutputWriter(const EImageOutputStream& streamClass, const EImageOutputSetup* setupUsed)
        : stream(&streamClass), setup(setupUsed) {}
    virtual ~EImageOutputWriter() = default;
    EImageOutputWriter(const EImageOutputWriter&) = delete;
    EImageOutputWriter& operator=(const EImageOutputWriter&) = delete;

    virtual bool Write(const EImageData& image, long frameIndex, EImageOutputError& error) = 0;
    virtual bool Close(EImageOutputError& error) = 0;

protected:
    const EImageOutputStream* stream;
    const EImageOutputSetup* setup;
};

// Whether the test file procedure creates the directory of the name first.
enum class EOutputDirectory : bool { AsIs = false, Create = true };

// The abstract stream class and the registry of all of them.
class EImageOutputStream {
public:
    EImageOutputStream(const EImageOutputStream&) = delete;
    EImageOutputStream& operator=(const EImageOutputStream&) = delete;
    virtual ~EImageOutputStream() = default;

    // The display name, which projects store as the stream's key, such as "BMP Image stream".
    const char* GetName() const { return name; }
    // The file extension without the dot, such as "bmp".
    const char* GetExtension() const { return extension; }

    virtual bool IsMovie() const = 0;
    virtual bool IsSequence() const = 0;
    // Opens an output for the file name and frame size; the setup may be
    // absent and, when given, must outlive the writer. `rate` / `rateStep` is
    // the frame rate ("VideoFPS" / "VideoRes"), which sequences ignore. Null on
    // failure, with `error` filled.
    virtual std::unique_ptr<EImageOutputWriter> Open(const std::string& fileName, CSize frameSize,
                                                     EImageOutputError& error, const EImageOutputSetup* setup,
                                                     unsigned long rate, unsigned long rateStep) const = 0;
    virtual bool UsesSetup() const { return false; }
    // A new setup with its defaults, or null for a stream without one.
    virtual std::unique_ptr<EImageOutputSetup> CreateSetup() const { return nullptr; }

    // The name with this stream's extension: what follows the last dot that no
    // separator follows is replaced, otherwise "." and the extension are
    // appended. An empty name stays empty.
    std::string ForceExtension(const std::string& fileName) const;

    // The newest registered stream, which is the default wherever none is named.
    static const EImageOutputStream* GetFirst();
    // The next older stream of the registry, or null.
    const EImageOutputStream* GetNext() const { return next; }
    // The first stream whose name matches without regard to case, or null.
    static const EImageOutputStream* Find(std::string_view streamName);
    static long GetCount();

    // Checks that a file of the name can be written, without changing one that
    // exists: opens it for writing, or creates it and removes it again. With
    // EOutputDirectory::Create the name's directory is made first. False on
    // failure, with `error` filled when given.
    static bool TestFile(const std::string& fileName, EOutputDirectory directory, EImageOutputError* error);

protected:
    // Links the stream at the head of the registry. Both texts are static.
    EImageOutputStream(const char* streamName, const char* fileExtension);
    // A stream kept out of the registry, for the program's own intermediate files.
    struct Unlisted {};
    EImageOutputStream(const char* streamName, const char* fileExtension, Unlisted);

private:
    const char* name;
    const char* extension;
    const EImageOutputStream* next;
};

// A stream whose one file holds all frames.
class EImageOutputMovie : public EImageOutputStream {
public:
    bool IsMovie() const override { return true; }
    bool UsesSetup() const override { return true; }

protected:
    using EImageOutputStream::EImageOutputStream;
};
