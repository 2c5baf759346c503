#pragma once
// The keys of an animated value: frames in strictly ascending order, each with
// a value and a selection mark, and the piecewise linear curve through them.
// Storage grows and shrinks in steps of GrowBy keys. A list has no lock: it is
// read by render threads only while nobody edits it (the owning element's rules).

#include "model/iBase.h"

#include <vector>

struct iActiveKey {
    long frame = 0;
    double value = 0.0;
    bool selected = false;
    bool operator==(const iActiveKey&) const = default;
};

class iActiveKeyList {
public:
    static constexpr long GrowBy = 20;

    long GetCount() const { return static_cast<long>(Keys.size()); }
    bool IsEmpty() const { return Keys.empty(); }
    bool IsValidIndex(long index) const { return index >= 0 && index < GetCount(); }
    long GetCapacity() const { return static_cast<long>(Keys.capacity()); }
    // The key at a valid index.
    const iActiveKey& operator[](long index) const { return Keys[index]; }
    iActiveKey& operator[](long index) { return Keys[index]; }
    const iActiveKey& GetFirst() const { return Keys.front(); }
    const iActiveKey& GetLast() const { return Keys.back(); }

    // Gives an empty list the key (frame 0, value 0.0, not selected).
    void EnsureKey();
    // Inserts before `index`; the caller keeps the frames ascending.
    void Insert(long index, const iActiveKey& key);
    // Removes `count` keys from `index` on and returns surplus storage.
    void Remove(long index, long count = 1);
    void RemoveAll();
    // Hands back storage beyond GrowBy unused keys.
    void ReturnSurplus();

    // The first key at or beyond `frame`; the count if there is none.
    long IndexAtOrAfter(long frame) const;
    // The last key at or before `frame`; 0 if there is none.
    long IndexAtOrBefore(long frame) const;
    // The curve at `frame`: held flat before the first and after the last key.
    double Interpolate(long frame) const;
    // From the previous key's frame (or 0) to the next key's frame (or the open end).
    EFrameRange GetAffectedRange(long index) const;

private:
    std::vector<iActiveKey> Keys;
};
