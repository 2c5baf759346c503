#include "objects/hPlaybackKeys.h"

#include "foundation/qvrCRegKey.h"
#include "objects/isrcSequence.h"

#include <algorithm>

namespace {

qvrCRegKey openSettings() {
    qvrCRegKey key;
    key.Open(qvrCRegKey::Root(), hPlaybackSettings::RegistryKey);
    return key;
}

// Writes the keys of one playback from `from` to `to` starting at `position`,
// which then stands one frame past the playback.
void playOnce(iActiveValue& value, long& position, long from, long to) {
    value.SetKey(position, static_cast<double>(from), true, false, false);
    if (to != from) {
        position += std::abs(to - from);
        value.SetKey(position, static_cast<double>(to), true, false, false);
    }
    ++position;
}

void playback(iActiveValue& value, long& position, hPlaybackStyle style, long first, long last) {
    const bool backwardFirst =
        style == hPlaybackStyle::Backward || style == hPlaybackStyle::BackwardThenForward;
    const bool both =
        style == hPlaybackStyle::ForwardThenBackward || style == hPlaybackStyle::BackwardThenForward;
    if (backwardFirst)
        playOnce(value, position, last, first);
    else
        playOnce(value, position, first, last);
    if (!both) return;
    if (backwardFirst)
        playOnce(value, position, first, last);
    else
        playOnce(value, position, last, first);
}

void pause(iActiveValue& value, long& position, const hPlaybackSettings& settings, long first, long last) {
    if (settings.loopPause == 0) return;
    long shown = first - 1;
    if (settings.loopPauseMode == hLoopPauseMode::FirstImage) shown = first;
    if (settings.loopPauseMode == hLoopPauseMode::LastImage) shown = last;
    value.SetKey(position++, static_cast<double>(shown), true, false, false);
    if (settings.loopPause <= 1) return;
    position += settings.loopPause - 2;
    value.SetKey(position++, static_cast<double>(shown), true, false, false);
}

} // namespace

hPlaybackSettings hPlaybackSettings::Load() {
    const qvrCRegKey key = openSettings();
    hPlaybackSettings settings;
    settings.picBefore = key.GetLong("PicBefore", 1) != 0;
    settings.picPast = key.GetLong("PicPast", 1) != 0;
    settings.loopPause = std::clamp(key.GetLong("LoopPause", 0), 0L, 1000000L);
    const long repeat = key.GetLong("LoopRepeat", 1);
    settings.loopRepeat = repeat == 0 ? 1 : std::clamp(repeat, 1L, 100000L);
    settings.start = std::clamp(key.GetLong("Start", 0), 0L, 1000000L);
    settings.loop = key.GetLong("Loop", 0) != 0;
    settings.style = static_cast<hPlaybackStyle>(std::clamp(key.GetLong("Style", 0), 0L, 3L));
    settings.loopPauseMode = static_cast<hLoopPauseMode>(std::clamp(key.GetLong("LoopPauseMode", 0), 0L, 2L));
    return settings;
}

void hPlaybackSettings::Save() const {
    qvrCRegKey key = openSettings();
    key.SetLong("PicBefore", picBefore ? 1 : 0);
    key.SetLong("PicPast", picPast ? 1 : 0);
    key.SetLong("LoopPause", loopPause);
    key.SetLong("LoopRepeat", loopRepeat);
    key.SetLong("Start", start);
    key.SetLong("Overwrite", overwrite);
    key.SetLong("Loop", loop ? 1 : 0);
    key.SetLong("Style", static_cast<long>(style));
    key.SetLong("LoopPauseMode", static_cast<long>(loopPauseMode));
}

void MakePlaybackKeys(isrcSequence& sequence, const hPlaybackSettings& settings) {
    iActiveValue& value = sequence.GetFlowControl();
    const long first = sequence.GetFirstUsedFile();
    const long last = sequence.GetLastUsedFile();
    long position = settings.start;
    if (settings.picBefore && settings.start != 0)
        value.SetSingleKey(settings.start - 1, static_cast<double>(first - 1), false);
    else
        value.SetSingleKey(settings.start, static_cast<double>(first), false);
    playback(value, position, settings.style, first, last);
    for (long round = 0; settings.loop && round < settings.loopRepeat; ++round) {
        pause(value, position, settings, first, last);
        playback(value, position, settings.style, first, last);
    }
    if (settings.picPast) value.SetKey(position, static_cast<double>(first - 1), true, false, false);
    value.ValueChanged(nullptr);
    settings.Save();
}
