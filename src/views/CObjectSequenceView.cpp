#include "views/CObjectSequenceView.h"

#include "objects/isrcSequence.h"
#include "views/CViewText.h"

std::string CObjectSequenceView::GetFileLine() const {
    auto* footage = dynamic_cast<isrcSequence*>(GetElement());
    std::string file =
        footage ? footage->GetFileForFrame(GetFrame(), isrcSequence::WithDirectory::No) : std::string();
    if (file.empty()) file = EStringTable::Load(text_no_image);
    return EStringTable::Load(text_displaying) + file;
}
