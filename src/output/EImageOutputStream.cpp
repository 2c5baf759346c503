#include "output/EImageOutputStream.h"

#include "foundation/EStringTable.h"
#include "foundation/qvrCException.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr EStringId textNoSetupRequired = 45100;

// The registry: a list linked through the streams, newest first. Both are
// constant-initialised, so streams may register during static construction.
const EImageOutputStream* firstStream = nullptr;
long streamCount = 0;

EImageOutputSetupDialog headlessDialog;
EImageOutputSetupDialog* installedDialog = nullptr;

// The cause of each error number that has one other than FileErrorGeneric.
struct CauseOfError {
    long osError;
    long cause;
};

constexpr CauseOfError causesOfErrors[] = {
    {0, FileErrorNone},
    {ENOENT, FileErrorNotFound},
    {OutputErrorInvalidHandle, FileErrorNotFound},
    {EPERM, FileErrorAccessDenied},
    {EACCES, FileErrorAccessDenied},
    {EROFS, FileErrorAccessDenied},
    {EEXIST, FileErrorAccessDenied},
    {EISDIR, FileErrorAccessDenied},
    {OutputErrorCannotMake, FileErrorAccessDenied},
    {ENOTDIR, FileErrorBadPath},
    {ENAMETOOLONG, FileErrorBadPath},
    {ELOOP, FileErrorBadPath},
    {OutputErrorInvalidName, FileErrorBadPath},
    {EMFILE, FileErrorTooManyOpenFiles},
    {ENFILE, FileErrorTooManyOpenFiles},
    {EBADF, FileErrorInvalidFile},
    {EIO, FileErrorHardIO},
    {ESPIPE, FileErrorBadSeek},
    {ETXTBSY, FileErrorSharingViolation},
    {ENOLCK, FileErrorLockViolation},
    {ENOSPC, FileErrorDiskFull},
    {EDQUOT, FileErrorDiskFull},
    {EFBIG, FileErrorDiskFull},
};

// Opens for writing; -1 with errno set on failure.
int openForWriting(const std::string& fileName, int extraFlags) {
    return ::open(fileName.c_str(), O_WRONLY | O_CLOEXEC | extraFlags, 0666);
}

bool createDirectoryOf(const std::string& fileName, EImageOutputError& error) {
    const std::filesystem::path directory = std::filesystem::path(fileName).parent_path();
    if (directory.empty()) return true;
    std::error_code code;
    std::filesystem::create_directories(directory, code);
    if (!code) return true;
    error.SetOsError(code.value(), directory.string());
    return false;
}

} // namespace

void EImageOutputError::Clear() {
    Set(FileErrorNone, 0, {});
}

void EImageOutputError::Set(long cause, long osError, std::string text) {
    Cause = cause;
    OsError = osError;
    Text = std::move(text);
}

void EImageOutputError::SetOsError(long osError, std::string text) {
    Set(CauseOfOsError(osError), osError, std::move(text));
}

std::string EImageOutputError::Describe() const {
    switch (OsError) {
    case 0:
    case OutputErrorInvalidHandle:
    case OutputErrorOutOfMemory:
    case OutputErrorBadFormat:
    case OutputErrorCannotMake:
    case OutputErrorInvalidName:
        return Text;
    }
    return Text + ": " + qvrErrorText::FromCode(OsError);
}

long EImageOutputError::CauseOfOsError(long osError) {
    for (const CauseOfError& entry : causesOfErrors)
        if (entry.osError == osError) return entry.cause;
    return FileErrorGeneric;
}

bool EImageOutputSetup::Edit(void* parentWindow, std::string& errorText) {
    errorText.clear();
    return EImageOutputSetupDialog::Get().Edit(*this, parentWindow);
}

std::string EImageOutputSetup::GetSetupString() const {
    return {};
}

bool EImageOutputSetup::SetSetupString(std::string_view) {
    return true;
}

std::string EImageOutputSetup::GetDescription() const {
    return EStringTable::Load(textNoSetupRequired);
}

bool EImageOutputSetupDialog::Edit(EImageOutputSetup&, void*) {
    return true;
}

EImageOutputSetupDialog& EImageOutputSetupDialog::Get() {
    return installedDialog ? *installedDialog : headlessDialog;
}

void EImageOutputSetupDialog::Set(EImageOutputSetupDialog* dialog) {
    installedDialog = dialog;
}

EImageOutputStream::EImageOutputStream(const char* streamName, const char* fileExtension)
    : name(streamName), extension(fileExtension), next(firstStream) {
    firstStream = this;
    ++streamCount;
    qvrTraceVerbose("> EImageOutputStream \"%s\" registered (extension %s)\n", name, extension);
}

EImageOutputStream::EImageOutputStream(const char* streamName, const char* fileExtension, Unlisted)
    : name(streamName), extension(fileExtension), next(nullptr) {}

std::string EImageOutputStream::ForceExtension(const std::string& fileName) const {
    if (fileName.empty()) return fileName;
    const size_t dot = fileName.rfind('.');
    const size_t separator = fileName.rfind('/');
    const bool dotCounts = dot != std::string::npos && (separator == std::string::npos || separator < dot);
    return (dotCounts ? fileName.substr(0, dot) : fileName) + "." + extension;
}

const EImageOutputStream* EImageOutputStream::GetFirst() {
    return firstStream;
}

const EImageOutputStream* EImageOutputStream::Find(std::string_view streamName) {
    for (const EImageOutputStream* stream = firstStream; stream; stream = stream->next)
        if (qvrEqualNoCase(stream->name, streamName)) return stream;
    return nullptr;
}

long EImageOutputStream::GetCount() {
    return streamCount;
}

bool EImageOutputStream::TestFile(const std::string& fileName, EOutputDirectory directory,
                                  EImageOutputError* error) {
    EImageOutputError localError;
    EImageOutputError& record = error ? *error : localError;
    if (directory == EOutputDirectory::Create && !createDirectoryOf(fileName, record)) return false;

    int file = openForWriting(fileName, 0);
    bool removeAfterwards = false;
    if (file < 0) {
        if (errno != ENOENT) {
            record.SetOsError(errno, fileName);
            return false;
        }
        file = openForWriting(fileName, O_CREAT);
        if (file < 0) {
            record.SetOsError(errno, fileName);
            return false;
        }
        struct stat status {};
        removeAfterwards = ::fstat(file, &status) == 0 && status.st_size == 0;
    }
    ::close(file);
    if (removeAfterwards) ::unlink(fileName.c_str());
    return true;
}
