#include "imaging/EImage.h"

#include "imaging/EImageCache.h"
#include "imaging/EImageData.h"

EImage::EImage(unsigned cacheFlags) : flags(cacheFlags) {}

EImage::~EImage() {
    if (EImageCache* cache = EImageCache::Get()) cache->Forget(*this);
}

bool EImage::Clear() {
    EImageLock scope(*this);
    if (!scope.Lock(-1)) return false;
    scope.SetData(nullptr);
    return true;
}

EImageLock::EImageLock(EImage& holder) : section(holder.lock), image(&holder) {}

EImageLock::~EImageLock() {
    Unlock(true);
}

bool EImageLock::Lock(long timeout) {
    if (nesting == 0) {
        if (!section.Lock(timeout < 0 ? qvrInfinite : static_cast<unsigned long>(timeout))) return false;
        EImageCache* cache = EImageCache::Get();
        if (cache && !cache->Restore(*image)) {
            section.Unlock();
            return false;
        }
    }
    ++nesting;
    return true;
}

void EImageLock::Unlock(bool force) {
    if (nesting == 0) return;
    --nesting;
    if (nesting > 0 && !force) return;
    if (EImageCache* cache = EImageCache::Get()) cache->Release(*image);
    section.Unlock();
    nesting = 0;
}

EImageData* EImageLock::GetData() const {
    return IsLocked() ? image->data.get() : nullptr;
}

std::unique_ptr<EImageData> EImageLock::SetData(std::unique_ptr<EImageData> picture) {
    if (!IsLocked()) return picture;
    if (picture) image->size = picture->GetSize();
    std::swap(image->data, picture);
    return picture;
}
