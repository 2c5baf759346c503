#pragma once
// Animated values: a named, keyed, piecewise linear function from frame number
// to double, with at least one key at all times, that an element owns and its
// render code reads with GetValue. The spline views edit the keys; the project
// file stores each value as a block named after it. iActiveAngle folds its
// result into one turn.
//
// A value has no lock: render threads call GetValue while they hold their
// access to the owning element, and edits come from the main thread under the
// element's rules.

#include "model/iActiveKeyList.h"
#include "model/iObjectBase.h"

#include <cstdint>
#include <string>

class hMenu;
class hReport;
class iActiveValue;
class qvrCTreeData;

// The element side of animated values: the list of the values it owns and the
// notices a value gives it. An element derives from it; the values keep the
// list themselves as they link and unlink. Main thread only.
struct iParameter;

class iActiveValueOwner {
public:
    virtual ~iActiveValueOwner() = default;

    // The most recently linked value first.
    iActiveValue* GetFirstValue() const { return FirstValue; }
    iActiveValue* GetLastValue() const { return LastValue; }
    long GetValueCount() const { return ValueCount; }

    virtual void OnValueAdded(iActiveValue* value) = 0;
    virtual void OnValueRemoved(iActiveValue* value) = 0;
    // The curve changed within `range`; null means all frames.
    virtual void OnValueChanged(iActiveValue* value, const EFrameRange* range) = 0;
    // Something changed that leaves the curve alone: key selection, constant state.
    virtual void OnValueDisplayChanged(iActiveValue* value) = 0;
    // The frame the user works at (the project's current frame).
    virtual long GetCurrentFrame() const = 0;

private:
    friend class iActiveValue;

    iActiveValue* FirstValue = nullptr;
    iActiveValue* LastValue = nullptr;
    long ValueCount = 0;
};

class iActiveValue : public iObjectBase {
public:
    // Codes that listeners receive.
    static constexpr long event_display_changed = 1;
    static constexpr long event_value_changed = 2; // with the range
    static constexpr long event_linked = 3;
    static constexpr long event_unlinked = 4;

    // Commands of the popup menu; a menu extension's items start at FirstExtensionCommand.
    static constexpr unsigned command_modify = 1;
    static constexpr unsigned command_constant = 2;
    static constexpr unsigned FirstExtensionCommand = 4;

    // One key (frame 0, `initialValue`), then linked into `owner`.
    iActiveValue(iActiveValueOwner* owner, std::string name, double initialValue, bool constantWanted);
    // A value that belongs to no element; whoever made it owns it.
    iActiveValue(std::string name, double initialValue, bool constantWanted);
    // The value that a parameter describes, linked into `owner`.
    iActiveValue(iActiveValueOwner* owner, const iParameter& parameter);
    // The value that a parameter describes under another name, belonging to no element yet.
    iActiveValue(std::string name, const iParameter& parameter);
    ~iActiveValue() override;

    // Enters the front of the owner's list (nothing happens for the present owner).
    void Link(iActiveValueOwner* owner);
    void Unlink();
    iActiveValueOwner* GetOwner() const { return Owner; }
    iActiveValue* GetNextValue() const { return NextValue; }
    iActiveValue* GetPreviousValue() const { return PreviousValue; }

    // The clamped curve at `frame`: what render code reads.
    double GetValue(long frame) const { return Clamp(Interpolate(frame), frame); }
    double Interpolate(long frame) const { return Keys.Interpolate(frame); }
    // Constant: wanted so and fewer than two keys; the editors then show a plain number.
    bool IsConstant() const { return ConstantWanted && Keys.GetCount() < 2; }
    bool IsConstantWanted() const { return ConstantWanted; }
    long GetFirstKeyFrame() const { return Keys.GetFirst().frame; }
    long GetLastKeyFrame() const { return Keys.GetLast().frame; }
    long GetKeyCount() const { return Keys.GetCount(); }
    // The key at `index`, null for an invalid index.
    const iActiveKey* GetKey(long index) const { return Keys.IsValidIndex(index) ? &Keys[index] : nullptr; }
    long IndexAtOrAfter(long frame) const { return Keys.IndexAtOrAfter(frame); }
    long IndexAtOrBefore(long frame) const { return Keys.IndexAtOrBefore(frame); }
    EFrameRange GetAffectedRange(long index) const { return Keys.GetAffectedRange(index); }

    uint32_t GetColour() const { return Colour; }
    void SetColour(uint32_t colour) { Colour = colour; }
    // Shown as a curve in the spline views.
    bool IsDisplayed() const { return Displayed; }
    void SetDisplayed(bool displayed) { Displayed = displayed; }
    // Kept in the file and otherwise unused.
    double GetFactor() const { return Factor; }
    double GetPreOffset() const { return PreOffset; }
    double GetPostOffset() const { return PostOffset; }

    // Tells the owner and the listeners that the curve changed in `range` (null: all frames).
    void ValueChanged(const EFrameRange* range);
    // Tells the owner and the listeners of a change that leaves the curve alone.
    void DisplayChanged();
    // Takes over the other value's keys and constant wish; notifies all frames.
    void AssignKeys(const iActiveValue& other);

    // The value's menu: "Modify...", the class's additions and "Constant".
    bool OnContextMenu(CPoint point, CWnd* window) override;
    void BuildContextMenu(hMenu& menu);
    // Carries out a command of the menu; true when something was done.
    bool RunMenuCommand(unsigned command);

    // The limits fold a value into range; null for no limit.
    virtual double Clamp(double value, long frame) const;
    virtual const double* GetMaxLimit() const { return nullptr; }
    virtual const double* GetMinLimit() const { return nullptr; }
    // The curve display's bounds when there is no limit.
    virtual double GetDefaultMin(double min, double max) const;
    virtual double GetDefaultMax(double min, double max) const;
    virtual bool HasMenuExtension() const { return false; }
    virtual void AddMenuItems(hMenu& menu, unsigned firstId);
    virtual bool HandleMenuItem(unsigned firstId, unsigned command);

    // Enters a key; a key at the frame with another value is replaced only with `overwrite`.
    virtual bool SetKey(long frame, double value, bool overwrite, bool notify, bool selected);
    // A constant value moves its one key to the frame; otherwise SetKey with overwrite.
    virtual bool SetKeyAuto(long frame, double value, bool notify, bool selected);
    // Deletes the key at exactly `frame`; the last key never goes.
    virtual bool DeleteKey(long frame, bool notify);
    // Moves the key at `index`, kept between its neighbours, and sets its value.
    virtual bool ModifyKey(long index, long frame, double value, bool notify);
    // The nearest frame to `frame` that keeps key `index` between its neighbours.
    virtual long ConstrainKeyFrame(long index, long frame) const;
    // Moves the animation to `start` and stretches it by `factor`. A key whose
    // new frame doesn't exceed its old one is dropped (the first key excepted).
    virtual void ScaleKeys(long start, double factor, bool notify);
    virtual bool SelectKey(long index, bool selected, bool notify);
    // Moves `index` to the first selected key at or after it; false when there is none.
    virtual bool NextSelectedKey(long& index) const;
    virtual bool IsKeySelected(long index) const;
    virtual bool ClearKeySelection(bool notify);
    // Selects the keys from IndexAtOrAfter(first) to IndexAtOrBefore(last);
    // with `exclusive` every other key is deselected.
    virtual bool SelectKeyRange(long firstFrame, long lastFrame, bool exclusive, bool notify);
    // How many frames the selection can move either way without meeting an unselected key.
    virtual bool GetSelectionFreedom(long& toLeft, long& toRight) const;
    virtual bool MoveSelectedKeys(long frameDelta, double valueDelta, bool notify);
    virtual long CountSelectedKeys() const;
    // Deletes the selected keys; a value left without keys keeps its lowest one.
    virtual bool DeleteSelectedKeys(bool notify);
    virtual void SetSingleKey(long frame, double value, bool notify);
    virtual void MakeConstant(long frame, double value, bool notify);
    virtual bool ClearConstantWanted(bool notify);
    // Returns IsConstant.
    virtual bool SetConstantWanted(bool wanted, bool notify);
    // Deletes the keys inside `range` and returns their number.
    virtual long DeleteKeysInRange(const EFrameRange& range, bool notify);
    // The keys' smallest and largest values and their frames; any output may be null.
    virtual void GetValueExtremes(double* min, double* max, long* minFrame, long* maxFrame,
                                  bool clamped) const;
    // The bounds in which the curve is drawn: the extremes widened to the limits.
    virtual void GetDisplayRange(double* min, double* max, long* firstFrame, long* lastFrame) const;
    // Reads the value's block from `section`; missing or bad data is reported, never fatal.
    virtual void Load(const qvrCTreeData& section, hReport& report);
    // Writes the value's block into `section`; false when it already exists.
    virtual bool Save(qvrCTreeData& section, hReport& report) const;

    // The block name of a value in its section.
    static std::string BlockName(const std::string& valueName);

private:
    void notifyValueChanged(bool notify, const EFrameRange* range);
    void notifyDisplayChanged(bool notify);
    bool askMakeConstant();
    void readKeys(const qvrCTreeData& block, hReport& report);
    void readKey(const qvrCTreeData& entry, hReport& report);

    iActiveValueOwner* Owner = nullptr;
    double PreOffset = 0.0;
    double PostOffset = 0.0;
    double Factor = 1.0;
    iActiveKeyList Keys;
    bool Displayed = false;
    bool ConstantWanted;
    iActiveValue* NextValue = nullptr;
    iActiveValue* PreviousValue = nullptr;
    uint32_t Colour;
};

// An angle in degrees, read folded into 0 up to 360 at a tenth of a degree.
// The keys themselves may lie outside one turn. Threads as iActiveValue.
class iActiveAngle : public iActiveValue {
public:
    using iActiveValue::iActiveValue;

    double Clamp(double value, long frame) const override;
};
