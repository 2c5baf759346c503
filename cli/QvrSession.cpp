#include "QvrSession.h"

#include "app/EInitializer.h"

#include <cstdio>
#include <filesystem>

QvrSession::QvrSession() {
    EInitializerStatus silent;
    Ok = App.InitInstance(CCommandLineInfo(), silent);
    if (!Ok) std::fprintf(stderr, "qvr: the system could not start (set QVR_DEBUG=1 to see why)\n");
}

QvrSession::~QvrSession() {
    App.ExitInstance();
}

std::string QvrSession::Absolute(const std::string& path) {
    std::error_code error;
    std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return error ? path : absolute.lexically_normal().string();
}
