#pragma once
// EImage holds the picture that an element rendered last, and EImageLock is
// the scope through which render code reaches it. While no lock is held the
// image cache may page the picture to disk or throw it away, according to the
// holder's flags; a lock brings it back or fails. Code that finds no data
// after locking renders again.
//
// A holder is safe from several threads: its re-entrant section, taken through
// EImageLock, serialises everybody who touches it. One EImageLock object
// belongs to one thread; its nesting count is its own, so two lock objects on
// one holder in one thread each take the section.

#include "foundation/qvrCSyncObjects.h"
#include "foundation/qvrGeometry.h"
#include "imaging/EImageCache.h"

#include <memory>

class EImageData;

class EImage {
public:
    enum Flags : unsigned {
        Discardable = 1, // the picture can be computed again and may be thrown away
        Important = 2    // the picture must go to disk before it is dropped
    };

    // Flags 0 keep the holder away from the cache altogether.
    explicit EImage(unsigned cacheFlags);
    ~EImage();
    EImage(const EImage&) = delete;
    EImage& operator=(const EImage&) = delete;

    unsigned GetFlags() const { return flags; }
    // The size of the last picture given, kept while the pixels are on disk.
    // Read it while locked.
    CSize GetSize() const { return size; }
    // Locks without a time limit and drops the picture; false if the lock failed.
    bool Clear();

private:
    friend class EImageLock;
    friend class EImageCache;

    qvrCCriticalSection lock;
    std::unique_ptr<EImageData> data;
    CSize size;
    const unsigned flags;
    EImageCacheLinks cacheLinks;
};

class EImageLock {
public:
    // Nothing is locked yet.
    explicit EImageLock(EImage& holder);
    // Unlocks with force.
    ~EImageLock();
    EImageLock(const EImageLock&) = delete;
    EImageLock& operator=(const EImageLock&) = delete;

    // Takes the holder's section (timeout in milliseconds, -1 for ever) on the
    // first call and makes the pixels present; later calls only count. False
    // when the time passed or the pixels could not be brought back.
    bool Lock(long timeout);
    // Counts down; at 0, or with force, hands the holder back to the cache and
    // releases the section.
    void Unlock(bool force);
    bool IsLocked() const { return nesting > 0; }

    // The holder's picture, or null when there is none or nothing is locked.
    EImageData* GetData() const;
    // Gives the holder a new picture (null allowed) and hands back the old one,
    // which the caller keeps or lets go. Only while locked: otherwise the given
    // picture comes back untouched.
    std::unique_ptr<EImageData> SetData(std::unique_ptr<EImageData> picture);

private:
    qvrCSingleLock section;
    EImage* image;
    long nesting = 0;
};
