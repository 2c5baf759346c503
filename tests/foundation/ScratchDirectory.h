#pragma once
// A fresh directory for one test below QVR_HOME (the scratch home the test run
// gets), or below the system's temporary directory when that isn't set. It is
// removed again when the test ends.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

class ScratchDirectory {
public:
    explicit ScratchDirectory(const std::string& prefix) {
        const char* home = std::getenv("QVR_HOME");
        std::filesystem::path base =
            home && *home ? std::filesystem::path(home) : std::filesystem::temp_directory_path();
        Path = base / (prefix + "_" + std::to_string(::getpid()) + "_" +
                       ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(Path);
        std::filesystem::create_directories(Path);
    }
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(Path, ignored);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    std::string File(const std::string& name) const { return (Path / name).string(); }

    static std::string ReadAll(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }

    std::filesystem::path Path;
};
