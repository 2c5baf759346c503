#pragma once
// The ids of the render objects' texts in the string table, by name.

#include "foundation/EStringTable.h"

struct ObjectText {
    // Labels of the objects' parameters.
    static constexpr EStringId LabelWidth = 47603;
    static constexpr EStringId LabelHeight = 47604;
    static constexpr EStringId LabelCenterX = 47605;
    static constexpr EStringId LabelCenterY = 47606;
    static constexpr EStringId LabelRed = 47700;
    static constexpr EStringId LabelGreen = 47701;
    static constexpr EStringId LabelBlue = 47702;
    static constexpr EStringId LabelAlpha = 47703;
    static constexpr EStringId LabelSize = 47704;
    static constexpr EStringId LabelAngle = 47705;
    static constexpr EStringId LabelBrightness = 47706;
    static constexpr EStringId LabelContrast = 47707;
    static constexpr EStringId LabelSaturation = 47708;
    static constexpr EStringId LabelTransparency = 47709;
    static constexpr EStringId LabelBackgroundColor = 47710;
    static constexpr EStringId LabelRelativeEdges = 47711;
    static constexpr EStringId LabelQualityInPreview = 47712;
    static constexpr EStringId LabelQualityWhenRendering = 47713;
    static constexpr EStringId LabelLockAspect = 47714;
    static constexpr EStringId LabelKeepOwnSize = 47715;
    static constexpr EStringId LabelIgnoreSourceErrors = 47716;
    static constexpr EStringId LabelXPosition = 47717;
    static constexpr EStringId LabelYPosition = 47718;
    static constexpr EStringId LabelOpacity = 47719;
    static constexpr EStringId LabelActive = 47720;
    static constexpr EStringId LabelUseInViews = 47721;
    static constexpr EStringId LabelUseForProxies = 47722;
    static constexpr EStringId LabelFirstUsedFile = 47723;
    static constexpr EStringId LabelLastUsedFile = 47724;
    static constexpr EStringId LabelStartFrame = 47725;
    static constexpr EStringId LabelFramesPerImage = 47726;
    static constexpr EStringId LabelCustomFlowControl = 47727;
    static constexpr EStringId LabelBackward = 47728;
    static constexpr EStringId LabelFlowControl = 47729;
};
