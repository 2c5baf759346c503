#include "objects/hMergerProperties.h"

#include "foundation/qvrString.h"
#include "objects/imodMerger.h"

hMergerProperties::hMergerProperties(imodMerger& merger, long frame)
    : hPropertyPage(merger, ObjectText::TextMergerNameEmpty), Merger(merger), Frame(frame) {}

std::array<std::string, 4> hMergerProperties::GetColumnTitles() {
    return {EStringTable::Load(ObjectText::TitleLayerSource), EStringTable::Load(ObjectText::TitleLayerX),
            EStringTable::Load(ObjectText::TitleLayerY), EStringTable::Load(ObjectText::TitleLayerOpacity)};
}

std::vector<hMergerRow> hMergerProperties::GetRows() const {
    std::vector<hMergerRow> rows;
    for (imodMergerLink* link = Merger.GetFirstLink(); link; link = link->GetNextLink()) {
        const std::string& source = link->GetParent()->GetName();
        if (link->IsBackground()) {
            const std::string position = EStringTable::Load(ObjectText::TextBackgroundPosition);
            rows.push_back(
                {source, position, position, EStringTable::Load(ObjectText::TextBackgroundOpacity)});
        } else {
            rows.push_back({source, valueText(link->GetXPosition()), valueText(link->GetYPosition()),
                            valueText(link->GetOpacity())});
        }
    }
    return rows;
}

std::string hMergerProperties::valueText(const iActiveValue& value) const {
    return qvrFormat(value.GetKeyCount() > 1 ? "%.2f*" : "%.2f", value.GetValue(Frame));
}

imodMergerLink* hMergerProperties::linkAt(size_t row) const {
    imodMergerLink* link = Merger.GetFirstLink();
    for (; link && row > 0; --row)
        link = link->GetNextLink();
    return link;
}

imodMergerLink* hMergerProperties::layerAt(size_t row) const {
    return row > 0 ? linkAt(row) : nullptr;
}

bool hMergerProperties::CommitOpacity(size_t row, const std::string& text) {
    imodMergerLink* layer = layerAt(row);
    if (!layer) return false;
    double opacity = 0.0;
    if (!qvrParseDouble(qvrTrim(text), opacity) ||
        !imodMergerLink::Parameters.Get("Opacity").Limits.Allows(opacity))
        return complain(ObjectText::TextInvalidOpacity);
    layer->GetOpacity().SetKeyAuto(Frame, opacity, true, false);
    return true;
}

bool hMergerProperties::CommitPosition(size_t row, const std::string& text) {
    imodMergerLink* layer = layerAt(row);
    if (!layer) return false;
    std::array<long, 2> position{};
    if (!readWholes(text, iParameterLimits{}, position, EStringTable::Get(ObjectText::TextInvalidPosition)))
        return false;
    layer->GetXPosition().SetKeyAuto(Frame, static_cast<double>(position[0]), true, false);
    layer->GetYPosition().SetKeyAuto(Frame, static_cast<double>(position[1]), true, false);
    return true;
}

bool hMergerProperties::MoveDown(size_t row) {
    return sink(row, row - 1);
}

bool hMergerProperties::MoveUp(size_t row) {
    imodMergerLink* link = linkAt(row);
    if (!link) return false;
    imodMergerLink* next = link->GetNextLink();
    if (!next) return complainAbout(ObjectText::TextAlreadyTopLevel, *link);
    relink(*link, next->GetNextLink());
    return true;
}

bool hMergerProperties::MakeBackground(size_t row) {
    return sink(row, 0);
}

bool hMergerProperties::sink(size_t row, size_t place) {
    imodMergerLink* link = linkAt(row);
    if (!link) return false;
    if (row == 0) return complainAbout(ObjectText::TextAlreadyBackground, *link);
    relink(*link, linkAt(place));
    return true;
}

void hMergerProperties::relink(imodMergerLink& link, imodMergerLink* before) {
    link.Unlink(true);
    link.Link(true, before);
}

bool hMergerProperties::complainAbout(EStringId text, const imodMergerLink& link) {
    return complain(qvrFormatMessage(EStringTable::Get(text), {link.GetParent()->GetName()}));
}
