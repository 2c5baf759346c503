#pragma once
// The interface through which pictures and their holders reach the memory
// manager that pages them out. Picture allocation asks it to give memory
// back before it gives up; a holder's lock asks it to bring the pixels back
// and to keep its hands off the holder while locked; an unlock hands the
// holder to it again. Until a manager is installed nothing is paged and no
// memory is freed.
//
// Install the manager once at start-up, before any other thread runs; the
// manager's own operations must be safe from every thread that renders.

#include <memory>

class EImage;
class EImageData;

// What a manager keeps in each holder: the holder's place in its list of
// holders that may be paged out, and the token of its disk copy (0: none).
// Only the installed manager touches it, under its own lock.
struct EImageCacheLinks {
    EImage* newer = nullptr;
    EImage* older = nullptr;
    bool listed = false;
    unsigned long virtualFile = 0;
};

class EImageCache {
public:
    virtual ~EImageCache() = default;

    // Gives memory back, at least `bytes` of it; 0 means all that can go.
    // True if anything was freed.
    virtual bool FreeMemory(long bytes) = 0;
    // The holder's section has just been taken: make its pixels present and
    // take the holder out of reach of eviction. False makes the lock fail.
    virtual bool Restore(EImage& holder) = 0;
    // The holder's last lock is about to be released: it may be evicted from now on.
    virtual void Release(EImage& holder) = 0;
    // The holder is being destroyed: forget it and remove its disk copy, if any.
    virtual void Forget(EImage& holder) = 0;

    // The installed manager, or null. The caller keeps ownership.
    static EImageCache* Get();
    // Returns the manager that was installed before.
    static EImageCache* Install(EImageCache* cache);

protected:
    // Takes the picture out of a holder that is not locked; the holder keeps its size.
    static std::unique_ptr<EImageData> TakeData(EImage& holder);
    // Gives a holder its picture back (from disk, for instance) and takes the picture's size.
    static void PutData(EImage& holder, std::unique_ptr<EImageData> picture);
    // The holder's picture, left where it is; null when it has none.
    static const EImageData* PeekData(const EImage& holder);
    static EImageCacheLinks& LinksOf(EImage& holder);
};
