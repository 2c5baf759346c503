#include "model/iActiveValue.h"

#include "ScriptedUserInterface.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"
#include "model/hMenu.h"
#include "model/iObjectFrontEnd.h"

#include <gtest/gtest.h>

using Log = std::vector<std::string>;

namespace {

std::string rangeText(const EFrameRange* range) {
    return range ? qvrFormat("%ld-%ld", range->First, range->Last()) : "all";
}

// Writes what a value tells its listeners, "2 0-20" for a change of frames 0 to 20.
class EventRecorder : public iNotifier {
public:
    using iNotifier::iNotifier;
    Log Events;

protected:
    iNotifyAnswer OnEvent(long code, const iEventArgument& argument) override {
        Events.push_back(code == iActiveValue::event_value_changed ? "2 " + rangeText(argument.Range)
                                                                   : std::to_string(code));
        return iNotifyAnswer::Keep;
    }
};

class RecordingOwner : public iActiveValueOwner {
public:
    void OnValueAdded(iActiveValue* value) override { Notices.push_back("added " + value->GetName()); }
    void OnValueRemoved(iActiveValue* value) override { Notices.push_back("removed " + value->GetName()); }
    void OnValueChanged(iActiveValue*, const EFrameRange* range) override {
        Notices.push_back("changed " + rangeText(range));
    }
    void OnValueDisplayChanged(iActiveValue*) override { Notices.push_back("display"); }
    long GetCurrentFrame() const override { return CurrentFrame; }

    long CurrentFrame = 0;
    Log Notices;
};

class PercentValue : public iActiveValue {
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
    long index = 0;
    for (const KeyText& key : keys)
        target.SetKey(key.frame, key.value, true, false, false);
    for (const KeyText& key : keys)
        target.SelectKey(index++, key.selected, false);
}

// The keys as "frame" or "frame*" for a selected key.
std::string framesOf(const iActiveValue& target) {
    std::string text;
    for (long index = 0; index < target.GetKeyCount(); ++index)
        text += qvrFormat("%s%ld%s", index ? " " : "", target.GetKey(index)->frame,
                          target.IsKeySelected(index) ? "*" : "");
    return text;
}

class ActiveValue : public ::testing::Test {
protected:
    iActiveValue value{"Width", 0.0, false};
    EventRecorder listener{&value};
};

} // namespace

TEST_F(ActiveValue, SetKeyReplacesAValueOnlyWhenAskedTo) {
    setKeys(value, {{0, 1.0}, {10, 2.0}, {20, 3.0}});
    EXPECT_TRUE(value.SetKey(10, 2.0, false, true, true));
    EXPECT_FALSE(value.SetKey(10, 5.0, false, true, false));
    EXPECT_TRUE(value.SetKey(10, 5.0, true, true, true));
    EXPECT_EQ(framesOf(value), "0 10* 20");
    EXPECT_EQ(listener.Events, Log{"2 0-20"});
}

TEST_F(ActiveValue, ConstantValueMovesItsOnlyKeyToTheEditedFrame) {
    value.SetConstantWanted(true, false);
    EXPECT_TRUE(value.SetKeyAuto(50, 0.0, true, false));
    EXPECT_TRUE(value.SetKeyAuto(70, 9.0, true, false));
    EXPECT_EQ(framesOf(value), "70");
    EXPECT_EQ(listener.Events, Log{"2 all"});

    value.ClearConstantWanted(false);
    value.SetKeyAuto(80, 9.0, false, false);
    EXPECT_EQ(framesOf(value), "70 80");
}

TEST_F(ActiveValue, SingleKeyChangesAreKeptBetweenNeighbours) {
    EXPECT_FALSE(value.DeleteKey(0, true));
    setKeys(value, {{0, 1.0}, {10, 2.0}, {20, 3.0}});
    EXPECT_TRUE(value.ModifyKey(1, 25, 2.0, false));
    EXPECT_TRUE(value.ModifyKey(0, -3, 2.0, false));
    EXPECT_EQ(framesOf(value), "-3 19 20");
    EXPECT_FALSE(value.ModifyKey(1, 30, 2.0, false));
    EXPECT_FALSE(value.ModifyKey(3, 30, 2.0, false));
    EXPECT_TRUE(value.DeleteKey(19, true));
    EXPECT_EQ(listener.Events, Log{"2 -3-20"});
}

TEST_F(ActiveValue, ScalingKeepsOnlyKeysThatMoveUp) {
    setKeys(value, {{0, 1.0}, {10, 2.0}, {20, 3.0}});
    value.ScaleKeys(0, 2.0, true);
    EXPECT_EQ(framesOf(value), "0 20 40");
    // Shrinking leaves every key but the first at or below its old frame: they all go.
    value.ScaleKeys(0, 0.5, true);
    EXPECT_EQ(framesOf(value), "0");
    EXPECT_EQ(listener.Events, (Log{"2 all", "2 all"}));

    setKeys(value, {{5, 1.0}, {10, 2.0}});
    value.ScaleKeys(100, 1.0, false);
    EXPECT_EQ(framesOf(value), "100 105");
    // An animation from frame 0 that keeps its length ignores the new start.
    setKeys(value, {{0, 1.0}, {10, 2.0}});
    value.ScaleKeys(30, 1.00000001, false);
    EXPECT_EQ(framesOf(value), "0 10");
}

TEST_F(ActiveValue, RangeSelectionBeforeTheFirstKeySelectsTheFirstKey) {
    setKeys(value, {{10, 1.0}, {20, 2.0}, {30, 3.0, true}});
    EXPECT_TRUE(value.SelectKeyRange(0, 5, false, true));
    EXPECT_EQ(framesOf(value), "10* 20 30*");
    EXPECT_TRUE(value.SelectKeyRange(15, 25, true, true));
    EXPECT_FALSE(value.SelectKeyRange(15, 25, true, true));
    EXPECT_EQ(framesOf(value), "10 20* 30");
    EXPECT_TRUE(value.SelectKeyRange(31, 40, false, true));
    EXPECT_EQ(framesOf(value), "10 20 30");
    EXPECT_EQ(listener.Events, (Log{"1", "1", "1"}));
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
    EXPECT_EQ(framesOf(value), "0 0* 1* 50");
    EXPECT_EQ(value.GetKey(1)->value, 1.5);
    EXPECT_EQ(listener.Events, Log{"2 1-49"});
}

TEST_F(ActiveValue, DeletingSelectedKeysNeverLeavesTheValueEmpty) {
    setKeys(value, {{0, 0.0}, {10, 1.0, true}, {20, 2.0}, {30, 3.0, true}, {40, 4.0, true}, {50, 5.0}});
    EXPECT_TRUE(value.DeleteSelectedKeys(true));
    EXPECT_EQ(framesOf(value), "0 20 50");
    EXPECT_FALSE(value.DeleteSelectedKeys(true));
    EXPECT_EQ(listener.Events, Log{"2 0-50"});

    setKeys(value, {{5, 1.0, true}, {10, 2.0, true}});
    EXPECT_TRUE(value.DeleteSelectedKeys(false));
    EXPECT_EQ(framesOf(value), "5*");

    setKeys(value, {{5, 1.0}, {10, 2.0}});
    EXPECT_EQ(value.DeleteKeysInRange({0, 0}, false), 0);
    EXPECT_EQ(value.DeleteKeysInRange({5, 6}, false), 2);
    EXPECT_EQ(framesOf(value), "0");
    EXPECT_EQ(value.GetKey(0)->value, 0.0);
}

TEST_F(ActiveValue, ConstantWishWithSeveralKeysIsNotShown) {
    setKeys(value, {{0, 1.0}, {10, 2.0}});
    EXPECT_FALSE(value.SetConstantWanted(true, true));
    EXPECT_TRUE(listener.Events.empty());
    value.MakeConstant(7, 3.0, true);
    EXPECT_TRUE(value.IsConstant());
    EXPECT_EQ(framesOf(value), "7");
}

TEST(ActiveValueLimits, ClampReadingsAndWidenTheDisplay) {
    PercentValue opacity("Opacity", 50.0, false);
    opacity.SetKey(10, 120.0, true, false, false);
    opacity.SetKey(20, 120.0, true, false, false);
    EXPECT_EQ(opacity.GetValue(15), 100.0);

    double min = 0;
    double max = 0;
    long minFrame = 0;
    long maxFrame = 0;
    opacity.GetValueExtremes(&min, &max, &minFrame, &maxFrame, true);
    EXPECT_EQ(max, 100.0);
    EXPECT_EQ(maxFrame, 20); // the later of two equal maxima
    EXPECT_EQ(min, 50.0);
    opacity.GetDisplayRange(&min, &max, nullptr, nullptr);
    EXPECT_EQ(min, 0.0);
    EXPECT_EQ(max, 120.0);
}

TEST(ActiveValueLimits, AnglesFoldIntoOneTurnAtTenthsOfADegree) {
    iActiveAngle angle("Angle", 0.0, false);
    EXPECT_DOUBLE_EQ(angle.Clamp(725.04, 0), 5.0);
    EXPECT_EQ(angle.Clamp(-0.05, 0), 0.0);
    EXPECT_DOUBLE_EQ(angle.Clamp(-10.0, 0), 350.0);
    angle.SetKey(10, 720.0, true, false, false);
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
        EXPECT_EQ(second.GetNextValue(), &first);
        EXPECT_EQ(owner.GetValueCount(), 2);
        second.SelectKey(0, true, true);
        EXPECT_EQ(listener.Events, (Log{"3", "1"}));
    }
    EXPECT_EQ(owner.GetFirstValue(), &first);
    EXPECT_EQ(owner.GetLastValue(), &first);
    EXPECT_EQ(owner.Notices, (Log{"added First", "added Second", "display", "removed Second"}));
}

// Load and save

namespace {

class ActiveValueFile : public ::testing::Test {
protected:
    qvrCTreeData& block(const std::string& name) {
        return *section.CreateChild(iActiveValue::BlockName(name));
    }
    Log reportTexts() const {
        Log texts;
        for (const hReportEntry& entry : root.GetEntries())
            texts.push_back(qvrFormat("%d %s: %s", entry.Level, entry.Path.c_str(), entry.Text.c_str()));
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
    qvrCTreeData* saveBlock = section.Find("Variable \"Center X\"");
    ASSERT_NE(saveBlock, nullptr);
    EXPECT_EQ(*saveBlock->GetText("Color"), "1193046");
    EXPECT_EQ(*saveBlock->GetText("LinearKeys"), "3");
    EXPECT_EQ(*saveBlock->Find("LinearKeys")->GetText("00000007"), "-2.5");
    // Factor and offsets mean nothing to the value, but they are carried along.
    saveBlock->SetText("Factor", "2.5");

    iActiveValue loaded("Center X", 9.0, false);
    EventRecorder listener(&loaded);
    loaded.Load(section, root);
    EXPECT_EQ(root.GetCount(), 0);
    EXPECT_EQ(loaded.GetColour(), 0x123456u);
    EXPECT_TRUE(loaded.IsDisplayed());
    EXPECT_TRUE(loaded.IsConstantWanted());
    EXPECT_EQ(loaded.GetFactor(), 2.5);
    EXPECT_EQ(framesOf(loaded), "0 7 12");
    EXPECT_EQ(loaded.GetKey(2)->value, 1.0 / 3.0);
    EXPECT_EQ(listener.Events, Log{"2 all"});
}

TEST_F(ActiveValueFile, BadKeysAreReportedAndSkipped) {
    qvrCTreeData* keys = block("Width").CreateChild("LinearKeys");
    keys->SetText("10", "1.5");
    keys->SetText("9", "2");   // sorts after "10", so its frame comes too late
    keys->SetText("11", "x1"); // sorts between them
    keys->SetText("frame", "3");
    iActiveValue loaded("Width", 0.0, false);
    loaded.Load(section, root);
    EXPECT_EQ(framesOf(loaded), "10");
    EXPECT_EQ(reportTexts(),
              (Log{"1 Load/Width: Bad key \"11\": Invalid value \"x1\" (this key will be ignored)",
                   "1 Load/Width: Bad key \"9\": Bad key ordering (this key will be ignored)",
                   "1 Load/Width: Bad key \"frame\": Not a valid frame time (this key will be ignored)"}));
}

TEST_F(ActiveValueFile, MissingDataLeavesADefaultKey) {
    iActiveValue loaded("Width", 5.0, false);
    loaded.SetKey(10, 1.0, true, false, false);
    loaded.Load(section, root);
    EXPECT_EQ(framesOf(loaded), "0 10");
    block("Width").SetBool("Displayed", true);
    loaded.Load(section, root);
    EXPECT_EQ(framesOf(loaded), "0");
    EXPECT_EQ(loaded.GetValue(0), 0.0);
    block("Width").CreateChild("LinearKeys")->SetText("x", "1");
    loaded.Load(section, root);
    EXPECT_EQ(reportTexts(),
              (Log{"2 Load/Width: No data for this variable",
                   "2 Load/Width: NO linear keys found (section 'LinearKeys' is missing)",
                   "1 Load/Width: Bad key \"x\": Not a valid frame time (this key will be ignored)",
                   "2 Load/Width: No key found - setting a default key at 0,0"}));
}

TEST_F(ActiveValueFile, SavingAValueTwiceIsAConsistencyError) {
    iActiveValue saved("Width", 5.0, false);
    EXPECT_TRUE(saved.Save(section, root));
    saved.SetKey(10, 1.0, true, false, false);
    EXPECT_FALSE(saved.Save(section, root));
    EXPECT_EQ(reportTexts(), Log{"3 Load/Width: CONSISTENCY ERROR: VARIABLE ENTRY ALREADY EXISTS"});
    EXPECT_EQ(*block("Width").GetText("LinearKeys"), "1");
}

// The popup menu

namespace {

class MenuValue : public iActiveValue {
public:
    using iActiveValue::iActiveValue;
    bool HasMenuExtension() const override { return true; }
    void AddMenuItems(hMenu& menu, unsigned firstId) override { menu.AppendItem(firstId, "Reset"); }
    bool HandleMenuItem(unsigned firstId, unsigned command) override { return command == firstId; }
};

class ChoosingFrontEnd : public iObjectFrontEnd {
public:
    ChoosingFrontEnd() { iObjectFrontEnd::Set(this); }
    ~ChoosingFrontEnd() override { iObjectFrontEnd::Set(nullptr); }
    unsigned TrackPopupMenu(const hMenu&, CPoint, CWnd*) override { return Choice; }
    void ShowProperties(iObjectBase& object) override { Properties = &object; }

    unsigned Choice = 0;
    iObjectBase* Properties = nullptr;
};

Log menuTexts(iActiveValue& value) {
    hMenu menu;
    value.BuildContextMenu(menu);
    Log texts;
    for (const hMenuItem& item : menu.GetItems())
        texts.push_back(qvrFormat("%u %s%s%s", item.Id, item.Text.c_str(), item.Default ? " default" : "",
                                  item.Checked ? " checked" : ""));
    return texts;
}

} // namespace

TEST(ActiveValueMenu, OffersModifyExtensionsAndConstant) {
    MenuValue value("Angle", 2.0, false);
    EXPECT_EQ(menuTexts(value), (Log{"1 Modify... default", "0 ", "4 Reset", "0 ", "2 Constant"}));
    ChoosingFrontEnd frontEnd;
    frontEnd.Choice = iActiveValue::FirstExtensionCommand;
    EXPECT_TRUE(value.OnContextMenu({0, 0}, nullptr));
    frontEnd.Choice = iActiveValue::command_modify;
    EXPECT_TRUE(value.OnContextMenu({0, 0}, nullptr));
    EXPECT_EQ(frontEnd.Properties, &value);

    value.SetConstantWanted(true, false);
    EXPECT_EQ(menuTexts(value), (Log{"4 Reset", "0 ", "2 Constant checked"}));
}

TEST(ActiveValueMenu, MakingAnAnimationConstantAsksFirst) {
    RecordingOwner owner;
    owner.CurrentFrame = 5;
    iActiveValue value(&owner, "Opacity", 0.0, false);
    value.SetKey(10, 1.0, true, false, false);
    ScriptedUserInterface user;
    user.Answer = IDNO;
    EXPECT_FALSE(value.RunMenuCommand(iActiveValue::command_constant));
    EXPECT_EQ(user.Messages, Log{"The value \"Opacity\" has 2 keys.\nTo make it constant, all keys will be "
                                 "removed and\na new key with the value 0.50 will be created for\nframe "
                                 "5.\n\nAre you sure you want to do that ?"});
    user.Answer = IDYES;
    EXPECT_TRUE(value.RunMenuCommand(iActiveValue::command_constant));
    EXPECT_EQ(framesOf(value), "5");
    EXPECT_EQ(value.GetValue(0), 0.5);
    EXPECT_TRUE(value.RunMenuCommand(iActiveValue::command_constant));
    EXPECT_FALSE(value.IsConstantWanted());
}
