#include "model/iActiveKeyList.h"

void iActiveKeyList::EnsureKey() {
    if (Keys.empty()) Insert(0, iActiveKey{});
}

void iActiveKeyList::Insert(long index, const iActiveKey& key) {
    if (Keys.size() == Keys.capacity()) Keys.reserve(Keys.capacity() + GrowBy);
    Keys.insert(Keys.begin() + index, key);
}

void iActiveKeyList::Remove(long index, long count) {
    Keys.erase(Keys.begin() + index, Keys.begin() + index + count);
    ReturnSurplus();
}

void iActiveKeyList::RemoveAll() {
    Keys.clear();
    ReturnSurplus();
}

void iActiveKeyList::ReturnSurplus() {
    if (GetCapacity() - GetCount() > GrowBy) Keys.shrink_to_fit();
}

long iActiveKeyList::IndexAtOrAfter(long frame) const {
    long index = 0;
    while (index < GetCount() && Keys[index].frame < frame)
        ++index;
    return index;
}

long iActiveKeyList::IndexAtOrBefore(long frame) const {
    long index = GetCount() - 1;
    while (index > 0 && Keys[index].frame > frame)
        --index;
    return index < 0 ? 0 : index;
}

double iActiveKeyList::Interpolate(long frame) const {
    if (Keys.empty()) return 0.0;
    long index = IndexAtOrAfter(frame);
    if (index == GetCount()) return Keys.back().value;
    const iActiveKey& after = Keys[index];
    if (index == 0 || after.frame == frame) return after.value;
    const iActiveKey& before = Keys[index - 1];
    return (static_cast<double>(frame - before.frame) * (after.value - before.value)) /
               static_cast<double>(after.frame - before.frame) +
           before.value;
}

EFrameRange iActiveKeyList::GetAffectedRange(long index) const {
    long first = index > 0 ? Keys[index - 1].frame : 0;
    long last = index + 1 < GetCount() ? Keys[index + 1].frame : EFrameRange::OpenEnd;
    return EFrameRange::FromTo(first, last);
}
