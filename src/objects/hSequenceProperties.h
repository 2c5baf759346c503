#pragma once
// The editing rules of a footage object's property page, apart from the
// window: each field is checked when it loses the focus; a bad entry shows its
// complaint in a message box and keeps the object as it was. A range outside
// the available numbers is ignored without a word. Main thread only.

#include <string>

class isrcSequence;

class hSequenceProperties {
public:
    explicit hSequenceProperties(isrcSequence& sequence) : Sequence(sequence) {}

    // Each returns true when the text was accepted and applied.
    bool CommitName(const std::string& text);
    // The first and last number to use, with a comma between them.
    bool CommitRange(const std::string& text);
    bool CommitStartFrame(const std::string& text);
    bool CommitFramesPerImage(const std::string& text);
    // Moves the start frame so that the last image shows at the frame entered.
    bool CommitEndFrame(const std::string& text);
    // The button that takes every available number.
    void UseWholeRange();

    // "first - last" of the used files, or "No source files".
    std::string GetFilesText() const;
    std::string GetSizeText() const;
    // The label of the frames-per-image field: a still image has a duration.
    std::string GetFramesLabel() const;

private:
    // A whole number, or the complaint that it isn't one.
    static bool readNumber(const std::string& text, long& value);

    isrcSequence& Sequence;
};
