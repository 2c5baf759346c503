#include "imaging/EImageStorage.h"

#include "foundation/CBetterFile.h"
#include "foundation/EEnvironment.h"
#include "foundation/EFileOperation.h"
#include "foundation/ELog.h"
#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/qvrCException.h"
#include "foundation/qvrCRegKey.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImageData.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fnmatch.h>
#include <functional>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// The source name of every entry the storage writes to the user's log.
constexpr const char* LogContext = "Image storage";
constexpr const char* TempProxyDirectory = "qvrTessarine-proxies";
// The names of proxy files, in the proxy directory and below.
constexpr const char* ProxyPattern = "*.*";

void log(int level, const std::string& text) {
    ELog::Log(level, LogContext, text);
}

// The source's directory as a path below the proxy directory: leading
// separators, "./" and "../" are dropped and colons taken out.
std::string relativeProxyDirectory(std::string directory) {
    for (;;) {
        if (directory.starts_with("../")) return directory.substr(2);
        if (directory.starts_with("./")) return directory.substr(1);
        if (directory.starts_with(".")) return directory;
        if (directory.starts_with("//")) return directory.substr(2);
        if (directory.starts_with("/")) return directory.substr(1);
        const size_t colon = directory.find(':');
        if (colon == std::string::npos) return directory;
        directory.erase(colon, 1);
    }
}

// The coordinate on the proxy's grid: rounded up, so that 0 stays 0.
long toProxyCoordinate(long coordinate, std::uint32_t factor) {
    return static_cast<long>((static_cast<std::uint32_t>(coordinate) - 1u + factor) / factor);
}

// Widens an empty span by one: to the right at the left edge, else to the left.
void widenEmptySpan(long& low, long& high) {
    if (low != high) return;
    if (low < 1)
        ++high;
    else
        --low;
}

CRect toProxyRect(const CRect& rect, std::uint32_t factor) {
    CRect proxy = rect;
    if (factor > 1)
        proxy = {toProxyCoordinate(rect.left, factor), toProxyCoordinate(rect.top, factor),
                 toProxyCoordinate(rect.right, factor), toProxyCoordinate(rect.bottom, factor)};
    widenEmptySpan(proxy.left, proxy.right);
    widenEmptySpan(proxy.top, proxy.bottom);
    return proxy;
}

CRect fromProxyRect(const CRect& proxy, std::uint32_t factor, CSize original) {
    const long f = static_cast<long>(factor);
    return {proxy.left * f, proxy.top * f, std::min(proxy.right * f, original.cx),
            std::min(proxy.bottom * f, original.cy)};
}

// The later of last access and last change, in nanoseconds since the epoch.
std::int64_t lastUse(const struct stat& status) {
    auto nanoseconds = [](const timespec& time) {
        return static_cast<std::int64_t>(time.tv_sec) * 1000000000 + time.tv_nsec;
    };
    return std::max(nanoseconds(status.st_atim), nanoseconds(status.st_mtim));
}

std::uint64_t freeDiskBytes(const std::string& path) {
    struct statvfs status {};
    if (::statvfs(path.c_str(), &status) != 0) return 0;
    return static_cast<std::uint64_t>(status.f_bavail) * status.f_frsize;
}

// One file below the proxy directory, as the clean-up sees it.
struct ProxyFile {
    fs::path path;
    std::uint64_t length;
    std::int64_t lastUse;
};

// Calls `visit` for every file below the directory; a missing directory has
// none. Throws when the directory can't be read.
void forEachProxyFile(const std::string& directory, const std::function<void(const ProxyFile&)>& visit) {
    if (!fs::exists(directory)) return;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory)) {
        struct stat status {};
        if (!entry.is_regular_file() || ::fnmatch(ProxyPattern, entry.path().filename().c_str(), 0) != 0 ||
            ::stat(entry.path().c_str(), &status) != 0)
            continue;
        visit({entry.path(), static_cast<std::uint64_t>(status.st_size), lastUse(status)});
    }
}

// The files to delete: all last used at or before the cutoff, then the least
// recently used others until more than `bytes` have gone.
std::vector<std::string> chooseFilesToDelete(const std::string& directory, std::int64_t cutoff,
                                             const std::function<std::uint64_t(std::uint64_t)>& bytesToFree) {
    std::vector<std::string> doomed;
    std::multimap<std::int64_t, ProxyFile> byLastUse;
    std::uint64_t total = 0;
    forEachProxyFile(directory, [&](const ProxyFile& file) {
        if (file.lastUse <= cutoff) {
            doomed.push_back(file.path.string());
            return;
        }
        total += file.length;
        byLastUse.emplace(file.lastUse, file);
    });
    const std::uint64_t bytes = bytesToFree(total);
    if (bytes == 0) return doomed;
    std::uint64_t freed = 0;
    for (const auto& [time, file] : byLastUse) {
        doomed.push_back(file.path.string());
        freed += file.length;
        if (freed > bytes) break;
    }
    return doomed;
}

void tellUser(const std::string& text) {
    hMessageBox::Show(text, hMessageBox::OK | hMessageBox::IconExclamation, {});
}

} // namespace

// ------------------------------------------------------------ file information

std::string EImageStorage::ImageFileInfo::GetPath() const {
    return EEnvironment::PathPlusFile(directory, name);
}

std::string EImageStorage::ImageFileInfo::ProxyInfo::GenerateFileName(const std::string& directory,
                                                                      const std::string& name,
                                                                      CSize proxySize) {
    const std::string relative = relativeProxyDirectory(directory);
    std::string fileName =
        relative.empty()
            ? qvrFormat("pxy(%s)_%ldx%ld.qts", name.c_str(), proxySize.cx, proxySize.cy)
            : qvrFormat("%s/pxy(%s)_%ldx%ld.qts", relative.c_str(), name.c_str(), proxySize.cx, proxySize.cy);
    qvrTrace(
        "*** NOTE[EImageStorage::ImageFileInfo::ProxyInfo::GenerateFileName()]: Image file %s, dir %s will "
        "have proxy file %s.\n",
        name.c_str(), directory.c_str(), fileName.c_str());
    return fileName;
}

EImageStorage& EImageStorage::Get() {
    static EImageStorage storage;
    return storage;
}

EImageStorage::ImageFileInfo* EImageStorage::GetImageFileInfo(const std::string& directory,
                                                              const std::string& name,
                                                              EImageFileResult& result) {
    InfoKey key{directory, name};
    if (auto found = cache.find(key); found != cache.end()) return found->second.get();
    auto info = std::make_unique<ImageFileInfo>();
    info->directory = directory;
    info->name = name;
    info->format = EImageFileFormat::FindForFile(name);
    EImageFileInfo fileInfo;
    if (!info->format)
        result.Set(EImageFileError::UnknownFormat);
    else if (EImageFileFormat::QueryFileInfo(info->GetPath(), fileInfo, result))
        info->size = fileInfo.size;
    if (result.number != EImageFileError::None) {
        qvrTrace(
            "*** WARNING[EImageStorage::GetImageFileInfo()]: Can't get file information on \"%s\": %s.\n",
            info->GetPath().c_str(), result.text.c_str());
        return nullptr;
    }
    // Under the lock nobody else can have entered the file meanwhile; should
    // an entry exist all the same, it is the one that counts.
    return cache.emplace(std::move(key), std::move(info)).first->second.get();
}

EImageStorage::ImageFileInfo* EImageStorage::FindImageFileInfo(const char* operation,
                                                               const std::string& directory,
                                                               const std::string& name,
                                                               EImageFileResult& result) {
    ImageFileInfo* info = GetImageFileInfo(directory, name, result);
    if (!info)
        qvrTrace("*** ERROR[EImageStorage::%s()]: Cannot get file info for file \"%s\": %s.\n", operation,
                 EEnvironment::PathPlusFile(directory, name).c_str(), result.text.c_str());
    return info;
}

bool EImageStorage::QueryImageInfo(const std::string& directory, const std::string& name,
                                   EProxyCreation makeProxy, CSize& size, EImageFileResult& result) {
    qvrCSingleLock guard(lock);
    guard.Lock();
    ImageFileInfo* info = FindImageFileInfo("QueryImageInfo", directory, name, result);
    if (!info) return false;
    size = info->size;
    if (makeProxy == EProxyCreation::No || info->proxy) return true;
    CRect whole{0, 0, info->size.cx, info->size.cy};
    return LoadProxy(*info, whole, result, false) != nullptr;
}

std::unique_ptr<EImageData> EImageStorage::LoadImage(const std::string& directory, const std::string& name,
                                                     const EImageLoadRequest& request, CRect& rect,
                                                     EImageFileResult& result) {
    if (name.empty()) {
        result.Set(EImageFileError::BadFunctionCall);
        return nullptr;
    }
    qvrCSingleLock guard(lock);
    guard.Lock();
    ImageFileInfo* info = FindImageFileInfo("LoadImage", directory, name, result);
    if (!info) return nullptr;
    CRect delivered = EImageFileFormat::ClipLoadRect(request.Rect, info->size);
    std::unique_ptr<EImageData> picture = request.Source == EImageSource::Proxy
                                              ? LoadProxy(*info, delivered, result, false)
                                              : EImageFileFormat::Load(info->GetPath(), delivered, result);
    if (!picture) return nullptr;
    const CSize hint = request.SizeHint;
    if (hint.cx > 0 && hint.cy > 0 && hint != picture->GetSize()) {
        picture = picture->Resized(hint, EImageFilter::Fast);
        if (!picture) {
            result.Set(EImageFileError::OutOfMemory);
            return nullptr;
        }
    }
    rect = delivered;
    return picture;
}

// ------------------------------------------------------------------- proxies

std::string EImageStorage::ProxyPath(const std::string& fileName) const {
    // Joined by hand: a file name that starts with a separator still lies below the directory.
    return settings.proxyDirectory + "/" + fileName;
}

std::unique_ptr<EImageData> EImageStorage::LoadProxy(ImageFileInfo& info, CRect& rect,
                                                     EImageFileResult& result, bool retry) {
    std::unique_ptr<EImageData> fresh;
    if (!info.proxy && !PrepareProxy(info, retry, fresh, result)) return nullptr;
    const std::uint32_t factor = info.proxy->shrinkFactor;
    const CRect proxyRect = toProxyRect(rect, factor);
    std::unique_ptr<EImageData> picture;
    if (fresh) picture = fresh->Extract(proxyRect);
    fresh.reset();
    if (!picture) {
        const std::string proxyPath = ProxyPath(info.proxy->fileName);
        picture = EImageFileFormat::Load(proxyPath, proxyRect, result);
        if (!picture && result.number == EImageFileError::ReadError && !retry) {
            qvrTrace("*** NOTE[EImageStorage::LoadProxy()]: Cannot load proxy file \"%s\": %s",
                     proxyPath.c_str(), result.text.c_str());
            qvrTrace(" ... since we have file problems, we re-create the file.\n");
            info.proxy.reset();
            return LoadProxy(info, rect, result, true);
        }
        if (!picture) return nullptr;
    }
    rect = fromProxyRect(proxyRect, factor, info.size);
    return picture;
}

bool EImageStorage::PrepareProxy(ImageFileInfo& info, bool retry, std::unique_ptr<EImageData>& fresh,
                                 EImageFileResult& result) {
    std::uint32_t factor = 1;
    const CSize proxySize = settings.GetProxySize(info.size, factor);
    std::string fileName = ImageFileInfo::ProxyInfo::GenerateFileName(info.directory, info.name, proxySize);
    bool exists = false;
    bool usable = IsUsableProxy(ProxyPath(fileName), proxySize, info, exists);
    if (!exists && !retry) {
        const std::string oldName =
            qvrFormat("proxyimg_(%s)_%ldx%ld.qts", info.name.c_str(), proxySize.cx, proxySize.cy);
        usable = IsUsableProxy(ProxyPath(oldName), proxySize, info, exists);
        if (usable) {
            qvrTrace("*** NOTE[EImageStorage::ImageFileInfo::LoadProxy()]: Found old-style proxy. Will using "
                     "this.\n");
            fileName = oldName;
        }
    }
    // A retry comes after the proxy file failed to load: it is made anew whatever it looks like.
    const bool needCreate = retry || !usable;
    if (needCreate) {
        fresh = CreateProxy(info, proxySize, result);
        if (!fresh || !SaveProxy(*fresh, ProxyPath(fileName), info, result)) {
            fresh.reset();
            return false;
        }
    }
    info.proxy = std::make_unique<ImageFileInfo::ProxyInfo>(ImageFileInfo::ProxyInfo{fileName, factor});
    return true;
}

bool EImageStorage::IsUsableProxy(const std::string& proxyPath, CSize proxySize, const ImageFileInfo& info,
                                  bool& exists) {
    EImageFileInfo proxyInfo;
    EImageFileResult ignored;
    exists = EImageFileFormat::QueryFileInfo(proxyPath, proxyInfo, ignored);
    if (!exists || proxyInfo.size != proxySize) return false;
    const std::optional<int> order = CBetterFile::CompareModifyTimes(proxyPath, info.GetPath());
    if (order && *order > 0) return true;
    log(ELog::LevelMessage,
        qvrFormat("Proxy \"%s\" is out of date - generating new one.", proxyPath.c_str()));
    return false;
}

std::unique_ptr<EImageData> EImageStorage::CreateProxy(const ImageFileInfo& info, CSize proxySize,
                                                       EImageFileResult& result) {
    const std::string path = info.GetPath();
    EUserInterface& ui = EUserInterface::Get();
    ui.SetStatusText(qvrFormat("Creating proxy image for \"%s\"...", path.c_str()));
    std::unique_ptr<EImageData> original = EImageFileFormat::Load(path, {0, 0, 0, 0}, result);
    if (!original) {
        qvrTrace("*** ERROR[EImageStorage::CreateProxy()]: Can't load original image \"%s\": %s.\n",
                 path.c_str(), result.text.c_str());
        ui.SetStatusText(
            qvrFormat("Failed to create proxy image for \"%s\": %s.", path.c_str(), result.text.c_str()));
        return nullptr;
    }
    if (original->GetSize() == proxySize) return original;
    std::unique_ptr<EImageData> proxy = original->Resized(proxySize, EImageFilter::Fast);
    if (!proxy) {
        result.Set(EImageFileError::OutOfMemory);
        qvrTrace(
            "*** ERROR[EImageStorage::CreateProxy()]: Can't create scaled image (to %ldx%ld) \"%s\": Out of "
            "memory.\n",
            proxySize.cx, proxySize.cy, path.c_str());
        ui.SetStatusText(qvrFormat("Failed to create proxy image for \"%s\": Out of memory.", path.c_str()));
    }
    return proxy;
}

bool EImageStorage::SaveProxy(const EImageData& picture, const std::string& proxyPath,
                              const ImageFileInfo& info, EImageFileResult& result) {
    std::error_code error;
    fs::create_directories(fs::path(proxyPath).parent_path(), error);
    if (error) {
        result.Set(EImageFileError::ReadError, error.message());
        log(ELog::LevelError,
            qvrFormat("Failed to make directories for proxy file:\nProxyfile: %s\nReason:    %s\n",
                      proxyPath.c_str(), result.text.c_str()));
        return false;
    }
    if (EImageFileFormat::Save(picture, proxyPath, result)) return true;
    log(ELog::LevelError,
        qvrFormat("Error saving newly generated proxy file:\nProxy:  %s\nSource: %s\nReason: %s",
                  proxyPath.c_str(), info.GetPath().c_str(), result.text.c_str()));
    return false;
}

// ---------------------------------------------------------- proxy directory

bool EImageStorage::EmptyProxyDir(EProxyConfirmation confirmation) {
    qvrCSingleLock guard(lock);
    guard.Lock();
    const std::string& directory = settings.proxyDirectory;
    const bool emptied =
        EFileOperation::Delete({directory + "/" + ProxyPattern}, EFileOperation::Recursion::Recursive,
                               "Cleaning up proxy directory...",
                               confirmation == EProxyConfirmation::Yes ? EFileOperation::Confirmation::Ask
                                                                       : EFileOperation::Confirmation::None);
    EFileOperation::RemoveEmptyDirectories(directory);
    EmptyInfoCache();
    if (emptied) {
        log(ELog::LevelMessage, "Proxy directory empties !");
    } else {
        qvrTrace("*** WARNING[ImageStorage::EmptyProxyDir()]: Failed !\n");
        log(ELog::LevelError, "Failed to completely empty proxy directory !");
    }
    return emptied;
}

bool EImageStorage::FilterProxyDir(EProxyConfirmation confirmation) {
    qvrCSingleLock guard(lock);
    guard.Lock();
    try {
        return filterProxyDir(confirmation);
    } catch (const std::exception& error) {
        tellUser(qvrFormat("FILTER PROXY DIRECTORY: UNEXPECTED ALERT CONDITION !\nError: %s",
                           qvrErrorText::FromException(error).c_str()));
        return false;
    }
}

bool EImageStorage::filterProxyDir(EProxyConfirmation confirmation) {
    if (!settings.useMaxTimeUnused && !settings.useMaxDiskSpaceUsed && !settings.useMinFreeDiskSpace) {
        qvrTrace("*** NOTE[EImageStorage::FilterProxyDir()]: Nothing to do.\n");
        return true;
    }
    const std::string& directory = settings.proxyDirectory;
    std::int64_t cutoff = 0;
    if (settings.useMaxTimeUnused) {
        const auto unused = std::chrono::hours(settings.maxDaysUnused * 24 + settings.maxHoursUnused);
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        cutoff = std::chrono::duration_cast<std::chrono::nanoseconds>(now - unused).count();
    }
    const std::vector<std::string> doomed =
        chooseFilesToDelete(directory, cutoff, [&](std::uint64_t total) -> std::uint64_t {
            std::uint64_t bytes = 0;
            const std::uint64_t limit = static_cast<std::uint64_t>(settings.maxDiskSpaceUsed) * 1000000;
            if (settings.useMaxDiskSpaceUsed && total > limit) bytes = total - limit;
            const std::uint64_t need = static_cast<std::uint64_t>(settings.minFreeDiskSpace) * 1000000;
            const std::uint64_t free = freeDiskBytes(directory);
            if (settings.useMinFreeDiskSpace && free < need) bytes = std::max(bytes, need - free);
            return bytes;
        });
    if (doomed.empty()) {
        qvrTrace("*** NOTE[EImageStrorage::FilterProxyDir()]: Nothing to delete.\n");
        return true;
    }
    const bool deleted = EFileOperation::Delete(
        doomed, EFileOperation::Recursion::TopOnly, "Deleting unneccessary proxy files...",
        confirmation == EProxyConfirmation::Yes ? EFileOperation::Confirmation::Ask
                                                : EFileOperation::Confirmation::None);
    if (deleted) {
        log(ELog::LevelMessage, "Proxy directory emptied !");
        EFileOperation::RemoveEmptyDirectories(directory);
    } else {
        qvrTrace("*** WARNING[ImageStorage::FilterProxyDir()]: Failed !\n");
        log(ELog::LevelError, "Failed to completely empty proxy directory !");
    }
    // The proxies that the cache knows may be gone.
    EmptyInfoCache();
    return deleted;
}

bool EImageStorage::MoveProxyDir(const std::string& newPath) {
    qvrCSingleLock guard(lock);
    guard.Lock();
    const std::string oldPath = settings.proxyDirectory;
    std::error_code error;
    if (fs::equivalent(oldPath, newPath, error)) return true;
    if (!EEnvironment::EnsureDirectoryPath(newPath)) return false;
    if (!EFileOperation::Copy({oldPath + "/" + ProxyPattern}, newPath, EFileOperation::Recursion::Recursive,
                              "Copying proxy files...")) {
        tellUser(
            qvrFormat("Failed to move proxy directory from \"%s\" to \"%s\" - please note that some files "
                      "might already be copied to \"%s\" !",
                      oldPath.c_str(), newPath.c_str(), newPath.c_str()));
        return false;
    }
    EmptyInfoCache();
    settings.proxyDirectory = newPath;
    SaveSettings();
    LoadSettings();
    EFileOperation::Delete({oldPath + "/" + ProxyPattern}, EFileOperation::Recursion::Recursive,
                           "Deleting old files...", EFileOperation::Confirmation::None);
    EFileOperation::RemoveEmptyDirectories(oldPath);
    return true;
}

bool EImageStorage::QueryProxyDirSize(EProxyDirectoryUsage& usage) {
    qvrCSingleLock guard(lock);
    guard.Lock();
    usage = {};
    usage.freeBytes = freeDiskBytes(settings.proxyDirectory);
    try {
        forEachProxyFile(settings.proxyDirectory, [&](const ProxyFile& file) {
            usage.bytes += file.length;
            ++usage.fileCount;
        });
    } catch (const std::exception& error) {
        qvrTrace("*** WARNING[EImageStorage::QueryProxyDirSize()]: %s.\n", error.what());
        return false;
    }
    return true;
}

void EImageStorage::EmptyInfoCache() {
    qvrCSingleLock guard(lock);
    guard.Lock();
    if (cache.empty()) return;
    log(ELog::LevelNotice, qvrFormat("Beginning to empty proxy information cache.\nCache has %ld entries.",
                                     static_cast<long>(cache.size())));
    cache.clear();
}

long EImageStorage::GetInfoCacheCount() {
    qvrCSingleLock guard(lock);
    guard.Lock();
    return static_cast<long>(cache.size());
}

// ------------------------------------------------------------------ settings

bool EImageStorage::MakeUsableDirectory(const std::string& path, long& code, std::string& reason) {
    std::error_code error;
    fs::create_directories(path, error);
    if (!error && !fs::is_directory(path, error)) error = std::make_error_code(std::errc::not_a_directory);
    if (!error && ::access(path.c_str(), W_OK | X_OK) != 0)
        error = std::error_code(errno, std::generic_category());
    if (!error) return true;
    code = error.value();
    reason = error.message();
    return false;
}

void EImageStorage::RepairProxyDirectory() {
    std::string& directory = settings.proxyDirectory;
    if (!directory.empty() && directory.back() == '/') directory.pop_back();
    if (directory.empty()) directory = EProxySettings::DefaultDirectory();
    long code = 0;
    std::string reason;
    if (MakeUsableDirectory(directory, code, reason)) return;
    log(ELog::LevelError,
        qvrFormat("Can't access proxy directory \"%s\" - will be reset to some default.", directory.c_str()));
    qvrTrace("*** WARNING[EImageStorage::LoadSettings()]: Failed to create directory \"%s\"- code %ld (%s)\n",
             directory.c_str(), code, reason.c_str());
    directory = EProxySettings::DefaultDirectory();
    if (MakeUsableDirectory(directory, code, reason)) return;
    log(ELog::LevelFailure, "Can't access default proxy directory; using system's temp directory.");
    qvrTrace(
        "*** WARNING[EImageStorage::LoadSettings()]: Failed to create directory \"%s\" (default proxy dir) - "
        "code %ld (%s)\n",
        directory.c_str(), code, reason.c_str());
    // A folder of its own, so that emptying the proxies never touches other programs' files.
    directory = EEnvironment::PathPlusFile(EEnvironment::Get().TempDir, TempProxyDirectory);
    EEnvironment::EnsureDirectoryPath(directory);
}

void EImageStorage::LoadSettings() {
    qvrCSingleLock guard(lock);
    guard.Lock();
    qvrCRegKey key;
    key.Open(qvrCRegKey::Root(), EProxySettings::RegistryKey);
    settings.Read(key);
    RepairProxyDirectory();
    // The repairs are stored at once, so that they last.
    SaveSettings();
}

void EImageStorage::SaveSettings() {
    qvrCSingleLock guard(lock);
    guard.Lock();
    qvrCRegKey key;
    key.Open(qvrCRegKey::Root(), EProxySettings::RegistryKey);
    settings.Write(key);
}

EProxySettings EImageStorage::GetSettings() {
    qvrCSingleLock guard(lock);
    guard.Lock();
    return settings;
}

void EImageStorage::SetSettings(const EProxySettings& newSettings) {
    qvrCSingleLock guard(lock);
    guard.Lock();
    settings = newSettings;
}

std::string EImageStorage::GetProxyDirectory() {
    qvrCSingleLock guard(lock);
    guard.Lock();
    return settings.proxyDirectory;
}

void EImageStorage::OnExit() {
    SaveSettings();
    if (keepProxyDirAtExit) return;
    switch (GetSettings().cleanUpMode) {
    case EProxyCleanUp::EmptyAtExit:
        EmptyProxyDir(EProxyConfirmation::No);
        break;
    case EProxyCleanUp::FilterAtExit:
        FilterProxyDir(EProxyConfirmation::No);
        break;
    case EProxyCleanUp::None:
        break;
    }
}
