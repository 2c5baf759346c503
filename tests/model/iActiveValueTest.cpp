#include "model/iActiveValue.h"

#include "ScriptedUserInterface.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "model/hMenu.h"
#include "model/iObjectFrontEnd.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

struct RecordedEvent {
    long code;
    std::optional<EFrameRange> range;
};

// Listens to a value and keeps what it was told.
class EventRecorder : public iNotifier {
public:
    using iNotifier::iNotifier;
    std::vector<RecordedEvent> Events;

protected:
    iNotifyAnswer OnEvent(long code, const iEventArgument& argument) override {
        Events.push_back({code, argument.Range ? std::optional(*argument.Range) : std::nullopt});
        return iNotifyAnswer::Keep;
    }
};

class RecordingOwner : public iActiveValueOwner {
public:
    void OnValueAdded(iActiveValue* value) override { Notices.push_back("added " + value->GetName()); }
    void OnValueRemoved(iActiveValue* value) override { Notices.push_back("removed " + value->GetName()); }
    void OnValueChanged(iActiveValue* value, const EFrameRange*) override {
        Notices.push_back("changed " + value->GetName());
    }
    void OnValueDisplayChanged(iActiveValue* value) override {
        Notices.push_back("display " + value->GetName());
    }
    long GetCurrentFrame() const override { return CurrentFrame; }

    long CurrentFrame = 0;
    std::vector<std::string> Notices;
};

class LimitedValue : public iActiveValue {
public:
    using iActiveValue::iActiveValue;
    const double* GetMaxLimit() const override { return &Max; }
    const double* GetMinLimit() const override { return &Min; }
    double Max = 100.0;
    double Min = 0.0;
};

struct KeyText {
    long frame;
    double value;
    bool selected = false;
};

// Replaces the keys of `target` without notices.
void setKeys(iActiveValue& target, std::initializer_list<KeyText> keys) {
    target.SetSingleKey(keys.begin()->frame, keys.begin()->value, false);
    for (const KeyText& key : keys)
        target.SetKey(key.frame, key.value, true, false, false);
    long index = 0;
    for (const KeyText& key : keys)
        target.SelectKey(index++, key.selected, false);
}

std::vector<long> framesOf(const iActiveValue& target) {
    std::vector<long> frames;
    for (long index = 0; index < target.GetKeyCount(); ++index)
        frames.push_back(target.GetKey(index)->frame);
    return frames;
}

class ActiveValue : public ::testing::Test {
protected:
    // The range of the one value-changed event received; nullopt when it covered all frames.
    std::optional<EFrameRange> onlyChangedRange() {
        EXPECT_EQ(listener.Events.size(), 1u);
        if (listener.Events.empty()) return std::nullopt;
        EXPECT_EQ(listener.Events[0].code, iActiveValue::event_value_changed);
        return listener.Events[0].range;
    }

    iActiveValue value{"Width", 0.0, false};
    EventRecorder listener{&value};
};

void expectRange(const std::optional<EFrameRange>& range, long first, long last) {
    ASSERT_TRUE(range.has_value());
    EXPECT_EQ(range->First, first);
    EXPECT_EQ(range->Last(), last);
}

} // namespace

TEST_F(ActiveValue, SetKeyReplacesAValueOnlyWhenAskedTo) {
    setKeys(value, {{0, 1.0}, {10, 2.0}, {20, 3.0}});
    EXPECT_TRUE(value.SetKey(10, 2.0, false, true, true));
    EXPECT_FALSE(value.IsKeySelected(1));
    EXPECT_FALSE(value.SetKey(10, 5.0, false, true, false));
    EXPECT_TRUE(listener.Events.empty());

    EXPECT_TRUE(value.SetKey(10, 5.0, true, true, true));
    EXPECT_EQ(value.GetKey(1)->value, 5.0);
    EXPECT_TRUE(value.IsKeySelected(1));
    expectRange(onlyChangedRange(), 0, 20);
}

TEST_F(ActiveValue, ConstantValueMovesItsOnlyKeyToTheEditedFrame) {
    iActiveValue constant("Opacity", 4.0, true);
    EventRecorder constantListener(&constant);
    EXPECT_TRUE(constant.SetKeyAuto(50, 4.0, true, false));
    EXPECT_TRUE(constantListener.Events.empty());
    EXPECT_TRUE(constant.SetKeyAuto(70, 9.0, true, false));
    EXPECT_EQ(framesOf(constant), (std::vector<long>{70}));
    ASSERT_EQ(constantListener.Events.size(), 1u);
    EXPECT_FALSE(constantListener.Events[0].range.has_value());

    value.SetKeyAuto(70, 9.0, false, false);
    EXPECT_EQ(framesOf(value), (std::vector<long>{0, 70}));
}

TEST_F(ActiveValue, TheLastKeyCannotBeDeleted) {
    EXPECT_FALSE(value.DeleteKey(0, true));
    EXPECT_EQ(value.GetKeyCount(), 1);
    setKeys(value, {{0, 1.0}, {10, 2.0}, {20, 3.0}});
    EXPECT_FALSE(value.DeleteKey(11, true));
    EXPECT_TRUE(value.DeleteKey(10, true));
    expectRange(onlyChangedRange(), 0, 20);
}

TEST_F(ActiveValue, ModifiedKeyStaysBetweenItsNeighbours) {
    setKeys(value, {{0, 1.0}, {10, 2.0}, {20, 3.0}});
    EXPECT_TRUE(value.ModifyKey(1, 25, 2.0, false));
    EXPECT_EQ(value.GetKey(1)->frame, 19);
    EXPECT_TRUE(value.ModifyKey(1, -3, 2.0, false));
    EXPECT_EQ(value.GetKey(1)->frame, 1);
    EXPECT_FALSE(value.ModifyKey(1, 0, 2.0, false));
    EXPECT_FALSE(value.ModifyKey(3, 30, 2.0, false));
}

TEST_F(ActiveValue, ScalingKeepsKeysThatMoveUpAndDropsTheOthers) {
    setKeys(value, {{0, 1.0}, {10, 2.0}, {20, 3.0}});
    value.ScaleKeys(0, 2.0, true);
    EXPECT_EQ(framesOf(value), (std::vector<long>{0, 20, 40}));
    EXPECT_FALSE(onlyChangedRange().has_value());

    // Shrinking leaves every key but the first at or below its old frame: they all go.
    value.ScaleKeys(0, 0.5, false);
    EXPECT_EQ(framesOf(value), (std::vector<long>{0}));

    setKeys(value, {{5, 1.0}, {10, 2.0}});
    value.ScaleKeys(100, 1.0, false);
    EXPECT_EQ(framesOf(value), (std::vector<long>{100, 105}));
}

TEST_F(ActiveValue, ScalingIgnoresTheStartOfAnAnimationThatBeginsAtZero) {
    setKeys(value, {{0, 1.0}, {10, 2.0}});
    value.ScaleKeys(30, 1.00000001, true);
    EXPECT_EQ(framesOf(value), (std::vector<long>{0, 10}));
    EXPECT_TRUE(listener.Events.empty());
}

TEST_F(ActiveValue, RangeSelectionBeforeTheFirstKeySelectsTheFirstKey) {
    setKeys(value, {{10, 1.0}, {20, 2.0}, {30, 3.0, true}});
    EXPECT_TRUE(value.SelectKeyRange(0, 5, false, true));
    EXPECT_TRUE(value.IsKeySelected(0));
    EXPECT_TRUE(value.IsKeySelected(2));
    EXPECT_EQ(listener.Events.back().code, iActiveValue::event_display_changed);

    EXPECT_TRUE(value.SelectKeyRange(15, 25, true, false));
    EXPECT_EQ(value.CountSelectedKeys(), 1);
    EXPECT_TRUE(value.IsKeySelected(1));
    EXPECT_FALSE(value.SelectKeyRange(15, 25, true, false));

    EXPECT_TRUE(value.SelectKeyRange(31, 40, false, false));
    EXPECT_EQ(value.CountSelectedKeys(), 0);
}

TEST_F(ActiveValue, SelectionFreedomIsTheSmallestGapToUnselectedKeys) {
    long toLeft = 0;
    long toRight = 0;
    setKeys(value, {{4, 0.0}, {10, 0.0, true}, {12, 0.0, true}, {20, 0.0}, {23, 0.0, true}, {30, 0.0}});
    EXPECT_TRUE(value.GetSelectionFreedom(toLeft, toRight));
    EXPECT_EQ(toLeft, 2);
    EXPECT_EQ(toRight, 6);

    setKeys(value, {{3, 0.0, true}, {5, 0.0, true}});
    EXPECT_TRUE(value.GetSelectionFreedom(toLeft, toRight));
    EXPECT_EQ(toLeft, 3);
    EXPECT_EQ(toRight, EFrameRange::OpenEnd);

    value.ClearKeySelection(false);
    EXPECT_FALSE(value.GetSelectionFreedom(toLeft, toRight));
}

TEST_F(ActiveValue, MovedKeysNeverGoBelowFrameZeroOrOntoEachOther) {
    setKeys(value, {{0, 0.0}, {2, 1.0, true}, {4, 2.0, true}, {50, 0.0}});
    EXPECT_TRUE(value.MoveSelectedKeys(-10, 0.5, true));
    EXPECT_EQ(framesOf(value), (std::vector<long>{0, 0, 1, 50}));
    EXPECT_EQ(value.GetKey(1)->value, 1.5);
    expectRange(onlyChangedRange(), 1, 49);

    value.ClearKeySelection(false);
    EXPECT_FALSE(value.MoveSelectedKeys(1, 0.0, true));
}

TEST_F(ActiveValue, DeletingSelectedRunsNotifiesTheSpanOfAllRuns) {
    setKeys(value, {{0, 0.0}, {10, 1.0, true}, {20, 2.0}, {30, 3.0, true}, {40, 4.0, true}, {50, 5.0}});
    EXPECT_TRUE(value.DeleteSelectedKeys(true));
    EXPECT_EQ(framesOf(value), (std::vector<long>{0, 20, 50}));
    expectRange(onlyChangedRange(), 0, 50);
    EXPECT_FALSE(value.DeleteSelectedKeys(true));
}

TEST_F(ActiveValue, DeletingEveryKeyKeepsTheFirstOneSelected) {
    setKeys(value, {{5, 1.0, true}, {10, 2.0, true}});
    EXPECT_TRUE(value.DeleteSelectedKeys(false));
    ASSERT_EQ(value.GetKeyCount(), 1);
    EXPECT_EQ(value.GetKey(0)->frame, 5);
    EXPECT_TRUE(value.IsKeySelected(0));

    setKeys(value, {{5, 1.0}, {10, 2.0}});
    EXPECT_EQ(value.DeleteKeysInRange({0, 0}, false), 0);
    EXPECT_EQ(value.DeleteKeysInRange({5, 6}, false), 2);
    ASSERT_EQ(value.GetKeyCount(), 1);
    EXPECT_EQ(value.GetKey(0)->frame, 0);
    EXPECT_EQ(value.GetKey(0)->value, 0.0);
}

TEST_F(ActiveValue, ConstantWishWithSeveralKeysChangesNothingOnDisplay) {
    setKeys(value, {{0, 1.0}, {10, 2.0}});
    EXPECT_FALSE(value.SetConstantWanted(true, true));
    EXPECT_TRUE(listener.Events.empty());
    EXPECT_FALSE(value.ClearConstantWanted(true));
    EXPECT_EQ(listener.Events.size(), 1u);

    value.MakeConstant(7, 3.0, false);
    EXPECT_TRUE(value.IsConstant());
    EXPECT_EQ(framesOf(value), (std::vector<long>{7}));
}

TEST_F(ActiveValue, LimitsClampReadingsAndWidenTheDisplay) {
    LimitedValue limited("Opacity", 50.0, false);
    limited.SetKey(10, 120.0, true, false, false);
    limited.SetKey(20, 120.0, true, false, false);
    EXPECT_EQ(limited.GetValue(10), 100.0);
    EXPECT_EQ(limited.Interpolate(10), 120.0);

    double min = 0;
    double max = 0;
    long minFrame = 0;
    long maxFrame = 0;
    limited.GetValueExtremes(&min, &max, &minFrame, &maxFrame, true);
    EXPECT_EQ(max, 100.0);
    EXPECT_EQ(maxFrame, 20);
    EXPECT_EQ(minFrame, 0);
    limited.GetValueExtremes(nullptr, nullptr, &minFrame, &maxFrame, false);
    EXPECT_EQ(maxFrame, 20);

    limited.GetDisplayRange(&min, &max, &minFrame, &maxFrame);
    EXPECT_EQ(min, 0.0);
    EXPECT_EQ(max, 120.0);
}

TEST(ActiveAngle, FoldsIntoOneTurnAtTenthsOfADegree) {
    iActiveAngle angle("Angle", 0.0, false);
    EXPECT_DOUBLE_EQ(angle.Clamp(725.04, 0), 5.0);
    EXPECT_EQ(angle.Clamp(-0.05, 0), 0.0);
    EXPECT_DOUBLE_EQ(angle.Clamp(-10.0, 0), 350.0);
    angle.SetKey(10, 720.0, true, false, false);
    EXPECT_DOUBLE_EQ(angle.GetValue(5), 0.0);
    EXPECT_DOUBLE_EQ(angle.GetValue(6), 72.0);
}

TEST(ActiveValueOwner, ValuesLinkAtTheFrontAndLeaveOnDestruction) {
    RecordingOwner owner;
    iActiveValue first(&owner, "First", 0.0, false);
    {
        iActiveValue second("Second", 0.0, false);
        EventRecorder listener(&second);
        second.Link(&owner);
        EXPECT_EQ(owner.GetFirstValue(), &second);
        EXPECT_EQ(owner.GetLastValue(), &first);
        EXPECT_EQ(second.GetNextValue(), &first);
        EXPECT_EQ(owner.GetValueCount(), 2);
        ASSERT_EQ(listener.Events.size(), 1u);
        EXPECT_EQ(listener.Events[0].code, iActiveValue::event_linked);
        second.SetKey(3, 1.0, true, true, false);
    }
    EXPECT_EQ(owner.GetFirstValue(), &first);
    EXPECT_EQ(first.GetPreviousValue(), nullptr);
    EXPECT_EQ(owner.GetValueCount(), 1);
    EXPECT_EQ(owner.Notices,
              (std::vector<std::string>{"added First", "added Second", "changed Second", "removed Second"}));
}

TEST(ActiveValueColour, NewValuesTakeTheCurveColoursInTurn) {
    std::vector<std::unique_ptr<iActiveValue>> values;
    for (int count = 0; count < 19; ++count)
        values.push_back(std::make_unique<iActiveValue>("v", 0.0, false));
    EXPECT_NE(values[0]->GetColour(), values[1]->GetColour());
    EXPECT_EQ(values[0]->GetColour(), values[18]->GetColour());
}

// Load and save

namespace {

class ActiveValueFile : public ::testing::Test {
protected:
    // The block of `value` in `section`, made empty.
    qvrCTreeData& blockFor(const std::string& name) {
        return *section.CreateChild(iActiveValue::BlockName(name));
    }
    std::vector<std::string> reportTexts() const {
        std::vector<std::string> texts;
        for (const hReportEntry& entry : root.GetEntries())
            texts.push_back(std::to_string(entry.Level) + " " + entry.Path + ": " + entry.Text);
        return texts;
    }

    qvrCTreeData section{"Variables"};
    hReportRoot root{"Load"};
};

} // namespace

TEST_F(ActiveValueFile, SavedValueReadsBackUnchanged) {
    iActiveValue saved("Center X", 0.0, true);
    saved.SetKey(7, -2.5, true, false, false);
    saved.SetKey(12, 1.0 / 3.0, true, false, true);
    saved.SetColour(0x123456);
    saved.SetDisplayed(true);
    ASSERT_TRUE(saved.Save(section, root));

    const qvrCTreeData* block = section.Find("Variable \"Center X\"");
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(*block->GetText("Color"), "1193046");
    EXPECT_EQ(*block->GetText("LinearKeys"), "3");
    EXPECT_EQ(*block->Find("LinearKeys")->GetText("00000007"), "-2.5");

    iActiveValue loaded("Center X", 9.0, false);
    EventRecorder listener(&loaded);
    loaded.Load(section, root);
    EXPECT_EQ(root.GetCount(), 0);
    EXPECT_EQ(loaded.GetColour(), 0x123456u);
    EXPECT_TRUE(loaded.IsDisplayed());
    EXPECT_TRUE(loaded.IsConstantWanted());
    EXPECT_EQ(loaded.GetFactor(), 1.0);
    ASSERT_EQ(loaded.GetKeyCount(), 3);
    EXPECT_EQ(loaded.GetKey(2)->value, 1.0 / 3.0);
    EXPECT_FALSE(loaded.IsKeySelected(2));
    ASSERT_EQ(listener.Events.size(), 1u);
    EXPECT_FALSE(listener.Events[0].range.has_value());
}

TEST_F(ActiveValueFile, UnusedFactorAndOffsetsAreKept) {
    qvrCTreeData& block = blockFor("Width");
    block.SetText("Factor", "2.5");
    block.SetText("PreOffset", "-1");
    block.SetText("PostOffset", "bad");
    block.CreateChild("LinearKeys")->SetText("00000000", "1");
    iActiveValue loaded("Width", 0.0, false);
    loaded.Load(section, root);
    EXPECT_EQ(loaded.GetFactor(), 2.5);
    EXPECT_EQ(loaded.GetPreOffset(), -1.0);
    EXPECT_EQ(loaded.GetPostOffset(), 0.0);

    qvrCTreeData copy("Variables");
    loaded.Save(copy, root);
    EXPECT_EQ(*copy.Find(iActiveValue::BlockName("Width"))->GetText("Factor"), "2.5");
}

TEST_F(ActiveValueFile, BadKeysAreReportedAndSkipped) {
    qvrCTreeData* keys = blockFor("Width").CreateChild("LinearKeys");
    keys->SetText("10", "1.5");
    keys->SetText("9", "2");   // sorts after "10", so its frame comes too late
    keys->SetText("11", "x1"); // sorts between them
    keys->SetText("frame", "3");
    iActiveValue loaded("Width", 0.0, false);
    loaded.Load(section, root);
    EXPECT_EQ(framesOf(loaded), (std::vector<long>{10}));
    EXPECT_EQ(reportTexts(),
              (std::vector<std::string>{
                  "1 Load/Width: Bad key \"11\": Invalid value \"x1\" (this key will be ignored)",
                  "1 Load/Width: Bad key \"9\": Bad key ordering (this key will be ignored)",
                  "1 Load/Width: Bad key \"frame\": Not a valid frame time (this key will be ignored)"}));
}

TEST_F(ActiveValueFile, MissingDataLeavesADefaultKey) {
    iActiveValue loaded("Width", 5.0, false);
    loaded.SetKey(10, 1.0, true, false, false);
    loaded.Load(section, root);
    EXPECT_EQ(loaded.GetKeyCount(), 2);

    blockFor("Width").SetBool("Displayed", true);
    loaded.Load(section, root);
    EXPECT_EQ(framesOf(loaded), (std::vector<long>{0}));
    EXPECT_EQ(loaded.GetValue(0), 0.0);

    section.Find(iActiveValue::BlockName("Width"))->CreateChild("LinearKeys")->SetText("x", "1");
    loaded.Load(section, root);
    EXPECT_EQ(reportTexts(),
              (std::vector<std::string>{
                  "2 Load/Width: No data for this variable",
                  "2 Load/Width: NO linear keys found (section 'LinearKeys' is missing)",
                  "1 Load/Width: Bad key \"x\": Not a valid frame time (this key will be ignored)",
                  "2 Load/Width: No key found - setting a default key at 0,0"}));
}

TEST_F(ActiveValueFile, SavingAValueTwiceIsAConsistencyError) {
    iActiveValue saved("Width", 5.0, false);
    EXPECT_TRUE(saved.Save(section, root));
    saved.SetKey(10, 1.0, true, false, false);
    EXPECT_FALSE(saved.Save(section, root));
    EXPECT_EQ(reportTexts(),
              (std::vector<std::string>{"3 Load/Width: CONSISTENCY ERROR: VARIABLE ENTRY ALREADY EXISTS"}));
    EXPECT_EQ(*section.Find(iActiveValue::BlockName("Width"))->GetText("LinearKeys"), "1");
}

// The popup menu

namespace {

class MenuValue : public iActiveValue {
public:
    explicit MenuValue(iActiveValueOwner* owner) : iActiveValue(owner, "Angle", 2.0, false) {}
    bool HasMenuExtension() const override { return true; }
    void AddMenuItems(hMenu& menu, unsigned firstId) override { menu.AppendItem(firstId, "Reset"); }
    bool HandleMenuItem(unsigned firstId, unsigned command) override {
        Handled = command - firstId;
        return true;
    }
    unsigned Handled = 99;
};

class ChoosingFrontEnd : public iObjectFrontEnd {
public:
    ChoosingFrontEnd() { iObjectFrontEnd::Set(this); }
    ~ChoosingFrontEnd() override { iObjectFrontEnd::Set(nullptr); }
    unsigned TrackPopupMenu(const hMenu& menu, CPoint, CWnd*) override {
        Shown = menu.GetItems().size();
        return Choice;
    }
    void ShowProperties(iObjectBase& object) override { Properties = &object; }

    unsigned Choice = 0;
    size_t Shown = 0;
    iObjectBase* Properties = nullptr;
};

} // namespace

TEST(ActiveValueMenu, OffersModifyExtensionsAndConstant) {
    RecordingOwner owner;
    MenuValue value(&owner);
    ChoosingFrontEnd frontEnd;
    hMenu menu;
    value.BuildContextMenu(menu);
    const std::vector<hMenuItem>& items = menu.GetItems();
    ASSERT_EQ(items.size(), 5u);
    EXPECT_EQ(items[0].Text, "Modify...");
    EXPECT_TRUE(items[0].Default);
    EXPECT_EQ(items[2].Id, iActiveValue::FirstExtensionCommand);
    EXPECT_TRUE(items[3].IsSeparator());
    EXPECT_EQ(items[4].Text, "Constant");
    EXPECT_FALSE(items[4].Checked);

    frontEnd.Choice = iActiveValue::FirstExtensionCommand;
    EXPECT_TRUE(value.OnContextMenu({0, 0}, nullptr));
    EXPECT_EQ(frontEnd.Shown, 5u);
    EXPECT_EQ(value.Handled, 0u);
    EXPECT_TRUE(value.RunMenuCommand(iActiveValue::command_modify));
    EXPECT_EQ(frontEnd.Properties, &value);

    value.SetConstantWanted(true, false);
    hMenu constantMenu;
    value.BuildContextMenu(constantMenu);
    EXPECT_EQ(constantMenu.GetItems().size(), 3u);
    EXPECT_TRUE(constantMenu.GetItems()[2].Checked);
}

TEST(ActiveValueMenu, MakingAnAnimationConstantAsksFirst) {
    RecordingOwner owner;
    owner.CurrentFrame = 5;
    iActiveValue value(&owner, "Opacity", 0.0, false);
    value.SetKey(10, 1.0, true, false, false);
    ScriptedUserInterface user;
    user.Answer = IDNO;
    EXPECT_FALSE(value.RunMenuCommand(iActiveValue::command_constant));
    EXPECT_EQ(value.GetKeyCount(), 2);
    ASSERT_EQ(user.Messages.size(), 1u);
    EXPECT_EQ(user.Messages[0], "The value \"Opacity\" has 2 keys.\nTo make it constant, all keys will be "
                                "removed and\na new key with the value 0.50 will be created for\nframe "
                                "5.\n\nAre you sure you want to do that ?");

    user.Answer = IDYES;
    EXPECT_TRUE(value.RunMenuCommand(iActiveValue::command_constant));
    EXPECT_TRUE(value.IsConstant());
    EXPECT_EQ(value.GetKey(0)->frame, 5);
    EXPECT_EQ(value.GetKey(0)->value, 0.5);

    EXPECT_TRUE(value.RunMenuCommand(iActiveValue::command_constant));
    EXPECT_FALSE(value.IsConstantWanted());
    EXPECT_EQ(user.Messages.size(), 2u);
}
