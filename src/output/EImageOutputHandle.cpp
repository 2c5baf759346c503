#include "output/EImageOutputHandle.h"

#include "foundation/EStringTable.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImageData.h"

namespace {

constexpr EStringId textEmptyFileName = 45101;

} // namespace

bool EImageOutputHandle::Open(const std::string& name, CSize size, const EImageOutputSetup* setup,
                              unsigned long rate, unsigned long rateStep) {
    Kill();
    if (setup && !setup->IsValid()) setup = nullptr;

    EImageOutputError error;
    if (name.empty()) {
        error.SetOsError(OutputErrorInvalidName, EStringTable::Load(textEmptyFileName));
        SetLastError(error);
        return false;
    }
    const std::string forcedName = stream->ForceExtension(name);
    if (size.cx <= 0 || size.cy <= 0) {
        error.Set(FileErrorGeneric, OutputErrorBadFormat, forcedName);
        SetLastError(error);
        return false;
    }
    writer = stream->Open(forcedName, size, error, setup, rate, rateStep);
    if (!writer) {
        SetLastError(error);
        return false;
    }
    frameSize = size;
    fileName = forcedName;
    position = 0;
    SetLastError(EImageOutputError{});
    return true;
}

bool EImageOutputHandle::Write(const EImageData& image, long frameIndex, EImageOutputError* error) {
    EImageOutputError record;
    bool written = false;
    if (!writer) {
        record.SetOsError(OutputErrorInvalidHandle, PositionText());
    } else if (image.GetSize() != frameSize) {
        record.Set(FileErrorGeneric, OutputErrorBadFormat, PositionText());
    } else {
        written = writer->Write(image, frameIndex, record);
        if (!written && record.Text.empty()) record.Text = PositionText();
    }
    if (!written) {
        SetLastError(record);
        if (error) *error = record;
    }
    return written;
}

bool EImageOutputHandle::Close() {
    if (!writer) {
        qvrTraceVerbose("*** WARNING[EImageOutputHandle::Close()]: Tried to close a stream twice.\n");
        return true;
    }
    EImageOutputError error;
    if (!writer->Close(error)) {
        SetLastError(error);
        return false;
    }
    writer.reset();
    return true;
}

EImageOutputError EImageOutputHandle::GetLastError() const {
    std::lock_guard lock(lastErrorGuard);
    return lastError;
}

std::string EImageOutputHandle::PositionText() const {
    return qvrFormat("%s:%ld", stream->GetName(), position);
}

void EImageOutputHandle::SetLastError(const EImageOutputError& error) {
    std::lock_guard lock(lastErrorGuard);
    lastError = error;
}
