#include "foundation/qvrCException.h"

#include "foundation/qvrString.h"

#include <cstring>
#include <filesystem>
#include <system_error>

namespace {

// The system's own text of an errno code, or an empty text when it has none.
std::string systemText(long code) {
    if (code <= 0) return {};
    std::string text = std::generic_category().message(static_cast<int>(code));
    if (text.rfind("Unknown error", 0) == 0) return {};
    return text;
}

} // namespace

void qvrCSysError::SetCode(long code) {
    Code = code;
    if (code == 0) {
        Text.clear();
        return;
    }
    Text = systemText(code);
    if (Text.empty()) Text = qvrFormat("Unknown error (code %ld)", code);
}

qvrCException::qvrCException(std::string text)
    : Text(text.empty() ? std::string("Unknown program exception appeared.") : std::move(text)) {}

qvrCFileException::qvrCFileException(std::string path, int errorCode)
    : qvrCException(systemText(errorCode).empty() ? std::string("Unknown error") : systemText(errorCode)),
      Path(std::move(path)), ErrorCode(errorCode) {}

std::string qvrErrorText::FromCode(long code) {
    std::string text = systemText(code);
    return text.empty() ? qvrFormat("Unknown error #%ld", code) : text;
}

std::string qvrErrorText::FromFileException(const qvrCFileException& error) {
    std::string text = systemText(error.ErrorCode);
    return text.empty() ? std::string("Unknown error") : text;
}

std::string qvrErrorText::FromException(const std::exception& error) {
    if (auto* file = dynamic_cast<const qvrCFileException*>(&error)) return FromFileException(*file);
    if (auto* fs = dynamic_cast<const std::filesystem::filesystem_error*>(&error)) {
        std::string text = systemText(fs->code().value());
        if (!text.empty()) return text;
    }
    const char* what = error.what();
    return (what && *what) ? std::string(what) : std::string("Unknown error.");
}
