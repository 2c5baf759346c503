#include "foundation/qvrCTextFile.h"

#include "foundation/qvrCException.h"
#include "foundation/qvrCStagedFile.h"

#include <cerrno>
#include <cstring>

namespace {
constexpr size_t ReadBufferSize = 64 * 1024;

const char* openMode(qvrCDiskTextFile::Mode mode) {
    return mode == qvrCDiskTextFile::Mode::Append ? "ab" : "rb";
}

void stripLineEnd(std::string& line) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
}
} // namespace

qvrCDiskTextFile::qvrCDiskTextFile(std::string path, Mode mode) : Path(std::move(path)) {
    if (mode == Mode::Write) {
        Staged = std::make_unique<qvrCStagedFile>(Path);
        File = Staged->Stream();
        return;
    }
    File = std::fopen(Path.c_str(), openMode(mode));
    if (!File) throw qvrCFileException(Path, errno);
    if (mode == Mode::Read) Buffer = std::make_unique<char[]>(ReadBufferSize);
}

qvrCDiskTextFile::~qvrCDiskTextFile() {
    if (File && !Staged) std::fclose(File);
}

bool qvrCDiskTextFile::fillBuffer() {
    if (AtEnd || !File) return false;
    BufferFill = std::fread(Buffer.get(), 1, ReadBufferSize, File);
    BufferPos = 0;
    if (BufferFill == 0) {
        AtEnd = true;
        if (std::ferror(File)) throw qvrCFileException(Path, errno ? errno : EIO);
        return false;
    }
    return true;
}

bool qvrCDiskTextFile::ReadLine(std::string& line) {
    line.clear();
    bool readAny = false;
    while (true) {
        if (BufferPos >= BufferFill && !fillBuffer()) {
            stripLineEnd(line);
            return readAny;
        }
        readAny = true;
        const char* start = Buffer.get() + BufferPos;
        size_t available = BufferFill - BufferPos;
        const void* found = std::memchr(start, '\n', available);
        if (found) {
            size_t length = static_cast<size_t>(static_cast<const char*>(found) - start);
            line.append(start, length);
            BufferPos += length + 1;
            stripLineEnd(line);
            return true;
        }
        line.append(start, available);
        BufferPos = BufferFill;
    }
}

void qvrCDiskTextFile::WriteText(std::string_view text) {
    if (!File) throw qvrCFileException(Path, EBADF);
    if (std::fwrite(text.data(), 1, text.size(), File) != text.size()) throw qvrCFileException(Path, errno);
}

void qvrCDiskTextFile::Close() {
    if (!File) return;
    std::FILE* file = File;
    File = nullptr;
    if (Staged) {
        Staged->Commit();
        return;
    }
    bool failed = std::fflush(file) != 0;
    int error = errno;
    if (std::fclose(file) != 0 && !failed) {
        failed = true;
        error = errno;
    }
    if (failed) throw qvrCFileException(Path, error);
}

qvrCMemoryTextFile::qvrCMemoryTextFile(std::string text, std::string name)
    : Text(std::move(text)), Name(std::move(name)) {}

bool qvrCMemoryTextFile::ReadLine(std::string& line) {
    if (ReadPos >= Text.size()) return false;
    size_t end = Text.find('\n', ReadPos);
    if (end == std::string::npos) end = Text.size();
    line.assign(Text, ReadPos, end - ReadPos);
    ReadPos = end + 1;
    stripLineEnd(line);
    return true;
}
