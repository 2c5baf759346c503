#pragma once
// The logic of the dialog "Sequence: Make playback keys": it writes a whole
// series of keys into a footage object's flow control, so that the used
// images play forward, backward or both, optionally looped with pauses and
// framed by empty pictures. The dialog's entries are kept in the per-user
// settings under "Dialogs\Sequence\Playback". Main thread only.

class isrcSequence;

// The playback styles in the order of the dialog's list.
enum class hPlaybackStyle : long {
    Forward = 0,
    Backward = 1,
    ForwardThenBackward = 2,
    BackwardThenForward = 3
};
// What the loop shows during its pause, in the order of the dialog's list.
enum class hLoopPauseMode : long { EmptyImage = 0, FirstImage = 1, LastImage = 2 };

struct hPlaybackSettings {
    static constexpr const char* RegistryKey = "Dialogs\\Sequence\\Playback";

    bool picBefore = true; // "Before start, display empty image"
    bool picPast = true;   // "Past end, display empty image"
    long loopPause = 0;    // frames
    long loopRepeat = 1;
    long start = 0;
    long overwrite = 1;
    bool loop = false;
    hPlaybackStyle style = hPlaybackStyle::Forward;
    hLoopPauseMode loopPauseMode = hLoopPauseMode::EmptyImage;

    // The dialog's entries as last stored, in their ranges; "Overwrite" is 1 on every opening.
    static hPlaybackSettings Load();
    void Save() const;
};

// Replaces the flow control's keys by the playback the settings describe, and stores the settings.
void MakePlaybackKeys(isrcSequence& sequence, const hPlaybackSettings& settings);
