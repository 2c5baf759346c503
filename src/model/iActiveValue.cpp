#include "model/iActiveValue.h"

#include "foundation/EStringTable.h"
#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"
#include "model/hMenu.h"
#include "model/iObjectFrontEnd.h"
#include "model/iParameter.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

enum : EStringId {
    textNoData = 48600,
    textNoLinearKeys = 48601,
    textBadKeyFrame = 48602,
    textBadKeyOrder = 48603,
    textBadKeyValue = 48604,
    textNoKeyFound = 48605,
    textEntryExists = 48606,
    textMenuModify = 48607,
    textMenuConstant = 48608,
    textAskMakeConstant = 48609
};

// Curve colours, handed out in turn to new values and ended by the mark.
constexpr std::array<uint32_t, 19> curveColours = {
    0xC80000, 0x00C800, 0x0000C8, 0x800000, 0x008000, 0x000080, 0x00C8C8, 0xC800C8, 0xC8C800, 0x008080,
    0x800080, 0x808000, 0xDC8000, 0xFF0080, 0x00DC80, 0x80DC00, 0x0080DC, 0x8000DC, 0xFFFFFF};
constexpr uint32_t endOfColours = 0xFFFFFF;

// Values are made on the main thread only, so the index needs no lock.
uint32_t nextCurveColour() {
    static size_t index = 0;
    uint32_t colour = curveColours[index];
    if (curveColours[++index] == endOfColours) index = 0;
    return colour;
}

// The shortest text that reads back as the same double.
std::string formatDouble(double value) {
    std::array<char, 32> buffer;
    char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return std::string(buffer.data(), end);
}

void readDouble(const qvrCTreeData& block, std::string_view name, double& value) {
    const std::string* text = block.GetText(name);
    double read = 0.0;
    if (text && qvrParseDouble(*text, read)) value = read;
}

} // namespace

iActiveValue::iActiveValue(iActiveValueOwner* owner, std::string name, double initialValue,
                           bool constantWanted)
    : iActiveValue(std::move(name), initialValue, constantWanted) {
    Link(owner);
}

iActiveValue::iActiveValue(iActiveValueOwner* owner, const iParameter& parameter)
    : iActiveValue(std::string(parameter.Key), parameter) {
    Link(owner);
}

iActiveValue::iActiveValue(std::string name, const iParameter& parameter)
    : iActiveValue(std::move(name), parameter.Default, parameter.ConstantWanted) {
    if (parameter.CurveColour) SetColour(*parameter.CurveColour);
}

iActiveValue::iActiveValue(std::string name, double initialValue, bool constantWanted)
    : iObjectBase(std::move(name)), ConstantWanted(constantWanted), Colour(nextCurveColour()) {
    Keys.Insert(0, {0, initialValue, false});
}

iActiveValue::~iActiveValue() {
    Unlink();
}

void iActiveValue::Link(iActiveValueOwner* owner) {
    if (owner == Owner) return;
    Unlink();
    if (!owner) return;
    Owner = owner;
    NextValue = owner->FirstValue;
    PreviousValue = nullptr;
    (NextValue ? NextValue->PreviousValue : owner->LastValue) = this;
    owner->FirstValue = this;
    ++owner->ValueCount;
    owner->OnValueAdded(this);
    Notify(event_linked);
}

void iActiveValue::Unlink() {
    if (!Owner) return;
    Notify(event_unlinked);
    iActiveValueOwner* owner = Owner;
    (PreviousValue ? PreviousValue->NextValue : owner->FirstValue) = NextValue;
    (NextValue ? NextValue->PreviousValue : owner->LastValue) = PreviousValue;
    NextValue = PreviousValue = nullptr;
    Owner = nullptr;
    --owner->ValueCount;
    owner->OnValueRemoved(this);
}

void iActiveValue::ValueChanged(const EFrameRange* range) {
    if (Owner) Owner->OnValueChanged(this, range);
    Notify(event_value_changed, {range});
}

void iActiveValue::DisplayChanged() {
    if (Owner) Owner->OnValueDisplayChanged(this);
    Notify(event_display_changed);
}

void iActiveValue::notifyValueChanged(bool notify, const EFrameRange* range) {
    if (notify) ValueChanged(range);
}

void iActiveValue::notifyDisplayChanged(bool notify) {
    if (notify) DisplayChanged();
}

void iActiveValue::AssignKeys(const iActiveValue& other) {
    Keys = other.Keys;
    ConstantWanted = other.ConstantWanted;
    ValueChanged(nullptr);
}

// Context menu

bool iActiveValue::OnContextMenu(CPoint point, CWnd* window) {
    hMenu menu;
    BuildContextMenu(menu);
    return RunMenuCommand(iObjectFrontEnd::Get().TrackPopupMenu(menu, point, window));
}

void iActiveValue::BuildContextMenu(hMenu& menu) {
    if (!ConstantWanted) {
        menu.AppendItem(command_modify, EStringTable::Load(textMenuModify)).Default = true;
        menu.AppendSeparator();
    }
    if (HasMenuExtension()) {
        AddMenuItems(menu, FirstExtensionCommand);
        menu.AppendSeparator();
    }
    menu.AppendItem(command_constant, EStringTable::Load(textMenuConstant)).Checked = IsConstant();
}

bool iActiveValue::RunMenuCommand(unsigned command) {
    switch (command) {
    case 0:
        return false;
    case command_modify:
        // The front end shows a value's properties as the dialog that moves and stretches the keys.
        OnProperties();
        return true;
    case command_constant:
        if (ConstantWanted) {
            ClearConstantWanted(true);
            return true;
        }
        if (Keys.GetCount() < 2) {
            SetConstantWanted(true, true);
            return true;
        }
        return askMakeConstant();
    default:
        return HandleMenuItem(FirstExtensionCommand, command);
    }
}

bool iActiveValue::askMakeConstant() {
    long frame = Owner ? Owner->GetCurrentFrame() : 0;
    double value = GetValue(frame);
    std::string text = qvrFormat(EStringTable::Load(textAskMakeConstant).c_str(), GetName().c_str(),
                                 Keys.GetCount(), value, frame);
    if (hMessageBox::Show(text, hMessageBox::YesNo | hMessageBox::IconQuestion, "qvrTessarine") != IDYES)
        return false;
    MakeConstant(frame, value, true);
    return true;
}

void iActiveValue::AddMenuItems(hMenu&, unsigned) {}

bool iActiveValue::HandleMenuItem(unsigned, unsigned) {
    return false;
}

// Limits

double iActiveValue::Clamp(double value, long) const {
    const double* max = GetMaxLimit();
    if (max && value > *max) return *max;
    const double* min = GetMinLimit();
    if (min && value < *min) return *min;
    return value;
}

double iActiveValue::GetDefaultMin(double min, double) const {
    return min;
}

double iActiveValue::GetDefaultMax(double, double max) const {
    return max;
}

double iActiveAngle::Clamp(double value, long) const {
    long tenths = static_cast<long>(value * 10.0) % 3600;
    if (tenths < 0) tenths += 3600;
    return static_cast<double>(tenths) / 10.0;
}

// Single keys

bool iActiveValue::SetKey(long frame, double value, bool overwrite, bool notify, bool selected) {
    Keys.EnsureKey();
    long index = Keys.IndexAtOrAfter(frame);
    if (index < Keys.GetCount() && Keys[index].frame == frame) {
        iActiveKey& key = Keys[index];
        if (key.value == value) return true;
        if (!overwrite) return false;
        key.value = value;
        key.selected = selected;
    } else {
        Keys.Insert(index, {frame, value, selected});
    }
    EFrameRange range = Keys.GetAffectedRange(index);
    notifyValueChanged(notify, &range);
    return true;
}

bool iActiveValue::SetKeyAuto(long frame, double value, bool notify, bool selected) {
    if (!IsConstant()) return SetKey(frame, value, true, notify, selected);
    Keys.EnsureKey();
    iActiveKey& key = Keys[0];
    bool valueChanged = key.value != value;
    key = {frame, value, selected};
    if (valueChanged) notifyValueChanged(notify, nullptr);
    return true;
}

bool iActiveValue::DeleteKey(long frame, bool notify) {
    Keys.EnsureKey();
    long index = Keys.IndexAtOrAfter(frame);
    if (Keys.GetCount() < 2 || index == Keys.GetCount() || Keys[index].frame != frame) return false;
    EFrameRange range = Keys.GetAffectedRange(index);
    Keys.Remove(index);
    notifyValueChanged(notify, &range);
    return true;
}

bool iActiveValue::ModifyKey(long index, long frame, double value, bool notify) {
    if (Keys.IsEmpty()) return SetKeyAuto(frame, value, notify, false);
    if (!Keys.IsValidIndex(index)) return false;
    frame = ConstrainKeyFrame(index, frame);
    iActiveKey& key = Keys[index];
    if (key.frame == frame && key.value == value) return false;
    key.frame = frame;
    key.value = value;
    EFrameRange range = Keys.GetAffectedRange(index);
    notifyValueChanged(notify, &range);
    return true;
}

long iActiveValue::ConstrainKeyFrame(long index, long frame) const {
    if (!Keys.IsValidIndex(index) || Keys[index].frame == frame) return frame;
    if (index > 0 && frame <= Keys[index - 1].frame) return Keys[index - 1].frame + 1;
    if (index + 1 < Keys.GetCount() && frame >= Keys[index + 1].frame) return Keys[index + 1].frame - 1;
    return frame;
}

// Whole curve

void iActiveValue::ScaleKeys(long start, double factor, bool notify) {
    Keys.EnsureKey();
    long base = Keys[0].frame;
    if (base == 0 && factor > 0.9999999 && factor < 1.0000001) return;
    for (long index = 0; index < Keys.GetCount();) {
        long frame = static_cast<long>(static_cast<double>(Keys[index].frame - base) * factor) + start;
        if (frame < 0) frame = 0;
        // The test is against the key's own old frame: stretching keeps a key, shrinking drops it.
        if (index != 0 && Keys[index].frame >= frame) {
            Keys.Remove(index);
            continue;
        }
        Keys[index].frame = frame;
        ++index;
    }
    Keys.ReturnSurplus();
    notifyValueChanged(notify, nullptr);
}

void iActiveValue::SetSingleKey(long frame, double value, bool notify) {
    Keys.RemoveAll();
    Keys.Insert(0, {frame, value, false});
    notifyValueChanged(notify, nullptr);
}

void iActiveValue::MakeConstant(long frame, double value, bool notify) {
    ConstantWanted = true;
    SetSingleKey(frame, value, notify);
}

bool iActiveValue::ClearConstantWanted(bool notify) {
    return SetConstantWanted(false, notify);
}

bool iActiveValue::SetConstantWanted(bool wanted, bool notify) {
    if (wanted != ConstantWanted) {
        ConstantWanted = wanted;
        // A wish for constancy that the keys don't meet yet changes nothing on display.
        if (!wanted || Keys.GetCount() < 2) notifyDisplayChanged(notify);
    }
    return IsConstant();
}

long iActiveValue::DeleteKeysInRange(const EFrameRange& range, bool notify) {
    if (range.Length <= 0) return 0;
    Keys.EnsureKey();
    long first = Keys.IndexAtOrAfter(range.First);
    long end = first;
    while (end < Keys.GetCount() && Keys[end].frame <= range.Last())
        ++end;
    Keys.Remove(first, end - first);
    Keys.EnsureKey();
    notifyValueChanged(notify, nullptr);
    return end - first;
}

void iActiveValue::GetValueExtremes(double* min, double* max, long* minFrame, long* maxFrame,
                                    bool clamped) const {
    if (!min && !max) {
        if (minFrame) *minFrame = GetFirstKeyFrame();
        if (maxFrame) *maxFrame = GetLastKeyFrame();
        return;
    }
    long low = 0;
    long high = 0;
    for (long index = 0; index < Keys.GetCount(); ++index) {
        if (Keys[index].value >= Keys[high].value) high = index;
        if (Keys[index].value < Keys[low].value) low = index;
    }
    const iActiveKey& lowKey = Keys[low];
    const iActiveKey& highKey = Keys[high];
    if (min) *min = clamped ? Clamp(lowKey.value, lowKey.frame) : lowKey.value;
    if (max) *max = clamped ? Clamp(highKey.value, highKey.frame) : highKey.value;
    if (minFrame) *minFrame = lowKey.frame;
    if (maxFrame) *maxFrame = highKey.frame;
}

void iActiveValue::GetDisplayRange(double* min, double* max, long* firstFrame, long* lastFrame) const {
    double low = 0.0;
    double high = 0.0;
    GetValueExtremes(&low, &high, nullptr, nullptr, false);
    if (const double* limit = GetMaxLimit())
        high = std::max(high, *limit);
    else
        high = GetDefaultMax(low, high);
    if (const double* limit = GetMinLimit())
        low = std::min(low, *limit);
    else
        low = GetDefaultMin(low, high);
    if (min) *min = low;
    if (max) *max = high;
    if (firstFrame) *firstFrame = GetFirstKeyFrame();
    if (lastFrame) *lastFrame = GetLastKeyFrame();
}

// Key selection

bool iActiveValue::SelectKey(long index, bool selected, bool notify) {
    if (!Keys.IsValidIndex(index) || Keys[index].selected == selected) return false;
    Keys[index].selected = selected;
    notifyDisplayChanged(notify);
    return true;
}

bool iActiveValue::NextSelectedKey(long& index) const {
    for (long candidate = std::max(index, 0L); candidate < Keys.GetCount(); ++candidate) {
        if (Keys[candidate].selected) {
            index = candidate;
            return true;
        }
    }
    return false;
}

bool iActiveValue::IsKeySelected(long index) const {
    return Keys.IsValidIndex(index) && Keys[index].selected;
}

bool iActiveValue::ClearKeySelection(bool notify) {
    bool changed = false;
    for (long index = 0; index < Keys.GetCount(); ++index) {
        changed = changed || Keys[index].selected;
        Keys[index].selected = false;
    }
    if (changed) notifyDisplayChanged(notify);
    return changed;
}

bool iActiveValue::SelectKeyRange(long firstFrame, long lastFrame, bool exclusive, bool notify) {
    Keys.EnsureKey();
    // Before the first key IndexAtOrBefore gives 0, so such a range selects the first key.
    long first = Keys.IndexAtOrAfter(firstFrame);
    long last = Keys.IndexAtOrBefore(lastFrame);
    bool changed = false;
    if (first > last) {
        changed = ClearKeySelection(false);
    } else {
        for (long index = 0; index < Keys.GetCount(); ++index) {
            bool inside = index >= first && index <= last;
            if (!inside && !exclusive) continue;
            changed = changed || Keys[index].selected != inside;
            Keys[index].selected = inside;
        }
    }
    if (changed) notifyDisplayChanged(notify);
    return changed;
}

bool iActiveValue::GetSelectionFreedom(long& toLeft, long& toRight) const {
    long index = 0;
    if (!NextSelectedKey(index)) return false;
    toRight = EFrameRange::OpenEnd;
    auto gapBefore = [this](long at) { return Keys[at].frame - Keys[at - 1].frame - 1; };
    toLeft = index == 0 ? Keys[0].frame : gapBefore(index);
    for (;;) {
        while (index + 1 < Keys.GetCount() && Keys[index + 1].selected)
            ++index;
        // `index` ends a selected run; an unselected key follows unless the list ends here.
        if (++index == Keys.GetCount()) break;
        toRight = std::min(toRight, gapBefore(index));
        if (!NextSelectedKey(index)) break;
        toLeft = std::min(toLeft, gapBefore(index));
        if (toLeft == 0 || toRight == 0) break;
    }
    return true;
}

bool iActiveValue::MoveSelectedKeys(long frameDelta, double valueDelta, bool notify) {
    Keys.EnsureKey();
    long firstMoved = -1;
    long lastMoved = -1;
    long previousFrame = -1;
    for (long index = 0; NextSelectedKey(index); ++index) {
        iActiveKey& key = Keys[index];
        key.frame = std::max(key.frame + frameDelta, previousFrame + 1);
        key.value += valueDelta;
        previousFrame = key.frame;
        if (firstMoved < 0) firstMoved = index;
        lastMoved = index;
    }
    if (firstMoved < 0) return false;
    long first = firstMoved > 0 ? Keys[firstMoved - 1].frame + 1 : 0;
    long last = lastMoved + 1 < Keys.GetCount() ? Keys[lastMoved + 1].frame - 1 : EFrameRange::OpenEnd;
    EFrameRange range = EFrameRange::FromTo(first, last);
    notifyValueChanged(notify, &range);
    return true;
}

long iActiveValue::CountSelectedKeys() const {
    long count = 0;
    for (long index = 0; NextSelectedKey(index); ++index)
        ++count;
    return count;
}

bool iActiveValue::DeleteSelectedKeys(bool notify) {
    Keys.EnsureKey();
    bool deleted = false;
    EFrameRange upperRange;
    EFrameRange lowerRange;
    iActiveKey lowestKey;
    for (long index = Keys.GetCount() - 1; index >= 0; --index) {
        if (!Keys[index].selected) continue;
        long lowest = index;
        while (lowest > 0 && Keys[lowest - 1].selected)
            --lowest;
        if (!deleted) upperRange = Keys.GetAffectedRange(index);
        lowerRange = Keys.GetAffectedRange(lowest);
        lowestKey = Keys[lowest];
        Keys.Remove(lowest, index - lowest + 1);
        deleted = true;
        // The key below the run is unselected, so the walk goes on below it.
        index = lowest - 1;
    }
    if (!deleted) return false;
    // A value never loses its last key: the lowest deleted one comes back.
    if (Keys.IsEmpty()) Keys.Insert(0, lowestKey);
    EFrameRange range = EFrameRange::FromTo(lowerRange.First, upperRange.Last());
    notifyValueChanged(notify, &range);
    return true;
}

// Load and save

std::string iActiveValue::BlockName(const std::string& valueName) {
    return qvrFormatMessage("Variable \"%1\"", {valueName});
}

void iActiveValue::Load(const qvrCTreeData& section, hReport& report) {
    hReport context(&report, GetName());
    const qvrCTreeData* block = section.Find(BlockName(GetName()));
    if (!block) {
        context.Report(textNoData, hReportError);
        return;
    }
    long colour = 0;
    if (block->GetLong("Color", colour)) Colour = static_cast<uint32_t>(colour);
    block->GetBool("Displayed", Displayed);
    readDouble(*block, "Factor", Factor);
    readDouble(*block, "PreOffset", PreOffset);
    readDouble(*block, "PostOffset", PostOffset);
    block->GetBool("ConstantWanted", ConstantWanted);
    readKeys(*block, context);
    ValueChanged(nullptr);
}

void iActiveValue::readKeys(const qvrCTreeData& block, hReport& report) {
    Keys.RemoveAll();
    const qvrCTreeData* entries = block.Find("LinearKeys");
    if (!entries) {
        report.Report(textNoLinearKeys, hReportError);
    } else {
        for (const auto& [name, entry] : entries->GetChildren())
            readKey(*entry, report);
        if (Keys.IsEmpty()) report.Report(textNoKeyFound, hReportError);
    }
    Keys.EnsureKey();
}

void iActiveValue::readKey(const qvrCTreeData& entry, hReport& report) {
    auto reportBadKey = [&](EStringId textId) {
        report.Report(qvrFormatMessage(EStringTable::Get(textId), {entry.GetName(), entry.Value}),
                      hReportWarning);
    };
    long frame = 0;
    double value = 0.0;
    if (!qvrParseLong(entry.GetName(), frame))
        reportBadKey(textBadKeyFrame);
    else if (!Keys.IsEmpty() && frame <= Keys.GetLast().frame)
        reportBadKey(textBadKeyOrder);
    else if (!qvrParseDouble(entry.Value, value))
        reportBadKey(textBadKeyValue);
    else
        Keys.Insert(Keys.GetCount(), {frame, value, false});
}

bool iActiveValue::Save(qvrCTreeData& section, hReport& report) const {
    qvrCTreeData* block = section.CreateChild(BlockName(GetName()), false);
    if (!block) {
        hReport(&report, GetName()).Report(textEntryExists, hReportGrave);
        return false;
    }
    block->SetLong("Color", static_cast<long>(Colour));
    block->SetBool("Displayed", Displayed);
    block->SetText("Factor", formatDouble(Factor));
    block->SetText("PreOffset", formatDouble(PreOffset));
    block->SetText("PostOffset", formatDouble(PostOffset));
    block->SetBool("ConstantWanted", ConstantWanted);
    qvrCTreeData* entries = block->SetLong("LinearKeys", Keys.GetCount());
    for (long index = 0; index < Keys.GetCount(); ++index)
        entries->SetText(qvrFormat("%08ld", Keys[index].frame), formatDouble(Keys[index].value));
    return true;
}
