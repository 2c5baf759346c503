#pragma once
// The editing rules of a footage object's property page, apart from the
// window: each field is checked when it loses the focus; a bad entry shows its
// complaint in a message box and keeps the object as it was. A range outside
// the available numbers is ignored without a word. The page also carries out
// the object's "Change footage..." once the user has chosen files.
// Main thread only.

#include "objects/hPropertyPage.h"

#include <string>
#include <vector>

class EFileGroupSetup;
class iProject;
class isrcSequence;

class hSequenceProperties : public hPropertyPage {
public:
    explicit hSequenceProperties(isrcSequence& sequence);

    // Each returns true when the text was accepted and applied.
    // The first and last number to use, with a comma between them.
    bool CommitRange(const std::string& text);
    bool CommitStartFrame(const std::string& text);
    bool CommitFramesPerImage(const std::string& text);
    // Moves the start frame so that the last image shows at the frame entered.
    bool CommitEndFrame(const std::string& text);
    // The button that takes every available number.
    void UseWholeRange();

    // "Change footage...": the groups of files that the user chose, each a
    // numbered sequence or a single image. Every group is examined first: its
    // first file must tell its size and, if the group uses proxies, give its
    // proxy. Then the object takes the first group, and each further group
    // becomes a copy of the object with that group, which joins the project
    // beside it and becomes a parent of each of the object's children that has
    // room for one more. False, with a complaint and nothing changed, when a
    // group fails or the copies would have no project to go to.
    bool ChangeFootage(std::vector<EFileGroupSetup> groups);

    // "first - last" of the used files, or "No source files".
    std::string GetFilesText() const;
    std::string GetSizeText() const;
    // The label of the frames-per-image field: a still image has a duration.
    std::string GetFramesLabel() const;

private:
    // A whole number, or the complaint that it isn't one.
    static bool readNumber(const std::string& text, long& value);
    // Reads the size of the group's first file into the group; makes that
    // file's proxy when the group uses proxies.
    static bool examineFiles(EFileGroupSetup& group);
    // The copy for a further group, the `place`-th, set down that many grid steps beside the object.
    void addCopy(iProject& project, const EFileGroupSetup& group, long place);

    isrcSequence& Sequence;
};
