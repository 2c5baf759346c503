#include "imaging/EBinaryFile.h"

#include "foundation/qvrCException.h"
#include "foundation/qvrCStagedFile.h"

#include <cerrno>

namespace {
constexpr size_t BufferSize = 256 * 1024;
} // namespace

EBinaryFile::EBinaryFile(std::string filePath, Mode mode) : path(std::move(filePath)) {
    if (mode == Mode::Write) {
        staged = std::make_unique<qvrCStagedFile>(path);
        file = staged->Stream();
    } else {
        file = std::fopen(path.c_str(), "rb");
        if (!file) fail(errno);
    }
    std::setvbuf(file, nullptr, _IOFBF, BufferSize);
}

EBinaryFile::~EBinaryFile() {
    if (file && !staged) std::fclose(file);
}

void EBinaryFile::fail(int errorCode) const {
    throw qvrCFileException(path, errorCode ? errorCode : EIO);
}

void EBinaryFile::Read(void* buffer, size_t bytes) {
    if (fread_unlocked(buffer, 1, bytes, file) != bytes) fail(std::ferror(file) ? errno : EIO);
}

void EBinaryFile::Write(const void* buffer, size_t bytes) {
    if (fwrite_unlocked(buffer, 1, bytes, file) != bytes) fail(errno);
}

void EBinaryFile::Seek(std::int64_t position) {
    if (position < 0) fail(EINVAL);
    if (fseeko(file, position, SEEK_SET) != 0) fail(errno);
}

void EBinaryFile::Skip(std::int64_t bytes) {
    if (bytes != 0 && fseeko(file, bytes, SEEK_CUR) != 0) fail(errno);
}

std::int64_t EBinaryFile::GetPosition() {
    const off_t position = ftello(file);
    if (position < 0) fail(errno);
    return position;
}

std::int64_t EBinaryFile::GetLength() {
    const std::int64_t current = GetPosition();
    if (fseeko(file, 0, SEEK_END) != 0) fail(errno);
    const std::int64_t length = GetPosition();
    Seek(current);
    return length;
}

void EBinaryFile::Close() {
    std::FILE* closing = file;
    file = nullptr;
    if (staged) {
        staged->Commit();
        return;
    }
    if (std::fclose(closing) != 0) fail(errno);
}
