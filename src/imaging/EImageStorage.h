#pragma once
// The one place through which footage reaches image files. It answers the
// size of a file from an information cache that reads each file's header once,
// and loads a picture either from the original or through its proxy: a
// reduced quick file of the picture in the proxy directory, made on first
// use, reused afterwards, and made anew when it is older than the original,
// of the wrong size or unreadable. Callers ask for a rectangle of the
// original and get back the rectangle that was really delivered, which a
// proxy may widen to its own grid. The proxy directory is kept small by the
// clean-up rules of the settings.
//
// Safe from several threads: one critical section guards the cache, the
// settings and every operation from start to end, so render threads that
// load footage take turns here. Failures come back as results and texts for
// the user's log; file and platform errors never leave an operation.

#include "foundation/qvrCSyncObjects.h"
#include "foundation/qvrGeometry.h"
#include "imaging/EImageFileFormat.h"
#include "imaging/EProxySettings.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

class EImageData;

// Whether a picture comes from the original file or from its proxy.
enum class EImageSource { Original, Proxy };
// Whether a size query also makes the file's proxy, if there is none yet.
enum class EProxyCreation { No, Yes };
// Whether the user confirms a deletion of proxy files first.
enum class EProxyConfirmation { No, Yes };

// What a footage object asks of one file.
struct EImageLoadRequest {
    CRect Rect; // the part wanted, in the pixels of the original
    EImageSource Source = EImageSource::Original;
    // The size in which the picture is wanted; an empty size keeps the size
    // in which it was read.
    CSize SizeHint;
};

// What the proxy directory holds.
struct EProxyDirectoryUsage {
    std::uint64_t bytes = 0;
    std::uint64_t freeBytes = 0; // on the proxy directory's file system
    long fileCount = 0;
};

class EImageStorage {
public:
    // What the storage knows of one file.
    struct ImageFileInfo {
        // The proxy of a file, once it has been checked or made.
        struct ProxyInfo {
            std::string fileName; // relative to the proxy directory
            std::uint32_t shrinkFactor = 1;

            // The proxy's path below the proxy directory: the source's
            // directory made relative, then "pxy(<name>)_<w>x<h>.qts".
            static std::string GenerateFileName(const std::string& directory, const std::string& name,
                                                CSize proxySize);
        };

        std::string directory;
        std::string name;
        CSize size; // of the original
        EImageFileFormat* format = nullptr;
        std::unique_ptr<ProxyInfo> proxy; // null until the first proxy access

        std::string GetPath() const;
    };

    static EImageStorage& Get();

    // The size of the original. With EProxyCreation::Yes the proxy is made
    // (or checked) too, if that wasn't done yet.
    bool QueryImageInfo(const std::string& directory, const std::string& name, EProxyCreation makeProxy,
                        CSize& size, EImageFileResult& result);
    // Loads the request's part of the file. `rect` receives the part of the
    // original that the picture really shows.
    std::unique_ptr<EImageData> LoadImage(const std::string& directory, const std::string& name,
                                          const EImageLoadRequest& request, CRect& rect,
                                          EImageFileResult& result);

    // Deletes every proxy file; false when some could not go.
    bool EmptyProxyDir(EProxyConfirmation confirmation);
    // Deletes the proxy files that the clean-up rules of the settings name.
    bool FilterProxyDir(EProxyConfirmation confirmation);
    // Copies the proxies to the new directory, makes it the proxy directory
    // and deletes the old files. False, with the old directory kept, when the copy fails.
    bool MoveProxyDir(const std::string& newPath);
    // What the proxy directory holds; false when it could not be read completely.
    bool QueryProxyDirSize(EProxyDirectoryUsage& usage);
    // Forgets every file's information and proxy; they are checked again on the next access.
    void EmptyInfoCache();
    long GetInfoCacheCount();

    // Reads the settings, applies their ranges, makes sure the proxy directory
    // can be used (falling back to the default one and then the temporary
    // directory) and stores the repairs at once.
    void LoadSettings();
    void SaveSettings();
    EProxySettings GetSettings();
    // Takes new settings as they are (the settings page calls LoadSettings after saving them).
    void SetSettings(const EProxySettings& newSettings);
    std::string GetProxyDirectory();
    // Saves the settings and cleans up the proxy directory as they ask; the end of the component.
    void OnExit();
    // The proxy directory stays as it is at exit, whatever the settings ask:
    // for a process that shares it with others still at work.
    void KeepProxyDirAtExit() { keepProxyDirAtExit = true; }

private:
    using InfoKey = std::pair<std::string, std::string>;

    EImageStorage() = default;

    ImageFileInfo* GetImageFileInfo(const std::string& directory, const std::string& name,
                                    EImageFileResult& result);
    // GetImageFileInfo for a public operation, which a failure names on the debug channel.
    ImageFileInfo* FindImageFileInfo(const char* operation, const std::string& directory,
                                     const std::string& name, EImageFileResult& result);
    std::unique_ptr<EImageData> LoadProxy(ImageFileInfo& info, CRect& rect, EImageFileResult& result,
                                          bool retry);
    // Makes and saves the proxy unless a usable one exists; the fresh picture, if one was made, goes to
    // `fresh`.
    bool PrepareProxy(ImageFileInfo& info, bool retry, std::unique_ptr<EImageData>& fresh,
                      EImageFileResult& result);
    std::unique_ptr<EImageData> CreateProxy(const ImageFileInfo& info, CSize proxySize,
                                            EImageFileResult& result);
    bool SaveProxy(const EImageData& picture, const std::string& proxyPath, const ImageFileInfo& info,
                   EImageFileResult& result);
    // Whether a proxy file of the size exists at the path and is newer than the original.
    bool IsUsableProxy(const std::string& proxyPath, CSize proxySize, const ImageFileInfo& info,
                       bool& exists);
    std::string ProxyPath(const std::string& fileName) const;
    // Makes the directory if need be; false with a reason when it can't be used.
    static bool MakeUsableDirectory(const std::string& path, long& code, std::string& reason);
    void RepairProxyDirectory();
    bool filterProxyDir(EProxyConfirmation confirmation);

    qvrCCriticalSection lock;
    std::map<InfoKey, std::unique_ptr<ImageFileInfo>> cache;
    EProxySettings settings;
    bool keepProxyDirAtExit = false;
};
