#include "foundation/EFileOperation.h"

#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"

#include <filesystem>
#include <fnmatch.h>

namespace fs = std::filesystem;

namespace {

// One file an operation works on, with its path below the entry's directory.
struct FileEntry {
    fs::path path;
    fs::path relative;
};

bool hasWildcard(const std::string& name) {
    return name.find_first_of("*?[") != std::string::npos;
}

bool matches(const std::string& pattern, const fs::path& name) {
    return ::fnmatch(pattern.c_str(), name.filename().c_str(), FNM_CASEFOLD) == 0;
}

// Adds the files of `directory` (and below, with recursion) that match the
// pattern; false when a directory could not be read.
bool collectMatching(const fs::path& directory, const std::string& pattern,
                     EFileOperation::Recursion recursion, std::vector<FileEntry>& files) {
    std::error_code error;
    if (!fs::exists(directory, error)) return true;
    auto take = [&](const fs::directory_entry& entry) {
        std::error_code typeError;
        if (entry.is_regular_file(typeError) && matches(pattern, entry.path()))
            files.push_back({entry.path(), entry.path().lexically_relative(directory)});
    };
    if (recursion == EFileOperation::Recursion::Recursive) {
        for (fs::recursive_directory_iterator it(directory, error), end; !error && it != end;
             it.increment(error))
            take(*it);
    } else {
        for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error))
            take(*it);
    }
    if (error)
        qvrTrace("*** WARNING[EFileOperation]: Can't read \"%s\": %s.\n", directory.c_str(),
                 error.message().c_str());
    return !error;
}

// Every file that the entries name; false when part of them could not be listed.
bool collect(const std::vector<std::string>& sources, EFileOperation::Recursion recursion,
             std::vector<FileEntry>& files) {
    bool complete = true;
    for (const std::string& source : sources) {
        const fs::path path(source);
        if (hasWildcard(path.filename().string()))
            complete =
                collectMatching(path.parent_path(), path.filename().string(), recursion, files) && complete;
        else
            files.push_back({path, path.filename()});
    }
    return complete;
}

bool userAgreesToDelete(const std::string& title, size_t count) {
    return hMessageBox::Show(qvrFormat("Do you really want to delete these %zu files ?", count),
                             hMessageBox::YesNo | hMessageBox::IconQuestion, title) == IDYES;
}

} // namespace

bool EFileOperation::Delete(const std::vector<std::string>& sources, Recursion recursion,
                            const std::string& title, Confirmation confirmation) {
    EUserInterface::Get().SetStatusText(title);
    std::vector<FileEntry> files;
    bool success = collect(sources, recursion, files);
    if (confirmation == Confirmation::Ask && !files.empty() && !userAgreesToDelete(title, files.size()))
        return false;
    for (const FileEntry& file : files) {
        std::error_code error;
        fs::remove(file.path, error);
        if (!error) continue;
        qvrTrace("*** WARNING[EFileOperation::Delete()]: Can't delete \"%s\": %s.\n", file.path.c_str(),
                 error.message().c_str());
        success = false;
    }
    return success;
}

bool EFileOperation::Copy(const std::vector<std::string>& sources, const std::string& target,
                          Recursion recursion, const std::string& title) {
    EUserInterface::Get().SetStatusText(title);
    std::vector<FileEntry> files;
    bool success = collect(sources, recursion, files);
    for (const FileEntry& file : files) {
        const fs::path destination = fs::path(target) / file.relative;
        std::error_code error;
        fs::create_directories(destination.parent_path(), error);
        if (!error) fs::copy_file(file.path, destination, fs::copy_options::overwrite_existing, error);
        if (!error) continue;
        qvrTrace("*** WARNING[EFileOperation::Copy()]: Can't copy \"%s\" to \"%s\": %s.\n", file.path.c_str(),
                 destination.c_str(), error.message().c_str());
        success = false;
    }
    return success;
}

void EFileOperation::RemoveEmptyDirectories(const std::string& directory) {
    std::error_code error;
    std::vector<fs::path> directories;
    for (fs::recursive_directory_iterator it(directory, error), end; !error && it != end;
         it.increment(error)) {
        std::error_code typeError;
        if (it->is_directory(typeError) && !it->is_symlink(typeError)) directories.push_back(it->path());
    }
    // The deepest first, so that a directory that held only empty ones goes too.
    for (auto it = directories.rbegin(); it != directories.rend(); ++it) {
        std::error_code removeError;
        if (fs::is_empty(*it, removeError)) fs::remove(*it, removeError);
    }
}
