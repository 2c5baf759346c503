#include "imaging/EImageCacheManager.h"

#include "foundation/EEnvironment.h"
#include "foundation/ELog.h"
#include "foundation/EPrefsEImage.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace {

// Disk copies are quick files.
constexpr const char* VirtualExtension = "qts";

// The program's manager serves every holder from the moment the program is
// loaded, so that nothing has to remember to install it, headless or not.
[[maybe_unused]] EImageCacheManager& installedManager = EImageCacheManager::Get();

// The cache directory; a relative one lies below the program directory once
// that is known, below the working directory before.
std::string CacheDirectory() {
    const std::string directory = EPrefsEImage::GetCacheDirectory();
    const std::string& programDir = EEnvironment::Get().CurrentDir;
    if (programDir.empty() || std::filesystem::path(directory).is_absolute()) return directory;
    return EEnvironment::PathPlusFile(programDir, directory);
}

// One figure of /proc/meminfo ("Name:   123 kB"), in bytes.
bool ParseMemInfoLine(const std::string& line, const std::string& name, long& bytes) {
    if (line.rfind(name + ":", 0) != 0) return false;
    std::string_view number = qvrTrim(std::string_view(line).substr(name.size() + 1));
    number = number.substr(0, number.find(' '));
    long kilobytes = 0;
    if (!qvrParseLong(number, kilobytes)) return false;
    bytes = kilobytes * 1024;
    return true;
}

// Holds the list's section for a scope. A wait that runs out goes on
// without it: nobody is kept waiting longer than ListTimeoutMs.
class ListLock {
public:
    explicit ListLock(qvrCCriticalSection& section) : lock(section) {
        static_cast<void>(lock.Lock(EImageCacheManager::ListTimeoutMs));
    }

private:
    qvrCSingleLock lock;
};

void LogCache(int level, const std::string& text) {
    ELog::Log(level, EImageCacheManager::LogSource, text);
}

// A restore refused for lack of memory; only an important one has tried to free some.
void LogShortOfMemory(const std::string& fileName, long need, bool important) {
    LogCache(important ? ELog::LevelError : ELog::LevelWarning,
             qvrFormat("The cache manager failed to restore cached data (type: %s) from the file "
                       "system.\nFile:   %s\nReason: Not enough memory.",
                       important ? "important" : "discardable", fileName.c_str()));
    qvrTraceVerbose("*** ERROR[EImage::VirtualLoad()]: Can't load virtual file \"%s\": Not enough memory to "
                    "load a file of %ld bytes (%s) !\n",
                    fileName.c_str(), need,
                    important ? "memory-freeing HAS BEEN tried" : "no memory-freeing tried");
}

} // namespace

EImageCacheManager& EImageCacheManager::Get() {
    // Never destroyed: holders of static objects may die after it would.
    static EImageCacheManager* const manager = [] {
        auto* made = new EImageCacheManager;
        Install(made);
        return made;
    }();
    return *manager;
}

bool EImageCacheManager::FreeMemory(long bytes) {
    ListLock list(listSection);
    long freed = 0;
    for (EImage* entry = oldest; entry;) {
        EImage* newer = LinksOf(*entry).newer;
        freed += FreeMemoryImageData(*entry);
        if (bytes != 0 && freed > bytes) {
            LogCache(
                ELog::LevelNotice,
                qvrFormat("The cache manager has successfully made %ld bytes\nphysical memory available.",
                          bytes));
            return true;
        }
        entry = newer;
    }
    return freed > 0;
}

long EImageCacheManager::FreeMemoryImageData(EImage& holder) {
    const EImageData* picture = PeekData(holder);
    if (!picture) return 0;
    const long amount = EImageData::MemoryNeed(picture->GetSize());
    EImageCacheLinks& links = LinksOf(holder);
    if ((holder.GetFlags() & EImage::Important) && EPrefsEImage::cacheVirtual()) {
        qvrTraceVerbose("*** NOTE[EImage::FreeMemoryImageData()]: Starting to put virtual data to disk.\n");
        links.virtualFile = TokenOf(holder);
        if (!VirtualSave(links.virtualFile, picture)) {
            links.virtualFile = 0;
            return 0;
        }
    } else if (!(holder.GetFlags() & EImage::Discardable)) {
        return 0;
    } else {
        qvrTraceVerbose("*** NOTE[EImage::FreeMemoryImageData()]: Discarding memory.\n");
        links.virtualFile = 0;
    }
    // The holder keeps the picture's size while the picture is gone.
    TakeData(holder).reset();
    Unlink(holder);
    return amount;
}

bool EImageCacheManager::Restore(EImage& holder) {
    EImageCacheLinks& links = LinksOf(holder);
    {
        ListLock list(listSection);
        Unlink(holder);
    }
    // Out of the list the holder is ours alone: its section is held.
    if (PeekData(holder) || !links.virtualFile) return true;
    std::unique_ptr<EImageData> picture = VirtualLoad(links.virtualFile, true);
    if (!picture) return false;
    PutData(holder, std::move(picture));
    links.virtualFile = 0;
    return true;
}

void EImageCacheManager::Release(EImage& holder) {
    ListLock list(listSection);
    // Listed already when another lock of this thread released it before.
    Unlink(holder);
    LinksOf(holder).virtualFile = 0;
    if (PeekData(holder) && holder.GetFlags() != 0) LinkNewest(holder);
}

void EImageCacheManager::Forget(EImage& holder) {
    unsigned long virtualFile = 0;
    {
        ListLock list(listSection);
        Unlink(holder);
        virtualFile = LinksOf(holder).virtualFile;
    }
    if (virtualFile) VirtualDelete(virtualFile);
}

long EImageCacheManager::AvailableMemory() {
    std::uint32_t reserve = 0;
    bool physicalOnly = true;
    if (!EPrefsEImage::cacheOn(reserve, physicalOnly)) return Unlimited;
    EMemoryStatus status;
    // Without figures nothing is refused for lack of memory.
    if (!doQueryMemoryStatus(status)) return Unlimited;
    // The reserve is taken off as it stands, as a number of bytes.
    const long available =
        status.availablePhysical + (physicalOnly ? 0 : status.availablePageFile) - static_cast<long>(reserve);
    return available > 0 ? available : 0;
}

bool EImageCacheManager::doQueryMemoryStatus(EMemoryStatus& status) {
    std::ifstream memInfo("/proc/meminfo");
    bool physicalFound = false;
    bool pageFileFound = false;
    for (std::string line; std::getline(memInfo, line);) {
        physicalFound = ParseMemInfoLine(line, "MemAvailable", status.availablePhysical) || physicalFound;
        pageFileFound = ParseMemInfoLine(line, "SwapFree", status.availablePageFile) || pageFileFound;
    }
    return physicalFound && pageFileFound;
}

unsigned long EImageCacheManager::TokenOf(const EImage& holder) {
    return static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(&holder));
}

std::string EImageCacheManager::VirtualFileName(unsigned long token) {
    return EEnvironment::PathPlusFile(CacheDirectory(),
                                      qvrFormat("imgtmp_%08lx.%s", token, VirtualExtension));
}

bool EImageCacheManager::VirtualSave(unsigned long token, const EImageData* picture) {
    if (!token || !picture) return false;
    const std::string fileName = VirtualFileName(token);
    // A directory that can't be made shows as the file's failure below.
    EEnvironment::EnsureDirectoryPath(CacheDirectory());
    EImageFileResult result;
    if (EImageFileFormat::Save(*picture, fileName, result)) {
        LogCache(ELog::LevelNotice, "Image data cached.");
        return true;
    }
    LogCache(ELog::LevelError, qvrFormat("The cache manager failed to cache image data to the file "
                                         "system.\nFile:   %s\nReason: %s.",
                                         fileName.c_str(), result.text.c_str()));
    return false;
}

std::unique_ptr<EImageData> EImageCacheManager::VirtualLoad(unsigned long token, bool important) {
    if (!token) return nullptr;
    const std::string fileName = VirtualFileName(token);
    EImageFileInfo info;
    EImageFileResult result;
    if (!EImageFileFormat::QueryFileInfo(fileName, info, result)) {
        LogCache(ELog::LevelError, qvrFormat("The cache manager failed to restore cached data from the file "
                                             "system.\nFile:   %s\nReason: %s",
                                             fileName.c_str(), result.text.c_str()));
        qvrTraceVerbose("*** WARNING[EImage::VirtualLoad()]: Failed to load virtual image \"%s\": %s.\n",
                        fileName.c_str(), result.text.c_str());
        return nullptr;
    }
    return ReadVirtualFile(fileName, EImageData::MemoryNeed(info.size), important);
}

std::unique_ptr<EImageData> EImageCacheManager::ReadVirtualFile(const std::string& fileName, long need,
                                                                bool important) {
    if (AvailableMemory() < need) {
        // Memory is freed for an important picture only.
        if (!important || !FreeMemory(need + 10000)) {
            LogShortOfMemory(fileName, need, important);
            return nullptr;
        }
        if (AvailableMemory() < need) return nullptr;
    }
    EImageFileResult result;
    std::unique_ptr<EImageData> picture = EImageFileFormat::Load(fileName, CRect{0, 0, 0, 0}, result);
    if (!picture) {
        LogCache(ELog::LevelWarning,
                 qvrFormat("The cache manager failed to restore cached data from the file "
                           "system.\nFile:   %s\nReason: Not enough memory.",
                           fileName.c_str()));
        qvrTraceVerbose("*** ERROR[EImage::VirtualLoad()]: Can't load file \"%s\": %s.\n", fileName.c_str(),
                        result.text.c_str());
    }
    return picture;
}

bool EImageCacheManager::VirtualDelete(unsigned long token) {
    if (!token) return false;
    const std::string fileName = VirtualFileName(token);
    std::error_code error;
    if (!std::filesystem::remove(fileName, error))
        qvrTraceVerbose("*** ERROR[EImage::VirtualDelete()]: Can't remove virtual file \"%s\": %s.\n",
                        fileName.c_str(), error ? error.message().c_str() : "No such file");
    return true;
}

void EImageCacheManager::LinkNewest(EImage& holder) {
    EImageCacheLinks& links = LinksOf(holder);
    links.older = newest;
    links.newer = nullptr;
    if (newest)
        LinksOf(*newest).newer = &holder;
    else
        oldest = &holder;
    newest = &holder;
    links.listed = true;
}

void EImageCacheManager::Unlink(EImage& holder) {
    EImageCacheLinks& links = LinksOf(holder);
    if (!links.listed) return;
    if (links.older)
        LinksOf(*links.older).newer = links.newer;
    else
        oldest = links.newer;
    if (links.newer)
        LinksOf(*links.newer).older = links.older;
    else
        newest = links.older;
    links.newer = links.older = nullptr;
    links.listed = false;
}
