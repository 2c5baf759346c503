#include "objects/hPropertyForm.h"

#include "foundation/qvrString.h"
#include "objects/hCropProperties.h"
#include "objects/hLayerProperties.h"
#include "objects/hMergerProperties.h"
#include "objects/hRotateProperties.h"
#include "objects/hScaleProperties.h"
#include "objects/hSequenceProperties.h"
#include "objects/imodCorrection.h"
#include "objects/imodCrop.h"
#include "objects/imodMatrix.h"
#include "objects/imodMerger.h"
#include "objects/imodRotate.h"
#include "objects/imodScale.h"
#include "objects/isrcLayer.h"
#include "objects/isrcSequence.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr const char* NameLabel = "&Name:";
constexpr const char* ColorLabel = "&Color:";

std::string label(EStringId id) {
    return EStringTable::Load(id);
}

iActiveValue* findValue(iElement& element, std::string_view key) {
    for (iActiveValue* value = element.GetFirstValue(); value; value = value->GetNextValue())
        if (value->GetName() == key) return value;
    return nullptr;
}

std::string wholeText(double value) {
    return qvrFormat("%ld", std::lround(value));
}

} // namespace

hPropertyForm::hPropertyForm(iElement& element, long frame) : hPropertyPage(element) {
    addNameField(element);
    addClassFields(element, frame);
}

hPropertyForm::~hPropertyForm() = default;

std::vector<hPropertyForm::Maker>& hPropertyForm::makers() {
    static std::vector<Maker> registered;
    return registered;
}

bool hPropertyForm::AddMaker(Maker maker) {
    makers().push_back(maker);
    return true;
}

hSequenceProperties* hPropertyForm::GetSequencePage() const {
    for (const auto& rules : Rules)
        if (auto* sequence = dynamic_cast<hSequenceProperties*>(rules.get())) return sequence;
    return nullptr;
}

void hPropertyForm::AddText(std::string text, std::function<std::string()> show,
                            std::function<bool(const std::string&)> commit) {
    Fields.push_back({std::move(text), hPropertyField::Kind::Text, std::move(show), std::move(commit)});
}

void hPropertyForm::addNameField(iElement& element) {
    AddText(
        NameLabel, [&element] { return element.GetName(); },
        [this](const std::string& text) { return CommitName(text); });
}

template <class Object>
void hPropertyForm::addTableFields(Object& object, long frame,
                                   std::initializer_list<std::string_view> ruled) {
    for (const auto& entry : Object::Parameters.GetEntries()) {
        const iParameter& parameter = entry.Parameter;
        if (std::find(ruled.begin(), ruled.end(), parameter.Key) != ruled.end()) continue;
        if (parameter.Kind == iParameterKind::Animated) {
            iActiveValue* value = findValue(object, parameter.Key);
            if (!value) continue;
            AddText(
                label(parameter.Label), [value, frame] { return wholeText(value->GetValue(frame)); },
                [value, frame, &parameter](const std::string& text) {
                    long number = 0;
                    if (!readWhole(text, parameter.Limits, number,
                                   EStringTable::Get(ObjectText::TextNotANumber)))
                        return false;
                    value->SetKeyAuto(frame, static_cast<double>(number), true, false);
                    return true;
                });
        } else if (auto* flag = std::get_if<bool Object::*>(&entry.Field)) {
            Fields.push_back({label(parameter.Label), hPropertyField::Kind::Flag,
                              [&object, member = *flag] { return std::string(object.*member ? "1" : "0"); },
                              [&object, member = *flag](const std::string& text) {
                                  object.*member = text == "1";
                                  object.NotifyModified(nullptr, true);
                                  return true;
                              }});
        } else if (auto* whole = std::get_if<long Object::*>(&entry.Field)) {
            AddText(
                label(parameter.Label),
                [&object, member = *whole] { return qvrFormat("%ld", object.*member); },
                [&object, member = *whole, &parameter](const std::string& text) {
                    long number = 0;
                    if (!readWhole(text, parameter.Limits, number,
                                   EStringTable::Get(ObjectText::TextNotANumber)))
                        return false;
                    object.*member = number;
                    object.NotifyModified(nullptr, true);
                    return true;
                });
        }
    }
}

void hPropertyForm::addClassFields(iElement& element, long frame) {
    if (auto* layer = dynamic_cast<isrcLayer*>(&element)) {
        auto& page = Keep(std::make_unique<hLayerProperties>(*layer, frame));
        AddText(
            label(ObjectText::LabelWidth), [&page] { return page.GetWidthText(); },
            [&page](const std::string& t) { return page.CommitWidth(t); });
        AddText(
            label(ObjectText::LabelHeight), [&page] { return page.GetHeightText(); },
            [&page](const std::string& t) { return page.CommitHeight(t); });
        AddText(
            ColorLabel, [&page] { return page.GetColorText(); },
            [&page](const std::string& t) { return page.CommitColor(t); });
        AddText(
            label(ObjectText::LabelAlpha), [&page] { return page.GetAlphaText(); },
            [&page](const std::string& t) { return page.CommitAlpha(t); });
        addTableFields(*layer, frame, {"Color Red", "Color Green", "Color Blue", "Color Alpha"});
    } else if (auto* rotate = dynamic_cast<imodRotate*>(&element)) {
        auto& page = Keep(std::make_unique<hRotateProperties>(*rotate, frame));
        AddText(
            label(ObjectText::LabelAngle), [&page] { return page.GetAngleText(); },
            [&page](const std::string& t) { return page.CommitAngle(t); });
        addTableFields(*rotate, frame, {"Angle"});
    } else if (auto* scale = dynamic_cast<imodScale*>(&element)) {
        auto& page = Keep(std::make_unique<hScaleProperties>(*scale, frame));
        AddText(
            label(ObjectText::LabelWidth), [&page] { return page.GetWidthText(); },
            [&page](const std::string& t) { return page.CommitWidth(t); });
        AddText(
            label(ObjectText::LabelHeight), [&page] { return page.GetHeightText(); },
            [&page](const std::string& t) { return page.CommitHeight(t); });
        AddText(
            "Factor &X:", [&page] { return page.GetFactorXText(); },
            [&page](const std::string& t) { return page.CommitFactorX(t); });
        AddText(
            "Factor &Y:", [&page] { return page.GetFactorYText(); },
            [&page](const std::string& t) { return page.CommitFactorY(t); });
        addTableFields(*scale, frame, {"Width", "Heigth"});
    } else if (auto* crop = dynamic_cast<imodCrop*>(&element)) {
        addCropFields(*crop, frame);
    } else if (auto* merger = dynamic_cast<imodMerger*>(&element)) {
        addMergerFields(*merger, frame);
    } else if (auto* sequence = dynamic_cast<isrcSequence*>(&element)) {
        auto& page = Keep(std::make_unique<hSequenceProperties>(*sequence));
        AddText(
            "&Range:",
            [sequence] {
                return qvrFormat("%ld,%ld", sequence->GetFirstUsedFile(), sequence->GetLastUsedFile());
            },
            [&page](const std::string& t) { return page.CommitRange(t); });
        AddText(
            label(ObjectText::LabelStartFrame),
            [sequence] { return qvrFormat("%ld", sequence->GetStdStartFrame()); },
            [&page](const std::string& t) { return page.CommitStartFrame(t); });
        AddText(
            page.GetFramesLabel(), [sequence] { return qvrFormat("%ld", sequence->GetStdFramesPerImg()); },
            [&page](const std::string& t) { return page.CommitFramesPerImage(t); });
        addTableFields(*sequence, frame,
                       {"FirstUsedFile", "LastUsedFile", "StdStartFrame", "StdFramesPerImg"});
    } else if (auto* correction = dynamic_cast<imodCorrection*>(&element)) {
        addTableFields(*correction, frame, {});
    } else if (auto* matrix = dynamic_cast<imodMatrix*>(&element)) {
        addTableFields(*matrix, frame, {});
    } else {
        for (Maker maker : makers())
            if (maker(*this, element, frame)) return;
    }
}

void hPropertyForm::addCropFields(imodCrop& crop, long frame) {
    auto& page = Keep(std::make_unique<hCropProperties>(crop, frame));
    const std::array<std::string, 4> labels = page.GetFieldLabels();
    for (size_t i = 0; i < labels.size(); ++i)
        AddText(
            labels[i], [&page, i] { return page.GetEntry().Fields[i]; },
            [&page, i](const std::string& t) {
                hCropEntry entry = page.GetEntry();
                entry.Fields[i] = t;
                return page.Apply(entry);
            });
    AddText(
        ColorLabel, [&page] { return page.GetEntry().Color; },
        [&page](const std::string& t) {
            hCropEntry entry = page.GetEntry();
            entry.Color = t;
            return page.Apply(entry);
        });
    AddText(
        label(ObjectText::LabelAlpha), [&page] { return page.GetEntry().Alpha; },
        [&page](const std::string& t) {
            hCropEntry entry = page.GetEntry();
            entry.Alpha = t;
            return page.Apply(entry);
        });
    addTableFields(crop, frame,
                   {"Width", "Heigth", "Center X", "Center Y", "BackgroundColor", "RelativeGUI"});
}

void hPropertyForm::addMergerFields(imodMerger& merger, long frame) {
    auto& page = Keep(std::make_unique<hMergerProperties>(merger, frame));
    const std::array<std::string, 4> titles = hMergerProperties::GetColumnTitles();
    const size_t rows = page.GetRows().size();
    for (size_t row = 1; row < rows; ++row) {
        const std::string source = page.GetRows()[row].Source;
        AddText(
            source + " " + titles[1] + "," + titles[2] + ":",
            [&page, row] {
                // Whole numbers, as the field takes them: the list's decimals and animation marks go.
                const hMergerRow shown = page.GetRows()[row];
                return wholeText(std::atof(shown.X.c_str())) + "," + wholeText(std::atof(shown.Y.c_str()));
            },
            [&page, row](const std::string& t) { return page.CommitPosition(row, t); });
        AddText(
            source + " " + titles[3] + ":", [&page, row] { return page.GetRows()[row].Opacity; },
            [&page, row](const std::string& t) { return page.CommitOpacity(row, t); });
    }
    addTableFields(merger, frame, {});
}
