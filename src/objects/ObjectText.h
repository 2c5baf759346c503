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

    // Complaints of the property pages.
    static constexpr EStringId TextNothingEntered = 47501;
    static constexpr EStringId TextNotANumber = 47502;
    static constexpr EStringId TextNameEmpty = 47613;
    static constexpr EStringId TextNameTaken = 47614;
    static constexpr EStringId TextInvalidColor = 47615;
    static constexpr EStringId TextInvalidAlpha = 47616;
    // The line of the pages that show the parent's size: " <parent>: <w>x<h>" or that there is none.
    static constexpr EStringId TextParentLine = 47601;
    static constexpr EStringId TextNoValidSource = 47602;
    // The scaler's page.
    static constexpr EStringId TextSideTooSmall = 47401;
    static constexpr EStringId TextFactorNeedsParent = 47402;
    static constexpr EStringId TextParentWithoutSize = 47403;
    // The composer's page: complaints, the titles of the layer list's columns
    // (source, x, y, opacity) and the background row's texts in place of numbers.
    static constexpr EStringId TextMergerNameEmpty = 47421;
    static constexpr EStringId TextInvalidOpacity = 47422;
    static constexpr EStringId TextInvalidPosition = 47423;
    static constexpr EStringId TextAlreadyBackground = 47424;
    static constexpr EStringId TextAlreadyTopLevel = 47425;
    static constexpr EStringId TitleLayerSource = 47426;
    static constexpr EStringId TitleLayerX = 47427;
    static constexpr EStringId TitleLayerY = 47428;
    static constexpr EStringId TitleLayerOpacity = 47429;
    static constexpr EStringId TextBackgroundPosition = 47430;
    static constexpr EStringId TextBackgroundOpacity = 47431;
    // The footage's change of files.
    static constexpr EStringId TextBadFileSelection = 47800;
    static constexpr EStringId TextNoFileInformation = 47801;
    static constexpr EStringId TextProxyFailed = 47802;
};
