#include "views/CSplineBarView.h"

#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"
#include "model/hMenu.h"
#include "model/iProject.h"

#include <array>
#include <cmath>

namespace {

enum : EStringId {
    textMenuEditKeys = 46703,
    textMenuDeleteKeys = 46704,
    textMenuSelectAll = 46705,
    textMenuAddKeys = 46706,
    textMenuFullSpline = 46707,
    textMenuNormalZoom = 46708,
    textMenuLabels = 46709,
    textMenuRange = 46715,
    textSelectValue = 46723,
    textNoKeysSelected = 46724,
    textAskDeleteKeys = 46725,
    textFrameLabel = 46726,
    textHoursWithFrames = 46727,
    textHours = 46728,
    textMinutesWithFrames = 46729,
    textMinutes = 46730,
    textLongestLabel = 46731,
    textInvalidValue = 46636
};

// A menu choice that sets a number: the label rate or the value range.
struct NumberChoice {
    unsigned Command;
    EStringId Text;
    long Number;
};

constexpr std::array<NumberChoice, 5> labelRates = {{{CSplineBarView::command_labels_15, 46710, 15},
                                                     {CSplineBarView::command_labels_25, 46711, 25},
                                                     {CSplineBarView::command_labels_35, 46712, 35},
                                                     {CSplineBarView::command_labels_50, 46713, 50},
                                                     {CSplineBarView::command_labels_frames, 46714, 0}}};

constexpr std::array<NumberChoice, 7> valueRanges = {{{CSplineBarView::command_range_500, 46716, 500},
                                                      {CSplineBarView::command_range_1000, 46717, 1000},
                                                      {CSplineBarView::command_range_5000, 46718, 5000},
                                                      {CSplineBarView::command_range_10000, 46719, 10000},
                                                      {CSplineBarView::command_range_20000, 46720, 20000},
                                                      {CSplineBarView::command_range_50000, 46721, 50000},
                                                      {CSplineBarView::command_range_100k, 46722, 100000}}};

template <size_t N>
const NumberChoice* findChoice(const std::array<NumberChoice, N>& choices, unsigned command) {
    for (const NumberChoice& choice : choices)
        if (choice.Command == command) return &choice;
    return nullptr;
}

template <size_t N>
void appendChoices(hMenu& menu, const std::array<NumberChoice, N>& choices, long present) {
    for (const NumberChoice& choice : choices)
        menu.AppendItem(choice.Command, EStringTable::Load(choice.Text)).Checked = choice.Number == present;
}

// Below the lowest sensible zoom, or not a number at all.
bool isBadZoom(double zoom) {
    return !std::isfinite(zoom) || zoom < 0.0001;
}

void reportInvalid(hReport& report, const std::string& text, const char* key) {
    report.Report(qvrFormat(EStringTable::Load(textInvalidValue).c_str(), text.c_str(), key), hReportWarning);
}

void readLong(const qvrCTreeData& block, const char* key, long& value, hReport& report) {
    qvrCTreeData* bad = nullptr;
    if (!block.GetLong(key, value, &bad) && bad) reportInvalid(report, bad->Value, key);
}

void readDouble(const qvrCTreeData& block, const char* key, double& value, hReport& report) {
    const std::string* text = block.GetText(key);
    if (text && !qvrParseDouble(*text, value)) reportInvalid(report, *text, key);
}

CSplineBarView::FrontEnd& silentFrontEnd() {
    static CSplineBarView::FrontEnd frontEnd;
    return frontEnd;
}

} // namespace

CSplineBarView::CSplineBarView(iProject& project) : Project(project), Front(&silentFrontEnd()) {
    UpdateWorld();
}

void CSplineBarView::SetFrontEnd(FrontEnd* frontEnd) {
    Front = frontEnd ? frontEnd : &silentFrontEnd();
}

// ---------------------------------------------------------------- menu

void CSplineBarView::BuildContextMenu(hMenu& menu) const {
    menu.AppendItem(command_edit_keys, EStringTable::Load(textMenuEditKeys)).Default = true;
    menu.AppendItem(command_delete_keys, EStringTable::Load(textMenuDeleteKeys));
    menu.AppendItem(command_select_all, EStringTable::Load(textMenuSelectAll));
    menu.AppendItem(command_add_mode, EStringTable::Load(textMenuAddKeys)).Checked = AddMode;
    menu.AppendItem(command_full_spline, EStringTable::Load(textMenuFullSpline));
    menu.AppendItem(command_normal_zoom, EStringTable::Load(textMenuNormalZoom));
    appendChoices(menu.AppendSubMenu(EStringTable::Load(textMenuLabels)), labelRates, FPS);
    appendChoices(menu.AppendSubMenu(EStringTable::Load(textMenuRange)), valueRanges, nMax);
}

bool CSplineBarView::RunCommand(unsigned command) {
    if (const NumberChoice* rate = findChoice(labelRates, command)) {
        SetLabelRate(static_cast<uint8_t>(rate->Number));
        return true;
    }
    if (const NumberChoice* range = findChoice(valueRanges, command)) {
        SetValueRange(range->Number);
        return true;
    }
    switch (command) {
    case command_edit_keys:
        Front->OpenKeyEditPanel();
        return true;
    case command_delete_keys:
        return deleteSelectedKeys();
    case command_select_all:
        return selectAllKeys();
    case command_add_mode:
        AddMode = !AddMode;
        Front->Repaint();
        return true;
    case command_full_spline:
        if (Handle({cmd_fit_active})) Front->Repaint();
        return true;
    case command_normal_zoom:
        if (Handle({cmd_zoom_normal})) Front->Repaint();
        return true;
    case command_repaint:
        Front->Repaint();
        Front->RefreshBar();
        return true;
    case command_beep:
        Front->Beep();
        return true;
    default:
        return false;
    }
}

bool CSplineBarView::deleteSelectedKeys() {
    iActiveValue* value = GetActiveValue();
    if (!value) {
        complain(textSelectValue);
        return false;
    }
    const long count = value->CountSelectedKeys();
    if (count == 0) {
        complain(textNoKeysSelected);
        return false;
    }
    if (count > 1 &&
        hMessageBox::Show(qvrFormat(EStringTable::Load(textAskDeleteKeys).c_str(), count),
                          hMessageBox::YesNo | hMessageBox::IconQuestion, "qvrTessarine") != IDYES)
        return false;
    value->DeleteSelectedKeys(true);
    return true;
}

bool CSplineBarView::selectAllKeys() {
    iActiveValue* value = GetActiveValue();
    if (!value) return false;
    for (long index = 0; index < value->GetKeyCount(); ++index)
        value->SelectKey(index, true, false);
    value->DisplayChanged();
    return true;
}

void CSplineBarView::complain(EStringId text) {
    Front->Beep();
    EUserInterface::Get().SetStatusText(EStringTable::Load(text));
}

// ---------------------------------------------------------------- axes

std::string CSplineBarView::TimeLabel(long frame, long rate, bool withFrames) {
    if (rate == 0) return qvrFormat(EStringTable::Load(textFrameLabel).c_str(), frame);
    const long seconds = frame / rate;
    const long rest = frame % rate;
    const long s = seconds % 60;
    const long m = (seconds / 60) % 60;
    // Hours count from six minutes on: the divisor is 360, as it always was.
    const long h = seconds / 360;
    if (h != 0)
        return withFrames ? qvrFormat(EStringTable::Load(textHoursWithFrames).c_str(), h, m, s, rest)
                          : qvrFormat(EStringTable::Load(textHours).c_str(), h, m, s);
    return withFrames ? qvrFormat(EStringTable::Load(textMinutesWithFrames).c_str(), m, s, rest)
                      : qvrFormat(EStringTable::Load(textMinutes).c_str(), m, s);
}

std::string CSplineBarView::LongestTimeLabel() {
    return EStringTable::Load(textLongestLabel);
}

void CSplineBarView::SetLabelRate(uint8_t rate) {
    FPS = rate;
    Front->Repaint();
}

void CSplineBarView::SetValueRange(long range) {
    nMax = range;
    UpdateWorld();
    Front->Repaint();
}

void CSplineBarView::UpdateWorld() {
    World = {-LeadFrames, -nMax, Project.GetFrameLength() - 1, nMax};
}

// ---------------------------------------------------------------- settings

void CSplineBarView::LoadSettings(const qvrCTreeData& block, hReport& report) {
    long rate = FPS;
    readLong(block, "FPS", rate, report);
    FPS = static_cast<uint8_t>(rate);
    if (FPS < 10) FPS = 10;
    readLong(block, "nMax", nMax, report);
    if (nMax < 1000) nMax = DefaultRange;
    double x = zoomX;
    double y = zoomY;
    readDouble(block, "ZoomX", x, report);
    readDouble(block, "ZoomY", y, report);
    CPoint position = Position;
    readLong(block, "PosX", position.x, report);
    readLong(block, "PosY", position.y, report);
    qvrCTreeData* bad = nullptr;
    if (!block.GetBool("AddMode", AddMode, &bad) && bad) reportInvalid(report, bad->Value, "AddMode");
    UpdateWorld();
    zoomX = isBadZoom(x) ? DefaultZoom : x;
    zoomY = isBadZoom(y) ? DefaultZoom : y;
    Position = position;
}

void CSplineBarView::writeView(qvrCTreeData& block, long range, double x, double y, CPoint position) {
    block.SetLong("nMax", range);
    block.SetText("ZoomX", qvrFormatDouble(x));
    block.SetText("ZoomY", qvrFormatDouble(y));
    block.SetLong("PosX", position.x);
    block.SetLong("PosY", position.y);
}

void CSplineBarView::SaveSettings(qvrCTreeData& block) const {
    block.SetLong("FPS", FPS);
    writeView(block, nMax, zoomX, zoomY, Position);
    block.SetBool("AddMode", AddMode);
}

void CSplineBarView::SaveDefaultSettings(qvrCTreeData& block) {
    writeView(block, DefaultRange, DefaultZoom, DefaultZoom, {});
}
