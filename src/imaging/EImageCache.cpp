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

void EImageCache::Install(EImageCache* cache) {
    installedCache.store(cache, std::memory_order_release);
}

std::unique_ptr<EImageData> EImageCache::TakeData(EImage& holder) {
    return std::move(holder.data);
}

void EImageCache::PutData(EImage& holder, std::unique_ptr<EImageData> picture) {
    if (picture) holder.size = picture->GetSize();
    holder.data = std::move(picture);
}
