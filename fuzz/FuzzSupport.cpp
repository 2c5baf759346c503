#include "FuzzSupport.h"

#include "app/CTessarineApp.h"
#include "app/EInitializer.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace qvrFuzz {

const std::string& ScratchDirectory() {
    static const std::string directory = [] {
        const std::filesystem::path base =
            std::filesystem::exists("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path();
        const std::filesystem::path path = base / ("qvr_fuzz_" + std::to_string(::getpid()));
        std::filesystem::create_directories(path);
        return path.string();
    }();
    return directory;
}

std::string WriteInput(const std::uint8_t* data, std::size_t size, const std::string& name) {
    const std::string path = ScratchDirectory() + "/" + name;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return path;
}

CTessarineApp& StartSystem() {
    // The system stays up until the process ends, never destroyed: its
    // document refers to the project, a static that ends before it would.
    static CTessarineApp* app = nullptr;
    if (app) return *app;
    ::setenv("QVR_HOME", ScratchDirectory().c_str(), 1);
    app = new CTessarineApp(CTessarineApp::Preferences::ReadOnly);
    EInitializerStatus silent;
    if (!app->InitInstance(CCommandLineInfo(), silent)) {
        std::fprintf(stderr, "fuzz: the system could not start\n");
        std::abort();
    }
    return *app;
}

} // namespace qvrFuzz
