#pragma once
// Platform errors and the program's own exceptions, and the texts made of them.
// Exceptions are thrown only by file and platform wrappers and are caught where
// an operation starts, where one of the qvrErrorText functions turns them into
// a report or result text. All of it is safe from any thread.

#include <exception>
#include <string>

// A platform error code with its text.
class qvrCSysError {
public:
    qvrCSysError() = default;
    explicit qvrCSysError(long code) { SetCode(code); }

    // Takes the system's text of the code; 0 gives an empty text.
    void SetCode(long code);
    long Code = 0;
    std::string Text;
};

// The root of the program's own exceptions.
class qvrCException : public std::exception {
public:
    explicit qvrCException(std::string text = {});
    const char* what() const noexcept override { return Text.c_str(); }
    std::string Text;
};

// A failed file operation: the file's name and the platform's error code.
class qvrCFileException : public qvrCException {
public:
    qvrCFileException(std::string path, int errorCode);
    std::string Path;
    int ErrorCode;
};

namespace qvrErrorText {
std::string FromCode(long code);
std::string FromFileException(const qvrCFileException& error);
std::string FromException(const std::exception& error);
} // namespace qvrErrorText
