#include "imaging/EImageCache.h"

#include "imaging/EImage.h"
#include "imaging/EImageData.h"

#include <atomic>

namespace {
std::atomic<EImageCache*> installedCache{nullptr};
} // namespace

EImageCache* EImageCache::Get() {
    return installedCache.load(std::memory_order_acquire);
}

EImageCache* EImageCache::Install(EImageCache* cache) {
    return installedCache.exchange(cache, std::memory_order_acq_rel);
}

std::unique_ptr<EImageData> EImageCache::TakeData(EImage& holder) {
    return std::move(holder.data);
}

void EImageCache::PutData(EImage& holder, std::unique_ptr<EImageData> picture) {
    if (picture) holder.size = picture->GetSize();
    holder.data = std::move(picture);
}

const EImageData* EImageCache::PeekData(const EImage& holder) {
    return holder.data.get();
}

EImageCacheLinks& EImageCache::LinksOf(EImage& holder) {
    return holder.cacheLinks;
}
