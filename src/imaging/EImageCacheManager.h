#pragma once
// The image cache manager: keeps one list of every holder that has a picture,
// has cache flags and isn't locked, in the order in which they were released.
// When memory runs short it walks that list from the oldest end and writes
// each picture to a quick file below the cache directory ("important"
// holders, while the preferences allow the disk) or throws it away
// ("discardable" holders). A holder whose picture is on disk gets it back when
// it is next locked.
//
// Safe from every thread. One critical section guards the list; it is taken
// after a holder's own section, never before, and a wait for it lasts at most
// 10000 ms. Eviction runs under the list's section only: a listed holder is
// not locked by anybody, and a thread that locks it must take the list's
// section to take it out of the list. Failures are results and log entries;
// nothing here throws.

#include "foundation/qvrCSyncObjects.h"
#include "imaging/EImageCache.h"

#include <memory>
#include <string>

// What the system tells of its memory, in bytes.
struct EMemoryStatus {
    long availablePhysical = 0;
    long availablePageFile = 0;
};

class EImageCacheManager : public EImageCache {
public:
    // What AvailableMemory answers when memory isn't watched.
    static constexpr long Unlimited = 0x7fffffff;
    static constexpr unsigned long ListTimeoutMs = 10000;
    // The log file's context of the manager's entries.
    static constexpr const char* LogSource = "Image cache manager";

    EImageCacheManager() = default;
    ~EImageCacheManager() override = default;
    EImageCacheManager(const EImageCacheManager&) = delete;
    EImageCacheManager& operator=(const EImageCacheManager&) = delete;

    // The program's manager. It is installed while the program loads and lives
    // as long as the process, so holders may die after everything else.
    static EImageCacheManager& Get();

    bool FreeMemory(long bytes) override;
    bool Restore(EImage& holder) override;
    void Release(EImage& holder) override;
    void Forget(EImage& holder) override;

    // Bytes that may still be taken: free physical memory, plus the free page
    // file unless the preferences count physical memory only, less the
    // reserve; Unlimited when memory isn't watched.
    long AvailableMemory();

    // The token of a holder, from which its disk file takes its name.
    static unsigned long TokenOf(const EImage& holder);
    // The disk file of a token: "imgtmp_%08lx.qts" in the cache directory.
    static std::string VirtualFileName(unsigned long token);
    // Writes the picture to the token's file; false for a null token or picture.
    bool VirtualSave(unsigned long token, const EImageData* picture);
    // Reads the token's file back; null when it can't be read or memory is
    // short. For an important picture memory is freed first if need be.
    std::unique_ptr<EImageData> VirtualLoad(unsigned long token, bool important);
    // Removes the token's file; true for any token but 0.
    bool VirtualDelete(unsigned long token);

protected:
    // Reads the system's memory figures; false when there are none.
    virtual bool doQueryMemoryStatus(EMemoryStatus& status);

private:
    // Pages one listed holder out or throws its picture away, as its flags and
    // the preferences say; the bytes that went. Runs under the list's section.
    long FreeMemoryImageData(EImage& holder);
    std::unique_ptr<EImageData> ReadVirtualFile(const std::string& fileName, long need, bool important);
    // Both run under the list's section.
    void LinkNewest(EImage& holder);
    void Unlink(EImage& holder);

    qvrCCriticalSection listSection;
    EImage* newest = nullptr;
    EImage* oldest = nullptr;
};
