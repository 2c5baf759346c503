#include "foundation/EEnvironment.h"

#include "foundation/qvrTrace.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string environmentValue(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

// "/a/b/" becomes "/a/b"; the root stays "/".
std::string withoutTrailingSeparator(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

const passwd* ownAccount() {
    return getpwuid(getuid());
}

std::string homeDirectory() {
    std::string home = environmentValue("HOME");
    if (home.empty()) {
        const passwd* account = ownAccount();
        if (account && account->pw_dir) home = account->pw_dir;
    }
    return home;
}

std::string programDirectory() {
    std::string directory = environmentValue("QVR_HOME");
    if (directory.empty()) {
        std::string dataHome = environmentValue("XDG_DATA_HOME");
        // Relative data homes are invalid and ignored.
        if (dataHome.empty() || dataHome.front() != '/') dataHome = homeDirectory() + "/.local/share";
        directory = dataHome + "/qvrTessarine";
    }
    std::error_code error;
    const fs::path absolute = fs::absolute(directory, error);
    return withoutTrailingSeparator(error ? directory : absolute.string());
}

std::string hostName() {
    char name[HOST_NAME_MAX + 1] = {};
    if (gethostname(name, sizeof name - 1) != 0) return "";
    return name;
}

std::string loginName() {
    const passwd* account = ownAccount();
    if (account && account->pw_name) return account->pw_name;
    const std::string user = environmentValue("USER");
    return user.empty() ? environmentValue("LOGNAME") : user;
}

} // namespace

EEnvironment& EEnvironment::Get() {
    static EEnvironment environment;
    return environment;
}

bool EEnvironment::Gather() {
    try {
        CurrentDir = programDirectory();
        WindowsDir = "/";
        SystemDir = "/usr/lib";
        const std::string temp = environmentValue("TMPDIR");
        TempDir = withoutTrailingSeparator(temp.empty() ? "/tmp" : temp);
        ComputerName = hostName();
        UserName = loginName();
    } catch (const std::exception&) {
        return false;
    }
    return EnsureDirectoryPath(CurrentDir);
}

std::string EEnvironment::PathPlusFile(const std::string& path, const std::string& file) {
    if (!file.empty() && file.front() == '/') {
        qvrTrace("*** WARNING[EEnvironment::PathPlusFile()]: Strange file name \"%s\"...\n", file.c_str());
        return file;
    }
    if (path.empty()) return file;
    return path.back() == '/' ? path + file : path + "/" + file;
}

bool EEnvironment::EnsureDirectoryPath(const std::string& path) {
    if (path.empty()) {
        qvrTrace("*** ERROR[EEnvironment::EnsureDirectoryPath()]: Tried to create an empty directory - will "
                 "return "
                 "true !\n");
        return true;
    }
    try {
        fs::create_directories(path);
        return fs::is_directory(path);
    } catch (const std::exception&) {
        return false;
    }
}

bool EEnvironment::EnsureFileCreation(const std::string& path) {
    std::error_code error;
    const bool existed = fs::exists(fs::symlink_status(path, error));
    std::FILE* file = std::fopen(path.c_str(), "a");
    if (!file) return false;
    std::fclose(file);
    if (!existed && std::remove(path.c_str()) != 0) {
        qvrTrace("*** WARNING[EEnvironment::EnsureFileCreation()]: Can't delete file: %s.\n", path.c_str());
    }
    return true;
}

bool EEnvironment::RemoveDir(const std::string& path) {
    try {
        if (!fs::exists(fs::symlink_status(path))) {
            qvrTrace("*** NOTE[EEnvironment::RemoveDir()]: Directory did not exist.\n");
            return true;
        }
        if (!fs::is_directory(fs::symlink_status(path))) return false;
        fs::remove_all(path);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}
