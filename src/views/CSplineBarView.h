#pragma once
// The curve view of the spline bar, apart from drawing: the value whose keys
// the user edits, its context menu and commands, the rate of the time axis
// labels and the range of the value axis, and the settings block "Coords"
// with the checks made after a load. Main thread only, like every window.

#include "foundation/EStringTable.h"
#include "foundation/qvrGeometry.h"
#include "views/CActiveValueEditView.h"

#include <cstdint>
#include <string>

class hMenu;
class hReport;
class iProject;
class qvrCTreeData;

class CSplineBarView : public CActiveValueEditView {
public:
    // Commands of the context menu.
    enum MenuCommand : unsigned {
        command_delete_keys = 1,
        command_select_all = 2,
        command_add_mode = 3,
        command_normal_zoom = 5,
        command_full_spline = 6,
        command_labels_25 = 7,
        command_labels_35 = 8,
        command_labels_50 = 9,
        command_labels_frames = 10,
        command_labels_15 = 12,
        command_range_500 = 13,
        command_range_1000 = 14,
        command_range_5000 = 15,
        command_range_10000 = 16,
        command_range_20000 = 17,
        command_range_50000 = 18,
        command_range_100k = 19,
        command_repaint = 40,
        command_beep = 41,
        command_edit_keys = 50
    };
    static constexpr long DefaultRange = 10000;
    static constexpr double DefaultZoom = 4.0;
    // The world begins this many frames before frame 0.
    static constexpr long LeadFrames = 10;

    // What the window does for the view; the defaults do nothing.
    class FrontEnd {
    public:
        virtual ~FrontEnd() = default;
        virtual void Beep() {}
        virtual void Repaint() {}
        // Repaints the whole bar, tree included.
        virtual void RefreshBar() {}
        virtual void OpenKeyEditPanel() {}
    };

    explicit CSplineBarView(iProject& project);

    // Null restores the hook that does nothing; the caller keeps ownership.
    void SetFrontEnd(FrontEnd* frontEnd);

    void BuildContextMenu(hMenu& menu) const;
    // Carries out a command of the menu; true when it was one.
    bool RunCommand(unsigned command);

    // The time axis label of a frame at `rate` frames per second (0: the frame number).
    static std::string TimeLabel(long frame, long rate, bool withFrames);
    // The widest label the axis must have room for.
    static std::string LongestTimeLabel();

    uint8_t GetLabelRate() const { return FPS; }
    void SetLabelRate(uint8_t rate);
    long GetValueRange() const { return nMax; }
    // The value axis from -range to range, the time axis to the project's last frame.
    void SetValueRange(long range);
    // The time axis follows the project's length.
    void UpdateWorld();
    bool IsAddMode() const { return AddMode; }

    // The settings block: read with its checks, then the world, then zoom and position.
    void LoadSettings(const qvrCTreeData& block, hReport& report);
    void SaveSettings(qvrCTreeData& block) const;
    // The block as it reads before any view exists.
    static void SaveDefaultSettings(qvrCTreeData& block);

private:
    static void writeView(qvrCTreeData& block, long range, double x, double y, CPoint position);
    bool deleteSelectedKeys();
    bool selectAllKeys();
    // Beeps and tells the status line.
    void complain(EStringId text);

    iProject& Project;
    FrontEnd* Front;
    uint8_t FPS = 25;
    long nMax = DefaultRange;
    bool AddMode = false;
};
