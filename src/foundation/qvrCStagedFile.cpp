#include "foundation/qvrCStagedFile.h"

#include "foundation/qvrCException.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char* TemporaryEnding = ".qvrpart";

// A hidden name beside the final one, unique to this process and call.
std::string temporaryNameFor(const std::string& finalPath) {
    static std::atomic<unsigned long> counter{0};
    const size_t slash = finalPath.find_last_of('/');
    const size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    return finalPath.substr(0, nameStart) + "." + finalPath.substr(nameStart) + "." +
           std::to_string(::getpid()) + "-" + std::to_string(counter++) + TemporaryEnding;
}

// The file a name stands for: the target of a link, else the name itself.
std::string resolvedName(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
    char target[PATH_MAX];
    return ::realpath(path.c_str(), target) ? std::string(target) : path;
}

bool isSomethingElseThanAFile(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

} // namespace

qvrCStagedFile::qvrCStagedFile(std::string finalPath)
    : FinalPath(std::move(finalPath)), ReplacedPath(resolvedName(FinalPath)) {
    if (isSomethingElseThanAFile(ReplacedPath)) {
        File = std::fopen(ReplacedPath.c_str(), "wb");
        if (!File) throw qvrCFileException(FinalPath, errno);
        return;
    }
    TemporaryPath = temporaryNameFor(ReplacedPath);
    const int descriptor = ::open(TemporaryPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) throw qvrCFileException(FinalPath, errno);
    File = ::fdopen(descriptor, "w+b");
    if (!File) {
        const int error = errno;
        ::close(descriptor);
        ::unlink(TemporaryPath.c_str());
        throw qvrCFileException(FinalPath, error);
    }
}

qvrCStagedFile::~qvrCStagedFile() {
    discard();
}

void qvrCStagedFile::discard() {
    if (!File) return;
    std::fclose(File);
    File = nullptr;
    if (!TemporaryPath.empty()) ::unlink(TemporaryPath.c_str());
}

void qvrCStagedFile::Commit() {
    if (!File) throw qvrCFileException(FinalPath, EBADF);
    if (std::fflush(File) != 0) {
        const int error = errno;
        discard();
        throw qvrCFileException(FinalPath, error);
    }
    std::FILE* closing = File;
    File = nullptr;
    if (std::fclose(closing) != 0) {
        const int error = errno;
        if (!TemporaryPath.empty()) ::unlink(TemporaryPath.c_str());
        throw qvrCFileException(FinalPath, error);
    }
    if (!TemporaryPath.empty() && std::rename(TemporaryPath.c_str(), ReplacedPath.c_str()) != 0) {
        const int error = errno;
        ::unlink(TemporaryPath.c_str());
        throw qvrCFileException(FinalPath, error);
    }
}
