#pragma once
// The editing rules of a standard saver's pages, apart from the windows: the
// property page (name, output size, the source's size) and the output page
// of the setup dialog (stream, file and the stream's setup text). A bad entry
// shows its complaint in a message box and leaves the saver as it was; the
// front end puts the focus back on the field. The output page edits its own
// copy of stream, file and setup text, and gives them to the saver when it
// may be left. Main thread only.

#include "objects/hPropertyPage.h"

#include <string>

class EImageOutputStream;
class isvrSaver;

class hSaverProperties : public hPropertyPage {
public:
    hSaverProperties(isvrSaver& saver, long frame);

    // --- The property page: the name (see hPropertyPage), the output size and the source's size.
    // "WIDTH,HEIGHT", both at least 10; a change updates the saver's views.
    bool CommitSize(const std::string& text);
    std::string GetSizeText() const;
    // The source's size at the page's frame as " WIDTH,HEIGHT", or " --".
    std::string GetSourceSizeText() const;
    // Takes over the source's size; false, with a complaint, when it has none.
    bool CopySourceSize();

    // --- The output page.
    const EImageOutputStream* Stream;
    std::string FileName;
    std::string SetupText;

    // Checks the page and gives the saver its values; false with a complaint
    // (or silently, for a check without boxes) when it may not be left.
    bool LeaveOutputPage(bool silent);
    // The file dialog's filter for the stream; empty, with a complaint, without one.
    std::string GetBrowseFilter();
    // Lets the user choose the file; false when there is no stream or the user cancels.
    bool BrowseFile();
    // Edits the stream's setup; false when there is no stream, the stream has
    // no setup, or the dialog was cancelled or failed.
    bool EditSetup(void* parentWindow);

private:
    bool applySize(EImageSize size);
    // Complains when there is no stream.
    bool needStream();

    isvrSaver& Saver;
    const long Frame;
};
