#pragma once
// The edits of one property dialog as one step of the undo chain: the
// element's name, values and own data are taken when the dialog opens; the
// dialog's fields change the element at once, and at the end the session
// either enters the whole change as one action or puts everything back.
// Main thread only.

#include "foundation/qvrCTreeData.h"

#include <memory>
#include <string>

class iElement;

class hPropertySession {
public:
    explicit hPropertySession(iElement& element);

    // Enters the change since the start as one action; false when nothing changed.
    bool Commit();
    // Puts the element back as it was at the start.
    void Cancel();

private:
    iElement& Element;
    std::string OldName;
    std::unique_ptr<qvrCTreeData> Before;
};
