#pragma once
// One open output of a stream: the saver creates a handle for its stream,
// opens it with one name and frame size, writes frames and closes it. Open and
// Close come from one thread while no Write runs. A handle of a sequence may
// take Write from several threads at once, each frame into a file of its own;
// only the last error record is guarded for that. A movie's handle is used by
// the one thread that opened it. Destroying an open handle drops the writer
// without closing it.

#include "output/EImageOutputStream.h"

#include <memory>
#include <mutex>
#include <string>

class EImageOutputHandle {
public:
    explicit EImageOutputHandle(const EImageOutputStream& streamClass) : stream(&streamClass) {}
    ~EImageOutputHandle() { Kill(); }
    EImageOutputHandle(const EImageOutputHandle&) = delete;
    EImageOutputHandle& operator=(const EImageOutputHandle&) = delete;

    // Opens the output under the name, with the stream's extension forced on it.
    // An open handle first drops its writer without closing it. An invalid
    // setup counts as none; a given one must outlive the open output.
    bool Open(const std::string& fileName, CSize frameSize, const EImageOutputSetup* setup,
              unsigned long rate, unsigned long rateStep);
    // Writes one frame, which must have the frame size. On failure the record
    // goes to the last error and, when given, to `error` too.
    bool Write(const EImageData& image, long frameIndex, EImageOutputError* error = nullptr);
    // Closes the writer; a failed close keeps the handle open. A closed handle returns true.
    bool Close();
    bool IsOpen() const { return writer != nullptr; }
    // Drops the writer without closing it.
    void Kill() { writer.reset(); }

    EImageOutputError GetLastError() const;
    const EImageOutputStream& GetStream() const { return *stream; }
    // The name as opened, with the extension forced.
    const std::string& GetFileName() const { return fileName; }
    CSize GetFrameSize() const { return frameSize; }

private:
    // "name:position", the text of errors that have no file name of their own.
    std::string PositionText() const;
    void SetLastError(const EImageOutputError& error);

    const EImageOutputStream* stream;
    std::unique_ptr<EImageOutputWriter> writer;
    CSize frameSize;
    std::string fileName;
    long position = 0;
    mutable std::mutex lastErrorGuard;
    EImageOutputError lastError;
};
